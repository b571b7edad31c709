// The thread registry's lock-free protocols, and why each holds on a weakly
// ordered machine (arm64) as on x86:
//
// 1. Blocks. A grower reserves slots in gBlocks with a fetch_add on
//    gBlockCount, maps and builds the records, then stores each block's
//    address with release. Readers load the count and each address with
//    acquire, so they see built records, and skip a null address (a block still
//    being built). Records are never unmapped.
// 2. The free stack. gFreeHead packs a push/pop tag (high 32 bits) and the top
//    record's index + 1 (low 32 bits; 0 for empty). push stores the record's
//    nextFree, then swaps the head with release; pop loads the head with
//    acquire, so it reads the nextFree that was pushed, and swaps in that link
//    with a bumped tag. A pop whose top was popped and pushed again meanwhile
//    fails its swap because the tag moved (ABA), unless 2^32 pushes and pops
//    fit inside its window. A record reached through the head was pushed by a
//    thread that had seen its block's address, so the popper sees it too.
// 3. A record's contents (handle, start, name) are a seqlock written by one
//    thread at a time: the claimer, then the owner itself. The writer makes
//    version odd, stores every field with release (a reader that sees a new
//    field therefore sees the odd version) and makes version even with
//    release. A reader loads version with acquire, then owner and the fields
//    with acquire (so its second version load cannot move before them), then
//    version again: equal even values mean no write overlapped its copy.
// 4. Ownership. owner goes kFree -> kClaiming (by the thread that popped the
//    record) -> the owner's TID (release, after the contents are written) ->
//    kFree (by the one sweeper, once the kernel says that very thread ended,
//    so it writes no more). A claim changes version before it publishes a new
//    owner, so a reader whose copy saw a TID holds that claim's contents.
//
// Memory: a sweep runs only when the free stack is empty, and afterwards at
// least half of all records are free (it maps as many again otherwise), so
// each sweep of n records is paid for by n / 2 registrations, and the number of
// records stays below four times the peak number of threads alive at once.
#include "Strand/linux/ThreadRegistry.h"

#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>

#include "Strand/Platform.h"
#include "Strand/linux/TaskStart.h"

