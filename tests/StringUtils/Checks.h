// Tables of a function's expected results; random texts through a function and its reference.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <string_view>

namespace checks {

// function with the arguments after the text bound: with(f, a)(text) is f(text, a).
template <typename F, typename... Arguments>
auto with(F function, Arguments... arguments) {
    return [=](const std::string& text) { return function(text, arguments...); };
}

// A function, a text and the function's expected result for it.
template <typename Result>
struct Row {
    std::function<Result(const std::string&)> function;
    std::string text;
    Result expected;
};
template <typename Result>
void expectTable(std::initializer_list<Row<Result>> rows) {
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        EXPECT_EQ(row.function(row.text), row.expected);
    }
}

// Checks that predicate accepts every text of accepted and no text of rejected.
template <typename Predicate>
void expectVerdicts(Predicate predicate, std::initializer_list<std::string> accepted,
                    std::initializer_list<std::string> rejected) {
    for (const auto& text : accepted) EXPECT_TRUE(predicate(text)) << testing::PrintToString(text);
    for (const auto& text : rejected) EXPECT_FALSE(predicate(text)) << testing::PrintToString(text);
}

struct TextGenerator {
    std::mt19937 engine;

    std::size_t number(std::size_t lo, std::size_t hi) {
        return std::uniform_int_distribution<std::size_t>(lo, hi)(engine);
    }
    std::string text(std::string_view alphabet, std::size_t minLength, std::size_t maxLength) {
        std::string out(number(minLength, maxLength), '\0');
        for (char& c : out) c = alphabet[number(0, alphabet.size() - 1)];
        return out;
    }
    // One time in four a byte of alphabet inserted, or one byte replaced or removed.
    std::string mutate(std::string s, std::string_view alphabet) {
        const std::size_t at = number(0, s.size()), how = number(0, 11);
        if (how < 3) s.replace(at, how == 0 ? 0 : 1, how == 2 ? "" : text(alphabet, 1, 1));
        return s;
    }
};

// Runs count texts from makeText through actual and expected, up to the first difference.
template <typename Actual, typename Expected, typename MakeText>
void expectSame(Actual actual, Expected expected, MakeText makeText, int count) {
    for (int i = 0; i < count; ++i) {
        const std::string text = makeText();
        ASSERT_EQ(actual(text), expected(text)) << testing::PrintToString(text);
    }
}

}  // namespace checks
