// Counts what the program takes from the heap, for tests that ask whether something takes nothing.
#pragma once

#include <cstddef>

namespace cutroom::test {

// Calls of `operator new` on this thread so far.
std::size_t allocations() noexcept;

} // namespace cutroom::test
