#include "Strand/ContextStore.h"

#include <gtest/gtest.h>

#include <latch>
#include <set>
#include <string>
#include <thread>
#include <vector>

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
    const long after = nowMs();
    const auto entries = store->getEntries();
    ASSERT_EQ(entries.size(), 100u) << "the 101st record is dropped";
    long previous = before;
    for (int i = 0; i < 100; ++i) {
        SCOPED_TRACE(i);
        const auto& [isHeader, timestamp, text] = entries[static_cast<std::size_t>(i)];
        EXPECT_EQ(isHeader, i % 2 == 0);
        EXPECT_EQ(text, std::to_string(i));
        EXPECT_GE(timestamp, previous);
        EXPECT_LE(timestamp, after);
        previous = timestamp;
    }
}

TEST(ContextStore, TimestampsAreWholeMillisecondsTruncatedTowardZero) {
    using std::chrono::microseconds;
    const struct {
        long long micros;
        long expected;
    } cases[] = {{1700000000123456, 1700000000123}, {999, 0}, {0, 0}, {-1500, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.micros);
        const std::chrono::system_clock::time_point time(microseconds(c.micros));
        EXPECT_EQ(context_store::toEpochMilliseconds(time), c.expected);
    }
}

TEST(ContextStore, ThreadReferenceFollowsTheOwner) {
    onNewThread([] {
        EXPECT_TRUE(isEmptyRef(context_store::getStore())) << "a fresh thread has no store";
        auto first = context_store::getOrCreateStore();
        EXPECT_EQ(context_store::getOrCreateStore(), first);
        EXPECT_EQ(context_store::getStore().lock(), first);
        first->addEntry("work");
        first.reset();
        const auto expired = context_store::getStore();
        EXPECT_TRUE(expired.expired());
        EXPECT_FALSE(isEmptyRef(expired)) << "expired, not empty";
        const auto second = context_store::getOrCreateStore();
        EXPECT_TRUE(second->getEntries().empty()) << "a fresh store, not the dead one";
        return 0;
    });
}

TEST(ContextStore, ReadersSeeOnlyFilledSlotsWhileWritersAdd) {
    constexpr int kWriters = 4;
    constexpr int kPerWriter = 40;  // 160 adds race for 100 slots
    auto store = std::make_shared<context_store>();
    std::latch start(kWriters + 2);
    std::atomic<int> writersLeft{kWriters};
    std::vector<std::thread> threads;
    for (int w = 0; w < kWriters; ++w) {
        threads.emplace_back([&, w] {
            start.arrive_and_wait();
            for (int i = 0; i < kPerWriter; ++i) {
                store->addEntry(std::to_string(w * 1000 + i));
            }
            writersLeft.fetch_sub(1);
        });
    }
    // Each writer's records must appear in its own order, in every snapshot.
    auto checkOrder = [](const std::vector<context_store::entry>& entries) {
        std::vector<int> last(kWriters, -1);
        for (const auto& entry : entries) {
            const int value = std::stoi(std::get<2>(entry));
            EXPECT_GT(value % 1000, last[static_cast<std::size_t>(value / 1000)]);
            last[static_cast<std::size_t>(value / 1000)] = value % 1000;
        }
        EXPECT_LE(entries.size(), 100u);
    };
    for (int r = 0; r < 2; ++r) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            do {
                checkOrder(store->getEntries());
            } while (writersLeft.load() > 0);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto entries = store->getEntries();
    checkOrder(entries);
    std::set<std::string> distinct;
    for (const auto& entry : entries) {
        distinct.insert(std::get<2>(entry));
    }
    EXPECT_EQ(distinct.size(), 100u);
}

}  // namespace
