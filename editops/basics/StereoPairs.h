// Stereo pairs: audio channels of an edit that are panned apart and edited together.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/store/EditPtr.h"

#include <vector>

// Groups the channels two by two, in the order given (empty: all audio channels), and pans the two
// inputs of each pair to the left and the right when the edit has a valid mix. An odd last channel
// stays single, and so do channels paired with themselves or with what is no channel of the edit.
// The number of channels is taken as an 8-bit value, so 256 count as none. Nothing without edit.
// Tells a change of the mix, then one of the groups, whatever was paired.
CUTROOM_API void makeStereoPairs(const EditPtr& edit, std::vector<IdStamp> ids);

// Whether new edits get stereo pairs: the preference "New edit stereo pairs", by default the
// configuration value "auto_stereo_pairs" (1). Any thread.
CUTROOM_API bool getAutoGroupEditAudioTracks();
CUTROOM_API void setAutoGroupEditAudioTracks(bool on);
