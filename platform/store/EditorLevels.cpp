#include "platform/store/EditorLevels.h"

#include <algorithm>

namespace cutroom {

namespace {

bool before(const LevelNode& node, Flicks time) noexcept { return node.time < time; }

} // namespace

float gainAt(const LevelNodes& nodes, Flicks time) noexcept {
    const auto after = std::lower_bound(nodes.begin(), nodes.end(), time, before);
    if (after == nodes.begin())
        return nodes.empty() ? 1.0F : after->gain;
    const LevelNode& left = *(after - 1);
    if (after == nodes.end())
        return left.gain;
    const double part =
        static_cast<double>(time - left.time) / static_cast<double>(after->time - left.time);
    return left.gain + static_cast<float>(part) * (after->gain - left.gain);
}

LevelNodes nodesOf(const LevelNodes& nodes, Flicks from, Flicks to, Flicks by) {
    LevelNodes piece;
    if (nodes.empty() || from >= to)
        return piece;
    piece.push_back({from + by, gainAt(nodes, from)});
    for (const LevelNode& node : nodes)
        if (node.time > from && node.time < to)
            piece.push_back({node.time + by, node.gain});
    piece.push_back({to + by, gainAt(nodes, to)});
    return piece;
}

LevelNodes withPiece(const LevelNodes& nodes, Flicks from, Flicks to, const LevelNodes& piece) {
    LevelNodes result;
    for (const LevelNode& node : nodes)
        if (node.time < from)
            result.push_back(node);
    result.insert(result.end(), piece.begin(), piece.end());
    for (const LevelNode& node : nodes)
        if (node.time > to)
            result.push_back(node);
    return result;
}

} // namespace cutroom
