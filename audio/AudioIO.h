// `Aud::IO`: the mix of an edit made, and mix configuration files applied.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Strings.h"
#include "platform/store/EditPtr.h"

class KvIniFile;

namespace Aud::IO {

// Gives the edit a valid mix with an input for each of its audio channels, where it has none; of a
// valid mix only inputs for channels added later are made. What is set stays. Takes the edit's
// lock; any thread.
CUTROOM_API void initialiseAudioMix(const EditPtr& edit);

// Takes over what a mix configuration file (docs/formats/mix.md) holds and the edit has channels
// for. With `makeMix` an edit without a mix is given one first, otherwise it is left alone. Records
// the change, if there is one, to be told with the edit's other changes. False, with nothing made,
// when there is no edit or the file holds no mix configuration.
CUTROOM_API bool applyConfigurationInformationToEdit(const EditPtr& edit, const KvIniFile& file,
                                                     bool makeMix);

// The path of the open project's mix configuration for new edits (`ProjectDefaults`), a file in the
// project's folder; empty when there is none. It is the same for every edit.
CUTROOM_API LightweightString<wchar_t>
getProjectDefaultMixConfigFilenameForEdits(const Cookie& edit);

} // namespace Aud::IO
