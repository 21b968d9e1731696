// How far a randomised or exhaustive test goes: short in everyday runs, long in tools/nightly.
#pragma once

#include <cstdlib>

namespace cutroom::test {

// `everyday` rounds, or `nightly` ones when the environment sets CUTROOM_LONG.
inline long rounds(long everyday, long nightly) {
    return std::getenv("CUTROOM_LONG") ? nightly : everyday;
}

} // namespace cutroom::test
