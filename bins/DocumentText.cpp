// The description of a document.
#include "bins/DescriptionReader.h"
#include "bins/Document.h"

namespace {

constexpr char kId[] = "id";
constexpr char kName[] = "name";
constexpr char kDescription[] = "description";
constexpr char kExternalId[] = "extid";
constexpr char kCreated[] = "created";
constexpr char kModified[] = "modified";
constexpr char kSize[] = "size";
constexpr char kLocations[] = "locations";
constexpr char kFile[] = "file"; // the only location, in the older form

using Locations = LightweightVector<LightweightString<wchar_t>>;

Locations readLocations(cutroom::DescriptionReader& reader) {
    Locations locations;
    if (const auto texts = reader.texts(kLocations)) {
        for (const std::string& text : *texts)
            locations.push_back(cutroom::toWide(text));
        return locations;
    }
    if (auto file = reader.text(kFile); !file.empty())
        locations.push_back(std::move(file));
    return locations;
}

// A size of another kind than a number counts as missing.
std::optional<std::uint64_t> readSize(const JSON::Element& from,
                                      cutroom::DescriptionReader& reader) {
    const auto member = from.find(kSize);
    if (!member || !member->isNumber())
        return std::nullopt;
    const auto size = member->asUnsigned();
    if (!size)
        reader.fail(kSize, "is no number of bytes");
    return size;
}

} // namespace

void Document::write(JSON::Builder& out) const {
    const SharedLock::Read lock(lock_);
    out.beginObject();
    out.add(kId, getID().asString());
    out.add(kName, getName());
    out.add(kDescription, description_);
    out.add(kExternalId, getExternalID());
    out.add(kCreated, getCreationTime());
    out.add(kModified, getModificationTime());
    out.add(kSize, size_);
    out.beginArray(kLocations);
    for (const LightweightString<wchar_t>& location : locations_)
        out.add(location);
    out.endArray();
    out.endObject();
}

cutroom::Status Document::take(const JSON::Element& from, const std::string& file) {
    cutroom::DescriptionReader reader(from, file);
    const Identity identity =
        readIdentity(reader, {kId, kName, kExternalId, kCreated, kModified}, "DA");
    LightweightString<wchar_t> description = reader.text(kDescription);
    const std::optional<std::uint64_t> size = readSize(from, reader);
    Locations locations = readLocations(reader);
    if (!reader.status())
        return reader.status();

    const Change lock(*this);
    if (cutroom::Status restored = restore(identity, file); !restored)
        return restored;
    description_ = std::move(description);
    if (size) // a description may be silent about it
        size_ = *size;
    locations_ = std::move(locations);
    keysChanged();
    return {};
}
