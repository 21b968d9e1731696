// Any bytes as an edit list, with and without a rate given; what was read can be written, and what
// was written read. The first byte chooses.
#include "interchange/EdlReader.h"
#include "interchange/EdlWriter.h"
#include "interchange/OtioReader.h"
#include "interchange/OtioWriter.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::optional<Kv::FrameRate> rate;
    if (data[0] % 3 == 1)
        rate = Kv::FrameRate(30000, 1001);
    else if (data[0] % 3 == 2)
        rate = Kv::FrameRate(25);
    const auto read = cutroom::readEdl(bytes, "fuzz.edl", rate);
    if (!read.ok())
        return 0;
    for (const cutroom::Track& track : read.value().front().tracks)
        for (const cutroom::Item& item : track.items)
            if (item.start < 0 || item.duration <= 0)
                __builtin_trap();
    const cutroom::Timeline& timeline = read->front();
    const auto list = cutroom::writeEdl(timeline);
    if (list.ok() && !cutroom::readEdl(list->text, "again.edl", timeline.rate.rate).ok())
        __builtin_trap();
    if (!cutroom::readOtio(cutroom::writeOtio(timeline).text, "again.otio").ok())
        __builtin_trap();
    return 0;
}
