// Soft assertions with replaceable hooks, and string literals kept scrambled in
// the binary.
//
// quill::assertImpl composes one line of text for a failed check and hands it to
// the two hooks of quill::overrideable. It never aborts, throws or logs by
// itself: what a failed assertion does is decided by whoever installs the hooks.
// With no hook installed (the state after start-up) a failure has no effect.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>

namespace quill {

namespace overrideable {

// Called with (file, line, function, condition, message), the arguments of
// assertImpl unchanged. Empty unless the embedding program installs one.
// Install hooks before threads can assert; they are read without a lock.
extern std::function<void(const std::string&, int, const std::string&, const std::string&,
                          const std::string&)>
    g_quillAssertFunc;

// Called with (composed text, line, file, function); runs before g_quillAssertFunc.
extern std::function<void(const std::string&, int, const std::string&, const std::string&)>
    g_quillAssertErrorLogFunc;

}  // namespace overrideable

// Reports a failed check: composes "Assertion failed: <condition>[ with message:
// <message>]", then calls the error-log hook and the assert hook, each only if
// installed. Returns normally; an exception thrown by a hook reaches the caller.
void assertImpl(const std::string& file, int line, const std::string& function,
                const std::string& condition, const std::string& message);

// Key of the scrambled literals. Internal linkage: every translation unit that
// scrambles text carries its own copy.
constexpr std::array<unsigned char, 50> key_arr = {
    0x5a, 0xc3, 0x17, 0x9e, 0x44, 0xb1, 0x2d, 0xf8, 0x63, 0x0e, 0xa7, 0x39, 0xd2,
    0x81, 0x6c, 0x15, 0xee, 0x4b, 0x97, 0x20, 0xc9, 0x76, 0x3f, 0xab, 0x58, 0x01,
    0xfd, 0x92, 0x6e, 0x34, 0xb8, 0x47, 0xe1, 0x1c, 0x8d, 0x79, 0x2a, 0xd6, 0x53,
    0x0b, 0xbe, 0x65, 0xf2, 0x3a, 0x9c, 0x27, 0xc4, 0x7f, 0x12, 0xe9};

// N bytes of text, each combined by exclusive or with key_arr at its position
// modulo 50. Built by a consteval constructor, so only the scrambled bytes reach
// the object file; the plain text is produced afresh by get_substring.
template <std::size_t N>
class obfuscated_string_variable {
public:
    // Scrambles a string literal (its terminating NUL included) at compile time.
    consteval explicit obfuscated_string_variable(const char (&text)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            bytes_[i] = static_cast<char>(static_cast<unsigned char>(text[i]) ^
                                          key_arr[i % key_arr.size()]);
        }
    }

    // The plain text of positions [first, last), ending early at the first NUL
    // that descrambling produces. Requires first <= last <= N; with last below
    // first the length wraps and the allocation throws std::length_error.
    std::string get_substring(std::size_t first, std::size_t last) const {
        std::string buffer(last - first, '\0');
        for (std::size_t k = 0; k < buffer.size(); ++k) {
            const std::size_t position = first + k;
            buffer[k] = static_cast<char>(static_cast<unsigned char>(bytes_[position]) ^
                                          key_arr[position % key_arr.size()]);
        }
        // The text ends at the first NUL that descrambling produced.
        buffer.resize(std::char_traits<char>::length(buffer.data()));
        return buffer;
    }

    static constexpr std::size_t size() { return N; }  // the scrambled bytes' count

private:
    std::array<char, N> bytes_{};
};

}  // namespace quill
