// The envelope of our binary files: one readable line with kind, version, length and checksum,
// then the payload. A damaged file is recognised before a byte of its payload is used.
//
//     CUTROOM <kind> <version> <payload bytes> <crc32 as 8 hex digits>\n<payload>
//
// The checksum (zlib's CRC-32, ISO 3309) covers "<kind> <version> <payload bytes>" and the payload.
#pragma once

#include "platform/files/Files.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace cutroom {

// CRC-32 of `data`, continuing from `before`.
CUTROOM_API std::uint32_t checksum(std::string_view data, std::uint32_t before = 0) noexcept;

class CUTROOM_API CheckedFile {
public:
    // What an envelope holds. `payload` is a view into what was given to `open`.
    struct View {
        unsigned version = 0;
        std::string_view payload;
        std::size_t offset = 0; // of the payload's first byte in the file, for messages
    };
    // A file read and checked; owns its bytes.
    struct Content {
        std::string file; // the path read, for messages
        std::string bytes;
        unsigned version = 0;
        std::size_t offset = 0;
        std::string_view payload() const noexcept { return std::string_view(bytes).substr(offset); }
    };

    // The envelope's bytes. `kind` is lower-case ASCII letters and '-', at most 32.
    static std::string wrap(std::string_view kind, unsigned version, std::string_view payload);
    // Checks `bytes`, read from `file`. `damaged`, with the byte offset as place, when they are no
    // whole envelope of this kind; `failed` when they were written in a version above
    // `newestVersion`.
    static Result<View> open(std::string_view bytes, std::string_view kind, unsigned newestVersion,
                             const std::string& file);

    // Writes crash-safely.
    static Status save(const std::string& path, std::string_view kind, unsigned version,
                       std::string_view payload, Backup backup = Backup::keep);
    // Reads and checks.
    static Result<Content> load(const std::string& path, std::string_view kind,
                                unsigned newestVersion, std::uint64_t maxBytes = kMaxFileBytes);
};

} // namespace cutroom
