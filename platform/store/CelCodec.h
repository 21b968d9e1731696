// The stored form of cut event lists (docs/formats/edit.md). Internal to the store.
#pragma once

#include "platform/files/ByteStream.h"
#include "platform/store/CelStorage.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cutroom {

// Gives each distinct storage a number, so that lists that share one are stored once.
class CelChunkWriter {
public:
    // The number of the storage behind `cel`.
    std::size_t number(const Cel& cel);
    // The stored forms, by number.
    const std::vector<std::string>& chunks() const noexcept { return chunks_; }

private:
    std::unordered_map<const void*, std::size_t> known_;
    std::vector<Shared<CelStorage>> held_; // keeps identities from being used again
    std::vector<std::string> chunks_;
};

std::string encodeStorage(const CelStorage& list);
// Reads what `encodeStorage` wrote; nothing, with the reader failed at the place, when a value is
// out of its range or bytes are left over.
std::optional<CelStorage> decodeStorage(ByteReader& in);

} // namespace cutroom
