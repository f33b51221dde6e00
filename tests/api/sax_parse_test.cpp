// Parser instances as a host drives them: set-up, the first pass that stops
// after "StartDocument", the restart, reading on, the end, re-use and
// release of the record (the one-shot validation: sax_one_shot_validation_test.cpp).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::noLocation;
using lumtest::kNoNamespaces;
using lumtest::kValidate;
using lumtest::HostRecord;
using lumtest::TempDir;
using lumtest::drain;
using lumtest::nextOf;
using lumtest::readAt;
using lumtest::restWithoutLocation;
using lumtest::stringAt;
using lumtest::tailOf;
using lumtest::writeAt;
namespace evt = lumtest::evt;
namespace rec = lumtest::rec;
using Events = std::vector<std::string>;

namespace {

class SaxParse : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
    TempDir dir;
};

Events withoutLocation(HostRecord& record, size_t maxEvents = 1000000) {
    return drain(record, noLocation(maxEvents));
}

// ---- first pass and restart --------------------------------------------------

TEST_F(SaxParse, FirstCallLeavesOnlyStartDocumentAtHead) {
    HostRecord record;
    record.setMemory("<?pi x?><r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_NE(record.head(), nullptr);
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartDocument/0");
    EXPECT_EQ(record.eventCount(), 1);
    EXPECT_EQ(record.state(), LUM_SAX_STATE_FIRST_PASS);
    EXPECT_EQ(lumtest::readAt<void*>(record.head(), lumtest::evt::kNext), nullptr);
    EXPECT_EQ(record.errorCode(), LUM_OK);
}

TEST_F(SaxParse, NextRereadsTheInputFromTheBeginningAndYieldsTheFirstRealEvent) {
    HostRecord record;
    record.setMemory("<?pi x?><r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    // The processing instruction before the root was dropped in the first
    // pass and comes now; StartDocument is not delivered again.
    EXPECT_EQ(lumtest::describeEvent(record.head()), "ProcessingInstruction/2 \"pi\" \"x\"");
    EXPECT_EQ(record.state(), LUM_SAX_STATE_RUNNING);
}

TEST_F(SaxParse, FlagsChangedWhileStartDocumentIsAtHeadTakeEffect) {
    HostRecord record;
    record.setMemory("<p:r xmlns:p='urn:p'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFlags(kNoNamespaces);
    Events events = restWithoutLocation(record);
    // No prefix mapping events, and no local name.
    EXPECT_EQ(events[0], "StartElement/4 \"\" null \"p:r\" [1/1 {null \"xmlns:p\" null \"CDATA\" \"urn:p\"}]");
}

TEST_F(SaxParse, ValidationSwitchedOnAfterStartDocumentReportsErrors) {
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><x/></r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFlags(kValidate);
    Events events = restWithoutLocation(record);
    EXPECT_EQ(events[1], "Error/1 \"no declaration found for element 'x'\"");
}

const char* const kSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:s' "
    "elementFormDefault='qualified'>"
    "<xs:element name='r'><xs:complexType><xs:sequence>"
    "<xs:element name='n' type='xs:int'/></xs:sequence></xs:complexType></xs:element>"
    "</xs:schema>";
const char* const kNoNamespaceSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
    "<xs:element name='r' type='xs:int'/></xs:schema>";

TEST_F(SaxParse, SchemaLocationSetWhileStartDocumentIsAtHeadTakesEffect) {
    const std::string schema = dir.write("s.xsd", kSchema);
    HostRecord record;
    record.setMemory("<r xmlns='urn:s'><n>seven</n></r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFlags(kValidate);
    record.setSchemaLocation("urn:s " + schema);
    Events events = restWithoutLocation(record);
    bool sawIntError = false;
    for (const std::string& event : events) {
        sawIntError |= event.rfind("Error/1 \"value 'seven' does not match", 0) == 0;
    }
    EXPECT_TRUE(sawIntError) << ::testing::PrintToString(events);
}

TEST_F(SaxParse, NoNamespaceSchemaLocationSetWhileStartDocumentIsAtHeadTakesEffect) {
    const std::string schema = dir.write("n.xsd", kNoNamespaceSchema);
    HostRecord record;
    record.setMemory("<r>seven</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFlags(kValidate);
    record.setNoNamespaceSchemaLocation(schema);
    Events events = restWithoutLocation(record);
    EXPECT_EQ(events[2].rfind("Error/1 \"value 'seven' does not match", 0), 0u)
        << ::testing::PrintToString(events);
}

TEST_F(SaxParse, SchemaValidatesWhenSetBeforeTheFirstCall) {
    const std::string schema = dir.write("n.xsd", kNoNamespaceSchema);
    HostRecord record;
    record.setMemory("<r>12</r>");
    record.setFlags(kValidate);
    record.setNoNamespaceSchemaLocation(schema);
    Events events = withoutLocation(record);
    EXPECT_EQ(events, (Events{"StartDocument/0", "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                              "Characters/2 \"12\" 2", "EndElement/3 \"\" \"r\" \"r\"",
                              "EndDocument/0", "result 0 code 0 "}));
}

// ---- the restart reads the record as the host left it ----------------------------

TEST_F(SaxParse, InputChangedWhileStartDocumentIsAtHeadIsTheOneRead) {
    HostRecord record;
    record.setMemory("<first/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFile(dir.write("second.xml", "<second/>"));
    EXPECT_EQ(restWithoutLocation(record), (Events{
                                  "StartElement/4 \"\" \"second\" \"second\" [0/0 no-array]",
                                  "EndElement/3 \"\" \"second\" \"second\"",
                                  "EndDocument/0",
                                  "result 0 code 0 ",
                              }));
}

TEST_F(SaxParse, InputKindMadeUnsupportedWhileStartDocumentIsAtHeadIsRefused) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setInputKind(2);
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_SUPPORTED);
}

TEST_F(SaxParse, FileNameClearedWhileStartDocumentIsAtHeadIsNoInputFile) {
    HostRecord record;
    record.setFile(dir.write("r.xml", "<r/>"));
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setNoFile();
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NO_INPUT_FILE);
}

TEST_F(SaxParse, NamespacesSwitchedOffWhileStartDocumentIsAtHeadNullTheLocalNames) {
    HostRecord record;
    record.setMemory("<p:r xmlns:p='u' p:a='1'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setFlags(kNoNamespaces);
    EXPECT_EQ(restWithoutLocation(record),
              (Events{
                  "StartElement/4 \"\" null \"p:r\" [2/3 {null \"xmlns:p\" null \"CDATA\" \"u\"} "
                  "{null \"p:a\" null \"CDATA\" \"1\"}]",
                  "EndElement/3 \"\" null \"p:r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxParse, SearchPathSetWhileStartDocumentIsAtHeadIsSearched) {
    dir.write("lib/ext.txt", "found late");
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ENTITY ext SYSTEM 'ext.txt'>]><r>&ext;</r>");
    record.setLimit(50000);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setSearchPath(dir.file("lib"));
    const Events events = restWithoutLocation(record);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1], "Characters/2 \"found late\" 10");
}

TEST_F(SaxParse, SearchPathClearedWhileStartDocumentIsAtHeadIsNoLongerSearched) {
    dir.write("lib/ext.txt", "found early");
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ENTITY ext SYSTEM 'ext.txt'>]><r>&ext;</r>");
    record.setSearchPath(dir.file("lib"));
    record.setLimit(50000);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    writeAt<const char*>(record.bytes(), rec::kSearchPath, nullptr);
    const Events events = restWithoutLocation(record);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[1].rfind("FatalError/1 \"unable to open external entity", 0), 0u)
        << events[1];
}

// ---- the end ----------------------------------------------------------------

TEST_F(SaxParse, AfterEndDocumentNextAnswersZeroWithoutError) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    int32_t result = LUM_SAX_MORE;
    uint32_t lastKind = 0;
    while (result == LUM_SAX_MORE) {
        lastKind = lumtest::eventKind(record.head());
        result = record.next();
    }
    EXPECT_EQ(lastKind, uint32_t{LUM_SAX_EVENT_END_DOCUMENT});
    EXPECT_EQ(result, LUM_SAX_DONE);
    EXPECT_EQ(record.errorCode(), LUM_OK);
    EXPECT_EQ(record.errorText(), "");
    // And so on, however often the host asks.
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorCode(), LUM_OK);
}

