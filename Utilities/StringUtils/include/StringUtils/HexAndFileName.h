// The two string helpers the thread layer needs: hexadecimal ids and the last
// component of a source path. Pure functions, safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace StringUtils {

// "0x" and the 32 bits of value as lower-case hexadecimal digits without
// leading zeros: 255 -> "0xff", -1 -> "0xffffffff". Never fails.
std::string toHexString(int value);

// The text after the last '/' or '\\' of path, or the whole path when it has
// neither: "a\\b/c" -> "c", "logs/" -> "". Never fails.
std::string filenameFromPath(const std::string& path);

// filenameFromPath as a view into path, for callers that must not allocate.
// Never fails; async-signal-safe.
std::string_view lastPathComponent(std::string_view path) noexcept;

}  // namespace StringUtils
