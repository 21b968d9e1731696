#include "export/MetadataWriter.h"

#include "bins/Document.h"
#include "export/AssetMetadataExporterBase.h"
#include "export/CueTimecodes.h"
#include "export/FreeNames.h"
#include "export/MarkerFields.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"

#include <map>

namespace cutroom {

namespace {

using Base = AssetMetadataExporterBase;
using Locations = LightweightVector<LightweightString<wchar_t>>;

// Markers, one after the other; what they share is looked up once.
class MarkerWriter {
public:
    MarkerWriter(iMetadataWriter& out, const EditPtr& edit, const std::vector<MarkerField>& fields)
        : out_(out), timecodes_(edit), fields_(fields) {}

    void add(const Cue& cue) {
        out_.beginObject({});
        out_.add("name", cue.getName());
        out_.add("description", cue.getDescription());
        addTimecode("in", cue.getRange().getStart());
        addTimecode("out", cue.getRange().getEnd());
        out_.add("colour", Base::getMarkerColour(cue));
        for (const MarkerField& field : fields_)
            out_.add(field.name, cue.getCustomMetadata(field.key));
        out_.endObject();
    }

private:
    void addTimecode(std::string_view key, double seconds) {
        text_.clear();
        timecodes_.append(text_, seconds);
        out_.add(key, text_);
    }

    iMetadataWriter& out_;
    const CueTimecodes timecodes_;
    const std::vector<MarkerField>& fields_;
    std::string text_;
};

// An attribute and the key of its value, which differs from the keys of the locations and the
// markers.
struct AttributeKey {
    LogAttribute attribute;
    std::string key;
};

std::vector<AttributeKey> keysOf(const std::vector<LogAttribute>& attributes) {
    FreeNames names({"Locations", "markers"});
    std::vector<AttributeKey> keys;
    for (const LogAttribute& attribute : attributes)
        keys.push_back({attribute, names.take(attribute.getID())});
    return keys;
}

// Writes the items of a bin that nobody else changes meanwhile.
class BinWriter {
public:
    // Writes `cues` in place of the markers of the bin's edits, unless it is null.
    BinWriter(iMetadataWriter& out, Kv::Ptr<BinData> bin, const std::vector<Cue>* cues)
        : out_(out), bin_(std::move(bin)), cues_(cues) {}

    void write(const std::vector<unsigned>& items) {
        std::map<Base::eAssetType, std::vector<unsigned>> groups;
        for (const unsigned item : items)
            groups[Base::getAssetType(bin_, item)].push_back(item);
        out_.beginObject({});
        out_.add("name", bin_->getName());
        for (const auto& [type, members] : groups) {
            out_.beginList(keyOf(type), "asset");
            for (const unsigned item : members)
                writeItem(item, type == Base::kAssetDocument ? documentAttributes_ : attributes_);
            out_.endList();
        }
        out_.endObject();
    }

private:
    // The texts come from a table that a host may replace, so two kinds may have the same name.
    std::string keyOf(Base::eAssetType type) {
        return keys_.take(toUtf8(Base::getDisplayString(type, true)));
    }

    void writeItem(unsigned item, const std::vector<AttributeKey>& attributes) {
        const EditPtr edit = bin_->openEdit(item); // stays open until all is said
        out_.beginObject({});
        for (const auto& [attribute, key] : attributes)
            if (attribute.getType() == LogAttribute::mediaLocation)
                writeLocations(item, edit);
            else if (const auto text = Base::getPersistableString(bin_, item, attribute);
                     !text.empty())
                out_.add(key, text);
        if (edit && cues_)
            writeMarkers(edit, *cues_);
        else if (edit)
            writeMarkers(edit, edit->getCues().cues());
        out_.endObject();
    }

    Locations locationsOf(unsigned item, const EditPtr& edit) const {
        if (edit)
            return edit->getMediaLocations();
        if (const Kv::Ptr<Document> document = bin_->openDocument(item))
            return document->getLocations();
        auto recorded = bin_->getAttribute(item, LogAttribute::mediaLocation);
        return recorded.empty() ? Locations() : Locations{std::move(recorded)};
    }

    void writeLocations(unsigned item, const EditPtr& edit) {
        const Locations locations = locationsOf(item, edit);
        if (locations.empty())
            return;
        out_.beginList("Locations", "Location");
        for (const auto& location : locations)
            out_.add({}, location);
        out_.endList();
    }

    void writeMarkers(const EditPtr& edit, const std::vector<Cue>& cues) {
        if (cues.empty())
            return;
        out_.beginList("markers", "marker");
        MarkerWriter markers(out_, edit, fields_);
        for (const Cue& cue : cues)
            markers.add(cue);
        out_.endList();
    }

    iMetadataWriter& out_;
    const Kv::Ptr<BinData> bin_;
    const std::vector<Cue>* cues_;
    const std::vector<AttributeKey> attributes_ = keysOf(Base::getAssetAttributes());
    const std::vector<AttributeKey> documentAttributes_ = keysOf(Base::getDocumentAttributes());
    const std::vector<MarkerField> fields_ = markerFields();
    FreeNames keys_{{"name"}};
};

} // namespace

iMetadataWriter::~iMetadataWriter() = default;

bool writeBin(iMetadataWriter& out, const Kv::Ptr<BinData>& bin) {
    if (!bin)
        return false;
    const Kv::Ptr<BinData> snapshot(new BinData(*bin));
    const std::vector<unsigned> items = exportedItems(*snapshot);
    if (items.empty())
        return false;
    BinWriter(out, snapshot, nullptr).write(items);
    return true;
}

bool writeEdit(iMetadataWriter& out, const EditPtr& edit, const std::vector<Cue>& cues) {
    if (!edit || cues.empty())
        return false;
    const Kv::Ptr<BinData> alone(new BinData(edit->getName()));
    alone->add(BinItem(edit));
    BinWriter(out, alone, &cues).write({0});
    return true;
}

std::vector<unsigned> exportedItems(const BinData& bin) {
    const bool tagged = bin.anyTagged();
    std::vector<unsigned> items;
    for (unsigned i = 0; i < bin.numItems(); ++i)
        if (!tagged || bin.isTagged(i))
            items.push_back(i);
    return items;
}

} // namespace cutroom
