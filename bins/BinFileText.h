// The texts in which a bin's file holds places and sizes.
#pragma once

#include "platform/base/XY.h"

#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

// What stands for a number that could not be read.
inline constexpr int kUnreadable = -12345;

// "(x,y)", each number in the shortest form that reads back exactly.
void appendPosition(std::string& text, const XY<float>& position);
// Two parts about one comma, the first beginning with "(": the number at the beginning of each
// (kUnreadable where there is none). Any other text gives kUnreadable for both.
XY<float> readPosition(std::string_view text) noexcept;

// "(w,h)" in whole numbers.
std::string sizeText(const XY<int>& size);
// The two numbers, read as those of a position; nothing unless both can be read.
std::optional<XY<int>> readSize(std::string_view text) noexcept;

// "true" and "false", and nothing else.
std::string BoolAsString(bool value);
std::optional<bool> BoolFromString(std::string_view text) noexcept;

} // namespace cutroom
