#include "editops/SyncUpChannel.h"

#include "platform/store/Edit.h"
#include "platform/store/EditorLevels.h"

#include <cmath>

namespace cutroom {

namespace {

// A copy of the channel's list on the log's timeline, without what lies outside the log. Null when
// that lies outside the range of an edit.
Kv::Ptr<Cel> insideOf(const EditPtr& shot, const IdStamp& channel, const SyncPlace& place) {
    Kv::Ptr<Cel> cel;
    {
        const Edit::Lock lock(*shot);
        cel = shot->get_edit_cel_p(channel)->copy();
    }
    if (cel->get_num_events() == 0)
        return cel;
    Status status = cel->slide(place.at);
    const double length = toSeconds(place.length);
    if (const double end = cel->getEndTime(); status.ok() && end > length)
        status = cel->remove({length, end});
    if (const double start = cel->getStartTime(); status.ok() && start < 0) {
        status = cel->remove({start, 0});
        if (status.ok() && cel->get_num_events() > 0)
            status = cel->slide(-start);
    }
    return status.ok() ? cel : Kv::Ptr<Cel>();
}

// Adds `bias` to a point's time and moves it to the nearest frame. Its place in the material moves
// with it, so that what plays at a moment stays the same.
ChannelEvent onFrame(ChannelEvent event, const Kv::FrameRate& rate, Flicks bias) {
    const Flicks before = event.time;
    event.time += bias;
    event.quantise(rate);
    if (!event.isBlack() && (event.flags & kEventFreeze) == 0)
        event.stripTime += std::llround(static_cast<double>(event.time - before) * event.speed);
    return event;
}

// Added before a point is moved to the nearest frame, this rounds it up, and taken away it rounds
// it down. It is half a frame, less the difference between two ways of counting the same time, so
// that a point on a frame stays there.
Flicks biasOf(const Kv::FrameRate& rate) {
    return rate.frameToFlicks(1) / 2 - toFlicks(kTimeTolerance);
}

Status addPair(Cel& cel, const ChannelEvent& in, const ChannelEvent& out,
               const EventDetail& detail = {}) {
    if (in.time >= out.time)
        return {};
    const Status added = cel.addEvent(in, detail);
    return added.ok() ? cel.addEvent(out) : added;
}

Status addBlack(Cel& cel, Flicks from, Flicks to) {
    ChannelEvent in;
    in.time = from;
    ChannelEvent out;
    out.time = to;
    out.flags = kEventOut;
    return addPair(cel, in, out);
}

// Takes the effect of a point along. An id that the log has for another effect is made anew.
void bringEffect(ChannelEvent& event, const EditPtr& log, const EditPtr& shot) {
    if (!event.effectGraph.valid())
        return;
    auto graph = shot->getEffectGraph(event.effectGraph);
    if (!graph)
        return;
    const auto known = log->getEffectGraph(graph->id);
    if (known && !(*known == *graph))
        graph->id = IdStamp();
    event.effectGraph = log->setEffectGraph(std::move(*graph));
}

// The list on frames, black wherever it has nothing.
Status addOnFrames(Cel& into, const Cel& list, const EditPtr& log, const EditPtr& shot,
                   Flicks length) {
    const Kv::FrameRate rate = log->getFrameRate();
    const Flicks bias = biasOf(rate);
    const std::uint32_t count = list.get_num_events();
    const auto blackAt = [&](std::uint32_t index) { // also past either end
        return index >= count || list.get_event(index).isBlack();
    };
    for (std::uint32_t i = 0; i + 1 < count; i += 2) {
        const ChannelEvent first = list.get_event(i);
        ChannelEvent in = onFrame(first, rate, !first.isBlack() && blackAt(i - 1) ? bias : 0);
        ChannelEvent out =
            onFrame(list.get_event(i + 1), rate, !first.isBlack() && blackAt(i + 2) ? -bias : 0);
        bringEffect(in, log, shot);
        bringEffect(out, log, shot);
        Status added = into.get_num_events() == 0 ? addBlack(into, 0, in.time) : Status();
        if (added.ok())
            added = addPair(into, in, out, list.getDetail(first.detail));
        if (!added)
            return added;
    }
    return addBlack(into, into.get_num_events() > 0 ? toFlicks(into.getEndTime()) : 0, length);
}

void describe(const EditPtr& log, const IdStamp& made, const EditPtr& shot,
              const IdStamp& channel) {
    if (const auto name = shot->getChanUserName(channel); !name.empty())
        log->setChanUserName(made, name);
    if (const auto metadata = shot->getChanMetadata(channel); !metadata.empty())
        log->setChanMetadata(made, metadata);
    if (shot->getChanType(channel) == kChanSubtitle)
        log->setSubtitleFont(made, shot->getSubtitleFont(channel));
}

void bringLevels(const EditPtr& log, const IdStamp& made, const EditPtr& shot,
                 const IdStamp& channel, const SyncPlace& place) {
    const IdStamp levels = shot->getLevelsChan(channel);
    if (!levels.valid())
        return;
    const Flicks at = toFlicks(place.at);
    const LevelNodes nodes = nodesOf(shot->getLevelNodes(levels), -at, place.length - at, at);
    log->setLevelNodes(log->addLevelsChan(made), nodes);
}

} // namespace

IdStamp addSyncedChannel(const EditPtr& log, const EditPtr& shot, const IdStamp& channel,
                         const SyncPlace& place) {
    const Kv::Ptr<Cel> inside = insideOf(shot, channel, place);
    if (!inside)
        return {};
    Cel list;
    if (const Status added = addOnFrames(list, *inside, log, shot, place.length); !added)
        return {};
    list.setFlags(inside->getFlags());
    const IdStamp made = log->addChan(shot->getChanType(channel), shot->getChanSubtype(channel));
    log->set_edit_cel_p(made, list);
    describe(log, made, shot, channel);
    if (shot->getChanType(channel) == kChanAudio)
        bringLevels(log, made, shot, channel, place);
    return made;
}

} // namespace cutroom
