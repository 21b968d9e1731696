#include "editops/basics/IndexIndependentEventList.h"

#include "editops/basics/UnjoinedCuts.h"
#include "platform/base/Time.h"
#include "platform/store/Edit.h"

#include <cmath>
#include <limits>
#include <optional>

namespace {

// What is remembered of a point that has gone already: an event later than any list holds.
ChannelEvent eventOf(const ce_handle& point) {
    ChannelEvent event = point.getEvent();
    if (!point.valid())
        event.time = std::numeric_limits<cutroom::Flicks>::max();
    return event;
}

} // namespace

IndexIndependentEventList::IndexIndependentEventList(const UnjoinedCuts& cuts, const EditPtr& edit,
                                                     const IdStamp& channel) {
    buildFrom(cuts, edit, channel);
}

void IndexIndependentEventList::buildFrom(const UnjoinedCuts& cuts, const EditPtr& edit,
                                          const IdStamp& channel) {
    if (!edit || !channel.valid())
        return;
    const Edit::Lock lock(*edit);
    events_.clear();
    for (unsigned short i = 0; i < cuts.size(); ++i)
        events_.push_back(eventOf(cuts.getHandleRef(i)));
    edit_ = edit;
    channel_ = channel;
}

void IndexIndependentEventList::buildFrom(const CelEventPair& segment) {
    std::optional<Edit::Lock> lock; // a segment of no edit has nothing to read
    if (segment.getEdit())
        lock.emplace(*segment.getEdit());
    events_ = {eventOf(segment.first()), eventOf(segment.second())};
    edit_ = segment.getEdit();
    channel_ = segment.getChannel();
}

bool IndexIndependentEventList::eventsMatch(const ChannelEvent& a, const ChannelEvent& b) {
    return a.time == b.time && a.material == b.material && a.flags == b.flags;
}

ce_handle IndexIndependentEventList::getHandleFor(std::size_t index) const {
    if (index >= events_.size() || !edit_ || edit_->getIdx(channel_) == kChanEnd)
        return {};
    const Edit::Lock lock(*edit_);
    const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channel_);
    if (!cel)
        return {};
    const ChannelEvent& wanted = events_[index];
    ce_handle found;
    ce_handle point = cel->find_ceh(wanted.getTime(), wanted.flags);
    for (; point.valid(); point = point.next()) {
        const ChannelEvent event = point.getEvent();
        if (eventsMatch(event, wanted))
            found = point;
        else if (std::fabs(event.getTime() - wanted.getTime()) >= kTimeTolerance)
            break;
    }
    return found;
}
