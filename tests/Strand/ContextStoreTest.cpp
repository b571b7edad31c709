#include "Strand/ContextStore.h"

#include <gtest/gtest.h>

#include <latch>
#include <set>
#include <thread>

#include "ContextTestSupport.h"

namespace {

using context_test::isEmptyRef;
using context_test::onNewThread;
using quill::external_input::context_store;

long nowMs() { return context_store::toEpochMilliseconds(std::chrono::system_clock::now()); }

TEST(ContextStore, KeepsTheFirstHundredRecordsInOrder) {
    auto store = std::make_shared<context_store>();
    EXPECT_TRUE(store->getEntries().empty());
    const long before = nowMs();
    for (int i = 0; i < 101; ++i) {
        i % 2 == 0 ? store->addHeader(std::to_string(i)) : store->addEntry(std::to_string(i));
    }
    const auto entries = store->getEntries();
    ASSERT_EQ(entries.size(), 100u) << "the 101st record is dropped";
    long previous = before;
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        const auto& [isHeader, timestamp, text] = entries[static_cast<std::size_t>(i)];
        EXPECT_EQ(isHeader, i % 2 == 0);
        EXPECT_EQ(text, std::to_string(i));
        EXPECT_GE(timestamp, previous);
        previous = timestamp;
    }
    EXPECT_LE(previous, nowMs());
    const std::chrono::system_clock::time_point reading(
        std::chrono::microseconds(1700000000123456));
    EXPECT_EQ(context_store::toEpochMilliseconds(reading), 1700000000123);
}

TEST(ContextStore, ThreadReferenceFollowsTheOwner) {
    onNewThread([] {
        EXPECT_TRUE(isEmptyRef(context_store::getStore())) << "a fresh thread has no store";
        auto first = context_store::getOrCreateStore();
        EXPECT_EQ(context_store::getOrCreateStore(), first);
        first->addEntry("work");
        first.reset();
        EXPECT_TRUE(context_store::getStore().expired());
        EXPECT_FALSE(isEmptyRef(context_store::getStore())) << "expired, not empty";
        EXPECT_TRUE(context_store::getOrCreateStore()->getEntries().empty()) << "a new store";
        return 0;
    });
}

TEST(ContextStore, ReadersSeeOnlyFilledSlotsWhileWritersAdd) {
    constexpr int kWriters = 4, kPerWriter = 40;  // 160 adds race for 100 slots
    auto store = std::make_shared<context_store>();
    std::latch start(kWriters + 2);
    std::atomic<int> writersLeft{kWriters};
    // Each writer's records appear in its own order, in every snapshot.
    auto check = [](const std::vector<context_store::entry>& entries) {
        std::vector<int> last(kWriters, -1);
        for (const auto& entry : entries) {
            const int value = std::stoi(std::get<2>(entry));
            EXPECT_GT(value % 1000, std::exchange(last[value / 1000], value % 1000));
        }
        EXPECT_LE(entries.size(), 100u);
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kWriters + 2; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            if (t >= kWriters) {
                while (writersLeft.load() > 0) {
                    check(store->getEntries());
                }
                return;
            }
            for (int i = 0; i < kPerWriter; ++i) {
                store->addEntry(std::to_string(t * 1000 + i));
            }
            writersLeft.fetch_sub(1);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto entries = store->getEntries();
    check(entries);
    std::set<std::string> distinct;
    for (const auto& entry : entries) {
        distinct.insert(std::get<2>(entry));
    }
    EXPECT_EQ(distinct.size(), 100u);
}

}  // namespace
