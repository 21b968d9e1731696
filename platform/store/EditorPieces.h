// The pieces of cut event lists that edit operations lay elsewhere, and the effects at their ends.
// Internal to the store.
//
// Where a list is cut, an effect on a clip stays with the clip, and a transition goes with its
// point: one that has its point at the cut or beyond it goes, one that reaches across the cut ends
// there.
#pragma once

#include "platform/store/CelStorage.h"
#include "platform/store/Effects.h"
#include "platform/store/Shared.h"

#include <map>

namespace cutroom {

using GraphTable = std::map<IdStamp, EffectGraph>;

// What is taken of a list: [from, to) of `source`, moved by `by`.
struct Piece {
    const Cel& source;
    Flicks from = 0;
    Flicks to = 0;
    Flicks by = 0;
};

// As much of the piece as the list fills. Shares a list that lies inside as a whole. Null when it
// would lie outside the range of an edit. Shortened transitions are entered in `graphs` under ids
// of their own.
Kv::Ptr<Cel> filledPart(const Piece& piece, Shared<GraphTable>& graphs);
// The whole piece, black where the list has nothing. Null and `graphs` as above.
Kv::Ptr<Cel> wholePart(const Piece& piece, Shared<GraphTable>& graphs);
// A copy of `list` with `piece`, which fills [from, to), laid over it. Null when that cannot be;
// `graphs` as above.
Kv::Ptr<Cel> laidOver(const Cel& list, const Cel& piece, Flicks from, Flicks to,
                      Shared<GraphTable>& graphs);
// Gives the ends of a part of a segment, cut off from `in` and `out`, the effects of the clip.
void keepClipEffects(EventPair& part, const ChannelEvent& in, const ChannelEvent& out,
                     const GraphTable& graphs);

} // namespace cutroom
