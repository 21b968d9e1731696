#include "platform/store/EditModule.h"

#include "platform/store/Edit.h"

#include <algorithm>

using Kv::MarkTypes::In;
using Kv::MarkTypes::MarkType;
using Kv::MarkTypes::Out;

EditModule::EditModule(const EditPtr& edit) : edit_(edit) {
    selectChans(kChanAllTypes, kSubAll & ~static_cast<unsigned>(kSubDerived), true);
}

EditModule::EditModule(const Cookie& edit) : EditModule(EditPtr(edit)) {}

Cookie EditModule::getEditID() const { return edit_.getCookie(); }

double EditModule::getCurrentTime(eAccuracy accuracy) const {
    if (accuracy == kAccuracyExact || !edit_ || !cutroom::isStorableTime(currentTime_))
        return currentTime_;
    const Kv::FrameRate rate = edit_->getFrameRate();
    if (!rate.valid())
        return currentTime_;
    const auto frame = rate.flicksToFrameFloor(cutroom::toFlicks(currentTime_));
    return cutroom::toSeconds(rate.frameToFlicks(frame));
}

const EditModule::Channel* EditModule::find(const IdStamp& id) const noexcept {
    const auto found = std::find_if(channels_.begin(), channels_.end(),
                                    [&](const Channel& channel) { return channel.id == id; });
    return found == channels_.end() ? nullptr : &*found;
}

EditModule::Channel& EditModule::findOrAdd(const IdStamp& id) {
    if (const Channel* known = find(id))
        return const_cast<Channel&>(*known);
    Channel fresh;
    fresh.id = id;
    return channels_.emplace_back(fresh);
}

EditModule::ChannelState EditModule::getChannelState(const IdStamp& channel,
                                                     std::size_t hint) const noexcept {
    if (hint < channels_.size() && channels_[hint].id == channel)
        return channels_[hint];
    const Channel* known = find(channel);
    return known ? ChannelState(*known) : ChannelState();
}

bool EditModule::isSelected(const IdStamp& channel) const noexcept {
    const Channel* known = find(channel);
    return known && known->selected;
}

bool EditModule::selectChan(const IdStamp& channel, bool on) {
    if (!edit_ || !edit_->isValidChan(channel) || isSelected(channel) == on)
        return false;
    findOrAdd(channel).selected = on;
    return true;
}

void EditModule::selectAll(bool on) { selectChans(kChanAllTypes, kSubAll, on); }

void EditModule::selectChans(unsigned types, unsigned subTypes, bool on) {
    if (!edit_)
        return;
    for (const IdStamp& channel : edit_->getChans(types, subTypes))
        findOrAdd(channel).selected = on;
}

std::vector<IdStamp> EditModule::getSelectedChans(unsigned types, unsigned subTypes) const {
    std::vector<IdStamp> selected;
    if (edit_)
        for (const IdStamp& channel : edit_->getChans(types, subTypes))
            if (isSelected(channel))
                selected.push_back(channel);
    return selected;
}

int EditModule::getNumSelectedChans(unsigned types, unsigned subTypes) const {
    return static_cast<int>(getSelectedChans(types, subTypes).size());
}

IdStamp EditModule::firstSelectedChannel(unsigned types) const {
    const auto selected = getSelectedChans(types);
    return selected.empty() ? IdStamp() : selected.front();
}

std::uint64_t EditModule::getSelectedMask() const {
    std::uint64_t mask = 0;
    if (edit_) {
        const auto channels = edit_->getChans();
        for (std::size_t i = 0; i < std::min<std::size_t>(channels.size(), 64); ++i)
            if (isSelected(channels[i]))
                mask |= std::uint64_t{1} << i;
    }
    return mask;
}

void EditModule::setSelectedMask(std::uint64_t mask) {
    if (!edit_)
        return;
    const auto channels = edit_->getChans();
    for (std::size_t i = 0; i < std::min<std::size_t>(channels.size(), 64); ++i)
        findOrAdd(channels[i]).selected = ((mask >> i) & 1u) != 0;
}

void EditModule::makeSimilarTrackSelections(const EditModule& other) {
    if (!edit_ || !other.edit_)
        return;
    const auto mine = edit_->getChans();
    const auto theirs = other.edit_->getChans();
    for (std::size_t i = 0; i < mine.size(); ++i)
        findOrAdd(mine[i]).selected = i < theirs.size() && other.isSelected(theirs[i]);
}

