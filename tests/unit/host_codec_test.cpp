// The host codec after lumInitParser chose a code page.
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "start_library.h"

using namespace lumxml;

namespace {

std::u16string toXml(const std::string& bytes) {
    XmlString text(bytes.c_str());
    return text.get();
}

std::string toHost(const std::u16string& text) {
    HostString bytes(text.c_str());
    return bytes.get();
}

TEST(HostCodec, Latin1ByteBecomesItsCharacterAndBack) {
    lumtest::startInternals("ISO-8859-1");
    EXPECT_EQ(toXml("\xE9"), u"\u00E9");
    EXPECT_EQ(toHost(u"\u00E9"), "\xE9");
    EXPECT_EQ(toHost(u"caf\u00E9"), "caf\xE9");
}

TEST(HostCodec, Windows1252MapsByte80ToEuro) {
    lumtest::startInternals("windows-1252");
    EXPECT_EQ(toXml("\x80"), u"\u20AC");
    EXPECT_EQ(toHost(u"\u20AC"), "\x80");
}

TEST(HostCodec, Utf8GivesTwoBytesForEAcute) {
    lumtest::startInternals("UTF-8");
    EXPECT_EQ(toHost(u"\u00E9"), "\xC3\xA9");
    EXPECT_EQ(toXml("\xC3\xA9"), u"\u00E9");
}

TEST(HostCodec, UnknownCodePageFallsBackToUtf8) {
    lumtest::startInternals("ISO-8859-1");
    lumtest::startInternals("no-such-page");
    EXPECT_EQ(toHost(u"\u00E9"), "\xC3\xA9");
}

TEST(HostCodec, NullStaysNullAndEmptyStaysEmpty) {
    lumtest::startInternals("UTF-8");
    EXPECT_EQ(codec::toXml(nullptr), nullptr);
    EXPECT_EQ(codec::toHost(static_cast<const XMLCh*>(nullptr)), nullptr);
    EXPECT_EQ(toXml(""), u"");
    EXPECT_EQ(toHost(u""), "");
}

TEST(HostCodec, UnrepresentableCharacterIsSubstituted) {
    lumtest::startInternals("ISO-8859-1");
    std::string bytes = toHost(u"a\u4E2Db");
    ASSERT_EQ(bytes.size(), 3u);
    EXPECT_EQ(bytes[0], 'a');
    EXPECT_NE(bytes[1], 'a');
    EXPECT_EQ(bytes[2], 'b');
}

TEST(HostCodec, LongTextRoundTrips) {
    lumtest::startInternals("UTF-8");
    std::u16string text;
    for (int i = 0; i < 100000; ++i) text += static_cast<char16_t>(0x20 + (i % 0x3000));
    EXPECT_EQ(toXml(toHost(text)), text);
}

TEST(HostCodec, FourThreadsConvertAlike) {
    lumtest::startInternals("windows-1252");
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < 2000; ++i) {
                if (toXml("\x80\xE9x") != u"\u20AC\u00E9x") ++failures[t];
                if (toHost(u"\u20AC\u00E9x") != "\x80\xE9x") ++failures[t];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < 4; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
}

}  // namespace
