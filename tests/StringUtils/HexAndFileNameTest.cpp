#include "StringUtils/HexAndFileName.h"

#include <gtest/gtest.h>

#include <climits>

using namespace StringUtils;

TEST(HexAndFileName, ToHexString) {
    const struct {
        int value;
        const char* hex;
    } cases[] = {{0, "0x0"},          {255, "0xff"},      {INT_MAX, "0x7fffffff"},
                 {-16, "0xfffffff0"}, {-1, "0xffffffff"}, {INT_MIN, "0x80000000"}};
    for (const auto& c : cases) EXPECT_EQ(toHexString(c.value), c.hex) << c.value;
}

TEST(HexAndFileName, FilenameFromPath) {
    const struct {
        std::string path, name;
    } cases[] = {{"a\\b/c", "c"},
                 {"a/b\\c", "c"},
                 {"main.cpp", "main.cpp"},
                 {"logs/", ""},
                 {std::string("a\0/b", 4), "b"}};
    for (const auto& c : cases) EXPECT_EQ(filenameFromPath(c.path), c.name) << c.path;
}
