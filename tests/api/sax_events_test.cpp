// The events of the pull reader as a host receives them: the record at
// eventHead read at its byte offsets (kind, name, argCount, arguments), with
// the line and column the instance holds for it.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::kNoNamespaces;
using lumtest::kValidate;
using lumtest::HostRecord;
using lumtest::drain;
using lumtest::noLocation;
using lumtest::readAt;
using lumtest::restWithoutLocation;
using lumtest::stringAt;
using lumtest::writeAt;
namespace evt = lumtest::evt;
namespace rec = lumtest::rec;
using Events = std::vector<std::string>;

namespace {

class SaxEvents : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }

    Events parse(const std::string& document, uint32_t flags = 0) {
        HostRecord record;
        record.setMemory(document);
        record.setFlags(flags);
        return drain(record);
    }
    Events parseWithoutLocation(const std::string& document, uint32_t flags = 0) {
        HostRecord record;
        record.setMemory(document);
        record.setFlags(flags);
        DrainOptions options;
        options.withLocation = false;
        return drain(record, options);
    }
};

TEST_F(SaxEvents, NamespacesDefaultNamespacesPrefixedAttributesCdataAndPIs) {
    const std::string document =
        "<?xml version='1.0'?>\n"
        "<?pi before?>\n"
        "<r xmlns='urn:d' xmlns:p='urn:p' p:a='1' b='2'>\n"
        " <p:c>t&#233;x<![CDATA[<cd>]]></p:c><!-- c --><e/>\n"
        "</r>\n"
        "<?pi after?>\n";
    EXPECT_EQ(parse(document),
              (Events{
                  "StartDocument/0 @1:1",
                  "ProcessingInstruction/2 \"pi\" \"before\" @2:14",
                  "StartPrefixMapping/2 \"\" \"urn:d\" @3:48",
                  "StartPrefixMapping/2 \"p\" \"urn:p\" @3:48",
                  "StartElement/4 \"urn:d\" \"r\" \"r\" [2/3 {\"a\" \"p:a\" \"urn:p\" \"CDATA\" \"1\"} "
                  "{\"b\" \"b\" null \"CDATA\" \"2\"}] @3:48",
                  "Characters/2 \"\n \" 2 @4:2",
                  "StartElement/4 \"urn:p\" \"c\" \"p:c\" [0/0 no-array] @4:7",
                  "Characters/2 \"t\" 1 @4:9",
                  "Characters/2 \"\xC3\xA9x\" 2 @4:15",
                  "Characters/2 \"<cd>\" 4 @4:31",
                  "EndElement/3 \"urn:p\" \"c\" \"p:c\" @4:37",
                  "StartElement/4 \"urn:d\" \"e\" \"e\" [0/0 no-array] @4:51",
                  "EndElement/3 \"urn:d\" \"e\" \"e\" @4:51",
                  "Characters/2 \"\n\" 1 @5:1",
                  "EndElement/3 \"urn:d\" \"r\" \"r\" @5:5",
                  "EndPrefixMapping/1 \"p\" @5:5",
                  "EndPrefixMapping/1 \"\" @5:5",
                  "ProcessingInstruction/2 \"pi\" \"after\" @6:13",
                  "EndDocument/0 @7:1",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, IgnorableWhitespaceNotationAndUnparsedEntityUnderValidation) {
    const std::string document =
        "<!DOCTYPE r [<!ELEMENT r (a*)><!ELEMENT a EMPTY><!NOTATION n SYSTEM 'urn:n'>"
        "<!ENTITY u SYSTEM 'u.bin' NDATA n>]>\n<r>\n  <a/>\n</r>";
    EXPECT_EQ(parse(document, kValidate),
              (Events{
                  "StartDocument/0 @1:1",
                  "NotationDecl/3 \"n\" null \"urn:n\" @1:76",
                  "UnparsedEntityDecl/4 \"u\" null \"u.bin\" \"n\" @1:111",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array] @2:4",
                  "IgnorableWhitespace/2 \"\n  \" 3 @3:3",
                  "StartElement/4 \"\" \"a\" \"a\" [0/0 no-array] @3:7",
                  "EndElement/3 \"\" \"a\" \"a\" @3:7",
                  "IgnorableWhitespace/2 \"\n\" 1 @4:1",
                  "EndElement/3 \"\" \"r\" \"r\" @4:5",
                  "EndDocument/0 @4:5",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, WhitespaceIsCharactersWithoutValidation) {
    EXPECT_EQ(parseWithoutLocation("<!DOCTYPE r [<!ELEMENT r (a*)><!ELEMENT a EMPTY>]><r> <a/></r>"),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                  "Characters/2 \" \" 1",
                  "StartElement/4 \"\" \"a\" \"a\" [0/0 no-array]",
                  "EndElement/3 \"\" \"a\" \"a\"",
                  "EndElement/3 \"\" \"r\" \"r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, DuplicateAttributeDeclarationIsAWarning) {
    const std::string document =
        "<!DOCTYPE r [<!ELEMENT r EMPTY><!ATTLIST r a CDATA #IMPLIED>"
        "<!ATTLIST r a CDATA #IMPLIED>]><r/>";
    EXPECT_EQ(parse(document, kValidate),
              (Events{
                  "StartDocument/0 @1:1",
                  "Warning/1 \"attribute 'a' has already been declared for element 'r'\" @1:74",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array] @1:96",
                  "EndElement/3 \"\" \"r\" \"r\" @1:96",
                  "EndDocument/0 @1:96",
                  "result 0 code 0 ",
              }));
}

// Events queued by one Xerces step show, each at eventHead, the line and
// column current when it was queued.
TEST_F(SaxEvents, EventsOfOneStepEachShowTheirOwnLocation) {
    HostRecord record;
    record.setMemory("<?xml version='1.0'?>\n<?a?>\n<?b?>\n<!DOCTYPE r [\n<!NOTATION n SYSTEM 'x'>\n]><r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    ASSERT_EQ(record.eventCount(), 3);  // the whole prolog came in one step
    Events seen;
    for (int i = 0; i < 3; ++i) {
        seen.push_back(lumtest::describeWithLocation(record));
        ASSERT_EQ(record.next(), LUM_SAX_MORE);
    }
    EXPECT_EQ(seen, (Events{"ProcessingInstruction/2 \"a\" \"\" @2:6",
                            "ProcessingInstruction/2 \"b\" \"\" @3:6",
                            "NotationDecl/3 \"n\" null \"x\" @5:24"}));
}

TEST_F(SaxEvents, SeveralErrorsOfOneStepComeInDocumentOrderWithTheirLocation) {
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ELEMENT r EMPTY>]>\n<r first='1' second='2'/>");
    record.setFlags(kValidate);
    ASSERT_EQ(record.first(), LUM_SAX_MORE);  // StartDocument
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    // One Xerces step queued both errors, the element and the end.
    EXPECT_EQ(record.eventCount(), 5);
    Events seen;
    int32_t result = LUM_SAX_MORE;
    while (result == LUM_SAX_MORE) {
        seen.push_back(lumtest::describeWithLocation(record));
        result = record.next();
    }
    EXPECT_EQ(seen, (Events{
                        "Error/1 \"attribute 'first' is not declared for element 'r'\" @2:26",
                        "Error/1 \"attribute 'second' is not declared for element 'r'\" @2:26",
                        "StartElement/4 \"\" \"r\" \"r\" [2/3 {\"first\" \"first\" null \"CDATA\" \"1\"} "
                        "{\"second\" \"second\" null \"CDATA\" \"2\"}] @2:26",
                        "EndElement/3 \"\" \"r\" \"r\" @2:26",
                        "EndDocument/0 @2:26",
                    }));
}

TEST_F(SaxEvents, ErrorsAcrossStepsKeepTheLocationCurrentWhenQueued) {
    const std::string document =
        "<!DOCTYPE r [<!ELEMENT r (a)><!ELEMENT a EMPTY>]>\n<r>\n<b/>\n<c/>\n</r>";
    EXPECT_EQ(parse(document, kValidate),
              (Events{
                  "StartDocument/0 @1:1",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array] @2:4",
                  "IgnorableWhitespace/2 \"\n\" 1 @3:1",
                  "Error/1 \"no declaration found for element 'b'\" @3:5",
                  "StartElement/4 \"\" \"b\" \"b\" [0/0 no-array] @3:5",
                  "EndElement/3 \"\" \"b\" \"b\" @3:5",
                  "IgnorableWhitespace/2 \"\n\" 1 @4:1",
                  "Error/1 \"no declaration found for element 'c'\" @4:5",
                  "StartElement/4 \"\" \"c\" \"c\" [0/0 no-array] @4:5",
                  "EndElement/3 \"\" \"c\" \"c\" @4:5",
                  "IgnorableWhitespace/2 \"\n\" 1 @5:1",
                  "Error/1 \"element 'b' is not allowed for content model '(a)'\" @5:5",
                  "EndElement/3 \"\" \"r\" \"r\" @5:5",
                  "EndDocument/0 @5:5",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, HostDrivesTheParseToItsEndAfterAFatalError) {
    EXPECT_EQ(parse("<r><a></b><c/></r>"),
              (Events{
                  "StartDocument/0 @1:1",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array] @1:4",
                  "StartElement/4 \"\" \"a\" \"a\" [0/0 no-array] @1:7",
                  "FatalError/1 \"expected end of tag 'a'\" @1:9",
                  "StartElement/4 \"\" \"c\" \"c\" [0/0 no-array] @1:15",
                  "EndElement/3 \"\" \"c\" \"c\" @1:15",
                  "EndElement/3 \"\" \"r\" \"r\" @1:19",
                  "EndDocument/0 @1:19",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, InputEndingInsideTheRootEndsWithUnexpectedError) {
    // No "EndDocument" is queued, so the call after the last event finds a
    // finished parse that did not reach the end of the document.
    EXPECT_EQ(parse("<r>"),
              (Events{
                  "StartDocument/0 @1:1",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array] @1:4",
                  "FatalError/1 \"input ended before all started tags were ended; last tag "
                  "started is 'r'\" @1:4",
                  "result 0 code 3 Unexpected error",
              }));
}

TEST_F(SaxEvents, ElementUriTextEmptyIsReportedAsNull) {
    Events events = parseWithoutLocation("<r xmlns='EMPTY'/>");
    EXPECT_EQ(events[2], "StartElement/4 null \"r\" \"r\" [0/0 no-array]");
    EXPECT_EQ(events[3], "EndElement/3 null \"r\" \"r\"");
}

TEST_F(SaxEvents, ElementWithoutNamespaceHasEmptyStringUri) {
    Events events = parseWithoutLocation("<r/>");
    EXPECT_EQ(events[1], "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]");
}

TEST_F(SaxEvents, AttributeUriEmptyOrTextEmptyIsNull) {
    Events events = parseWithoutLocation("<r xmlns:e='EMPTY' e:a='1' b='2'/>");
    EXPECT_EQ(events[2],
              "StartElement/4 \"\" \"r\" \"r\" [2/3 {\"a\" \"e:a\" null \"CDATA\" \"1\"} "
              "{\"b\" \"b\" null \"CDATA\" \"2\"}]");
}

TEST_F(SaxEvents, PrefixTextEmptyIsNullOnlyWhenTheMappingStarts) {
    Events events = parseWithoutLocation("<r xmlns:EMPTY='urn:e'/>");
    EXPECT_EQ(events[1], "StartPrefixMapping/2 null \"urn:e\"");
    EXPECT_EQ(events[4], "EndPrefixMapping/1 \"EMPTY\"");
}

TEST_F(SaxEvents, WithNamespacesOffEveryLocalNameIsNull) {
    EXPECT_EQ(parseWithoutLocation("<p:r xmlns:p='urn:p' p:a='1' b='2'><c/></p:r>", kNoNamespaces),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" null \"p:r\" [3/4 {null \"xmlns:p\" null \"CDATA\" \"urn:p\"} "
                  "{null \"p:a\" null \"CDATA\" \"1\"} {null \"b\" null \"CDATA\" \"2\"}]",
                  "StartElement/4 \"\" null \"c\" [0/0 no-array]",
                  "EndElement/3 \"\" null \"c\"",
                  "EndElement/3 \"\" null \"p:r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxEvents, ThreeAttributesGiveCapacityFourAndCountThree) {
    HostRecord record;
    record.setMemory("<r a='1' b='2' c='3'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    const unsigned char* event = record.head();
    ASSERT_EQ(lumtest::eventKind(event), uint32_t{LUM_SAX_EVENT_START_ELEMENT});
    EXPECT_EQ(lumtest::readAt<int32_t>(event, lumtest::evt::kArg4), 4);      // capacity
    EXPECT_EQ(lumtest::readAt<int32_t>(event, lumtest::evt::kArg4 + 4), 3);  // count
    EXPECT_NE(lumtest::readAt<void*>(event, lumtest::evt::kArg5), nullptr);  // entries
}

TEST_F(SaxEvents, ElementWithoutAttributesHasNoEntriesArray) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    const unsigned char* event = record.head();
    EXPECT_EQ(lumtest::readAt<int32_t>(event, lumtest::evt::kArg4), 0);
    EXPECT_EQ(lumtest::readAt<int32_t>(event, lumtest::evt::kArg4 + 4), 0);
    EXPECT_EQ(lumtest::readAt<void*>(event, lumtest::evt::kArg5), nullptr);
}

TEST_F(SaxEvents, HostCanGrowTheAttributeListOfAStartElementInPlace) {
    HostRecord record;
    record.setMemory("<r a='1' b='2'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    auto* event = reinterpret_cast<SaxEvent*>(const_cast<unsigned char*>(record.head()));
    SaxAttrList* inPlace = LUM_SAX_EVENT_ATTRIBUTES(event);
    ASSERT_EQ(inPlace->capacity, 3);
    lumSAXInsertAttribute(&inPlace, "c", "3", nullptr, "CDATA");
    EXPECT_EQ(inPlace->capacity, 3);
    lumSAXInsertAttribute(&inPlace, "d", "4", nullptr, "CDATA");
    EXPECT_EQ(inPlace->capacity, 4);  // 3 * 3 / 2
    EXPECT_EQ(lumtest::describeEvent(record.head()),
              "StartElement/4 \"\" \"r\" \"r\" [4/4 {\"a\" \"a\" null \"CDATA\" \"1\"} "
              "{\"b\" \"b\" null \"CDATA\" \"2\"} {\"c\" \"c\" null \"CDATA\" \"3\"} "
              "{\"d\" \"d\" null \"CDATA\" \"4\"}]");
    // The library releases the grown list with the event.
    EXPECT_EQ(record.next(), LUM_SAX_MORE);
}

TEST_F(SaxEvents, OneAttributeGivesCapacityOne) {
    Events events = parseWithoutLocation("<r a='1'/>");
    EXPECT_EQ(events[1], "StartElement/4 \"\" \"r\" \"r\" [1/1 {\"a\" \"a\" null \"CDATA\" \"1\"}]");
}

TEST_F(SaxEvents, AttributeTypesComeFromTheDtd) {
    Events events = parseWithoutLocation(
        "<!DOCTYPE r [<!ATTLIST r i ID #IMPLIED t NMTOKEN #IMPLIED d CDATA 'dv'>]>"
        "<r i='x' t='y'/>");
    EXPECT_EQ(events[1],
              "StartElement/4 \"\" \"r\" \"r\" [3/4 {\"i\" \"i\" null \"ID\" \"x\"} "
              "{\"t\" \"t\" null \"NMTOKEN\" \"y\"} {\"d\" \"d\" null \"CDATA\" \"dv\"}]");
}

TEST_F(SaxEvents, CharactersLengthCountsUtf16Units) {
    // U+1D11E is one character, two UTF-16 units and four UTF-8 bytes.
    Events events = parseWithoutLocation("<r>&#x1D11E;a</r>");
    EXPECT_EQ(events[2], "Characters/2 \"\xF0\x9D\x84\x9E" "a\" 3");
}

TEST_F(SaxEvents, StartElementSetsStateRunningAndEndDocumentSetsEnded) {
    HostRecord record;
    record.setMemory("<r>x</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    EXPECT_EQ(record.state(), LUM_SAX_STATE_FIRST_PASS);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    EXPECT_EQ(lumtest::eventKind(record.head()), uint32_t{LUM_SAX_EVENT_START_ELEMENT});
    EXPECT_EQ(record.state(), LUM_SAX_STATE_RUNNING);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);  // Characters
    ASSERT_EQ(record.next(), LUM_SAX_MORE);  // EndElement
    ASSERT_EQ(record.next(), LUM_SAX_MORE);  // EndDocument
    EXPECT_EQ(lumtest::eventKind(record.head()), uint32_t{LUM_SAX_EVENT_END_DOCUMENT});
    EXPECT_EQ(record.state(), LUM_SAX_STATE_ENDED);
}

TEST_F(SaxEvents, EventNamesAreTheLibrarysConstants) {
    HostRecord record;
    record.setMemory("<r>x</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    const char* startDocument = lumtest::stringAt(record.head(), lumtest::evt::kName);
    HostRecord other;
    other.setMemory("<s/>");
    ASSERT_EQ(other.first(), LUM_SAX_MORE);
    EXPECT_EQ(lumtest::stringAt(other.head(), lumtest::evt::kName), startDocument);
}

TEST_F(SaxEvents, LocationIdsFollowTheInput) {
    HostRecord record;
    record.setMemory("<r/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_NE(record.systemId(), nullptr);
    EXPECT_STREQ(record.systemId(), "MEMPTR");
    EXPECT_EQ(record.publicId(), nullptr);
    const char* kept = record.systemId();
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    // Replaced only when the text differs: the same copy stays.
    EXPECT_EQ(record.systemId(), kept);
}

TEST_F(SaxEvents, NoEventIsDeliveredTwice) {
    const std::string document = "<?a?><r><?b?></r><?c?>";
    Events events = parseWithoutLocation(document);
    EXPECT_EQ(events, (Events{
                          "StartDocument/0",
                          "ProcessingInstruction/2 \"a\" \"\"",
                          "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                          "ProcessingInstruction/2 \"b\" \"\"",
                          "EndElement/3 \"\" \"r\" \"r\"",
                          "ProcessingInstruction/2 \"c\" \"\"",
                          "EndDocument/0",
                          "result 0 code 0 ",
                      }));
}

// ---- handlers -------------------------------------------------------------------------

TEST_F(SaxEvents, EventsCarryTheLibrarysNamesAndTheirArgCounts) {
    HostRecord record;
    record.setMemory("<?t d?><r>x</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    std::vector<std::string> seen;
    int32_t result = LUM_SAX_MORE;
    while (result == LUM_SAX_MORE && record.head() != nullptr) {
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

TEST_F(SaxEvents, ProcessingInstructionDataIsTheTextAfterTheTarget) {
    HostRecord record;
    record.setMemory("<r><?target some data?></r>");
    const Events events = lumtest::drain(record, noLocation());
    EXPECT_EQ(events[2], "ProcessingInstruction/2 \"target\" \"some data\"");
}

// Only the text "EMPTY" becomes null: the default namespace's prefix is ""
// at both ends of its scope.
TEST_F(SaxEvents, DefaultNamespacePrefixIsTheEmptyStringAtBothEnds) {
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

TEST_F(SaxEvents, AttributeListOfAnEventLiesInPlaceInArgFourAndFive) {
    HostRecord record;
    record.setMemory("<r a='1' b='2'/>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    const unsigned char* e = record.head();
    ASSERT_EQ(lumtest::eventKind(e), uint32_t{LUM_SAX_EVENT_START_ELEMENT});
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

TEST_F(SaxEvents, HostClearingTheHeadEventKeepsItsArgCount) {
    HostRecord record;
    record.setMemory("<r a='1'>text</r>");
    ASSERT_EQ(record.first(), LUM_SAX_MORE);
    ASSERT_EQ(record.next(), LUM_SAX_MORE);
    auto* e = const_cast<unsigned char*>(record.head());
    ASSERT_EQ(lumtest::eventKind(e), uint32_t{LUM_SAX_EVENT_START_ELEMENT});
    lumSAXClearCallbackData(reinterpret_cast<SaxEvent*>(e));
    EXPECT_EQ(readAt<uint32_t>(e, evt::kKind), uint32_t{LUM_SAX_EVENT_EMPTY});
    EXPECT_EQ(readAt<void*>(e, evt::kName), nullptr);
    EXPECT_EQ(readAt<uint32_t>(e, evt::kArgCount), 4u);
    for (size_t slot = evt::kArg1; slot <= evt::kNext; slot += 8) {
        EXPECT_EQ(readAt<void*>(e, slot), nullptr) << "offset " << slot;
    }
    // The library still frees the cleared event, and the parse goes on.
    // (next is cleared, so the rest of the step's queue is no longer linked.)
    const Events rest = restWithoutLocation(record);
    EXPECT_EQ(rest.back().rfind("result ", 0), 0u);
}

TEST_F(SaxEvents, ResolveEntityEventIsCompleteWhileTheHostIsCalled) {
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

}  // namespace
