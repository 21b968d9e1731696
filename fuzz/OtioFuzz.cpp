// Any bytes as an OTIO file: a clear answer, no crash, no hang; what was read can be written, and
// what was written is read and written again as the same.
#include "fuzz/Require.h"
#include "interchange/EdlWriter.h"
#include "interchange/OtioReader.h"
#include "interchange/OtioWriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;

// Cuts between the frames of one of several rates are not written as they were.
bool isRounded(const Timeline& timeline) {
    return std::any_of(
        timeline.warnings.begin(), timeline.warnings.end(),
        [](const std::string& text) { return text.find("nearest frame") != text.npos; });
}

void tryTimeline(const Timeline& timeline) {
    const std::string once = writeOtio(timeline).text;
    const auto again = readOtio(once, "again.otio");
    require(again.ok() && again->size() == 1);
    const bool exact = !isRounded(timeline) && !isRounded(again->front());
    require(!exact || writeOtio(again->front()).text == once);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto read = readOtio(bytes, "fuzz.otio");
    require(read.ok() || !read.status().message().empty());
    if (!read.ok())
        return 0;
    for (const Timeline& timeline : *read) {
        (void)writeEdl(timeline);
        tryTimeline(timeline);
    }
    return 0;
}
