// Any bytes as subtitles: what is read is in order and has a length.
#include "interchange/SrtReader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = cutroom::readSrt(bytes, "fuzz.srt");
    if (!read.ok())
        return 0;
    cutroom::Flicks last = 0;
    for (const cutroom::SrtCue& cue : read.value().cues) {
        if (cue.start < last || cue.end <= cue.start || cue.lines.empty())
            __builtin_trap();
        last = cue.start;
    }
    return 0;
}
