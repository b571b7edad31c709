#include "Strand/linux/ThreadRegistry.h"

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace Strand::linux_layer {

namespace {

// ---- Handles -------------------------------------------------------------

// A slot is free (tid 0), being filled (tid -1) or owned by a live thread.
// The handle is written before the tid is published and read between two
// reads of the tid, so a reader never pairs a tid with another thread's handle.
struct Slot {
    std::atomic<int> tid{0};
    std::atomic<pthread_t> handle{};
};
static_assert(std::atomic<pthread_t>::is_always_lock_free);

// Enough for the threads of a large client; a thread that finds no free slot
// still has its identity, only listings show it without a POSIX handle.
constexpr std::size_t kSlotCount = 2048;
std::array<Slot, kSlotCount> gSlots;
// One past the highest slot ever claimed, so scans stop early.
std::atomic<std::size_t> gSlotsInUse{0};

void forgetName(int tid);

// Frees the slot of a thread that ends (pthread key destructor).
void releaseSlot(void* slot) {
    auto* const owned = static_cast<Slot*>(slot);
    const int tid = owned->tid.load(std::memory_order_relaxed);
    owned->tid.store(0, std::memory_order_release);
    forgetName(tid);
}

// The key whose destructor frees a thread's slot. Created while the library
// loads, so that it is one of the first keys of the process: pthread_setspecific
// then only writes into the thread's own descriptor, allocating nothing.
pthread_key_t slotKey() {
    static const pthread_key_t key = [] {
        pthread_key_t created{};
        pthread_key_create(&created, &releaseSlot);
        return created;
    }();
    return key;
}
[[maybe_unused]] const pthread_key_t gSlotKeyAtLoad = slotKey();

// Reads slot's owner and handle consistently; tid 0 when the slot is not owned.
std::pair<int, pthread_t> readSlot(const Slot& slot) noexcept {
    for (;;) {
        const int tid = slot.tid.load(std::memory_order_acquire);
        if (tid <= 0) {
            return {0, pthread_t{}};
        }
        const pthread_t handle = slot.handle.load(std::memory_order_acquire);
        if (slot.tid.load(std::memory_order_acquire) == tid) {
            return {tid, handle};
        }
    }
}

// ---- Names ---------------------------------------------------------------

struct GivenName {
    std::string fullName;
    std::string kernelName;
};

struct Names {
    std::mutex mutex;
    std::unordered_map<int, GivenName> byTid;
};

// Never destroyed: threads may end while static destructors run.
Names& names() {
    static auto* const instance = new Names;
    return *instance;
}

void forgetName(int tid) {
    const std::lock_guard<std::mutex> guard(names().mutex);
    names().byTid.erase(tid);
}

}  // namespace

bool rememberCurrentThread(int tid, pthread_t handle) noexcept {
    if (auto* const owned = static_cast<Slot*>(pthread_getspecific(slotKey()))) {
        owned->handle.store(handle, std::memory_order_release);
        owned->tid.store(tid, std::memory_order_release);
        return true;
    }
    for (std::size_t i = 0; i < kSlotCount; ++i) {
        int expected = 0;
        if (gSlots[i].tid.compare_exchange_strong(expected, -1, std::memory_order_acquire)) {
            gSlots[i].handle.store(handle, std::memory_order_release);
            gSlots[i].tid.store(tid, std::memory_order_release);
            std::size_t inUse = gSlotsInUse.load(std::memory_order_relaxed);
            while (inUse < i + 1 &&
                   !gSlotsInUse.compare_exchange_weak(inUse, i + 1, std::memory_order_release)) {
            }
            pthread_setspecific(slotKey(), &gSlots[i]);
            return true;
        }
    }
    return false;
}

std::vector<pthread_t> knownHandles(const std::vector<int>& tids) {
    std::unordered_map<int, pthread_t> handles;
    const std::size_t inUse = gSlotsInUse.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < inUse; ++i) {
        const auto [tid, handle] = readSlot(gSlots[i]);
        if (tid > 0) {
            handles.emplace(tid, handle);
        }
    }
    std::vector<pthread_t> result(tids.size(), pthread_t{});
    for (std::size_t i = 0; i < tids.size(); ++i) {
        if (const auto found = handles.find(tids[i]); found != handles.end()) {
            result[i] = found->second;
        }
    }
    return result;
}

int knownTid(pthread_t handle) noexcept {
    const std::size_t inUse = gSlotsInUse.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < inUse; ++i) {
        const auto [tid, owner] = readSlot(gSlots[i]);
        if (tid > 0 && pthread_equal(owner, handle)) {
            return tid;
        }
    }
    return 0;
}

void rememberCurrentThreadName(int tid, const std::string& fullName,
                               const std::string& kernelName) {
    const std::lock_guard<std::mutex> guard(names().mutex);
    names().byTid[tid] = GivenName{fullName, kernelName};
}

std::optional<std::string> fullNameIfCurrent(int tid, const std::string& kernelName) {
    const std::lock_guard<std::mutex> guard(names().mutex);
    const auto found = names().byTid.find(tid);
    if (found == names().byTid.end() || found->second.kernelName != kernelName) {
        return std::nullopt;
    }
    return found->second.fullName;
}

void lockForFork() { names().mutex.lock(); }

void unlockAfterForkInParent() { names().mutex.unlock(); }

void unlockAfterForkInChild(int newTid) {
    auto* const own = static_cast<Slot*>(pthread_getspecific(slotKey()));
    const int oldTid = own != nullptr ? own->tid.load(std::memory_order_relaxed) : 0;
    for (auto& slot : gSlots) {
        if (&slot != own) {
            slot.tid.store(0, std::memory_order_relaxed);
        }
    }
    if (own != nullptr) {
        own->tid.store(newTid, std::memory_order_release);
    }

    auto& byTid = names().byTid;
    std::optional<GivenName> forking;
    if (const auto found = byTid.find(oldTid); found != byTid.end()) {
        forking = std::move(found->second);
    }
    byTid.clear();
    if (forking) {
        byTid.emplace(newTid, std::move(*forking));
    }
    names().mutex.unlock();
}

}  // namespace Strand::linux_layer
