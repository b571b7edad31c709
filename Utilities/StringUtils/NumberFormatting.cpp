#include "StringUtils/NumberFormatting.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
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
            std::to_chars_result written;
            if constexpr (std::is_integral_v<T>) {
                written = std::to_chars(digits, digits + sizeof digits, value);
            } else {
                // The stream's default precision and notation: printf's %g.
                written = std::to_chars(digits, digits + sizeof digits, value,
                                        std::chars_format::general, 6);
            }
            return std::string(digits, written.ptr);
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
