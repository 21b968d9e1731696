#include "platform/store/EditState.h"

#include <algorithm>
#include <set>

namespace cutroom {

EditState EditState::snapshot() const {
    EditState copy(*this);
    for (EditChannel& channel : copy.channels)
        channel.cel = channel.cel->copy();
    if (groups)
        copy.groups = Kv::makePtr<ChannelGroupList>(*groups);
    if (mix)
        copy.mix = Kv::makePtr<Aud::SimpleMixState>(*mix);
    return copy;
}

EditChannel* EditState::find(const IdStamp& channel) noexcept {
    for (EditChannel& candidate : channels)
        if (candidate.id == channel)
            return &candidate;
    return nullptr;
}

const EditChannel* EditState::find(const IdStamp& channel) const noexcept {
    return const_cast<EditState*>(this)->find(channel);
}

bool EditState::extents(double& start, double& end) const {
    start = kNoTime;
    end = -kNoTime;
    for (const EditChannel& channel : channels) {
        if ((channel.subType & kSubDerived) != 0 || channel.cel->get_num_events() == 0)
            continue;
        start = std::min(start, channel.cel->getStartTime());
        end = std::max(end, channel.cel->getEndTime());
    }
    return start != kNoTime;
}

std::string checkState(const EditState& state) {
    std::set<IdStamp> ids;
    unsigned lastType = 0;
    for (const EditChannel& channel : state.channels) {
        const std::string id = channel.id.asString();
        if (!channel.id.valid() || !ids.insert(channel.id).second)
            return "channel " + id + " is there twice or has no id";
        if (channel.type < lastType)
            return "channel " + id + " does not stand with its type";
        lastType = channel.type;
        if (const std::string trouble = channel.cel->checkConsistency(); !trouble.empty())
            return "channel " + id + ": " + trouble;
    }
    for (const EditChannel& channel : state.channels) {
        const EditChannel* audio = state.find(channel.levelsOf);
        if (channel.levelsOf.valid() && (!audio || audio->type != kChanAudio))
            return "levels channel " + channel.id.asString() + " belongs to no audio channel";
        for (std::size_t i = 1; i < channel.nodes->size(); ++i)
            if ((*channel.nodes)[i].time <= (*channel.nodes)[i - 1].time)
                return "the level nodes of " + channel.id.asString() + " are not in order";
    }
    const std::vector<Cue>& cues = state.cues.cues();
    std::set<IdStamp> cueIds;
    for (std::size_t i = 0; i < cues.size(); ++i) {
        if (i > 0 && cues[i].getTime() < cues[i - 1].getTime())
            return "the cues are not in order";
        if (!cueIds.insert(cues[i].getExtID()).second)
            return "cue " + cues[i].getExtID().asString() + " is there twice";
    }
    if (!state.rate.valid())
        return "the edit has no frame rate";
    return {};
}

} // namespace cutroom
