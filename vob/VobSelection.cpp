// Which channels of a Vob are selected.
#include "platform/store/Edit.h"
#include "vob/Vob.h"

#include <algorithm>

namespace {

// In logs of these kinds channels without material of their own stay unselected.
bool isConstrained(eLogType type) {
    return type == kLogTypeSource || type == kLogTypeSyncGhost || type == kLogTypeSubclip ||
           type == kLogTypeClipSection;
}

} // namespace

// --- constraint ----------------------------------------------------------------------------------

bool Vob::constrainTrackSelection(const IdStamp& channel, bool on) const {
    if (!on || !edit_ || !isConstrained(edit_->getLogType()) || edit_->getNumChans() < 2)
        return on;
    const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel);
    return !cel || cel->hasFlag(kCelHasMaterial);
}

bool Vob::canAlterTrackSelection(const IdStamp& channel) const {
    if (!edit_ || !edit_->isValidChan(channel))
        return false;
    const bool wanted = !module_.isSelected(channel);
    return constrainTrackSelection(channel, wanted) == wanted;
}

// --- changing ------------------------------------------------------------------------------------

// Answers whether the channel's own selection changed; its levels follow silently.
bool Vob::selectWithLevels(const IdStamp& channel, bool on) {
    if (!edit_->isValidChan(channel))
        return false;
    const bool changed = module_.selectChan(channel, on);
    if (levelsBound_ && edit_->getChanType(channel) == kChanAudio)
        if (const IdStamp levels = edit_->getLevelsChan(channel); levels.valid())
            module_.selectChan(levels, on);
    return changed;
}

bool Vob::setSelectedInternal(const IdStamp& channel, bool on) {
    if (channel.valid())
        return selectWithLevels(channel, constrainTrackSelection(channel, on));
    bool changed = false;
    for (const IdStamp& each : edit_->getChans())
        changed |= selectWithLevels(each, constrainTrackSelection(each, on));
    return changed;
}

void Vob::tellSelection(bool changed, const IdStamp& channel) {
    if (!changed)
        return;
    VobModification change(kVobSelection);
    if (channel.valid())
        change.addModifiedTrack(channel);
    addModification(change);
}

void Vob::setSelected(int chan, bool on) {
    if (!edit_)
        return;
    const IdStamp channel = chan == kChanAllSelected ? IdStamp() : edit_->getId(chan);
    if (chan == kChanAllSelected || channel.valid())
        setSelected(channel, on);
}

void Vob::setSelected(const IdStamp& channel, bool on) {
    if (edit_)
        tellSelection(setSelectedInternal(channel, on), channel);
}

void Vob::setSelected(EditChanType type, EditChanSubType subType, bool on) {
    if (!edit_)
        return;
    bool changed = false;
    for (const IdStamp& channel : edit_->getChans(type, subType))
        changed |= setSelectedInternal(channel, on);
    tellSelection(changed);
}

void Vob::setSelectedRaw(const IdStamp& channel, bool on) {
    if (edit_)
        module_.selectChan(channel, on);
}

void Vob::setSelectedFrom(int chan) {
    if (!edit_ || chan < 0 || chan >= edit_->getNumChans())
        return;
    bool changed = false;
    int index = -1;
    for (const IdStamp& channel : edit_->getChans())
        if (++index; !levelsBound_ || !edit_->getAudioChanForLevels(channel).valid())
            changed |= setSelectedInternal(channel, index >= chan);
    tellSelection(changed);
}

void Vob::soloSelect(const IdStamp& channel) {
    if (!edit_ || !edit_->isValidChan(channel))
        return;
    const std::vector<IdStamp> all = edit_->getChans(edit_->getChanType(channel));
    const bool isSolo = std::all_of(all.begin(), all.end(), [&](const IdStamp& each) {
        return module_.isSelected(each) == (each == channel);
    });
    bool changed = false;
    for (const IdStamp& each : all)
        changed |= setSelectedInternal(each, isSolo || each == channel);
    tellSelection(changed, channel);
}

// --- asking --------------------------------------------------------------------------------------

bool Vob::getSelected(int chan) const { return edit_ && getSelected(edit_->getId(chan)); }

bool Vob::getSelected(const IdStamp& channel) const {
    return edit_ && edit_->isValidChan(channel) && module_.isSelected(channel);
}

std::vector<IdStamp> Vob::getSelectedChans(unsigned types, unsigned subTypes) const {
    return module_.getSelectedChans(types, subTypes);
}

IdStamp Vob::firstSelectedChannel(unsigned types) const {
    return module_.firstSelectedChannel(types);
}
