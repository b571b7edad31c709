#include "Strand/linux/ThreadRegistry.h"

#include "Strand/Platform.h"

#include <linux/futex.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

namespace Strand::linux_layer {

namespace {

constexpr int kFree = 0;
constexpr int kClaiming = -1;
// In a fork child: held by a thread of the parent (the forking thread under its
// parent-side TID included). Never reused: the kernel will never mark those
// owners as ended, and a thread must not lock a mutex it already holds.
constexpr int kRetired = -2;

constexpr std::size_t kFullNameBytes = 64;    // 63 bytes and the NUL
constexpr std::size_t kKernelNameBytes = 16;  // TASK_COMM_LEN
constexpr std::size_t kTextWords = (kFullNameBytes + kKernelNameBytes) / sizeof(std::uint64_t);

}  // namespace

// One thread's entry. owner is kFree, kClaiming, or the owner's TID; the
// owner holds life (a robust mutex) from the claim on. The name is guarded by
// a sequence counter (odd while the owner rewrites it), so readers never block
// the owner and the owner never blocks.
struct ThreadRecord {
    pthread_mutex_t life;
    std::atomic<int> owner{kFree};
    std::atomic<pthread_t> handle{};
    std::atomic<std::uint32_t> version{0};
    std::atomic<bool> named{false};
    std::atomic<std::uint64_t> text[kTextWords] = {};  // full name, then kernel name
    // The next record in the registry; set before the record is published.
    ThreadRecord* next = nullptr;
};
static_assert(std::atomic<pthread_t>::is_always_lock_free);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

namespace {

// The newest record; every record is reachable from here, none is ever freed.
std::atomic<ThreadRecord*> gNewest{nullptr};
std::atomic<std::size_t> gRecordCount{0};
constexpr std::size_t kMinBlockRecords = 64;

// The calling thread's identity and record, in static TLS (initial-exec), so
// that the first touch on a thread allocates nothing even when the library was
// loaded with dlopen. Trivially destructible: nothing runs at thread exit.
struct CurrentThread {
    ThreadId id{};
    ThreadRecord* record = nullptr;
    bool valid = false;
    bool registering = false;
};
__attribute__((tls_model("initial-exec"))) constinit thread_local CurrentThread tCurrent;

int kernelTid() noexcept { return static_cast<int>(syscall(SYS_gettid)); }

void initLife(ThreadRecord& record) noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&record.life, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

// Whether the kernel still counts tid as the live owner of record's mutex. At
// a thread's end the kernel replaces its TID there by FUTEX_OWNER_DIED.
bool ownerLives(const ThreadRecord& record, int tid) noexcept {
    const int word = __atomic_load_n(&record.life.__data.__lock, __ATOMIC_ACQUIRE);
    return (word & FUTEX_TID_MASK) == tid && (word & FUTEX_OWNER_DIED) == 0;
}

// Takes record's mutex for the calling thread. A try-lock: the mutex is free or
// its owner has died, and try-locks add no lock-order edges for race detectors.
bool takeLife(ThreadRecord& record) noexcept {
    int rc = pthread_mutex_trylock(&record.life);
    if (rc == EOWNERDEAD) {
        rc = pthread_mutex_consistent(&record.life);
    }
    return rc == 0;
}

// Whether this thread is inside the C library's update of its robust-mutex
// list (a signal handler that interrupted user code locking a robust mutex):
// taking a robust mutex now would corrupt that list, so registering waits.
bool robustListBusy() noexcept {
    robust_list_head* head = nullptr;
    std::size_t length = 0;
    if (syscall(SYS_get_robust_list, 0, &head, &length) != 0 || head == nullptr) {
        return false;
    }
    return head->list_op_pending != nullptr;
}

void writeText(ThreadRecord& record, bool named, std::string_view fullName,
               std::string_view kernelName) noexcept {
    char bytes[kTextWords * sizeof(std::uint64_t)] = {};
    fullName.copy(bytes, kFullNameBytes - 1);
    kernelName.copy(bytes + kFullNameBytes, kKernelNameBytes - 1);
    const std::uint32_t version = record.version.load(std::memory_order_relaxed);
    record.version.store(version + 1, std::memory_order_relaxed);
    // Release stores (no fences, which race detectors cannot model): a reader
    // that sees any new word also sees the odd version.
    for (std::size_t i = 0; i < kTextWords; ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + i * sizeof word, sizeof word);
        record.text[i].store(word, std::memory_order_release);
    }
    record.named.store(named, std::memory_order_release);
    record.version.store(version + 2, std::memory_order_release);
}

struct NameSnapshot {
    bool named = false;
    char bytes[kTextWords * sizeof(std::uint64_t)] = {};
    std::string_view fullName() const { return bytes; }
    std::string_view kernelName() const { return bytes + kFullNameBytes; }
};

NameSnapshot readText(const ThreadRecord& record) noexcept {
    NameSnapshot snapshot;
    for (;;) {
        const std::uint32_t before = record.version.load(std::memory_order_acquire);
        if ((before & 1U) == 0) {
            for (std::size_t i = 0; i < kTextWords; ++i) {
                const std::uint64_t word = record.text[i].load(std::memory_order_acquire);
                std::memcpy(snapshot.bytes + i * sizeof word, &word, sizeof word);
            }
            snapshot.named = record.named.load(std::memory_order_acquire);
            if (record.version.load(std::memory_order_relaxed) == before) {
                return snapshot;
            }
        }
        sched_yield();  // the owner is half-way through a rename
    }
}

ThreadRecord* adopt(ThreadRecord& record, int tid, pthread_t handle) noexcept {
    record.handle.store(handle, std::memory_order_relaxed);
    writeText(record, false, {}, {});
    record.owner.store(tid, std::memory_order_release);
    return &record;
}

// A free record, or one whose owner has ended; null if there is none.
ThreadRecord* claimExisting(int tid, pthread_t handle) noexcept {
    for (ThreadRecord* record = gNewest.load(std::memory_order_acquire); record != nullptr;
         record = record->next) {
        int owner = record->owner.load(std::memory_order_acquire);
        const bool reusable = owner == kFree || (owner > 0 && !ownerLives(*record, owner));
        if (!reusable ||
            !record->owner.compare_exchange_strong(owner, kClaiming, std::memory_order_acquire)) {
            continue;
        }
        if (takeLife(*record)) {
            return adopt(*record, tid, handle);
        }
        record->owner.store(owner, std::memory_order_release);
    }
    return nullptr;
}

// Maps a new block (as many records as exist already, so that full scans stay
// rare), claims its first record and publishes the block. mmap, not malloc:
// this may run inside a signal handler. Null if the kernel refuses memory.
ThreadRecord* claimFromNewBlock(int tid, pthread_t handle) noexcept {
    const std::size_t count =
        std::max(kMinBlockRecords, gRecordCount.load(std::memory_order_relaxed));
    void* const memory = mmap(nullptr, count * sizeof(ThreadRecord), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    auto* const records = static_cast<ThreadRecord*>(memory);
    for (std::size_t i = 0; i < count; ++i) {
        new (&records[i]) ThreadRecord;
        initLife(records[i]);
        records[i].next = i + 1 < count ? &records[i + 1] : nullptr;
    }
    records[0].owner.store(kClaiming, std::memory_order_relaxed);
    takeLife(records[0]);
    adopt(records[0], tid, handle);
    gRecordCount.fetch_add(count, std::memory_order_relaxed);
    ThreadRecord* newest = gNewest.load(std::memory_order_relaxed);
    do {
        records[count - 1].next = newest;
    } while (!gNewest.compare_exchange_weak(newest, records, std::memory_order_release,
                                            std::memory_order_relaxed));
    return records;
}

ThreadId registerCurrentThread() noexcept {
    const int tid = kernelTid();
    tCurrent.id = ThreadId{pthread_self(), tid, static_cast<unsigned int>(tid)};
    // A signal handler that interrupts the registration below must not start a
    // second one; it gets the identity and registers on a later call.
    if (tCurrent.registering || robustListBusy()) {
        return tCurrent.id;
    }
    tCurrent.registering = true;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    ThreadRecord* record = claimExisting(tid, pthread_self());
    if (record == nullptr) {
        record = claimFromNewBlock(tid, pthread_self());
    }
    tCurrent.record = record;
    tCurrent.valid = record != nullptr;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    tCurrent.registering = false;
    return tCurrent.id;
}

// In a fork child the forking thread is the only thread. Records held by the
// parent's live threads (its own included) are retired; free records and those
// of threads that had ended stay usable. The forking thread moves, name and
// all, to a record that it claims under its new TID.
void resetInForkChild() noexcept {
    const int tid = kernelTid();
    ThreadRecord* const own = tCurrent.record;
    for (ThreadRecord* record = gNewest.load(std::memory_order_acquire); record != nullptr;
         record = record->next) {
        const int owner = record->owner.load(std::memory_order_relaxed);
        if (owner == kClaiming || (owner > 0 && ownerLives(*record, owner))) {
            record->owner.store(kRetired, std::memory_order_relaxed);
        }
        const std::uint32_t version = record->version.load(std::memory_order_relaxed);
        record->version.store(version + (version & 1U), std::memory_order_relaxed);
    }
    tCurrent.id = ThreadId{pthread_self(), tid, static_cast<unsigned int>(tid)};
    tCurrent.registering = false;
    tCurrent.valid = false;
    tCurrent.record = nullptr;
    if (own == nullptr) {
        return;  // registers on its next call
    }
    ThreadRecord* moved = claimExisting(tid, pthread_self());
    if (moved == nullptr) {
        moved = claimFromNewBlock(tid, pthread_self());
    }
    if (moved != nullptr) {
        const NameSnapshot name = readText(*own);
        writeText(*moved, name.named, name.fullName(), name.kernelName());
        tCurrent.record = moved;
        tCurrent.valid = true;
    }
}

[[maybe_unused]] const bool gForkHandlerInstalled =
    pthread_atfork(nullptr, nullptr, &resetInForkChild) == 0;

// The record of the live thread tid, or null.
ThreadRecord* liveRecordOf(int tid) noexcept {
    for (ThreadRecord* record = gNewest.load(std::memory_order_acquire); record != nullptr;
         record = record->next) {
        if (record->owner.load(std::memory_order_acquire) == tid && ownerLives(*record, tid)) {
            return record;
        }
    }
    return nullptr;
}

std::optional<std::string> fullNameOf(const NameSnapshot& snapshot, std::string_view kernelName) {
    if (!snapshot.named || snapshot.kernelName() != kernelName) {
        return std::nullopt;
    }
    return std::string(snapshot.fullName());
}

}  // namespace

ThreadRecord* currentRecord() noexcept {
    if (!tCurrent.valid) {
        registerCurrentThread();
    }
    return tCurrent.record;
}

void rememberName(ThreadRecord& record, std::string_view fullName, std::string_view kernelName) {
    writeText(record, true, fullName, kernelName);
}

std::optional<std::string> ownFullName(ThreadRecord& record, std::string_view kernelName) {
    return fullNameOf(readText(record), kernelName);
}

std::optional<std::string> fullNameIfCurrent(int tid, std::string_view kernelName) {
    ThreadRecord* const record = liveRecordOf(tid);
    if (record == nullptr) {
        return std::nullopt;
    }
    const NameSnapshot snapshot = readText(*record);
    // Checked again: the thread may have ended, and its record passed on,
    // while the name was being read.
    if (record->owner.load(std::memory_order_acquire) != tid || !ownerLives(*record, tid)) {
        return std::nullopt;
    }
    return fullNameOf(snapshot, kernelName);
}

std::vector<pthread_t> knownHandles(const std::vector<int>& tids) {
    std::vector<std::pair<int, pthread_t>> live;
    for (ThreadRecord* record = gNewest.load(std::memory_order_acquire); record != nullptr;
         record = record->next) {
        const int tid = record->owner.load(std::memory_order_acquire);
        if (tid <= 0 || !ownerLives(*record, tid)) {
            continue;
        }
        const pthread_t handle = record->handle.load(std::memory_order_relaxed);
        if (record->owner.load(std::memory_order_acquire) == tid) {
            live.emplace_back(tid, handle);
        }
    }
    std::sort(live.begin(), live.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<pthread_t> result(tids.size(), pthread_t{});
    for (std::size_t i = 0; i < tids.size(); ++i) {
        const auto found =
            std::lower_bound(live.begin(), live.end(), tids[i],
                             [](const auto& entry, int tid) { return entry.first < tid; });
        if (found != live.end() && found->first == tids[i]) {
            result[i] = found->second;
        }
    }
    return result;
}

}  // namespace Strand::linux_layer

namespace Strand::platform {

// Defined beside the cache it reads, so that getThreadId costs one call.
ThreadId queryCurrentThreadId() {
    if (linux_layer::tCurrent.valid) [[likely]] {
        return linux_layer::tCurrent.id;
    }
    return linux_layer::registerCurrentThread();
}

}  // namespace Strand::platform
