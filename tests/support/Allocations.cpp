#include "tests/support/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;

} // namespace

std::size_t cutroom::test::allocations() noexcept { return count; }

// All forms for single objects: a sanitizer brings its own for those that are left out.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++count;
    return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
    if (void* const memory = operator new(size, std::nothrow))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
