// Records as bytes: the form in which the database holds all that is not a column of its own.
#pragma once

#include "platform/project/ProjDbRecord.h"

#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

// The texts of a record (attributes, media locations, marker texts): a version byte, then three
// lists, each a count followed by texts, each a length followed by its bytes; numbers are 32 bits,
// little-endian.
std::string recordBytes(const projdb::Record& record);
// Fills the texts of `record`; false, leaving it alone, when the bytes are not such a form.
bool readRecordBytes(std::string_view bytes, projdb::Record& record);

// The checksum over every field of the record, given its texts as bytes.
std::uint32_t recordChecksum(const projdb::Record& record, std::string_view bytes);

} // namespace cutroom
