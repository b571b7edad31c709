// Work handed between threads through locations: the traced road end to end.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Strand/ScopedThreadName.h"

namespace {

using quill::external_input::context_store;
using quill::external_input::hint;
using quill::source::location;

struct Task {
    location handedOver;
    std::string expectedId;
    std::shared_ptr<context_store> store;  // the owner
};

TEST(ContextConcurrency, WorkersSeeTheHandedOverContextAndGetTheirOwnBack) {
    constexpr std::size_t kInputs = 3, kTasksPerInput = 30, kWorkers = 3;
    std::vector<Task> tasks(kInputs * kTasksPerInput);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kInputs; ++i) {
        threads.emplace_back([&tasks, i] {
            const auto input = hint::createExternalInputHint("click" + std::to_string(i));
            const auto store = context_store::getOrCreateStore();
            store->addHeader("input");
            for (std::size_t t = 0; t < kTasksPerInput; ++t) {
                tasks[i * kTasksPerInput + t] = {location::current(__FILE__, __LINE__, __func__),
                                                 hint::getExternalInputHintId(), store};
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    threads.clear();
    std::atomic<std::size_t> next{0};
    for (std::size_t w = 0; w < kWorkers; ++w) {
        threads.emplace_back([&tasks, &next, w] {
            const std::string ownId = "hint90000" + std::to_string(w);
            const quill::external_input::scoped_hint own(ownId, "worker");
            for (std::size_t i = next++; i < tasks.size(); i = next++) {
                {
                    const Strand::ScopedThreadName scope("worker", tasks[i].handedOver);
                    EXPECT_EQ(hint::getExternalInputHintId(), tasks[i].expectedId);
                    const auto store = context_store::getStore().lock();
                    ASSERT_EQ(store, tasks[i].store);
                    store->addEntry(location::current(__FILE__, __LINE__, __func__).to_string());
                }
                EXPECT_EQ(hint::getExternalInputHintId(), ownId);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (std::size_t i = 0; i < kInputs; ++i) {
        const auto entries = tasks[i * kTasksPerInput].store->getEntries();
        ASSERT_EQ(entries.size(), 1 + kTasksPerInput);
        const std::string hintText = " externalInputHint=click" + std::to_string(i) + " hint";
        EXPECT_NE(std::get<2>(entries.back()).find(hintText), std::string::npos);
    }
}

}  // namespace
