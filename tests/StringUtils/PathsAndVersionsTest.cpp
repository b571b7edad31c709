#include "StringUtils/PathsAndVersions.h"

#include <gtest/gtest.h>

#include "Widen.h"

namespace {

TEST(PathsAndVersions, FileExtensions) {
    struct Case {
        std::string path;
        std::string removed;
        std::string replacedByMd;
    };
    const Case cases[] = {
        {"archive.tar.gz", "archive.tar", "archive.tar.md"},
        {"README", "README", "README"},
        {"file.", "file", "file.md"},
        {".profile", "", ".md"},
        {"dir.d/file", "dir", "dir.md"},
        {"", "", ""},
    };
    for (const auto& [path, removed, replacedByMd] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(StringUtils::removeFileExtension(path), removed);
        EXPECT_EQ(StringUtils::replaceFileExtension(path, "md"), replacedByMd);
    }
    EXPECT_EQ(StringUtils::replaceFileExtension("report.txt", ".md"), "report..md");
    EXPECT_EQ(StringUtils::replaceFileExtension("report.txt", ""), "report.");
}

TEST(PathsAndVersions, GreaterVersion) {
    struct Case {
        std::string version;
        std::string other;
        bool greater;
    };
    const Case cases[] = {
        {"1.10", "1.9", true},
        {"1.9", "1.10", false},
        {"2.0", "2.0", false},
        {"1.0.0", "1.0", true},
        {"1.0", "1.0.0", false},
        {"1.a", "1.0", false},
        {"1", "", true},
        {"", "1", false},
        {"x", "", true},
        {"1..2", "1.0.2", false},
        {"2", "10", false},
        {" 2.+1", "2.0", true},
        {"2.0", "2.99999999999", false},
        {"3.0", "2.99999999999", true},
        {"", "", false},
    };
    for (const auto& [version, other, greater] : cases) {
        SCOPED_TRACE(version + " > " + other);
        EXPECT_EQ(StringUtils::greaterVersion(version, other), greater);
    }
}

TEST(PathsAndVersions, PairedDelimiters) {
    using Pairs = std::vector<std::pair<size_t, size_t>>;
    struct Case {
        std::string text;
        char open;
        char close;
        Pairs unsorted;
        Pairs sorted;
    };
    const Case cases[] = {
        {"a(b)c", '(', ')', {{1, 3}}, {{1, 3}}},
        {"((x))", '(', ')', {{1, 3}, {0, 4}}, {{0, 4}, {1, 3}}},
        {"(a)(b(c))", '(', ')', {{0, 2}, {5, 7}, {3, 8}}, {{0, 2}, {3, 8}, {5, 7}}},
        {"a)b(", '(', ')', {}, {}},
        {"(a", '(', ')', {}, {}},
        {"", '(', ')', {}, {}},
        {"no delimiters", '(', ')', {}, {}},
        {"say \"hi\" now", '"', '"', {{4, 7}}, {{4, 7}}},
        {"\"a\"b\"", '"', '"', {}, {}},
        {"\"\"\"\"", '"', '"', {{0, 1}, {2, 3}}, {{0, 1}, {2, 3}}},
    };
    for (const auto& [text, open, close, unsorted, sorted] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::getPairedDelimitersPositions(text, open, close, false), unsorted);
        EXPECT_EQ(StringUtils::getPairedDelimitersPositions(text, open, close, true), sorted);
    }
}

TEST(PathsAndVersions, SubstitutePrefix) {
    struct Case {
        std::string text;
        std::string prefix;
        std::string replacement;
        std::string result;
    };
    const Case cases[] = {
        {"sip:alice", "sip:", "tel:", "tel:alice"},
        {"alice", "sip:", "tel:", "alice"},
        {"alice", "", "x", "xalice"},
        {"si", "sip:", "tel:", "si"},
        {"sip:sip:a", "sip:", "", "sip:a"},
        {"SIP:a", "sip:", "tel:", "SIP:a"},
    };
    for (const auto& [text, prefix, replacement, result] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(StringUtils::substitutePrefix(text, prefix, replacement), result);
        EXPECT_EQ(StringUtils::substitutePrefix(widen(text), widen(prefix), widen(replacement)),
                  widen(result));
    }
}

}  // namespace
