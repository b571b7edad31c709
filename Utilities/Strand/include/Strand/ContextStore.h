// A context store: a short, time-stamped history of the work that followed one
// external input, shared by every thread that takes part in that work.
//
// Ownership: whoever holds the shared pointer that getOrCreateStore returned
// owns the store. Each thread keeps only a weak reference to its current store,
// and source locations carry that weak reference to other threads; neither
// keeps the store alive.
//
// The store has 100 slots, allocated with it. Adding reserves the next slot
// through one atomic counter (no lock, no allocation beyond the copy of the
// text); once the slots are used up every further add is dropped silently.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Strand/Export.h"

namespace quill::source {
struct location;
}  // namespace quill::source

namespace quill::external_input {

class hint;

// The store; create one with getOrCreateStore.
class context_store : public std::enable_shared_from_this<context_store> {
public:
    // (isHeader, milliseconds since the epoch, text).
    using entry = std::tuple<bool, long, std::string>;

    // An empty store with 100 empty slots. Throws only what allocation throws.
    STRAND_EXPORT context_store();
    STRAND_EXPORT ~context_store();
    context_store(const context_store&) = delete;
    context_store& operator=(const context_store&) = delete;

    // The calling thread's store if it is still alive; otherwise a new store,
    // which becomes the thread's store. The returned pointer is the new store's
    // only owner. Throws only what allocation throws.
    STRAND_EXPORT static std::shared_ptr<context_store> getOrCreateStore();

    // A copy of the calling thread's reference; empty if the thread never had a
    // store, expired if its store has died. Never fails.
    STRAND_EXPORT static std::weak_ptr<context_store> getStore();

    // Records an ordinary entry / a header line stamped with the current time.
    // Dropped without a report when the store is full. Lock-free; throws only
    // what copying text throws, and then records nothing.
    STRAND_EXPORT void addEntry(const std::string& text);
    STRAND_EXPORT void addHeader(const std::string& text);

    // Copies of the filled slots in the order they were reserved. A slot whose
    // writer is still filling it is skipped, never waited for, so a reader
    // never blocks. Throws only what allocation throws.
    STRAND_EXPORT std::vector<entry> getEntries() const;

private:
    friend class hint;
    friend struct quill::source::location;

    static constexpr int kCapacity = 100;

    // The worker behind addEntry and addHeader.
    void updateStore(bool isHeader, const std::string& text);

    // Slots reserved so far. Raised only while below the capacity, so it stays
    // within the capacity plus the number of threads adding at once.
    std::atomic<int> nextIndex{0};
    const int capacity = kCapacity;
    std::array<entry, kCapacity> entries;
    // Set (release) by a slot's one writer once the slot is filled.
    std::array<std::atomic<bool>, kCapacity> ready{};

    // The calling thread's current store.
    static thread_local std::weak_ptr<context_store> threadContextStore;
};

}  // namespace quill::external_input
