// Channel groups carried from one edit to another.
#pragma once

#include "platform/store/EditPtr.h"

// Gives `to` the channel groups of `from`: the channels of the same indices. Members that `to`
// lacks stay out, and groups that have fewer than two then. Nothing, and `to` keeps its own, when
// `from` has no groups or either edit is missing.
CUTROOM_API void recreateTrackGroups(const EditPtr& from, const EditPtr& to);
