#include "StringUtils/Addresses.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using StringUtils::isValidSipUri;

TEST(Addresses, IsValidSipUri) {
    const std::string user47 = std::string(47, 'u');
    const std::string user51 = "sip:" + std::string(47, 'u');
    const std::pair<std::string, bool> cases[] = {
        {"sip:alice@x.y", true},
        {"alice@x.y", true},
        {"SIP:alice@x.y", true},
        {"@x.y", true},
        {"sip:@x.y", false},
        {"sip:a@x.y", true},
        {user47 + "@x.y", true},
        {user47 + "u@x.y", false},
        {"SIP:" + std::string(43, 'u') + "@x.y", true},
        {"SIP:" + std::string(44, 'u') + "@x.y", false},
        {user51 + "@x.y", true},
        {user51 + "u@x.y", false},
        {"", false},
        {"alice", false},
        {"a@b@x.y", false},
        {"a@a", false},
        {"a@-ab", false},
        {"a@ab-", false},
        {"a@.ab", false},
        {"a@a..b", false},
        {"a@a_b", false},
        {"a@ab:5060", false},
        {"a@ab;transport=tls", false},
        {"a@ab.", true},
        {"a@a-b.c-d.e", true},
        {"a#b@x.y", false},
        {"a b@x.y", false},
        {"a\\b@x.y", true},
        {"o'neil@x.y", true},
        {"!$%&*_+~-=?\\',./:@x.y", true},
        {"\xC3\xA9@x.y", false},
        {"a@x\xC3\xA9", false},
        {std::string("a\0b@x.y", 7), false},
    };
    for (const auto& [uri, valid] : cases) {
        SCOPED_TRACE(uri);
        EXPECT_EQ(isValidSipUri(uri), valid);
    }
}

TEST(Addresses, RemoveSipKeywordAndEmailDomain) {
    const std::pair<std::string, std::string> sip[] = {
        {"sip:alice@x.y", "alice@x.y"},
        {"alice@x.y", "alice@x.y"},
        {"sip:alice@x.y:5060", "5060"},
        {"sip:", ""},
        {"", ""},
        {":", ""},
    };
    for (const auto& [address, stripped] : sip) {
        SCOPED_TRACE(address);
        EXPECT_EQ(StringUtils::removeSipKeywordFromSipAddress(address), stripped);
    }
    const std::pair<std::string, std::string> email[] = {
        {"alice@x.y", "x.y"}, {"a@b@c", "c"}, {"alice", ""}, {"alice@", ""}, {"", ""}, {"@", ""},
    };
    for (const auto& [address, domain] : email) {
        SCOPED_TRACE(address);
        EXPECT_EQ(StringUtils::getEmailDomain(address), domain);
    }
}

TEST(Addresses, IsValidEmail) {
    const std::string label65 = "a" + std::string(64, '-');
    const std::string label26 = "b" + std::string(25, '9');
    const std::pair<std::string, bool> cases[] = {
        {"a@b.c", true},
        {"A.B-C_D%E+F@Mail-1.Example.COM", true},
        {"a@b", false},
        {"a@-b.c", false},
        {"a@b.-c", false},
        {"a@b-.c-", true},
        {"a b@c.d", false},
        {"@b.c", false},
        {"a@b.c.", false},
        {"a@b..c", false},
        {"a@@b.c", false},
        {"a@b.c@d.e", false},
        {"a@b_c.d", false},
        {"\xC3\xA9@b.c", false},
        {"a@b.c\xC3\xA9", false},
        {std::string("a@b.c\0", 6), false},
        {std::string(256, 'x') + "@b.c", true},
        {std::string(257, 'x') + "@b.c", false},
        {"a@" + label65 + ".c", true},
        {"a@" + label65 + "-.c", false},
        {"a@b." + label26, true},
        {"a@b." + label26 + "9", false},
        {"a@b.c." + label26 + ".d", true},
        {"a@b.c." + label26 + "x.d", false},
    };
    for (const auto& [email, valid] : cases) {
        SCOPED_TRACE(email);
        EXPECT_EQ(StringUtils::isValidEmail(email), valid);
    }
}

