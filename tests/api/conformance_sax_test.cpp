// The pull reader and attribute lists checked the way an independent host
// checks them: only through the exports and the documented byte offsets of
// the host's records (queue links, counts, states, owned fields), the
// restart that reads the record as the host left it, the one-shot
// validation's options, and the zero-filled growth of attribute lists.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::noLocation;
using lumtest::kNoNamespaces;
using lumtest::HostRecord;
using lumtest::TempDir;
using lumtest::readAt;
using lumtest::stringAt;
using lumtest::writeAt;
using Events = std::vector<std::string>;
namespace evt = lumtest::evt;
namespace rec = lumtest::rec;

namespace {

class ConformanceSax : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
    TempDir dir;
};

Events restOf(HostRecord& record) { return lumtest::collect(record, record.next(), noLocation()); }

const unsigned char* nextOf(const unsigned char* event) {
    return readAt<const unsigned char*>(event, evt::kNext);
}

const unsigned char* tailOf(HostRecord& record) {
    return readAt<const unsigned char*>(record.bytes(), rec::kEventTail);
}

// ---- the record after each call ---------------------------------------------------

TEST_F(ConformanceSax, FirstCallQueuesExactlyOneEventOwnedByTheRecord) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), 1);
    EXPECT_EQ(record.eventCount(), 1);
    EXPECT_EQ(record.state(), 1);
    EXPECT_EQ(record.errorCode(), 0);
    EXPECT_EQ(record.errorText(), "");
    ASSERT_NE(record.head(), nullptr);
    EXPECT_EQ(tailOf(record), record.head());
    EXPECT_EQ(nextOf(record.head()), nullptr);
    EXPECT_EQ(lumtest::eventKind(record.head()), 1u);
    EXPECT_EQ(readAt<uint32_t>(record.head(), evt::kArgCount), 0u);
    // The library's objects are in the record while the parse is set up.
    EXPECT_NE(record.reader(), nullptr);
    EXPECT_NE(record.scanToken(), nullptr);
    EXPECT_NE(readAt<void*>(record.bytes(), rec::kLocator), nullptr);
    EXPECT_NE(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);  // memory input
}

TEST_F(ConformanceSax, FileInputKeepsNoMemoryInputSource) {
    HostRecord record;
    record.setFile(dir.write("f.xml", "<r/>"));
    ASSERT_EQ(record.first(), 1);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);
}

TEST_F(ConformanceSax, EventsOfOneStepAreLinkedFromHeadToTailAndCounted) {
    HostRecord record;
    record.setMemory("<r xmlns='u' xmlns:p='v'/>");
    ASSERT_EQ(record.first(), 1);
    ASSERT_EQ(record.next(), 1);
    // Two prefix mappings and the element start come from one Xerces step.
    int32_t linked = 0;
    const unsigned char* last = nullptr;
    for (const unsigned char* e = record.head(); e != nullptr; e = nextOf(e)) {
        ++linked;
        last = e;
    }
    EXPECT_GE(linked, 3);
    EXPECT_EQ(linked, record.eventCount());
    EXPECT_EQ(last, tailOf(record));
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartPrefixMapping/2 \"\" \"u\"");
    // Each call frees the head and counts down.
    const int32_t before = record.eventCount();
    ASSERT_EQ(record.next(), 1);
    EXPECT_EQ(record.eventCount(), before - 1);
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartPrefixMapping/2 \"p\" \"v\"");
}

TEST_F(ConformanceSax, EndedParseHasNoScanTokenAndStateEnded) {
    HostRecord record;
    record.setMemory("<r/>");
    Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(record.state(), 4);
    EXPECT_EQ(record.scanToken(), nullptr);
    EXPECT_NE(record.reader(), nullptr);  // released only by a reset or deletion
    // Asking again after the end stays a quiet 0.
    EXPECT_EQ(record.next(), 0);
    EXPECT_EQ(record.errorCode(), 0);
}

TEST_F(ConformanceSax, DeletionClearsTheLibraryFieldsAndTheIds) {
    HostRecord record;
    record.setMemory("<r><a/></r>");
    ASSERT_EQ(record.first(), 1);
    ASSERT_EQ(record.next(), 1);
    ASSERT_NE(record.systemId(), nullptr);
    lumSAXDeleteParserInstance(record.get());
    EXPECT_EQ(record.reader(), nullptr);
    EXPECT_EQ(record.scanToken(), nullptr);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(tailOf(record), nullptr);
    EXPECT_EQ(record.systemId(), nullptr);
    EXPECT_EQ(record.publicId(), nullptr);
    EXPECT_EQ(record.state(), 1);
}

