// Helpers shared by the Strand tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <condition_variable>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Strand/Platform.h"
#include "Strand/ScopedThreadName.h"
#include "Strand/ThreadId.h"
#include "Strand/ThreadName.h"
#include "ThreadsAtOnce.h"

// Whether a cancelled thread can unwind C++ frames (not with Debian's libc++ and its libunwind).
#if defined(_LIBCPP_VERSION) && defined(__linux__)
constexpr bool kCancellationUnwinds = false;
#else
constexpr bool kCancellationUnwinds = true;
#endif

// Functions that traces must name: never inlined, and exported (with ENABLE_EXPORTS).
#define STRAND_TEST_TRACEABLE __attribute__((noinline, visibility("default")))

// Runs the tasks handed to it and waits in between; made with known = false, it never registers.
class ParkedThread {
public:
    explicit ParkedThread(bool known = true) {
        run([&] {
            id_ = known ? Strand::getThreadId() : Strand::ThreadId{{}, Strand::gettid(), 0};
        });
    }
    ~ParkedThread() {
        run([this] { stopped_ = true; });
        thread_.join();
    }
    Strand::ThreadId id() const { return id_; }
    void run(std::function<void()> task) {  // returns when task has run
        std::unique_lock<std::mutex> lock(mutex_);
        task_ = std::move(task);
        changed_.notify_all();
        changed_.wait(lock, [this] { return !task_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::function<void()> task_;
    bool stopped_ = false;
    Strand::ThreadId id_{};
    std::thread thread_{[this] {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!stopped_) {
            changed_.wait(lock, [this] { return task_ != nullptr; });
            std::exchange(task_, nullptr)();  // run() sees it gone once the lock is free
            changed_.notify_all();
        }
    }};
};

// Waits in pause(), where glibc turns asynchronous cancellation on; a jump to resume ends it.
class PausingThread {
public:
    explicit PausingThread(bool known = false) : known_(known) {
        pthread_create(&handle, nullptr, &PausingThread::main, this);
        ready_.wait();
    }
    Strand::ThreadId id() const { return id_; }
    // What the thread ended with: PTHREAD_CANCELED, or what it passed to pthread_exit.
    void* join() const {
        void* result = nullptr;
        pthread_join(handle, &result);
        return result;
    }
    pthread_t handle{};
    sigjmp_buf resume;

private:
    // Out of main, whose frame a cancellation unwinds: ASan would report its locals' guard zones.
    __attribute__((noinline)) static void learnIdentity(PausingThread& thread) {
        const int tid = Strand::gettid();
        const Strand::ThreadId byTid{pthread_self(), tid, static_cast<unsigned>(tid)};
        thread.id_ = thread.known_ ? Strand::getThreadId() : byTid;
    }
    static void* main(void* self) {
        auto& thread = *static_cast<PausingThread*>(self);
        if (sigsetjmp(thread.resume, 0) != 0) return nullptr;
        learnIdentity(thread);
        thread.ready_.count_down();
        for (;;) pause();
    }
    const bool known_;
    Strand::ThreadId id_{};
    std::latch ready_{1};
};

// A scope listener that runs the given actions.
struct Listener : Strand::IScopedThreadCallback {
    explicit Listener(std::function<void()> start, std::function<void()> end = [] {})
        : started(std::move(start)), ended(std::move(end)) {}
    void onStarted() override { started(); }
    void onEnded() override { ended(); }
    std::function<void()> started, ended;
};

inline bool isListed(const Strand::ThreadId& id) {
    const auto ids = Strand::getThreadIds();
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// Handles SIGUSR2 with handler; returns the action it replaced.
inline struct sigaction handleSigusr2(void (*handler)(int)) {
    struct sigaction action {}, previous {};
    action.sa_handler = handler;
    sigaction(SIGUSR2, &action, &previous);
    return previous;
}

// Runs fn on a fresh thread and returns its result, so nothing leaks between cases.
template <typename Fn>
auto onNewThread(Fn fn) {
    std::packaged_task<decltype(fn())()> task(fn);
    auto result = task.get_future();
    std::thread(std::move(task)).join();
    return result.get();
}

// count threads alive at once on 256 KB stacks, each keeping body(index)'s result; ids[index].
class LiveThreads {
public:
    LiveThreads(int count, std::function<std::shared_ptr<void>(int)> body)
        : ids(count), body_(std::move(body)), registered_(count), threads_(count) {
        pthread_attr_t small;
        pthread_attr_init(&small);
        pthread_attr_setstacksize(&small, 256 * 1024);
        for (auto& thread : threads_) pthread_create(&thread, &small, &LiveThreads::main, this);
        pthread_attr_destroy(&small);
        registered_.wait();
    }
    ~LiveThreads() {
        release_.count_down();
        for (const auto thread : threads_) pthread_join(thread, nullptr);
    }
    std::vector<Strand::ThreadId> ids;

private:
    static void* main(void* self) {
        auto& state = *static_cast<LiveThreads*>(self);
        const int index = state.next_.fetch_add(1);
        const auto kept = state.body_(index);
        state.ids[index] = Strand::getThreadId();
        state.registered_.count_down();
        state.release_.wait();
        return nullptr;
    }
    std::function<std::shared_ptr<void>(int)> body_;
    std::atomic<int> next_{0};
    std::latch registered_, release_{1};
    std::vector<pthread_t> threads_;
};

// check in a child that SIGALRM ends after seconds (exit() if exitAfter): "ok", or why not.
template <typename Fn>
std::string inChildProcess(unsigned seconds, Fn check, bool exitAfter = false) {
    std::cout.flush();  // not written twice
    const pid_t child = fork();
    if (child == 0) {
        alarm(seconds);
        const bool ok = check();
        exitAfter ? std::exit(ok ? 0 : 1) : _exit(ok ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? "ok" : "check failed";
    return WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status)) : "?";
}
