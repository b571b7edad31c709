#include "StringUtils/NumberFormatting.h"

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <locale>
#include <sstream>
#include <type_traits>

namespace StringUtils {

namespace {

template <typename T>
std::string streamed(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// Whether the global C++ locale, which a default stream takes, is the classic
// one: then the stream writes exactly what std::to_chars writes (no digit
// grouping, a point as the decimal separator, the C library's %g).
bool classicGlobalLocale() {
    static const std::locale& classic = std::locale::classic();
    return std::locale() == classic;
}

// "00" to "99", two bytes each.
constexpr auto kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void writePair(std::uint32_t pair, char* out) { std::memcpy(out, &kDigitPairs[2 * pair], 2); }

// The eight digits of value (below 10^8), leading zeros included, at out.
void writeEightDigits(std::uint32_t value, char* out) {
    const std::uint32_t high = value / 10000;
    const std::uint32_t low = value % 10000;
    writePair(high / 100, out);
    writePair(high % 100, out + 2);
    writePair(low / 100, out + 4);
    writePair(low % 100, out + 6);
}

// The digits of value (below 10^8) at out, without leading zeros; returns the
// end. The count is found first, then the digits are written from the last,
// two at a time.
char* writeUpToEightDigits(std::uint32_t value, char* out) {
    const int count = 1 + static_cast<int>(value >= 10) + static_cast<int>(value >= 100) +
                      static_cast<int>(value >= 1000) + static_cast<int>(value >= 10000) +
                      static_cast<int>(value >= 100000) + static_cast<int>(value >= 1000000) +
                      static_cast<int>(value >= 10000000);
    char* const end = out + count;
    char* p = end;
    for (; value >= 100; value /= 100) {
        p -= 2;
        writePair(value % 100, p);
    }
    if (value >= 10) {
        writePair(value, p - 2);
    } else {
        p[-1] = static_cast<char>('0' + value);
    }
    return end;
}

// The decimal digits of value at out (room for 20); returns the end. Eight
// digits at a time in 32-bit arithmetic, which is cheaper than 64-bit division.
char* writeDecimal(std::uint64_t value, char* out) {
    constexpr std::uint64_t kEightDigits = 100000000;
    if (value < kEightDigits) {
        return writeUpToEightDigits(static_cast<std::uint32_t>(value), out);
    }
    const std::uint64_t high = value / kEightDigits;
    if (high < kEightDigits) {
        out = writeUpToEightDigits(static_cast<std::uint32_t>(high), out);
    } else {
        out = writeUpToEightDigits(static_cast<std::uint32_t>(high / kEightDigits), out);
        writeEightDigits(static_cast<std::uint32_t>(high % kEightDigits), out);
        out += 8;
    }
    writeEightDigits(static_cast<std::uint32_t>(value % kEightDigits), out);
    return out + 8;
}

// An integer's text as std::to_chars writes it, at out (room for 21); returns
// the end.
template <typename T>
char* writeInteger(T value, char* out) {
    using Unsigned = std::make_unsigned_t<T>;
    auto magnitude = static_cast<Unsigned>(value);
    if constexpr (std::is_signed_v<T>) {
        if (value < 0) {
            *out++ = '-';
            magnitude = static_cast<Unsigned>(0U - magnitude);
        }
    }
    return writeDecimal(magnitude, out);
}

// The standard library writes a double with a precision here when it can.
template <typename T>
concept WritesFloatingChars = requires(char* p, T v) {
    std::to_chars(p, p, v, std::chars_format::general, 6);
};

// value as the stream writes it; through std::to_chars in the classic locale.
template <typename T>
std::string formatted(T value) {
    if constexpr (std::is_integral_v<T> || WritesFloatingChars<T>) {
        if (classicGlobalLocale()) {
            char digits[32];
            if constexpr (std::is_integral_v<T>) {
                return std::string(digits, writeInteger(value, digits));
            } else {
                // The stream's default precision and notation: printf's %g.
                const auto written = std::to_chars(digits, digits + sizeof digits, value,
                                                   std::chars_format::general, 6);
                return std::string(digits, written.ptr);
            }
        }
    }
    return streamed(value);
}

}  // namespace

std::string toQuillString(int value) { return formatted(value); }

std::string uint64ToQuillString(unsigned long long value) { return formatted(value); }

std::string floatToQuillString(float value) { return formatted(static_cast<double>(value)); }

std::string fromBool(bool value) { return value ? "true" : "false"; }

// Literals, so no static object exists to be built before first use or destroyed
// at exit.
std::string trueValue() { return "True"; }

std::string falseValue() { return "False"; }

std::string formatPrintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list measuring;
    va_copy(measuring, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    std::string result;
    if (length > 0) {
        result.resize(static_cast<size_t>(length));
        // The string keeps room for its terminator, which vsnprintf writes.
        std::vsnprintf(result.data(), result.size() + 1, format, arguments);
    }
    va_end(arguments);
    return result;
}

}  // namespace StringUtils
