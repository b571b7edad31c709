#include "StringUtils/PathsAndVersions.h"

#include <gtest/gtest.h>

#include "Widen.h"

using namespace StringUtils;

TEST(PathsAndVersions, FileExtensionsAndPrefixes) {
    // clang-format off
    const std::string paths[][3] = {
        {"archive.tar.gz", "archive.tar", "archive.tar.md"}, {"README", "README", "README"},
        {"file.", "file", "file.md"}, {".profile", "", ".md"}, {"dir.d/file", "dir", "dir.md"}};
    const std::string prefixes[][4] = {
        {"sip:alice", "sip:", "tel:", "tel:alice"}, {"alice", "sip:", "tel:", "alice"},
        {"alice", "", "x", "xalice"}, {"si", "sip:", "tel:", "si"},
        {"sip:sip:a", "sip:", "", "sip:a"}, {"SIP:a", "sip:", "tel:", "SIP:a"}};
    // clang-format on
    for (const auto& [path, removed, replaced] : paths) {
        SCOPED_TRACE(path);
        EXPECT_EQ(removeFileExtension(path), removed);
        EXPECT_EQ(replaceFileExtension(path, "md"), replaced);
    }
    EXPECT_EQ(replaceFileExtension("report.txt", ".md"), "report..md");
    EXPECT_EQ(replaceFileExtension("report.txt", ""), "report.");
    for (const auto& [text, prefix, replacement, result] : prefixes) {
        EXPECT_EQ(substitutePrefix(text, prefix, replacement), result);
        EXPECT_EQ(substitutePrefix(widen(text), widen(prefix), widen(replacement)), widen(result));
    }
}

TEST(PathsAndVersions, VersionsAndDelimiters) {
    using Pairs = std::vector<std::pair<size_t, size_t>>;
    // clang-format off
    const std::tuple<std::string, std::string, bool> versions[] = {
        {"1.10", "1.9", true}, {"1.9", "1.10", false}, {"2.0", "2.0", false},
        {"1.0.0", "1.0", true}, {"1.0", "1.0.0", false}, {"1.a", "1.0", false}, {"1", "", true},
        {"", "1", false}, {"x", "", true}, {"", "", false}, {"1..2", "1.0.2", false},
        {" 2.+1", "2.0", true}, {"2.0", "2.99999999999", false}, {"3.0", "2.99999999999", true}};
    // Closing order puts inner pairs first; equal delimiters alternate and do not nest.
    const std::tuple<std::string, char, Pairs, Pairs> cases[] = {
        {"(a)(b(c))", '(', {{0, 2}, {5, 7}, {3, 8}}, {{0, 2}, {3, 8}, {5, 7}}}, {"(a", '(', {}, {}},
        {"a)b(", '(', {}, {}}, {"", '(', {}, {}}, {"say \"hi\" now", '"', {{4, 7}}, {{4, 7}}},
        {"\"a\"b\"", '"', {}, {}}, {"\"\"\"\"", '"', {{0, 1}, {2, 3}}, {{0, 1}, {2, 3}}}};
    // clang-format on
    for (const auto& [version, other, greater] : versions) {
        EXPECT_EQ(greaterVersion(version, other), greater) << version << " > " << other;
    }
    for (const auto& [text, open, closedOrder, sorted] : cases) {
        const char close = open == '(' ? ')' : open;
        EXPECT_EQ(getPairedDelimitersPositions(text, open, close, false), closedOrder) << text;
        EXPECT_EQ(getPairedDelimitersPositions(text, open, close, true), sorted) << text;
    }
}
