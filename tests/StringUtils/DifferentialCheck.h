// Helpers for checking the hand-written matchers against std::regex: random
// texts drawn from an alphabet near a pattern, and a check that runs both over
// many such texts and stops at the first disagreement.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <regex>
#include <string>
#include <string_view>

namespace difftest {

// The text with every byte outside printable ASCII written as \xHH.
inline std::string printable(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
            out += c;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            out += escaped;
        }
    }
    return out;
}

class TextGenerator {
public:
    explicit TextGenerator(unsigned seed) : engine_(seed) {}

    std::size_t number(std::size_t lo, std::size_t hi) {
        return std::uniform_int_distribution<std::size_t>(lo, hi)(engine_);
    }

    char pick(std::string_view alphabet) { return alphabet[number(0, alphabet.size() - 1)]; }

    std::string text(std::string_view alphabet, std::size_t length) {
        std::string out;
        for (std::size_t i = 0; i < length; ++i) {
            out += pick(alphabet);
        }
        return out;
    }

    std::string text(std::string_view alphabet, std::size_t minLength, std::size_t maxLength) {
        return text(alphabet, number(minLength, maxLength));
    }

    // One byte replaced, inserted or removed at a random place, now and then.
    std::string mutate(std::string text, std::string_view alphabet) {
        if (number(0, 3) != 0) {
            return text;
        }
        const std::size_t at = number(0, text.size());
        switch (number(0, 2)) {
            case 0:
                text.insert(at, 1, pick(alphabet));
                break;
            case 1:
                if (at < text.size()) {
                    text.erase(at, 1);
                }
                break;
            default:
                if (at < text.size()) {
                    text[at] = pick(alphabet);
                }
                break;
        }
        return text;
    }

private:
    std::mt19937 engine_;
};

// Runs `count` texts from makeText through matcher and a whole-string
// std::regex_match of pattern; fails at the first text where they differ.
template <typename Matcher, typename MakeText>
void expectSameAsRegex(std::string_view pattern, Matcher matcher, MakeText makeText, int count) {
    const std::regex regex{std::string(pattern)};
    for (int i = 0; i < count; ++i) {
        const std::string text = makeText();
        const bool expected = std::regex_match(text, regex);
        ASSERT_EQ(matcher(text), expected) << "text \"" << printable(text) << "\" (#" << i << ")";
    }
}

}  // namespace difftest
