// `TrimObj`: trimming by the unjoined cuts of a viewed edit, as far as the viewed edit itself
// needs it.
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/Status.h"

class Vob;

// Made on the stack for one use, on the user-interface thread. `vob` outlives it.
class CUTROOM_API TrimObj {
public:
    explicit TrimObj(Vob& vob);

    // Some selected channel has unjoined cuts.
    bool isTrimViewPossible() const;
    // Tells whether `seconds` lies between the two cuts of an unjoined pair of the channel.
    //
    //   -----|  clip |==popped==| clip |-----      | unjoined cut
    bool isPopped(const IdStamp& channel, double seconds) const;

    // The channel that is trimmed and snapped to: the first selected one with unjoined cuts, unless
    // another was set. The empty id when there is none.
    IdStamp getSnapChannel() const;
    void setSnapChannel(const IdStamp& channel) { snap_ = channel; }
    // The time of the snap channel's unjoined cut nearest to `seconds`; kNoTime when it has none.
    double getNearestCutTime(double seconds) const;

    // Moves every unjoined cut of the snap channel by `amount` frames (or seconds), all or none;
    // then, with `rejoin`, takes them out of the selection. Only the edit tells, before it returns.
    cutroom::Status trimFrames(double amount, bool inSeconds, bool rejoin);

private:
    Vob& vob_;
    IdStamp snap_;
};
