#include "StringUtils/Trim.h"

#include <algorithm>

namespace StringUtils {

namespace {

// The trimEx set: white space without the vertical tab.
bool isTrimExSpace(char c) { return c == ' ' || c == '\t' || c == '\f' || c == '\n' || c == '\r'; }

}  // namespace

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xA0; }

std::string trimLeft(std::string&& text) {
    const auto first = std::find_if(text.begin(), text.end(), [](char c) { return !isSpace(c); });
    text.erase(text.begin(), first);
    return std::move(text);
}

std::string trimRight(std::string&& text) {
    const auto last = std::find_if(text.rbegin(), text.rend(), [](char c) { return !isSpace(c); });
    text.erase(last.base(), text.end());
    return std::move(text);
}

std::string trim(std::string&& text) { return trimLeft(trimRight(std::move(text))); }

// The copying overloads copy only the bytes that stay.
std::string trimLeft(const std::string& text) {
    const auto first = std::find_if(text.begin(), text.end(), [](char c) { return !isSpace(c); });
    return std::string(first, text.end());
}

std::string trimRight(const std::string& text) {
    const auto last = std::find_if(text.rbegin(), text.rend(), [](char c) { return !isSpace(c); });
    return std::string(text.begin(), last.base());
}

std::string trim(const std::string& text) {
    const auto last = std::find_if(text.rbegin(), text.rend(), [](char c) { return !isSpace(c); });
    const auto first = std::find_if(text.begin(), last.base(), [](char c) { return !isSpace(c); });
    return std::string(first, last.base());
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
