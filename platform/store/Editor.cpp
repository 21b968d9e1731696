#include "platform/store/Editor.h"

#include "platform/store/CelStorage.h"
#include "platform/store/EditImpl.h"
#include "platform/store/EditorLevels.h"
#include "platform/store/EditorPieces.h"

#include <algorithm>
#include <map>

namespace cutroom {

namespace {

// What is taken from the source: its channels (sharing their lists), its effects, and the region in
// flicks.
struct Taken {
    std::vector<EditChannel> channels;
    std::vector<EditChannel> levels; // of the audio channels among them
    Shared<GraphTable> graphs;
    Flicks from = 0;
    Flicks to = 0;

    Piece pieceOf(const EditChannel& channel, Flicks at) const {
        return {*channel.cel, from, to, at - from};
    }
    // Tells whether all of the source lies in the region.
    bool isWhole() const {
        return std::all_of(channels.begin(), channels.end(), [&](const EditChannel& channel) {
            const Cel& cel = *channel.cel;
            const std::uint32_t events = cel.get_num_events();
            return events == 0 ||
                   (cel.get_event(0).time >= from && cel.get_event(events - 1).time <= to);
        });
    }
};

// A channel of the source, and the one of the target that takes it.
struct Laid {
    const EditChannel* source = nullptr;
    IdStamp target; // empty: to be added
    Kv::Ptr<Cel> contents;
};

Status outsideOfEdits() {
    return {StatusCode::failed, {}, "a piece lies outside the range of an edit"};
}

Status take(const EditModule& source, Taken& taken) {
    const TimeRange region = source.getMarkedRegion();
    if (!toFlickRange(region, taken.from, taken.to))
        return {StatusCode::failed, {}, "the marked region lies outside the range of an edit"};
    const Edit& edit = *source.getEdit();
    const Edit::Lock lock(edit);
    const EditState& state = EditAccess::impl(edit).state;
    for (const EditChannel& channel : state.channels) {
        const bool ofSelected = channel.levelsOf.valid() && source.isSelected(channel.levelsOf);
        if (!ofSelected && !source.isSelected(channel.id))
            continue;
        auto& list = channel.type == kChanLevels ? taken.levels : taken.channels;
        list.push_back(channel);
        list.back().cel = channel.cel->copy();
    }
    taken.graphs = state.graphs;
    return {};
}

// Pairs the source's channels with the target's in order, within each type. A source channel
// without a partner gets a new one, or is left out when only selected channels may be used.
enum class Targets { all, selected };
std::vector<Laid> match(const Taken& taken, const EditModule& target, Targets targets) {
    const bool selectedOnly = targets == Targets::selected;
    std::map<std::pair<unsigned, unsigned>, std::vector<IdStamp>> free;
    const EditPtr& edit = target.getEdit();
    for (const IdStamp& channel : edit->getChans())
        if (!selectedOnly || target.isSelected(channel))
            free[{edit->getChanType(channel), edit->getChanSubtype(channel)}].push_back(channel);
    std::vector<Laid> pairs;
    for (const EditChannel& channel : taken.channels) {
        auto& left = free[{channel.type, channel.subType}];
        Laid pair;
        pair.source = &channel;
        if (!left.empty()) {
            pair.target = left.front();
            left.erase(left.begin());
        }
        if (pair.target.valid() || !selectedOnly)
            pairs.push_back(pair);
    }
    return pairs;
}

// Copies the effects on a list's points to the target. An effect whose id the target already uses
// for another one gets a new id.
void bringGraphs(Shared<GraphTable>& target, Cel& cel, const GraphTable& source) {
    if (source.empty())
        return;
    std::map<IdStamp, IdStamp> ids;
    for (std::uint32_t i = 0; i < cel.get_num_events(); ++i) {
        ChannelEvent event = cel.get_event(i);
        const auto graph = source.find(event.effectGraph);
        if (graph == source.end())
            continue;
        const auto [entry, fresh] = ids.try_emplace(graph->first, graph->first);
        if (fresh) {
            EffectGraph copy = graph->second;
            const auto known = target->find(copy.id);
            if (known != target->end() && !(known->second == copy))
                copy.id = IdStamp::make();
            entry->second = copy.id;
            if (target->count(copy.id) == 0)
                target.write()[copy.id] = std::move(copy);
        }
        if (entry->second == graph->first)
            continue;
        event.effectGraph = entry->second;
        if (const Status set = cel.setEvent(i, event); !set.ok())
            return;
    }
}

void setGraphs(const Edit& edit, Shared<GraphTable> graphs) {
    auto& impl = EditAccess::impl(edit);
    if (graphs == impl.state.graphs)
        return;
    impl.state.graphs = std::move(graphs);
    impl.record(kModEffects);
}

enum class Levels { replace, overlay };

// The levels of the audio channels that have been laid.
void bringLevels(Edit& edit, const Taken& taken, const std::vector<Laid>& pairs, Flicks at,
                 Levels how) {
    for (const EditChannel& levels : taken.levels) {
        const auto pair = std::find_if(pairs.begin(), pairs.end(), [&](const Laid& laid) {
            return laid.source->id == levels.levelsOf;
        });
        if (pair == pairs.end())
            continue;
        const LevelNodes piece = nodesOf(*levels.nodes, taken.from, taken.to, at - taken.from);
        if (how == Levels::overlay && piece.empty() && !edit.getLevelsChan(pair->target).valid())
            continue;
        const IdStamp channel = edit.addLevelsChan(pair->target);
        const Flicks end = at + (taken.to - taken.from);
        edit.setLevelNodes(channel, how == Levels::replace
                                        ? piece
                                        : withPiece(edit.getLevelNodes(channel), at, end, piece));
    }
}

// Gives the target's channels the region of the source's as their whole contents.
Status rebuild(Taken& taken, EditModule& target) {
    std::vector<Laid> pairs = match(taken, target, Targets::all);
    for (Laid& pair : pairs) {
        pair.contents = filledPart(taken.pieceOf(*pair.source, 0), taken.graphs);
        if (!pair.contents)
            return outsideOfEdits();
    }
    Edit& edit = *target.getEdit();
    const Edit::Lock lock(edit);
    auto& impl = EditAccess::impl(edit);
    Shared<GraphTable> graphs = impl.state.graphs;
    if (graphs->empty() && taken.isWhole())
        graphs = taken.graphs;
    else
        for (const Laid& pair : pairs)
            bringGraphs(graphs, *pair.contents, *taken.graphs);
    for (Laid& pair : pairs) {
        if (!pair.target.valid()) {
            pair.target = edit.addChan(pair.source->type, pair.source->subType);
            target.selectChan(pair.target, true);
        }
        edit.set_edit_cel_p(pair.target, *pair.contents);
        EditChannel& channel = *impl.state.find(pair.target);
        channel.metadata = pair.source->metadata;
        channel.font = pair.source->font;
    }
    setGraphs(edit, std::move(graphs));
    bringLevels(edit, taken, pairs, 0, Levels::replace);
    impl.record(kModFlattened);
    return {};
}

// A target's list with the region laid over it; its effects are entered in `graphs`. Null when that
// cannot be.
Kv::Ptr<Cel> withRegion(const Cel& list, const EditChannel& channel, Taken& taken, Flicks at,
                        Shared<GraphTable>& graphs) {
    const Kv::Ptr<Cel> piece = wholePart(taken.pieceOf(channel, at), taken.graphs);
    if (!piece)
        return {};
    bringGraphs(graphs, *piece, *taken.graphs);
    Kv::Ptr<Cel> contents = laidOver(list, *piece, at, at + (taken.to - taken.from), graphs);
    if (contents)
        contents->setFlags(list.getFlags() | channel.cel->getFlags());
    return contents;
}

// Lays the region over the target's selected channels, from its current time on.
Status overlay(Taken& taken, EditModule& target) {
    const double current = target.getCurrentTime();
    if (taken.from >= taken.to)
        return {StatusCode::failed, {}, "the marked region is empty"};
    if (!isStorableTime(current) || !isStorableTime(current + toSeconds(taken.to - taken.from)))
        return {StatusCode::failed, {}, "the place lies outside the range of an edit"};
    const Flicks at = toFlicks(current);
    std::vector<Laid> pairs = match(taken, target, Targets::selected);
    Edit& edit = *target.getEdit();
    const Edit::Lock lock(edit);
    Shared<GraphTable> graphs = EditAccess::impl(edit).state.graphs;
    for (Laid& pair : pairs) {
        pair.contents =
            withRegion(*edit.get_edit_cel_p(pair.target), *pair.source, taken, at, graphs);
        if (!pair.contents)
            return outsideOfEdits();
    }
    for (const Laid& pair : pairs)
        edit.set_edit_cel_p(pair.target, *pair.contents);
    setGraphs(edit, std::move(graphs));
    bringLevels(edit, taken, pairs, at, Levels::overlay);
    return {};
}

} // namespace

} // namespace cutroom

cutroom::Status Editor::apply(const EditModule& source, EditModule& target, int operation,
                              int flags) {
    using cutroom::Status;
    using cutroom::StatusCode;
    if (flags != 0 || (operation != kEditRebuild && operation != kEditOverlay))
        return {StatusCode::wrongUsage, {}, "there is no such edit operation"};
    if (!source.valid() || !target.valid())
        return {StatusCode::notFound, {}, "there is no edit to take from, or none to lay into"};
    cutroom::Taken taken;
    if (Status status = cutroom::take(source, taken); !status)
        return status;
    return operation == kEditRebuild ? cutroom::rebuild(taken, target)
                                     : cutroom::overlay(taken, target);
}
