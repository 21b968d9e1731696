// Reads edit lists in the CMX 3600 form (.edl) as editors write them today.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// Reads `bytes`; `file` names them in messages. A list does not state its rate: without `rate` the
// one at which most events are as long on the source as on the record side is taken, and said.
// Gives one timeline whose first frame is the earliest record in point. A transition pair becomes a
// cut at its record in with the transition after it; events that overlap go to further tracks. A
// list of marker events gives a timeline without tracks.
// Fails as `damaged` when no line is an event or marker, a record label cannot exist at `rate`, or
// the list is larger than 16 MB, 512 tracks or a million items.
CUTROOM_API Result<std::vector<Timeline>> readEdl(std::string_view bytes, const std::string& file,
                                                  std::optional<Kv::FrameRate> rate = {});

// The same from a file.
CUTROOM_API Result<std::vector<Timeline>> readEdlFile(const std::string& path,
                                                      std::optional<Kv::FrameRate> rate = {});

} // namespace cutroom
