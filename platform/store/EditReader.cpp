#include "platform/store/EditReader.h"

#include "platform/store/CelStorage.h"
#include "platform/store/EditImpl.h"

#include <algorithm>

namespace cutroom {

EditReader::EditReader(const Edit& edit)
    : edit_(edit), lock_(edit), state_(EditAccess::impl(edit).state) {}

std::size_t EditReader::getNumChans() const noexcept { return state_.channels.size(); }

const IdStamp& EditReader::getId(std::size_t index) const noexcept {
    return state_.channels[index].id;
}

const Cel& EditReader::getCel(std::size_t index) const noexcept {
    return *state_.channels[index].cel;
}

// Only the dense list of starts is searched, and the end beside it: an event is never touched but
// the last.
std::optional<Flicks> EditReader::cutAfter(std::size_t index, Flicks time) const noexcept {
    const Cel& cel = getCel(index);
    const CelStorage& list = *CelAccess::storage(cel);
    const Flicks offset = CelAccess::offset(cel);
    const auto found = std::upper_bound(list.starts.begin(), list.starts.end(), time - offset);
    if (found != list.starts.end())
        return *found + offset;
    if (list.empty() || list.end() + offset <= time)
        return std::nullopt;
    return list.end() + offset;
}

std::optional<Flicks> EditReader::cutBefore(std::size_t index, Flicks time) const noexcept {
    const Cel& cel = getCel(index);
    const CelStorage& list = *CelAccess::storage(cel);
    const Flicks offset = CelAccess::offset(cel);
    const auto found = std::lower_bound(list.starts.begin(), list.starts.end(), time - offset);
    if (found == list.starts.begin())
        return std::nullopt;
    if (found == list.starts.end() && list.end() + offset < time)
        return list.end() + offset;
    return *(found - 1) + offset;
}

const CueList& EditReader::getCues() const noexcept { return *state_.cues; }

const EffectGraph* EditReader::findEffectGraph(const IdStamp& id) const noexcept {
    if (!id.valid())
        return nullptr;
    const auto& graphs = *state_.graphs;
    const auto found = graphs.find(id);
    return found == graphs.end() ? nullptr : &found->second;
}

Kv::FrameRate EditReader::getFrameRate() const noexcept { return state_.rate; }

} // namespace cutroom
