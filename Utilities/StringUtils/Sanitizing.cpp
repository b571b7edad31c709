#include "StringUtils/Sanitizing.h"

#include "StringUtils/Search.h"

#include <array>
#include <string_view>
#include <utility>

namespace StringUtils {
namespace {

// Each token with its upper-case form, in removal order. The upper-case forms are
// literals, not mapped at run time: a locale's case rules (a Turkish dotless I)
// must not change which markup is removed.
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kStatusTokens = {{
    {"<html", "<HTML"},
    {"<script", "<SCRIPT"},
    {"<img src", "<IMG SRC"},
    {"<a href", "<A HREF"},
    {"\n", "\n"},
    {"\t", "\t"},
    {"\r", "\r"},
}};

}  // namespace

std::string sanatizeStatusString(const std::string& status) {
    std::string result = status;
    for (const auto& [lower, upper] : kStatusTokens) {
        eraseSubString(result, std::string(lower));
        eraseSubString(result, std::string(upper));
    }
    return result;
}

std::string getHtmlErrorTemplate() {
    // A literal rather than a static string: nothing to build before first use or
    // to destroy at exit.
    return "<html><title>%1</title><p>%2</p></html>";
}

std::uint64_t maskString(const std::string& text) {
    std::uint64_t h = 0;
    for (const char c : text) {
        h = h * 31 +
            static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<signed char>(c)));
    }
    return h;
}

std::string hideString(const std::string& text) {
    if (text.empty()) {
        return {};
    }
    return text.substr(0, 2) + "***(" + std::to_string(text.size()) + ")";
}

std::string escapeCharacters(const std::string& text, const std::string& characters, char escape) {
    std::array<bool, 256> listed{};
    for (const char c : characters) {
        listed[static_cast<unsigned char>(c)] = true;
    }
    std::string result;
    result.reserve(text.size() * 2);
    for (const char c : text) {
        if (listed[static_cast<unsigned char>(c)]) {
            result += escape;
        }
        result += c;
    }
    return result;
}

}  // namespace StringUtils
