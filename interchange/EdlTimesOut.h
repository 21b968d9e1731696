// What an edit list says of time: the timecodes of its events and their speeds.
#pragma once

#include "interchange/EdlEventsOut.h"
#include "interchange/Timeline.h"
#include "platform/base/Timecode.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cutroom {

constexpr int kMostEdlFrames = 99; // of a second, that two digits can number

// The texts for one timeline. An event that was read from an edit list keeps its timecodes and its
// speed as they were written, while they still say where it is and what it plays.
class EdlTimesOut {
public:
    // The timeline outlives it.
    explicit EdlTimesOut(const Timeline& timeline);

    // How the record's timecode counts, and that of what an event plays.
    const TimecodeFormat& record() const noexcept { return record_; }
    TimecodeFormat sourceOf(const EdlEventOut& event) const;
    // The frame of the record at a time of the timeline, from its start, and the timecode there.
    std::int64_t frameAt(Flicks time) const { return record_.rate.flicksToFrameNearest(time); }
    std::string recordText(std::int64_t frame) const;
    // Tells whether a frame of a record that begins on its day lies before 00:00:00:00, where its
    // timecode would be that of the end of the day.
    bool isBeforeZero(std::int64_t frame) const {
        return startFrame() >= 0 && startFrame() + frame < 0;
    }

    // The events in the order of their lines. A clip that was read from two events becomes two
    // again, as long as both still hold.
    std::vector<EdlEventOut> inTheirLines(const std::vector<EdlEventOut>& events) const;
    // The four timecodes of an event; counts what they cannot express.
    std::string timecodes(const EdlEventOut& event, EdlLosses& losses) const;
    // The four timecodes of the outgoing side of a transition that begins at `frame`; null: black.
    std::string timecodes(const Item* outgoing, std::int64_t frame) const;
    // The speed of an event that plays something, in frames a second; empty for play speed.
    std::string speed(const EdlEventOut& event) const;
    // What was read of the outgoing side of an event with a transition, as long as it still holds:
    // the transition begins where it did, and the clip that goes out is unchanged (or never was the
    // clip before). Empty otherwise.
    std::string_view keptOutgoing(const EdlEventOut& event) const;

    // The four timecodes that were read, or none.
    static std::vector<std::string> labelsOf(std::string_view facts);

private:
    TimecodeFormat sourceOf(const Item& item) const;
    std::int64_t sourceFrame(const Item& item, std::int64_t frame, const Kv::FrameRate& rate) const;
    std::int64_t sourceOut(const EdlEventOut& event, std::int64_t in,
                           const TimecodeFormat& format) const;
    std::int64_t startFrame() const { return timeline_.startFrame.value_or(0); }

    bool isAt(const std::string& label, std::int64_t frame) const;
    bool isRecord(const EdlEventOut& event) const;
    bool isSource(std::string_view facts, const Item& item, std::int64_t frame) const;
    bool isWritten(const EdlEventOut& event) const;
    bool isUnchanged(const Item& item) const;
    std::optional<std::pair<EdlEventOut, EdlEventOut>> asTwo(const EdlEventOut& event) const;
    std::optional<std::string> writtenSpeed(std::string_view facts, double speed) const;

    const Timeline& timeline_;
    const TimecodeFormat record_;
};

} // namespace cutroom
