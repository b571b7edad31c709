// The store's lock-free protocol, and why it holds on weakly ordered machines
// (arm64) as on x86: an adder reserves a slot with a fetch_add on nextIndex,
// so every slot has exactly one writer; it writes the entry, then raises the
// slot's ready flag with release. A reader copies a slot only after loading its
// flag with acquire, so it sees the whole entry; a reserved slot whose flag is
// still down is skipped. Entries are never rewritten once ready.
#include "Strand/ContextStore.h"

#include "Strand/ContextHelpers.h"

#include <algorithm>
#include <utility>

namespace quill::external_input {

thread_local std::weak_ptr<context_store> context_store::threadContextStore;

context_store::context_store() = default;

context_store::~context_store() = default;

std::shared_ptr<context_store> context_store::getOrCreateStore() {
    if (auto live = threadContextStore.lock()) {
        return live;
    }
    auto created = std::make_shared<context_store>();
    threadContextStore = created;
    return created;
}

std::weak_ptr<context_store> context_store::getStore() { return threadContextStore; }

void context_store::addEntry(const std::string& text) { updateStore(false, text); }

void context_store::addHeader(const std::string& text) { updateStore(true, text); }

long toEpochMilliseconds(std::chrono::system_clock::time_point time) {
    // duration_cast truncates toward zero.
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count());
}

void context_store::updateStore(bool isHeader, const std::string& text) {
    const long timestamp = toEpochMilliseconds(std::chrono::system_clock::now());
    // A full store stays full: skip the copy and leave the counter alone, so it
    // can never run towards a wrap however often a full store is added to.
    if (nextIndex.load(std::memory_order_relaxed) >= capacity) {
        return;
    }
    // Copy before reserving: if the copy throws, no slot is left reserved but empty.
    std::string copy = text;
    const int index = nextIndex.fetch_add(1, std::memory_order_seq_cst);
    if (index >= capacity) {
        return;
    }
    // This thread is the slot's only writer; readers look at it only once ready.
    entries[static_cast<std::size_t>(index)] = entry{isHeader, timestamp, std::move(copy)};
    ready[static_cast<std::size_t>(index)].store(true, std::memory_order_release);
}

std::vector<context_store::entry> context_store::getEntries() const {
    const int count = std::min(nextIndex.load(std::memory_order_acquire), capacity);
    std::vector<entry> result;
    result.reserve(static_cast<std::size_t>(count));
    for (std::size_t slot = 0; slot < static_cast<std::size_t>(count); ++slot) {
        if (ready[slot].load(std::memory_order_acquire)) {
            result.push_back(entries[slot]);
        }
    }
    return result;
}

}  // namespace quill::external_input
