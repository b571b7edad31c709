// Trimming, case, searching, extraction, path and file-name helpers on any text,
// narrow and wide, against plain references. The text is cut at its first zero
// byte into a short pattern and the text proper. The locale-free functions must
// agree under the classic and a non-C locale; the byte-wise case functions must
// follow the non-C locale's tolower / toupper.
#include "FuzzCheck.h"
#include "Reference.h"
#include "WellFormed.h"
#include "StringUtils/Case.h"
#include "StringUtils/Encoding.h"
#include "StringUtils/Extract.h"
#include "StringUtils/HexAndFileName.h"
#include "StringUtils/PathsAndVersions.h"
#include "StringUtils/Search.h"
#include "StringUtils/Trim.h"
#include "Widen.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

using fuzzcheck::require;
using namespace StringUtils;

namespace {

bool isAsciiSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

void checkTrimAndAffixes(const std::string& text, const std::string& sub) {
    const TrimmedParts parts = trimEx(text);
    require(parts.leading + parts.middle + parts.trailing == text, "trimmed parts make the text");
    const auto first = std::find_if_not(text.begin(), text.end(), isAsciiSpace);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isAsciiSpace).base();
    const std::string trimmed = first < last ? std::string(first, last) : std::string();
    require(trim(text) == trimmed && trim(std::string(text)) == trimmed &&
                trimLeft(text) == std::string(first, text.end()) &&
                trimRight(text) == std::string(text.begin(), last),
            "trims cut ASCII white space only");
    require(allCharsSpaces(text) == (first == text.end()) &&
                containsWhiteSpace(text) == std::any_of(text.begin(), text.end(), isAsciiSpace),
            "white-space tests");
    for (const char c : text) {
        require(isSpace(c) == isAsciiSpace(c) &&
                    isSpace(static_cast<wchar_t>(static_cast<unsigned char>(c))) ==
                        (isAsciiSpace(c) || static_cast<unsigned char>(c) == 0xA0),
                "isSpace is the ASCII class (and U+00A0 wide)");
    }
    require(startsWithCharacter(text, sub.c_str()[0]) == (text.c_str()[0] == sub.c_str()[0]) &&
                startsWithDigit(text) == (text.c_str()[0] >= '0' && text.c_str()[0] <= '9'),
            "first-character tests");
    const std::wstring wideText = widen(text), wideSub = widen(sub);
    require(startsWith(text, sub) == text.starts_with(sub) &&
                endsWith(text, sub) == text.ends_with(sub) &&
                startsWith(wideText, wideSub) == text.starts_with(sub) &&
                endsWith(wideText, wideSub) == text.ends_with(sub),
            "affix tests, narrow and wide");
    require(endsWithAny(text, {"", sub}) && !endsWithAny(text, {}) &&
                endsWithAny(wideText, {wideSub}) == text.ends_with(sub),
            "endsWithAny is endsWith of any entry");
}

void checkSearchAndEdits(const std::string& text, const std::string& sub) {
    const size_t found = text.find(sub);
    size_t position = 12345;
    require(findSubStringLocation(text, sub, position) == (found != std::string::npos) &&
                position == (found == std::string::npos ? 12345 : found) &&
                findSubStringCaseSensitive(text, sub) == (found != std::string::npos),
            "the searches find what std::string::find finds");
    std::string erased = text;
    eraseSubString(erased, sub);
    require(erased == reference::eraseRepeatedly<char>(text, sub), "erasure is repeated erasure");
    const char from = sub.c_str()[0], to = static_cast<char>(text.size());
    std::string replaced = text;
    std::replace(replaced.begin(), replaced.end(), from, to);
    require(replaceAll(text, from, to) == replaced, "replaceAll replaces every byte");
    std::string lastReplaced = text;
    if (const size_t at = text.rfind(from); at != std::string::npos) {
        lastReplaced[at] = to;
    }
    require(replaceLastOccurrence(text, from, to) == lastReplaced, "only the last byte is replaced");
    const std::string start = sub.substr(0, sub.size() / 2), end = sub.substr(sub.size() / 2);
    std::string between;
    if (const size_t at = start.empty() ? 0 : text.find(start); at != std::string::npos && !end.empty()) {
        const size_t begin = at + start.size(), stop = text.find(end, begin);
        between = text.substr(begin, stop == std::string::npos ? stop : stop - begin);
    }
    require(substr(text, start, end) == between, "the text between the markers");
}

