// The pull reader's event strings from kept blocks, against the copies they
// stand in for, on seeded random input:
//   - the pool's copies (ASCII straight into a block, the rest through the
//     UTF-8 encoder) give exactly the bytes of the host codec's copy, for
//     texts with surrogate pairs, lone surrogates and every kind of unit;
//   - a kept block is only handed out for a string it can hold, whoever
//     made the string it held and however the host shortened it;
//   - cleared "StartElement" lists give their strings and entries back and
//     a later list gets zero-filled entries;
//   - in other code pages the copies are the host codec's own.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/util/XMLUni.hpp>

#include "frame/host_codec.h"
#include "sax/attr_list.h"
#include "sax/sax_events.h"
#include "sax/string_pool.h"
#include "start_library.h"

using namespace lumxml;

namespace {

const XMLCh* units(const std::u16string& text) { return reinterpret_cast<const XMLCh*>(text.data()); }

std::u16string randomText(std::mt19937& random, size_t maxLength) {
    static const char16_t kPool[] = {u'a', u' ', u'<', u'&', u'\n', u'\x7f', u'\u0080', u'\u00e9',
                                     u'\u07ff', u'\u0800', u'\u20ac', u'\u4e2d', u'\ufffd',
                                     u'\uffff', char16_t{0xD800}, char16_t{0xDBFF}, char16_t{0xDC00},
                                     char16_t{0xDFFF}};
    std::u16string text;
    const size_t length = random() % (maxLength + 1);
    // Long ASCII runs as well as mixed text.
    const bool ascii = random() % 2 == 0;
    while (text.size() < length) {
        if (ascii || random() % 3 != 0)
            text += static_cast<char16_t>(1 + random() % 0x7F);
        else
            text += kPool[random() % (sizeof kPool / sizeof kPool[0])];
    }
    return text;
}

// The host codec's copy, as the events were made before.
std::string codecCopy(const std::u16string& text) {
    char* copy = codec::toHost(units(text), text.size());
    std::string bytes(copy);
    codec::release(copy);
    return bytes;
}

class SaxStringPool : public ::testing::Test {
protected:
    void SetUp() override { lumtest::startInternals("UTF-8"); }
    void TearDown() override { lumtest::startInternals("UTF-8"); }
};

TEST_F(SaxStringPool, CopiesEqualTheCodecsOnRandomText) {
    std::mt19937 random(31337);
    sax::EventPool pool;
    std::vector<char*> live;
    for (int round = 0; round < 20000; ++round) {
        const std::u16string text = randomText(random, round % 10 == 0 ? 400 : 40);
        char* copy = pool.copy(units(text), text.size());
        ASSERT_NE(copy, nullptr);
        ASSERT_EQ(std::string(copy), codecCopy(text)) << "round " << round;
        // NUL-terminated texts take the same way.
        char* terminated = pool.copy(units(text));
        ASSERT_EQ(std::string(terminated), std::string(copy)) << "round " << round;
        live.push_back(copy);
        live.push_back(terminated);
        // Strings go back in random order, some only later.
        while (!live.empty() && random() % 3 != 0) {
            const size_t at = random() % live.size();
            pool.strings().give(live[at]);
            live[at] = live.back();
            live.pop_back();
        }
    }
    for (char* text : live) pool.strings().give(text);
}

TEST_F(SaxStringPool, KeptBlocksAreHandedOutOnlyForStringsTheyHold) {
    sax::StringPool strings;
    // A string the host replaced through the attribute list functions (an
    // exact block), and one it shortened in place.
    char* replaced = attrlist::copyString("abc");
    char* shortened = strings.take(9);
    std::memcpy(shortened, "abcdefgh", 9);
    shortened[2] = '\0';
    strings.give(replaced);
    strings.give(shortened);
    // Both are filed under four and three bytes: asked for more, the pool
    // gives new blocks.
    char* longer = strings.take(5);
    EXPECT_NE(longer, replaced);
    EXPECT_NE(longer, shortened);
    EXPECT_EQ(strings.take(4), replaced);
    EXPECT_EQ(strings.take(3), shortened);
    for (char* block : {longer, replaced, shortened}) codec::release(block);
}

TEST_F(SaxStringPool, LongAndSurplusStringsAreReleased) {
    sax::StringPool strings;
    // Past the kept lengths and past the spares of one length: released
    // (the leak check of the sanitizer build would see anything lost).
    char* longText = strings.take(sax::StringPool::kMaxBytes + 1);
    std::memset(longText, 'x', sax::StringPool::kMaxBytes);
    longText[sax::StringPool::kMaxBytes] = '\0';
    strings.give(longText);
    std::vector<char*> blocks;
    for (int i = 0; i < sax::StringPool::kPerLength + 5; ++i) {
        blocks.push_back(strings.take(2));
        std::memcpy(blocks.back(), "a", 2);
    }
    for (char* block : blocks) strings.give(block);
    strings.give(nullptr);
}

TEST_F(SaxStringPool, CDataTypeIsCopiedWithoutBeingRead) {
    sax::EventPool pool;
    char* type = pool.copyType(xercesc::XMLUni::fgCDATAString);
    EXPECT_STREQ(type, "CDATA");
    const std::u16string other = u"NMTOKEN";
    char* token = pool.copyType(units(other));
    EXPECT_STREQ(token, "NMTOKEN");
    pool.strings().give(type);
    pool.strings().give(token);
}

TEST_F(SaxStringPool, ClearedListsGiveBackTheirEntriesZeroFilledForTheNext) {
    sax::EventPool pool;
    SaxEvent event;
    std::memset(&event, 0, sizeof event);
    SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(&event);
    list->capacity = 3;
    list->count = 2;
    list->entries = pool.takeEntries(3);
    for (int i = 0; i < 2; ++i) {
        list->entries[i].qName = pool.copy(u"a");
        list->entries[i].value = pool.copy(u"v");
    }
    SaxAttribute* entries = list->entries;
    sax::finishEvent(event, sax::kStartElement, 4);
    sax::clearEvent(&event, &pool);
    EXPECT_EQ(list->entries, nullptr);
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->capacity, 0);
    SaxAttribute* again = pool.takeEntries(3);
    EXPECT_EQ(again, entries);
    const SaxAttribute zero{};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(std::memcmp(&again[i], &zero, sizeof zero), 0);
    pool.giveEntries(again, 3);
}

TEST_F(SaxStringPool, OtherCodePagesCopyThroughTheCodec) {
    lumtest::startInternals("ISO-8859-1");
    sax::EventPool pool;
    const std::u16string text = u"caf\u00e9 \u20ac";
    char* copy = pool.copy(units(text), text.size());
    EXPECT_EQ(std::string(copy), codecCopy(text));
    char* marker = pool.copyUnlessEmptyMarker(u"EMPTY");
    EXPECT_EQ(marker, nullptr);
    pool.strings().give(copy);
}

}  // namespace
