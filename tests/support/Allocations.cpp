#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;
thread_local long left = -1; // allocations until the one that fails; negative: none does
thread_local bool struck = false;
thread_local bool goesOn = false; // after the first
std::atomic<long> alive{0};

} // namespace

namespace cutroom::test {

std::size_t allocations() noexcept { return count; }
long liveBlocks() noexcept { return alive; }

void failAllocation(long at, Failing how) noexcept {
    struck = false;
    goesOn = how == Failing::forEver;
    left = at;
}

bool failNone() noexcept {
    left = -1;
    return struck;
}

} // namespace cutroom::test

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CUTROOM_HEAP_IS_ITS_OWN
#endif
#endif

#ifdef CUTROOM_HEAP_IS_ITS_OWN

// The sanitizer's interface; not every compiler comes with the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*,
                                                                  std::size_t),
                                                         void (*)(const volatile void*));

namespace {

void counted(const volatile void*, std::size_t) { ++count; }
void ignored(const volatile void*) {}

[[maybe_unused]] const int kInstalled = __sanitizer_install_malloc_and_free_hooks(counted, ignored);

} // namespace

#else

// Over malloc, so that the address sanitizer sees each block as it does without them.
void* operator new(std::size_t size) {
    ++count;
    if (left == 0) {
        struck = true;
        left = goesOn ? 0 : -1;
        throw std::bad_alloc();
    }
    if (left > 0)
        --left;
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
