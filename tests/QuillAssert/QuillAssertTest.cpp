#include "QuillAssert/QuillAssert.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using quill::overrideable::g_quillAssertErrorLogFunc;
using quill::overrideable::g_quillAssertFunc;

TEST(QuillAssert, ComposedTextAndHookOrder) {
    std::vector<std::string> calls;
    const auto logHook = [&](const std::string& text, int line, const std::string& file,
                             const std::string& fn) {
        calls.push_back("log|" + text + "|" + std::to_string(line) + "|" + file + "|" + fn);
    };
    const auto assertHook = [&](const std::string& file, int line, const std::string& fn,
                                const std::string& condition, const std::string& message) {
        calls.push_back("assert|" + file + "|" + std::to_string(line) + "|" + fn + "|" + condition +
                        "|" + message);
    };
    // Hooks installed (log, assert), condition, message, then the calls expected.
    const std::tuple<bool, bool, std::string, std::string, std::vector<std::string>> cases[] = {
        {true,
         true,
         "x > 0",
         "",
         {"log|Assertion failed: x > 0|42|f.cpp|fn", "assert|f.cpp|42|fn|x > 0|"}},
        {true, true, "", "", {"log|Assertion failed: |42|f.cpp|fn", "assert|f.cpp|42|fn||"}},
        {true,
         true,
         "rc == 0",
         "failed :abc",
         {"log|Assertion failed: rc == 0 with message: failed :abc|42|f.cpp|fn",
          "assert|f.cpp|42|fn|rc == 0|failed :abc"}},
        {true,
         true,
         "",
         "why",
         {"log|Assertion failed:  with message: why|42|f.cpp|fn", "assert|f.cpp|42|fn||why"}},
        {false, true, "c", "m", {"assert|f.cpp|42|fn|c|m"}},
        {false, false, "c", "m", {}}};
    for (const auto& [withLog, withAssert, condition, message, expected] : cases) {
        calls.clear();
        g_quillAssertErrorLogFunc =
            withLog ? decltype(g_quillAssertErrorLogFunc)(logHook) : nullptr;
        g_quillAssertFunc = withAssert ? decltype(g_quillAssertFunc)(assertHook) : nullptr;
        quill::assertImpl("f.cpp", 42, "fn", condition, message);
        EXPECT_EQ(calls, expected) << condition << "|" << message;
    }
    g_quillAssertErrorLogFunc = [](auto&&...) { throw std::runtime_error("hook"); };
    g_quillAssertFunc = assertHook;
    EXPECT_THROW(quill::assertImpl("f.cpp", 1, "fn", "c", "m"), std::runtime_error);
    EXPECT_EQ(calls.size(), 0u) << "the assert hook runs after the error-log hook";
    g_quillAssertErrorLogFunc = nullptr;
    g_quillAssertFunc = nullptr;
}

TEST(QuillAssert, ObfuscatedStringsRoundTrip) {
    static constexpr quill::obfuscated_string_variable text("Strand/ThreadName.cpp");
    static_assert(text.size() == 22);
    EXPECT_EQ(text.get_substring(0, text.size()), "Strand/ThreadName.cpp");
    EXPECT_EQ(text.get_substring(7, 17) + text.get_substring(3, 3), "ThreadName");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&text), 22).find("Thread"),
              std::string::npos);
    EXPECT_THROW(text.get_substring(2, 1), std::length_error);
    // Longer than the key: positions past 50 wrap around it.
    static constexpr quill::obfuscated_string_variable digits(
        "0123456789012345678901234567890123456789012345678901234567");
    EXPECT_EQ(digits.get_substring(48, 53) + digits.get_substring(55, digits.size()), "89012567");
    static constexpr quill::obfuscated_string_variable embedded("ab\0cd");
    EXPECT_EQ(embedded.get_substring(0, embedded.size()) + embedded.get_substring(3, 6), "abcd");
}

}  // namespace
