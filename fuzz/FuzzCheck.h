// What the fuzz targets share: the invariant check that stops the run with a
// report, and the longest text also run through std::regex (its matcher
// recurses once per byte, so longer texts would only test the stack).
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace fuzzcheck {

inline constexpr std::size_t kRegexMaxLength = 300;

// Aborts, so that libFuzzer saves the input, when an invariant does not hold.
inline void require(bool holds, const char* invariant) {
    if (!holds) {
        std::fprintf(stderr, "invariant broken: %s\n", invariant);
        std::abort();
    }
}

inline std::string text(const unsigned char* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

inline bool isPrefix(std::string_view prefix, std::string_view text) {
    return text.starts_with(prefix);
}

}  // namespace fuzzcheck
