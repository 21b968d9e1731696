// The criteria as members of a JSON object (docs/formats/criteria.md).
#include "filters/ProjectSearch.h"
#include "platform/base/Strings.h"
#include "platform/files/TextFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

using cutroom::eItemPresence;
using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;
using projdb::eLogicalOperator;
using projdb::eMatchMethod;
using projdb::PatternList;
using Criteria = ProjectSearch::Criteria;

namespace {

// The most of a criteria file that is read.
constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxElements = 100'000;

constexpr const char* kMarkersID = "Markers";
constexpr const char* kMarkerTypesID = "MarkerTypes";

struct NamedKind {
    const char* key;
    projdb::eRecordKind kind;
};
// In the order of the file.
constexpr NamedKind kKinds[] = {{"Sequences", projdb::kKindSequence},
                                {"Clips", projdb::kKindClip},
                                {"ClipSections", projdb::kKindClipSection},
                                {"SubClips", projdb::kKindSubClip},
                                {"Prints", projdb::kKindPrint},
                                {"Syncs", projdb::kKindSync}};

struct NamedOption {
    const char* key;
    projdb::SearchCriteria::eOption option;
};
constexpr NamedOption kOptions[] = {{"WholeWords", projdb::SearchCriteria::kWholeWords},
                                    {"AllowClipboard", projdb::SearchCriteria::kAllowClipboard},
                                    {"AllowEmpty", projdb::SearchCriteria::kAllowEmpty}};

void setBit(unsigned& bits, unsigned bit, bool on) { bits = on ? bits | bit : bits & ~bit; }

// The greatest single-precision value, as its shortest text reads.
constexpr double kMostSingle = 3.4028235e38;

// The double that is written with the digits of the nearest single-precision value. A number beyond
// those becomes the greatest of them: no extent holds either.
double asSingle(double value) {
    constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
    const double held = value <= kMost ? std::max(value, -kMost) : kMost;
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, static_cast<float>(held));
    return cutroom::parseDouble({text, static_cast<std::size_t>(written.ptr - text)})
        .value_or(kMostSingle);
}

// --- writing -------------------------------------------------------------------------------------

void addEntry(JSON::Builder& array, std::string_view id, const PatternList& list) {
    array.beginObject();
    array.add("ID", id);
    array.beginArray("Patterns");
    for (const projdb::Pattern& pattern : list.patterns) {
        array.beginObject();
        array.add("Text", pattern.text);
        array.add("Match", projdb::getPersistableString(pattern.match));
        array.endObject();
    }
    array.endArray();
    if (list.patterns.size() >= 2) {
        array.beginArray("Operators");
        for (const eLogicalOperator op : list.operators) {
            array.beginObject();
            array.add("Type", projdb::getPersistableString(op));
            array.endObject();
        }
        array.endArray();
    }
    array.endObject();
}

void addCriteria(JSON::Builder& object, const Criteria& criteria) {
    object.beginArray("Criteria");
    for (const projdb::AttributeCriterion& criterion : criteria.attributes)
        addEntry(object, criterion.attribute.getID(), criterion.patterns);
    if (!criteria.markers.empty())
        addEntry(object, kMarkersID, criteria.markers);
    if (criteria.markerTypesWanted != 0 || criteria.markerTypesUnwanted != 0) {
        object.beginObject();
        object.add("ID", kMarkerTypesID);
        object.add("wanted", criteria.markerTypesWanted);
        object.add("unwanted", criteria.markerTypesUnwanted);
        object.endObject();
    }
    object.endArray();
}

// --- reading -------------------------------------------------------------------------------------

// Reads members; the first that is not what it should be is remembered with its place.
class Reader {
public:
    Reader(const JSON::Element& object, const std::string& file) : object_(object), file_(file) {}

    Result<Criteria> read() {
        readKinds();
        readEntries();
        criteria_.quickSearch = text(object_, "QuickSearch", "");
        for (const NamedOption& option : kOptions)
            setBit(criteria_.options, option.option, boolean(object_, option.key, "", false));
        setBit(criteria_.kinds, projdb::kKindImage, boolean(object_, "IncludeImages", "", true));
        criteria_.mediaLocation = DriveID::fromString(text(object_, "MediaLocation", ""));
        readTime();
        criteria_.clipVTracks = presence("ClipVTracks");
        criteria_.clipATracks = presence("ClipATracks");
        criteria_.clipMedia = presence("ClipMedia");
        if (!status_)
            return status_;
        return std::move(criteria_);
    }

private:
    void fail(const std::string& place, const char* reason) {
        if (status_)
            status_ = Status(StatusCode::damaged, file_, place + ": " + reason);
    }
    // The member, of that kind; empty when it is missing or wrong.
    Kv::Ptr<JSON::Element> member(const JSON::Element& of, const char* key, const std::string& at,
                                  JSON::Kind kind, const char* reason) {
        Kv::Ptr<JSON::Element> found = of.find(key);
        if (found && found->kind() != kind) {
            fail(at + key, reason);
            return nullptr;
        }
        return found;
    }
    std::string text(const JSON::Element& of, const char* key, const std::string& at) {
        const auto found = member(of, key, at, JSON::Kind::string, "is no text");
        return found ? std::string(found->text()) : std::string();
    }
    bool boolean(const JSON::Element& of, const char* key, const std::string& at, bool otherwise) {
        const auto found = member(of, key, at, JSON::Kind::boolean, "is neither true nor false");
        return found ? found->asBool().value_or(otherwise) : otherwise;
    }
    Kv::Ptr<JSON::Element> array(const JSON::Element& of, const char* key, const std::string& at) {
        return member(of, key, at, JSON::Kind::array, "is no array");
    }
    eItemPresence presence(const char* key) {
        const auto found = member(object_, key, "", JSON::Kind::string, "is no text");
        if (!found)
            return eItemPresence::any;
        const auto value = cutroom::itemPresenceFromString(found->text());
        if (!value)
            fail(key, "is none of Any, Present, Absent");
        return value.value_or(eItemPresence::any);
    }
    std::uint32_t mask(const JSON::Element& of, const char* key, const std::string& at) {
        const auto found = of.find(key);
        const std::uint64_t value =
            found ? found->asUnsigned().value_or(std::numeric_limits<std::uint64_t>::max()) : 0;
        if (value > std::numeric_limits<std::uint32_t>::max())
            fail(at + key, "is no mask of 32 bits");
        return static_cast<std::uint32_t>(value);
    }
    void readTime() {
        const auto found = member(object_, "RequiredTime", "", JSON::Kind::number, "is no number");
        if (!found)
            return;
        const std::optional<double> time = found->asDouble();
        if (time && std::fabs(*time) <= kMostSingle)
            criteria_.requiredTime = *time;
        else
            fail("RequiredTime", "is out of range");
    }