TEST_F(SaxParse, NextOnARecordThatNeverStartedIsAnUnexpectedError) {
    HostRecord record;
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Unexpected error");
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
}

TEST_F(SaxParse, ErrorTextIsClearedWhenTheParseReadsOn) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    std::strcpy(reinterpret_cast<char*>(record.bytes() + lumtest::rec::kErrorText), "old");
    lumtest::writeAt<int32_t>(record.bytes(), lumtest::rec::kErrorCode, 99);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    EXPECT_EQ(record.errorText(), "");
    EXPECT_EQ(record.errorCode(), LUM_OK);
}

// ---- inputs -----------------------------------------------------------------

TEST_F(SaxParse, MemoryKindFiveReadsExactlyLikeKindOne) {
    const std::string document = "<a xmlns:q='urn:q' q:x='1'>text<b/><?p d?></a>";
    HostRecord one;
    one.setMemory(document, LUM_SAX_INPUT_MEMORY);
    HostRecord five;
    five.setMemory(document, LUM_SAX_INPUT_BUFFER);
    EXPECT_EQ(drain(one), drain(five));
}

TEST_F(SaxParse, InputKindTwoIsNotSupported) {
    HostRecord record;
    record.setMemory("<r/>", 2);
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(record.head(), nullptr);
}

