// Searching text for a caller-supplied pattern in time linear in the lengths of
// text and pattern, whatever their shape; the one search behind every string
// function of the library that looks for a pattern (narrow and wide alike).
// Internal to the string library.
//
// The ordinary case keeps the speed of the standard search: candidates are found
// by the pattern's first element (memchr / wmemchr) and checked in place. The
// work spent on checks is counted, and once it exceeds a small constant per text
// element passed, the search goes on with Knuth-Morris-Pratt from the current
// candidate, so a hostile pair ('a' x n against 'a' x n/2 + 'b') costs O(n + m)
// instead of O(n * m).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace StringUtils::detail {

template <typename CharT>
class PatternFinder {
public:
    using View = std::basic_string_view<CharT>;

    // pattern must outlive the finder. Never fails.
    explicit PatternFinder(View pattern) noexcept : pattern_(pattern) {}

    // The first position at or after from where the pattern occurs in text;
    // from itself for an empty pattern; npos when there is none or from is past
    // the end of text. Throws only std::bad_alloc (the pattern's table, built at
    // most once per finder, the first time a search needs it).
    std::size_t find(View text, std::size_t from = 0);

    // The length of the longest proper prefix of the pattern that is also a
    // suffix of its first i + 1 elements, for every i. Built on first use.
    const std::vector<std::size_t>& borders();

private:
    std::size_t findWithBorders(View text, std::size_t from);

    View pattern_;
    std::vector<std::size_t> borders_;
};

// PatternFinder(pattern).find(text, from).
template <typename CharT>
std::size_t findPattern(std::basic_string_view<CharT> text, std::basic_string_view<CharT> pattern,
                        std::size_t from = 0) {
    return PatternFinder<CharT>(pattern).find(text, from);
}

// Removes the leftmost occurrence of pattern from text and searches again from
// the start, until none is left (so occurrences formed by a removal go too), in
// place and in time linear in text and pattern. An empty pattern leaves text
// unchanged. Throws only std::bad_alloc.
template <typename CharT>
void eraseAllOccurrences(std::basic_string<CharT>& text, std::basic_string_view<CharT> pattern);

extern template class PatternFinder<char>;
extern template class PatternFinder<wchar_t>;
extern template void eraseAllOccurrences<char>(std::string&, std::string_view);

}  // namespace StringUtils::detail
