// The heap under test: counts what is taken from it, and lets chosen allocations fail. Naming one
// of these functions replaces `operator new`; the thread sanitizer brings one that cannot be
// replaced: with it allocations are counted, and that is all.
#pragma once

#include <cstddef>

namespace cutroom::test {

// Calls of `operator new` on this thread so far.
std::size_t allocations() noexcept;
// Blocks of `operator new` that are alive, of all threads.
long liveBlocks() noexcept;

enum class Failing { once, forEver };
// Lets allocation number `at` of this thread (from 0, counted from now) throw `bad_alloc`, it alone
// or with every later one.
void failAllocation(long at, Failing how) noexcept;
// Lets none fail; true when the chosen one was reached.
bool failNone() noexcept;

} // namespace cutroom::test
