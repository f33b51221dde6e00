// The host codec's own UTF-16 -> UTF-8 conversion, used instead of ICU when
// the host code page is UTF-8: it must give byte for byte what ICU's
// converter gives (U+FFFD for an unpaired surrogate), and it must be taken
// only while the chosen code page is UTF-8.
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "start_library.h"

using namespace lumxml;

namespace {

// What ICU makes of `text`, with the substitution character U+FFFD.
std::string icuUtf8(const std::u16string& text) {
    std::string out(text.size() * 3 + 1, '\0');
    int32_t produced = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(&out[0], static_cast<int32_t>(out.size()), &produced,
                       reinterpret_cast<const UChar*>(text.data()),
                       static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &status);
    EXPECT_TRUE(U_SUCCESS(status));
    out.resize(static_cast<size_t>(produced));
    return out;
}

std::string ownUtf8(const std::u16string& text) {
    std::string out(text.size() * 3, '\0');
    out.resize(codec::utf16ToUtf8(reinterpret_cast<const XMLCh*>(text.data()), text.size(),
                                  out.empty() ? nullptr : &out[0]));
    return out;
}

std::string hostCopy(const std::u16string& text) {
    HostString copy(reinterpret_cast<const XMLCh*>(text.c_str()), text.size());
    return std::string(copy.get());
}

class HostUtf8Copy : public ::testing::Test {
protected:
    void SetUp() override { lumtest::startInternals("UTF-8"); }
    void TearDown() override { lumtest::startInternals("UTF-8"); }
};

TEST_F(HostUtf8Copy, EveryKindOfUnitIsEncodedAsIcuEncodesIt) {
    const std::vector<std::u16string> samples = {
        u"",
        u"a",
        u"abc",
        u"abcd",
        u"plain ascii text longer than eight units",
        u"caf\u00E9",
        u"\u007F\u0080\u07FF\u0800\uFFFF",
        u"\u20AC uro and \u4E2D\u6587",
        u"\U0001F600 pair",
        u"abc\U0001F600",
        std::u16string(1, char16_t(0xD800)) + u"lone lead",
        u"lone trail" + std::u16string(1, char16_t(0xDC00)),
        u"lead at the end" + std::u16string(1, char16_t(0xDBFF)),
        std::u16string{char16_t(0xDC00), char16_t(0xD800)},  // reversed pair
        std::u16string{char16_t(0xD800), char16_t(0xD800), char16_t(0xDC00)},
        u"abc\u00E9defg\u00E9hijklmn",
    };
    for (const std::u16string& sample : samples) {
        EXPECT_EQ(ownUtf8(sample), icuUtf8(sample)) << "sample of " << sample.size() << " units";
    }
}

TEST_F(HostUtf8Copy, RandomTextsAreEncodedAsIcuEncodesThem) {
    std::mt19937 random(20261122);
    // Mostly ASCII runs with every other range mixed in, surrogates included.
    const char16_t starts[] = {0x20, 0x80, 0x800, 0xD800, 0xDC00, 0xE000};
    const char16_t spans[] = {0x5F, 0x780, 0x7800, 0x400, 0x400, 0x2000};
    for (int round = 0; round < 2000; ++round) {
        std::u16string text(random() % 40, u' ');
        for (char16_t& unit : text) {
            const unsigned range = random() % 10 < 6 ? 0 : random() % 6;
            unit = static_cast<char16_t>(starts[range] + random() % spans[range]);
        }
        ASSERT_EQ(ownUtf8(text), icuUtf8(text)) << "round " << round;
    }
}

TEST_F(HostUtf8Copy, CopiesUseTheFastPathOnlyWhileTheCodePageIsUtf8) {
    EXPECT_TRUE(codec::hostIsUtf8());
    EXPECT_EQ(hostCopy(u"caf\u00E9"), "caf\xC3\xA9");
    lumtest::startInternals("ISO-8859-1");
    EXPECT_FALSE(codec::hostIsUtf8());
    EXPECT_EQ(hostCopy(u"caf\u00E9"), "caf\xE9");
    lumtest::startInternals("UTF-8");
    EXPECT_TRUE(codec::hostIsUtf8());
    EXPECT_EQ(hostCopy(u"caf\u00E9"), "caf\xC3\xA9");
}

TEST_F(HostUtf8Copy, AppendedHostTextMatchesTheCopy) {
    const std::u16string text = u"x\u00E9\U0001F600" + std::u16string(1, char16_t(0xDC00));
    std::string appended = "<";
    codec::appendHost(appended, reinterpret_cast<const XMLCh*>(text.data()), text.size());
    EXPECT_EQ(appended, "<" + icuUtf8(text));
    EXPECT_EQ(hostCopy(text), icuUtf8(text));
}

}  // namespace
