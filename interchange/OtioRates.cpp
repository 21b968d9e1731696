#include "interchange/OtioComposition.h"

#include <array>
#include <cstdlib>

namespace cutroom::otio {

namespace {

constexpr double kHighestFrameRate = 120;

bool isFrameRate(const RateRead& rate) {
    return rate.valid() && rate.rate.asDouble() >= 1 && rate.rate.asDouble() <= kHighestFrameRate;
}

RateRead highest(const std::vector<RateRead>& rates) {
    RateRead best;
    for (const RateRead& rate : rates)
        if (isFrameRate(rate) && rate.rate.asDouble() > best.rate.asDouble())
            best = rate;
    return best;
}

std::size_t cutsOnFrames(const Timeline& timeline, const Kv::FrameRate& rate) {
    std::size_t count = 0;
    for (const Track& track : timeline.tracks)
        for (const Item& item : track.items) {
            const Flicks frame = rate.frameToFlicks(rate.flicksToFrameNearest(item.end()));
            count += std::abs(frame - item.end()) < kFlicksPerSecond / 10'000;
        }
    return count;
}

// What is written in samples or media ticks alone has its cuts on the frames of some rate.
RateRead rateOfCuts(const Timeline& timeline) {
    const std::array<Kv::FrameRate, 9> candidates = {
        Kv::FrameRate(25),          Kv::FrameRate(24),          Kv::FrameRate(30),
        Kv::FrameRate(24000, 1001), Kv::FrameRate(30000, 1001), Kv::FrameRate(50),
        Kv::FrameRate(60),          Kv::FrameRate(48),          Kv::FrameRate(60000, 1001)};
    const Kv::FrameRate* best = &candidates.front();
    std::size_t most = 0;
    for (const Kv::FrameRate& candidate : candidates)
        if (const std::size_t count = cutsOnFrames(timeline, candidate); count > most) {
            most = count;
            best = &candidate;
        }
    return {*best, {}};
}

} // namespace

RateRead chooseRate(const std::vector<Found>& found, const Timeline& timeline, const Time* start,
                    bool& assumed) {
    assumed = false;
    if (start && isFrameRate(start->rate))
        for (const Found& track : found)
            for (const RateRead& rate : track.rates)
                if (rate.rate == start->rate.rate)
                    return start->rate;
    const auto isPicture = [&](std::size_t i) {
        return i < timeline.tracks.size() && timeline.tracks[i].kind == TrackKind::video;
    };
    for (const bool pictures : {true, false})
        for (std::size_t i = 0; i < found.size(); ++i)
            if (isPicture(i) == pictures)
                if (RateRead rate = highest(found[i].rates); rate.valid())
                    return rate;
    if (start && isFrameRate(start->rate))
        return start->rate;
    assumed = true;
    return rateOfCuts(timeline);
}

} // namespace cutroom::otio
