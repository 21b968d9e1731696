#include "platform/store/ChannelGroups.h"

#include <algorithm>
#include <limits>
#include <utility>

ChannelGroupList::~ChannelGroupList() = default;

std::vector<IdStamp> ChannelGroupList::getGroupContents(std::size_t index) const {
    return index < groups_.size() ? groups_[index] : std::vector<IdStamp>();
}

void ChannelGroupList::addGroup(const std::vector<IdStamp>& channels) {
    std::vector<IdStamp> members; // each once
    for (const IdStamp& channel : channels) {
        if (const std::size_t held = find(channel); held < groups_.size())
            std::erase(groups_[held], channel);
        if (std::find(members.begin(), members.end(), channel) == members.end())
            members.push_back(channel);
    }
    dropSmallGroups();
    if (members.size() > 1)
        groups_.push_back(std::move(members));
}

void ChannelGroupList::removeChannel(const IdStamp& channel) {
    if (const std::size_t held = find(channel); held < groups_.size()) {
        std::erase(groups_[held], channel);
        dropSmallGroups();
    }
}

std::size_t ChannelGroupList::find(const IdStamp& channel) const noexcept {
    const auto found = std::find_if(groups_.begin(), groups_.end(), [&](const auto& group) {
        return std::find(group.begin(), group.end(), channel) != group.end();
    });
    return found == groups_.end() ? std::numeric_limits<std::size_t>::max()
                                  : static_cast<std::size_t>(found - groups_.begin());
}

void ChannelGroupList::dropSmallGroups() {
    std::erase_if(groups_, [](const auto& group) { return group.size() < 2; });
}
