#include "StringUtils/Presentation.h"

#include "StringUtils/Extract.h"
#include "StringUtils/Split.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace StringUtils {
namespace {

constexpr std::string_view kHtmlNoBreakSpace = "&nbsp;";
constexpr std::string_view kUtf8NoBreakSpace = "\xC2\xA0";
constexpr std::uint32_t kMaxCodePoint = 0x10FFFF;

constexpr bool isContinuationByte(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The first `width` UTF-8 characters of word.
std::string cutWord(std::string_view word, unsigned int width) {
    return substr(std::string(word), 0, width);
}

// The payload bits of a byte that begins a character.
std::uint32_t leadBits(unsigned char byte) {
    if (byte < 0x80) {
        return byte;
    }
    if (byte < 0xE0) {
        return byte & 0x1FU;
    }
    if (byte < 0xF0) {
        return byte & 0x0FU;
    }
    return byte & 0x07U;
}

}  // namespace

std::vector<std::string> wordWrapString(const std::string& text, unsigned int width) {
    if (width == 0) {
        return {};
    }
    const auto words = splitToViews(text, ' ', false);
    std::vector<std::string> lines(1);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        std::string& line = lines.back();
        const std::size_t gap = line.empty() ? 0 : 1;
        if (gap + line.size() + word.size() <= width) {
            line.append(gap, ' ').append(word);
        } else if (line.empty()) {
            line = cutWord(word, width);
            if (i + 1 < words.size()) {
                lines.emplace_back();
            }
        } else {
            lines.push_back(word.size() <= width ? std::string(word) : cutWord(word, width));
        }
    }
    return lines;
}

std::string controlWidowOrphanWords(const std::string& text, bool useHtmlEntity,
                                    std::size_t joinedWords) {
    if (joinedWords < 2 || text.empty()) {
        return text;
    }
    const auto words = splitToViews(text, ' ', true);
    const std::size_t n = words.size();
    if (joinedWords > n / 2) {
        return text;
    }
    const std::string_view joiner = useHtmlEntity ? kHtmlNoBreakSpace : kUtf8NoBreakSpace;
    std::string result;
    result.reserve(text.size() + 2 * joinedWords * joiner.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (i != 0) {
            const std::size_t gap = i - 1;
            const bool bound = gap < joinedWords - 1 || gap >= n - joinedWords;
            result.append(bound ? joiner : std::string_view(" "));
        }
        result.append(words[i]);
    }
    return result;
}

std::size_t wordCount(const std::string& text) {
    return text.empty() ? 0
                        : static_cast<std::size_t>(std::count(text.begin(), text.end(), ' ')) + 1;
}

std::pair<std::size_t, std::size_t> getUTF8toISO8859_1CharacterCounts(const std::string& text) {
    std::pair<std::size_t, std::size_t> counts{0, 0};
    const char* const bytes = text.c_str();  // ends in a zero byte after the last one
    std::uint32_t value = 0;
    for (std::size_t i = 0; bytes[i] != '\0'; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        value = isContinuationByte(byte) ? value * 64 + (byte & 0x3FU) : leadBits(byte);
        if (isContinuationByte(static_cast<unsigned char>(bytes[i + 1]))) {
            continue;
        }
        if (value <= 0xFF) {
            ++counts.first;
        } else if (value <= kMaxCodePoint) {
            ++counts.second;
        }
    }
    return counts;
}

std::size_t getUTF8CharacterLength(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return !isContinuationByte(static_cast<unsigned char>(c));
    }));
}

std::string firstUtf8CodePoint(const std::string& text) {
    if (text.empty()) {
        return {};
    }
    std::size_t end = 1;
    while (end < text.size() && isContinuationByte(static_cast<unsigned char>(text[end]))) {
        ++end;
    }
    return text.substr(0, end);
}

std::string truncateBytes(const std::string& text, std::size_t maxBytes) {
    if (maxBytes == 0) {
        return {};
    }
    if (text.size() <= maxBytes) {
        return text;
    }
    if (!isContinuationByte(static_cast<unsigned char>(text[maxBytes]))) {
        return text.substr(0, maxBytes);
    }
    // A character straddles the cut: find where it (or the stray bytes) began.
    for (std::size_t i = maxBytes; i-- > 0;) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (!isContinuationByte(byte)) {
            return text.substr(0, byte < 0x80 ? i + 1 : i);
        }
    }
    return {};
}

}  // namespace StringUtils
