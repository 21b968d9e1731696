// Reads timelines in OpenTimelineIO JSON (.otio): all schemas, old and new, that describe editorial
// content. Formula of every length and place: OpenTimelineIO's own composition rules.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// The key under which our own writer keeps, in metadata, what the format has no place for: that a
// timeline counts in drop frame, the values that a marker has for its project's fields.
inline constexpr char kOwnMetadata[] = "cutroom";
inline constexpr char kOwnDropFrame[] = "drop_frame";
inline constexpr char kOwnFields[] = "fields";

// Reads `bytes`; `file` names them in messages. Gives one timeline for a root Timeline, Clip,
// Stack or Track, and one per such child of a collection. Unknown schemas, metadata and effects are
// kept as JSON text. Fails as `damaged`, naming the place, for text that is not JSON, a NaN or
// infinite time, a rate of 0 or less, a negative length, an unknown length of a clip, and nesting
// beyond 64. Memory stays within a small multiple of the input.
CUTROOM_API Result<std::vector<Timeline>> readOtio(std::string_view bytes, const std::string& file);

// The same from a file.
CUTROOM_API Result<std::vector<Timeline>> readOtioFile(const std::string& path);

} // namespace cutroom