    // Without "Types" every kind is wanted; a kind that it does not name is not.
    void readKinds() {
        const auto types = member(object_, "Types", "", JSON::Kind::object, "is no object");
        for (const NamedKind& kind : kKinds)
            if (types)
                setBit(criteria_.kinds, kind.kind, boolean(*types, kind.key, "Types.", false));
    }

    void readEntries() {
        const auto entries = array(object_, "Criteria", "");
        for (std::size_t i = 0; entries && i < entries->size(); ++i) {
            const std::string place = "Criteria[" + std::to_string(i) + "]";
            const auto entry = entries->child(i);
            if (entry->isObject())
                readEntry(*entry, place + ".");
            else
                fail(place, "is no object");
        }
    }
    void readEntry(const JSON::Element& entry, const std::string& at) {
        const std::string id = text(entry, "ID", at);
        if (id == kMarkerTypesID) {
            criteria_.markerTypesWanted = mask(entry, "wanted", at);
            criteria_.markerTypesUnwanted = mask(entry, "unwanted", at);
        } else if (id == kMarkersID) {
            criteria_.markers = patterns(entry, at);
        } else if (!entry.has("ID")) { // an empty one is that of an attribute which nobody has
            fail(at + "ID", "names no attribute");
        } else {
            criteria_.attributes.push_back(
                {projdb::AttributeCriterion::named(id), patterns(entry, at)});
        }
    }
    PatternList patterns(const JSON::Element& entry, const std::string& at) {
        PatternList list;
        const auto patterns = array(entry, "Patterns", at);
        for (std::size_t i = 0; patterns && i < patterns->size(); ++i) {
            const std::string place = at + "Patterns[" + std::to_string(i) + "].";
            const auto pattern = patterns->child(i);
            const auto match = projdb::matchMethodFromString(text(*pattern, "Match", place));
            if (!match)
                fail(place + "Match", "is no way of matching");
            list.patterns.push_back(
                {text(*pattern, "Text", place), match.value_or(eMatchMethod::contains)});
        }
        const auto operators = array(entry, "Operators", at);
        const std::size_t count = operators ? operators->size() : 0;
        if (count + 1 != list.patterns.size()) {
            // They do not fit: the first pattern stands alone.
            list.patterns.resize(std::min<std::size_t>(list.patterns.size(), 1));
            return list;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const std::string place = at + "Operators[" + std::to_string(i) + "].";
            const auto op =
                projdb::logicalOperatorFromString(text(*operators->child(i), "Type", place));
            if (!op)
                fail(place + "Type", "is none of And, Or, AndNot");
            list.operators.push_back(op.value_or(eLogicalOperator::andAlso));
        }
        return list;
    }

    const JSON::Element& object_;
    const std::string& file_;
    Criteria criteria_;
    Status status_;
};

} // namespace

void Criteria::addTo(JSON::Builder& object) const {
    object.beginObject("Types");
    for (const NamedKind& kind : kKinds)
        object.add(kind.key, wants(kind.kind));
    object.endObject();
    addCriteria(object, *this);
    if (!quickSearch.empty())
        object.add("QuickSearch", quickSearch);
    for (const NamedOption& option : kOptions)
        object.add(option.key, has(option.option));
    object.add("IncludeImages", wants(projdb::kKindImage));
    if (!mediaLocation.empty())
        object.add("MediaLocation", mediaLocation.asString());
    if (hasRequiredTime())
        object.add("RequiredTime", asSingle(requiredTime));
    const auto addPresence = [&](const char* key, eItemPresence presence) {
        if (presence != eItemPresence::any)
            object.add(key, cutroom::getPersistableString(presence));
    };
    addPresence("ClipVTracks", clipVTracks);
    addPresence("ClipATracks", clipATracks);
    addPresence("ClipMedia", clipMedia);
}

Result<Criteria> Criteria::from(const JSON::Element& object, const std::string& file) {
    if (!object.isObject())
        return Status(StatusCode::damaged, file, "criteria are an object");
    return Reader(object, file).read();
}

Result<std::string> Criteria::asText() const {
    JSON::Builder out;
    out.beginObject();
    addTo(out);
    out.endObject();
    if (out.text().size() > kMaxBytes)
        return Status(StatusCode::failed, "criteria", "are larger than can be read again");
    return out.take();
}

Status Criteria::save(const std::string& path) const {
    const auto text = asText();
    return text ? TextFile::save(path, *text) : text.status();
}

Result<Criteria> Criteria::load(const std::string& path) {
    JSON::ReadOptions options;
    options.maxBytes = kMaxBytes;
    options.maxElements = kMaxElements;
    const auto object = JSON::Element::load(path, options);
    if (!object)
        return object.status();
    return from(**object, path);
}