TEST_F(SaxParse, FileInputWithoutANameIsRefused) {
    HostRecord record;
    record.setInputKind(LUM_SAX_INPUT_FILE);
    record.setNoFile();
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NO_INPUT_FILE);
}

TEST_F(SaxParse, MissingFileIsAnErrorParsingFile) {
    HostRecord record;
    record.setFile(dir.file("missing.xml"));
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Error parsing file: unable to open primary document entity '" +
                                      dir.file("missing.xml") + "'");
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
}

TEST_F(SaxParse, FileNameWithTwoLeadingSlashesIsOpenedWithBackslashes) {
    HostRecord record;
    record.setFile("//server/share/doc.xml");
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
    // Xerces saw the network path with every slash turned round.
    EXPECT_NE(record.errorText().find("\\\\server\\share\\doc.xml'"), std::string::npos)
        << record.errorText();
}

TEST_F(SaxParse, OverlongXercesMessageEndsInDotsWithinTheRecordText) {
    HostRecord record;
    record.setFile(dir.path() + "/" + std::string(300, 'n') + ".xml");
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    const std::string text = record.errorText();
    EXPECT_EQ(text.size(), 255u);
    EXPECT_EQ(text.rfind("Error parsing file: unable to open primary document entity", 0), 0u);
    EXPECT_EQ(text.substr(252), "...");
    // Nothing beyond the 256-byte text: the next field is untouched.
    EXPECT_EQ(lumtest::readAt<uint32_t>(record.bytes(), 372), 0u);
}

TEST_F(SaxParse, MemoryInputWithoutBytesGivesFatalErrors) {
    HostRecord record;
    record.setMemory("");
    Events events = drain(record);
    EXPECT_EQ(events, (Events{
                          "StartDocument/0 @1:1",
                          "FatalError/1 \"invalid document structure\" @1:1",
                          "FatalError/1 \"XML document cannot be empty\" @1:1",
                          "result 0 code 0 ",
                      }));
}

