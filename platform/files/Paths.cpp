#include "platform/files/Files.h"

namespace cutroom {

std::string joinPath(std::string_view folder, std::string_view name) {
    if (folder.empty() || name.starts_with('/'))
        return std::string(name);
    std::string path(folder);
    if (!path.ends_with('/'))
        path += '/';
    return path.append(name);
}

std::string folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return ".";
    return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

std::string nameOf(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1)); // npos + 1 is the beginning
}

std::string extensionOf(std::string_view path) {
    const std::string name = nameOf(path);
    const std::size_t point = name.rfind('.');
    return point == std::string::npos || point == 0 ? std::string() : name.substr(point + 1);
}

Status checkPath(const std::string& path) {
    if (path.empty())
        return {StatusCode::wrongUsage, path, "a file name is empty"};
    if (path.find('\0') != std::string::npos)
        return {StatusCode::wrongUsage, toUtf8(toWide(path)), "a file name holds a null character"};
    if (!isUtf8(path))
        return {StatusCode::wrongUsage, toUtf8(toWide(path)), "the file name is not UTF-8"};
    return {};
}

Result<std::string> narrowPath(const LightweightString<wchar_t>& path) {
    std::optional<std::string> narrow = toUtf8Strict(path);
    if (!narrow)
        return Status(StatusCode::wrongUsage, toUtf8(path),
                      "the file name is not well-formed text");
    if (Status usable = checkPath(*narrow); !usable)
        return usable;
    return *std::move(narrow);
}

} // namespace cutroom
