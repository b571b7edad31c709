#include "StringUtils/HexAndFileName.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(HexAndFileName, ToHexString) {
    const std::pair<int, const char*> cases[] = {
        {0, "0x0"},         {255, "0xff"},           {1234, "0x4d2"},     {INT_MAX, "0x7fffffff"},
        {-1, "0xffffffff"}, {INT_MIN, "0x80000000"}, {-16, "0xfffffff0"},
    };
    for (const auto& [value, text] : cases) {
        SCOPED_TRACE(value);
        EXPECT_EQ(StringUtils::toHexString(value), text);
    }
}

TEST(HexAndFileName, FilenameFromPath) {
    const std::pair<std::string, std::string> cases[] = {
        {"/usr/src/lib/main.cpp", "main.cpp"},
        {"dir\\sub\\file.cpp", "file.cpp"},
        {"a\\b/c", "c"},
        {"a/b\\c", "c"},
        {"main.cpp", "main.cpp"},
        {"", ""},
        {"logs/", ""},
        {"logs\\", ""},
        {"/", ""},
        {"d:file.cpp", "d:file.cpp"},
        {std::string("a\0/b", 4), "b"},
    };
    for (const auto& [path, name] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(StringUtils::filenameFromPath(path), name);
    }
}

}  // namespace