// Documents of many sizes, read from a file and from memory, give the same
// events at the same lines and columns.
TEST_F(SaxParse, FileAndMemoryInputGiveTheSameEventsAcrossDocumentSizes) {
    for (int size : {0, 1, 7, 64, 500, 3000, 20000}) {
        SCOPED_TRACE(size);
        std::string document = "<?xml version='1.0' encoding='UTF-8'?>\n<root xmlns:n='urn:n'>\n";
        for (int i = 0; i < size; ++i) {
            document += "  <n:item id='" + std::to_string(i) + "' kind='k" + std::to_string(i % 7) +
                        "'>" + std::string(static_cast<size_t>(i % 97), 'x') + "&amp;\xC3\xA9" +
                        "<![CDATA[c" + std::to_string(i) + "]]></n:item>\n";
            if (i % 50 == 0) document += "  <?tick " + std::to_string(i) + "?><!-- c -->\n";
        }
        document += "</root>\n";
        const std::string path = dir.write("sweep.xml", document);
        HostRecord fromFile;
        fromFile.setFile(path);
        HostRecord fromMemory;
        fromMemory.setMemory(document);
        const Events fileEvents = drain(fromFile);
        const Events memoryEvents = drain(fromMemory);
        EXPECT_EQ(fileEvents.back(), "result 0 code 0 ");
        EXPECT_EQ(fileEvents.size(), memoryEvents.size());
        EXPECT_TRUE(fileEvents == memoryEvents);
        EXPECT_STREQ(fromFile.systemId(), path.c_str());
    }
}

// ---- release and re-use -------------------------------------------------------

TEST_F(SaxParse, DeletingANullRecordDoesNothing) { lumSAXDeleteParserInstance(nullptr); }

TEST_F(SaxParse, DeletingTwiceIsHarmless) {
    HostRecord record;
    record.setMemory("<r a='1'>t</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    lumSAXDeleteParserInstance(record.get());
    lumSAXDeleteParserInstance(record.get());
    EXPECT_EQ(record.reader(), nullptr);
    EXPECT_EQ(record.scanToken(), nullptr);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.publicId(), nullptr);
    EXPECT_EQ(record.systemId(), nullptr);
    EXPECT_EQ(lumtest::readAt<void*>(record.bytes(), lumtest::rec::kEventTail), nullptr);
}

TEST_F(SaxParse, AbandonedParseIsReleasedByDeletion) {
    HostRecord record;
    record.setMemory("<r><a x='1' y='2'>text</a><b/></r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    // The record's destructor deletes it; LeakSanitizer checks that the
    // queued events, their strings and attribute lists are gone.
}

TEST_F(SaxParse, NextAfterDeletionDuringTheFirstPassIsAnUnexpectedError) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    lumSAXDeleteParserInstance(record.get());
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Unexpected error");
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
}

TEST_F(SaxParse, RecordReusedMidParseFreesQueuedEventsButKeepsTheirCount) {
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ELEMENT r EMPTY>]><r a='1' b='2'/>");
    record.setFlags(kValidate);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    const int32_t abandoned = record.eventCount();
    ASSERT_GT(abandoned, 1);  // errors, the element, its end, the end of document

    record.setMemory("<s/>");
    record.setFlags(0);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    // The old events are gone; the count was deliberately kept.
    EXPECT_EQ(record.eventCount(), abandoned + 1);
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartDocument/0");

    // The host may now get 1 with nothing at eventHead (the stale count
    // says events are waiting), and goes on until the count is cleared.
    EXPECT_EQ(record.next(), LUM_SAX_MORE);
    EXPECT_EQ(record.head(), nullptr);
    int calls = 0;
    while (record.head() == nullptr && calls < 3) {
        ASSERT_EQ(record.next(), LUM_SAX_MORE);
        ++calls;
    }
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartElement/4 \"\" \"s\" \"s\" [0/0 no-array]");
    EXPECT_EQ(record.eventCount(), 3);
    const Events rest = lumtest::collect(record, 1, noLocation());
    EXPECT_EQ(rest, (Events{"StartElement/4 \"\" \"s\" \"s\" [0/0 no-array]",
                            "EndElement/3 \"\" \"s\" \"s\"", "EndDocument/0", "result 0 code 0 "}));
}

