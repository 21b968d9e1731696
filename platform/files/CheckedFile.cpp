#include "platform/files/CheckedFile.h"

#include <algorithm>
#include <charconv>

namespace cutroom {

namespace {

constexpr std::string_view kMagic = "CUTROOM ";
constexpr std::size_t kMaxHead = 128;

std::string headOf(std::string_view kind, unsigned version, std::uint64_t size) {
    return std::string(kind) + " " + toText(static_cast<unsigned long long>(version)) + " " +
           toText(static_cast<unsigned long long>(size));
}

Status damage(const std::string& file, std::size_t at, std::string message) {
    return {StatusCode::damaged, file, std::move(message), static_cast<long>(at)};
}

// The number, when `text` is its one decimal form.
template <class T> bool readNumber(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() &&
           (text.size() == 1 || text.front() != '0');
}

bool readHex(std::string_view text, std::uint32_t& value) {
    const bool lower = std::none_of(text.begin(), text.end(),
                                    [](char c) { return c < '0' || (c >= 'A' && c <= 'F'); });
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return text.size() == 8 && lower && error == std::errc() && end == text.data() + text.size();
}

struct Head {
    std::string_view kind;
    unsigned version = 0;
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
    std::size_t length = 0; // with the line feed
};

bool readHead(std::string_view bytes, Head& head) {
    const std::size_t end = bytes.substr(0, kMaxHead).find('\n');
    if (!bytes.starts_with(kMagic) || end == std::string_view::npos)
        return false;
    std::string_view rest = bytes.substr(kMagic.size(), end - kMagic.size());
    std::string_view words[4];
    for (std::string_view& word : words) {
        const std::size_t space = std::min(rest.find(' '), rest.size());
        word = rest.substr(0, space);
        rest.remove_prefix(std::min(space + 1, rest.size()));
    }
    head.kind = words[0];
    head.length = end + 1;
    return rest.empty() && readNumber(words[1], head.version) && readNumber(words[2], head.size) &&
           readHex(words[3], head.crc);
}

} // namespace

std::string CheckedFile::wrap(std::string_view kind, unsigned version, std::string_view payload) {
    const std::string head = headOf(kind, version, payload.size());
    const std::uint32_t crc = checksum(payload, checksum(head));
    std::string bytes;
    bytes.reserve(kMagic.size() + head.size() + 10 + payload.size());
    bytes.append(kMagic).append(head).append(format(" %08x\n", crc)).append(payload);
    return bytes;
}

Result<CheckedFile::View> CheckedFile::open(std::string_view bytes, std::string_view kind,
                                            unsigned newestVersion, const std::string& file) {
    Head head;
    if (bytes.empty())
        return damage(file, 0, "is empty");
    if (!readHead(bytes, head))
        return damage(file, 0, "does not begin as a file of ours");
    const std::string_view payload = bytes.substr(head.length);
    if (payload.size() < head.size)
        return damage(file, bytes.size(),
                      format("is cut short: %zu of %llu bytes", payload.size(),
                             static_cast<unsigned long long>(head.size)));
    if (payload.size() > head.size)
        return damage(file, head.length + static_cast<std::size_t>(head.size),
                      "goes on after its end");
    if (checksum(payload, checksum(headOf(head.kind, head.version, head.size))) != head.crc)
        return damage(file, head.length, "the checksum is wrong");
    if (head.kind != kind)
        return damage(file, 0,
                      "is a file of the kind \"" + toUtf8(toWide(head.kind)) + "\", not \"" +
                          std::string(kind) + "\"");
    if (head.version > newestVersion)
        return Status(StatusCode::failed, file,
                      format("was written by a later version (format %u; this one knows %u)",
                             head.version, newestVersion));
    return View{head.version, payload, head.length};
}

Status CheckedFile::save(const std::string& path, std::string_view kind, unsigned version,
                         std::string_view payload, Backup backup) {
    return writeFile(path, wrap(kind, version, payload), backup);
}

Result<CheckedFile::Content> CheckedFile::load(const std::string& path, std::string_view kind,
                                               unsigned newestVersion, std::uint64_t maxBytes) {
    Result<std::string> bytes = readFile(path, maxBytes);
    if (!bytes)
        return bytes.status();
    const Result<View> view = open(*bytes, kind, newestVersion, path);
    if (!view)
        return view.status();
    const unsigned version = view->version;
    const std::size_t offset = view->offset;
    return Content{path, std::move(*bytes), version, offset};
}

} // namespace cutroom
