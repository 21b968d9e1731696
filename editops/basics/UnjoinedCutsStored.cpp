// Unjoined cuts as text, and carried across changes that renumber the events.
#include "editops/basics/IndexIndependentEventList.h"
#include "editops/basics/UnjoinedCuts.h"
#include "platform/store/Edit.h"

#include <string>

namespace {

std::uint32_t distance(std::uint32_t a, std::uint32_t b) { return a > b ? a - b : b - a; }

// The point with that effect graph on the same side of a cut, nearest to where it was; invalid when
// the graph has gone. A graph may lie on several points.
ce_handle findGraph(const Cel& cel, const IdStamp& graph, std::uint32_t was) {
    std::uint32_t best = 0;
    bool found = false;
    for (std::uint32_t i = was % 2; i < cel.get_num_events(); i += 2) {
        if (cel.get_event(i).effectGraph != graph)
            continue;
        if (!found || distance(i, was) < distance(best, was))
            best = i;
        found = true;
    }
    return found ? ce_handle(cel, best) : ce_handle();
}

// A record without a graph matches nothing by it: its place decides.
ce_handle newPlaceOf(const UnjoinedCut& cut, const Cel& cel) {
    const std::uint32_t was = cut.handle.getIndex();
    if (cut.effectGraph.valid())
        if (ce_handle point = findGraph(cel, cut.effectGraph, was); point.valid())
            return point;
    return ce_handle(cel, was);
}

} // namespace

LightweightString<char> UnjoinedCuts::asString() const {
    LightweightString<char> text;
    for (const UnjoinedCut& cut : items()) {
        if (!text.empty())
            text += ',';
        text += std::to_string(cut.handle.getIndex());
    }
    return text;
}

void UnjoinedCuts::fromString(const LightweightString<char>& text, Cel* cel) {
    clear();
    if (text.empty() || !cel)
        return;
    for (const std::string& piece : cutroom::split(text, ',')) {
        const auto index = static_cast<std::uint32_t>(cutroom::leadingInt(piece));
        append(UnjoinedCut(ce_handle(*cel, index), 0));
    }
}

void UnjoinedCuts::buildFrom(IndexIndependentEventList& events) {
    clear();
    for (std::size_t i = 0; i < events.size(); ++i)
        addHandle(events.getHandleFor(i), 0);
}

void UnjoinedCuts::reEstablish(const Cookie& edit, const IdStamp& channel) {
    const UnjoinedCuts before = *this;
    clear();
    const EditPtr open(edit);
    const Kv::Ptr<Cel> cel = open ? open->get_edit_cel_p(channel) : Kv::Ptr<Cel>();
    if (!cel)
        return;
    const Edit::Lock lock(*open);
    for (const UnjoinedCut& cut : before.items()) {
        const ce_handle point = newPlaceOf(cut, *cel);
        if (!point.valid() || isMember(point))
            continue;
        addHandle(point, cut.flags);
        UnjoinedCut& record = (*this)[static_cast<std::uint16_t>(getIndexFor(point))];
        record.effectGraph = cut.effectGraph;
        record.second = cut.second;
    }
}