namespace Strand::linux_layer {

namespace {

constexpr int kFree = 0;
constexpr int kClaiming = -1;

constexpr std::size_t kFullNameBytes = 64;    // 63 bytes and the NUL
constexpr std::size_t kKernelNameBytes = 16;  // TASK_COMM_LEN
constexpr std::size_t kTextWords = (kFullNameBytes + kKernelNameBytes) / sizeof(std::uint64_t);

constexpr std::uint32_t kBlockRecords = 64;
// Enough for every TID the kernel can hand out (pid_max is at most 2^22).
constexpr std::uint32_t kMaxBlocks = (1U << 22) / kBlockRecords;

}  // namespace

struct ThreadRecord {
    std::uint32_t index = 0;  // fixed when the block is built
    std::atomic<int> owner{kFree};
    std::atomic<std::uint32_t> nextFree{0};  // the free stack's link: index + 1, or 0
    std::atomic<std::uint32_t> version{0};
    std::atomic<pthread_t> handle{};
    std::atomic<std::uint64_t> start{0};  // TaskStart ticks; 0 if /proc could not tell
    std::atomic<bool> named{false};
    std::atomic<std::uint64_t> text[kTextWords] = {};  // full name, then kernel name
};
static_assert(std::atomic<pthread_t>::is_always_lock_free);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

namespace {

constinit std::atomic<ThreadRecord*> gBlocks[kMaxBlocks] = {};
constinit std::atomic<std::uint32_t> gBlockCount{0};
constinit std::atomic<std::uint64_t> gFreeHead{0};
constinit std::atomic<bool> gSweeping{false};

// The calling thread's identity and record, in static TLS (initial-exec), so
// that the first touch on a thread allocates nothing even when the library was
// loaded with dlopen. Trivially destructible: nothing runs at thread exit.
struct CurrentThread {
    ThreadId id{};
    ThreadRecord* record = nullptr;
    bool valid = false;
    bool registering = false;
    bool isMain = false;
};
__attribute__((tls_model("initial-exec"))) constinit thread_local CurrentThread tCurrent;

int kernelTid() noexcept { return static_cast<int>(syscall(SYS_gettid)); }

// Calls fn(record) for every record built so far.
template <typename Fn>
void forEachRecord(Fn fn) {
    const std::uint32_t blocks = std::min(gBlockCount.load(std::memory_order_acquire), kMaxBlocks);
    for (std::uint32_t b = 0; b < blocks; ++b) {
        if (ThreadRecord* const block = gBlocks[b].load(std::memory_order_acquire)) {
            for (std::uint32_t i = 0; i < kBlockRecords; ++i) fn(block[i]);
        }
    }
}

ThreadRecord& recordAt(std::uint32_t index) noexcept {
    return gBlocks[index / kBlockRecords].load(std::memory_order_acquire)[index % kBlockRecords];
}

void push(ThreadRecord& record) noexcept {
    std::uint64_t head = gFreeHead.load(std::memory_order_relaxed);
    std::uint64_t next = 0;
    do {
        record.nextFree.store(static_cast<std::uint32_t>(head), std::memory_order_relaxed);
        next = ((head >> 32) + 1) << 32 | (record.index + 1);
    } while (!gFreeHead.compare_exchange_weak(head, next, std::memory_order_release,
                                              std::memory_order_relaxed));
}

ThreadRecord* pop() noexcept {
    std::uint64_t head = gFreeHead.load(std::memory_order_acquire);
    for (;;) {
        const auto top = static_cast<std::uint32_t>(head);
        if (top == 0) return nullptr;
        ThreadRecord& record = recordAt(top - 1);
        const std::uint64_t next =
            ((head >> 32) + 1) << 32 | record.nextFree.load(std::memory_order_relaxed);
        if (gFreeHead.compare_exchange_weak(head, next, std::memory_order_acquire,
                                            std::memory_order_acquire)) {
            return &record;
        }
    }
}

// Maps at least count new records, pushes all but one and returns that one;
// null if the kernel refuses memory. mmap, not malloc: this may run inside a
// signal handler.
ThreadRecord* grow(std::size_t count) noexcept {
    const auto blocks = static_cast<std::uint32_t>((count + kBlockRecords - 1) / kBlockRecords);
    const std::uint32_t first = gBlockCount.fetch_add(blocks, std::memory_order_acq_rel);
    if (first >= kMaxBlocks || blocks > kMaxBlocks - first) return nullptr;
    const std::size_t records = std::size_t{blocks} * kBlockRecords;
    void* const memory = mmap(nullptr, records * sizeof(ThreadRecord), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    auto* const built = static_cast<ThreadRecord*>(memory);
    for (std::size_t i = 0; i < records; ++i) {
        new (&built[i]) ThreadRecord;
        built[i].index = static_cast<std::uint32_t>(first * kBlockRecords + i);
    }
    for (std::uint32_t b = 0; b < blocks; ++b) {
        gBlocks[first + b].store(built + std::size_t{b} * kBlockRecords, std::memory_order_release);
    }
    for (std::size_t i = records; i > 1; --i) push(built[i - 1]);
    return built;
}

struct Snapshot {
    int owner = kFree;
    pthread_t handle{};
    std::uint64_t start = 0;
    bool named = false;
    char text[kTextWords * sizeof(std::uint64_t)] = {};
    std::string_view fullName() const { return text; }
    std::string_view kernelName() const { return text + kFullNameBytes; }
};

// A consistent copy of record (protocol 3); false if a writer stayed in the
// middle of a write (it was stopped there), so the record cannot be read now.
bool readRecord(const ThreadRecord& record, Snapshot& copy) noexcept {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const std::uint32_t before = record.version.load(std::memory_order_acquire);
        if ((before & 1U) == 0) {
            copy.owner = record.owner.load(std::memory_order_acquire);
            copy.handle = record.handle.load(std::memory_order_acquire);
            copy.start = record.start.load(std::memory_order_acquire);
            copy.named = record.named.load(std::memory_order_acquire);
            for (std::size_t i = 0; i < kTextWords; ++i) {
                const std::uint64_t word = record.text[i].load(std::memory_order_acquire);
                std::memcpy(copy.text + i * sizeof word, &word, sizeof word);
            }
            if (record.version.load(std::memory_order_relaxed) == before) return true;
        }
        sched_yield();  // the writer is half-way through
    }
    return false;
}

// Rewrites record's contents (protocol 3). The writer is the record's claimer
// or owner; nobody else writes it meanwhile.
void writeRecord(ThreadRecord& record, pthread_t handle, std::uint64_t start, bool named,
                 std::string_view fullName, std::string_view kernelName) noexcept {
    char bytes[kTextWords * sizeof(std::uint64_t)] = {};
    fullName.copy(bytes, kFullNameBytes - 1);
    kernelName.copy(bytes + kFullNameBytes, kKernelNameBytes - 1);
    const std::uint32_t version = record.version.load(std::memory_order_relaxed);
    record.version.store(version + 1, std::memory_order_relaxed);
    record.handle.store(handle, std::memory_order_release);
    record.start.store(start, std::memory_order_release);
    for (std::size_t i = 0; i < kTextWords; ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + i * sizeof word, sizeof word);
        record.text[i].store(word, std::memory_order_release);
    }
    record.named.store(named, std::memory_order_release);
    record.version.store(version + 2, std::memory_order_release);
}

// Whether the owner a copy names has ended: the kernel says its TID is gone or
// now held by a thread that started at another time. A start that could not
// be read, then or now, never counts as ended.
bool ownerEnded(const Snapshot& copy) noexcept {
    if (copy.owner <= 0 || copy.start == 0) return false;
    const TaskStart now = taskStart(copy.owner);
    return now.state == TaskStart::State::kEnded ||
           (now.state == TaskStart::State::kRunning && now.ticks != copy.start);
}

// Frees the records of ended threads; returns how many records exist and how
// many were freed. Only one sweep runs at a time (gSweeping), so no record
// this sweep frees can be claimed and freed again by another before its swap.
std::pair<std::size_t, std::size_t> sweep() noexcept {
    std::size_t total = 0;
    std::size_t freed = 0;
    forEachRecord([&](ThreadRecord& record) {
        ++total;
        Snapshot copy;
        if (record.owner.load(std::memory_order_relaxed) <= 0 || !readRecord(record, copy) ||
            !ownerEnded(copy)) {
            return;
        }
        int owner = copy.owner;
        if (record.owner.compare_exchange_strong(owner, kFree, std::memory_order_acq_rel)) {
            push(record);
            ++freed;
        }
    });
    return {total, freed};
}

// A record for a thread that found the free stack empty: swept free, or new.
ThreadRecord* sweepOrGrow() noexcept {
    bool sweeping = false;
    if (!gSweeping.compare_exchange_strong(sweeping, true, std::memory_order_acquire)) {
        return grow(kBlockRecords);  // another thread sweeps; do not wait for it
    }
    const auto [total, freed] = sweep();
    ThreadRecord* record = freed * 2 < total ? grow(std::max<std::size_t>(total, 1)) : pop();
    gSweeping.store(false, std::memory_order_release);
    return record != nullptr ? record : grow(kBlockRecords);
}

ThreadRecord* claim(int tid, pthread_t handle) noexcept {
    ThreadRecord* record = pop();
    if (record == nullptr) record = sweepOrGrow();
    if (record == nullptr) return nullptr;
    record->owner.store(kClaiming, std::memory_order_relaxed);
    const TaskStart own = taskStart(tid);
    writeRecord(*record, handle, own.state == TaskStart::State::kRunning ? own.ticks : 0, false,
                {}, {});
    record->owner.store(tid, std::memory_order_release);
    return record;
}

}  // namespace

