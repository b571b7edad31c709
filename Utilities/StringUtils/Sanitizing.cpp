#include "StringUtils/Sanitizing.h"

#include "StringUtils/Case.h"
#include "StringUtils/Search.h"

#include <array>
#include <string_view>

namespace StringUtils {
namespace {

constexpr std::array<std::string_view, 7> kStatusTokens = {
    "<html", "<script", "<img src", "<a href", "\n", "\t", "\r"};

}  // namespace

std::string sanatizeStatusString(const std::string& status) {
    std::string result = status;
    for (const std::string_view token : kStatusTokens) {
        const std::string lower(token);
        eraseSubString(result, lower);
        eraseSubString(result, toUpper(lower));
    }
    return result;
}

std::string getHtmlErrorTemplate() {
    static const std::string errorTemplate = "<html><title>%1</title><p>%2</p></html>";
    return errorTemplate;
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
