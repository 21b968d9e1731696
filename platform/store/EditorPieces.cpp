#include "platform/store/EditorPieces.h"

#include <algorithm>

namespace cutroom {

namespace {

const EffectGraph* find(const GraphTable& graphs, const IdStamp& id) {
    const auto found = graphs.find(id);
    return found == graphs.end() ? nullptr : &found->second;
}

// The effect of a clip that a point names; the empty id for a transition and for none.
IdStamp clipEffect(const ChannelEvent& point, const GraphTable& graphs) {
    const EffectGraph* graph = find(graphs, point.effectGraph);
    return graph && !graph->isTransition() ? graph->id : IdStamp();
}

// The points of a segment; a default event when `segment` is negative.
ChannelEvent inPointOf(const Cel& list, std::int64_t segment) {
    return segment < 0 ? ChannelEvent() : list.get_event(2 * static_cast<std::uint32_t>(segment));
}
ChannelEvent outPointOf(const Cel& list, std::int64_t segment) {
    return segment < 0 ? ChannelEvent()
                       : list.get_event(2 * static_cast<std::uint32_t>(segment) + 1);
}

// How far the transitions of a table reach at most.
Flicks longestReach(const GraphTable& graphs) {
    Flicks reach = 0;
    for (const auto& [id, graph] : graphs)
        if (graph.isTransition())
            reach = std::max({reach, graph.inOffset, graph.outOffset});
    return reach;
}

// Effects on the points of one list; changed ones take ids of their own.
class PointEffects {
public:
    PointEffects(Cel& list, Shared<GraphTable>& graphs) : list_(list), graphs_(graphs) {}

