#include "StringUtils/HexAndFileName.h"

#include <cstdio>

namespace StringUtils {

std::string toHexString(int value) {
    // "0x" + at most eight digits + NUL.
    char buffer[11] = {};
    std::snprintf(buffer, sizeof buffer, "%s%x", "0x", static_cast<unsigned int>(value));
    return buffer;
}

std::string filenameFromPath(const std::string& path) {
    return std::string(lastPathComponent(path));
}

std::string_view lastPathComponent(std::string_view path) noexcept {
    const auto separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

}  // namespace StringUtils