ThreadId registerCurrentThread() {
    // Marked first: a signal handler that interrupts anything below must not
    // start a second registration. It gets the triple and no record.
    if (tCurrent.registering) {
        const int tid = kernelTid();
        return ThreadId{pthread_self(), tid, static_cast<unsigned int>(tid)};
    }
    tCurrent.registering = true;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    // Then looked at again: a handler that ran after the caller saw no record
    // and before the mark registered the thread completely.
    if (tCurrent.valid) {
        tCurrent.registering = false;
        return tCurrent.id;
    }
    // Claiming is not interrupted by cancellation, which would leave a record
    // half-written; a pending asynchronous cancel acts once it is complete.
    int cancelState = PTHREAD_CANCEL_ENABLE;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
    const int tid = kernelTid();
    tCurrent.id = ThreadId{pthread_self(), tid, static_cast<unsigned int>(tid)};
    tCurrent.isMain = tid == getpid();
    tCurrent.record = claim(tid, pthread_self());
    tCurrent.valid = tCurrent.record != nullptr;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    tCurrent.registering = false;
    const ThreadId id = tCurrent.id;
    pthread_setcancelstate(cancelState, nullptr);
    return id;
}

namespace {

// In a fork child the forking thread is the only thread: every record is free
// again (its owners do not exist here, and a sweep or a claim in progress in
// the parent never completes), and the forking thread moves, name and all, to
// a record that it claims under its new TID.
void resetInForkChild() noexcept {
    Snapshot own;
    const bool hadRecord = tCurrent.record != nullptr && readRecord(*tCurrent.record, own);
    gSweeping.store(false, std::memory_order_relaxed);
    gFreeHead.store(0, std::memory_order_relaxed);
    forEachRecord([](ThreadRecord& record) {
        record.owner.store(kFree, std::memory_order_relaxed);
        const std::uint32_t version = record.version.load(std::memory_order_relaxed);
        record.version.store(version + (version & 1U), std::memory_order_relaxed);
        push(record);
    });
    tCurrent = CurrentThread{};
    if (!hadRecord) return;  // registers on its next call
    registerCurrentThread();
    if (tCurrent.record != nullptr) {
        writeRecord(*tCurrent.record, pthread_self(),
                    tCurrent.record->start.load(std::memory_order_relaxed), own.named,
                    own.fullName(), own.kernelName());
    }
}

[[maybe_unused]] const bool gForkHandlerInstalled =
    pthread_atfork(nullptr, nullptr, &resetInForkChild) == 0;

// Consistent copies of the records that have an owner; with tid, only of
// those whose owner is tid.
std::vector<Snapshot> ownedCopies(int tid = 0) {
    std::vector<Snapshot> owned;
    forEachRecord([&](const ThreadRecord& record) {
        const int owner = record.owner.load(std::memory_order_relaxed);
        Snapshot copy;
        if (owner > 0 && (tid == 0 || owner == tid) && readRecord(record, copy) &&
            copy.owner > 0 && (tid == 0 || copy.owner == tid)) {
            owned.push_back(copy);
        }
    });
    return owned;
}

// Which of the copies [first, last), all claiming one TID, belongs to the
// thread that holds the TID now: the one with its start; with no start known
// on either side, the only one. Null if none.
const Snapshot* currentOf(const Snapshot* first, const Snapshot* last) {
    if (first == last) return nullptr;
    const TaskStart now = taskStart(first->owner);
    if (now.state == TaskStart::State::kEnded) return nullptr;
    for (const Snapshot* copy = first; copy != last; ++copy) {
        if (now.state == TaskStart::State::kRunning && copy->start == now.ticks) return copy;
    }
    const bool unknown = now.state == TaskStart::State::kUnknown || first->start == 0;
    return unknown && last - first == 1 ? first : nullptr;
}

}  // namespace

