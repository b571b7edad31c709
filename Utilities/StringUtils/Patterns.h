// The ECMAScript patterns that define the string library's validators. The
// library does not run them: the matchers of PatternMatchers.h give exactly the
// results these patterns give as whole-string matches (and, for the hexadecimal
// group, as a repeated search), in linear time and constant stack. The texts
// are kept here so that tests and fuzz targets can check that equivalence
// against std::regex.
#pragma once

#include <string_view>

namespace StringUtils::Patterns {

// isValidEmail.
inline constexpr std::string_view kEmail =
    R"([0-9A-Za-z\-_\.\%\+]{1,256}@[a-zA-Z0-9][a-zA-Z0-9\-]{0,64}(\.[a-zA-Z0-9][a-zA-Z0-9\-]{0,25})+)";

// isValidDiscoveryCode.
inline constexpr std::string_view kDiscoveryCode = "[0-9A-Z]{3}-[A-Z0-9]{3}-[A-Z0-9]{3}";

// reformatMACaddress, searched repeatedly from the end of the previous match.
inline constexpr std::string_view kHexGroup = "[0-9A-Fa-f]?[0-9A-Fa-f]";

// isValidRawPhoneNumber.
inline constexpr std::string_view kRawPhoneNumber = R"(^\+?[\ \-()0-9]+$)";

// isValidPhoneNumber: printf formats taking the minimum digit count, then the
// upper bound (21 with the optional "+", 30 without it).
inline constexpr std::string_view kPhoneDigitsWithPlus = R"(^\+?\d{%d,%d}$)";
inline constexpr std::string_view kPhoneDigits = R"(^\d{%d,%d}$)";
inline constexpr unsigned int kPhoneDigitsWithPlusMax = 21;
inline constexpr unsigned int kPhoneDigitsMax = 30;

// isValidFeatureAccessCode, applied to the cleaned code.
inline constexpr std::string_view kFeatureAccessCode =
    R"(^([*#][*#\d]{1,4}(\+?\d{0,15})?){1,3}#?$)";

}  // namespace StringUtils::Patterns
