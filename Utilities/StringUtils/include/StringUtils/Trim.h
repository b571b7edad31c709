// White space at the ends of a text, and white-space tests. White space is the
// ASCII set space, \t, \n, \v, \f, \r; a byte of 0x80 or above never is.
#pragma once

#include <string>
#include <string_view>

namespace StringUtils {

// The text without leading / trailing / both kinds of white space. The &&
// overloads reuse the argument's storage and leave it empty. Never fail.
std::string trimLeft(const std::string& text);
std::string trimLeft(std::string&& text);
std::string trimRight(const std::string& text);
std::string trimRight(std::string&& text);
std::string trim(const std::string& text);
std::string trim(std::string&& text);

// The three parts of a text around its core: leading run, core, trailing run.
struct TrimmedParts {
    std::string leading;   // the leading run
    std::string middle;    // the core
    std::string trailing;  // the trailing run
    bool operator==(const TrimmedParts&) const = default;  // equal part by part
};

// Splits text into its leading run of " \t\f\n\r" (no \v), the text between and
// the trailing run; the three joined give text back. A text made only of that set
// is all leading. Never fails.
TrimmedParts trimEx(const std::string& text);

// True for the six white-space characters.
bool isSpace(char c);

// True for the six white-space characters and U+00A0 (no-break space).
bool isSpace(wchar_t c);

// True when every byte is white space, also for an empty text.
bool allCharsSpaces(const std::string_view& text);

// True when at least one byte is white space; false for an empty text.
bool containsWhiteSpace(const std::string& text);

}  // namespace StringUtils
