// String results of node methods: short texts of a UTF-8 host are converted
// in a buffer of the thread, longer ones and other code pages through a
// block from Xerces' memory manager. Both routes must give the host the
// same bytes, the same terminator and the same code, for the plain copy
// (stringOut) and the byte-counting one (countedStringOut), whatever the
// limit. Compared here, on seeded random texts either side of the buffer's
// size, with the byte loop the counted copy has always been defined by.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dom/methods/method_call.h"
#include "frame/host_codec.h"
#include "start_library.h"

using namespace lumxml;

namespace {

struct Outcome {
    std::vector<char> bytes;
    int32_t code = 0;
    std::string message;
};

constexpr size_t kResult = 8192;

// The counted copy, byte by byte: the first byte always, then before each
// further byte a counter from L is decremented and reaching 0 stops.
Outcome countedByBytes(const XMLCh* text, uint32_t limit) {
    Outcome outcome;
    outcome.bytes.assign(kResult, '\x7f');
    char* host = codec::toHost(text);
    char* out = outcome.bytes.data();
    out[0] = host[0];
    uint32_t counter = limit;
    for (size_t i = 1; host[i - 1] != '\0'; ++i) {
        if (--counter == 0) {
            outcome.code = 12;
            outcome.message = "String length too long";
            break;
        }
        out[i] = host[i];
    }
    codec::release(host);
    return outcome;
}

Outcome viaMethodCall(const XMLCh* text, uint32_t limit, bool counted) {
    Outcome outcome;
    outcome.bytes.assign(kResult, '\x7f');
    char buffer[257] = {0};
    ErrorReport report(buffer, &outcome.code);
    MethodCall call(nullptr, outcome.bytes.data(), report);
    if (counted)
        call.countedStringOut(text, limit);
    else
        call.stringOut(text, limit);
    outcome.message = buffer;
    return outcome;
}

std::u16string randomText(std::mt19937& random) {
    // Lengths on both sides of the thread buffer (4096 bytes, 1365 units).
    size_t lengths[] = {0, 1, 5, 40, 1300, 1364, 1365, 1366, 2000};
    size_t length = lengths[random() % (sizeof lengths / sizeof lengths[0])];
    std::u16string text;
    for (size_t i = 0; i < length; ++i) {
        switch (random() % 6) {
        case 0: text += static_cast<char16_t>(0x20 + random() % 0x5f); break;
        case 1: text += static_cast<char16_t>(0xA0 + random() % 0x700); break;
        case 2: text += static_cast<char16_t>(0x3000 + random() % 0x5000); break;
        case 3:  // a pair
            text += static_cast<char16_t>(0xD800 + random() % 0x400);
            text += static_cast<char16_t>(0xDC00 + random() % 0x400);
            break;
        case 4:  // a lone surrogate becomes U+FFFD
            text += static_cast<char16_t>(0xD800 + random() % 0x800);
            break;
        default: text += u'a'; break;
        }
    }
    return text;
}

uint32_t randomLimit(std::mt19937& random, size_t units) {
    switch (random() % 4) {
    case 0: return 0;
    case 1: return static_cast<uint32_t>(units + random() % 3);
    case 2: return static_cast<uint32_t>(random() % (units * 3 + 2));
    default: return static_cast<uint32_t>(units * 3 + 1 + random() % 4);
    }
}

class MethodCallStrings : public ::testing::Test {
protected:
    void SetUp() override { lumtest::startInternals(); }
};

TEST_F(MethodCallStrings, CountedCopyGivesTheBytesOfTheByteLoop) {
    std::mt19937 random(20261123);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text = randomText(random);
        const XMLCh* units = reinterpret_cast<const XMLCh*>(text.c_str());
        uint32_t limit = randomLimit(random, text.size());
        Outcome expected = countedByBytes(units, limit);
        Outcome got = viaMethodCall(units, limit, true);
        ASSERT_EQ(got.code, expected.code) << "round " << round << " limit " << limit;
        ASSERT_EQ(got.message, expected.message) << "round " << round;
        ASSERT_EQ(got.bytes, expected.bytes) << "round " << round << " limit " << limit;
    }
}

TEST_F(MethodCallStrings, PlainCopyGivesTheHostStringWhole) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::u16string text = randomText(random);
        const XMLCh* units = reinterpret_cast<const XMLCh*>(text.c_str());
        uint32_t limit = randomLimit(random, text.size());
        Outcome got = viaMethodCall(units, limit, false);
        Outcome expected;
        expected.bytes.assign(kResult, '\x7f');
        if (text.size() >= limit) {
            expected.code = 12;
            expected.message = "String length too long";
        } else {
            char* host = codec::toHost(units);
            std::memcpy(expected.bytes.data(), host, std::strlen(host) + 1);
            codec::release(host);
        }
        ASSERT_EQ(got.code, expected.code) << "round " << round;
        ASSERT_EQ(got.message, expected.message) << "round " << round;
        ASSERT_EQ(got.bytes, expected.bytes) << "round " << round;
    }
}

}  // namespace
