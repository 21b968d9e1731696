// Copies of a marked range: a new edit, subclip, sync ghost or print ghost.
//
//   source  |----|==marked==|------|
//   copy         |==========|            from its time 0 on
//
// Each gives a new edit or log of the open project opened for writing, which is saved with the next
// flush; empty on failure, silently, and then nothing of it stays. The source is left alone. Types
// are 2 (an edit), 4 (a sync ghost), 8 (a print ghost) and 16 (a subclip); every other type fails.
// The copy takes all channels of the source; clips are trimmed at the ends of the range, and what
// lies beyond the source's end is left out. A name is applied as by `edit_modify_name`; an empty
// one keeps the source's. Not to be called under an edit's lock; any thread otherwise.
#pragma once

#include "platform/base/LogType.h"
#include "platform/base/Strings.h"
#include "platform/store/EditModule.h"
#include "platform/store/EditPtr.h"

// Copies the marked region of `source`, named by a suffix for the type. With `wholeEdit` and type 2
// the whole edit instead, as by `copyEdit`. Of an edit only the channels selected in `source` stay
// (derived ones as `copyEdit` counts them).
CUTROOM_API EditModifier copyRange(const EditModule& source, eLogType type, bool wholeEdit);

// Copies all of `source`, named by a suffix in lower case.
CUTROOM_API EditModifier edcopy_general_copy(const Cookie& source, eLogType type);

// Copies from the earlier to the later of two times in seconds, each put on the source's frames: to
// the frame it lies in, or to the next one from a tenth of a frame below that on.
CUTROOM_API EditModifier edcopy_general_copy_range(const Cookie& source, eLogType type,
                                                   const LightweightString<wchar_t>& name,
                                                   double t1, double t2);
// `makeNewLog` with a fresh cookie, and with a given one; the first cookie is not used.
CUTROOM_API EditModifier edcopy_general_copy_range(const Cookie& unused, eLogType type,
                                                   const LightweightString<wchar_t>& name,
                                                   const EditModule& source);
CUTROOM_API EditModifier edcopy_general_copy_range(const Cookie& unused, const Cookie& newLog,
                                                   eLogType type,
                                                   const LightweightString<wchar_t>& name,
                                                   const EditModule& source);

// Makes an edit or log of the marked region of `source` under the cookie `newLog` (invalid: a fresh
// one; fails when it is taken). The selection of `source` only says whose marks count.
//
// What comes along: the cut lists with their effects, levels and fonts; labels, moved so that each
// frame keeps its number; the playback format, burnt-in timecode, names and groups of channels, the
// mix, the keys that describe a log or its media, and the project's own attributes. To an edit and
// a subclip also the cues that a person placed inside the region, moved and with fresh ids. To all
// but an edit also the picture's metadata (unless the source is a recording of sound only), the
// sound's metadata, the media's locations, and the source's cookie as the key "parent".
//
// A subclip of a subclip is flattened, unless the configuration value "trace_top_level_subclips"
// is 0.
CUTROOM_API EditModifier makeNewLog(const EditModule& source, eLogType type,
                                    const LightweightString<wchar_t>& name, const Cookie& newLog);
