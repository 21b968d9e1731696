// The channels of an edit.
#include "platform/store/EditFields.h"
#include "platform/store/EditImpl.h"

#include <algorithm>
#include <cmath>

using cutroom::EditChannel;

namespace {

bool wanted(const EditChannel& channel, unsigned types, unsigned subTypes) {
    return (channel.type & types) != 0 && (channel.subType & subTypes) != 0;
}

char letterOf(EditChanType type) {
    switch (type) {
    case kChanVideo:
        return 'V';
    case kChanAudio:
        return 'A';
    case kChanLevels:
        return 'L';
    case kChanSubtitle:
        return 'S';
    default:
        return 'O';
    }
}

// The mix without the input of an audio channel that goes.
Kv::Ptr<Aud::SimpleMixState> withoutInput(const Aud::SimpleMixState& mix, int input) {
    auto rest = Kv::makePtr<Aud::SimpleMixState>(mix);
    if (static_cast<std::size_t>(input) < rest->numInputs())
        rest->removeInput(static_cast<unsigned char>(input));
    return rest;
}

} // namespace

int Edit::getNumChans(unsigned types, unsigned subTypes) const {
    const Lock lock(*this);
    const auto& channels = impl_->state.channels;
    return static_cast<int>(
        std::count_if(channels.begin(), channels.end(), [&](const EditChannel& channel) {
            return wanted(channel, types, subTypes);
        }));
}

std::vector<IdStamp> Edit::getChans(unsigned types, unsigned subTypes) const {
    const Lock lock(*this);
    std::vector<IdStamp> ids;
    for (const EditChannel& channel : impl_->state.channels)
        if (wanted(channel, types, subTypes))
            ids.push_back(channel.id);
    return ids;
}

IdStamp Edit::getId(int index) const {
    const Lock lock(*this);
    const auto& channels = impl_->state.channels;
    if (index < 0 || static_cast<std::size_t>(index) >= channels.size())
        return {};
    return channels[static_cast<std::size_t>(index)].id;
}

int Edit::getIdx(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? static_cast<int>(found - impl_->state.channels.data()) : kChanEnd;
}

int Edit::getIndexWithinType(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    if (!found)
        return kChanEnd;
    int index = 0;
    for (const EditChannel* before = impl_->state.channels.data(); before != found; ++before)
        index += before->type == found->type;
    return index;
}

IdStamp Edit::getFirstChan(unsigned types) const {
    const Lock lock(*this);
    for (const EditChannel& channel : impl_->state.channels)
        if (wanted(channel, types, kSubAll))
            return channel.id;
    return {};
}

IdStamp Edit::getNextChan(const IdStamp& after, unsigned types) const {
    const Lock lock(*this);
    bool passed = false;
    for (const EditChannel& channel : impl_->state.channels) {
        if (passed && wanted(channel, types, kSubAll))
            return channel.id;
        passed = passed || channel.id == after;
    }
    return {};
}

IdStamp Edit::getChanForStrip(const Cookie& strip) const {
    unsigned type = 0;
    if (strip.type() == 'V')
        type = kChanVideo;
    else if (strip.type() == 'S')
        type = kChanAudio;
    if (strip.index() == 0 || strip.index() == Cookie::kNoIndex || strip.id() != getCookie().id())
        return {};
    const auto channels = getChans(type);
    return strip.index() <= channels.size() ? channels[strip.index() - 1u] : IdStamp();
}

EditChanType Edit::getChanType(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->type : EditChanType{};
}

EditChanSubType Edit::getChanSubtype(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->subType : EditChanSubType{};
}

IdStamp Edit::addChan(EditChanType type, EditChanSubType subType, const IdStamp& id) {
    const Lock lock(*this);
    auto& channels = impl_->state.channels;
    if (impl_->state.find(id) || !cutroom::fields::isChannelBit(type) ||
        !cutroom::fields::isChannelBit(subType))
        return {};
    EditChannel channel;
    channel.id = id.valid() ? id : IdStamp::make();
    channel.type = type;
    channel.subType = subType;
    channel.cel = Kv::makePtr<Cel>();
    const IdStamp given = channel.id;
    const Kv::Ptr<Cel> cel = channel.cel;
    const auto place = std::find_if(channels.begin(), channels.end(),
                                    [&](const EditChannel& next) { return next.type > type; });
    channels.insert(place, std::move(channel));
    cel->edit_ = this;
    cel->channel_ = given;
    impl_->recordChannel(kModChannelsAdded, given);
    return given;
}

bool Edit::removeChan(const IdStamp& channel, bool notify) {
    const Lock lock(*this);
    if (!impl_->state.find(channel))
        return false;
    const IdStamp levels = getLevelsChan(channel);
    if (levels.valid())
        removeChan(levels, false);
    EditChannel* found = impl_->state.find(channel);
    if (found->type == kChanAudio && impl_->state.mix && impl_->state.mix->valid()) {
        auto mix = withoutInput(*impl_->state.mix, getIndexWithinType(channel));
        if (!(*mix == *impl_->state.mix)) {
            impl_->state.mix = std::move(mix);
            impl_->record(kModAudioMix);
        }
    }
    found->cel->edit_ = nullptr;
    found->cel->renumber();
    impl_->state.channels.erase(impl_->state.channels.begin() +
                                (found - impl_->state.channels.data()));
    if (impl_->state.groups)
        impl_->state.groups->removeChannel(channel);
    impl_->recordChannel(kModChannelsRemoved, channel);
    impl_->tellDue = impl_->tellDue || notify;
    return true;
}

void Edit::removeChans(unsigned types, unsigned subTypes) {
    const Lock lock(*this);
    for (const IdStamp& channel : getChans(types, subTypes))
        removeChan(channel, false);
}

LightweightString<wchar_t> Edit::getChanDisplayName(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    if (!found || !found->userName.empty())
        return found ? found->userName : std::wstring();
    return static_cast<wchar_t>(letterOf(found->type)) +
           std::to_wstring(getIndexWithinType(channel) + 1);
}

LightweightString<wchar_t> Edit::getChanUserName(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->userName : std::wstring();
}

void Edit::setChanUserName(const IdStamp& channel, const LightweightString<wchar_t>& name) {
    const Lock lock(*this);
    if (EditChannel* found = impl_->state.find(channel))
        impl_->set(found->userName, name, kModChannelNames);
}

LightweightString<char> Edit::getChanMetadata(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->metadata : std::string();
}

void Edit::setChanMetadata(const IdStamp& channel, const LightweightString<char>& json) {
    const Lock lock(*this);
    if (EditChannel* found = impl_->state.find(channel))
        impl_->set(found->metadata, json, kModMetadata);
}

Kv::Ptr<Cel> Edit::get_edit_cel_p(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->cel : Kv::Ptr<Cel>();
}

bool Edit::set_edit_cel_p(const IdStamp& channel, const Cel& cel) {
    const Lock lock(*this);
    EditChannel* found = impl_->state.find(channel);
    if (found)
        found->cel->assign(cel);
    return found != nullptr;
}

bool Edit::hasStereoscopicVideo() const { return getNumChans(kChanVideo, kSubStereoRight) > 0; }

double Edit::getSyncError(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->syncError : 0;
}

void Edit::setSyncError(const IdStamp& channel, double seconds) {
    const Lock lock(*this);
    EditChannel* found = impl_->state.find(channel);
    if (found && cutroom::isStorableTime(seconds))
        impl_->set(found->syncError, seconds, kModSyncErrors);
}
