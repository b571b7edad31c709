#include "StringUtils/Case.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "Widen.h"

namespace {

TEST(Case, ByteWise) {
    struct Case {
        std::string text;
        std::string lower;
        std::string upper;
    };
    const Case cases[] = {
        {"", "", ""},
        {"Hello, World 123", "hello, world 123", "HELLO, WORLD 123"},
        {"@[`{", "@[`{", "@[`{"},
        {"\xC3\x89t\xC3\xA9", "\xC3\x89t\xC3\xA9", "\xC3\x89T\xC3\xA9"},
    };
    for (const auto& [text, lower, upper] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::toLower(text), lower);
        EXPECT_EQ(StringUtils::toUpper(text), upper);
        if (text.find('\xC3') == std::string::npos) {
            EXPECT_EQ(StringUtils::toLower(widen(text)), widen(lower));
            EXPECT_EQ(StringUtils::toUpper(widen(text)), widen(upper));
        }
    }
    // Wide elements are mapped whole, so no letter beyond ASCII changes and no
    // element is cut down to a byte.
    const std::wstring wide = {0x141, 0x142, 0xC9, 0x1041, L'q', static_cast<wchar_t>(-1)};
    EXPECT_EQ(StringUtils::toLower(wide), wide);
    EXPECT_EQ(StringUtils::toUpper(wide),
              (std::wstring{0x141, 0x142, 0xC9, 0x1041, L'Q', static_cast<wchar_t>(-1)}));
}

TEST(Case, CapitaliseOne) {
    struct Case {
        std::string text;
        unsigned long index;
        std::string result;
    };
    const Case cases[] = {
        {"hello", 0, "Hello"}, {"hello", 4, "hellO"}, {"hello", 5, "hello"},
        {"", 0, ""},           {"a b", 1, "a b"},     {"hello", ~0UL, "hello"},
    };
    for (const auto& [text, index, result] : cases) {
        SCOPED_TRACE(text + " at " + std::to_string(index));
        EXPECT_EQ(StringUtils::toUpper(text, index), result);
    }
}

// Sets LC_ALL for one test and puts the old value back.
class ScopedLocaleEnvironment {
public:
    explicit ScopedLocaleEnvironment(const char* value) {
        if (const char* old = std::getenv("LC_ALL")) {
            old_ = old;
        }
        setenv("LC_ALL", value, 1);
    }
    ~ScopedLocaleEnvironment() {
        if (old_) {
            setenv("LC_ALL", old_->c_str(), 1);
        } else {
            unsetenv("LC_ALL");
        }
    }

private:
    std::optional<std::string> old_;
};

TEST(Case, WithUtf8UserLocale) {
    const ScopedLocaleEnvironment environment("C.UTF-8");
    EXPECT_EQ(StringUtils::toUpperWithLocal(std::string("h\xC3\xA9llo \xC5\x82")),
              "H\xC3\x89LLO \xC5\x81");
    EXPECT_EQ(StringUtils::toLowerWithLocal(std::string("\xC3\x89T\xC3\x89")), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(StringUtils::toLowerWithLocal(std::wstring{0x141, L'A', 0xD83D, 0xDE00}),
              (std::wstring{0x142, L'a', 0xD83D, 0xDE00}));
    EXPECT_EQ(StringUtils::toUpperWithLocal(std::wstring()), L"");
}

TEST(Case, UnknownUserLocaleFallsBackToByteMapping) {
    const ScopedLocaleEnvironment environment("xx_NOWHERE.UTF-8");
    EXPECT_EQ(StringUtils::toUpperWithLocal(std::string("h\xC3\xA9llo")), "H\xC3\xA9LLO");
    EXPECT_EQ(StringUtils::toLowerWithLocal(std::wstring{0x141, L'A'}),
              (std::wstring{0x141, L'a'}));
}

TEST(Case, MalformedUtf8IsAConversionError) {
    const ScopedLocaleEnvironment environment("C.UTF-8");
    EXPECT_THROW(StringUtils::toUpperWithLocal(std::string("ab\xFF")), std::range_error);
    EXPECT_THROW(StringUtils::toLowerWithLocal(std::string("\xC3")), std::range_error);
}

}  // namespace
