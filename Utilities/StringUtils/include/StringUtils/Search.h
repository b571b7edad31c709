// Prefix and suffix tests, substring search and in-place or copying edits. All
// comparisons are exact and case-sensitive unless the name says otherwise.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace StringUtils {

// True when text begins / ends with the affix; an empty affix always matches, a
// longer one never does.
bool startsWith(const std::string& text, const std::string& prefix);
bool startsWith(const std::wstring& text, const std::wstring& prefix);
bool endsWith(const std::string& text, const std::string& suffix);
bool endsWith(const std::wstring& text, const std::wstring& suffix);

// True when text ends with at least one of suffixes; false for an empty list.
bool endsWithAny(const std::string& text, const std::vector<std::string>& suffixes);
bool endsWithAny(const std::wstring& text, const std::vector<std::wstring>& suffixes);

// The first byte equals c; an empty text starts with its terminating NUL.
bool startsWithCharacter(const std::string& text, char c);

// The first byte is an ASCII digit; false for an empty text.
bool startsWithDigit(const std::string& text);

// Every search for sub below takes time linear in the lengths of text and sub,
// whatever their content.

// True with position set to the first occurrence of sub (0 for an empty sub);
// false with position untouched when sub does not occur.
bool findSubStringLocation(const std::string& text, const std::string& sub, size_t& position);

// True when sub is empty or occurs in text.
bool findSubStringCaseSensitive(const std::string& text, const std::string& sub);

// As findSubStringCaseSensitive after byte-wise toLower of both texts, so which
// letters compare without regard to case follows the process's current C locale
// (ASCII letters in the classic locale; not I and i under tr_TR.UTF-8).
bool findSubStringCaseInsensitive(const std::string& text, const std::string& sub);

// Removes sub from text until it no longer occurs, including occurrences that an
// erasure forms ("aabb" without "ab" is ""). An empty sub leaves text unchanged.
void eraseSubString(std::string& text, const std::string& sub);

// A copy with every from replaced by to. Never fails.
std::string replaceAll(const std::string& text, char from, char to);

// A copy with only the last from replaced by to; unchanged without from.
std::string replaceLastOccurrence(const std::string& text, const char& from, const char& to);

}  // namespace StringUtils
