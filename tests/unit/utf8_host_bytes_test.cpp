// Host texts in UTF-8 are encoded for UTF-8 output without going through
// UTF-16, and must give exactly the bytes of the way through UTF-16: the
// host codec's conversion followed by an XMLFormatter writing UTF-8.
// Whatever the shortcut does not take (four-byte characters, ill-formed
// bytes) it must refuse, so that the general way writes it.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include "frame/host_codec.h"
#include "format_capture.h"
#include "out/utf8_escaper.h"

XERCES_CPP_NAMESPACE_USE
using lumxml::Utf8Escaper;

namespace {

using Capture = lumtest::FormatCapture;

const XMLFormatter::EscapeFlags kFlags[] = {XMLFormatter::NoEscapes, XMLFormatter::StdEscapes,
                                            XMLFormatter::AttrEscapes, XMLFormatter::CharEscapes};

class HostUtf8Bytes : public ::testing::Test {
protected:
    static void SetUpTestSuite() { XMLPlatformUtils::Initialize(); }
    static void TearDownTestSuite() { XMLPlatformUtils::Terminate(); }

    // The general way: host codec to UTF-16, then the formatter.
    static std::string throughUtf16(const std::string& text, XMLFormatter::EscapeFlags flags) {
        lumxml::XmlString units(text.c_str());
        Capture capture;
        XMLCh utf8[] = {'U', 'T', 'F', '-', '8', 0};
        XMLFormatter formatter(utf8, &capture, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef);
        formatter.formatBuf(units.get(), XMLString::stringLen(units.get()), flags);
        return capture.bytes;
    }

