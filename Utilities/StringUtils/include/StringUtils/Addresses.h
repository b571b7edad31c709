// Checking and taking apart addresses other than phone numbers: SIP and e-mail
// addresses, discovery codes, calling-backend host names and MAC addresses.
// Pure functions of their arguments, safe from any thread; byte tests are
// ASCII-only, so a byte of 0x80 or above is never a letter, digit or
// punctuation character. None throws except the string's length error.
#pragma once

#include <string>

namespace StringUtils {

// Whether uri is "user@host": exactly one '@'; a user part of 0 to 47 bytes, or
// of 5 to 51 bytes when it begins with "sip:", made of ASCII letters, digits and
// "!$%&*_+~-=?\',./:"; a host part of at least 2 bytes of letters, digits, '-'
// and '.', not beginning with '-' or '.', not ending with '-', without "..".
// False for anything else.
bool isValidSipUri(const std::string& uri);

// The text after the last ':' of address ("sip:alice@x.y" -> "alice@x.y"), or a
// copy of address when it has none. Never fails.
std::string removeSipKeywordFromSipAddress(const std::string& address);

// Whether email as a whole matches the library's e-mail pattern: 1 to 256 bytes of
// [0-9A-Za-z-_.%+], '@', a label of 1 to 65 bytes and one or more dotted
// labels of 1 to 26 bytes, each label a letter or digit followed by letters,
// digits and '-'. False for anything else, at any length.
bool isValidEmail(const std::string& email);

// The text after the last '@' of email; empty when it has none. Not validated.
std::string getEmailDomain(const std::string& email);

// Whether code is three groups of three upper-case ASCII letters or digits
// joined by '-' ("ABC-123-XYZ"). False for anything else.
bool isValidDiscoveryCode(const std::string& code);

// Whether address ends, byte for byte, with one of the four calling-backend
// host-name suffixes fixed at build time (STRAND_CALLING_ROUTE_SUFFIXES).
// False otherwise.
bool isRouteToVestaCalling(const std::string& address);

// The six groups of one or two hexadecimal digits found in mac (a run of digits
// is read two at a time from its left), each written as two upper-case digits,
// joined by separator: "0:1a:2b:3c:4d:5e" with "-" -> "00-1A-2B-3C-4D-5E". Empty
// when mac holds fewer or more than six groups or all six are zero.
std::string reformatMACaddress(const std::string& mac, const std::string& separator);

}  // namespace StringUtils
