#include "Strand/ExternalInputHint.h"

#include <atomic>
#include <ostream>
#include <utility>

#include "RandomUtils/RandomUtils.h"
#include "Strand/ContextHelpers.h"
#include "Strand/SourceLocation.h"

namespace quill::external_input {

thread_local std::tuple<std::string, std::string> hint::threadExternalInputHint;

hint::hint() = default;

hint::hint(const hint& other) = default;

// The interface takes const references; NOLINTNEXTLINE(modernize-pass-by-value)
hint::hint(const std::string& hintId, const std::string& hintName) : name(hintName), id(hintId) {}

hint::~hint() = default;

std::string hint::getHintId() const { return id; }

std::string hint::getHintName() const { return name; }

void hint::setThreadHint(std::string threadId, std::string threadName) {
    // Moving a tuple of strings in cannot throw, so the thread never holds the
    // id of one hint with the name of another.
    threadExternalInputHint = std::make_tuple(std::move(threadId), std::move(threadName));
}

void hint::setAsExternalInputHint() const { setThreadHint(id, name); }

void hint::clearExternalInputHint() {
    std::get<0>(threadExternalInputHint).clear();
    std::get<1>(threadExternalInputHint).clear();
}

std::shared_ptr<hint> hint::getExternalInputHint() {
    const auto& [threadId, threadName] = threadExternalInputHint;
    if (threadName.empty()) {
        return nullptr;
    }
    return std::make_shared<hint>(threadId, threadName);
}

std::string hint::getExternalInputHintName() { return std::get<1>(threadExternalInputHint); }

std::string hint::getExternalInputHintId() {
    const auto& [threadId, threadName] = threadExternalInputHint;
    return threadName.empty() ? std::string() : threadId;
}

scoped_hint hint::createExternalInputHint(const std::string& hintName) {
    // Only the remainder modulo 1000 is ever used, so the counter may wrap.
    static std::atomic<unsigned int> hitCounter{0};
    const int random = quill::rand(0, 999, false);
    const unsigned int count = hitCounter.fetch_add(1, std::memory_order_relaxed) + 1;
    // Unsigned arithmetic: a replaced random hook cannot make this overflow.
    const auto value = static_cast<int>(static_cast<unsigned int>(random) * 1000u + count % 1000u);
    return {formatHintIdString(value), hintName};
}

std::string formatHintIdString(int value) {
    // A right-aligned field of width 6 filled with '0': the fill goes in front
    // of the whole number, sign included.
    constexpr std::size_t kWidth = 6;
    std::string digits = std::to_string(value);
    if (digits.size() < kWidth) {
        digits.insert(0, kWidth - digits.size(), '0');
    }
    return "hint" + digits;
}

void hint::copyThreadStorageIfNecessary(const quill::source::location& location) {
    const auto& carried = location.externalInputHint;
    if (carried && carried->id != std::get<0>(threadExternalInputHint)) {
        setThreadHint(carried->id, carried->name);
    }
    if (!location.contextStore.expired()) {
        context_store::threadContextStore = location.contextStore;
    }
}

std::ostream& operator<<(std::ostream& os, const hint& h) { return os << h.name << ' ' << h.id; }

scoped_hint::scoped_hint(std::string id, std::string name) {
    hint::setThreadHint(std::move(id), std::move(name));
}

scoped_hint::~scoped_hint() { hint::clearExternalInputHint(); }

}  // namespace quill::external_input
