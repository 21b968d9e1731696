// `cutroom::ClipMap`: where a sequence shows the clips of a sync group.
//
// The map is internal to this folder. A segment refers to a clip when both show the same stretch of
// the same material, or when the clip itself is cut in. Segments that play slower, faster or
// backwards are followed too.
//
//   clip    10 |------- material 1, from 100 -------| 40      (material 100 to 130)
//   edit     0 |-- other --|5-- material 1, from 112 --| 15   shows the clip's 22 to 32
//
// Backwards, what is seen at the border of two frames of the clip is the earlier of them: a segment
// that plays the frames 0 to 9 from their end begins with frame 9.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Time.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace cutroom {

// One stretch of an edit that shows one stretch of a clip. A value.
struct CUTROOM_API ClipReference {
    Cookie clip;
    IdStamp channel;      // of the edit
    Flicks start = 0;     // on the edit
    Flicks end = 0;       // exclusive
    Flicks clipStart = 0; // the clip's time at `start`
    double speed = 1.0;   // clip seconds per edit second; 0: one picture throughout
    Kv::FrameRate clipRate = {};

    bool valid() const noexcept { return clip.valid(); }
    // `time` lies in it, or at its very end.
    bool touches(Flicks time) const noexcept { return time >= start && time <= end; }
    // The clip's time whose picture is shown there.
    Flicks clipTimeAt(Flicks editTime) const noexcept;
    // Where on the edit the clip's `clipTime` is shown, its very end included; of a still, where
    // nearest to `near`.
    std::optional<Flicks> editTimeOf(Flicks clipTime, Flicks near) const noexcept;
};

// User-interface thread. Takes the lock of one edit at a time.
class ClipMap {
public:
    // Finds the references of `sequence` to `clips` anew, unless nothing has changed since the last
    // time.
    void update(const EditPtr& sequence, const std::vector<EditPtr>& clips);
    // Video channels first; the topmost channel of a kind before those that it lies over; then by
    // time. What is disabled refers to nothing.
    const std::vector<ClipReference>& references() const noexcept { return references_; }

private:
    // An edit as it was read. One that has gone may have left its address to another.
    struct Seen {
        const void* edit;
        Cookie cookie;
        std::uint64_t changes;
        friend bool operator==(const Seen&, const Seen&) = default;
    };

    std::vector<Seen> seen_;
    std::vector<ClipReference> references_;
};

} // namespace cutroom