void checkByteWiseCase(const std::string& text, const std::string& sub, size_t index) {
    const fuzzcheck::InLocale in(fuzzcheck::fuzzingLocale());
    const auto mapped = [](std::string s, int (*map)(int)) {
        for (char& c : s) c = static_cast<char>(map(static_cast<unsigned char>(c)));
        return s;
    };
    const std::string lower = mapped(text, std::tolower), upper = mapped(text, std::toupper);
    require(toLower(text) == lower && toUpper(text) == upper,
            "byte-wise case is the current locale's tolower / toupper");
    std::string one = text;
    if (index < one.size()) one[index] = upper[index];
    require(toUpper(text, index) == one, "toUpper(text, index) maps one byte");
    require(findSubStringCaseInsensitive(text, sub) ==
                (lower.find(mapped(sub, std::tolower)) != std::string::npos),
            "case-insensitive search is a search of the lowered texts");
    std::wstring wide = widen(text) + wchar_t{0x141}, wideLower = widen(lower) + wchar_t{0x141};
    require(toLower(wide) == wideLower && toUpper(wide) == widen(upper) + wchar_t{0x141},
            "wide byte-wise case maps byte values only");
}

void checkLocaleAwareCase(const std::string& text) {
    const std::wstring wide = widen(text);
    require(toLowerWithLocal(wide).size() == wide.size() &&
                toUpperWithLocal(wide).size() == wide.size(),
            "wide locale-aware case maps element by element");
    try {
        const std::string lower = toLowerWithLocal(text), upper = toUpperWithLocal(text);
        require(reference::isWellFormedUtf8(text) && reference::isWellFormedUtf8(lower) &&
                    reference::isWellFormedUtf8(upper),
                "locale-aware case keeps UTF-8 well-formed");
        if (std::all_of(text.begin(), text.end(), [](char c) { return c > 0; })) {
            std::string asciiLower = text;
            for (char& c : asciiLower) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
            require(lower == asciiLower, "ASCII text lowers as ASCII in the test's UTF-8 locale");
        }
    } catch (const std::range_error&) {
        require(!reference::isWellFormedUtf8(text), "only malformed UTF-8 throws");
    }
}

void checkPathsAndBuffers(const std::string& text, const std::string& sub, size_t size) {
    const std::string stem = removeFileExtension(text);
    require(fuzzcheck::isPrefix(stem, text) &&
                (stem == text || text[stem.size()] == '.'),
            "an extension is cut off at the last dot");
    require(replaceFileExtension(text, sub) == (stem == text ? text : stem + "." + sub),
            "the extension after the last dot is replaced");
    require(!(greaterVersion(text, sub) && greaterVersion(sub, text)),
            "no two versions are greater than each other");
    require(substitutePrefix(widen(text), widen(sub), L"x") ==
                widen(substitutePrefix(text, sub, "x")),
            "substitutePrefix alike narrow and wide");
    for (const bool sorted : {false, true}) {
        for (const auto& [open, close] : getPairedDelimitersPositions(text, '(', ')', sorted)) {
            require(open < close && text[open] == '(' && text[close] == ')',
                    "pairs are delimiters");
        }
    }
    const std::string_view path(text);
    const size_t slash = path.find_last_of("/\\");
    const std::string_view name = slash == path.npos ? path : path.substr(slash + 1);
    require(filenameFromPath(text) == name && lastPathComponent(text) == name,
            "the text after the last separator");
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%x", static_cast<unsigned>(size * 2654435761U));
    require(toHexString(static_cast<int>(size * 2654435761U)) == hex, "hexadecimal as printf");
    require(substr(text, static_cast<unsigned>(size % 7), size % 5).size() <= text.size(),
            "a part is not longer");
    std::array<char, 8> buffer{};
    const size_t room = size % (buffer.size() + 1), length = std::strlen(text.c_str());
    require(copy(buffer.data(), room, text.c_str()) == (room > length),
            "copy succeeds when the text and its terminator fit");
    require(copyn(buffer.data(), room, text.c_str()) == (room == 0 ? 0 : std::min(room - 1, length)),
            "copyn copies what fits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = fuzzcheck::text(data, size);
    const auto zero = input.find('\0');
    const std::string sub = zero == std::string::npos ? std::string() : input.substr(0, zero);
    const std::string text = zero == std::string::npos ? input : input.substr(zero + 1);
    fuzzcheck::sameInEveryLocale(
        [&] {
            checkTrimAndAffixes(text, sub);
            checkSearchAndEdits(text, sub);
            checkPathsAndBuffers(text, sub, size);
            return 0;
        },
        "the locale-free text functions check out in every locale");
    checkByteWiseCase(text, sub, size % 8);
    // Builds the user's locale (milliseconds) on every call: one input length in 64
    // keeps the rate up.
    if (size % 64 == 1 && size > 64) {
        checkLocaleAwareCase(text);
    }
    return 0;
}
