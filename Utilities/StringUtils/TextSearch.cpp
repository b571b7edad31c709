#include "StringUtils/TextSearch.h"

#include <string>

namespace StringUtils::detail {

namespace {

// The checks of the direct search may cost this many element comparisons per
// text element passed, plus the slack, before the search changes to the linear
// algorithm. Short patterns in ordinary text never get there.
constexpr std::size_t kChecksPerElement = 4;
constexpr std::size_t kCheckSlack = 64;

}  // namespace

template <typename CharT>
const std::vector<std::size_t>& PatternFinder<CharT>::borders() {
    if (borders_.empty() && !pattern_.empty()) {
        borders_.assign(pattern_.size(), 0);
        std::size_t k = 0;
        for (std::size_t i = 1; i < pattern_.size(); ++i) {
            while (k > 0 && pattern_[i] != pattern_[k]) {
                k = borders_[k - 1];
            }
            if (pattern_[i] == pattern_[k]) {
                ++k;
            }
            borders_[i] = k;
        }
    }
    return borders_;
}

template <typename CharT>
std::size_t PatternFinder<CharT>::find(View text, std::size_t from) {
    using Traits = std::char_traits<CharT>;
    const std::size_t m = pattern_.size();
    if (from > text.size()) {
        return View::npos;
    }
    if (m == 0) {
        return from;
    }
    if (text.size() - from < m) {
        return View::npos;
    }
    if (!borders_.empty()) {
        return findWithBorders(text, from);
    }
    const CharT* const base = text.data();
    const CharT* const start = base + from;
    // One past the last position where the pattern still fits.
    const CharT* const last = base + (text.size() - m + 1);
    const CharT first = pattern_[0];
    std::size_t checks = 0;
    for (const CharT* candidate = start; candidate < last; ++candidate) {
        candidate = Traits::find(candidate, static_cast<std::size_t>(last - candidate), first);
        if (candidate == nullptr) {
            return View::npos;
        }
        std::size_t matched = 1;
        while (matched < m && candidate[matched] == pattern_[matched]) {
            ++matched;
        }
        if (matched == m) {
            return static_cast<std::size_t>(candidate - base);
        }
        checks += matched;
        if (checks > kChecksPerElement * static_cast<std::size_t>(candidate - start) + kCheckSlack) {
            return findWithBorders(text, static_cast<std::size_t>(candidate - base));
        }
    }
    return View::npos;
}

// Knuth-Morris-Pratt from from; while nothing is matched, the next candidate is
// found by the first element as in the direct search.
template <typename CharT>
std::size_t PatternFinder<CharT>::findWithBorders(View text, std::size_t from) {
    using Traits = std::char_traits<CharT>;
    const std::vector<std::size_t>& border = borders();
    const std::size_t m = pattern_.size();
    const std::size_t n = text.size();
    std::size_t matched = 0;
    for (std::size_t i = from; i < n; ++i) {
        if (matched == 0) {
            const CharT* const next = Traits::find(text.data() + i, n - i, pattern_[0]);
            if (next == nullptr) {
                return View::npos;
            }
            i = static_cast<std::size_t>(next - text.data());
        }
        while (matched > 0 && text[i] != pattern_[matched]) {
            matched = border[matched - 1];
        }
        if (text[i] == pattern_[matched]) {
            ++matched;
        }
        if (matched == m) {
            return i + 1 - m;
        }
    }
    return View::npos;
}

template <typename CharT>
void eraseAllOccurrences(std::basic_string<CharT>& text, std::basic_string_view<CharT> pattern) {
    using Traits = std::char_traits<CharT>;
    const std::size_t m = pattern.size();
    if (m == 0) {
        return;
    }
    // The kept text is built in place behind the read position. Once it ends in
    // the pattern, that tail is the leftmost occurrence of the text still to
    // clean (the part before it has none), so it is dropped at once.
    //
    // Directly first: compare the kept tail with the pattern wherever the element
    // just kept equals the pattern's last one, counting the cost of the checks.
    // Through plain pointers and locals: a store through the string's elements
    // could otherwise alias its size and the pattern, and force reloads.
    CharT* const data = text.data();
    const std::size_t size = text.size();
    const CharT* const wanted = pattern.data();
    const CharT last = wanted[m - 1];
    std::size_t kept = 0;
    std::size_t read = 0;
    std::size_t checks = 0;
    for (; read < size; ++read) {
        const CharT c = data[read];
        data[kept++] = c;
        if (c == last && kept >= m) {
            if (Traits::compare(data + kept - m, wanted, m) == 0) {
                kept -= m;
            } else if ((checks += m) > kChecksPerElement * read + kCheckSlack) {
                ++read;
                break;
            }
        }
    }
    if (read == size && checks <= kChecksPerElement * size + kCheckSlack) {
        text.resize(kept);
        return;
    }
    // Then with the match state after each kept element (Knuth-Morris-Pratt),
    // started over the kept text: dropping a match brings back the state before
    // it. Each state is below the pattern's length, so the drops never add work
    // and the pass stays linear.
    PatternFinder<CharT> finder(pattern);
    const std::vector<std::size_t>& border = finder.borders();
    std::vector<std::size_t> stateAfter(text.size() + 1, 0);
    std::size_t matched = 0;
    const auto step = [&](CharT c) {
        while (matched > 0 && c != pattern[matched]) {
            matched = border[matched - 1];
        }
        if (c == pattern[matched]) {
            ++matched;
        }
    };
    for (std::size_t i = 0; i < kept; ++i) {
        step(text[i]);  // never completes a match: the kept text holds none
        stateAfter[i + 1] = matched;
    }
    for (; read < text.size(); ++read) {
        const CharT c = text[read];
        text[kept++] = c;
        step(c);
        if (matched == m) {
            kept -= m;
            matched = stateAfter[kept];
        }
        stateAfter[kept] = matched;
    }
    text.resize(kept);
}

template class PatternFinder<char>;
template class PatternFinder<wchar_t>;
template void eraseAllOccurrences<char>(std::string&, std::string_view);

}  // namespace StringUtils::detail
