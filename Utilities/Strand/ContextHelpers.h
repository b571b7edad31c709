// Helpers of the thread-context layer (hints and context stores) that are
// internal to the library: not part of the public headers, not exported.
#pragma once

#include <chrono>
#include <string>

namespace quill::external_input {

// Whole milliseconds since the epoch, truncated toward zero. Never fails;
// async-signal-safe.
long toEpochMilliseconds(std::chrono::system_clock::time_point time);

// A hint id: "hint" and value in decimal, zero-filled in front to six
// characters, sign included: 42017 -> "hint042017", -5 -> "hint0000-5"; longer
// values are not cut. Throws only allocation errors.
std::string formatHintIdString(int value);

}  // namespace quill::external_input
