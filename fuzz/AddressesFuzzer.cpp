// isValidEmail, isValidDiscoveryCode and reformatMACaddress against their
// patterns run by std::regex; the SIP and e-mail helpers against their
// invariants.
#include "FuzzCheck.h"
#include "Reference.h"
#include "StringUtils/Addresses.h"
#include "StringUtils/Patterns.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

using fuzzcheck::require;
namespace Patterns = StringUtils::Patterns;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::regex email = reference::compile(Patterns::kEmail);
    static const std::regex discovery = reference::compile(Patterns::kDiscoveryCode);
    static const std::regex group = reference::compile(Patterns::kHexGroup);
    const std::string text = fuzzcheck::text(data, size);

    const auto [validEmail, validCode, mac, validSip, route] = fuzzcheck::sameInEveryLocale(
        [&] {
            return std::make_tuple(StringUtils::isValidEmail(text),
                                   StringUtils::isValidDiscoveryCode(text),
                                   StringUtils::reformatMACaddress(text, ":"),
                                   StringUtils::isValidSipUri(text),
                                   StringUtils::isRouteToVestaCalling(text));
        },
        "the validators ignore the locale");
    require(mac.empty() || mac.size() == 17, "a MAC address is six groups of two digits");
    if (size <= fuzzcheck::kRegexMaxLength) {
        require(validEmail == std::regex_match(text, email), "isValidEmail is the e-mail pattern");
        require(validCode == std::regex_match(text, discovery),
                "isValidDiscoveryCode is the discovery-code pattern");
        require(mac == reference::reformatMACaddress(text, ":", group),
                "reformatMACaddress is the repeated group search");
    }

    if (validSip) {
        require(std::count(text.begin(), text.end(), '@') == 1, "a SIP address has one '@'");
    }
    const std::string user = StringUtils::removeSipKeywordFromSipAddress(text);
    require(text.ends_with(user) && user.find(':') == std::string::npos,
            "the text after the last ':'");
    const std::string domain = StringUtils::getEmailDomain(text);
    require(text.ends_with(domain) && domain.find('@') == std::string::npos,
            "the text after the last '@'");
    if (route) {
        require(text.find('.') != std::string::npos, "a routing suffix begins with a dot");
    }
    return 0;
}
