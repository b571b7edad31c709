// Cutting text into fields at a delimiter or into fixed-length pieces, and joining
// fields back. Fields come as views into the caller's text (splitToViews) or as
// owned strings (split). A delimiter split of an empty text has no fields; of any
// other text, one field more than there are non-overlapping delimiter matches,
// found left to right. skipEmpty removes the empty fields afterwards.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace SplitUtils {

// Lengths of a delimiter in elements.
inline size_t getLength(const char&) { return 1; }
inline size_t getLength(const wchar_t&) { return 1; }
inline size_t getLength(const std::string& delimiter) { return delimiter.size(); }
inline size_t getLength(const std::wstring& delimiter) { return delimiter.size(); }

// A cheap estimate of the delimiter matches in text, used to size a split's
// result once: matches that start right after the previous one are not counted,
// and an empty delimiter counts every element. 0 for an empty text. This form,
// for a string delimiter, searches in time linear in text and delimiter and
// throws only std::bad_alloc.
size_t countDelimiterMatches(std::string_view text, std::string_view delimiter);
size_t countDelimiterMatches(std::wstring_view text, std::wstring_view delimiter);

// The same estimate for any text and delimiter type; throws only what
// countDelimiterMatches throws.
template <typename Text, typename Delimiter>
size_t countWords(const Text& text, const Delimiter& delimiter) {
    using CharT = typename Text::value_type;
    if constexpr (std::is_same_v<Delimiter, CharT>) {
        size_t count = 0;
        for (size_t position = 0; position < text.size();) {
            const size_t match = text.find(delimiter, position);
            if (match == Text::npos) {
                break;
            }
            ++count;
            position = match + 2;
        }
        return count;
    } else {
        return countDelimiterMatches(std::basic_string_view<CharT>(text),
                                     std::basic_string_view<CharT>(delimiter));
    }
}

}  // namespace SplitUtils

namespace StringUtils {

// The fields of text at every delimiter, as views into text: no character is
// copied and the list is allocated once. The views live as long as text does, so
// temporaries are refused. Never fail.
std::vector<std::string_view> splitToViews(const std::string& text, char delimiter, bool skipEmpty);
std::vector<std::string_view> splitToViews(const std::string_view& text, char delimiter,
                                           bool skipEmpty);
std::vector<std::wstring_view> splitToViews(const std::wstring& text, wchar_t delimiter,
                                            bool skipEmpty);
// An empty delimiter gives the whole text as the only field. The delimiter is
// searched in time linear in text and delimiter, whatever their content.
std::vector<std::string_view> splitToViews(const std::string& text, const std::string& delimiter,
                                           bool skipEmpty);
std::vector<std::string_view> splitToViews(const std::string_view& text,
                                           const std::string& delimiter, bool skipEmpty);
std::vector<std::wstring_view> splitToViews(const std::wstring& text, const std::wstring& delimiter,
                                            bool skipEmpty);
std::vector<std::string_view> splitToViews(std::string&& text, char delimiter,
                                           bool skipEmpty) = delete;
std::vector<std::string_view> splitToViews(std::string&& text, const std::string& delimiter,
                                           bool skipEmpty) = delete;
std::vector<std::wstring_view> splitToViews(std::wstring&& text, wchar_t delimiter,
                                            bool skipEmpty) = delete;
std::vector<std::wstring_view> splitToViews(std::wstring&& text, const std::wstring& delimiter,
                                            bool skipEmpty) = delete;

// One owned copy of each view, in order. Never fails.
template <typename CharT>
std::vector<std::basic_string<CharT>> stringViewsToStrings(
    const std::vector<std::basic_string_view<CharT>>& views) {
    return {views.begin(), views.end()};
}

// The fields of splitToViews as owned strings. Never fail.
std::vector<std::string> split(const std::string& text, char delimiter, bool skipEmpty);
std::vector<std::string> split(const std::string& text, const std::string& delimiter,
                               bool skipEmpty);
std::vector<std::wstring> split(const std::wstring& text, wchar_t delimiter, bool skipEmpty);
std::vector<std::wstring> split(const std::wstring& text, const std::wstring& delimiter,
                                bool skipEmpty);

// text cut into pieces of chunkSize bytes, the last one shorter (byte positions,
// so a UTF-8 character may be divided). chunkSize 0 gives an empty piece and the
// whole text; a negative one gives the whole text. skipEmpty drops the pieces
// that are empty after trimRight. Never fails.
std::vector<std::string> split(const std::string& text, int chunkSize, bool skipEmpty);

// The items with separator between each two of them, none at the ends; empty for
// an empty list. Never fails.
template <typename CharT, typename Container, typename Separator>
std::basic_string<CharT> join(const Container& items, const Separator& separator) {
    std::basic_string<CharT> result;
    if (items.empty()) {
        return result;
    }
    const std::basic_string_view<CharT> separatorView(separator);
    size_t length = separatorView.size() * (items.size() - 1);
    for (const auto& item : items) {
        length += std::basic_string_view<CharT>(item).size();
    }
    result.reserve(length);
    bool first = true;
    for (const auto& item : items) {
        if (!first) {
            result.append(separatorView);
        }
        result.append(item);
        first = false;
    }
    return result;
}

// The items with separator between each two; empty for no items.
std::string join(const std::vector<std::string>& items, const std::string& separator);
std::wstring join(const std::vector<std::wstring>& items, const std::wstring& separator);

}  // namespace StringUtils