    // The shortcut; false when it refuses the text.
    static bool direct(const std::string& text, XMLFormatter::EscapeFlags flags, std::string& out) {
        const Utf8Escaper& escaper = Utf8Escaper::instance();
        std::vector<char> room(escaper.maxBytes(text.size()) + 1);
        char* end = escaper.encodeUtf8(text.data(), text.size(), flags, room.data());
        if (end == nullptr) return false;
        out.assign(room.data(), end);
        return true;
    }
};

std::string utf8Of(char32_t c) {
    std::string s;
    if (c < 0x80) {
        s += static_cast<char>(c);
    } else if (c < 0x800) {
        s += static_cast<char>(0xC0 | (c >> 6));
        s += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        s += static_cast<char>(0xE0 | (c >> 12));
        s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        s += static_cast<char>(0xF0 | (c >> 18));
        s += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        s += static_cast<char>(0x80 | (c & 0x3F));
    }
    return s;
}

TEST_F(HostUtf8Bytes, EveryCharacterOfTheBasicPlaneAsTheWayThroughUtf16WritesIt) {
    for (XMLFormatter::EscapeFlags flags : kFlags) {
        for (char32_t c = 1; c < 0x10000; ++c) {
            if (c >= 0xD800 && c <= 0xDFFF) continue;
            // Between two letters, so that a character is never alone.
            std::string text = "a" + utf8Of(c) + "b";
            std::string bytes;
            ASSERT_TRUE(direct(text, flags, bytes)) << "U+" << std::hex << unsigned(c);
            ASSERT_EQ(bytes, throughUtf16(text, flags)) << "flags " << flags << ", U+" << std::hex
                                                        << unsigned(c);
        }
    }
}

TEST_F(HostUtf8Bytes, MarkupCharactersAreEscapedByFlag) {
    std::string bytes;
    ASSERT_TRUE(direct("<a href=\"x\">&'\n\t\r</a> caf\xC3\xA9", XMLFormatter::StdEscapes, bytes));
    EXPECT_EQ(bytes, throughUtf16("<a href=\"x\">&'\n\t\r</a> caf\xC3\xA9", XMLFormatter::StdEscapes));
    EXPECT_EQ(bytes.substr(0, 11), "&lt;a href=");
}

TEST_F(HostUtf8Bytes, FourByteCharactersAreLeftToTheWayThroughUtf16) {
    std::string bytes;
    EXPECT_FALSE(direct("x" + utf8Of(0x1F600) + "y", XMLFormatter::StdEscapes, bytes));
    EXPECT_FALSE(direct(utf8Of(0x10000), XMLFormatter::NoEscapes, bytes));
    EXPECT_FALSE(direct(utf8Of(0x10FFFF), XMLFormatter::AttrEscapes, bytes));
}

TEST_F(HostUtf8Bytes, IllFormedBytesAreLeftToTheWayThroughUtf16) {
    const char* const illFormed[] = {
        "\xC3",              // truncated two-byte character
        "a\xC3",             // ... at the end of a text
        "\xC3x",             // lead byte without its continuation
        "\xC0\xAF",          // overlong two-byte form
        "\xC1\xBF",          // overlong two-byte form
        "\xE0\x80\x80",      // overlong three-byte form
        "\xE0\x9F\xBF",      // overlong three-byte form
        "\xED\xA0\x80",      // a surrogate written in UTF-8
        "\xED\xBF\xBF",      // a surrogate written in UTF-8
        "\xE4\xB8",          // truncated three-byte character
        "\xE4x\xAD",         // bad continuation
        "\x80",              // lone continuation byte
        "\xBF",              // lone continuation byte
        "\xF8\x88\x80\x80",  // five-byte lead
        "\xFE",              // never in UTF-8
        "\xFF",              // never in UTF-8
        "\xF4\x90\x80\x80",  // beyond U+10FFFF
    };
    for (const char* text : illFormed) {
        std::string bytes;
        EXPECT_FALSE(direct(text, XMLFormatter::StdEscapes, bytes)) << text;
    }
}

TEST_F(HostUtf8Bytes, RandomTextsMatchOrAreRefused) {
    std::mt19937 random(11);
    const std::vector<std::string> pool = {
        "a", "<", ">", "&", "\"", "'", " ", "\n", "\r", "\t", "\x01", "\x7F",
        utf8Of(0xE9), utf8Of(0x7FF), utf8Of(0x800), utf8Of(0x4E2D), utf8Of(0xFFFE),
        utf8Of(0xFFFF), utf8Of(0x85), utf8Of(0x2028), utf8Of(0x1F600), "\xC3", "\x80", "\xED\xA0\x80"};
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (size_t n = 1 + random() % 30; n > 0; --n) text += pool[random() % pool.size()];
        for (XMLFormatter::EscapeFlags flags : kFlags) {
            std::string bytes;
            if (!direct(text, flags, bytes)) {
                ++refused;
                continue;
            }
            ASSERT_EQ(bytes, throughUtf16(text, flags)) << "round " << round;
        }
    }
    EXPECT_GT(refused, 0);
}

TEST_F(HostUtf8Bytes, RoomCoversTheLongestEscapes) {
    // Every ASCII character written with every flag fits maxBytes.
    std::string all;
    for (char c = 1; c > 0 && c < 127; ++c) all += c;
    all += '\x7F';
    for (XMLFormatter::EscapeFlags flags : kFlags) {
        std::string bytes;
        ASSERT_TRUE(direct(all, flags, bytes));
        EXPECT_LE(bytes.size(), Utf8Escaper::instance().maxBytes(all.size()));
        EXPECT_EQ(bytes, throughUtf16(all, flags));
    }
}

TEST_F(HostUtf8Bytes, PlainMarkupMeansPrintableAsciiIsWrittenAsItself) {
    // The writer copies its fixed markup as it is when this holds.
    ASSERT_TRUE(Utf8Escaper::instance().plainMarkup());
    std::string printable = "\n";
    for (char c = 0x20; c < 0x7F; ++c) printable += c;
    EXPECT_EQ(throughUtf16(printable, XMLFormatter::NoEscapes), printable);
}

}  // namespace
