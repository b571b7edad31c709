// Making text safe to show or to log: markup openers and control characters
// stripped from status texts, the HTML frame of an error page, a fingerprint and
// a shortened form that hide a value, and escaping of chosen bytes. Pure
// functions, safe from any thread.
#pragma once

#include <cstdint>
#include <string>

namespace StringUtils {

// status without "<html", "<script", "<img src", "<a href" (each in lower case
// and then in upper case), line feeds, tabs and carriage returns, processed in
// that order; each token is removed until it no longer occurs, also where a
// removal forms it anew. Never fails.
std::string sanatizeStatusString(const std::string& status);

// "<html><title>%1</title><p>%2</p></html>", placeholders not replaced. Never
// fails.
std::string getHtmlErrorTemplate();

// h = h * 31 + byte over the bytes of text taken as signed 8-bit values, modulo
// 2^64; 0 for an empty text. Never fails.
std::uint64_t maskString(const std::string& text);

// The first two bytes of text, "***(", its byte length in decimal and ")":
// "secret" -> "se***(6)". Empty for an empty text. Never fails.
std::string hideString(const std::string& text);

// text with escape written before every byte that occurs in characters (byte by
// byte, so each byte of a listed multi-byte character is escaped everywhere).
// Never fails.
std::string escapeCharacters(const std::string& text, const std::string& characters, char escape);

}  // namespace StringUtils
