// The platform seam behaves alike on Linux and Windows (there under Wine).
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "frame/platform.h"
#include "host_test.h"

using namespace lumxml;

namespace {

int sign(int value) { return (value > 0) - (value < 0); }

TEST(Platform, CompareIgnoringCaseFoldsAsciiLetters) {
    EXPECT_EQ(platform::compareIgnoringCase("Windows-1252", "WINDOWS-1252"), 0);
    EXPECT_EQ(platform::compareIgnoringCase("", ""), 0);
    EXPECT_EQ(sign(platform::compareIgnoringCase("abc", "ABD")), -1);
    EXPECT_EQ(sign(platform::compareIgnoringCase("abcd", "ABC")), 1);
}

TEST(Platform, CompareIgnoringCaseLeavesOtherBytesAlone) {
    // E-acute in Latin-1, capital and small: not ASCII, so not folded.
    EXPECT_NE(platform::compareIgnoringCase("\xC9", "\xE9"), 0);
    // '[' sorts after 'Z' but before 'a': letters compare as lower case.
    EXPECT_EQ(sign(platform::compareIgnoringCase("Z", "[")), 1);
}

TEST(Platform, WideNameWithAccentOpensThatFile) {
    lumtest::TempDir folder;
    const std::u16string name = u"caf\u00e9 \u65e5\u672c.txt";
    std::u16string full = std::filesystem::path(folder.path()).u16string() + u"/" + name;
    std::FILE* file =
        platform::openFile(reinterpret_cast<const lum_wchar_t*>(full.c_str()), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("written", file);
    std::fclose(file);

    std::filesystem::path written = std::filesystem::path(folder.path()) / name;
    ASSERT_TRUE(std::filesystem::exists(written));
    EXPECT_EQ(std::filesystem::file_size(written), 7u);
}

TEST(Platform, NullNamesOpenNothing) {
    EXPECT_EQ(platform::openFile(static_cast<const char*>(nullptr), "wb"), nullptr);
    EXPECT_EQ(platform::openFile(static_cast<const lum_wchar_t*>(nullptr), "wb"), nullptr);
}

TEST(TempDir, FilesWrittenThereReadBackAndGoWithTheFolder) {
    std::string path;
    {
        lumtest::TempDir folder;
        path = folder.path();
        std::string file = folder.write("sub/one.txt", "content\n");
        EXPECT_EQ(lumtest::readFile(file), "content\n");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
