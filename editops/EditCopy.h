// Whole copies of an edit or log.
//
// Each gives the copy, a new edit of the open project opened for writing, which is saved with the
// next flush; empty on failure, and then nothing of it stays. The source is left alone. A copy has
// no undo history. A name is applied as by `edit_modify_name`; an empty one keeps the source's.
// Not to be called under an edit's lock; any thread otherwise.
//
// An edit is copied as by `edcopy_general_copy_range` from its start to its end, as an edit (type
// 2): it begins at 0, and ends on its last whole frame. Source material (`get_original_material`
// not 0) and edits of type 256 are copied as files, as they were saved last; that needs a project
// open for writing.
#pragma once

#include "platform/base/Strings.h"
#include "platform/store/EditModule.h"
#include "platform/store/EditPtr.h"

// Copies the edit of `source`, its sync errors with it, and removes what `source` does not select
// (channels of levels count as their audio channels do, other derived ones as the other channels
// of their type). With `stripCookies` a copied file plays itself: each picture and sound channel's
// segment at time 0 takes the strip of the copy that has the channel's number. The marks of
// `source` play no part.
//
// Logs "copyEdit() : Unable to open source edit\n" or "copyEdit() : failed to open copy" on
// failure, as do all in this file.
CUTROOM_API EditModifier copyEdit(const EditModule& source, const LightweightString<wchar_t>& name,
                                  bool stripCookies);

// Copies a whole edit or log as an edit, never as a file, with every channel.
CUTROOM_API EditModifier copySequenceEdit(const EditPtr& source,
                                          const LightweightString<wchar_t>& name);

// Copies the whole of `source`. A copy of the clipboard is no clipboard.
CUTROOM_API EditModifier edcopy_basic_copy(const Cookie& source);

// Copies the edit of `source` whole, then makes one layer of the picture channels that are selected
// in `source`. Named with the suffix of flattened edits.
CUTROOM_API EditModifier flatten(const EditModule& source);
