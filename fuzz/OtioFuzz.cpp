// Any bytes as an OTIO file: a clear answer, no crash, no hang; what was read can be written, and
// what was written is read and written again as the same.
#include "interchange/EdlWriter.h"
#include "interchange/OtioReader.h"
#include "interchange/OtioWriter.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = cutroom::readOtio(bytes, "fuzz.otio");
    if (!read.ok() && read.status().message().empty())
        __builtin_trap();
    if (!read.ok())
        return 0;
    for (const cutroom::Timeline& timeline : *read) {
        (void)cutroom::writeEdl(timeline);
        const std::string once = cutroom::writeOtio(timeline).text;
        const auto again = cutroom::readOtio(once, "again.otio");
        if (!again.ok() || again->size() != 1 || cutroom::writeOtio(again->front()).text != once)
            __builtin_trap();
    }
    return 0;
}
