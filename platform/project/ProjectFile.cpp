#include "platform/project/ProjectFile.h"

#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/project/SealedJson.h"

#include <algorithm>
#include <array>

namespace cutroom {

namespace {

constexpr std::string_view kFormat = "cutroom-project";
constexpr int kVersion = 1;
constexpr std::size_t kMaxIDBytes = 64;
constexpr std::size_t kMaxAttributes = 10'000;
constexpr std::array<std::string_view, 5> kFieldTypeNames = {"date-time", "date", "time", "text",
                                                             "number"};

Status wrong(const std::string& path, const std::string& member) {
    return Status(StatusCode::damaged, path, "the value of \"" + member + "\" is wrong");
}

bool readFrameRate(const JSON::Element& root, Kv::FrameRate& rate) {
    const Kv::Ptr<JSON::Element> value = root.find("frameRate");
    if (!value)
        return true;
    const std::optional<Kv::FrameRate> read =
        value->isString() ? Kv::FrameRate::fromString(value->text()) : std::nullopt;
    if (!read || !read->valid())
        return false;
    rate = *read;
    return true;
}

bool readAttributes(const JSON::Element& root, std::vector<LogAttribute>& attributes) {
    const Kv::Ptr<JSON::Element> list = root.find("attributes");
    if (!list)
        return true;
    if (!list->isArray() || list->size() > kMaxAttributes)
        return false;
    for (JSON::Cursor item = JSON::Cursor::childrenOf(*list); item; item.next()) {
        std::string id(item.getText("id"));
        const auto type =
            std::find(kFieldTypeNames.begin(), kFieldTypeNames.end(), item.getText("type"));
        if (!isAttributeID(id) || type == kFieldTypeNames.end())
            return false;
        attributes.emplace_back(static_cast<unsigned>(attributes.size()), std::move(id),
                                toWide(item.getText("name")),
                                static_cast<DBFieldTypes::eType>(type - kFieldTypeNames.begin()));
    }
    return true;
}

void writeAttributes(JSON::Builder& out, const std::vector<LogAttribute>& attributes) {
    out.beginArray("attributes");
    for (const LogAttribute& attribute : attributes) {
        out.beginObject();
        out.add("id", attribute.getID());
        out.add("name", attribute.getDisplayName());
        out.add("type", kFieldTypeNames[static_cast<std::size_t>(attribute.getFieldType())]);
        out.endObject();
    }
    out.endArray();
}

} // namespace

bool isAttributeID(const std::string& id) {
    return !id.empty() && id.size() <= kMaxIDBytes && isUtf8(id) &&
           std::none_of(id.begin(), id.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

bool isPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && isUtf8(name) &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

Result<ProjectFile> ProjectFile::load(const std::string& path) {
    Result<Kv::Ptr<JSON::Element>> root = SealedJson::load(path, kFormat, kVersion);
    if (!root)
        return root.status();
    const JSON::Element& top = **root;
    ProjectFile file;
    file.former = *root;
    file.id = Cookie(top.getString("id"));
    if (file.id.type() != 'P')
        return wrong(path, "id");
    file.name = top.getWString("name");
    if (!readFrameRate(top, file.defaults.frameRate))
        return wrong(path, "frameRate");
    file.defaults.dropFrame = top.getBool("dropFrame");
    file.defaults.mixConfiguration = top.getString("mixConfiguration");
    if (!file.defaults.mixConfiguration.empty() && !isPlainFileName(file.defaults.mixConfiguration))
        return wrong(path, "mixConfiguration");
    if (!readAttributes(top, file.customAttributes))
        return wrong(path, "attributes");
    return file;
}

Status ProjectFile::save(const std::string& path) const {
    if (customAttributes.size() > kMaxAttributes)
        return {StatusCode::failed, path, "more attributes than would be read again"};
    const auto write = [&](JSON::Builder& out) {
        out.add("id", id.asString());
        out.add("name", name);
        out.add("frameRate", defaults.frameRate.asString());
        out.add("dropFrame", defaults.dropFrame);
        out.add("mixConfiguration", defaults.mixConfiguration);
        writeAttributes(out, customAttributes);
    };
    return SealedJson::save(
        path, kFormat, kVersion, write, former,
        {"id", "name", "frameRate", "dropFrame", "mixConfiguration", "attributes"});
}

} // namespace cutroom
