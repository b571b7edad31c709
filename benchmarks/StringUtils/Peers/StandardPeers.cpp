// The cases whose peer is the C or C++ standard library: invalid numbers
// against std::from_chars, formatting against std::to_chars, the searches
// against glibc's strcasestr and memmem, replaceAll against std::replace_copy,
// and fromUtf16String against the same conversion given the length.
#include <string.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <vector>

#include "PeerInputs.h"
#include "StringUtils/Encoding.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"
#include "StringUtils/Search.h"
#include "StringUtils/SharedConverters.h"

namespace {

using PeerInputs::registerPair;

const std::vector<std::string> kInvalid = {"abc", "x1", "-", "", "+x", "0x"};

template <typename Number>
std::string toCharsString(Number value) {
    char buffer[32];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

void registerNumbers() {
    registerPair(
        "toInteger (invalid)", 0,
        [] {
            int failed = 0;
            for (const std::string& text : kInvalid) {
                int value = 0;
                failed += StringUtils::toInteger(text, value) ? 0 : 1;
            }
            return failed;
        },
        [] {
            int failed = 0;
            for (const std::string& text : kInvalid) {
                int value = 0;
                failed += std::from_chars(text.data(), text.data() + text.size(), value).ec ==
                                  std::errc{}
                              ? 0
                              : 1;
            }
            return failed;
        });
    static unsigned long long big = 0;
    static int small = 0;
    static unsigned counter = 0;
    registerPair(
        "toQuillString(int) vs to_chars", 0,
        [] { return StringUtils::toQuillString(-123456 + (small++ & 0xFF)); },
        [] { return toCharsString(-123456 + (small++ & 0xFF)); });
    registerPair(
        "uint64ToQuillString vs to_chars", 0,
        [] { return StringUtils::uint64ToQuillString(18446744073709551ULL + (big++ & 0xFF)); },
        [] { return toCharsString(18446744073709551ULL + (big++ & 0xFF)); });
    static const float kFloats[] = {0.5f, 3.14159265f, 1234567.0f, 0.00001f, -42.125f, 1e20f,
                                    2.5e-8f, 100.0f};
    registerPair(
        "floatToQuillString", 0,
        [] { return StringUtils::floatToQuillString(kFloats[counter++ % std::size(kFloats)]); },
        [] {
            char buffer[32];
            const double value = kFloats[counter++ % std::size(kFloats)];
            return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value,
                                                     std::chars_format::general, 6)
                                           .ptr);
        });
}

void registerText() {
    for (const auto& [sizeName, size] : PeerInputs::kSizes) {
        const std::string suffix = std::string(" ") + sizeName;
        auto text = std::make_shared<std::string>(PeerInputs::words(size));
        text->replace(text->size() - 64, 6, "NeeDLe");
        // The case-sensitive search over lower-case words, where the first
        // letter of the pattern is frequent.
        auto lower = std::make_shared<std::string>(PeerInputs::words(size, false));
        lower->replace(lower->size() - 64, 6, "needle");
        registerPair(
            "findSubStringCaseInsensitive" + suffix, size,
            [text] { return StringUtils::findSubStringCaseInsensitive(*text, "nEEdle"); },
            [text] { return strcasestr(text->c_str(), "nEEdle") != nullptr; });
        registerPair(
            "substring search" + suffix, size,
            [lower] {
                size_t position = 0;
                return StringUtils::findSubStringLocation(*lower, "needle", position) ? position : 0;
            },
            [lower] {
                const void* found = memmem(lower->data(), lower->size(), "needle", 6);
                return found == nullptr ? 0 : static_cast<const char*>(found) - lower->data();
            });
        registerPair(
            "replaceAll(char)" + suffix, size,
            [text] { return StringUtils::replaceAll(*text, ',', ';'); },
            [text] {
                std::string result;
                result.resize(text->size());
                std::replace_copy(text->begin(), text->end(), result.begin(), ',', ';');
                return result;
            });
        auto utf16 = std::make_shared<const std::u16string>(
            StringUtils::utf16Converter().from_bytes(PeerInputs::mixedUtf8(size)));
        registerPair(
            "fromUtf16String(const char16_t*)" + suffix, size,
            [utf16] { return StringUtils::fromUtf16String(utf16->c_str()); },
            [utf16] { return StringUtils::utf16Converter().to_bytes(*utf16); });
    }
}

const bool registered = [] {
    registerNumbers();
    registerText();
    return true;
}();

}  // namespace