TEST_F(SaxParse, SecondParseFirstOnAFinishedRecordStartsAfresh) {
    HostRecord record;
    record.setMemory("<r/>");
    const Events first = drain(record);
    const Events second = drain(record);
    EXPECT_EQ(first, second);
}

// ---- entity-expansion limit -----------------------------------------------------

std::string billionLaughs() {
    std::string document = "<?xml version='1.0'?><!DOCTYPE lolz [<!ENTITY lol 'lol'>";
    for (int i = 1; i <= 9; ++i) {
        document += "<!ENTITY lol" + std::to_string(i) + " '";
        const std::string inner = i == 1 ? "&lol;" : "&lol" + std::to_string(i - 1) + ";";
        for (int j = 0; j < 10; ++j) document += inner;
        document += "'>";
    }
    return document + "]><lolz>&lol9;</lolz>";
}

std::string quadraticBlowup(int uses, size_t size = 1000) {
    std::string document = "<!DOCTYPE r [<!ENTITY a '" + std::string(size, 'x') + "'>]><r>";
    for (int i = 0; i < uses; ++i) document += "&a;";
    return document + "</r>";
}

const char* const kLimitPrefix = "FatalError/1 \"parser has encountered more than '";

TEST_F(SaxParse, BillionLaughsWithALimitEndsAfterItsFatalError) {
    HostRecord record;
    record.setMemory(billionLaughs());
    record.setLimit(50000);
    const Events events = withoutLocation(record, 200000);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(events[events.size() - 2].rfind(std::string(kLimitPrefix) + "50000'", 0), 0u)
        << events[events.size() - 2];
    // Bounded by the limit, far below the 10^8 expansions of the document.
    EXPECT_LT(events.size(), 50000u);
}

// 100-character expansions: 50000 of them stay below the amplification
// limit (8 Mi characters), so the expansion count is what ends the parse.
TEST_F(SaxParse, QuadraticBlowupPastTheLimitEndsAfterItsFatalError) {
    HostRecord record;
    record.setMemory(quadraticBlowup(60000, 100));
    record.setLimit(50000);
    const Events events = withoutLocation(record, 200000);
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(events[events.size() - 2].rfind(std::string(kLimitPrefix) + "50000'", 0), 0u);
    EXPECT_LT(events.size(), 50100u);
}

TEST_F(SaxParse, SmallLimitEndsWithinAFewThousandEvents) {
    HostRecord record;
    record.setMemory(quadraticBlowup(5000));
    record.setLimit(1000);
    const Events events = withoutLocation(record, 200000);
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(events[events.size() - 2].rfind(std::string(kLimitPrefix) + "1000'", 0), 0u);
    EXPECT_LT(events.size(), 1100u);
}

TEST_F(SaxParse, LimitChangedWhileStartDocumentIsAtHeadTakesEffect) {
    HostRecord record;
    record.setMemory(quadraticBlowup(300));
    record.setLimit(-1);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    record.setLimit(100);
    const Events events = restWithoutLocation(record, 200000);
    EXPECT_EQ(events[events.size() - 2].rfind(std::string(kLimitPrefix) + "100'", 0), 0u);
}

TEST_F(SaxParse, NegativeLimitLeavesExpansionUnlimited) {
    HostRecord record;
    record.setMemory(quadraticBlowup(2000));
    record.setLimit(-1);
    const Events events = withoutLocation(record, 200000);
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(events[events.size() - 2], "EndDocument/0");
}

// ---- the record after each call ---------------------------------------------------

