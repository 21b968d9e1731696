#include "editops/TransitionsEditor.h"

#include "platform/store/EditReader.h"
#include "platform/store/Effects.h"

#include <algorithm>
#include <utility>

using cutroom::Flicks;
using cutroom::Status;
using cutroom::StatusCode;

namespace {

struct FlickRange {
    Flicks start = 0;
    Flicks end = 0;
    bool contains(Flicks time) const { return time >= start && time <= end; }
};

// The clip that begins with an in point; nothing when that is invalid.
std::optional<FlickRange> clipFrom(const ce_handle& in) {
    const ce_handle out = in.valid() ? in.next() : ce_handle();
    if (!out.valid())
        return std::nullopt;
    return FlickRange{in.getEvent().time, out.getEvent().time};
}

ce_handle inPointOf(const ce_handle& point) {
    return point.is_out_point() ? point.previous() : point;
}

// A cut, and the clips on its sides.
struct Cut {
    explicit Cut(const ce_handle& point) : at(point.getEvent().time) {
        const ce_handle out = point.is_out_point() ? point : point.previous();
        const ce_handle in = point.is_out_point() ? point.next() : point;
        if (out.valid())
            before = clipFrom(out.previous());
        after = clipFrom(in);
    }
    Flicks at;
    std::optional<FlickRange> before, after;
};

std::optional<FlickRange> aroundCut(const Cut& cut, Flicks before, Flicks after) {
    if (before + after <= 0)
        return std::nullopt;
    return FlickRange{cut.at - before, cut.at + after};
}

std::optional<FlickRange> untilMark(const Cut& cut, const EditModule& module) {
    double mark = module.getMark(Kv::MarkTypes::In);
    if (mark == kNoTime)
        mark = module.getMark(Kv::MarkTypes::Out);
    const double now = module.getCurrentTime();
    if (!cutroom::isStorableTime(mark) || !cutroom::isStorableTime(now) || mark == now)
        return std::nullopt;
    const TimeRange range(mark, now);
    const FlickRange region{cutroom::toFlicks(range.getStart()), cutroom::toFlicks(range.getEnd())};
    return region.contains(cut.at) ? std::optional(region) : std::nullopt;
}

std::optional<FlickRange> sectionAt(const Cut& cut, double seconds) {
    if (!cutroom::isStorableTime(seconds))
        return std::nullopt;
    const Flicks time = cutroom::toFlicks(seconds);
    for (const auto& clip : {cut.after, cut.before})
        if (clip && time >= clip->start && time < clip->end)
            return clip;
    return std::nullopt;
}

std::optional<FlickRange> bothSections(const Cut& cut) {
    if (!cut.before || !cut.after)
        return std::nullopt;
    return FlickRange{cut.before->start, cut.after->end};
}

std::optional<FlickRange> regionOf(const EditModule& module, const ce_handle& point,
                                   trans_posn position, int length) {
    if (!module.valid() || !point.valid())
        return std::nullopt;
    const Edit::Lock lock(*module.getEdit());
    const Cut cut(point);
    const Kv::FrameRate rate = module.getEdit()->getFrameRate();
    const int frames = std::max(length, 0);
    const Flicks whole = rate.valid() ? rate.frameToFlicks(frames) : 0;
    const Flicks half = rate.valid() ? rate.frameToFlicks(frames / 2) : 0;
    switch (position) {
    case kTransFromHere:
        return aroundCut(cut, 0, whole);
    case kTransToHere:
        return aroundCut(cut, whole, 0);
    case kTransCentredHere:
        return aroundCut(cut, half, whole - half);
    case kTransUseMark:
        return untilMark(cut, module);
    case kTransFromStart:
        return cut.before;
    case kTransToEnd:
        return cut.after;
    case kTransCurrentSection:
    case kTransCurrentSectionUnfolded:
        return sectionAt(cut, module.getCurrentTime());
    case kTransMultipleSections:
        return bothSections(cut);
    case kTransSelectedSegments:
    case kTransNone:
        break;
    }
    return std::nullopt;
}

// The place in the source of a clip at a time that may lie outside the clip.
double sourceTime(const ChannelEvent& in, Flicks time) {
    if ((in.flags & kEventFreeze) != 0)
        return cutroom::toSeconds(in.stripTime);
    const Flicks delta = time - in.time;
    if (in.speed == 1.0)
        return cutroom::toSeconds(in.stripTime + delta);
    return cutroom::toSeconds(in.stripTime) + in.speed * cutroom::toSeconds(delta);
}

// Tells whether some point of the edit still has this effect graph: copied clips share their
// graphs.
bool isUsed(const Edit& edit, const IdStamp& graph) {
    const cutroom::EditReader reader(edit);
    for (std::size_t chan = 0; chan < reader.getNumChans(); ++chan) {
        const Cel& cel = reader.getCel(chan);
        for (std::uint32_t i = 0; i < cel.get_num_events(); ++i)
            if (cel.get_event(i).effectGraph == graph)
                return true;
    }
    return false;
}

bool hasTransition(const Edit& edit, const ce_handle& point) {
    const auto graph = edit.getEffectGraph(point.getEvent().effectGraph);
    return graph && graph->isTransition();
}

// Gives a point another graph, or none, and drops the graph that it had when no other point has it.
Status exchangeGraph(Edit& edit, Cel& cel, std::uint32_t index, const IdStamp& graph) {
    ChannelEvent event = cel.get_event(index);
    const IdStamp old = std::exchange(event.effectGraph, graph);
    if (Status status = cel.setEvent(index, event); !status)
        return status;
    if (!isUsed(edit, old))
        edit.removeEffectGraph(old);
    return {};
}

Status refused(const char* reason) { return {StatusCode::failed, "transition", reason}; }

} // namespace

