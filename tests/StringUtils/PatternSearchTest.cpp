// Searches against the standard one on periodic texts, which push them into the linear algorithm.
#include <gtest/gtest.h>

#include <random>

#include "StringUtils/Extract.h"
#include "StringUtils/Search.h"
#include "StringUtils/Split.h"
#include "StringUtils/TextSearch.h"
#include "Reference.h"
#include "Widen.h"

namespace {

using namespace StringUtils;

std::string referenceBetween(const std::string& text, const std::string& start,
                             const std::string& end) {
    const size_t found = text.find(start);
    if (found == std::string::npos) return "";
    const size_t begin = found + start.size(), stop = text.find(end, begin);
    return text.substr(begin, stop == std::string::npos ? std::string::npos : stop - begin);
}

// A text and a pattern cut from one periodic string, each maybe with a changed element.
std::pair<std::string, std::string> periodicCase(std::mt19937& random) {
    const auto below = [&random](size_t n) { return static_cast<size_t>(random() % n); };
    const size_t alphabet = 2 + below(2);
    std::string unit(1 + below(5), 'a');
    for (char& c : unit) c = static_cast<char>('a' + below(alphabet));
    std::string periodic;
    while (periodic.size() < 700) periodic += unit;
    const auto mutate = [&](std::string s) {
        if (!s.empty() && below(2) == 0) s[below(s.size())] = static_cast<char>('a' + below(3));
        return s;
    };
    const size_t patternLength = 1 + below(below(4) == 0 ? 200 : 12);
    return {mutate(periodic.substr(below(100), 100 + below(400))),
            mutate(periodic.substr(below(50), patternLength))};
}

TEST(PatternSearch, AgreesWithTheStandardSearch) {
    std::mt19937 random(12);
    for (int i = 0; i < 4000; ++i) {
        const auto [text, pattern] = periodicCase(random);
        SCOPED_TRACE(text + " / " + pattern);
        for (const size_t from : {size_t{0}, size_t{1}, text.size() / 2, text.size() + 1}) {
            ASSERT_EQ(detail::findPattern<char>(text, pattern, from), text.find(pattern, from));
        }
        const std::wstring wideText = widen(text), widePattern = widen(pattern);
        ASSERT_EQ(detail::findPattern<wchar_t>(wideText, widePattern), wideText.find(widePattern));
        size_t position = 99;
        const size_t at = text.find(pattern);
        ASSERT_EQ(findSubStringLocation(text, pattern, position), at != std::string::npos);
        ASSERT_EQ(position, at == std::string::npos ? 99 : at);
        const auto fields = reference::splitAt(text, pattern);
        ASSERT_EQ(split(text, pattern, false), fields);
        ASSERT_EQ(split(wideText, widePattern, false), widen(fields));
        std::string erased = text;
        eraseSubString(erased, pattern);
        ASSERT_EQ(erased, reference::eraseRepeatedly<char>(text, pattern));
        const std::string start = pattern.substr(0, pattern.size() / 2), end = pattern;
        ASSERT_EQ(substr(text, start, end), referenceBetween(text, start, end));
    }
}

// Linear time where the standard search costs O(n * m); its own test with a time limit.
TEST(PatternSearch, HostileShapeInLinearTime) {
    const std::string text(1 << 20, 'a'), pattern = std::string((1 << 19) - 1, 'a') + "b";
    size_t position = 0;
    EXPECT_FALSE(findSubStringLocation(text, pattern, position));
    EXPECT_FALSE(findSubStringCaseSensitive(text, pattern));
    EXPECT_FALSE(findSubStringCaseInsensitive(text, pattern));
    EXPECT_EQ(split(text, pattern, false).size(), 1U);
    EXPECT_EQ(split(widen(text), widen(pattern), false).size(), 1U);
    EXPECT_EQ(SplitUtils::countWords(text, pattern), 0U);
    EXPECT_EQ(substr(text, pattern, "b"), "");
    EXPECT_EQ(substr(text, "a", pattern).size(), text.size() - 1);
    // Ends like the text, so every byte asks for a check of the tail.
    const std::string middle = std::string(1 << 18, 'a') + "b" + std::string(1 << 18, 'a');
    EXPECT_FALSE(findSubStringCaseSensitive(text, middle));
    for (const std::string& sub : {pattern, middle}) {
        std::string erased = text;
        eraseSubString(erased, sub);
        EXPECT_EQ(erased, text);
    }
}

}  // namespace
