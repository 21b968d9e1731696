// A Vob's way from event to event.
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/EditReader.h"
#include "vob/EventMemory.h"
#include "vob/EventSearch.h"
#include "vob/TrimObj.h"
#include "vob/Vob.h"

#include <atomic>
#include <cmath>
#include <limits>

using cutroom::CueStops;
using cutroom::EditReader;
using cutroom::EventSearch;

namespace {

constexpr char kTransitionStops[] = "Transitions stops";
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double nearestFrame(double seconds, const Kv::FrameRate& rate) {
    if (!rate.valid() || !cutroom::isStorableTime(seconds))
        return seconds;
    return cutroom::toSeconds(
        rate.frameToFlicks(rate.flicksToFrameNearest(cutroom::toFlicks(seconds))));
}

} // namespace

// --- looking -------------------------------------------------------------------------------------

void Vob::offerChannels(EventSearch& search, const EditReader& edit, unsigned stops,
                        bool marksToFrames, IdStamp& firstSelected) {
    eventMemory_->cuts.resize(edit.getNumChans());
    for (std::size_t i = 0; i < edit.getNumChans(); ++i) {
        const IdStamp& channel = edit.getId(i);
        const EditModule::ChannelState state = module_.getChannelState(channel, i);
        if (state.selected) {
            if (!firstSelected.valid())
                firstSelected = channel;
            search.offerCuts(edit, i, eventMemory_->cuts[i]);
            if ((stops & kStopTransitionMidPoints) != 0)
                search.offerMidPoints(edit, i);
        }
        if ((stops & kStopMarks) != 0)
            for (const double mark : {state.markIn, state.markOut})
                if (mark != kNoTime)
                    search.offer(marksToFrames ? nearestFrame(mark, edit.getFrameRate()) : mark);
    }
}

void Vob::offerCues(EventSearch& search, const EditReader& edit, unsigned stops) {
    if ((stops & (kStopCues | kStopSecondCues)) == 0)
        return;
    CueStops& cues = eventMemory_->cues;
    cues.follow(edit.getCues(), edit.changeCount());
    if (cues.empty())
        return;
    const double frame = edit.getFrameRate().frameDuration();
    if ((stops & kStopCues) != 0)
        search.offerSorted(cues.times(CueStops::kOrdinary), frame);
    if ((stops & kStopSecondCues) != 0)
        search.offerSorted(cues.times(CueStops::kSecond), frame);
}

EventInfo Vob::findEvent(bool forward, double from, bool ignoreUnjoined, bool includeCurrent) {
    const unsigned midPoints =
        getStopAtTransitionMidPoints() ? unsigned{kStopTransitionMidPoints} : 0u;
    const unsigned wanted =
        (getConsoleTabStops() & ~unsigned{kStopTransitionMidPoints}) | midPoints;
    Kv::Ptr<Vob> self;
    if (wanted != getConsoleTabStops()) {
        self = keepAlive();
        setConsoleTabStops(wanted);
    }
    const unsigned stops = getConsoleTabStops();
    EventInfo info{from, from, {}, 0};
    if (!edit_ || std::isnan(from))
        return info;

    const bool trimming = !ignoreUnjoined && getNumUnjoinedCuts() > 0;
    double cutsFrom = from;
    if (trimming)
        if (const double unjoined = TrimObj(*this).getNearestCutTime(from); unjoined != kNoTime)
            cutsFrom = unjoined;
    EventSearch search(forward ? EventSearch::kForward : EventSearch::kBackward, from, cutsFrom);
    const EditReader edit(*edit_);
    offerChannels(search, edit, stops, trimming, info.channel);
    if ((stops & kStopCurrent) != 0 && includeCurrent)
        search.offer(getCurrentTime());
    offerCues(search, edit, stops);
    info.time = search.nearest(from);
    return info;
}

EventInfo Vob::getNextEvent(double seconds, bool ignoreUnjoined, bool includeCurrent) {
    return findEvent(true, seconds, ignoreUnjoined, includeCurrent);
}

EventInfo Vob::getPrevEvent(double seconds, bool ignoreUnjoined, bool includeCurrent) {
    return findEvent(false, seconds, ignoreUnjoined, includeCurrent);
}

// Since every step asks for it, the value is kept until a preference changes: in the lowest bit,
// with the count of changes at which it was read above it.
bool Vob::getStopAtTransitionMidPoints() {
    static std::atomic<std::uint64_t> kept{0};
    const std::uint64_t count = EditorPreferences::changeCount();
    std::uint64_t known = kept.load(std::memory_order_relaxed);
    if (known >> 1 != count) {
        known = count << 1 | (EditorPreferences::getPreference(kTransitionStops, false) ? 1u : 0u);
        kept.store(known, std::memory_order_relaxed);
    }
    return (known & 1) != 0;
}

void Vob::setStopAtTransitionMidPoints(bool on) {
    EditorPreferences::setPreference(kTransitionStops, on);
}

// --- going ---------------------------------------------------------------------------------------

// The caller keeps the Vob alive.
bool Vob::moveTimeTo(const EventInfo& event) {
    const double before = getCurrentTime();
    if (!event.found() || event.time == before)
        return false;
    setCurrentTime(event.time);
    return getCurrentTime() != before;
}

bool Vob::setTimeToNextEvent() {
    const Kv::Ptr<Vob> self = keepAlive();
    return moveTimeTo(getNextEvent(getCurrentTime(), false, false));
}

bool Vob::setTimeToPrevEvent() {
    const Kv::Ptr<Vob> self = keepAlive();
    return moveTimeTo(getPrevEvent(getCurrentTime(), false, false));
}

bool Vob::setTimeToFirstEvent() {
    const Kv::Ptr<Vob> self = keepAlive();
    return moveTimeTo(getNextEvent(-kInfinity, true, false));
}

bool Vob::setTimeToLastEvent() {
    const Kv::Ptr<Vob> self = keepAlive();
    return moveTimeTo(getPrevEvent(kInfinity, true, false));
}
