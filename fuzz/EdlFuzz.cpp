// Any bytes as an edit list, with and without a rate given; what was read can be written, and what
// was written is read and written again as the same. The first byte chooses the rate, and whether
// it is written as a list or as a timeline.
#include "fuzz/Require.h"
#include "interchange/EdlReader.h"
#include "interchange/EdlWriter.h"
#include "interchange/OtioReader.h"
#include "interchange/OtioWriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using namespace cutroom;

// Equal events that overlap on two channels may be paired otherwise when they are read again; those
// that end before they begin may lie on another day.
bool isAmbiguous(const Timeline& timeline) {
    return std::any_of(timeline.tracks.begin(), timeline.tracks.end(),
                       [](const Track& track) { return track.name.ends_with(')'); }) ||
           std::any_of(timeline.warnings.begin(), timeline.warnings.end(),
                       [](const std::string& text) {
                           return text.starts_with("record out before record in");
                       });
}

void tryList(const Timeline& timeline, bool plain) {
    const auto once = writeEdl(timeline);
    if (!once)
        return require(!once.status().message().empty());
    const auto again = readEdl(once->text, "again.edl", timeline.rate.rate);
    require(again.ok());
    const auto twice = writeEdl(again->front());
    require(twice && (!plain || isAmbiguous(timeline) || twice->text == once->text));
}

void tryTimeline(const Timeline& timeline) {
    const auto read = readOtio(writeOtio(timeline).text, "once.otio");
    require(read.ok());
    const std::string once = writeOtio(read->front()).text;
    const auto again = readOtio(once, "again.otio");
    require(again.ok() && writeOtio(again->front()).text == once);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::optional<Kv::FrameRate> rate;
    if (data[0] % 3 == 1)
        rate = Kv::FrameRate(30000, 1001);
    else if (data[0] % 3 == 2)
        rate = Kv::FrameRate(25);
    const auto read = readEdl(bytes, "fuzz.edl", rate);
    if (!read.ok())
        return 0;
    for (const Track& track : read->front().tracks)
        for (const Item& item : track.items)
            require(item.start >= 0 && item.duration > 0);
    data[0] / 3 % 2 == 0 ? tryList(read->front(), isPlain(bytes)) : tryTimeline(read->front());
    return 0;
}