TEST_F(ConformanceSax, ResetClearsTheFieldAt432) {
    HostRecord record;
    writeAt<void*>(record.bytes(), rec::kReserved432, record.bytes());
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), 1);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kReserved432), nullptr);
}

TEST_F(ConformanceSax, FieldsTheReaderDoesNotUseAreLeftAlone) {
    HostRecord record;
    const uint64_t marker = 0x1122334455667788ull;
    writeAt<uint64_t>(record.bytes(), 80, marker);
    writeAt<uint64_t>(record.bytes(), 100, marker);
    writeAt<uint64_t>(record.bytes(), 108, marker);
    writeAt<uint32_t>(record.bytes(), 372, 0x5a5a5a5au);
    record.setMemory("<r>text</r>");
    Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(readAt<uint64_t>(record.bytes(), 80), marker);
    EXPECT_EQ(readAt<uint64_t>(record.bytes(), 100), marker);
    EXPECT_EQ(readAt<uint64_t>(record.bytes(), 108), marker);
    EXPECT_EQ(readAt<uint32_t>(record.bytes(), 372), 0x5a5a5a5au);
}

// The reset keeps eventCount, and a failed start answers 1 whenever the
// count says events are queued, so that the host still "receives" them.
TEST_F(ConformanceSax, FailedStartWithAStaleCountAnswersOneAndKeepsTheReason) {
    HostRecord record;
    record.setMemory("<r xmlns='u' xmlns:p='v'/>");
    ASSERT_EQ(record.first(), 1);
    ASSERT_EQ(record.next(), 1);
    ASSERT_GT(record.eventCount(), 1);  // abandoned with events queued

    record.setFile(dir.file("missing.xml"));
    EXPECT_EQ(record.first(), 1);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.scanToken(), nullptr);  // the parse is over
    EXPECT_EQ(record.errorCode(), 3);
    EXPECT_EQ(record.errorText().rfind("Error parsing file: unable to open primary document", 0),
              0u);

    record.setNoFile();
    EXPECT_EQ(record.first(), 1);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), 11);
}

TEST_F(ConformanceSax, FailedStartWithoutEventsAnswersZero) {
    HostRecord record;
    record.setNoFile();
    EXPECT_EQ(record.first(), 0);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), 11);
    EXPECT_EQ(record.head(), nullptr);
}

// ---- the restart reads the record as the host left it ----------------------------

TEST_F(ConformanceSax, InputChangedWhileStartDocumentIsAtHeadIsTheOneRead) {
    HostRecord record;
    record.setMemory("<first/>");
    ASSERT_EQ(record.first(), 1);
    record.setFile(dir.write("second.xml", "<second/>"));
    EXPECT_EQ(restOf(record), (Events{
                                  "StartElement/4 \"\" \"second\" \"second\" [0/0 no-array]",
                                  "EndElement/3 \"\" \"second\" \"second\"",
                                  "EndDocument/0",
                                  "result 0 code 0 ",
                              }));
}

TEST_F(ConformanceSax, InputKindMadeUnsupportedWhileStartDocumentIsAtHeadIsRefused) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), 1);
    record.setInputKind(2);
    EXPECT_EQ(record.next(), 0);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), -1);
}

TEST_F(ConformanceSax, FileNameClearedWhileStartDocumentIsAtHeadIsNoInputFile) {
    HostRecord record;
    record.setFile(dir.write("r.xml", "<r/>"));
    ASSERT_EQ(record.first(), 1);
    record.setNoFile();
    EXPECT_EQ(record.next(), 0);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), 11);
}

TEST_F(ConformanceSax, NamespacesSwitchedOffWhileStartDocumentIsAtHeadNullTheLocalNames) {
    HostRecord record;
    record.setMemory("<p:r xmlns:p='u' p:a='1'/>");
    ASSERT_EQ(record.first(), 1);
    record.setFlags(kNoNamespaces);
    EXPECT_EQ(restOf(record),
              (Events{
                  "StartElement/4 \"\" null \"p:r\" [2/3 {null \"xmlns:p\" null \"CDATA\" \"u\"} "
                  "{null \"p:a\" null \"CDATA\" \"1\"}]",
                  "EndElement/3 \"\" null \"p:r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(ConformanceSax, SearchPathSetWhileStartDocumentIsAtHeadIsSearched) {
    dir.write("lib/ext.txt", "found late");
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ENTITY ext SYSTEM 'ext.txt'>]><r>&ext;</r>");
    record.setLimit(50000);
    ASSERT_EQ(record.first(), 1);
    record.setSearchPath(dir.file("lib"));
    const Events events = restOf(record);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1], "Characters/2 \"found late\" 10");
}

