// Attribute lists as a host builds and edits them through the exports. The
// records are read at their documented byte offsets: SaxAttrList is
// capacity@0, count@4, entries@8; SaxAttribute is localName@0, qName@8,
// uri@16, type@24, value@32 (40 bytes).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_records.h"
#include "host_test.h"
#include "lumxml.h"

using lumtest::readAt;
using lumtest::stringAt;
using lumtest::writeAt;

namespace {

constexpr size_t kEntrySize = 40;

int32_t capacityOf(const SaxAttrList* list) { return readAt<int32_t>(list, 0); }
int32_t countOf(const SaxAttrList* list) { return readAt<int32_t>(list, 4); }
unsigned char* entriesOf(const SaxAttrList* list) { return readAt<unsigned char*>(list, 8); }
SaxAttribute* entryOf(const SaxAttrList* list, int index) {
    return reinterpret_cast<SaxAttribute*>(entriesOf(list) + kEntrySize * index);
}

std::string field(const SaxAttribute* entry, size_t offset) {
    const char* text = stringAt(entry, offset);
    return text ? text : "<null>";
}
std::string localNameOf(const SaxAttribute* e) { return field(e, 0); }
std::string qNameOf(const SaxAttribute* e) { return field(e, 8); }
std::string uriOf(const SaxAttribute* e) { return field(e, 16); }
std::string typeOf(const SaxAttribute* e) { return field(e, 24); }
std::string valueOf(const SaxAttribute* e) { return field(e, 32); }

class AttributeLists : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
    void TearDown() override { lumSAXDeleteAttrList(list); }

    void insertNumbered(int count) {
        for (int i = 0; i < count; ++i) {
            std::string name = "a" + std::to_string(i);
            lumSAXInsertAttribute(&list, name.c_str(), ("v" + std::to_string(i)).c_str(),
                                  nullptr, "CDATA");
        }
    }

    SaxAttrList* list = nullptr;
};

