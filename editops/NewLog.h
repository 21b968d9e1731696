// The first step of a copy of a range: a new edit with all that lies in the range. Internal to the
// edit operations.
#pragma once

#include "platform/base/LogType.h"
#include "platform/store/EditModule.h"

namespace cutroom {

// Makes an edit of `type` under `cookie` (invalid: a fresh one) with the marked region of all
// channels of `source`, its details and its name. Empty, and nothing is left, when that fails.
EditModifier buildLog(const EditModule& source, eLogType type, const Cookie& cookie);

} // namespace cutroom
