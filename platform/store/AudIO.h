// `Aud::IO`: the audio mixes of edits: how they begin, and what they take from a mix configuration.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

class KvIniFile;

// Any thread. A mix is replaced as a whole, never changed in place, and only when that makes a
// difference; no undo step is made.
namespace Aud::IO {

// The path of the open project's mix configuration for new edits such as `edit`. Empty without a
// project, when it names none, and for a cookie that is not of kind 'E'.
CUTROOM_API LightweightString<wchar_t>
getProjectDefaultMixConfigFilenameForEdits(const Cookie& edit);

// Takes over what the configuration holds and the edit's mix has room for. With `initialise` an
// edit without a valid mix gets one first (and keeps it, whatever the file holds); otherwise such
// an edit is left alone. False when nothing could be taken from the file, or without edit.
CUTROOM_API bool applyConfigurationInformationToEdit(const EditPtr& edit, const KvIniFile& file,
                                                     bool initialise);

// Gives the edit a valid mix with an input for each of its audio channels (at most 256); what its
// mix holds stays. Nothing without edit.
CUTROOM_API void initialiseAudioMix(const EditPtr& edit);

} // namespace Aud::IO
