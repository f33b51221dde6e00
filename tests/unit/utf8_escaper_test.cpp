// The writer's direct UTF-8 encoding gives exactly the bytes of an
// XMLFormatter writing UTF-8, for every escape flag.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "format_capture.h"
#include "out/utf8_escaper.h"

XERCES_CPP_NAMESPACE_USE
using lumxml::Utf8Escaper;

namespace {

using Capture = lumtest::FormatCapture;

class Utf8Direct : public ::testing::Test {
protected:
    static void SetUpTestSuite() { XMLPlatformUtils::Initialize(); }
    static void TearDownTestSuite() { XMLPlatformUtils::Terminate(); }

    static std::string formatted(const std::u16string& text, XMLFormatter::EscapeFlags flags) {
        Capture capture;
        XMLCh utf8[] = {'U', 'T', 'F', '-', '8', 0};
        XMLFormatter formatter(utf8, &capture, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef);
        formatter.formatBuf(reinterpret_cast<const XMLCh*>(text.data()), text.size(), flags);
        return capture.bytes;
    }
};

const XMLFormatter::EscapeFlags kFlags[] = {XMLFormatter::NoEscapes, XMLFormatter::StdEscapes,
                                            XMLFormatter::AttrEscapes, XMLFormatter::CharEscapes};

TEST_F(Utf8Direct, EveryAsciiCharacterAsTheFormatterWritesIt) {
    for (XMLFormatter::EscapeFlags flags : kFlags) {
        for (char16_t c = 1; c < 128; ++c) {
            std::u16string text(1, c);
            std::string direct;
            ASSERT_TRUE(Utf8Escaper::instance().append(reinterpret_cast<const XMLCh*>(text.data()),
                                                       1, flags, direct));
            EXPECT_EQ(direct, formatted(text, flags)) << "flags " << flags << ", character " << int(c);
        }
    }
}

TEST_F(Utf8Direct, MarkupCharactersAreEscapedByFlag) {
    std::u16string text = u"<a href=\"x\">&'\n\t</a>";
    std::string direct;
    ASSERT_TRUE(Utf8Escaper::instance().append(reinterpret_cast<const XMLCh*>(text.data()),
                                               text.size(), XMLFormatter::StdEscapes, direct));
    EXPECT_EQ(direct, "&lt;a href=&quot;x&quot;&gt;&amp;&apos;\n\t&lt;/a&gt;");
}

TEST_F(Utf8Direct, RandomTextsWithoutSurrogatesMatchTheFormatter) {
    std::mt19937 random(7);
    // Mostly markup and ASCII, some two- and three-byte characters.
    const char16_t pool[] = {u'a', u'<', u'>', u'&', u'"', u'\'', u' ', u'\n', u'\r', u'\t',
                             u'\u00e9', u'\u07ff', u'\u0800', u'\u4e2d', u'\uffee', u'\u0085'};
    for (int round = 0; round < 2000; ++round) {
        std::u16string text;
        for (size_t n = random() % 40; n > 0; --n) text += pool[random() % std::size(pool)];
        for (XMLFormatter::EscapeFlags flags : kFlags) {
            std::string direct;
            ASSERT_TRUE(Utf8Escaper::instance().append(
                reinterpret_cast<const XMLCh*>(text.data()), text.size(), flags, direct));
            ASSERT_EQ(direct, formatted(text, flags)) << "round " << round;
        }
    }
}

TEST_F(Utf8Direct, SurrogatesAreLeftToTheFormatter) {
    std::u16string text = u"a\U0001D11Eb";
    std::string direct = "kept";
    EXPECT_FALSE(Utf8Escaper::instance().append(reinterpret_cast<const XMLCh*>(text.data()),
                                                text.size(), XMLFormatter::StdEscapes, direct));
    EXPECT_EQ(direct, "kept");
}

TEST_F(Utf8Direct, Utf8NamesInAnyCase) {
    EXPECT_TRUE(Utf8Escaper::isUtf8("UTF-8"));
    EXPECT_TRUE(Utf8Escaper::isUtf8("utf-8"));
    EXPECT_TRUE(Utf8Escaper::isUtf8("Utf8"));
    EXPECT_FALSE(Utf8Escaper::isUtf8("UTF-16"));
    EXPECT_FALSE(Utf8Escaper::isUtf8("ISO-8859-1"));
    EXPECT_FALSE(Utf8Escaper::isUtf8(nullptr));
}

}  // namespace
