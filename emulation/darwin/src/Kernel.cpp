// The emulated kernel: the task's port-name space (names reused like the
// kernel's, slot by slot, after a generation count), the task port, the pages
// that task_threads hands out, injected faults, and the accounting that every
// process built on the emulation passes at exit.
#include "Kernel.h"

#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace darwin_emulation::detail {

namespace {

// Slot 0 is never used: its names would be MACH_PORT_NULL's neighbours.
constexpr std::uint32_t kSlots = 16384;
constexpr std::uint32_t kTaskStartRefs = 1;
constexpr unsigned kMaxGenerations = 64;

PortEntry gEntries[kSlots];
std::uint32_t gFreeSlots[kSlots];  // a stack: the slot freed last is used first
std::uint32_t gFreeCount = 0;
std::atomic<unsigned> gGenerations{kMaxGenerations};
std::atomic_flag gKernelLock = ATOMIC_FLAG_INIT;
mach_port_t gTaskPort = MACH_PORT_NULL;

struct Region {
    vm_address_t address = 0;
    vm_size_t size = 0;
};
constexpr int kRegions = 1024;
Region gRegions[kRegions];

constexpr int kViolations = 32;
char gViolations[kViolations][200];
int gViolationCount = 0;

constexpr int kFaultKinds = 7;
std::atomic<int> gFaults[kFaultKinds];
std::atomic<unsigned long> gFired[kFaultKinds];  // faults that fired, by kind

std::atomic<pid_t> gPid{0};
std::atomic_flag gInitLock = ATOMIC_FLAG_INIT;

std::uint8_t nameTag(std::uint8_t generation) {
    return static_cast<std::uint8_t>((generation << 2) | 3);
}

vm_size_t roundToPages(vm_size_t bytes) {
    const auto page = static_cast<vm_size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

void failAtExit() {
    const std::string report = accountingReport();
    if (!report.empty()) {
        std::fflush(stdout);
        std::fprintf(stderr, "Darwin emulation: port accounting failed at exit:\n%s",
                     report.c_str());
        std::fflush(stderr);
        _exit(1);
    }
}

void resetKernel() {
    gKernelLock.clear();
    for (auto& entry : gEntries) entry = PortEntry{};
    gFreeCount = 0;
    for (std::uint32_t slot = kSlots - 1; slot > 0; --slot) gFreeSlots[gFreeCount++] = slot;
    for (auto& region : gRegions) region = Region{};
    gViolationCount = 0;
    gTaskPort = allocateName(Kind::Task, kTaskStartRefs);
}

// Brought up before any static initialiser of the program runs.
__attribute__((constructor(101))) void initializeAtLoad() { ensureInitialized(); }

}  // namespace

KernelSection::KernelSection() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &savedMask_);
    while (gKernelLock.test_and_set(std::memory_order_acquire)) sched_yield();
}

KernelSection::~KernelSection() {
    gKernelLock.clear(std::memory_order_release);
    pthread_sigmask(SIG_SETMASK, &savedMask_, nullptr);
}

void ensureInitialized() {
    const pid_t pid = getpid();
    if (gPid.load(std::memory_order_acquire) == pid) return;
    while (gInitLock.test_and_set(std::memory_order_acquire)) sched_yield();
    const pid_t previous = gPid.load(std::memory_order_relaxed);
    if (previous != pid) {
        // A fork child has one thread, and not one of its parent's port rights.
        resetKernel();
        resetSemaphores();
        resetThreads(previous != 0);
        if (previous == 0) std::atexit(&failAtExit);
        gPid.store(pid, std::memory_order_release);
    }
    gInitLock.clear(std::memory_order_release);
}

PortEntry* lookupName(mach_port_name_t name) {
    const std::uint32_t slot = name >> 8;
    if (slot == 0 || slot >= kSlots) return nullptr;
    PortEntry& entry = gEntries[slot];
    if (entry.kind == Kind::Free || (name & 0xffu) != nameTag(entry.generation)) return nullptr;
    return &entry;
}

mach_port_name_t allocateName(Kind kind, std::uint32_t refs) {
    if (gFreeCount == 0) return MACH_PORT_NULL;
    const std::uint32_t slot = gFreeSlots[--gFreeCount];
    PortEntry& entry = gEntries[slot];
    entry.kind = kind;
    entry.refs = refs;
    entry.thread = nullptr;
    entry.semaphore = -1;
    return (slot << 8) | nameTag(entry.generation);
}

void freeName(mach_port_name_t name) {
    PortEntry& entry = gEntries[name >> 8];
    const unsigned generations = gGenerations.load(std::memory_order_relaxed);
    entry.generation = static_cast<std::uint8_t>((entry.generation + 1u) % generations);
    entry.kind = Kind::Free;
    entry.refs = 0;
    entry.thread = nullptr;
    gFreeSlots[gFreeCount++] = name >> 8;
}

void dropReference(mach_port_name_t name, PortEntry& entry) {
    if (--entry.refs == 0) freeName(name);
}

void recordViolation(const char* format, ...) {
    if (gViolationCount == kViolations) return;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(gViolations[gViolationCount++], sizeof gViolations[0], format, arguments);
    va_end(arguments);
}

mach_port_t taskPort() { return gTaskPort; }

vm_address_t allocatePages(vm_size_t bytes) {
    const vm_size_t size = roundToPages(bytes);
    for (Region& region : gRegions) {
        if (region.size != 0) continue;
        void* const pages =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) return 0;
        region = Region{reinterpret_cast<vm_address_t>(pages), size};
        return region.address;
    }
    return 0;
}