ThreadRecord* currentRecord() {
    if (!tCurrent.valid) registerCurrentThread();
    return tCurrent.valid ? tCurrent.record : nullptr;
}

bool currentIsMainThread() {
    if (!tCurrent.valid) return std::get<1>(registerCurrentThread()) == getpid();
    return tCurrent.isMain;
}

void rememberName(ThreadRecord& record, std::string_view fullName, std::string_view kernelName) {
    writeRecord(record, record.handle.load(std::memory_order_relaxed),
                record.start.load(std::memory_order_relaxed), true, fullName, kernelName);
}

std::optional<std::string> ownFullName(ThreadRecord& record, std::string_view kernelName) {
    Snapshot copy;
    if (!readRecord(record, copy) || !copy.named || copy.kernelName() != kernelName) {
        return std::nullopt;
    }
    return std::string(copy.fullName());
}

std::optional<std::string> fullNameIfCurrent(int tid, std::string_view kernelName) {
    const std::vector<Snapshot> owned = ownedCopies(tid);
    const Snapshot* const copy = currentOf(owned.data(), owned.data() + owned.size());
    if (copy == nullptr || !copy->named || copy->kernelName() != kernelName) return std::nullopt;
    return std::string(copy->fullName());
}

std::vector<pthread_t> knownHandles(const std::vector<int>& tids) {
    std::vector<Snapshot> owned = ownedCopies();
    const auto byOwner = [](const Snapshot& a, const Snapshot& b) { return a.owner < b.owner; };
    std::sort(owned.begin(), owned.end(), byOwner);
    std::vector<pthread_t> result(tids.size(), pthread_t{});
    Snapshot key;
    for (std::size_t i = 0; i < tids.size(); ++i) {
        key.owner = tids[i];
        const auto [first, last] = std::equal_range(owned.begin(), owned.end(), key, byOwner);
        const Snapshot* const begin = owned.data() + (first - owned.begin());
        if (const Snapshot* copy = currentOf(begin, begin + (last - first))) {
            result[i] = copy->handle;
        }
    }
    return result;
}

std::size_t recordCountForTesting() noexcept {
    std::size_t count = 0;
    forEachRecord([&](const ThreadRecord&) { ++count; });
    return count;
}

}  // namespace Strand::linux_layer

namespace Strand {

// Defined beside the cache it reads, so that it costs one call and a TLS load.
ThreadId getThreadId() {
    if (linux_layer::tCurrent.valid) [[likely]] {
        return linux_layer::tCurrent.id;
    }
    return linux_layer::registerCurrentThread();
}

}  // namespace Strand
