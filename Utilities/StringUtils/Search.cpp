#include "StringUtils/Search.h"

#include <algorithm>
#include <string_view>

#include "StringUtils/Case.h"

namespace StringUtils {

namespace {

template <typename CharT>
bool startsWithText(const std::basic_string<CharT>& text, const std::basic_string<CharT>& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

template <typename CharT>
bool endsWithText(const std::basic_string<CharT>& text, const std::basic_string<CharT>& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

template <typename CharT>
bool endsWithAnyText(const std::basic_string<CharT>& text,
                     const std::vector<std::basic_string<CharT>>& suffixes) {
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&text](const auto& suffix) { return endsWithText(text, suffix); });
}

}  // namespace

bool startsWith(const std::string& text, const std::string& prefix) {
    return startsWithText(text, prefix);
}

bool startsWith(const std::wstring& text, const std::wstring& prefix) {
    return startsWithText(text, prefix);
}

bool endsWith(const std::string& text, const std::string& suffix) {
    return endsWithText(text, suffix);
}

bool endsWith(const std::wstring& text, const std::wstring& suffix) {
    return endsWithText(text, suffix);
}

bool endsWithAny(const std::string& text, const std::vector<std::string>& suffixes) {
    return endsWithAnyText(text, suffixes);
}

bool endsWithAny(const std::wstring& text, const std::vector<std::wstring>& suffixes) {
    return endsWithAnyText(text, suffixes);
}

bool startsWithCharacter(const std::string& text, char c) { return text.c_str()[0] == c; }

bool startsWithDigit(const std::string& text) {
    const char first = text.c_str()[0];
    return first >= '0' && first <= '9';
}

bool findSubStringLocation(const std::string& text, const std::string& sub, size_t& position) {
    const size_t found = text.find(sub);
    if (found == std::string::npos) {
        return false;
    }
    position = found;
    return true;
}

bool findSubStringCaseSensitive(const std::string& text, const std::string& sub) {
    return text.find(sub) != std::string::npos;
}

bool findSubStringCaseInsensitive(const std::string& text, const std::string& sub) {
    return findSubStringCaseSensitive(toLower(text), toLower(sub));
}

void eraseSubString(std::string& text, const std::string& sub) {
    if (sub.empty()) {
        return;  // the empty text is found again and again; nothing to erase
    }
    // Same result as erasing the leftmost occurrence until none is left, in one
    // pass: the result is built in place behind the read position, and once its
    // tail forms sub, that tail is the leftmost occurrence of the text still to
    // be cleaned (the part before it has none), so it is dropped at once.
    std::size_t kept = 0;
    for (const char c : text) {
        text[kept++] = c;
        if (kept >= sub.size() && c == sub.back() &&
            std::string_view(text).substr(kept - sub.size(), sub.size()) == sub) {
            kept -= sub.size();
        }
    }
    text.resize(kept);
}

std::string replaceAll(const std::string& text, char from, char to) {
    std::string result(text);
    std::replace(result.begin(), result.end(), from, to);
    return result;
}

std::string replaceLastOccurrence(const std::string& text, const char& from, const char& to) {
    std::string result(text);
    const size_t last = result.rfind(from);
    if (last != std::string::npos) {
        result[last] = to;
    }
    return result;
}

}  // namespace StringUtils
