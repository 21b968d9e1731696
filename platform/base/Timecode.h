// Timecode after SMPTE ST 12-1: frame counts as hours, minutes, seconds and frames, with
// drop-frame counting where the rate has it.
#pragma once

#include "platform/base/FrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

// How frames of a rate are labelled. Drop-frame counting leaves out labels 0 and 1 (to 3 at 60, to
// 7 at 120) of every minute not divisible by ten. A value.
struct CUTROOM_API TimecodeFormat {
    Kv::FrameRate rate;
    bool dropFrame = false; // counts only where rate.allowsDropFrame()

    friend bool operator==(const TimecodeFormat&, const TimecodeFormat&) = default;
};

// Frames in 24 hours of labels.
CUTROOM_API std::int64_t framesPerDay(const TimecodeFormat& format) noexcept;

// "HH:MM:SS:FF", drop frame "HH:MM:SS;FF"; three digits of frames above 100 labels a second. Whole
// days wrap; a negative count shows as its label counted back from 24:00:00:00. A format without
// rate gives "--:--:--:--".
CUTROOM_API std::string timecodeText(std::int64_t frame, const TimecodeFormat& format);

// The frame a label names. Takes `;`, `.` or `,` before the frames as drop frame, whatever the
// format says, where the rate has it; `*sawDrop` tells which was found. Hours may go past a day.
// Nothing for a text of another shape, minutes or seconds above 59, frames not below the nominal
// rate, or a label that drop-frame counting leaves out.
CUTROOM_API std::optional<std::int64_t> parseTimecode(std::string_view text,
                                                      const TimecodeFormat& format,
                                                      bool* sawDrop = nullptr) noexcept;

} // namespace cutroom