bool faultFires(Fault fault) {
    std::atomic<int>& left = gFaults[static_cast<int>(fault)];
    int now = left.load();
    while (now != 0) {
        if (now < 0 || left.compare_exchange_weak(now, now - 1)) {
            gFired[static_cast<int>(fault)].fetch_add(1);
            return true;
        }
    }
    return false;
}

}  // namespace darwin_emulation::detail

using namespace darwin_emulation::detail;

mach_port_t mach_task_self() noexcept {
    ensureInitialized();
    return taskPort();
}

kern_return_t mach_port_deallocate(ipc_space_t task, mach_port_name_t name) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    const PortEntry* const space = lookupName(task);
    if (space == nullptr || space->kind != Kind::Task) return KERN_INVALID_ARGUMENT;
    PortEntry* const entry = lookupName(name);
    if (entry == nullptr) return KERN_INVALID_NAME;
    switch (entry->kind) {
    case Kind::Task:
        if (entry->refs <= kTaskStartRefs) {
            recordViolation("task port 0x%x released more often than it was taken", name);
            return KERN_SUCCESS;
        }
        break;
    case Kind::Thread:
        if (entry->refs == 1) {
            recordViolation("thread port 0x%x (thread id 0x%llx) released once more than it was "
                            "taken: the reference of its running thread is gone",
                            name, static_cast<unsigned long long>(entry->thread->threadId));
            entry->thread->portReleased = true;
            freeName(name);
            return KERN_SUCCESS;
        }
        break;
    case Kind::Semaphore:
        return KERN_INVALID_RIGHT;
    default:
        break;
    }
    dropReference(name, *entry);
    return KERN_SUCCESS;
}

kern_return_t task_for_pid(mach_port_name_t target_tport, int pid, mach_port_name_t* t) noexcept {
    ensureInitialized();
    if (t == nullptr) return KERN_INVALID_ARGUMENT;
    const KernelSection kernel;
    PortEntry* const task = lookupName(target_tport);
    if (task == nullptr || task->kind != Kind::Task || faultFires(darwin_emulation::Fault::TaskForPidRefused) ||
        pid != getpid()) {
        return KERN_FAILURE;
    }
    ++task->refs;
    *t = target_tport;
    return KERN_SUCCESS;
}

kern_return_t vm_deallocate(vm_map_t target_task, vm_address_t address, vm_size_t size) noexcept {
    ensureInitialized();
    const KernelSection kernel;
    const PortEntry* const task = lookupName(target_task);
    if (task == nullptr || task->kind != Kind::Task) return KERN_INVALID_ARGUMENT;
    if (size == 0) return KERN_SUCCESS;
    for (Region& region : gRegions) {
        if (region.size == 0 || region.address != address) continue;
        const vm_size_t freed = std::min(roundToPages(size), region.size);
        munmap(reinterpret_cast<void*>(address), freed);
        region.address += freed;
        region.size -= freed;
        return KERN_SUCCESS;
    }
    recordViolation("vm_deallocate of 0x%lx (%lu bytes): no array that task_threads returned",
                    static_cast<unsigned long>(address), static_cast<unsigned long>(size));
    return KERN_INVALID_ADDRESS;
}

namespace darwin_emulation {

void injectFault(Fault fault, int times) {
    detail::gFaults[static_cast<int>(fault)].store(times);
}

void clearFaults() {
    for (auto& fault : detail::gFaults) fault.store(0);
}

unsigned long faultsFired(Fault fault) { return detail::gFired[static_cast<int>(fault)].load(); }

void setPortGenerations(unsigned generations) {
    generations = std::min(std::max(generations, 1u), detail::kMaxGenerations);
    detail::gGenerations.store(generations);
}

std::string accountingReport() {
    ensureInitialized();
    std::string report;
    char line[256];
    const KernelSection kernel;
    for (std::uint32_t slot = 1; slot < detail::kSlots; ++slot) {
        const PortEntry& entry = detail::gEntries[slot];
        const auto name = static_cast<unsigned>((slot << 8) | detail::nameTag(entry.generation));
        line[0] = '\0';
        if (entry.kind == Kind::Thread && entry.refs != 1) {
            std::snprintf(line, sizeof line,
                          "thread port 0x%x (thread id 0x%llx) holds %u references; its thread "
                          "holds 1\n",
                          name, static_cast<unsigned long long>(entry.thread->threadId), entry.refs);
        } else if (entry.kind == Kind::DeadName) {
            std::snprintf(line, sizeof line,
                          "port 0x%x of an ended thread still holds %u references\n", name,
                          entry.refs);
        } else if (entry.kind == Kind::Task && entry.refs != detail::kTaskStartRefs) {
            std::snprintf(line, sizeof line, "task port 0x%x holds %u references; it started with %u\n",
                          name, entry.refs, detail::kTaskStartRefs);
        }
        report += line;
    }
    for (const detail::Region& region : detail::gRegions) {
        if (region.size == 0) continue;
        std::snprintf(line, sizeof line,
                      "task_threads array at 0x%lx (%lu bytes) never freed with vm_deallocate\n",
                      static_cast<unsigned long>(region.address),
                      static_cast<unsigned long>(region.size));
        report += line;
    }
    for (int i = 0; i < detail::gViolationCount; ++i) {
        report += detail::gViolations[i];
        report += '\n';
    }
    return report;
}

}  // namespace darwin_emulation
