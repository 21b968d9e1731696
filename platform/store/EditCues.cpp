// The markers of an edit.
#include "platform/store/EditImpl.h"

#include <algorithm>
#include <unordered_set>

namespace {

EditModification cueChange(eCueChange what, const Cue& cue, const std::string& origin) {
    EditModification change(kModCues, what);
    change.cue = cue.getExtID();
    change.track = cue.getChannel();
    change.origin = origin;
    return change;
}

bool isStorable(const Cue& cue) {
    return cutroom::isStorableTime(cue.getTime()) &&
           (!cue.hasEnd() || cutroom::isStorableTime(cue.getEndTime()));
}

// Gives each copy of a marker that stands before it in the list an identity of its own.
CueList identified(CueList cues) {
    std::unordered_set<IdStamp> known;
    for (std::size_t i = 0; i < cues.getNumCuePoints(); ++i) {
        if (known.insert(cues.getCuePoint(i).getExtID()).second)
            continue;
        Cue cue = cues.getCuePoint(i);
        cue.setExtID(IdStamp::make());
        cues.setCuePoint(i, std::move(cue));
    }
    return cues;
}

} // namespace

CueList Edit::getCues() const {
    const Lock lock(*this);
    return impl_->state.cues;
}

void Edit::setCues(const CueList& cues, bool notify) {
    const Lock lock(*this);
    if (!std::all_of(cues.cues().begin(), cues.cues().end(), isStorable))
        return;
    if (impl_->set(impl_->state.cues, identified(cues), kModCues))
        impl_->tellDue = impl_->tellDue || notify;
}

bool Edit::addCue(const Cue& cue, const LightweightString<char>& origin) {
    const Lock lock(*this);
    const EditModification change = cueChange(kCueAdded, cue, origin);
    CueList& cues = impl_->state.cues;
    if (cues.find(cue.getExtID()) != SIZE_MAX || cues.addCuePoint(cue) == SIZE_MAX)
        return false;
    impl_->record(change);
    impl_->tellDue = impl_->tellDue || impl_->modifiers == 0;
    return true;
}

bool Edit::changeCue(const Cue& cue, const LightweightString<char>& origin) {
    const Lock lock(*this);
    const EditModification change = cueChange(kCueChanged, cue, origin);
    const std::size_t index = impl_->state.cues.find(cue.getExtID());
    if (index == SIZE_MAX || impl_->state.cues.getCuePoint(index) == cue ||
        !impl_->state.cues.setCuePoint(index, cue))
        return false;
    impl_->record(change);
    impl_->tellDue = impl_->tellDue || impl_->modifiers == 0;
    return true;
}

bool Edit::removeCue(const IdStamp& extId, const LightweightString<char>& origin) {
    const Lock lock(*this);
    const std::size_t index = impl_->state.cues.find(extId);
    if (index == SIZE_MAX)
        return false;
    const EditModification change =
        cueChange(kCueRemoved, impl_->state.cues.getCuePoint(index), origin);
    impl_->state.cues.deleteCue(index);
    impl_->record(change);
    impl_->tellDue = impl_->tellDue || impl_->modifiers == 0;
    return true;
}

void Edit::celCuesOn() {
    const Lock lock(*this);
    impl_->set(impl_->state.celCues, true, kModCues);
}

void Edit::celCuesOff() {
    const Lock lock(*this);
    impl_->set(impl_->state.celCues, false, kModCues);
}

bool Edit::getCelCuesOn() const {
    const Lock lock(*this);
    return impl_->state.celCues;
}
