// Which channels a copy keeps. Internal to the edit operations.
#pragma once

#include "platform/store/EditModule.h"

namespace cutroom {

// The selection of `module` with the derived channels that go with it: a levels channel counts as
// its audio channel, any other as selected when all channels of its type are.
EditModule withDerivedChannels(const EditModule& module);

// Removes from `copy` the channels of `types` whose pairs in `source` are not selected, derived
// ones as above.
void removeUnselected(EditModifier& copy, const EditModule& source, unsigned types);

} // namespace cutroom
