// `TransitionsEditor`: where a transition lies when it is placed at a cut, what of their sources
// the two clips must show for it, and how it is laid.
#pragma once

#include "editops/LastTransition.h"
#include "platform/base/NumRange.h"
#include "platform/base/Status.h"
#include "platform/store/EditModule.h"

#include <optional>

class ce_handle;
struct EffectGraph;

// Free of state. A point is either of the two at a cut (the out point of the clip before it, the in
// point of the clip after it) of a channel of the module's edit; at the ends of the channel there
// is one. Reading takes the edit's lock for moments only.
class CUTROOM_API TransitionsEditor {
public:
    // The part of the edit, in seconds, over which a transition of `length` frames lies.
    //
    //                |----A----|----B----|
    //   from here              |====|              to here           |====|      centred  |==|==|
    //   from start   |=========|                   to end                        |=========|
    //   sections     |=========|=========|         use mark: from a mark to the current time
    //
    // A centred one of an odd length has the odd frame behind the cut. A current section (unfolded
    // or not) is the clip at the cut that holds the current time. Nothing for an invalid point, a
    // length below 1 where it counts, a position that names no place at one cut (selected
    // segments, none), and when what is named is not there or does not touch the cut.
    static std::optional<TimeRange> calcRegion(const EditModule& module, const ce_handle& point,
                                               trans_posn position, int length);

    // The part of its source, in seconds, that the clip to which `point` belongs must show: what it
    // shows now, and beyond its cut what the transition lets show through. It may begin before the
    // source does, or end after it. Nothing for black, and where there is no region.
    //
    //   |----A----|----B----|       A in its source   |---------|==>
    //        |=======|              B in its source              <==|---------|
    static std::optional<TimeRange> calcRequiredSourceClipRegion(const EditModule& module,
                                                                 const ce_handle& point,
                                                                 trans_posn position, int length);

    // Puts a transition on the cut at `point` of `channel` (on its in point, where it has one), in
    // place of what is there, and remembers it as the last. Fails, changing nothing, without a
    // region, with an effect that is no template of a transition, and for an empty modifier. The
    // change is told with the modifier's.
    static cutroom::Status apply(const EditModifier& edit, const EditModule& module,
                                 const IdStamp& channel, const ce_handle& point,
                                 const LastTransition& transition);

    // Puts an effect on `point` of `channel`, in place of the one there; a transition also in place
    // of one on the other point of the cut. Graphs that no point names any more leave the edit.
    // Fails, changing nothing, for an empty modifier, a point that is not of the channel, and an
    // effect that would reach a negative length to either side.
    static cutroom::Status put(const EditModifier& edit, const IdStamp& channel,
                               const ce_handle& point, EffectGraph graph);

    TransitionsEditor() = delete;
};
