// Per-thread operator new counts and hook; alone, so no compiler sees a test's new beside free().
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {
thread_local std::size_t tAllocations = 0;
thread_local void (*tNextAllocationHook)() = nullptr;
}  // namespace

std::size_t allocationsOnThisThread() { return tAllocations; }

// hook runs inside the calling thread's next allocation, once.
void runInNextAllocation(void (*hook)()) { tNextAllocationHook = hook; }

void* operator new(std::size_t size) {
    ++tAllocations;
    if (const auto hook = std::exchange(tNextAllocationHook, nullptr)) hook();
    void* memory = std::malloc(size == 0 ? 1 : size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