TEST_F(SaxParse, FirstCallQueuesExactlyOneEventOwnedByTheRecord) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(record.eventCount(), 1);
    EXPECT_EQ(record.state(), LUM_SAX_STATE_FIRST_PASS);
    EXPECT_EQ(record.errorCode(), LUM_OK);
    EXPECT_EQ(record.errorText(), "");
    ASSERT_NE(record.head(), nullptr);
    EXPECT_EQ(tailOf(record), record.head());
    EXPECT_EQ(nextOf(record.head()), nullptr);
    EXPECT_EQ(lumtest::eventKind(record.head()), uint32_t{LUM_SAX_EVENT_START_DOCUMENT});
    EXPECT_EQ(readAt<uint32_t>(record.head(), evt::kArgCount), 0u);
    // The library's objects are in the record while the parse is set up.
    EXPECT_NE(record.reader(), nullptr);
    EXPECT_NE(record.scanToken(), nullptr);
    EXPECT_NE(readAt<void*>(record.bytes(), rec::kLocator), nullptr);
    EXPECT_NE(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);  // memory input
}

TEST_F(SaxParse, FileInputKeepsNoMemoryInputSource) {
    HostRecord record;
    record.setFile(dir.write("f.xml", "<r/>"));
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);
}

TEST_F(SaxParse, EventsOfOneStepAreLinkedFromHeadToTailAndCounted) {
    HostRecord record;
    record.setMemory("<r xmlns='u' xmlns:p='v'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
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
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    EXPECT_EQ(record.eventCount(), before - 1);
    EXPECT_EQ(lumtest::describeEvent(record.head()), "StartPrefixMapping/2 \"p\" \"v\"");
}

TEST_F(SaxParse, EndedParseHasNoScanTokenAndStateEnded) {
    HostRecord record;
    record.setMemory("<r/>");
    Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(record.state(), LUM_SAX_STATE_ENDED);
    EXPECT_EQ(record.scanToken(), nullptr);
    EXPECT_NE(record.reader(), nullptr);  // released only by a reset or deletion
    // Asking again after the end stays a quiet 0.
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorCode(), LUM_OK);
}

TEST_F(SaxParse, DeletionClearsTheLibraryFieldsAndTheIds) {
    HostRecord record;
    record.setMemory("<r><a/></r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    ASSERT_NE(record.systemId(), nullptr);
    lumSAXDeleteParserInstance(record.get());
    EXPECT_EQ(record.reader(), nullptr);
    EXPECT_EQ(record.scanToken(), nullptr);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kInputSource), nullptr);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(tailOf(record), nullptr);
    EXPECT_EQ(record.systemId(), nullptr);
    EXPECT_EQ(record.publicId(), nullptr);
    EXPECT_EQ(record.state(), LUM_SAX_STATE_FIRST_PASS);
}

TEST_F(SaxParse, ResetClearsTheFieldAt432) {
    HostRecord record;
    writeAt<void*>(record.bytes(), rec::kReserved432, record.bytes());
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(readAt<void*>(record.bytes(), rec::kReserved432), nullptr);
}

TEST_F(SaxParse, FieldsTheReaderDoesNotUseAreLeftAlone) {
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
TEST_F(SaxParse, FailedStartWithAStaleCountAnswersOneAndKeepsTheReason) {
    HostRecord record;
    record.setMemory("<r xmlns='u' xmlns:p='v'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    ASSERT_GT(record.eventCount(), 1);  // abandoned with events queued

    record.setFile(dir.file("missing.xml"));
    EXPECT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.scanToken(), nullptr);  // the parse is over
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
    EXPECT_EQ(record.errorText().rfind("Error parsing file: unable to open primary document", 0),
              0u);

    record.setNoFile();
    EXPECT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NO_INPUT_FILE);
}

TEST_F(SaxParse, FailedStartWithoutEventsAnswersZero) {
    HostRecord record;
    record.setNoFile();
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "No input file specified");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NO_INPUT_FILE);
    EXPECT_EQ(record.head(), nullptr);
}

}  // namespace
