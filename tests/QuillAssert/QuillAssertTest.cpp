#include "QuillAssert/QuillAssert.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using quill::overrideable::g_quillAssertErrorLogFunc;
using quill::overrideable::g_quillAssertFunc;

TEST(QuillAssert, ComposedTextAndHookOrder) {
    std::string calls;
    const auto log = [&](const auto& text, int line, const auto& file, const auto& fn) {
        calls += "log " + text + "|" + std::to_string(line) + "|" + file + "|" + fn + ", ";
    };
    const auto check = [&](const auto& file, int line, const auto& fn, const auto& cond,
                           const auto& message) {
        calls +=
            "assert " + file + "|" + std::to_string(line) + "|" + fn + "|" + cond + "|" + message;
    };
    // Hooks installed (log, assert), condition and message, then the calls expected.
    const std::tuple<bool, bool, std::string, std::string, std::string> cases[] = {
        {true, true, "x > 0", "", "log Assertion failed: x > 0|4|f.c|fn, assert f.c|4|fn|x > 0|"},
        {true, true, "", "", "log Assertion failed: |4|f.c|fn, assert f.c|4|fn||"},
        {true, true, "rc == 0", "m",
         "log Assertion failed: rc == 0 with message: m|4|f.c|fn, assert f.c|4|fn|rc == 0|m"},
        {true, true, "", "why",
         "log Assertion failed:  with message: why|4|f.c|fn, assert f.c|4|fn||why"},
        {false, true, "c", "m", "assert f.c|4|fn|c|m"},
        {false, false, "c", "m", ""}};
    for (const auto& [withLog, withAssert, condition, message, expected] : cases) {
        calls.clear();
        g_quillAssertErrorLogFunc = withLog ? decltype(g_quillAssertErrorLogFunc)(log) : nullptr;
        g_quillAssertFunc = withAssert ? decltype(g_quillAssertFunc)(check) : nullptr;
        quill::assertImpl("f.c", 4, "fn", condition, message);
        EXPECT_EQ(calls, expected);
    }
    g_quillAssertErrorLogFunc = [](auto&&...) { throw std::runtime_error("hook"); };
    g_quillAssertFunc = check;
    EXPECT_THROW(quill::assertImpl("f.c", 1, "fn", "c", "m"), std::runtime_error);
    EXPECT_EQ(calls, "") << "the assert hook runs after the error-log hook";
    g_quillAssertErrorLogFunc = nullptr;
    g_quillAssertFunc = nullptr;
}

TEST(QuillAssert, ObfuscatedStringsRoundTrip) {
    // Longer than the 50-value key, with a NUL inside: positions past 50 wrap around the key.
    static constexpr quill::obfuscated_string_variable text(
        "0123456789012345678901234567890123456789012345678901234567\0ab");
    EXPECT_EQ(text.get_substring(0, text.size()),
              "0123456789012345678901234567890123456789012345678901234567");
    EXPECT_EQ(text.get_substring(48, 53) + text.get_substring(59, text.size()), "89012ab");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&text), 10).find("0123"),
              std::string::npos);
    EXPECT_THROW(text.get_substring(2, 1), std::length_error);
}

}  // namespace
