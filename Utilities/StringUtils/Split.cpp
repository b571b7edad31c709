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

template <typename CharT>
Views<CharT> splitAtString(std::basic_string_view<CharT> text,
                           const std::basic_string<CharT>& delimiter, bool skipEmpty) {
    detail::PatternFinder<CharT> finder(delimiter);
    const auto findFrom = [&finder](std::basic_string_view<CharT> all, size_t from) {
        return finder.find(all, from);
    };
    return splitAt(text, delimiter.size(), findFrom, SplitUtils::countWords(text, delimiter) + 1,
                   skipEmpty);
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