double EditModule::getMark(const IdStamp& channel, MarkType type) const noexcept {
    const Channel* known = find(channel);
    if (!known)
        return kNoTime;
    return type == In ? known->markIn : known->markOut;
}

void EditModule::setMark(const IdStamp& channel, double seconds, MarkType type) {
    if (!edit_ || !edit_->isValidChan(channel))
        return;
    Channel& target = findOrAdd(channel);
    (type == In ? target.markIn : target.markOut) = seconds;
}

double EditModule::getMark(MarkType type) const {
    if (!edit_)
        return kNoTime;
    const auto channels = edit_->getChans();
    for (const bool selectedOnly : {true, false})
        for (const IdStamp& channel : channels)
            if (const double mark = getMark(channel, type);
                mark != kNoTime && (!selectedOnly || isSelected(channel)))
                return mark;
    return kNoTime;
}

void EditModule::markAllAt(double seconds, MarkType type, bool advanced) {
    if (!edit_)
        return;
    for (const IdStamp& id : edit_->getChans()) {
        Channel& channel = findOrAdd(id);
        (type == In ? channel.markIn : channel.markOut) = seconds;
        const bool bothSet = channel.markIn != kNoTime && channel.markOut != kNoTime;
        if (!advanced && bothSet && channel.markIn > channel.markOut)
            (type == In ? channel.markOut : channel.markIn) = kNoTime;
    }
}

void EditModule::markAllAt(const TimeRange& range, bool) {
    if (!edit_)
        return;
    for (const IdStamp& id : edit_->getChans()) {
        Channel& channel = findOrAdd(id);
        channel.markIn = range.getStart();
        channel.markOut = range.getEnd();
    }
}

void EditModule::clearMarks() {
    for (Channel& channel : channels_)
        channel.markIn = channel.markOut = kNoTime;
}

bool EditModule::isMarked(const IdStamp& channel) const {
    return getMark(channel, In) != kNoTime || getMark(channel, Out) != kNoTime;
}

bool EditModule::isMarked() const {
    if (!edit_)
        return false;
    const auto channels = edit_->getChans();
    return std::any_of(channels.begin(), channels.end(),
                       [&](const IdStamp& channel) { return isMarked(channel); });
}

TimeRange EditModule::getMarkedRegion() const {
    if (!edit_)
        return {};
    const double in = getMark(In);
    const double out = getMark(Out);
    return {in == kNoTime ? edit_->getStartTime() : in, out == kNoTime ? edit_->getEndTime() : out};
}

void EditModule::makeSimilarMarks(const EditModule& other, double offset) {
    if (!edit_ || !other.edit_)
        return;
    const auto moved = [offset](double mark) { return mark == kNoTime ? kNoTime : mark + offset; };
    const auto mine = edit_->getChans();
    const auto theirs = other.edit_->getChans();
    for (std::size_t i = 0; i < std::min(mine.size(), theirs.size()); ++i) {
        setMark(mine[i], moved(other.getMark(theirs[i], In)), In);
        setMark(mine[i], moved(other.getMark(theirs[i], Out)), Out);
    }
}

void EditModule::initLevelsFromAudio() {
    if (!edit_)
        return;
    for (const IdStamp& levels : edit_->getChans(kChanLevels)) {
        const IdStamp audio = edit_->getAudioChanForLevels(levels);
        if (!audio.valid())
            continue;
        const Channel source = findOrAdd(audio);
        Channel& target = findOrAdd(levels);
        target.markIn = source.markIn;
        target.markOut = source.markOut;
        target.selected = source.selected;
    }
}

bool operator==(const EditModule& a, const EditModule& b) {
    if (a.edit_ != b.edit_ || a.currentTime_ != b.currentTime_)
        return false;
    if (!a.edit_)
        return true;
    const auto channels = a.edit_->getChans();
    return std::all_of(channels.begin(), channels.end(), [&](const IdStamp& id) {
        return a.isSelected(id) == b.isSelected(id) && a.getMark(id, In) == b.getMark(id, In) &&
               a.getMark(id, Out) == b.getMark(id, Out);
    });
}
