// Searching text for a pattern with A-Z and a-z compared without regard to
// case, as the classic locale's tolower sees them, in place (no lowered copies).
// Internal to the string library.
#pragma once

#include <string_view>

namespace StringUtils::detail {

enum class AsciiCaseBlindMatch { found, notFound, tooCostly };

// Whether pattern occurs in text when both are mapped through the classic
// locale's tolower (an empty pattern always does). Candidates are found sixteen
// positions at a time by the pattern's first and last bytes. For text shaped to
// make the checks of the candidates costly (many near-matches of a long
// pattern) it gives up with tooCostly once they exceed a small constant per
// byte passed, so that the caller can use a search that is linear in every
// case. Never fails; async-signal-safe.
AsciiCaseBlindMatch findAsciiCaseBlind(std::string_view text, std::string_view pattern);

}  // namespace StringUtils::detail
