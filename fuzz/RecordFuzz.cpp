// Any bytes as a record file: as they are, or as a payload whose checksum is right, so that what
// lies behind the checksum is reached. Walking gives what looking up gives; what is read is saved
// and must load as the same bytes.
#include "platform/files/CheckedFile.h"
#include "platform/files/RecordFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] % 2 == 1)
        bytes = cutroom::CheckedFile::wrap("table", 1, bytes);
    cutroom::RecordFile table;
    if (!table.parse(bytes, "table", "fuzz.odb").ok())
        return 0;
    std::size_t sum = 0;
    cutroom::RecordFile::Walk walk(table);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const cutroom::RecordFile::Value* const walked = walk.next();
        for (int field = -1; field <= static_cast<int>(table.fields().size()); ++field) {
            for (const char c : table.text(i, field))
                sum += static_cast<unsigned char>(c);
            sum += table.number(i, field) == 0;
        }
        for (int field = 0; field < static_cast<int>(table.fields().size()); ++field)
            if (!walked || walked[field].text != table.text(i, field))
                __builtin_trap();
    }
    const std::string once = table.bytes("table");
    cutroom::RecordFile again;
    if (!again.parse(once, "table", "again.odb").ok() || again.bytes("table") != once)
        __builtin_trap();
    return sum == SIZE_MAX;
}
