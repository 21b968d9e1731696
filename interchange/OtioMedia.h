// Media references and effects of OTIO clips.
#pragma once

#include "interchange/OtioDocument.h"

namespace cutroom::otio {

// The active reference of a clip, old form or new; `none` when it has none.
MediaReference readMedia(Document& document, const Json& clip, const Place& place);

// One reference object.
MediaReference readReference(Document& document, const Json& reference, const Place& place);

// The speed that the time effects of an item make together: 2 is twice as fast, 0 a freeze.
double readSpeed(Document& document, const Json& item, const Place& place);

} // namespace cutroom::otio
