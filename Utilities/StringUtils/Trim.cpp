#include "StringUtils/Trim.h"

#include <algorithm>
#include <cstdint>

namespace StringUtils {

namespace {

// The trimEx set: white space without the vertical tab.
bool isTrimExSpace(char c) { return c == ' ' || c == '\t' || c == '\f' || c == '\n' || c == '\r'; }

// The first byte of [first, last) that is not white space (last if none), and
// the end of [first, last) without the white space that trails it. Plain
// loops: the runs to skip are short, and find_if's unrolled form costs more to
// enter than it saves on them.
const char* skipLeading(const char* first, const char* last) {
    while (first != last && isSpace(*first)) ++first;
    return first;
}

const char* skipTrailing(const char* first, const char* last) {
    while (last != first && isSpace(last[-1])) --last;
    return last;
}

}  // namespace

bool isSpace(char c) {
    // One test of a bit set: bits 9-13 (\t \n \v \f \r) and 32 (space).
    constexpr std::uint64_t kSpaces = 0x3E00ULL | 1ULL << ' ';
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' && (kSpaces >> byte & 1U) != 0;
}

bool isSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xA0; }

std::string trimLeft(std::string&& text) {
    const char* const first = text.data();
    text.erase(0, static_cast<size_t>(skipLeading(first, first + text.size()) - first));
    return std::move(text);
}

std::string trimRight(std::string&& text) {
    const char* const first = text.data();
    text.resize(static_cast<size_t>(skipTrailing(first, first + text.size()) - first));
    return std::move(text);
}

std::string trim(std::string&& text) { return trimLeft(trimRight(std::move(text))); }

// The copying overloads copy only the bytes that stay.
std::string trimLeft(const std::string& text) {
    const char* const last = text.data() + text.size();
    return std::string(skipLeading(text.data(), last), last);
}

std::string trimRight(const std::string& text) {
    const char* const first = text.data();
    return std::string(first, skipTrailing(first, first + text.size()));
}

std::string trim(const std::string& text) {
    const char* const last = skipTrailing(text.data(), text.data() + text.size());
    return std::string(skipLeading(text.data(), last), last);
}

TrimmedParts trimEx(const std::string& text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isTrimExSpace);
    if (first == text.end()) {
        return {text, {}, {}};
    }
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isTrimExSpace).base();
    return {std::string(text.begin(), first), std::string(first, last),
            std::string(last, text.end())};
}

bool allCharsSpaces(const std::string_view& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return isSpace(c); });
}

bool containsWhiteSpace(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return isSpace(c); });
}

}  // namespace StringUtils
