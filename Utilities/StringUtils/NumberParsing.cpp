#include "StringUtils/NumberParsing.h"

#include <langinfo.h>

#include <cctype>
#include <cfloat>
#include <charconv>
#include <limits>
#include <cmath>
#include <stdexcept>
#include <system_error>

#include "StringUtils/AsciiClass.h"

namespace StringUtils {

namespace {

// Whether the parser zeroes its out-parameter before anything else, and what an
// empty text gives.
enum class Rule { zeroFirstEmptyFails, keepValueEmptyIsZero };

// Reads text with convert(text, &position) under rule: false for empty text (or
// true with 0), false with value as the rule left it when convert throws, else the
// number stored and true only when it consumed the whole text.
template <typename T, typename Convert>
bool parseWhole(const std::string& text, T& value, Rule rule, Convert convert) {
    if (rule == Rule::zeroFirstEmptyFails) {
        value = T{};
    }
    if (text.empty()) {
        if (rule == Rule::keepValueEmptyIsZero) {
            value = T{};
            return true;
        }
        return false;
    }
    size_t position = 0;
    try {
        value = static_cast<T>(convert(text, &position));
    } catch (const std::invalid_argument&) {
        return false;
    } catch (const std::out_of_range&) {
        return false;
    }
    return position == text.size();
}

// What the quick reading of a number at the start of a text found.
enum class Quick {
    read,        // a number: value and position hold it
    noNumber,    // the conversion would find no number (std::invalid_argument)
    outOfRange,  // the conversion would find the number too large (std::out_of_range)
    slowPath     // only the standard conversion itself can tell (leading white space, ...)
};

// The sign and magnitude of an optionally signed run of decimal digits at the
// start of text, read as strtol and its kin read them in base 10; text is not
// empty. Leading white space is left to the standard conversion: whether a byte
// is white space depends on the C locale.
struct Decimal {
    Quick quick = Quick::slowPath;
    bool negative = false;
    unsigned long long magnitude = 0;
    size_t position = 0;
};

// Whether the C library's isspace, which the standard conversions skip with,
// holds for c. A letter or digit is white space in no locale.
bool mayBeSpace(char c) {
    return !detail::isAsciiAlnum(c) && std::isspace(static_cast<unsigned char>(c)) != 0;
}

// Accumulates the decimal digits from p on into magnitude; returns where they
// end, or null if the number does not fit in 64 bits.
const char* accumulateDigits(const char* p, const char* end, unsigned long long& magnitude) {
    // Nineteen digits always fit (10^19 - 1 < 2^64); only later ones can overflow.
    const char* const safeEnd = end - p > 19 ? p + 19 : end;
    unsigned long long sum = 0;
    for (; p != safeEnd && detail::isAsciiDigit(*p); ++p) {
        sum = sum * 10 + static_cast<unsigned>(*p - '0');
    }
    for (; p != end && detail::isAsciiDigit(*p); ++p) {
        if (__builtin_mul_overflow(sum, 10U, &sum) ||
            __builtin_add_overflow(sum, static_cast<unsigned>(*p - '0'), &sum)) {
            return nullptr;
        }
    }
    magnitude = sum;
    return p;
}

Decimal readDecimal(const std::string& text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* p = begin;
    Decimal decimal;
    if (*p == '+' || *p == '-') {
        decimal.negative = *p == '-';
        ++p;
    }
    if (p == end || !detail::isAsciiDigit(*p)) {
        decimal.quick = p == begin && mayBeSpace(*p) ? Quick::slowPath : Quick::noNumber;
        return decimal;
    }
    p = accumulateDigits(p, end, decimal.magnitude);
    if (p == nullptr) {
        decimal.quick = Quick::outOfRange;
        return decimal;
    }
    decimal.quick = Quick::read;
    decimal.position = static_cast<size_t>(p - begin);
    return decimal;
}

// The quick reading of a signed integer T in base 10: the range test of the
// standard conversion (for std::stoi, the long's and then the int's).
template <typename T>
Quick readSigned(const std::string& text, T& number, size_t& position) {
    const Decimal decimal = readDecimal(text);
    if (decimal.quick != Quick::read) {
        return decimal.quick;
    }
    const auto largest = static_cast<unsigned long long>(std::numeric_limits<T>::max());
    if (decimal.magnitude > largest + (decimal.negative ? 1 : 0)) {
        return Quick::outOfRange;
    }
    // Negated in the unsigned type: the smallest value has no positive twin.
    number = static_cast<T>(decimal.negative ? 0ULL - decimal.magnitude : decimal.magnitude);
    position = decimal.position;
    return Quick::read;
}

// The quick reading of std::stoull in base 10: a minus sign wraps.
Quick readUnsigned(const std::string& text, unsigned long long& number, size_t& position) {
    const Decimal decimal = readDecimal(text);
    if (decimal.quick == Quick::read) {
        number = decimal.negative ? 0ULL - decimal.magnitude : decimal.magnitude;
        position = decimal.position;
    }
    return decimal.quick;
}

// The standard library reads a double from characters here when it can.
template <typename T>
concept ReadsFloatingChars = requires(const char* p, T& v) {
    std::from_chars(p, p, v, std::chars_format::general);
};

// Whether the mantissa (the text up to an exponent) holds a digit other than 0.
[[maybe_unused]] bool hasNonZeroDigit(const char* begin, const char* end) {
    for (const char* p = begin; p != end && *p != 'e' && *p != 'E'; ++p) {
        if (*p >= '1' && *p <= '9') {
            return true;
        }
    }
    return false;
}

// The quick reading of std::stod while the C locale's decimal separator is the
// point: plain decimal text ([sign] digits with a point and an exponent). Both
// readings round correctly, so they agree; every other text (white space first,
// hexadecimal, infinity, not-a-number) and every result near the ends of the
// double range (where the conversion's range error is subtle) goes the slow way.
template <typename T>
Quick readDouble(const std::string& text, T& number, size_t& position) {
    if constexpr (ReadsFloatingChars<T>) {
        const char* const radix = nl_langinfo(RADIXCHAR);
        if (radix == nullptr || radix[0] != '.' || radix[1] != '\0') {
            return Quick::slowPath;
        }
        const char* const begin = text.data();
        const char* const end = begin + text.size();
        const char* const p = begin + (*begin == '+' || *begin == '-' ? 1 : 0);
        if (p + 1 < end && p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
            return Quick::slowPath;
        }
        const bool digitFirst =
            p != end && (detail::isAsciiDigit(*p) ||
                         (*p == '.' && p + 1 != end && detail::isAsciiDigit(p[1])));
        if (!digitFirst) {
            // White space first, or a letter that may start infinity or
            // not-a-number; anything else is no number.
            const char lower = p == end ? '\0' : detail::toAsciiLower(*p);
            const bool space = p == begin && mayBeSpace(*p);
            return space || lower == 'i' || lower == 'n' ? Quick::slowPath : Quick::noNumber;
        }
        T read = 0;
        const auto [stop, error] =
            std::from_chars(*begin == '+' ? begin + 1 : begin, end, read, std::chars_format::general);
        const T magnitude = std::fabs(read);
        if (error != std::errc{} || !(magnitude <= std::numeric_limits<T>::max()) ||
            (magnitude < std::numeric_limits<T>::min() && hasNonZeroDigit(begin, stop))) {
            return Quick::slowPath;
        }
        number = read;
        position = static_cast<size_t>(stop - begin);
        return Quick::read;
    } else {
        return Quick::slowPath;
    }
}

// parseWhole with a quick reading first: read(text, number, position) answers
// without the standard conversion where it can.
template <typename T, typename Read, typename Convert>
bool parseQuickly(const std::string& text, T& value, Rule rule, Read read, Convert convert) {
    if (text.empty()) {
        return parseWhole(text, value, rule, convert);
    }
    T number{};
    size_t position = 0;
    switch (read(text, number, position)) {
        case Quick::read:
            value = number;
            return position == text.size();
        case Quick::noNumber:
        case Quick::outOfRange:
            if (rule == Rule::zeroFirstEmptyFails) {
                value = T{};
            }
            return false;
        case Quick::slowPath:
            break;
    }
    return parseWhole(text, value, rule, convert);
}

// Reads an int in base with from_chars, ignoring what follows the number, and
// accepts it only when every character is a minus sign or one isAllowed lets
// through. The characters from_chars consumed are such characters already, so
// only the rest of the text is looked at.
template <typename IsAllowed>
bool viewToInteger(const std::string_view& text, int& value, int base, IsAllowed isAllowed) {
    const char* const last = text.data() + text.size();
    int parsed = 0;
    const auto [rest, error] = std::from_chars(text.data(), last, parsed, base);
    if (error != std::errc{}) {
        return false;
    }
    for (const char* p = rest; p != last; ++p) {
        if (*p != '-' && !isAllowed(*p)) {
            return false;
        }
    }
    value = parsed;
    return true;
}

// A base std::stoull can read: 0 (detected from the text) or 2 to 36. With any
// other one strtoull fails without telling where it stopped.
constexpr bool isUsableBase(int base) { return base == 0 || (base >= 2 && base <= 36); }

// toInteger, then the upper bound limit; the stored value keeps the low bits.
template <typename T>
bool toBoundedInteger(const std::string& text, T& value, int limit) {
    int parsed = 0;
    if (!toInteger(text, parsed) || parsed >= limit) {
        return false;
    }
    value = static_cast<T>(parsed);
    return true;
}

}  // namespace

bool toDouble(const std::string& text, double& value) {
    return parseQuickly(
        text, value, Rule::zeroFirstEmptyFails, readDouble<double>,
        [](const std::string& s, size_t* position) { return std::stod(s, position); });
}

bool toLongLongInteger(const std::string& text, long long& value) {
    return parseQuickly(text, value, Rule::zeroFirstEmptyFails, readSigned<long long>,
                        [](const std::string& s, size_t* p) { return std::stoll(s, p, 10); });
}

bool toLongInteger(const std::string& text, long& value) {
    return parseQuickly(text, value, Rule::zeroFirstEmptyFails, readSigned<long>,
                        [](const std::string& s, size_t* p) { return std::stol(s, p, 10); });
}

bool toInteger(const std::string& text, int& value) {
    return parseQuickly(text, value, Rule::zeroFirstEmptyFails, readSigned<int>,
                        [](const std::string& s, size_t* p) { return std::stoi(s, p, 10); });
}

bool toMsTime(const std::string& text, long& value) {
    // std::stoll's range, then narrowed to long as the conversion's result is.
    const auto read = [](const std::string& s, long& number, size_t& position) {
        long long wide = 0;
        const Quick quick = readSigned(s, wide, position);
        number = static_cast<long>(wide);
        return quick;
    };
    return parseQuickly(text, value, Rule::keepValueEmptyIsZero, read,
                        [](const std::string& s, size_t* p) { return std::stoll(s, p, 10); });
}

bool toUnsignedLongLong(const std::string& text, unsigned long long& value, int base) {
    if (!isUsableBase(base)) {
        return false;
    }
    const auto convert = [base](const std::string& s, size_t* p) { return std::stoull(s, p, base); };
    if (base == 10) {
        return parseQuickly(text, value, Rule::keepValueEmptyIsZero, readUnsigned, convert);
    }
    return parseWhole(text, value, Rule::keepValueEmptyIsZero, convert);
}

bool toInteger16(const std::string& text, unsigned short& value) {
    return toBoundedInteger(text, value, 65536);
}

bool toInteger8(const std::string& text, unsigned char& value) {
    return toBoundedInteger(text, value, 256);
}

bool stringViewToInteger(const std::string_view& text, int& value) {
    return viewToInteger(text, value, 10, detail::isAsciiDigit);
}

bool hexStringViewToInteger(const std::string_view& text, int& value) {
    return viewToInteger(text, value, 16, detail::isHexDigit);
}

bool toBool(const std::string& text) {
    if (text.size() == 1) {
        return text[0] == '1';
    }
    if (text.size() != 4) {
        return false;
    }
    const char* const word = "true";
    for (size_t i = 0; i < 4; ++i) {
        if (detail::toAsciiLower(text[i]) != word[i]) {
            return false;
        }
    }
    return true;
}

bool toBool(const std::string& text, bool defaultValue) {
    return text.empty() ? defaultValue : toBool(text);
}

}  // namespace StringUtils
