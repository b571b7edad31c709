// Counts each thread's allocations through the global operator new; a file of
// its own, so that no compiler ever sees a test's new beside this free().
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {
thread_local std::size_t tAllocations = 0;
}  // namespace

std::size_t allocationsOnThisThread() { return tAllocations; }

void* operator new(std::size_t size) {
    ++tAllocations;
    void* memory = std::malloc(size == 0 ? 1 : size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
