// `eSetOperation`: the ways in which the contents of several bins make one.
#pragma once

#include "bins/BinData.h"
#include "filters/iMultiBinContainer.h"
#include "platform/base/Strings.h"

//     bins       [a b c]  [b c d]  [c]
//     union      a b c d              assets of any bin
//     common     c                    assets of every bin
//     only first a                    assets of the first bin that no other has
enum eSetOperation : int { kSetUnion = 0, kSetIntersection = 1, kSetDifference = 2 };

// The name shown to the user (string table 12036 to 12038); empty for any other value.
CUTROOM_API LightweightString<wchar_t> getDisplayString(eSetOperation operation);

// Copies of the items that the operation leaves, each asset once: as in the first bin that holds
// it, in the order of the bins; a null bin holds none. Empty for no bins and for any other
// operation. Any thread; each bin's lock is held as a reader, one after the other.
CUTROOM_API BinData::Items combine(const iMultiBinContainer::Bins& bins, eSetOperation operation);
