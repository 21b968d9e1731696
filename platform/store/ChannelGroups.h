// `ChannelGroupList`: channels of an edit that are edited together (a stereo pair).
#pragma once

#include "platform/base/IdStamp.h"
#include "platform/base/Object.h"
#include "platform/base/Strings.h"

#include <vector>

// An object bound to an edit; guarded by the edit's lock while bound.
class CUTROOM_API ChannelGroupList final : public iObject {
public:
    ChannelGroupList() = default;
    ChannelGroupList(const ChannelGroupList& other)
        : Kv::InternalRefCount(), iVirtual(), iObject(), groups_(other.groups_) {}
    ~ChannelGroupList() override;

    std::size_t size() const noexcept { return groups_.size(); }
    // The channels of group `index`; empty past the end.
    std::vector<IdStamp> getGroupContents(std::size_t index) const;
    // A channel belongs to one group: it leaves the one it was in. Groups of fewer than two
    // channels go.
    void addGroup(const std::vector<IdStamp>& channels);
    void removeChannel(const IdStamp& channel);
    // Index of the group that holds the channel; SIZE_MAX when none does.
    std::size_t find(const IdStamp& channel) const noexcept;

private:
    void dropSmallGroups();
    std::vector<std::vector<IdStamp>> groups_;
};
