// `EditReader`: reads the channels, cues and effect graphs of an edit where they lie, for what must
// be quick: nothing is copied, counted or allocated.
#pragma once

#include "platform/store/Edit.h"

#include <cstddef>
#include <optional>

namespace cutroom {

// Holds the edit's lock for its own lifetime, so what it refers to stays; its holder must not take
// a lock of a lower rank, nor tell of changes. Made on the stack; any thread.
class CUTROOM_API EditReader {
public:
    explicit EditReader(const Edit& edit);
    EditReader(const EditReader&) = delete;
    EditReader& operator=(const EditReader&) = delete;

    // Channels by index, in the edit's channel order; `index` is below the number.
    std::size_t getNumChans() const noexcept;
    const IdStamp& getId(std::size_t index) const noexcept;
    const Cel& getCel(std::size_t index) const noexcept;
    // The first cut of a channel (or end of its list) later than `time`, and the last one earlier
    // than it; nothing when there is none. O(log n), and O(1) near `hint`: any number, better one
    // that an earlier search left there.
    std::optional<Flicks> cutAfter(std::size_t index, Flicks time,
                                   std::size_t& hint) const noexcept;
    std::optional<Flicks> cutBefore(std::size_t index, Flicks time,
                                    std::size_t& hint) const noexcept;

    const CueList& getCues() const noexcept;
    // Null when the edit has no such graph.
    const EffectGraph* findEffectGraph(const IdStamp& id) const noexcept;
    Kv::FrameRate getFrameRate() const noexcept;
    // See `Edit::changeCount`.
    std::uint64_t changeCount() const noexcept { return edit_.changeCount(); }

private:
    const Edit& edit_;
    const Edit::Lock lock_;
    const EditState& state_;
};

} // namespace cutroom
