// The number and boolean parsers on any text (no crash, no undefined
// behaviour, the same result in every locale except toDouble), the formatters
// read back by the parsers, and string_format against snprintf. The first byte
// is also the base given to toUnsignedLongLong, any int from -128 to 127.
#include "FuzzCheck.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <tuple>

using fuzzcheck::require;
using namespace StringUtils;

namespace {

// Every locale-free parser on text, each starting from a marked out-parameter,
// results and out-parameters in one tuple.
auto parseAll(const std::string& text, int base) {
    long long ll = 7;
    long l = 7, ms = 7;
    int i = 7, view = 7, hex = 7;
    unsigned long long ull = 7, ullBase = 7;
    unsigned short u16 = 7;
    unsigned char u8 = 7;
    const int passed = toLongLongInteger(text, ll) + 2 * toLongInteger(text, l) +
                       4 * toInteger(text, i) + 8 * toMsTime(text, ms) +
                       16 * toUnsignedLongLong(text, ull, 0) +
                       32 * toUnsignedLongLong(text, ullBase, base) + 64 * toInteger16(text, u16) +
                       128 * toInteger8(text, u8) + 256 * stringViewToInteger(text, view) +
                       512 * hexStringViewToInteger(text, hex) + 1024 * toBool(text) +
                       2048 * toBool(text, true);
    return std::make_tuple(passed, ll, l, ms, i, view, hex, ull, ullBase, u16, u8);
}

bool isAsciiTrue(const std::string& text) {
    static constexpr std::string_view kTrue = "true";
    return text == "1" ||
           std::equal(text.begin(), text.end(), kTrue.begin(), kTrue.end(), [](char c, char t) {
               return (c >= 'A' && c <= 'Z' ? c + 32 : c) == t;
           });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzzcheck::text(data, size);
    const int base = size == 0 ? 10 : static_cast<std::int8_t>(data[0]);
    const auto parsed = fuzzcheck::sameInEveryLocale([&] { return parseAll(text, base); },
                                                     "the parsers ignore the locale");
    const auto [passed, ll, l, ms, i, view, hex, ull, ullBase, u16, u8] = parsed;
    if (passed & 4) {
        require((passed & 1) && ll == i, "an int is a long long of the same value");
    }
    if (base != 0 && (base < 2 || base > 36)) {
        require(!(passed & 32) && ullBase == 7, "an unusable base is no number");
    }
    require(((passed >> 10) & 1) == isAsciiTrue(text) &&
                ((passed >> 11) & 1) == (text.empty() || isAsciiTrue(text)),
            "only 1 and true in any ASCII case are true");
    require(toBool(fromBool(size & 1)) == static_cast<bool>(size & 1) && toBool(trueValue()) &&
                !toBool(falseValue()),
            "the boolean texts read back");
    if (passed & 64) {
        require((passed & 4) && i < 65536 && u16 == static_cast<unsigned short>(i),
                "toInteger16 is toInteger below 65536");
    }
    if (passed & 128) {
        require((passed & 4) && i < 256 && u8 == static_cast<unsigned char>(i),
                "toInteger8 is toInteger below 256");
    }
    // toDouble is strtod over the whole text, in the classic and the non-C locale.
    for (const locale_t locale : {fuzzcheck::classicLocale(), fuzzcheck::fuzzingLocale()}) {
        const fuzzcheck::InLocale in(locale);
        double d = 7;
        const bool ok = toDouble(text, d);
        char* end = nullptr;
        errno = 0;
        const double expected = std::strtod(text.c_str(), &end);
        const bool read = end != text.c_str() && errno != ERANGE;
        require(ok == (read && end == text.c_str() + text.size()) &&
                    (std::isnan(expected) ? std::isnan(d) : d == (read ? expected : 0.0)),
                "toDouble is strtod over the whole text");
    }

    if (size >= sizeof(std::uint64_t)) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, data, sizeof bits);
        const auto value = static_cast<int>(bits);
        char chars[24];
        const auto charsOf = [&](auto number) {
            return std::string(chars, std::to_chars(chars, chars + sizeof chars, number).ptr);
        };
        require(toQuillString(value) == charsOf(value),
                "an int is written as std::to_chars writes it");
        require(uint64ToQuillString(bits) == charsOf(bits),
                "an unsigned 64-bit value is written as std::to_chars writes it");
        int parsedInt = 0;
        require(toInteger(toQuillString(value), parsedInt) && parsedInt == value,
                "an int reads back");
        float f = 0;
        std::memcpy(&f, data, sizeof f);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%g", static_cast<double>(f));
        require(floatToQuillString(f) == expected, "a float is written as %g");
        // The text without '%' as a format, then two conversions.
        std::string format = text.substr(sizeof bits);
        std::replace(format.begin(), format.end(), '%', '+');
        format = format.substr(0, format.find('\0')) + "%d|%u";
        char buffer[1024];
        std::snprintf(buffer, sizeof buffer, format.c_str(), value, static_cast<unsigned>(bits >> 32));
        require(string_format(format, value, static_cast<unsigned>(bits >> 32)) == buffer,
                "string_format writes what snprintf writes");
    }
    return 0;
}
