#include "StringUtils/NumberFormatting.h"

#include <cstdarg>
#include <cstdio>
#include <sstream>

namespace StringUtils {

namespace {

template <typename T>
std::string streamed(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

}  // namespace

std::string toQuillString(int value) { return streamed(value); }

std::string uint64ToQuillString(unsigned long long value) { return streamed(value); }

std::string floatToQuillString(float value) { return streamed(static_cast<double>(value)); }

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
