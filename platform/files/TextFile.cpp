#include "platform/files/TextFile.h"

#include <algorithm>

using cutroom::Result;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The line of the first ill-formed byte. No character spans a line end, so lines are checked alone.
long lineOfBadText(std::string_view text) {
    long line = 1;
    for (std::size_t from = 0; from < text.size(); ++line) {
        const std::size_t end = std::min(text.find('\n', from), text.size());
        if (!cutroom::isUtf8(text.substr(from, end - from)))
            break;
        from = end + 1;
    }
    return line;
}

Status checkText(std::string_view text, const std::string& path) {
    if (const std::size_t null = text.find('\0'); null != std::string_view::npos) {
        const auto line =
            1 + std::count(text.begin(), text.begin() + static_cast<long>(null), '\n');
        return {StatusCode::damaged, path, "holds a null character", line};
    }
    if (!cutroom::isUtf8(text))
        return {StatusCode::damaged, path, "is not UTF-8 text", lineOfBadText(text)};
    return {};
}

} // namespace

Result<std::string> TextFile::load(const std::string& path, std::uint64_t maxBytes) {
    Result<std::string> content = cutroom::readFile(path, maxBytes);
    if (!content)
        return content;
    if (content->starts_with(kByteOrderMark))
        content->erase(0, kByteOrderMark.size());
    if (Status sound = checkText(*content, path); !sound)
        return sound;
    return content;
}

Result<std::string> TextFile::load(const LightweightString<wchar_t>& path) {
    const Result<std::string> narrow = cutroom::narrowPath(path);
    return narrow ? load(*narrow) : narrow.status();
}

Status TextFile::save(const std::string& path, std::string_view text, cutroom::Backup backup) {
    if (!cutroom::isUtf8(text))
        return {StatusCode::wrongUsage, path, "the text to be written is not UTF-8"};
    return cutroom::writeFile(path, text, backup);
}

Status TextFile::save(const LightweightString<wchar_t>& path, std::string_view text) {
    const Result<std::string> narrow = cutroom::narrowPath(path);
    return narrow ? save(*narrow, text) : narrow.status();
}
