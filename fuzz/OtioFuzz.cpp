// Any bytes as an OTIO file: a clear answer, no crash, no hang.
#include "interchange/OtioReader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = cutroom::readOtio(bytes, "fuzz.otio");
    if (!read.ok() && read.status().message().empty())
        __builtin_trap();
    return 0;
}