TEST_F(ConformanceSax, SearchPathClearedWhileStartDocumentIsAtHeadIsNoLongerSearched) {
    dir.write("lib/ext.txt", "found early");
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ENTITY ext SYSTEM 'ext.txt'>]><r>&ext;</r>");
    record.setSearchPath(dir.file("lib"));
    record.setLimit(50000);
    ASSERT_EQ(record.first(), 1);
    writeAt<const char*>(record.bytes(), rec::kSearchPath, nullptr);
    const Events events = restOf(record);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1].rfind("FatalError/1 \"unable to open external entity", 0), 0u)
        << events[1];
}

// ---- one-shot validation ------------------------------------------------------------

TEST_F(ConformanceSax, OneShotValidationWithoutTheValidateFlagIgnoresTheDtdRules) {
    HostRecord record;
    record.setFile(dir.write("inv.xml", "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><x/></r>"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), 0) << record.errorText();
    EXPECT_EQ(record.errorText(), "");
}

TEST_F(ConformanceSax, OneShotValidationProcessesNamespacesUnlessFlagBitZero) {
    const std::string path = dir.write("unbound.xml", "<p:r/>");
    HostRecord withNamespaces;
    withNamespaces.setFile(path);
    EXPECT_EQ(lumSAXParse(withNamespaces.get()), 1);
    EXPECT_NE(withNamespaces.errorCode(), 0);
    EXPECT_NE(withNamespaces.errorText().find("p"), std::string::npos);

    HostRecord without;
    without.setFile(path);
    without.setFlags(kNoNamespaces);
    EXPECT_EQ(lumSAXParse(without.get()), 1);
    EXPECT_EQ(without.errorCode(), 0) << without.errorText();
}

TEST_F(ConformanceSax, OneShotValidationRefusesMemoryKindFive) {
    HostRecord record;
    record.setMemory("<r/>", 5);
    EXPECT_EQ(lumSAXParse(record.get()), 0);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), -1);
}

TEST_F(ConformanceSax, OneShotValidationRaisesNoEvents) {
    HostRecord record;
    record.setFile(dir.write("ok.xml", "<r a='1'><?pi?>text</r>"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.eventCount(), 0);
    EXPECT_EQ(record.reader(), nullptr);
}

// ---- handlers -------------------------------------------------------------------------

TEST_F(ConformanceSax, EventsCarryTheLibrarysNamesAndTheirArgCounts) {
    HostRecord record;
    record.setMemory("<?t d?><r>x</r>");
    ASSERT_EQ(record.first(), 1);
    std::vector<std::string> seen;
    int32_t result = 1;
    while (result == 1 && record.head() != nullptr) {
        const unsigned char* e = record.head();
        seen.push_back(std::to_string(lumtest::eventKind(e)) + " " + lumtest::eventName(e) + " " +
                       std::to_string(readAt<uint32_t>(e, evt::kArgCount)));
        result = record.next();
    }
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "1 StartDocument 0",
                        "9 ProcessingInstruction 2",
                        "5 StartElement 4",
                        "7 Characters 2",
                        "6 EndElement 3",
                        "2 EndDocument 0",
                    }));
}

TEST_F(ConformanceSax, ProcessingInstructionDataIsTheTextAfterTheTarget) {
    HostRecord record;
    record.setMemory("<r><?target some data?></r>");
    const Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events[2], "ProcessingInstruction/2 \"target\" \"some data\"");
}

// Only the text "EMPTY" becomes null: the default namespace's prefix is ""
// at both ends of its scope.
TEST_F(ConformanceSax, DefaultNamespacePrefixIsTheEmptyStringAtBothEnds) {
    HostRecord record;
    record.setMemory("<r xmlns='u'/>");
    const Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events, (Events{
                          "StartDocument/0",
                          "StartPrefixMapping/2 \"\" \"u\"",
                          "StartElement/4 \"u\" \"r\" \"r\" [0/0 no-array]",
                          "EndElement/3 \"u\" \"r\" \"r\"",
                          "EndPrefixMapping/1 \"\"",
                          "EndDocument/0",
                          "result 0 code 0 ",
                      }));
}

