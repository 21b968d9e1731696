// UTF-8 text files, read strictly and written crash-safely.
#pragma once

#include "platform/files/Files.h"

#include <string>
#include <string_view>

// Any thread.
class CUTROOM_API TextFile {
public:
    // Largest text that is read.
    static constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 30;

    // The text of a file, without a leading byte order mark. `damaged`, with the line, for
    // ill-formed UTF-8 or a null character.
    static cutroom::Result<std::string> load(const std::string& path,
                                             std::uint64_t maxBytes = kMaxBytes);
    static cutroom::Result<std::string> load(const LightweightString<wchar_t>& path);
    // Replaces the file with `text` as it is. `wrongUsage` when the text is not well-formed UTF-8.
    static cutroom::Status save(const std::string& path, std::string_view text,
                                cutroom::Backup backup = cutroom::Backup::keep);
    static cutroom::Status save(const LightweightString<wchar_t>& path, std::string_view text);
};
