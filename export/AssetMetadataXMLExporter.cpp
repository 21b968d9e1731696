#include "export/AssetMetadataXMLExporter.h"

#include "export/MetadataWriter.h"
#include "export/XmlBuilder.h"

#include <vector>

namespace {

constexpr std::size_t kMarkerBytes = 320; // that few markers exceed

// Entries of lists take the name that the list gives them; the whole is "assets".
class XmlWriter final : public cutroom::iMetadataWriter {
public:
    explicit XmlWriter(std::size_t room = 0) : xml_(room) {}
    void beginObject(std::string_view key) override { xml_.begin(nameOf(key)); }
    void endObject() override { xml_.end(); }
    void beginList(std::string_view key, std::string_view entry) override {
        xml_.begin(key);
        entries_.push_back(entry);
    }
    void endList() override {
        xml_.end();
        entries_.pop_back();
    }
    void add(std::string_view key, std::string_view text) override { xml_.add(nameOf(key), text); }
    void add(std::string_view key, std::wstring_view text) override { xml_.add(nameOf(key), text); }
    std::string take() { return xml_.take(); }

private:
    std::string_view nameOf(std::string_view key) const {
        return key.empty() ? entries_.back() : key;
    }

    cutroom::XmlBuilder xml_;
    std::vector<std::string_view> entries_{"assets"};
};

} // namespace

AssetMetadataXMLExporter::~AssetMetadataXMLExporter() = default;

LightweightString<wchar_t> AssetMetadataXMLExporter::getFormatName() { return L"XML"; }

LightweightString<wchar_t> AssetMetadataXMLExporter::getFileExtension() { return L"xml"; }

unsigned AssetMetadataXMLExporter::getSupportedSources() const {
    return kSourceBin | kSourceMarkers;
}

std::optional<std::string> AssetMetadataXMLExporter::getText(const EditPtr& edit,
                                                             const std::vector<Cue>& cues) const {
    XmlWriter xml(cues.size() * kMarkerBytes);
    return cutroom::writeEdit(xml, edit, cues) ? std::optional(xml.take()) : std::nullopt;
}

std::optional<std::string> AssetMetadataXMLExporter::getText(const Kv::Ptr<BinData>& bin) const {
    XmlWriter xml;
    return cutroom::writeBin(xml, bin) ? std::optional(xml.take()) : std::nullopt;
}
