#include "QuillAssert/QuillAssert.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using quill::overrideable::g_quillAssertErrorLogFunc;
using quill::overrideable::g_quillAssertFunc;

// Installs recording hooks for one test and empties them afterwards.
class AssertHooks : public ::testing::Test {
protected:
    void TearDown() override {
        g_quillAssertFunc = nullptr;
        g_quillAssertErrorLogFunc = nullptr;
    }

    void installBoth() {
        g_quillAssertErrorLogFunc = [this](const std::string& text, int line,
                                           const std::string& file, const std::string& function) {
            calls.push_back("log|" + text + "|" + std::to_string(line) + "|" + file + "|" +
                            function);
        };
        installAssertOnly();
    }

    void installAssertOnly() {
        g_quillAssertFunc = [this](const std::string& file, int line, const std::string& function,
                                   const std::string& condition, const std::string& message) {
            calls.push_back("assert|" + file + "|" + std::to_string(line) + "|" + function + "|" +
                            condition + "|" + message);
        };
    }

    std::vector<std::string> calls;
};

TEST_F(AssertHooks, ComposedTextAndHookOrder) {
    struct Case {
        std::string condition;
        std::string message;
        std::string composed;
    };
    const Case cases[] = {
        {"x > 0", "", "Assertion failed: x > 0"},
        {"", "", "Assertion failed: "},
        {"rc == 0", "pthread_setname_np failed :abc",
         "Assertion failed: rc == 0 with message: pthread_setname_np failed :abc"},
        {"", "why", "Assertion failed:  with message: why"},
    };
    installBoth();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.composed);
        calls.clear();
        quill::assertImpl("f.cpp", 42, "fn", c.condition, c.message);
        const std::vector<std::string> expected = {
            "log|" + c.composed + "|42|f.cpp|fn",
            "assert|f.cpp|42|fn|" + c.condition + "|" + c.message,
        };
        EXPECT_EQ(calls, expected);
    }
}

TEST_F(AssertHooks, EmptyHooksAreSkipped) {
    EXPECT_NO_THROW(quill::assertImpl("f.cpp", 1, "fn", "c", "m"));

    installAssertOnly();
    quill::assertImpl("f.cpp", 7, "fn", "c", "");
    EXPECT_EQ(calls, std::vector<std::string>{"assert|f.cpp|7|fn|c|"});
}

TEST_F(AssertHooks, HookExceptionReachesCaller) {
    g_quillAssertErrorLogFunc = [](const std::string&, int, const std::string&,
                                   const std::string&) { throw std::runtime_error("hook"); };
    installAssertOnly();
    EXPECT_THROW(quill::assertImpl("f.cpp", 1, "fn", "c", "m"), std::runtime_error);
    EXPECT_TRUE(calls.empty()) << "the assert hook runs after the error-log hook";
}

TEST(ObfuscatedString, RoundTripsAndStopsAtNul) {
    static constexpr quill::obfuscated_string_variable text("Strand/ThreadName.cpp");
    static_assert(text.size() == 22);
    EXPECT_EQ(text.get_substring(0, text.size()), "Strand/ThreadName.cpp");
    EXPECT_EQ(text.get_substring(7, 17), "ThreadName");
    EXPECT_EQ(text.get_substring(3, 3), "");

    // Longer than the key: positions past 50 wrap around it.
    static constexpr quill::obfuscated_string_variable longText(
        "0123456789012345678901234567890123456789012345678901234567890123456789");
    EXPECT_EQ(longText.get_substring(0, longText.size()),
              "0123456789012345678901234567890123456789012345678901234567890123456789");
    EXPECT_EQ(longText.get_substring(48, 53), "89012");

    static constexpr quill::obfuscated_string_variable embedded("ab\0cd");
    EXPECT_EQ(embedded.get_substring(0, embedded.size()), "ab");
    EXPECT_EQ(embedded.get_substring(3, embedded.size()), "cd");
}

TEST(ObfuscatedString, StoresNoPlainByte) {
    static constexpr quill::obfuscated_string_variable text("setThreadName");
    const auto* raw = reinterpret_cast<const char*>(&text);
    EXPECT_EQ(std::string(raw, text.size()).find("Thread"), std::string::npos);
}

TEST(ObfuscatedString, ReversedRangeThrows) {
    static constexpr quill::obfuscated_string_variable text("abc");
    EXPECT_THROW(text.get_substring(2, 1), std::length_error);
}

}  // namespace
