// Levels channels, the fonts of subtitle channels, and groups of channels.
#include "platform/store/EditImpl.h"

#include <algorithm>
#include <cmath>

using cutroom::EditChannel;

IdStamp Edit::getLevelsChan(const IdStamp& audioChannel) const {
    const Lock lock(*this);
    for (const EditChannel& channel : impl_->state.channels)
        if (channel.type == kChanLevels && audioChannel.valid() && channel.levelsOf == audioChannel)
            return channel.id;
    return {};
}

IdStamp Edit::getAudioChanForLevels(const IdStamp& levelsChannel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(levelsChannel);
    return found ? found->levelsOf : IdStamp();
}

IdStamp Edit::addLevelsChan(const IdStamp& audioChannel) {
    const Lock lock(*this);
    const EditChannel* audio = impl_->state.find(audioChannel);
    if (!audio || audio->type != kChanAudio)
        return {};
    if (const IdStamp known = getLevelsChan(audioChannel); known.valid())
        return known;
    const IdStamp levels = addChan(kChanLevels, kSubDerived);
    impl_->state.find(levels)->levelsOf = audioChannel;
    return levels;
}

LevelNodes Edit::getLevelNodes(const IdStamp& levelsChannel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(levelsChannel);
    return found ? *found->nodes : LevelNodes();
}

bool Edit::setLevelNodes(const IdStamp& levelsChannel, LevelNodes nodes) {
    const auto earlier = [](const LevelNode& a, const LevelNode& b) { return a.time < b.time; };
    std::sort(nodes.begin(), nodes.end(), earlier);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!std::isfinite(nodes[i].gain) || nodes[i].gain < 0 ||
            nodes[i].time < -cutroom::kMaxFlicks || nodes[i].time > cutroom::kMaxFlicks ||
            (i > 0 && nodes[i].time == nodes[i - 1].time))
            return false;
    }
    const Lock lock(*this);
    EditChannel* found = impl_->state.find(levelsChannel);
    if (!found || found->type != kChanLevels)
        return false;
    if (*found->nodes == nodes)
        return true;
    found->nodes = cutroom::Shared<LevelNodes>(std::move(nodes));
    impl_->recordChannel(kModLevelNodes, levelsChannel);
    return true;
}

SubtitleFont Edit::getSubtitleFont(const IdStamp& channel) const {
    const Lock lock(*this);
    const EditChannel* found = impl_->state.find(channel);
    return found ? found->font : SubtitleFont();
}

void Edit::setSubtitleFont(const IdStamp& channel, const SubtitleFont& font) {
    const Lock lock(*this);
    EditChannel* found = impl_->state.find(channel);
    if (found && std::isfinite(font.size))
        impl_->set(found->font, font, kModSubtitles);
}

void Edit::groupChannels(const std::vector<IdStamp>& channels, bool on) {
    const Lock lock(*this);
    const auto groups = Kv::makePtr<ChannelGroupList>(*openObjectInternal());
    const auto grouped = [&](const IdStamp& channel) { return groups->find(channel) != SIZE_MAX; };
    const auto lacks = [&](const IdStamp& channel) { return !isValidChan(channel); };
    if (!on && std::none_of(channels.begin(), channels.end(), grouped))
        return;
    if (on && std::any_of(channels.begin(), channels.end(), lacks))
        return;
    if (on && !channels.empty() &&
        groups->getGroupContents(groups->find(channels.front())) == channels)
        return;
    for (const IdStamp& channel : channels)
        groups->removeChannel(channel);
    if (on)
        groups->addGroup(channels);
    bindObjectToEdit(groups);
}

Kv::Ptr<ChannelGroupList> Edit::openObjectInternal() const {
    const Lock lock(*this);
    return impl_->state.groups ? impl_->state.groups : Kv::makePtr<ChannelGroupList>();
}

void Edit::bindObjectToEdit(const Kv::Ptr<ChannelGroupList>& groups) {
    const Lock lock(*this);
    impl_->state.groups = groups;
    impl_->record(kModGroups);
}
