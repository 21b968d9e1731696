#include "tests/support/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;

} // namespace

std::size_t cutroom::test::allocations() noexcept { return count; }

#ifdef CUTROOM_SANITIZED

// A sanitizer brings operators of its own, and tells what they do (its interface; not every
// compiler comes with the header).
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*,
                                                                  std::size_t),
                                                         void (*)(const volatile void*));

namespace {

void counted(const volatile void*, std::size_t) { ++count; }
void ignored(const volatile void*) {}

[[maybe_unused]] const int kInstalled = __sanitizer_install_malloc_and_free_hooks(counted, ignored);

} // namespace

#else

void* operator new(std::size_t size) {
    ++count;
    if (void* const memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
