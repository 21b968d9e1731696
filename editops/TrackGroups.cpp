#include "editops/TrackGroups.h"

#include "platform/store/Edit.h"

#include <vector>

namespace {

// The groups by the indices of their channels.
std::vector<std::vector<int>> groupsOf(const Edit& edit) {
    const Edit::Lock lock(edit);
    const auto list = edit.openObjectInternal();
    std::vector<std::vector<int>> groups(list->size());
    for (std::size_t i = 0; i < groups.size(); ++i)
        for (const IdStamp& channel : list->getGroupContents(i))
            groups[i].push_back(edit.getIdx(channel));
    return groups;
}

} // namespace

void recreateTrackGroups(const EditPtr& from, const EditPtr& to) {
    if (!from || !to)
        return;
    const auto groups = groupsOf(*from);
    if (groups.empty())
        return;
    const Edit::Lock lock(*to);
    const auto list = Kv::makePtr<ChannelGroupList>();
    for (const std::vector<int>& group : groups) {
        std::vector<IdStamp> channels;
        for (const int index : group)
            if (const IdStamp channel = to->getId(index); channel.valid())
                channels.push_back(channel);
        list->addGroup(channels);
    }
    to->bindObjectToEdit(list);
}
