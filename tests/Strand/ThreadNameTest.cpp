#include "Strand/ThreadName.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "QuillAssert/QuillAssert.h"
#include "Strand/Platform.h"
#include "ThreadTestSupport.h"

namespace {

using StrandTest::onNewThread;

TEST(ThreadName, NamesAreCutTo63Bytes) {
    const std::string twoByte = "\xC3\xA9";  // U+00E9
    struct Case {
        const char* label;
        std::string name;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"empty", "", ""},
        {"short", "worker", "worker"},
        {"kernel limit", std::string(15, 'k'), std::string(15, 'k')},
        {"past the kernel limit", std::string(16, 'p'), std::string(16, 'p')},
        {"63 bytes", std::string(63, 'a'), std::string(63, 'a')},
        {"64 bytes", std::string(64, 'b'), std::string(63, 'b')},
        {"200 bytes", std::string(200, 'c'), std::string(63, 'c')},
        {"cut inside UTF-8", std::string(62, 'd') + twoByte + std::string(6, 'e'),
         std::string(62, 'd') + "\xC3"},
        {"embedded NUL", std::string("ab\0cd", 5), "ab"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        // Set on a worker; read there, and from this thread through its ThreadId.
        std::promise<Strand::ThreadId> named;
        std::promise<void> read;
        std::string readOnWorker;
        std::thread worker([&] {
            Strand::setThreadName(c.name);
            readOnWorker = Strand::getThreadName();
            named.set_value(Strand::getThreadId());
            read.get_future().wait();
        });
        const Strand::ThreadId id = named.get_future().get();
        EXPECT_EQ(Strand::getThreadName(id), c.expected);
        read.set_value();
        worker.join();
        EXPECT_EQ(readOnWorker, c.expected);
    }
}

TEST(ThreadName, EndedThreadHasNoName) {
    const Strand::ThreadId ended = onNewThread([] {
        Strand::setThreadName("short-lived");
        return Strand::getThreadId();
    });
    EXPECT_EQ(Strand::getThreadName(ended), "");
    EXPECT_EQ(Strand::getThreadName(Strand::ThreadId{}), "");
}

class RefusedName : public ::testing::Test {
protected:
    void SetUp() override {
        previous_ =
            Strand::platform::exchangeNameSetterForTesting([](const char*) { return EPERM; });
        quill::overrideable::g_quillAssertErrorLogFunc = [this](const std::string& text, int line,
                                                                const std::string& file,
                                                                const std::string& function) {
            log.push_back(text + "|" + file + "|" + function + "|" + (line > 0 ? "+" : "0"));
        };
        quill::overrideable::g_quillAssertFunc =
            [this](const std::string& file, int, const std::string& function,
                   const std::string& condition, const std::string& message) {
                asserts.push_back(file + "|" + function + "|" + condition + "|" + message);
            };
    }
    void TearDown() override {
        Strand::platform::exchangeNameSetterForTesting(previous_);
        quill::overrideable::g_quillAssertErrorLogFunc = nullptr;
        quill::overrideable::g_quillAssertFunc = nullptr;
    }

    std::vector<std::string> log;
    std::vector<std::string> asserts;

private:
    Strand::platform::NameSetter previous_ = nullptr;
};

TEST_F(RefusedName, ReportsTheWholeRequestedName) {
    const std::string longName(200, 'n');
    const auto names = onNewThread([&] {
        const std::string before = Strand::getThreadName();
        Strand::setThreadName(longName);
        return std::make_pair(before, Strand::getThreadName());
    });
    EXPECT_EQ(names.second, names.first) << "a refused name leaves the old one";
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0], "Assertion failed: rc == 0 with message: pthread_setname_np failed :" +
                          longName + "|ThreadName.cpp|setThreadName|+");
    ASSERT_EQ(asserts.size(), 1u);
    EXPECT_EQ(asserts[0],
              "ThreadName.cpp|setThreadName|rc == 0|pthread_setname_np failed :" + longName);
}

TEST_F(RefusedName, HookExceptionReachesCaller) {
    quill::overrideable::g_quillAssertFunc = [](const std::string&, int, const std::string&,
                                                const std::string&, const std::string&) {
        throw std::runtime_error("refused");
    };
    EXPECT_THROW(onNewThread([] {
                     Strand::setThreadName("x");
                     return 0;
                 }),
                 std::runtime_error);
}

}  // namespace