TEST_F(ConformanceSax, AttributeListOfAnEventLiesInPlaceInArgFourAndFive) {
    HostRecord record;
    record.setMemory("<r a='1' b='2'/>");
    ASSERT_EQ(record.first(), 1);
    ASSERT_EQ(record.next(), 1);
    const unsigned char* e = record.head();
    ASSERT_EQ(lumtest::eventKind(e), 5u);
    // capacity and count share arg4; arg5 is the entries pointer.
    EXPECT_EQ(readAt<int32_t>(e, evt::kArg4), 3);
    EXPECT_EQ(readAt<int32_t>(e, evt::kArg4 + 4), 2);
    const auto* entries = readAt<const unsigned char*>(e, evt::kArg5);
    ASSERT_NE(entries, nullptr);
    EXPECT_STREQ(stringAt(entries, 0), "a");        // localName
    EXPECT_STREQ(stringAt(entries, 8), "a");        // qName
    EXPECT_EQ(stringAt(entries, 16), nullptr);      // uri
    EXPECT_STREQ(stringAt(entries, 24), "CDATA");   // type
    EXPECT_STREQ(stringAt(entries, 32), "1");       // value
    EXPECT_STREQ(stringAt(entries, 40 + 32), "2");  // second entry's value
}

TEST_F(ConformanceSax, HostClearingTheHeadEventKeepsItsArgCount) {
    HostRecord record;
    record.setMemory("<r a='1'>text</r>");
    ASSERT_EQ(record.first(), 1);
    ASSERT_EQ(record.next(), 1);
    auto* e = const_cast<unsigned char*>(record.head());
    ASSERT_EQ(lumtest::eventKind(e), 5u);
    lumSAXClearCallbackData(reinterpret_cast<SaxEvent*>(e));
    EXPECT_EQ(readAt<uint32_t>(e, evt::kKind), 0u);
    EXPECT_EQ(readAt<void*>(e, evt::kName), nullptr);
    EXPECT_EQ(readAt<uint32_t>(e, evt::kArgCount), 4u);
    for (size_t slot = evt::kArg1; slot <= evt::kNext; slot += 8) {
        EXPECT_EQ(readAt<void*>(e, slot), nullptr) << "offset " << slot;
    }
    // The library still frees the cleared event, and the parse goes on.
    // (next is cleared, so the rest of the step's queue is no longer linked.)
    const Events rest = restOf(record);
    EXPECT_EQ(rest.back().rfind("result ", 0), 0u);
}

TEST_F(ConformanceSax, ResolveEntityEventIsCompleteWhileTheHostIsCalled) {
    static HostRecord* driving = nullptr;
    static std::vector<std::string> seen;
    seen.clear();
    HostRecord record;
    driving = &record;
    record.setMemory("<!DOCTYPE r [<!ENTITY e PUBLIC 'pub' 'missing.txt'>]><r>&e;</r>");
    record.setLimit(50000);
    record.setCallback([]() -> int32_t {
        const unsigned char* e = driving->head();
        seen.push_back(std::to_string(lumtest::eventKind(e)) + " " + lumtest::eventName(e) + " " +
                       std::to_string(readAt<uint32_t>(e, evt::kArgCount)) + " " +
                       lumtest::quoted(lumtest::eventArg(e, 1)) + " " +
                       lumtest::quoted(lumtest::eventArg(e, 2)) + " " +
                       (readAt<void*>(e, evt::kArg3) == nullptr ? "no-source" : "source") +
                       " line " + std::to_string(driving->line()));
        return 0;
    });
    const Events events = lumtest::drain(record, noLocation());
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0], "14 ResolveEntity 4 \"pub\" \"missing.txt\" no-source line 1");
    for (const std::string& event : events) {
        EXPECT_EQ(event.find("ResolveEntity"), std::string::npos) << event;
    }
}

// ---- attribute lists ---------------------------------------------------------------------

TEST_F(ConformanceSax, GrownListKeepsTheEntriesBeyondCountEmpty) {
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

TEST_F(ConformanceSax, InsertIntoAListWithRoomDoesNotGrow) {
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

TEST_F(ConformanceSax, SettingANullValueStoresNullAndAnswersIt) {
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

TEST_F(ConformanceSax, LocalNameCutsAtTheFirstOfSeveralColons) {
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "a:b:c", "v", nullptr, nullptr);
    const auto* entries = readAt<const unsigned char*>(list, 8);
    EXPECT_STREQ(stringAt(entries, 0), "b:c");
    lumSAXDeleteAttrList(list);
}

}  // namespace
