// Level nodes of a range of an edit. Internal to the store.
#pragma once

#include "platform/store/Levels.h"

namespace cutroom {

// The gain at `time`: straight between nodes, constant outside; 1 without nodes.
float gainAt(const LevelNodes& nodes, Flicks time) noexcept;
// The nodes of [from, to], moved by `by`, with one at each end so that the gain stays as it was.
// Empty without nodes.
LevelNodes nodesOf(const LevelNodes& nodes, Flicks from, Flicks to, Flicks by);
// `nodes` with those of [from, to] replaced by `piece`.
LevelNodes withPiece(const LevelNodes& nodes, Flicks from, Flicks to, const LevelNodes& piece);

} // namespace cutroom
