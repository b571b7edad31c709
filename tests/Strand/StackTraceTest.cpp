#include "Strand/StackTrace.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <string>
#include <thread>

#include "ParkedThread.h"

namespace {

// Whole lines of text, each of which must end in a line feed.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    EXPECT_EQ(start, text.size()) << "the last line ends in a line feed too";
    return lines;
}

}  // namespace

// The caller's own frame, which must never show in another thread's trace.
STRAND_TEST_TRACEABLE std::string traceFromTheCaller(const Strand::ThreadId& thread) {
    return Strand::getStackTrace({}, thread);
}

namespace {

TEST(StackTrace, OwnThreadTraceHasOneLinePerFrame) {
    const std::string trace = traceFromTheCaller(Strand::getThreadId());
    const std::vector<std::string> lines = linesOf(trace);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_LE(lines.size(), 100u);
    EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), [](auto& l) { return l.empty(); }));
    EXPECT_NE(trace.find("traceFromTheCaller"), std::string::npos) << trace;
}

TEST(StackTrace, OtherThreadTraceShowsThatThreadsStack) {
    ParkedThread target;
    const std::string trace = traceFromTheCaller(target.id());
    EXPECT_NE(trace.find("parkedThreadWait"), std::string::npos) << trace;
    EXPECT_EQ(trace.find("traceFromTheCaller"), std::string::npos) << trace;
}

TEST(StackTrace, DeepStacksAreCutAt100Frames) {
    std::string ownTrace;
    recurseThen(150, [&ownTrace] {
        ownTrace = Strand::getStackTrace({}, Strand::getThreadId());
        return 0;
    });

    std::promise<Strand::ThreadId> deep;
    std::promise<void> release;
    std::thread target([&] {
        recurseThen(150, [&] {
            deep.set_value(Strand::getThreadId());
            release.get_future().wait();
            return 0;
        });
    });
    const std::string otherTrace = Strand::getStackTrace({}, deep.get_future().get());
    release.set_value();
    target.join();

    const std::pair<const char*, const std::string&> cases[] = {{"own thread", ownTrace},
                                                                {"other thread", otherTrace}};
    for (const auto& [label, trace] : cases) {
        SCOPED_TRACE(label);
        EXPECT_EQ(linesOf(trace).size(), 100u);
        EXPECT_NE(trace.find("recurseThen"), std::string::npos);
    }
}

TEST(StackTrace, UnreachableThreadGivesEmptyTrace) {
    Strand::ThreadId ended;
    std::thread([&ended] { ended = Strand::getThreadId(); }).join();
    EXPECT_EQ(Strand::getStackTrace({}, ended), "");
    EXPECT_EQ(Strand::getStackTrace({}, Strand::ThreadId{}), "");
}

TEST(StackTrace, UnavailableEntryPointsReturnEmpty) {
    bool called = false;
    const Strand::SampleCallback callback = [&called](int, const Strand::ThreadId&,
                                                      std::vector<unsigned long>&, unsigned long) {
        called = true;
        return 0ul;
    };
    const Strand::ThreadId self = Strand::getThreadId();
    const std::chrono::seconds second(1);
    const std::chrono::milliseconds tick(10);
    EXPECT_TRUE(Strand::getAllThreadStackTrace({}).empty());
    EXPECT_TRUE(Strand::sampleAllThreads(second, tick).empty());
    EXPECT_TRUE(Strand::sampleProcessThread(getpid(), self, second, tick, callback).empty());
    EXPECT_TRUE(
        Strand::sampleProcessAllThread(getpid(), self, second, tick, tick, callback).empty());
    EXPECT_FALSE(called);
}

}  // namespace
