// `Editor::apply` and the store's own whole-edit operations: laying the marked material of one edit
// into another, flattening layers.
#pragma once

#include "platform/base/Status.h"
#include "platform/store/EditModule.h"

// Operations of `Editor::apply`.
enum eEditOperation : int {
    kEditRebuild = 2, // the target takes the source's selected channels over the marked region,
                      // from its time 0; channels it lacks are added
    kEditOverlay = 3, // the marked region is laid over the target at its current time
};

class CUTROOM_API Editor {
public:
    // Lays the marked region of `source` (its selected channels) into `target`'s edit.
    //
    //   source  |----|==marked==|------|
    //   target  |-------|==========|---|      kEditOverlay, at the target's current time
    //
    // The first selected channel of a type and sub-type goes to the first one of the target (of
    // those selected there, when overlaying), and so on; the levels of audio channels go with
    // them. Pieces are trimmed at the region's ends, effect graphs that lie inside come along,
    // names and metadata too. Overlaying lays black where the source has nothing; rebuilding lays
    // what there is. Channels that are added are selected in `target`. `flags` is 0. The target is
    // left as it was on failure. The changes wait to be told.
    static cutroom::Status apply(const EditModule& source, EditModule& target, int operation,
                                 int flags);
};

namespace cutroom {

// Replaces the selected video channels of `edit` by one layer that holds, at every moment, the
// topmost clip that is not black (a later channel lies above an earlier one); audio channels stay,
// and so do matte and right-eye pictures. `mode` 3 is the one there is, `flags` 0. Linear.
CUTROOM_API Status flattenEdit(const EditModifier& edit, const EditModule& selection, int mode,
                               int flags);

} // namespace cutroom
