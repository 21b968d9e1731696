// Audio level nodes: the gain of an audio channel over time, kept on a levels channel.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <vector>

// One node: linear gain at a time; between nodes gain runs straight. A value.
struct CUTROOM_API LevelNode {
    cutroom::Flicks time = 0;
    float gain = 1.0F;

    friend bool operator==(const LevelNode&, const LevelNode&) = default;
};

using LevelNodes = std::vector<LevelNode>; // ascending, one per time
