// The steps that all whole copies share. Internal to the edit operations.
#pragma once

#include "editops/UnfinishedEdit.h"
#include "platform/base/Strings.h"

namespace cutroom {

// It can be opened: it is there, and has not been deleted while somebody held it.
bool opens(const EditPtr& edit);
// Makes `copy` writable and stamps its maker and time; without one logs that there is none.
EditModifier beginCopy(EditModifier copy);
// The whole of `source` as an edit, begun as above. Empty and logged when the source does not open,
// or no copy could be made.
EditModifier beginWholeCopy(const EditPtr& source);
// The errors of the channels.
void copySyncErrors(const EditPtr& source, const EditPtr& copy);
// Names the copy, tells of it, and hands it out.
EditModifier finishWholeCopy(UnfinishedEdit& copy, const LightweightString<wchar_t>& name);

} // namespace cutroom
