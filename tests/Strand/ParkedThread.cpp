#include "ParkedThread.h"

void parkedThreadWait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                      const std::function<bool()>& ready) {
    changed.wait(lock, ready);
}

int recurseThen(int depth, const std::function<int()>& atBottom) {
    if (depth <= 0) {
        return atBottom();
    }
    const int result = recurseThen(depth - 1, atBottom);
    asm volatile("" ::: "memory");  // keeps the call out of tail position
    return result + 1;
}

ParkedThread::ParkedThread() : thread_([this] { loop(); }) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return std::get<1>(id_) != 0; });
}

ParkedThread::~ParkedThread() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void ParkedThread::run(const std::function<void()>& task) {
    std::unique_lock<std::mutex> lock(mutex_);
    task_ = task;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !task_; });
}

void ParkedThread::loop() {
    std::unique_lock<std::mutex> lock(mutex_);
    id_ = Strand::getThreadId();
    changed_.notify_all();
    for (;;) {
        parkedThreadWait(changed_, lock, [this] { return stop_ || task_; });
        if (stop_) {
            return;
        }
        task_();
        task_ = nullptr;
        changed_.notify_all();
    }
}
