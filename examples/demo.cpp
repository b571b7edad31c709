// A tour of the thread layer along the road of one piece of traced work:
//
//   1. Who am I: the calling thread's identity and name.
//   2. An "input" thread receives a click. It creates an external input hint and
//      a context store, writes header lines, and hands two jobs to worker
//      threads through source locations.
//   3. Each worker opens a ScopedThreadName with its location: the thread is
//      named after the hand-over, and takes over the click's hint and store.
//      Its log lines (location::current) end with the hint.
//   4. The store's history, the thread list with names, and the counts of a
//      listener that saw every worker's scope start and end.
//
// The workers stay parked inside their scopes while the tour looks at them.
#include <Strand/Strand.h>

#include "StackTraceDemo.h"

#include <condition_variable>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// Callers fill in the call site with a macro of their own.
#define HERE quill::source::location::current(__FILE__, __LINE__, __func__)

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;

std::mutex gOutputMutex;

void say(const std::string& line) {
    const std::lock_guard<std::mutex> lock(gOutputMutex);
    std::cout << line << "\n";
}

// Counts the started and ended notifications of scoped threads; called on the
// worker threads, so the counts are atomic.
class CountingListener : public Strand::IScopedThreadCallback {
public:
    void onStarted() override { ++started; }
    void onEnded() override { ++ended; }
    std::atomic<int> started{0};
    std::atomic<int> ended{0};
};

// The input thread and its workers.
class TracedRoad {
public:
    // Runs the input thread to its end; returns once every worker is parked.
    void start() {
        std::thread(&TracedRoad::receiveClick, this).join();
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return parked_ == workers_.size(); });
    }

    // The store; its owner is this object, not any thread.
    const std::shared_ptr<context_store>& store() const { return store_; }

    // Lets the workers leave their scopes and waits for them.
    void release() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            released_ = true;
        }
        changed_.notify_all();
        for (auto& worker : workers_) {
            worker.join();
        }
    }

private:
    void receiveClick() {
        Strand::setThreadName("input");
        {
            const auto click = hint::createExternalInputHint("click");
            store_ = context_store::getOrCreateStore();
            store_->addHeader("input: click on the Call button");
            store_->addHeader("hint " + hint::getExternalInputHintId());
            say("[input] " + HERE.to_string());
            handOver(HERE, "look up the contact");
            handOver(HERE, "open the media session");
        }
        // The scoped hint has ended; the store lives on with its owner.
        say("[input] " + HERE.to_string() + " (hint cleared, store kept: " +
            (context_store::getStore().expired() ? "no" : "yes") + ")");
    }

    void handOver(quill::source::location from, const std::string& job) {
        const std::lock_guard<std::mutex> lock(mutex_);
        workers_.emplace_back(&TracedRoad::work, this, std::move(from), job);
    }

    void work(const quill::source::location& handedOver, const std::string& job) {
        const Strand::ScopedThreadName scope("worker", handedOver);
        std::ostringstream line;
        line << '[' << Strand::getThreadName() << "] " << HERE;
        say(line.str());
        if (const auto store = context_store::getStore().lock()) {
            store->addEntry(job + " (thread " + Strand::getThreadIdString() + ")");
        }
        std::unique_lock<std::mutex> lock(mutex_);
        ++parked_;
        changed_.notify_all();
        changed_.wait(lock, [&] { return released_; });
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> workers_;
    std::size_t parked_ = 0;  // workers waiting inside their scopes
    bool released_ = false;
    std::shared_ptr<context_store> store_;
};

void showIdentity() {
    Strand::setThreadName("demo-main");
    std::cout << "== who am I\nthread \"" << Strand::getThreadName() << "\": id "
              << Strand::getThreadIdString() << " (" << Strand::getThreadIdHexString()
              << "), primary id " << Strand::getPrimaryThreadId() << "\n";
}

void showStore(const context_store& store) {
    std::cout << "== the store's history\n";
    const auto entries = store.getEntries();
    const long start = entries.empty() ? 0 : std::get<1>(entries.front());
    for (const auto& [isHeader, timestamp, text] : entries) {
        std::cout << "  +" << timestamp - start << " ms  " << (isHeader ? "[header] " : "         ")
                  << text << "\n";
    }
}

void showThreads() {
    std::cout << "== threads of this process\n";
    for (const Strand::ThreadId& id : Strand::getThreadIds()) {
        std::cout << "  " << Strand::getThreadIdString(id) << "  " << Strand::getThreadName(id)
                  << "\n";
    }
}

}  // namespace

int main() {
    const auto listener = std::make_shared<CountingListener>();
    Strand::ScopedThreadName::registerCallback(listener);

    showIdentity();
    std::cout << "== the traced road\n";
    TracedRoad road;
    road.start();
    showStore(*road.store());
    showStackTraces();
    showThreads();  // the workers are still parked inside their scopes
    road.release();

    std::cout << "== the listener saw " << listener->started << " scopes start and "
              << listener->ended << " end\n";
    Strand::ScopedThreadName::unRegisterCallback(listener);
    return listener->started == 2 && listener->ended == 2 ? 0 : 1;
}
