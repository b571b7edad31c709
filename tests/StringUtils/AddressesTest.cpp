#include "Checks.h"
#include "StringUtils/Addresses.h"
#include "StringUtils/Case.h"
#include "StringUtils/Split.h"

#include <gtest/gtest.h>

#include <string>

using namespace StringUtils;
using checks::expectVerdicts;
using checks::with;

TEST(Addresses, All) {
    // User parts of 47 and 48 bytes.
    const std::string u47 = std::string(47, 'u') + "@x.y", u48 = "u" + u47;
    expectVerdicts(isValidSipUri,
                   {"sip:a@x.y", "SIP:a@x.y", "@x.y", u47, "sip:" + u47, "a@a-b.",
                    "!$%&*_+~-=?\\',./:aZ09@x.y"},
                   {"", "alice", "a@b@x.y", "sip:@x.y", u48, "sip:" + u48, "SIP:" + u47.substr(3),
                    "a@a", "a@-ab", "a@ab-", "a@.ab", "a@a..b", "a@a_b", "a@ab:5060", "a#b@x.y",
                    "\xC3\xA9@x.y", std::string("a\0b@x.y", 7)});
    expectVerdicts(isValidEmail, {"A.b-_%+9@M-1.x.CO", "a@b-.c-"}, {"a@b", "a b@c.d", "a@.b.c"});
    expectVerdicts(isValidDiscoveryCode, {"ABC-123-XYZ"}, {"abc-123-xyz", "ABC123XYZ"});
    const auto suffixes = split(STRAND_TEST_ROUTE_SUFFIXES, '|', false);
    ASSERT_EQ(suffixes.size(), 4u);
    for (const std::string& s : suffixes) {
        expectVerdicts(
            isRouteToVestaCalling, {"host" + s, s},
            {"", s.substr(1), s.substr(0, s.size() - 1), "host" + toUpper(s), "host" + s + "."});
    }
    checks::expectTable<std::string>({
        {removeSipKeywordFromSipAddress, "sip:alice@x.y:5060", "5060"},
        {getEmailDomain, "alice", ""},
        {with(reformatMACaddress, "-"), "00:1a:2b:3c:4d:5e", "00-1A-2B-3C-4D-5E"},
        {with(reformatMACaddress, "."), "ABC:d:e:f:0", "AB.0C.0D.0E.0F.00"},
        {with(reformatMACaddress, ":"), "00:00:00:00:00:00", ""},
    });
}
