// Describes an edit of the store as it is now, in the neutral form that writers take.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"
#include "platform/store/EditPtr.h"

namespace cutroom {

// Describes `edit` and every edit nested in it. Times, names, flags and speeds are those of the
// store; what was kept at import comes with them (metadata, effects, how times were written), for
// the writer to repeat as far as it still holds. Media references are those of the import while the
// clip plays the same media, else made from the log. Black becomes a gap, except for padding under
// a transition at head or tail. Takes each edit's lock for a moment, one at a time. Fails when an
// edit is nested in itself, deeper than 64 levels, or the whole has more than four million items.
Result<Timeline> describeForExport(const EditPtr& edit);

} // namespace cutroom
