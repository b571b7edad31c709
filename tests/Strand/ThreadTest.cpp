// Thread identity and names.
#include <cerrno>

#include "QuillAssert/QuillAssert.h"
#include "TestSupport.h"

TEST(ThreadId, CallerIsListedAndIdTexts) {
    EXPECT_TRUE(isListed(Strand::getThreadId()));
    EXPECT_TRUE(Strand::getThreadIds(getppid()).empty()) << "another process's threads";
    // The second element, the kernel's id (the texts themselves: HexAndFileName, std::to_string).
    EXPECT_EQ(Strand::getThreadIdString({{}, -1, 7}), "-1");
    EXPECT_EQ(Strand::getThreadIdHexString({{}, -1, 7}), "0xffffffff");
}

TEST(ThreadId, EndedThreadsFreeTheirRegistrySlot) {
    for (int i = 0; i < 3000; ++i) std::thread([] { Strand::getThreadId(); }).join();
    EXPECT_TRUE(isListed(ParkedThread().id())) << "after more threads than the registry holds";
}

// More live threads than a fixed table holds: all listed with handles, the last one's name whole.
TEST(ThreadId, ThousandsOfLiveThreadsKeepHandlesAndNames) {
#ifdef STRAND_TEST_UNDER_TSAN
    GTEST_SKIP() << "ThreadSanitizer makes each thread creation cost as much as all live threads";
#endif
    constexpr int kThreads = 2100;
    const LiveThreads threads(kThreads, [](int index) -> std::shared_ptr<void> {
        if (index == kThreads - 1) Strand::setThreadName("the last of many threads, named");
        return nullptr;
    });
    const auto listed = Strand::getThreadIds();
    const std::set<Strand::ThreadId> all(listed.begin(), listed.end());
    for (const auto& id : threads.ids) ASSERT_EQ(all.count(id), 1u) << "listed without its handle";
    EXPECT_EQ(Strand::getThreadName(threads.ids.back()), "the last of many threads, named");
}

static Strand::ThreadId gIdentityInHandler;

TEST(ThreadId, FirstQueryInsideASignalHandler) {
    const auto previous = handleSigusr2([](int) { gIdentityInHandler = Strand::getThreadId(); });
    const Strand::ThreadId outside = onNewThread([] {
        raise(SIGUSR2);
        return isListed(Strand::getThreadId()) ? Strand::getThreadId() : Strand::ThreadId{};
    });
    sigaction(SIGUSR2, &previous, nullptr);
    EXPECT_EQ(gIdentityInHandler, outside);
}

TEST(ThreadId, ForkedChildSeesItsOwnTriple) {
    Strand::setThreadName("forking thread with a long name");
    const Strand::ThreadId parent = Strand::getThreadId();
    const ParkedThread others[2];  // must not appear in the child
    EXPECT_EQ(inChildProcess(10, [&] {
        const Strand::ThreadId self = Strand::getThreadId();
        return std::get<1>(self) == Strand::gettid() && self != parent &&
               Strand::getThreadIds() == std::vector<Strand::ThreadId>{self} &&
               Strand::getThreadName() == "forking thread with a long name";
    }), "ok");
    EXPECT_EQ(Strand::getThreadId(), parent);
}

TEST(ThreadName, NamesAreCutTo63Bytes) {
    const struct {
        const char* what;
        std::string name, kept;
    } cases[] = {
        {"empty", "", ""},
        {"63 bytes", std::string(63, 'a'), std::string(63, 'a')},
        {"64 bytes", std::string(64, 'b'), std::string(63, 'b')},
        {"a NUL inside", std::string("ab\0cd", 5), "ab"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ParkedThread worker;  // named there, read there and from here
        std::string readThere;
        worker.run([&] { readThere = (Strand::setThreadName(c.name), Strand::getThreadName()); });
        EXPECT_EQ(readThere, c.kept);
        EXPECT_EQ(Strand::getThreadName(worker.id()), c.kept);
    }
    EXPECT_EQ(Strand::getThreadName(Strand::ThreadId{}), "");
}

TEST(ThreadName, RefusalGoesToTheHooksWithTheWholeName) {
    const auto previous =
        Strand::platform::exchangeNameSetterForTesting([](const char*) { return EPERM; });
    std::string asserted;
    quill::overrideable::g_quillAssertFunc = [&](const auto&, int, const auto&, const auto& cond,
                                                 const auto& message) {
        asserted = cond + ": " + message;
    };
    const std::string name(200, 'n'), message = "pthread_setname_np failed :" + name;
    const auto names = onNewThread([&] {
        const std::string before = Strand::getThreadName();
        Strand::setThreadName(name);
        return std::make_pair(before, Strand::getThreadName());
    });
    EXPECT_EQ(names.second, names.first) << "a refused name leaves the old one";
    EXPECT_EQ(asserted, "rc == 0: " + message);
    quill::overrideable::g_quillAssertFunc = [](auto&&...) { throw std::runtime_error("hook"); };
    EXPECT_THROW(onNewThread([] { Strand::setThreadName("x"); }), std::runtime_error);
    Strand::platform::exchangeNameSetterForTesting(previous);
    quill::overrideable::g_quillAssertFunc = nullptr;
}
