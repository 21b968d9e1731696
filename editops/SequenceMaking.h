// Sequences made from a clip or source, to be cut further.
//
// Each gives a new edit of the open project opened for writing; empty on failure, and then nothing
// of it stays. Not to be called under an edit's lock; any thread otherwise.
#pragma once

#include "platform/base/Strings.h"
#include "platform/store/EditModule.h"
#include "platform/store/EditPtr.h"

// Makes an empty edit with as many picture and sound channels as `clip` selects, at the project's
// frame rate, and cuts the marked region of the clip into it from time 0 on. Named after the clip
// with the suffix of sequences. A clip that is not imported is added to the project first. Fails
// silently, also for a clip that has been deleted since.
CUTROOM_API EditModifier makeSequenceFromClip(const EditModule& clip);

// Copies the whole of `source` as an edit (see `copySequenceEdit`, whose log messages it shares),
// without the picture and sound channels that `source` does not select. Sync errors come along
// when the source is an edit.
CUTROOM_API EditModifier makeSequenceFromSource(const EditModule& source,
                                                const LightweightString<wchar_t>& name);
