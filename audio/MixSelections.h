// The tie between the channel selection of a viewed edit and its mix: an audio channel that is not
// selected is a muted input.
#pragma once

#include "platform/base/Export.h"

class EditModule;

// Mutes the inputs of the edit's mix whose channels the module does not select, and only those.
// Writes what differs, tells it as modifications of kind 27 and code 4 at once, makes no undo step.
// A mix is made only when something must be muted. Nothing is written to an edit that is read-only
// or that the permissions manager lets nobody write. User-interface thread.
CUTROOM_API void updateAudioMixFromSelections(const EditModule& module);

// Selects the audio channels whose inputs the mix does not mute, and deselects the others. Without
// a valid mix the selection stays as it is. True when that changed anything.
CUTROOM_API bool selectTracksFromAudioMix(EditModule& module);
