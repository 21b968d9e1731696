// The stored form of cut event lists (docs/formats/edit.md). Internal to the store.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/files/ByteStream.h"
#include "platform/store/CelStorage.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cutroom {

// Gives each distinct storage a number, so that lists that share one are stored once. A storage
// that differs in one stretch from the one before of the same channel is stored as that stretch.
class CelChunkWriter {
public:
    struct Chunk {
        std::string_view tag; // "CELS": whole; "DIFF": against an earlier one
        std::string bytes;
    };
    // The number of the storage behind `cel`, the list of `channel`.
    std::size_t number(const IdStamp& channel, const Cel& cel);
    // The stored forms, by number.
    const std::vector<Chunk>& chunks() const noexcept { return chunks_; }

private:
    std::unordered_map<const void*, std::size_t> known_;
    std::unordered_map<IdStamp, std::size_t> lastOf_; // by channel
    std::vector<Shared<CelStorage>> held_;            // keeps identities from being used again
    std::vector<Chunk> chunks_;
};

std::string encodeStorage(const CelStorage& list);
// Reads what `encodeStorage` wrote; nothing, with the reader failed at the place, when a value is
// out of its range or bytes are left over.
std::optional<CelStorage> decodeStorage(ByteReader& in);

// `list` as the stretch in which it differs from `base`, chunk number `baseNumber`; nothing when
// that is no smaller than half of it.
std::optional<std::string> encodeDifference(const CelStorage& base, std::size_t baseNumber,
                                            const CelStorage& list);
// Reads what `encodeDifference` wrote, on top of the `chunks` read before.
std::optional<CelStorage> decodeDifference(ByteReader& in,
                                           const std::vector<Shared<CelStorage>>& chunks);

} // namespace cutroom