    bool isTransition(std::uint32_t index) const {
        const EffectGraph* graph = find(*graphs_, list_.get_event(index).effectGraph);
        return graph && graph->isTransition();
    }
    void set(std::uint32_t index, const IdStamp& graph) {
        ChannelEvent event = list_.get_event(index);
        event.effectGraph = graph;
        (void)list_.setEvent(index, event); // the event is the list's own, so it is taken
    }
    // Shortens the transition on a point so that it lies within [first, last].
    void shorten(std::uint32_t index, Flicks first, Flicks last) {
        if (!isTransition(index))
            return;
        const ChannelEvent event = list_.get_event(index);
        EffectGraph graph = *find(*graphs_, event.effectGraph);
        const Flicks before = std::max<Flicks>(0, event.time - first);
        const Flicks after = std::max<Flicks>(0, last - event.time);
        if (graph.inOffset <= before && graph.outOffset <= after)
            return;
        graph.inOffset = std::min(graph.inOffset, before);
        graph.outOffset = std::min(graph.outOffset, after);
        graph.id = IdStamp::make();
        set(index, graph.id);
        graphs_.write()[graph.id] = graph;
    }

private:
    Cel& list_;
    Shared<GraphTable>& graphs_;
};

// Gives one end of a piece, its event `at`, the effect that belongs there. `uncut` is the end that
// its clip has in the source.
void mendEnd(PointEffects& effects, std::uint32_t at, const ChannelEvent& uncut, Flicks cut,
             const GraphTable& graphs) {
    if (uncut.time != cut)
        effects.set(at, clipEffect(uncut, graphs));
    else if (effects.isTransition(at))
        effects.set(at, IdStamp());
}

// Puts the effects of a piece's list in order.
void mend(Cel& list, const Piece& piece, Shared<GraphTable>& graphs) {
    const Cel& source = piece.source;
    const std::uint32_t events = list.get_num_events();
    if (graphs->empty() || source.get_num_events() == 0)
        return;
    PointEffects effects(list, graphs);
    const Flicks start = source.get_event(0).time;
    const Flicks end = source.get_event(source.get_num_events() - 1).time;
    const bool cutHead = start < piece.from && piece.from < end;
    const bool cutTail = start < piece.to && piece.to < end;
    if (cutHead)
        mendEnd(effects, 0, inPointOf(source, source.findSegment(piece.from)), piece.from, *graphs);
    if (cutTail)
        mendEnd(effects, events - 1, outPointOf(source, source.findSegment(piece.to - 1)), piece.to,
                *graphs);
    const Flicks reach = longestReach(*graphs);
    const Flicks first = cutHead ? piece.from + piece.by : -kMaxFlicks;
    const Flicks last = cutTail ? piece.to + piece.by : kMaxFlicks;
    for (std::uint32_t i = 0; cutHead && i < events && list.get_event(i).time < first + reach; ++i)
        effects.shorten(i, first, last);
    for (std::uint32_t i = events; cutTail && i > 0 && list.get_event(i - 1).time > last - reach;
         --i)
        effects.shorten(i - 1, first, last);
}

// Keeps the transitions of a list out of [from, to), where something else is about to be laid, and
// removes the one that would lead out of that.
void clearAround(Cel& list, Flicks from, Flicks to, Shared<GraphTable>& graphs) {
    PointEffects effects(list, graphs);
    const Flicks reach = longestReach(*graphs);
    for (std::int64_t i = list.lastBefore(from);
         i >= 0 && list.get_event(static_cast<std::uint32_t>(i)).time > from - reach; --i)
        effects.shorten(static_cast<std::uint32_t>(i), -kMaxFlicks, from);
    for (std::uint32_t i = list.nextAfter(to - 1);
         i < list.get_num_events() && list.get_event(i).time < to + reach; ++i) {
        const ChannelEvent event = list.get_event(i);
        if (event.time > to)
            effects.shorten(i, to, kMaxFlicks);
        else if (!event.isOut() && effects.isTransition(i))
            effects.set(i, IdStamp());
    }
}

} // namespace

Kv::Ptr<Cel> filledPart(const Piece& piece, Shared<GraphTable>& graphs) {
    const Cel& source = piece.source;
    const std::uint32_t events = source.get_num_events();
    const Flicks start = events > 0 ? source.get_event(0).time : piece.to;
    const Flicks end = events > 0 ? source.get_event(events - 1).time : piece.to;
    if (start >= piece.from && end <= piece.to) {
        Kv::Ptr<Cel> whole = source.copy();
        if (const Status moved = whole->slide(toSeconds(piece.by)); moved.ok())
            return whole;
    }
    const Piece filled{source, std::max(piece.from, start), std::min(piece.to, end), piece.by};
    if (filled.from < filled.to)
        return wholePart(filled, graphs);
    auto nothing = Kv::makePtr<Cel>();
    nothing->setFlags(source.getFlags());
    return nothing;
}

Kv::Ptr<Cel> wholePart(const Piece& piece, Shared<GraphTable>& graphs) {
    auto part = Kv::makePtr<Cel>();
    part->setFlags(piece.source.getFlags());
    if (!part->overwriteFrom(piece.source, piece.from, piece.to, piece.from + piece.by).ok())
        return {};
    mend(*part, piece, graphs);
    return part;
}

Kv::Ptr<Cel> laidOver(const Cel& list, const Cel& piece, Flicks from, Flicks to,
                      Shared<GraphTable>& graphs) {
    Kv::Ptr<Cel> result = list.copy();
    if (!graphs->empty())
        clearAround(*result, from, to, graphs);
    if (!result->overwriteFrom(piece, from, to, from).ok())
        return {};
    PointEffects effects(*result, graphs);
    const ChannelEvent before = outPointOf(list, list.findSegment(from - 1));
    if (before.time > from)
        effects.set(2 * static_cast<std::uint32_t>(result->findSegment(from - 1)) + 1,
                    clipEffect(before, *graphs));
    const std::int64_t later = list.findSegment(to);
    if (later >= 0 && inPointOf(list, later).time < to)
        effects.set(2 * static_cast<std::uint32_t>(result->findSegment(to)),
                    clipEffect(inPointOf(list, later), *graphs));
    return result;
}

void keepClipEffects(EventPair& part, const ChannelEvent& in, const ChannelEvent& out,
                     const GraphTable& graphs) {
    if (part[0].time != in.time)
        part[0].effectGraph = clipEffect(in, graphs);
    if (part[1].time != out.time)
        part[1].effectGraph = clipEffect(out, graphs);
}

} // namespace cutroom
