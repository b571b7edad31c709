// Trimming, case, searching, extraction and path helpers on any text. The text
// is cut at its first zero byte into a short pattern and the text proper.
#include "FuzzCheck.h"
#include "StringUtils/Case.h"
#include "StringUtils/Extract.h"
#include "StringUtils/PathsAndVersions.h"
#include "StringUtils/Search.h"
#include "StringUtils/Trim.h"

#include <array>
#include <cstdint>

using fuzzcheck::require;
using namespace StringUtils;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = fuzzcheck::text(data, size);
    const auto zero = input.find('\0');
    const std::string sub = zero == std::string::npos ? std::string() : input.substr(0, zero);
    const std::string text = zero == std::string::npos ? input : input.substr(zero + 1);

    const TrimmedParts parts = trimEx(text);
    require(parts.leading + parts.middle + parts.trailing == text, "trimmed parts make the text");
    require(trim(text) == trimLeft(trimRight(text)), "trim is both trims");
    require(toLower(text).size() == text.size() && toUpper(text).size() == text.size(),
            "byte-wise case keeps the length");
    require(findSubStringCaseSensitive(text, sub) == (text.find(sub) != std::string::npos),
            "case-sensitive search finds what find finds");
    findSubStringCaseInsensitive(text, sub);
    require(startsWith(text, sub) == text.starts_with(sub) &&
                endsWith(text, sub) == text.ends_with(sub),
            "affix tests");
    std::string erased = text;
    eraseSubString(erased, sub);
    require(sub.empty() || erased.find(sub) == std::string::npos, "no occurrence is left");

    require(substr(text, size % 7, size % 5).size() <= text.size(), "a part is not longer");
    require(fuzzcheck::isPrefix(removeFileExtension(text), text), "an extension is cut off");
    replaceFileExtension(text, sub);
    greaterVersion(text, sub);
    substitutePrefix(text, sub, "x");
    for (const bool sorted : {false, true}) {
        for (const auto& [open, close] : getPairedDelimitersPositions(text, '(', ')', sorted)) {
            require(open < close && text[open] == '(' && text[close] == ')',
                    "pairs are delimiters");
        }
    }
    std::array<char, 8> buffer{};
    copy(buffer.data(), size % (buffer.size() + 1), text.c_str());
    copyn(buffer.data(), size % (buffer.size() + 1), text.c_str());
    return 0;
}
