#include "StringUtils/Search.h"

#include <algorithm>
#include <string_view>

#include "StringUtils/AsciiClass.h"
#include "StringUtils/CaseBlindSearch.h"
#include "StringUtils/Case.h"
#include "StringUtils/ClassicCase.h"
#include "StringUtils/TextSearch.h"

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
    return detail::isAsciiDigit(text.c_str()[0]);
}

bool findSubStringLocation(const std::string& text, const std::string& sub, size_t& position) {
    const size_t found = detail::findPattern<char>(text, sub);
    if (found == std::string::npos) {
        return false;
    }
    position = found;
    return true;
}

bool findSubStringCaseSensitive(const std::string& text, const std::string& sub) {
    return detail::findPattern<char>(text, sub) != std::string::npos;
}

bool findSubStringCaseInsensitive(const std::string& text, const std::string& sub) {
    if (detail::classicCharacterFunctions()) {
        const detail::AsciiCaseBlindMatch match = detail::findAsciiCaseBlind(text, sub);
        if (match != detail::AsciiCaseBlindMatch::tooCostly) {
            return match == detail::AsciiCaseBlindMatch::found;
        }
    }
    return findSubStringCaseSensitive(toLower(text), toLower(sub));
}

void eraseSubString(std::string& text, const std::string& sub) {
    detail::eraseAllOccurrences<char>(text, sub);
}

std::string replaceAll(const std::string& text, char from, char to) {
    std::string result(text);
    // Every byte written, without a branch, so that many go at once.
    for (char& c : result) {
        c = c == from ? to : c;
    }
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
