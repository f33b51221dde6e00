// Host texts converted into a buffer that callers reuse give exactly the
// units of the allocating conversion, in every code page, and the
// UTF-8 flag follows the code page lumInitParser chose.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "start_library.h"

using namespace lumxml;

namespace {

std::u16string allocated(const std::string& bytes) {
    XmlString text(bytes.c_str());
    return text.get();
}

std::u16string reused(const std::string& bytes, std::basic_string<XMLCh>& buffer) {
    const XMLCh* units = codec::toXml(bytes.c_str(), bytes.size(), buffer);
    return units;
}

const std::vector<std::string> kTexts = {
    "a much longer text than any of the others, so that the buffer grows first",
    "", "x", "caf\xC3\xA9", "\xE4\xB8\xAD\xE6\x96\x87", "\xF0\x9F\x98\x80 smile",
    "\xC3", "\xED\xA0\x80", "\xFF\xFE", "\x80\x81\x9F", "tail \xE9\xE8"};

TEST(HostCodecReusedBuffer, Utf8TextsGiveTheUnitsOfTheAllocatingConversion) {
    lumtest::startInternals("UTF-8");
    EXPECT_TRUE(codec::hostIsUtf8());
    std::basic_string<XMLCh> buffer;
    for (const std::string& text : kTexts) EXPECT_EQ(reused(text, buffer), allocated(text)) << text;
}

TEST(HostCodecReusedBuffer, OtherCodePagesGiveTheUnitsOfTheAllocatingConversion) {
    for (const char* page : {"ISO-8859-1", "windows-1252", "Shift_JIS", "ibm-037"}) {
        lumtest::startInternals(page);
        EXPECT_FALSE(codec::hostIsUtf8()) << page;
        std::basic_string<XMLCh> buffer;
        for (const std::string& text : kTexts)
            EXPECT_EQ(reused(text, buffer), allocated(text)) << page << ": " << text;
    }
    lumtest::startInternals("UTF-8");
}

TEST(HostCodecReusedBuffer, NullStaysNull) {
    std::basic_string<XMLCh> buffer;
    EXPECT_EQ(codec::toXml(nullptr, 0, buffer), nullptr);
}

TEST(HostCodecReusedBuffer, ShorterTextAfterALongerOneEndsAtItsOwnLength) {
    lumtest::startInternals("UTF-8");
    std::basic_string<XMLCh> buffer;
    reused("a long first text", buffer);
    EXPECT_EQ(reused("ab", buffer), u"ab");
}

TEST(HostCodecReusedBuffer, Utf8AliasCountsAsUtf8) {
    lumtest::startInternals("utf8");
    EXPECT_TRUE(codec::hostIsUtf8());
    lumtest::startInternals("ISO-8859-1");
    EXPECT_FALSE(codec::hostIsUtf8());
    lumtest::startInternals("UTF-8");
    EXPECT_TRUE(codec::hostIsUtf8());
}

}  // namespace
