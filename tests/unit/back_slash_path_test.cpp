// Network paths reach Xerces with backslashes.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "dom/load/back_slash_path.h"

using namespace lumxml;

namespace {

TEST(BackslashPath, EverySlashBecomesABackslash) {
    char out[32];
    std::memset(out, 'x', sizeof out);
    toBackslashPath(out, "//server/share/a.xml");
    EXPECT_STREQ(out, "\\\\server\\share\\a.xml");
}

TEST(BackslashPath, CopiesTheTerminatorAndNothingMore) {
    char out[8];
    std::memset(out, 'x', sizeof out);
    toBackslashPath(out, "a/b");
    EXPECT_EQ(std::string(out, 4), std::string("a\\b\0", 4));
    EXPECT_EQ(out[4], 'x');
}

TEST(BackslashPath, EmptyNameStaysEmpty) {
    EXPECT_EQ(toBackslashPath(""), "");
}

TEST(BackslashPath, OnlyTwoLeadingSlashesMakeANetworkPath) {
    EXPECT_TRUE(isNetworkPath("//server/x"));
    EXPECT_TRUE(isNetworkPath("///x"));
    EXPECT_FALSE(isNetworkPath("/tmp/x.xml"));
    EXPECT_FALSE(isNetworkPath("a//b"));
    EXPECT_FALSE(isNetworkPath(""));
    EXPECT_FALSE(isNetworkPath(nullptr));
}

TEST(BackslashPath, XercesSeesNetworkPathsWithBackslashesAndOthersUnchanged) {
    EXPECT_EQ(pathForXerces("//host/dir/doc.xml"), "\\\\host\\dir\\doc.xml");
    EXPECT_EQ(pathForXerces("/tmp/dir/doc.xml"), "/tmp/dir/doc.xml");
    EXPECT_EQ(pathForXerces("file:///tmp/doc.xml"), "file:///tmp/doc.xml");
}

}  // namespace