std::optional<TimeRange> TransitionsEditor::calcRegion(const EditModule& module,
                                                       const ce_handle& point, trans_posn position,
                                                       int length) {
    const auto region = regionOf(module, point, position, length);
    if (!region)
        return std::nullopt;
    return TimeRange(cutroom::toSeconds(region->start), cutroom::toSeconds(region->end));
}

std::optional<TimeRange> TransitionsEditor::calcRequiredSourceClipRegion(const EditModule& module,
                                                                         const ce_handle& point,
                                                                         trans_posn position,
                                                                         int length) {
    const auto region = regionOf(module, point, position, length);
    if (!region)
        return std::nullopt;
    const Edit::Lock lock(*module.getEdit());
    const ce_handle in = inPointOf(point);
    const auto clip = clipFrom(in);
    if (!clip || in.getEvent().isBlack())
        return std::nullopt;
    const ChannelEvent from = in.getEvent();
    return TimeRange(sourceTime(from, std::min(clip->start, region->start)),
                     sourceTime(from, std::max(clip->end, region->end)));
}

Status TransitionsEditor::apply(const EditModifier& edit, const EditModule& module,
                                const IdStamp& channel, const ce_handle& point,
                                const LastTransition& transition) {
    const auto effect = EffectTemplateManager::instance().getTemplate(transition.getFXID());
    if (!effect || effect->kind != "transition")
        return refused("there is no such transition");
    const auto region = regionOf(module, point, transition.getPosn(), transition.getLen());
    const Kv::Ptr<Cel> cel = edit ? edit->get_edit_cel_p(channel) : Kv::Ptr<Cel>();
    if (!region || !cel || !(cel->getHandle(point.getIndex()) == point))
        return refused("it has no place at this cut");

    EffectGraph graph;
    graph.kind = effect->kind;
    graph.name = effect->name;
    graph.effectTemplate = effect->id;
    graph.parameters = effect->parameters;
    // On the in point of a cut, on the single point at an end of the channel.
    const ce_handle after = point.is_out_point() ? point.next() : point;
    const ce_handle on = after.valid() ? after : point;
    const Flicks at = on.getEvent().time;
    graph.inOffset = at - region->start;
    graph.outOffset = region->end - at;
    if (Status status = put(edit, channel, on, std::move(graph)); !status)
        return status;
    transition.persist();
    return {};
}

Status TransitionsEditor::put(const EditModifier& edit, const IdStamp& channel,
                              const ce_handle& point, EffectGraph graph) {
    const Kv::Ptr<Cel> cel = edit ? edit->get_edit_cel_p(channel) : Kv::Ptr<Cel>();
    if (!cel || !point.valid() || !(cel->getHandle(point.getIndex()) == point))
        return refused("there is no such point");
    if (graph.inOffset < 0 || graph.outOffset < 0)
        return refused("its length before and after the cut is not negative");
    const std::uint32_t index = point.getIndex();
    const ce_handle beside = point.is_out_point() ? point.next() : point.previous();
    const bool replacesBoth =
        graph.isTransition() && beside.valid() && hasTransition(*edit, beside);
    const std::uint32_t other = replacesBoth ? beside.getIndex() : index;
    if (Status status = exchangeGraph(*edit, *cel, index, edit->setEffectGraph(std::move(graph)));
        !status)
        return status;
    return replacesBoth ? exchangeGraph(*edit, *cel, other, IdStamp()) : Status();
}
