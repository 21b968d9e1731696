// The heap under test: counts what is alive, and lets a chosen allocation fail.
#pragma once

namespace cutroom::test::heap {

// Lets allocation number `at` of this thread (from 0, counted from now) throw `bad_alloc`, once.
void failAt(long at) noexcept;
// Lets none fail; true when the chosen one was reached.
bool disarm() noexcept;
// Blocks of `operator new` that are alive, of all threads.
long live() noexcept;

} // namespace cutroom::test::heap
