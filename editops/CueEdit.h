// An edit made of an edit's cues: the regions that they mark, one after the other.
#pragma once

#include "platform/store/Cue.h"
#include "platform/store/EditPtr.h"

#include <vector>

// Strings the regions of `cues` (times on `source`, see `regionsOf`) together in their order.
//
//   source   |----[A===]-----[B======]---|        made   |A===|B======|
//
// The new edit has the source's numbers of video and audio channels, its frame rate and video
// metadata, levels for each audio channel, and the source's name with a suffix. Regions of no
// length add nothing. Unless `alreadyImported`, the source is marked imported; the new edit is not.
// Empty, with nothing changed, without source or when no edit could be made. Not to be called under
// an edit's lock.
CUTROOM_API EditModifier makeEditFromCues(const EditPtr& source, const std::vector<Cue>& cues,
                                          bool alreadyImported);
