#include "platform/project/SealedJson.h"

#include "platform/base/Strings.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/Files.h"
#include "platform/files/TextFile.h"

#include <algorithm>

namespace cutroom {

namespace {

constexpr std::string_view kChecksumKey = "checksum";
constexpr std::string_view kFormatKey = "format";
constexpr std::string_view kVersionKey = "version";
constexpr std::string_view kUnsealed = "00000000";
constexpr std::string_view kSealIntro = "\"checksum\": \"";
constexpr std::uint64_t kMaxBytes = std::uint64_t{64} << 20;

// The position of the checksum's digits; npos in a text without them.
std::size_t sealPosition(std::string_view text) {
    const std::size_t intro = text.substr(0, 64).find(kSealIntro);
    if (intro == std::string_view::npos)
        return intro;
    const std::size_t at = intro + kSealIntro.size();
    return at + kUnsealed.size() <= text.size() ? at : std::string_view::npos;
}

std::string sealOf(std::string text, std::size_t at) {
    text.replace(at, kUnsealed.size(), kUnsealed);
    return cutroom::format("%08x", checksum(text));
}

Status checkSeal(const std::string& path, const std::string& text, const JSON::Element& root) {
    if (!root.has(kChecksumKey))
        return {};
    const std::size_t at = sealPosition(text);
    if (at == std::string_view::npos || sealOf(text, at) != text.substr(at, kUnsealed.size()))
        return Status(StatusCode::damaged, path, "the checksum is wrong");
    return {};
}

Status checkFormat(const std::string& path, const JSON::Element& root, std::string_view format,
                   int newestVersion) {
    if (!root.isObject() || root.getString(kFormatKey) != format)
        return Status(StatusCode::damaged, path, "this is no " + std::string(format) + " file");
    const std::int64_t version = root.getInt(kVersionKey);
    if (version > newestVersion)
        return Status(StatusCode::failed, path, "written by a later version");
    if (version < 1)
        return Status(StatusCode::damaged, path, "the version is wrong");
    return {};
}

} // namespace

Status SealedJson::save(const std::string& path, std::string_view format, int version,
                        const std::function<void(JSON::Builder&)>& write,
                        const Kv::Ptr<JSON::Element>& former,
                        std::initializer_list<std::string_view> known) {
    JSON::Builder builder;
    builder.beginObject();
    builder.add(kChecksumKey, kUnsealed);
    builder.add(kFormatKey, format);
    builder.add(kVersionKey, version);
    write(builder);
    const auto isOurs = [&](std::string_view key) {
        return key == kChecksumKey || key == kFormatKey || key == kVersionKey ||
               std::find(known.begin(), known.end(), key) != known.end();
    };
    if (former)
        for (const Kv::Ptr<JSON::Element>& member : former->children())
            if (!isOurs(member->key()))
                builder.add(member->key(), *member);
    builder.endObject();
    std::string text = builder.take();
    const std::size_t at = sealPosition(text);
    text.replace(at, kUnsealed.size(), sealOf(text, at));
    if (text.size() > kMaxBytes)
        return Status(StatusCode::failed, path, "is too large to be read again");
    return writeFile(path, text);
}

Result<Kv::Ptr<JSON::Element>> SealedJson::load(const std::string& path, std::string_view format,
                                                int newestVersion) {
    const Result<std::string> text = TextFile::load(path, kMaxBytes);
    if (!text)
        return text.status();
    Result<Kv::Ptr<JSON::Element>> root = JSON::Element::parse(*text, path);
    if (!root)
        return root;
    if (Status status = checkSeal(path, *text, **root); !status)
        return status;
    if (Status status = checkFormat(path, **root, format, newestVersion); !status)
        return status;
    return root;
}

} // namespace cutroom