TEST_F(AttributeLists, InsertIntoNullReferenceCreatesListOfTen) {
    lumSAXInsertAttribute(&list, "id", "1", nullptr, nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(capacityOf(list), 10);
    EXPECT_EQ(countOf(list), 1);
    EXPECT_EQ(qNameOf(entryOf(list, 0)), "id");
    EXPECT_EQ(valueOf(entryOf(list, 0)), "1");
}

TEST_F(AttributeLists, EleventhInsertGrowsToFifteenKeepingEarlierEntries) {
    insertNumbered(10);
    ASSERT_EQ(capacityOf(list), 10);
    std::vector<const char*> earlierNames;
    for (int i = 0; i < 10; ++i) earlierNames.push_back(stringAt(entryOf(list, i), 8));

    lumSAXInsertAttribute(&list, "a10", "v10", nullptr, "CDATA");

    EXPECT_EQ(capacityOf(list), 15);
    EXPECT_EQ(countOf(list), 11);
    for (int i = 0; i < 10; ++i) {
        SCOPED_TRACE(i);
        // The strings move with their entries: same text, same copy.
        EXPECT_EQ(stringAt(entryOf(list, i), 8), earlierNames[i]);
        EXPECT_EQ(qNameOf(entryOf(list, i)), "a" + std::to_string(i));
        EXPECT_EQ(valueOf(entryOf(list, i)), "v" + std::to_string(i));
        EXPECT_EQ(typeOf(entryOf(list, i)), "CDATA");
    }
    EXPECT_EQ(qNameOf(entryOf(list, 10)), "a10");
}

TEST_F(AttributeLists, InsertedListsGrowTenFifteenTwentyTwoThirtyThreeFortyNine) {
    std::vector<int32_t> capacities;
    for (int i = 0; i < 50; ++i) {
        lumSAXInsertAttribute(&list, "x", "y", nullptr, nullptr);
        if (capacities.empty() || capacities.back() != capacityOf(list)) {
            capacities.push_back(capacityOf(list));
        }
    }
    EXPECT_EQ(capacities, (std::vector<int32_t>{10, 15, 22, 33, 49, 73}));
    EXPECT_EQ(countOf(list), 50);
}

TEST_F(AttributeLists, NewListOfCapacityZeroHasNoArrayUntilFirstInsert) {
    list = lumSAXNewAttrList(0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(capacityOf(list), 0);
    EXPECT_EQ(countOf(list), 0);
    EXPECT_EQ(entriesOf(list), nullptr);

    lumSAXInsertAttribute(&list, "a", "b", nullptr, nullptr);
    EXPECT_EQ(capacityOf(list), 10);
    EXPECT_EQ(countOf(list), 1);
    EXPECT_NE(entriesOf(list), nullptr);
}

TEST_F(AttributeLists, NewListHasRequestedCapacityAndNoEntriesInUse) {
    list = lumSAXNewAttrList(7);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(capacityOf(list), 7);
    EXPECT_EQ(countOf(list), 0);
    EXPECT_NE(entriesOf(list), nullptr);
    insertNumbered(7);
    EXPECT_EQ(capacityOf(list), 7);
    EXPECT_EQ(countOf(list), 7);
}

struct SmallGrowth {
    int32_t capacity;
    int32_t grown;
};

class SmallListGrowth : public AttributeLists,
                        public ::testing::WithParamInterface<SmallGrowth> {};

TEST_P(SmallListGrowth, FullSmallListGrowsByTheRule) {
    list = lumSAXNewAttrList(GetParam().capacity);
    insertNumbered(GetParam().capacity);
    ASSERT_EQ(capacityOf(list), GetParam().capacity);
    ASSERT_EQ(countOf(list), GetParam().capacity);

    lumSAXInsertAttribute(&list, "last", "v", nullptr, nullptr);

    EXPECT_EQ(capacityOf(list), GetParam().grown);
    EXPECT_EQ(countOf(list), GetParam().capacity + 1);
    for (int i = 0; i < GetParam().capacity; ++i) {
        EXPECT_EQ(qNameOf(entryOf(list, i)), "a" + std::to_string(i));
    }
    EXPECT_EQ(qNameOf(entryOf(list, GetParam().capacity)), "last");
}

INSTANTIATE_TEST_SUITE_P(OneTwoThreeFour, SmallListGrowth,
                         ::testing::Values(SmallGrowth{1, 10}, SmallGrowth{2, 10},
                                           SmallGrowth{3, 4}, SmallGrowth{4, 6}),
                         [](const ::testing::TestParamInfo<SmallGrowth>& info) {
                             return "Capacity" + std::to_string(info.param.capacity);
                         });

TEST_F(AttributeLists, ListWithoutArrayStartsCountingAtZero) {
    list = lumSAXNewAttrList(0);
    writeAt<int32_t>(list, 4, 5);  // a count left by the host with no entries behind it
    lumSAXInsertAttribute(&list, "a", "b", nullptr, nullptr);
    EXPECT_EQ(countOf(list), 1);
    EXPECT_EQ(qNameOf(entryOf(list, 0)), "a");
}

TEST_F(AttributeLists, LocalNameIsTheTextAfterTheFirstColon) {
    lumSAXInsertAttribute(&list, "xlink:href", "#a", "http://www.w3.org/1999/xlink", nullptr);
    lumSAXInsertAttribute(&list, "a:b:c", "v", nullptr, nullptr);
    EXPECT_EQ(localNameOf(entryOf(list, 0)), "href");
    EXPECT_EQ(qNameOf(entryOf(list, 0)), "xlink:href");
    EXPECT_EQ(uriOf(entryOf(list, 0)), "http://www.w3.org/1999/xlink");
    EXPECT_EQ(localNameOf(entryOf(list, 1)), "b:c");
}

TEST_F(AttributeLists, NameWithoutColonIsItsOwnLocalName) {
    lumSAXInsertAttribute(&list, "plain", "v", nullptr, nullptr);
    EXPECT_EQ(localNameOf(entryOf(list, 0)), "plain");
    // A copy, not the qualified name's string.
    EXPECT_NE(stringAt(entryOf(list, 0), 0), stringAt(entryOf(list, 0), 8));
}

TEST_F(AttributeLists, NameEndingInItsOnlyColonHasEmptyLocalName) {
    lumSAXInsertAttribute(&list, "pre:", "v", nullptr, nullptr);
    EXPECT_EQ(localNameOf(entryOf(list, 0)), "");
    EXPECT_EQ(qNameOf(entryOf(list, 0)), "pre:");
}

TEST_F(AttributeLists, MissingUriTypeAndValueAreStoredAsNull) {
    lumSAXInsertAttribute(&list, "a", nullptr, nullptr, nullptr);
    EXPECT_EQ(stringAt(entryOf(list, 0), 16), nullptr);
    EXPECT_EQ(stringAt(entryOf(list, 0), 24), nullptr);
    EXPECT_EQ(stringAt(entryOf(list, 0), 32), nullptr);
}

TEST_F(AttributeLists, StoredStringsAreCopiesOfTheHostsStrings) {
    char qName[] = "p:name";
    char value[] = "value";
    char uri[] = "urn:x";
    char type[] = "ID";
    lumSAXInsertAttribute(&list, qName, value, uri, type);
    qName[0] = value[0] = uri[0] = type[0] = '#';
    SaxAttribute* entry = entryOf(list, 0);
    EXPECT_EQ(qNameOf(entry), "p:name");
    EXPECT_EQ(valueOf(entry), "value");
    EXPECT_EQ(uriOf(entry), "urn:x");
    EXPECT_EQ(typeOf(entry), "ID");
    EXPECT_EQ(localNameOf(entry), "name");
}

TEST_F(AttributeLists, InsertAnswersTheTypeCopyStoredLast) {
    char* answer = lumSAXInsertAttribute(&list, "a", "b", "urn:u", "NMTOKEN");
    EXPECT_EQ(answer, stringAt(entryOf(list, 0), 24));
}

TEST_F(AttributeLists, SettingAnEntryTwiceLeavesNoStringOfTheFirstSetting) {
    lumSAXInsertAttribute(&list, "first:one", "1", "urn:first", "CDATA");
    SaxAttribute* entry = entryOf(list, 0);

    lumSAXSetAttribute(entry, "second", "2", nullptr, nullptr);

    // The first setting's five strings are released (LeakSanitizer checks
    // that none is left); the entry holds only the second.
    EXPECT_EQ(qNameOf(entry), "second");
    EXPECT_EQ(localNameOf(entry), "second");
    EXPECT_EQ(valueOf(entry), "2");
    EXPECT_EQ(stringAt(entry, 16), nullptr);
    EXPECT_EQ(stringAt(entry, 24), nullptr);
}

TEST_F(AttributeLists, SetAttributeValueReplacesOnlyTheValue) {
    lumSAXInsertAttribute(&list, "p:a", "old", "urn:p", "CDATA");
    SaxAttribute* entry = entryOf(list, 0);
    char* answer = lumSAXSetAttributeValue(entry, "new");
    EXPECT_EQ(answer, stringAt(entry, 32));
    EXPECT_EQ(valueOf(entry), "new");
    EXPECT_EQ(qNameOf(entry), "p:a");
    EXPECT_EQ(uriOf(entry), "urn:p");

    EXPECT_EQ(lumSAXSetAttributeValue(entry, nullptr), nullptr);
    EXPECT_EQ(stringAt(entry, 32), nullptr);
}

TEST_F(AttributeLists, ClearAttributeReleasesAllFiveStrings) {
    lumSAXInsertAttribute(&list, "p:a", "v", "urn:p", "CDATA");
    SaxAttribute* entry = entryOf(list, 0);
    lumSAXClearAttribute(entry);
    for (size_t offset = 0; offset < kEntrySize; offset += 8) {
        EXPECT_EQ(stringAt(entry, offset), nullptr) << "offset " << offset;
    }
    EXPECT_EQ(countOf(list), 1);  // the entry stays in use, empty
}

TEST_F(AttributeLists, HostOwnedEntryCanBeSetAndCleared) {
    unsigned char entry[kEntrySize] = {};
    auto* attribute = reinterpret_cast<SaxAttribute*>(entry);
    lumSAXSetAttribute(attribute, "x:y", "z", "urn:x", "CDATA");
    EXPECT_EQ(localNameOf(attribute), "y");
    lumSAXClearAttribute(attribute);
    EXPECT_EQ(stringAt(attribute, 8), nullptr);
}

TEST_F(AttributeLists, EntriesOfANewListCanBeSetDirectly) {
    list = lumSAXNewAttrList(3);
    // Entries that were never in use hold no strings to release.
    lumSAXSetAttribute(entryOf(list, 2), "c", "3", nullptr, nullptr);
    EXPECT_EQ(qNameOf(entryOf(list, 2)), "c");
    lumSAXClearAttribute(entryOf(list, 2));
}

TEST_F(AttributeLists, DeletingNullListDoesNothing) { lumSAXDeleteAttrList(nullptr); }

TEST_F(AttributeLists, DeletingAListReleasesEveryEntryInUse) {
    insertNumbered(40);
    lumSAXSetAttributeValue(entryOf(list, 3), "changed");
    lumSAXDeleteAttrList(list);
    list = nullptr;  // LeakSanitizer reports anything left behind
}

TEST_F(AttributeLists, FixAttrMemReplacesTheStringInTheSlot) {
    lumSAXInsertAttribute(&list, "a", "old", nullptr, nullptr);
    char** slot = reinterpret_cast<char**>(reinterpret_cast<unsigned char*>(entryOf(list, 0)) + 32);
    char text[] = "fixed";
    lumSAXFixAttrMem(slot, text);
    text[0] = '#';
    EXPECT_EQ(valueOf(entryOf(list, 0)), "fixed");
}

TEST_F(AttributeLists, FixAttrMemFillsAnEmptySlot) {
    char* slot = nullptr;
    lumSAXFixAttrMem(&slot, "text");
    ASSERT_NE(slot, nullptr);
    EXPECT_STREQ(slot, "text");
    // A string of the library's heap: the library releases it.
    lumSAXFixAttrMem(&slot, "");
    EXPECT_STREQ(slot, "");
    unsigned char entry[kEntrySize] = {};
    writeAt<char*>(entry, 32, slot);
    lumSAXClearAttribute(reinterpret_cast<SaxAttribute*>(entry));
}

TEST_F(AttributeLists, FixAttrMemWithNullSlotOrTextDoesNothing) {
    lumSAXFixAttrMem(nullptr, "text");
    lumSAXInsertAttribute(&list, "a", "kept", nullptr, nullptr);
    char** slot = reinterpret_cast<char**>(reinterpret_cast<unsigned char*>(entryOf(list, 0)) + 32);
    const char* before = *slot;
    lumSAXFixAttrMem(slot, nullptr);
    EXPECT_EQ(*slot, before);
    EXPECT_EQ(valueOf(entryOf(list, 0)), "kept");
}

TEST_F(AttributeLists, InsertWithNullReferenceAnswersNull) {
    EXPECT_EQ(lumSAXInsertAttribute(nullptr, "a", "b", nullptr, "CDATA"), nullptr);
}

TEST_F(AttributeLists, NullEntryIsIgnoredBySetAndClear) {
    EXPECT_EQ(lumSAXSetAttribute(nullptr, "a", "b", nullptr, nullptr), nullptr);
    EXPECT_EQ(lumSAXSetAttributeValue(nullptr, "b"), nullptr);
    lumSAXClearAttribute(nullptr);
}

TEST_F(AttributeLists, NegativeCapacityGivesAnEmptyList) {
    list = lumSAXNewAttrList(-4);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(capacityOf(list), 0);
    EXPECT_EQ(entriesOf(list), nullptr);
    lumSAXInsertAttribute(&list, "a", "b", nullptr, nullptr);
    EXPECT_EQ(capacityOf(list), 10);
}

// ---- growth, null values and names the host gives --------------------------------

TEST_F(AttributeLists, GrownListKeepsTheEntriesBeyondCountEmpty) {
    SaxAttrList* list = nullptr;
    for (int i = 0; i < 11; ++i) {
        lumSAXInsertAttribute(&list, ("p:n" + std::to_string(i)).c_str(), "v", nullptr, nullptr);
    }
    ASSERT_NE(list, nullptr);
    const auto* raw = reinterpret_cast<const unsigned char*>(list);
    EXPECT_EQ(readAt<int32_t>(raw, 0), 15);
    EXPECT_EQ(readAt<int32_t>(raw, 4), 11);
    const auto* entries = readAt<const unsigned char*>(raw, 8);
    for (int i = 11; i < 15; ++i) {
        for (size_t field = 0; field < 40; field += 8) {
            EXPECT_EQ(readAt<void*>(entries + 40 * i, field), nullptr) << i << "/" << field;
        }
    }
    EXPECT_STREQ(stringAt(entries + 40 * 10, 0), "n10");
    lumSAXDeleteAttrList(list);
}

TEST_F(AttributeLists, InsertIntoAListWithRoomDoesNotGrow) {
    SaxAttrList* list = lumSAXNewAttrList(5);
    const auto* raw = reinterpret_cast<const unsigned char*>(list);
    const void* before = readAt<void*>(raw, 8);
    lumSAXInsertAttribute(&list, "a", "1", "urn:x", "CDATA");
    EXPECT_EQ(readAt<int32_t>(raw, 0), 5);
    EXPECT_EQ(readAt<int32_t>(raw, 4), 1);
    EXPECT_EQ(readAt<void*>(raw, 8), before);
    const auto* entry = readAt<const unsigned char*>(raw, 8);
    EXPECT_STREQ(stringAt(entry, 16), "urn:x");
    EXPECT_STREQ(stringAt(entry, 24), "CDATA");
    lumSAXDeleteAttrList(list);
}

TEST_F(AttributeLists, SettingANullValueStoresNullAndAnswersIt) {
    SaxAttribute entry;
    std::memset(&entry, 0, sizeof entry);
    lumSAXSetAttribute(&entry, "q:n", nullptr, nullptr, nullptr);
    EXPECT_STREQ(stringAt(&entry, 0), "n");
    EXPECT_STREQ(stringAt(&entry, 8), "q:n");
    EXPECT_EQ(stringAt(&entry, 32), nullptr);
    lumSAXSetAttributeValue(&entry, "x");
    EXPECT_STREQ(stringAt(&entry, 32), "x");
    EXPECT_EQ(lumSAXSetAttributeValue(&entry, nullptr), nullptr);
    EXPECT_EQ(stringAt(&entry, 32), nullptr);
    lumSAXClearAttribute(&entry);
    for (size_t field = 0; field < 40; field += 8) EXPECT_EQ(readAt<void*>(&entry, field), nullptr);
}

TEST_F(AttributeLists, LocalNameCutsAtTheFirstOfSeveralColons) {
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "a:b:c", "v", nullptr, nullptr);
    const auto* entries = readAt<const unsigned char*>(list, 8);
    EXPECT_STREQ(stringAt(entries, 0), "b:c");
    lumSAXDeleteAttrList(list);
}

}  // namespace
