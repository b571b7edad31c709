// ASCII character classes and case, the one home of these helpers in the string
// library. Byte-wise and independent of the locale: a byte of 0x80 or above is in
// no class and has no case. Internal to the string library; constexpr,
// thread-safe and async-signal-safe.
#pragma once

namespace StringUtils::detail {

constexpr bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isAsciiUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isAsciiLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool isAsciiLetter(char c) { return isAsciiLower(c) || isAsciiUpper(c); }
constexpr bool isAsciiAlnum(char c) { return isAsciiDigit(c) || isAsciiLetter(c); }
constexpr bool isHexDigit(char c) {
    return isAsciiDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The value 0 to 15 of a hexadecimal digit; -1 for any other byte.
constexpr int hexDigitValue(char c) {
    if (isAsciiDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// A to Z become a to z; every other byte stays.
constexpr char toAsciiLower(char c) { return isAsciiUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace StringUtils::detail
