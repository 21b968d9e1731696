// Any bytes as an OTIO file: a clear answer, no crash, no hang; what was read can be written, and
// what was written read.
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
        if (!cutroom::readOtio(cutroom::writeOtio(timeline).text, "again.otio").ok())
            __builtin_trap();
    }
    return 0;
}
