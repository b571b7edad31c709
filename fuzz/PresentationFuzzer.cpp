// The presentation and sanitizing functions against their invariants. The first
// byte is the width, joined-word count and byte budget; the rest is the text.
#include "FuzzCheck.h"
#include "Reference.h"
#include "StringUtils/Presentation.h"
#include "StringUtils/Sanitizing.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

using fuzzcheck::require;
using namespace StringUtils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned int control = data[0];
    const std::string text = fuzzcheck::text(data + 1, size - 1);

    const auto lines = wordWrapString(text, control);
    require(control == 0 ? lines.empty() : !lines.empty(), "width 0 gives no lines");
    for (const std::string& line : lines) {
        require(line.size() <= control || line.find(' ') == std::string::npos,
                "only a cut word is wider than the width");
    }
    const std::string joined = fuzzcheck::sameInEveryLocale(
        [&] { return controlWidowOrphanWords(text, (control & 1) != 0, control % 5); },
        "joining words ignores the locale");
    require(joined.size() <= text.size() * 3 + 1, "joiners replace spaces");
    const auto spaces = static_cast<std::size_t>(std::count(text.begin(), text.end(), ' '));
    require(wordCount(text) == (text.empty() ? 0 : spaces + 1), "words are spaces plus one");
    const auto [latin, beyond] = getUTF8toISO8859_1CharacterCounts(text);
    require(latin + beyond <= text.size(), "at most one character per byte");
    require(getUTF8CharacterLength(text) <= text.size(), "characters are at most bytes");
    require(fuzzcheck::isPrefix(firstUtf8CodePoint(text), text), "the first character is a prefix");
    const std::string cut = truncateBytes(text, control);
    require(cut.size() <= control && fuzzcheck::isPrefix(cut, text), "a cut is a short prefix");

    const std::string sanitized = fuzzcheck::sameInEveryLocale(
        [&] { return sanatizeStatusString(text); }, "sanitizing ignores the locale");
    require(sanitized.find_first_of("\n\t\r") == std::string::npos, "no control characters left");
    require(sanitized == reference::sanitizeStatusByRepeatedErase(text),
            "tokens go as by repeated erasure");
    const std::string hidden = hideString(text);
    require(
        text.empty() ? hidden.empty() : hidden.ends_with("(" + std::to_string(text.size()) + ")"),
        "the masked form ends with the length");
    std::uint64_t mask = 0;
    for (const char c : text) {
        mask = mask * 31 + static_cast<std::uint64_t>(static_cast<signed char>(c));
    }
    require(maskString(text) == mask, "the fingerprint is h * 31 + signed byte");
    require(getHtmlErrorTemplate() == "<html><title>%1</title><p>%2</p></html>",
            "the error template");
    const std::string listed = text.substr(0, control % 4);
    const std::string escaped = escapeCharacters(text, listed, '\\');
    const auto escapes = static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [&](char c) { return listed.find(c) != std::string::npos; }));
    require(escaped.size() == text.size() + escapes, "one escape per listed byte");
    return 0;
}
