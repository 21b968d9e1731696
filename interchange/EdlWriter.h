// Writes edit lists in the CMX 3600 form (.edl), timecode after SMPTE ST 12-1.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"

#include <string>
#include <vector>

namespace cutroom {

struct EdlText {
    std::string text;                  // UTF-8, lines end in LF
    std::vector<std::string> warnings; // what a list cannot say as the timeline has it
};

// Writes one picture track with all sound, or the track that `track` names ("V2", "A1", or its own
// name): of a picture track the sound goes with it, a sound track stands alone. Events are numbered
// from 001, their record time is the timeline's timecode. A list that was read from an edit list
// keeps the timecodes, speeds, channels and comments of every event that has not changed, and its
// picture tracks, which overlap as they did. Fails (`failed`, `notFound`) when nothing can be
// listed, the rate has more than 99 frames, or one picture track has to be chosen.
CUTROOM_API Result<EdlText> writeEdl(const Timeline& timeline, const std::string& track = {});

} // namespace cutroom
