// Context stores, external input hints and source locations, alone and handed between threads.
#include "RandomUtils/RandomUtils.h"
#include "Strand/ContextHelpers.h"
#include "TestSupport.h"

std::size_t allocationsOnThisThread();  // through operator new, so far

namespace {

using quill::external_input::context_store;
using quill::external_input::formatHintIdString;
using quill::external_input::toEpochMilliseconds;
using quill::external_input::hint;
using quill::source::location;

// The counter part of a generated hint id: its last three digits.
int counterPart(const std::string& id) { return std::stoi(id.substr(id.size() - 3)); }
// Whether ref was never set (as opposed to set and expired).
bool isEmptyRef(const std::weak_ptr<context_store>& ref) {
    return !ref.owner_before(std::weak_ptr<context_store>()) &&
           !std::weak_ptr<context_store>().owner_before(ref);
}

TEST(ContextStore, KeepsTheFirstHundredRecordsAndFollowsItsOwner) {
    onNewThread([] {
        EXPECT_TRUE(isEmptyRef(context_store::getStore())) << "a fresh thread has no store";
        auto store = context_store::getOrCreateStore();
        EXPECT_EQ(context_store::getOrCreateStore(), store);
        const long start = toEpochMilliseconds(std::chrono::system_clock::now());
        for (int i = 0; i < 101; ++i) {
            i % 2 == 0 ? store->addHeader(std::to_string(i)) : store->addEntry(std::to_string(i));
        }
        const auto entries = store->getEntries();
        ASSERT_EQ(entries.size(), 100u) << "the 101st record is dropped";
        for (std::size_t i = 0; i < 100; ++i) {
            const auto& [isHeader, timestamp, text] = entries[i];
            EXPECT_EQ(isHeader, i % 2 == 0) << i;
            EXPECT_EQ(text, std::to_string(i));
            EXPECT_GE(timestamp, start);
        }
        store.reset();
        EXPECT_TRUE(context_store::getStore().expired() && !isEmptyRef(context_store::getStore()));
        EXPECT_TRUE(context_store::getOrCreateStore()->getEntries().empty()) << "a new store";
    });
    const std::chrono::system_clock::time_point time{std::chrono::microseconds(1700000000123456)};
    EXPECT_EQ(toEpochMilliseconds(time), 1700000000123);
}

TEST(ContextStore, ReadersSeeOnlyFilledSlotsWhileWritersAdd) {
    auto store = std::make_shared<context_store>();
    std::atomic<int> writersLeft{4};
    // Each writer's records appear in its own order, in every snapshot.
    auto check = [](const std::vector<context_store::entry>& entries) {
        std::vector<int> last(4, -1);
        for (const auto& [isHeader, time, text] : entries) {
            const int value = std::stoi(text);
            EXPECT_GT(value % 1000, std::exchange(last[value / 1000], value % 1000));
        }
        EXPECT_LE(entries.size(), 100u);
    };
    onThreadsAtOnce(6, [&](int t) {  // 4 writers x 40 adds race for 100 slots, 2 readers
        while (t >= 4 && writersLeft > 0) check(store->getEntries());
        for (int i = 0; t < 4 && i < 40; ++i) store->addEntry(std::to_string(t * 1000 + i));
        writersLeft -= t < 4 ? 1 : 0;
    });
    std::set<std::string> distinct;
    for (const auto& entry : store->getEntries()) distinct.insert(std::get<2>(entry));
    check(store->getEntries());
    EXPECT_EQ(distinct.size(), 100u);
}

TEST(ExternalInputHint, IdsScopesNamesAndCopies) {
    quill::overrideable::g_randFunc = [](int, int, bool) { return 42; };
    onNewThread([] {
        EXPECT_EQ(hint::getExternalInputHint(), nullptr) << "a fresh thread has no hint";
        const auto scope = hint::createExternalInputHint("click");
        const std::string firstId = hint::getExternalInputHintId();
        EXPECT_EQ(hint::getExternalInputHintName(), "click");
        EXPECT_EQ(firstId.substr(0, 7), "hint042") << "the drawn prefix";
        {
            const auto inner = hint::createExternalInputHint("tap");
            const int step = counterPart(hint::getExternalInputHintId()) - counterPart(firstId);
            EXPECT_EQ((step + 1000) % 1000, 1);
        }
        EXPECT_EQ(hint::getExternalInputHint(), nullptr) << "the inner scope cleared it";
        hint("hint000007", "").setAsExternalInputHint();
        EXPECT_EQ(hint::getExternalInputHintId(), "") << "an id without a name counts for nothing";
        hint("hint000001", "tap").setAsExternalInputHint();
        const auto first = hint::getExternalInputHint();
        hint::clearExternalInputHint();
        EXPECT_EQ(first->getHintId(), "hint000001") << "handed-out hints do not follow the thread";
    });
    quill::overrideable::g_randFunc = &quill::defaultRand;
    const struct {
        int id;
        const char* text;
    } ids[] = {{0, "hint000000"},   {999999, "hint999999"}, {1234567, "hint1234567"},
               {-5, "hint0000-5"}, {-12345, "hint-12345"}};
    for (const auto& c : ids) EXPECT_EQ(formatHintIdString(c.id), c.text) << c.id;
}

TEST(ExternalInputHint, ConcurrentCreationsCountEveryHint) {
    std::mutex mutex;
    std::set<int> counters;
    onThreadsAtOnce(4, [&](int) {
        for (int i = 0; i < 50; ++i) {
            const auto scope = hint::createExternalInputHint("click");
            const std::lock_guard<std::mutex> lock(mutex);
            counters.insert(counterPart(hint::getExternalInputHintId()));
        }
    });
    int gaps = 0;  // 200 consecutive counts modulo 1000: no repeats and exactly one gap
    for (const int value : counters) gaps += counters.count((value + 1) % 1000) == 0 ? 1 : 0;
    EXPECT_EQ(counters.size(), 200u);
    EXPECT_EQ(gaps, 1);
}

TEST(SourceLocation, TextIsFileNameLineFunctionAndHint) {
    const auto click = std::make_shared<hint>("hint042017", "click");
    const struct {
        location loc;
        const char* text;
    } cases[] = {
        {{"/home/build/src/net/Client.cpp", "connect", nullptr, {}, 120}, "Client.cpp:120:connect"},
        {{"/src/Client.cpp", "connect", click, {}, 120},
         "Client.cpp:120:connect externalInputHint=click hint042017"},
        {{nullptr, "connect", nullptr, {}, 120}, ":120:connect"},
        {{"a.cpp", "f", std::make_shared<hint>("hint042017", ""), {}, 7}, "a.cpp:7:f"},
        {{"a.cpp", nullptr, nullptr, {}, 7}, "a.cpp:7:"},
        {location::current("a.cpp", -1, "f"), "a.cpp:4294967295:f"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        std::ostringstream os;
        os << c.loc;
        EXPECT_EQ(os.str(), c.text);
        EXPECT_EQ(c.loc.to_string(), c.text);
    }
    std::ostringstream hex;
    hex << std::hex << location{"a.cpp", "f", nullptr, {}, 255};
    EXPECT_EQ(hex.str(), "a.cpp:ff:f") << "the stream's number format applies";
}

TEST(SourceLocation, CurrentCapturesTheThreadsContextAllocatingOnlyForAHint) {
    enum Store { none, live, expired };
    for (const int both : {0, 1, 2, 3, 4, 5}) {
        const bool withHint = both >= 3;
        const Store kind = static_cast<Store>(both % 3);
        SCOPED_TRACE(testing::Message() << withHint << kind);
        onNewThread([&] {
            auto store = kind == none ? nullptr : context_store::getOrCreateStore();
            store = kind == expired ? nullptr : store;
            if (withHint) hint("hint000001", "tap").setAsExternalInputHint();
            const std::size_t before = allocationsOnThisThread();
            const location loc = location::current("/x/y.cpp", 9, "run");
            const location again = location::current("/x/y.cpp", 9, "run");
            EXPECT_EQ(allocationsOnThisThread() - before, withHint ? 2u : 0u)
                << "without a hint nothing, with one the one shared copy of it";
            hint::clearExternalInputHint();
            EXPECT_EQ(loc.to_string(),
                      withHint ? "y.cpp:9:run externalInputHint=tap hint000001" : "y.cpp:9:run")
                << "the record keeps what it captured";
            EXPECT_EQ(loc.contextStore.lock(), kind == live ? store : nullptr);
            EXPECT_TRUE(withHint || kind == live || isEmptyRef(loc.contextStore))
                << "no expired copy";
        });
    }
}

// Work handed between threads through locations: the traced road end to end.
TEST(ContextHandover, WorkersSeeTheHandedOverContextAndGetTheirOwnBack) {
    std::shared_ptr<context_store> store;
    std::string inputId;
    std::vector<location> tasks;
    onNewThread([&] {  // the thread that took the input
        const auto scope = hint::createExternalInputHint("click");
        store = context_store::getOrCreateStore();
        inputId = hint::getExternalInputHintId();
        tasks.assign(60, location::current(__FILE__, __LINE__, __func__));
    });
    std::atomic<std::size_t> next{0};
    onThreadsAtOnce(3, [&](int worker) {
        const std::string ownId = "hint90000" + std::to_string(worker);
        const quill::external_input::scoped_hint own(ownId, "worker");
        for (std::size_t i = next++; i < tasks.size(); i = next++) {
            {
                const Strand::ScopedThreadName scope("worker", tasks[i]);
                EXPECT_EQ(hint::getExternalInputHintId(), inputId);
                const auto shared = context_store::getStore().lock();
                ASSERT_EQ(shared, store);
                shared->addEntry(location::current(__FILE__, __LINE__, __func__).to_string());
            }
            EXPECT_EQ(hint::getExternalInputHintId(), ownId);
        }
    });
    const auto entries = store->getEntries();
    ASSERT_EQ(entries.size(), 60u);
    EXPECT_NE(std::get<2>(entries.back()).find(" externalInputHint=click " + inputId),
              std::string::npos);
}

}  // namespace
