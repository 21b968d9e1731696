#include "tests/safety/Heap.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local long left = -1; // allocations until the one that fails; negative: none does
thread_local bool struck = false;
std::atomic<long> alive{0};

} // namespace

namespace cutroom::test::heap {

void failAt(long at) noexcept {
    struck = false;
    left = at;
}

bool disarm() noexcept {
    left = -1;
    return struck;
}

long live() noexcept { return alive; }

} // namespace cutroom::test::heap

// The thread sanitizer brings operators that cannot be replaced: with it nothing fails or is
// counted.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CUTROOM_HEAP_IS_ITS_OWN
#endif
#endif

#ifndef CUTROOM_HEAP_IS_ITS_OWN

// Over malloc, so that the address sanitizer sees each block as it does without them.
void* operator new(std::size_t size) {
    if (left >= 0 && left-- == 0) {
        struck = true;
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    alive.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    if (memory)
        alive.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { ::operator delete(memory); }

#endif
