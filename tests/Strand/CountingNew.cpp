// Replaces the global operator new of the context test program with one that
// counts each thread's allocations. Kept in a file of its own so that the
// compiler never sees a test's new and this file's free() side by side.
#include <cstdlib>
#include <new>

#include "ContextTestSupport.h"

namespace {
thread_local std::size_t tAllocations = 0;
}  // namespace

std::size_t context_test::allocationsOnThisThread() { return tAllocations; }

void* operator new(std::size_t size) {
    ++tAllocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