TEST(Addresses, IsValidDiscoveryCode) {
    const std::pair<std::string, bool> cases[] = {
        {"ABC-123-XYZ", true},
        {"000-ZZZ-9A9", true},
        {"abc-123-xyz", false},
        {"ABC123XYZ", false},
        {"ABC-123-XYZ ", false},
        {" ABC-123-XYZ", false},
        {"ABC-123-XY", false},
        {"ABC_123-XYZ", false},
        {"ABC--123-XYZ", false},
        {"AB\xC3\x89-123-XYZ", false},
        {"", false},
    };
    for (const auto& [code, valid] : cases) {
        SCOPED_TRACE(code);
        EXPECT_EQ(StringUtils::isValidDiscoveryCode(code), valid);
    }
}

// The suffixes the build was configured with, '|'-separated.
std::vector<std::string> configuredRouteSuffixes() {
    std::vector<std::string> suffixes;
    const std::string all = STRAND_TEST_ROUTE_SUFFIXES;
    for (std::size_t from = 0; from <= all.size();) {
        const auto bar = std::min(all.find('|', from), all.size());
        suffixes.push_back(all.substr(from, bar - from));
        from = bar + 1;
    }
    return suffixes;
}

TEST(Addresses, IsRouteToVestaCalling) {
    const auto suffixes = configuredRouteSuffixes();
    ASSERT_EQ(suffixes.size(), 4u);
    for (const auto& suffix : suffixes) {
        SCOPED_TRACE(suffix);
        std::string upper = suffix;
        for (char& c : upper) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        const std::pair<std::string, bool> cases[] = {
            {"host" + suffix, true},        {suffix, true},
            {suffix.substr(1), false},      {"host" + upper, false},
            {"host" + suffix + ".", false}, {"host" + suffix + ":5061", false},
            {"host" + suffix + " ", false}, {suffix.substr(0, suffix.size() - 1), false},
        };
        for (const auto& [address, routed] : cases) {
            SCOPED_TRACE(address);
            EXPECT_EQ(StringUtils::isRouteToVestaCalling(address), routed);
        }
    }
    EXPECT_FALSE(StringUtils::isRouteToVestaCalling(""));
}

TEST(Addresses, ReformatMACaddress) {
    struct Case {
        std::string mac, separator, expected;
    };
    const Case cases[] = {
        {"00:1a:2b:3c:4d:5e", "-", "00-1A-2B-3C-4D-5E"},
        {"001A2B3C4D5E", ":", "00:1A:2B:3C:4D:5E"},
        {"0:1:2:3:4:5", ":", "00:01:02:03:04:05"},
        {"0:1:2:3:4:5", "", "000102030405"},
        {"0:1:2:3:4:5", " :: ", "00 :: 01 :: 02 :: 03 :: 04 :: 05"},
        {"ABC:d:e:f:0", ".", "AB.0C.0D.0E.0F.00"},
        {"xx0g1z2-3.4 5", ":", "00:01:02:03:04:05"},
        {"ff.FF.fF.Ff.ff.ff", "", "FFFFFFFFFFFF"},
        {"00:00:00:00:00:01", ":", "00:00:00:00:00:01"},
        {"00:00:00:00:00:00", ":", ""},
        {"00:1a:2b:3c:4d", ":", ""},
        {"00:1a:2b:3c:4d:5e:6f", ":", ""},
        {"001A2B3C4D5E6", ":", ""},
        {"", ":", ""},
        {"\xC3\xA9:1:2:3:4:5:6", ":", "01:02:03:04:05:06"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mac);
        EXPECT_EQ(StringUtils::reformatMACaddress(c.mac, c.separator), c.expected);
    }
}

}  // namespace
