#include "platform/store/EditReader.h"

#include "platform/store/CelStorage.h"
#include "platform/store/EditImpl.h"

#include <algorithm>

namespace cutroom {

namespace {

// Index of the first start later than `time`; the number of starts when there is none. A caller
// that steps from cut to cut finds it at the hint or beside it. At 0, `hint - 1` wraps round and is
// out of range.
std::size_t firstAfter(const std::vector<Flicks>& starts, Flicks time, std::size_t& hint) noexcept {
    for (const std::size_t at : {hint, hint + 1, hint - 1})
        if (at <= starts.size() && (at == 0 || starts[at - 1] <= time) &&
            (at == starts.size() || starts[at] > time))
            return hint = at;
    const auto found = std::upper_bound(starts.begin(), starts.end(), time);
    return hint = static_cast<std::size_t>(found - starts.begin());
}

} // namespace

EditReader::EditReader(const Edit& edit)
    : edit_(edit), lock_(edit), state_(EditAccess::impl(edit).state) {}

std::size_t EditReader::getNumChans() const noexcept { return state_.channels.size(); }

const IdStamp& EditReader::getId(std::size_t index) const noexcept {
    return state_.channels[index].id;
}

const Cel& EditReader::getCel(std::size_t index) const noexcept {
    return *state_.channels[index].cel;
}

// Searches the dense list of starts, and reads the last event for its end; no other event is
// touched.
std::optional<Flicks> EditReader::cutAfter(std::size_t index, Flicks time,
                                           std::size_t& hint) const noexcept {
    const Cel& cel = getCel(index);
    const CelStorage& list = *CelAccess::storage(cel);
    const Flicks offset = CelAccess::offset(cel);
    const std::size_t at = firstAfter(list.starts, time - offset, hint);
    if (at < list.starts.size())
        return list.starts[at] + offset;
    if (list.empty() || list.end() + offset <= time)
        return std::nullopt;
    return list.end() + offset;
}

std::optional<Flicks> EditReader::cutBefore(std::size_t index, Flicks time,
                                            std::size_t& hint) const noexcept {
    const Cel& cel = getCel(index);
    const CelStorage& list = *CelAccess::storage(cel);
    const Flicks offset = CelAccess::offset(cel);
    const std::size_t at = firstAfter(list.starts, time - 1 - offset, hint);
    if (at == 0)
        return std::nullopt;
    if (at == list.starts.size() && list.end() + offset < time)
        return list.end() + offset;
    return list.starts[at - 1] + offset;
}

const CueList& EditReader::getCues() const noexcept { return state_.cues; }

const EffectGraph* EditReader::findEffectGraph(const IdStamp& id) const noexcept {
    if (!id.valid())
        return nullptr;
    const auto& graphs = *state_.graphs;
    const auto found = graphs.find(id);
    return found == graphs.end() ? nullptr : &found->second;
}

Kv::FrameRate EditReader::getFrameRate() const noexcept { return state_.rate; }

} // namespace cutroom
