// Work handed between threads through locations: the traced road end to end.
#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <latch>
#include <optional>
#include <thread>

#include "Strand/ScopedThreadName.h"

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;

struct Task {
    location handedOver;
    std::string expectedId;
    std::shared_ptr<context_store> expectedStore;  // keeps the store alive
};

// A closable queue of tasks.
class TaskQueue {
public:
    void push(Task task) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        changed_.notify_one();
    }
    void close() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            closed_ = true;
        }
        changed_.notify_all();
    }
    std::optional<Task> pop() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return closed_ || !tasks_.empty(); });
        if (tasks_.empty()) {
            return std::nullopt;
        }
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        return task;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool closed_ = false;
};

TEST(ContextConcurrency, WorkersSeeTheHandedOverContextAndGetTheirOwnBack) {
    constexpr int kInputs = 3;
    constexpr int kTasksPerInput = 30;
    constexpr int kWorkers = 3;
    TaskQueue queue;
    std::vector<std::shared_ptr<context_store>> stores(kInputs);
    std::latch inputsDone(kInputs);
    std::vector<std::thread> threads;
    for (int w = 0; w < kWorkers; ++w) {
        threads.emplace_back([&queue, w] {
            const quill::external_input::scoped_hint own("hint90000" + std::to_string(w), "worker");
            while (auto task = queue.pop()) {
                {
                    const Strand::ScopedThreadName scope("worker", task->handedOver);
                    EXPECT_EQ(hint::getExternalInputHintId(), task->expectedId);
                    const auto store = context_store::getStore().lock();
                    EXPECT_EQ(store, task->expectedStore);
                    store->addEntry(location::current(__FILE__, __LINE__, __func__).to_string());
                }
                EXPECT_EQ(hint::getExternalInputHintId(), "hint90000" + std::to_string(w));
            }
        });
    }
    for (int i = 0; i < kInputs; ++i) {
        threads.emplace_back([&, i] {
            const auto input = hint::createExternalInputHint("click" + std::to_string(i));
            stores[static_cast<std::size_t>(i)] = context_store::getOrCreateStore();
            stores[static_cast<std::size_t>(i)]->addHeader("input " + std::to_string(i));
            for (int t = 0; t < kTasksPerInput; ++t) {
                queue.push(Task{location::current(__FILE__, __LINE__, __func__),
                                hint::getExternalInputHintId(),
                                stores[static_cast<std::size_t>(i)]});
            }
            inputsDone.count_down();
        });
    }
    inputsDone.wait();
    queue.close();
    for (auto& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < kInputs; ++i) {
        SCOPED_TRACE(i);
        const auto entries = stores[static_cast<std::size_t>(i)]->getEntries();
        ASSERT_EQ(entries.size(), 1u + kTasksPerInput);
        EXPECT_TRUE(std::get<0>(entries[0]));
        EXPECT_NE(
            std::get<2>(entries[1]).find(" externalInputHint=click" + std::to_string(i) + " hint"),
            std::string::npos)
            << std::get<2>(entries[1]);
    }
}

}  // namespace
