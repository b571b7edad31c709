#include "StringUtils/Split.h"

#include <algorithm>

#include "StringUtils/TextSearch.h"
#include "StringUtils/Trim.h"

namespace StringUtils {

namespace {

template <typename CharT>
using Views = std::vector<std::basic_string_view<CharT>>;

// The one delimiter split behind every splitToViews and split: fields between
// non-overlapping matches found left to right, the last field always taken, the
// result sized once to expectedCount. findFrom(text, position) finds the next
// delimiter of delimiterLength elements.
template <typename CharT, typename FindFrom>
Views<CharT> splitAt(std::basic_string_view<CharT> text, size_t delimiterLength, FindFrom findFrom,
                     size_t expectedCount, bool skipEmpty) {
    Views<CharT> fields;
    if (text.empty()) {
        return fields;
    }
    if (delimiterLength == 0) {
        fields.push_back(text);
        return fields;
    }
    fields.reserve(expectedCount);
    size_t start = 0;
    for (size_t match; (match = findFrom(text, start)) != text.npos;) {
        if (!skipEmpty || match != start) {
            fields.push_back(text.substr(start, match - start));
        }
        start = match + delimiterLength;
    }
    if (!skipEmpty || start != text.size()) {
        fields.push_back(text.substr(start));
    }
    return fields;
}

template <typename CharT>
Views<CharT> splitAtCharacter(std::basic_string_view<CharT> text, CharT delimiter, bool skipEmpty) {
    const auto count = static_cast<size_t>(std::count(text.begin(), text.end(), delimiter));
    const auto findFrom = [delimiter](std::basic_string_view<CharT> all, size_t from) {
        return all.find(delimiter, from);
    };
    return splitAt(text, 1, findFrom, count + 1, skipEmpty);
}

// The split at a string delimiter, searching the text once: the fields are
// gathered first (in a local buffer while they fit) and then moved to a list
// sized as SplitUtils::countWords plus one. Where no match directly follows the
// one before it, that count is the number of matches the split found; else
// (rare: two delimiters in a row) it is counted again.
template <typename CharT>
Views<CharT> splitAtString(std::basic_string_view<CharT> text,
                           const std::basic_string<CharT>& delimiter, bool skipEmpty) {
    using View = std::basic_string_view<CharT>;
    Views<CharT> fields;
    if (text.empty()) {
        return fields;
    }
    if (delimiter.empty()) {
        fields.push_back(text);
        return fields;
    }
    constexpr size_t kLocal = 32;
    View local[kLocal];
    size_t localCount = 0;
    Views<CharT> spilled;
    const auto keep = [&](View field) {
        if (skipEmpty && field.empty()) {
            return;
        }
        if (localCount < kLocal) {
            local[localCount++] = field;
            return;
        }
        if (spilled.empty()) {
            spilled.reserve(8 * kLocal);
            spilled.assign(local, local + kLocal);
        }
        spilled.push_back(field);
    };
    detail::PatternFinder<CharT> finder(delimiter);
    size_t matches = 0;
    bool adjacent = false;
    size_t start = 0;
    for (size_t match; (match = finder.find(text, start)) != View::npos;) {
        adjacent = adjacent || (matches != 0 && match == start);
        ++matches;
        keep(text.substr(start, match - start));
        start = match + delimiter.size();
    }
    keep(text.substr(start));
    fields.reserve((adjacent ? SplitUtils::countWords(text, delimiter) : matches) + 1);
    // One at a time, so that a list longer than its reservation grows as it did
    // when the fields were appended directly.
    const View* const first = spilled.empty() ? local : spilled.data();
    const size_t count = spilled.empty() ? localCount : spilled.size();
    for (size_t i = 0; i < count; ++i) {
        fields.push_back(first[i]);
    }
    return fields;
}

// Pieces of chunkSize bytes, the rest last; chunkSize is compared with the length
// as an unsigned number, so a negative one exceeds every text.
Views<char> splitIntoChunks(std::string_view text, int chunkSize) {
    Views<char> pieces;
    if (text.empty()) {
        return pieces;
    }
    const auto size = static_cast<size_t>(static_cast<long long>(chunkSize));
    const size_t fullPieces = size == 0 ? 0 : text.size() / size;
    if (text.size() >= size) {
        pieces.reserve(fullPieces + 2);
        for (size_t i = 0; i < std::max<size_t>(fullPieces, 1); ++i) {
            pieces.push_back(text.substr(i * size, size));
        }
    }
    if (size == 0 || text.size() % size != 0) {
        pieces.push_back(text.substr(fullPieces * size));
    }
    return pieces;
}

// Counts matches of delimiter as SplitUtils::countWords does, one finder for all.
template <typename CharT>
size_t countSpacedMatches(std::basic_string_view<CharT> text,
                          std::basic_string_view<CharT> delimiter) {
    detail::PatternFinder<CharT> finder(delimiter);
    size_t count = 0;
    for (size_t position = 0; position < text.size();) {
        const size_t match = finder.find(text, position);
        if (match == text.npos) {
            break;
        }
        ++count;
        position = match + delimiter.size() + 1;
    }
    return count;
}

}  // namespace

std::vector<std::string_view> splitToViews(const std::string& text, char delimiter,
                                           bool skipEmpty) {
    return splitAtCharacter<char>(text, delimiter, skipEmpty);
}

std::vector<std::string_view> splitToViews(const std::string_view& text, char delimiter,
                                           bool skipEmpty) {
    return splitAtCharacter(text, delimiter, skipEmpty);
}

std::vector<std::wstring_view> splitToViews(const std::wstring& text, wchar_t delimiter,
                                            bool skipEmpty) {
    return splitAtCharacter<wchar_t>(text, delimiter, skipEmpty);
}

std::vector<std::string_view> splitToViews(const std::string& text, const std::string& delimiter,
                                           bool skipEmpty) {
    return splitAtString<char>(text, delimiter, skipEmpty);
}

std::vector<std::string_view> splitToViews(const std::string_view& text,
                                           const std::string& delimiter, bool skipEmpty) {
    return splitAtString(text, delimiter, skipEmpty);
}

std::vector<std::wstring_view> splitToViews(const std::wstring& text, const std::wstring& delimiter,
                                            bool skipEmpty) {
    return splitAtString<wchar_t>(text, delimiter, skipEmpty);
}

std::vector<std::string> split(const std::string& text, char delimiter, bool skipEmpty) {
    return stringViewsToStrings(splitToViews(text, delimiter, skipEmpty));
}

std::vector<std::string> split(const std::string& text, const std::string& delimiter,
                               bool skipEmpty) {
    return stringViewsToStrings(splitToViews(text, delimiter, skipEmpty));
}

std::vector<std::wstring> split(const std::wstring& text, wchar_t delimiter, bool skipEmpty) {
    return stringViewsToStrings(splitToViews(text, delimiter, skipEmpty));
}

std::vector<std::wstring> split(const std::wstring& text, const std::wstring& delimiter,
                                bool skipEmpty) {
    return stringViewsToStrings(splitToViews(text, delimiter, skipEmpty));
}

std::vector<std::string> split(const std::string& text, int chunkSize, bool skipEmpty) {
    auto pieces = splitIntoChunks(text, chunkSize);
    if (skipEmpty) {
        std::erase_if(pieces, allCharsSpaces);
    }
    return stringViewsToStrings(pieces);
}

std::string join(const std::vector<std::string>& items, const std::string& separator) {
    return join<char>(items, separator);
}

std::wstring join(const std::vector<std::wstring>& items, const std::wstring& separator) {
    return join<wchar_t>(items, separator);
}

}  // namespace StringUtils

namespace SplitUtils {

size_t countDelimiterMatches(std::string_view text, std::string_view delimiter) {
    return StringUtils::countSpacedMatches(text, delimiter);
}

size_t countDelimiterMatches(std::wstring_view text, std::wstring_view delimiter) {
    return StringUtils::countSpacedMatches(text, delimiter);
}

}  // namespace SplitUtils
