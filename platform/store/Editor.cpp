#include "platform/store/Editor.h"

#include "platform/store/CelStorage.h"
#include "platform/store/EditImpl.h"
#include "platform/store/EditorLevels.h"

#include <algorithm>
#include <map>

namespace cutroom {

namespace {

using GraphTable = std::map<IdStamp, EffectGraph>;

// What is taken of the source: its channels (lists shared), its effects, the region in flicks.
struct Taken {
    std::vector<EditChannel> channels;
    std::vector<EditChannel> levels; // of the audio channels among them
    Shared<GraphTable> graphs;
    Flicks from = 0;
    Flicks to = 0;
};

// One channel of the target with what it is to hold.
struct Laid {
    const EditChannel* source = nullptr;
    IdStamp target; // empty: to be added
    Kv::Ptr<Cel> contents;
};

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

// The part of a list inside the region, moved to begin at 0. Shares the list that lies inside as a
// whole.
Kv::Ptr<Cel> partOf(const Cel& cel, Flicks from, Flicks to) {
    const Flicks start = cel.get_num_events() > 0 ? cel.get_event(0).time : to;
    const Flicks end = cel.get_num_events() > 0 ? cel.get_event(cel.get_num_events() - 1).time : to;
    if (start >= from && end <= to) {
        Kv::Ptr<Cel> whole = cel.copy();
        if (const Status moved = whole->slide(-toSeconds(from)); moved.ok())
            return whole;
    }
    auto part = Kv::makePtr<Cel>();
    part->setFlags(cel.getFlags());
    const Flicks first = std::max(from, start);
    const Flicks last = std::min(to, end);
    if (first < last)
        if (const Status laid = part->overwriteFrom(cel, first, last, first - from); !laid)
            return {};
    return part;
}

// The target's channels that take the source's, the first for the first of each type and so on.
std::vector<Laid> match(const Taken& taken, const EditModule& target, bool selectedOnly) {
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

// Brings the effects on a list's points along. One whose id the target has for another effect gets
// an id of its own.
void bringGraphs(Edit& edit, Cel& cel, const GraphTable& source) {
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
            const auto known = edit.getEffectGraph(copy.id);
            if (known && !(*known == copy))
                copy.id = IdStamp();
            entry->second = edit.setEffectGraph(std::move(copy));
        }
        if (entry->second == graph->first)
            continue;
        event.effectGraph = entry->second;
        if (const Status set = cel.setEvent(i, event); !set.ok())
            return;
    }
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

// The target's channels become the part of the source's.
Status rebuild(const Taken& taken, EditModule& target) {
    std::vector<Laid> pairs = match(taken, target, false);
    for (Laid& pair : pairs) {
        pair.contents = partOf(*pair.source->cel, taken.from, taken.to);
        if (!pair.contents)
            return {StatusCode::failed, {}, "a piece lies outside the range of an edit"};
    }
    Edit& edit = *target.getEdit();
    const Edit::Lock lock(edit);
    auto& impl = EditAccess::impl(edit);
    const bool takeAllGraphs = impl.state.graphs->empty();
    for (Laid& pair : pairs) {
        if (!pair.target.valid()) {
            pair.target = edit.addChan(pair.source->type, pair.source->subType);
            target.selectChan(pair.target, true);
        }
        if (!takeAllGraphs)
            bringGraphs(edit, *pair.contents, *taken.graphs);
        edit.set_edit_cel_p(pair.target, *pair.contents);
        EditChannel& channel = *impl.state.find(pair.target);
        channel.metadata = pair.source->metadata;
        channel.font = pair.source->font;
    }
    if (takeAllGraphs)
        impl.state.graphs = taken.graphs;
    bringLevels(edit, taken, pairs, 0, Levels::replace);
    impl.record(kModFlattened);
    return {};
}

// The region is laid over the target's channels.
Status overlay(const Taken& taken, EditModule& target) {
    const double current = target.getCurrentTime();
    if (taken.from >= taken.to)
        return {StatusCode::failed, {}, "the marked region is empty"};
    if (!isStorableTime(current) || !isStorableTime(current + toSeconds(taken.to - taken.from)))
        return {StatusCode::failed, {}, "the place lies outside the range of an edit"};
    const Flicks at = toFlicks(current);
    std::vector<Laid> pairs = match(taken, target, true);
    Edit& edit = *target.getEdit();
    const Edit::Lock lock(edit);
    for (Laid& pair : pairs) {
        auto piece = Kv::makePtr<Cel>();
        if (Status laid = piece->overwriteFrom(*pair.source->cel, taken.from, taken.to, at); !laid)
            return laid;
        bringGraphs(edit, *piece, *taken.graphs);
        pair.contents = edit.get_edit_cel_p(pair.target)->copy();
        if (Status laid =
                pair.contents->overwriteFrom(*piece, at, at + (taken.to - taken.from), at);
            !laid)
            return laid;
        pair.contents->setFlags(pair.contents->getFlags() | pair.source->cel->getFlags());
    }
    for (const Laid& pair : pairs)
        edit.set_edit_cel_p(pair.target, *pair.contents);
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
