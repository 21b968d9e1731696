// Numbers and routings as the texts of a stored mix.
#pragma once

#include "platform/base/Export.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// Ascending numbers joined by commas; "none" for the empty list.
CUTROOM_API std::string routingText(const std::vector<signed char>& routing);
// Reads it; nothing when a number is missing, out of order, below `least` or above 127.
CUTROOM_API std::optional<std::vector<signed char>> routingFromText(std::string_view text,
                                                                    signed char least);
// A finite number; nothing for any other text and for what a float does not hold.
CUTROOM_API std::optional<float> levelFromText(std::string_view text);
// A number from 0 to 1.
CUTROOM_API std::optional<float> panFromText(std::string_view text);
// "1" or "0".
CUTROOM_API std::optional<bool> switchFromText(std::string_view text);
// A mix from -1 to 124.
CUTROOM_API std::optional<signed char> mixFromText(std::string_view text);

} // namespace cutroom
