// What fuzzers hold their readers to.
#pragma once

#include "platform/base/Strings.h"

#include <algorithm>
#include <string_view>

inline void require(bool holds) {
    if (!holds)
        __builtin_trap();
}

// Text without control characters, which most formats cannot hold: it comes out as it came in.
inline bool isPlain(std::string_view bytes) {
    return cutroom::isUtf8(bytes) && std::none_of(bytes.begin(), bytes.end(), [](char c) {
               return (c >= 0 && c < ' ' && c != '\n' && c != '\r') || c == 0x7F;
           });
}
