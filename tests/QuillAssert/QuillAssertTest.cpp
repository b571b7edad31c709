#include "QuillAssert/QuillAssert.h"

#include <gtest/gtest.h>

#include <stdexcept>

using quill::overrideable::g_quillAssertErrorLogFunc;
using quill::overrideable::g_quillAssertFunc;

TEST(QuillAssert, ComposedTextAndHookOrder) {
    std::string logged, asserted;  // the log hook's text; the assert hook's condition and message
    const auto log = [&](const auto& text, auto&&...) { logged = text; };
    const auto check = [&](auto&&, int, auto&&, const auto& cond, const auto& message) {
        asserted = cond + "/" + message;
    };
    const struct {
        bool withLog, withAssert;
        std::string condition, message, logged, asserted;  // "" when the hook is not called
    } cases[] = {
        {true, true, "x > 0", "", "Assertion failed: x > 0", "x > 0/"},
        {true, true, "rc == 0", "m", "Assertion failed: rc == 0 with message: m", "rc == 0/m"},
        {false, true, "c", "m", "", "c/m"},
        {false, false, "c", "m", "", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.condition + "/" + c.message);
        logged.clear();
        asserted.clear();
        g_quillAssertErrorLogFunc = c.withLog ? decltype(g_quillAssertErrorLogFunc)(log) : nullptr;
        g_quillAssertFunc = c.withAssert ? decltype(g_quillAssertFunc)(check) : nullptr;
        quill::assertImpl("f.c", 4, "fn", c.condition, c.message);
        EXPECT_EQ(logged, c.logged);
        EXPECT_EQ(asserted, c.asserted);
    }
    asserted.clear();
    g_quillAssertErrorLogFunc = [](auto&&...) { throw std::runtime_error("hook"); };
    g_quillAssertFunc = check;
    EXPECT_THROW(quill::assertImpl("f.c", 4, "fn", "c", "m"), std::runtime_error);
    EXPECT_EQ(asserted, "") << "the assert hook runs after the error-log hook";
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
