// A tour of the thread layer along the road of one piece of traced work:
//
//   1. Who am I: the calling thread's identity and name.
//   2. An "input" thread receives a click. It creates an external input hint and
//      a context store, writes header lines, and hands two jobs to worker
//      threads through source locations.
//   3. Each worker opens a ScopedThreadName with its location: the thread is
//      named after the hand-over, and takes over the click's hint and store.
//      Its log lines (location::current) end with the hint.
//   4. Each worker does its job (simulated: a sleep stands in for a directory
//      query and for setting up media) and notes its progress in the store.
//      The media worker then blocks, waiting for a far end that never answers.
//   5. A watchdog (the main thread) finds it stuck: it notes so in the store,
//      prints the store's history with the time of each entry since the
//      click, and the stack trace of the blocked worker; then the thread list
//      with names, and the counts of a listener that saw every worker's scope
//      start and end.
//
// The workers stay parked inside their scopes while the tour looks at them.
#include <Strand/Strand.h>

#include "StackTraceDemo.h"

#include <chrono>
#include <condition_variable>
#include <iomanip>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// Callers fill in the call site with a macro of their own.
#define HERE quill::source::location::current(__FILE__, __LINE__, __func__)

// Where a worker waits once its job is done (the media worker: for the far
// end). Exported and never inlined, so that its name shows in the stack trace:
// the demo is linked with ENABLE_EXPORTS, and the project compiles with hidden
// visibility by default. The frames of the demo's own anonymous namespace have
// no dynamic symbol; tools/strand-symbolize names them from debug information.
__attribute__((noinline, visibility("default"))) void waitForFarEnd(
    std::unique_lock<std::mutex>& lock, std::condition_variable& changed, const bool& released) {
    changed.wait(lock, [&] { return released; });
}

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

// A worker's job: what it does, how long it takes, what it notes at the end.
struct Job {
    std::string name;
    std::chrono::milliseconds duration;
    std::string outcome;
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

    // The worker that opened the media session and waits for the far end.
    Strand::ThreadId mediaWorker() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return mediaWorker_;
    }

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
            handOver(HERE, {"look up the contact", std::chrono::milliseconds(20), "contact found"});
            handOver(HERE, {"open the media session", std::chrono::milliseconds(35),
                            "media session open, waiting for the far end to answer"});
        }
        // The scoped hint has ended; the store lives on with its owner.
        say("[input] " + HERE.to_string() + " (hint cleared, store kept: " +
            (context_store::getStore().expired() ? "no" : "yes") + ")");
    }

    void handOver(quill::source::location from, Job job) {
        const std::lock_guard<std::mutex> lock(mutex_);
        workers_.emplace_back(&TracedRoad::work, this, std::move(from), std::move(job));
    }

    void work(const quill::source::location& handedOver, const Job& job) {
        const Strand::ScopedThreadName scope("worker", handedOver);
        std::ostringstream line;
        line << '[' << Strand::getThreadName() << "] " << HERE << " thread "
             << Strand::getThreadIdString() << ": " << job.name;
        say(line.str());
        const auto store = context_store::getStore().lock();
        if (store) {
            store->addEntry(job.name + ": started on thread " + Strand::getThreadIdString());
        }
        std::this_thread::sleep_for(job.duration);  // the job itself, simulated
        if (store) {
            store->addEntry(job.name + ": " + job.outcome);
        }
        std::unique_lock<std::mutex> lock(mutex_);
        if (job.name == "open the media session") {
            mediaWorker_ = Strand::getThreadId();
        }
        ++parked_;
        changed_.notify_all();
        waitForFarEnd(lock, changed_, released_);
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> workers_;
    std::size_t parked_ = 0;  // workers waiting inside their scopes
    bool released_ = false;
    Strand::ThreadId mediaWorker_{};
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
        std::ostringstream elapsed;
        elapsed << '+' << timestamp - start << " ms";
        std::cout << "  " << std::left << std::setw(8) << elapsed.str()
                  << (isHeader ? "[header] " : "         ") << text << "\n";
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
    // The watchdog: the media worker has not come back; note it and trace it.
    const Strand::ThreadId stuck = road.mediaWorker();
    road.store()->addEntry("watchdog: thread " + Strand::getThreadIdString(stuck) +
                           " is stuck; taking its stack trace");
    showStore(*road.store());
    showStackTrace(stuck, "the media worker blocked waiting for the far end");
    showThreads();  // the workers are still parked inside their scopes
    road.release();

    std::cout << "== the listener saw " << listener->started << " scopes start and "
              << listener->ended << " end\n";
    Strand::ScopedThreadName::unRegisterCallback(listener);
    return listener->started == 2 && listener->ended == 2 ? 0 : 1;
}
