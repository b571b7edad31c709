// Helpers shared by the thread-context tests: every case that touches a
// thread's hint, store or name runs on a fresh thread, so nothing leaks between
// cases; listeners record what reaches them.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Strand/ScopedThreadName.h"
#include "ThreadTestSupport.h"

namespace context_test {

using StrandTest::onNewThread;

// Allocations through operator new on the calling thread so far.
std::size_t allocationsOnThisThread();

// Whether ref was never set (as opposed to set and expired).
template <typename T>
bool isEmptyRef(const std::weak_ptr<T>& ref) {
    const std::weak_ptr<T> empty;
    return !ref.owner_before(empty) && !empty.owner_before(ref);
}

// Appends "<tag>+" for a start and "<tag>-" for an end to a shared log.
class Recorder : public Strand::IScopedThreadCallback {
public:
    Recorder(std::string tag, std::shared_ptr<std::string> log, std::shared_ptr<std::mutex> mutex)
        : tag_(std::move(tag)), log_(std::move(log)), mutex_(std::move(mutex)) {}
    void onStarted() override { record("+ "); }
    void onEnded() override { record("- "); }

private:
    void record(const char* event) {
        const std::lock_guard<std::mutex> lock(*mutex_);
        *log_ += tag_ + event;
    }
    std::string tag_;
    std::shared_ptr<std::string> log_;
    std::shared_ptr<std::mutex> mutex_;
};

// A log and the recorders that write to it.
struct EventLog {
    std::shared_ptr<std::string> events = std::make_shared<std::string>();
    std::shared_ptr<std::mutex> mutex = std::make_shared<std::mutex>();

    std::shared_ptr<Recorder> recorder(const std::string& tag) const {
        return std::make_shared<Recorder>(tag, events, mutex);
    }
    // The events so far, e.g. "a+ b+ a- b- ", and a fresh start.
    std::string take() const {
        const std::lock_guard<std::mutex> lock(*mutex);
        return std::exchange(*events, {});
    }
};

}  // namespace context_test
