// External entities met by the pull reader: the "ResolveEntity" event and
// the host callback, sources supplied by the host, the search directories,
// and the release of event strings by lumSAXClearCallbackData.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::noLocation;
using lumtest::kValidate;
using lumtest::HostRecord;
using lumtest::TempDir;
using lumtest::drain;
using lumtest::readAt;
using lumtest::stringAt;
using lumtest::writeAt;
using Events = std::vector<std::string>;

namespace {

// What the host's callback saw, and what it answers. The callback gets no
// argument: the host keeps its own note of the instance it drives.
struct CallbackScript {
    HostRecord* driving = nullptr;
    int32_t answer = 0;
    std::string memoryAnswer;  // supplied as a memory source when not empty
    bool inAlternativeSlot = false;
    std::vector<std::string> seen;
};
CallbackScript script;

int32_t hostCallback() {
    HostRecord& record = *script.driving;
    unsigned char* event = const_cast<unsigned char*>(record.head());
    script.seen.push_back(lumtest::describeEvent(event) + " count " +
                          std::to_string(record.eventCount()) + " then " +
                          lumtest::describeEvent(readAt<unsigned char*>(event, lumtest::evt::kNext)));
    if (!script.memoryAnswer.empty()) {
        void* source = lumCreateInputSource(nullptr, script.memoryAnswer.data(),
                                            static_cast<int32_t>(script.memoryAnswer.size()));
        writeAt<void*>(event, script.inAlternativeSlot ? lumtest::evt::kArg4 : lumtest::evt::kArg3,
                       source);
    }
    return script.answer;
}

class SaxResolver : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
    void SetUp() override { script = CallbackScript{}; }
    TempDir dir;
};

const char* const kExternalEntityDocument =
    "<!DOCTYPE r [<!ENTITY ext PUBLIC '-//lum//ext' 'ext.txt'>]><r>&ext;</r>";

TEST_F(SaxResolver, CallbackSeesTheResolveEntityEventAtHeadBeforeQueuedEvents) {
    HostRecord record;
    script.driving = &record;
    script.memoryAnswer = "<!ELEMENT r EMPTY>";
    record.setMemory("<?q?><!DOCTYPE r SYSTEM 'r.dtd'><r/>");
    record.setCallback(&hostCallback);
    record.setFlags(kValidate);
    const Events events = drain(record, noLocation());
    ASSERT_EQ(script.seen.size(), 1u);
    // Pushed at the head, in front of the processing instruction that was
    // queued before it, and gone again before the host gets that.
    EXPECT_EQ(script.seen[0],
              "ResolveEntity/4 \"\" \"r.dtd\" count 2 then ProcessingInstruction/2 \"q\" \"\"");
    EXPECT_EQ(events, (Events{
                          "StartDocument/0",
                          "ProcessingInstruction/2 \"q\" \"\"",
                          "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                          "EndElement/3 \"\" \"r\" \"r\"",
                          "EndDocument/0",
                          "result 0 code 0 ",
                      }));
}

TEST_F(SaxResolver, CallbackSeesPublicAndSystemIdOfAnEntity) {
    HostRecord record;
    script.driving = &record;
    record.setMemory(kExternalEntityDocument);
    record.setLimit(-1);
    record.setCallback(&hostCallback);
    drain(record);
    ASSERT_EQ(script.seen.size(), 1u);
    EXPECT_EQ(script.seen[0], "ResolveEntity/4 \"-//lum//ext\" \"ext.txt\" count 1 then (no event)");
}

TEST_F(SaxResolver, ZeroFilledLimitStopsTheFirstEntityExpansion) {
    // A zero-filled record asks for a limit of 0 expansions.
    HostRecord record;
    script.driving = &record;
    script.memoryAnswer = "never expanded";
    record.setMemory(kExternalEntityDocument);
    record.setCallback(&hostCallback);
    EXPECT_EQ(drain(record, noLocation()),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                  "FatalError/1 \"parser has encountered more than '0' entity expansions in the "
                  "document; this is the limit imposed by the application\"",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxResolver, ResolveEntityEventIsNeverLeftInTheQueue) {
    HostRecord record;
    script.driving = &record;
    record.setMemory(kExternalEntityDocument);
    record.setLimit(-1);
    record.setCallback(&hostCallback);
    for (const std::string& event : drain(record)) {
        EXPECT_EQ(event.find("ResolveEntity"), std::string::npos) << event;
    }
}

TEST_F(SaxResolver, CallbackCanSupplyAMemorySource) {
    HostRecord record;
    script.driving = &record;
    script.memoryAnswer = "from the host";
    record.setLimit(50000);
    record.setMemory(kExternalEntityDocument);
    record.setCallback(&hostCallback);
    EXPECT_EQ(drain(record, noLocation()),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                  "Characters/2 \"from the host\" 13",
                  "EndElement/3 \"\" \"r\" \"r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxResolver, AlternativeSourceIsUsedWhenTheFirstSlotIsEmpty) {
    HostRecord record;
    script.driving = &record;
    script.memoryAnswer = "alternative";
    script.inAlternativeSlot = true;
    record.setLimit(50000);
    record.setMemory(kExternalEntityDocument);
    record.setCallback(&hostCallback);
    const Events events = drain(record, noLocation());
    EXPECT_EQ(events[2], "Characters/2 \"alternative\" 11");
}

TEST_F(SaxResolver, CallbackAnsweringOneStopsTheParseWithoutErrorText) {
    HostRecord record;
    script.driving = &record;
    script.answer = 1;
    script.memoryAnswer = "never read";  // released by the library, not leaked
    record.setMemory(kExternalEntityDocument);
    record.setCallback(&hostCallback);
    EXPECT_EQ(drain(record, noLocation()),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxResolver, OtherCallbackAnswersLetResolutionGoOn) {
    dir.write("ext.txt", "from disk");
    const std::string path = dir.write("doc.xml", kExternalEntityDocument);
    HostRecord record;
    script.driving = &record;
    script.answer = 7;
    record.setLimit(50000);
    record.setFile(path);
    record.setCallback(&hostCallback);
    const Events events = drain(record, noLocation());
    EXPECT_EQ(events[2], "Characters/2 \"from disk\" 9");
}

TEST_F(SaxResolver, RelativeDtdMissingFromTheSearchDirectoriesFallsBackToXerces) {
    dir.write("docs/r.dtd", "<!ELEMENT r EMPTY>");
    const std::string path = dir.write("docs/doc.xml", "<!DOCTYPE r SYSTEM 'r.dtd'><r/>");
    HostRecord record;
    record.setFile(path);
    record.setFlags(kValidate);
    record.setSearchPath(dir.file("elsewhere") + "," + dir.file("nowhere"));
    EXPECT_EQ(drain(record, noLocation()),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]",
                  "EndElement/3 \"\" \"r\" \"r\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxResolver, RelativeEntityIsFoundInASearchDirectory) {
    dir.write("lib/ext.txt", "from the library directory");
    const std::string path = dir.write("docs/doc.xml", kExternalEntityDocument);
    HostRecord record;
    record.setFile(path);
    record.setSearchPath(" \t" + dir.file("empty") + "\r\n, ,," + dir.file("lib") + "/ ");
    record.setLimit(50000);
    const Events events = drain(record, noLocation());
    EXPECT_EQ(events[2], "Characters/2 \"from the library directory\" 26");
}

TEST_F(SaxResolver, SearchDirectoriesAreTriedInOrder) {
    dir.write("one/ext.txt", "one");
    dir.write("two/ext.txt", "two");
    HostRecord record;
    record.setMemory(kExternalEntityDocument);
    record.setSearchPath(dir.file("two") + "," + dir.file("one"));
    record.setLimit(50000);
    EXPECT_EQ(drain(record, noLocation())[2], "Characters/2 \"two\" 3");
}

TEST_F(SaxResolver, OnlySixteenSearchDirectoriesAreUsed) {
    dir.write("d15/ext.txt", "sixteenth");
    dir.write("d16/ext.txt", "seventeenth");
    std::string first15;
    for (int i = 0; i < 15; ++i) first15 += dir.file("d" + std::to_string(i)) + ",";

    HostRecord sixteenth;
    sixteenth.setMemory(kExternalEntityDocument);
    sixteenth.setSearchPath(first15 + dir.file("d15"));
    sixteenth.setLimit(50000);
    EXPECT_EQ(drain(sixteenth, noLocation())[2], "Characters/2 \"sixteenth\" 9");

    HostRecord seventeenth;
    seventeenth.setMemory(kExternalEntityDocument);
    seventeenth.setSearchPath(first15 + dir.file("d14") + "," + dir.file("d16"));
    seventeenth.setLimit(50000);
    const Events events = drain(seventeenth, noLocation());
    // Not found: Xerces resolves it against the memory document and fails.
    EXPECT_EQ(events[2].rfind("FatalError/1 \"unable to open external entity", 0), 0u)
        << events[2];
}

TEST_F(SaxResolver, AbsoluteSystemIdIsLeftToXerces) {
    const std::string entity = dir.write("abs/ext.txt", "absolute");
    dir.write("lib/ext.txt", "searched");
    HostRecord record;
    record.setMemory("<!DOCTYPE r [<!ENTITY ext SYSTEM '" + entity + "'>]><r>&ext;</r>");
    record.setSearchPath(dir.file("lib"));
    record.setLimit(50000);
    EXPECT_EQ(drain(record, noLocation())[2], "Characters/2 \"absolute\" 8");
}

// ---- lumSAXClearCallbackData --------------------------------------------------

// A library-owned string, made the way a host can: through lumSAXFixAttrMem.
char* libraryString(const char* text) {
    char* slot = nullptr;
    lumSAXFixAttrMem(&slot, text);
    return slot;
}

// Releases a library string the host still holds.
void releaseLibraryString(char* text) {
    unsigned char entry[40] = {};
    writeAt<char*>(entry, 32, text);
    lumSAXClearAttribute(reinterpret_cast<SaxAttribute*>(entry));
}

struct ReleaseRow {
    uint32_t kind;
    int releasedSlots;  // arg1..argN are released, later slots are not
};

class ClearCallbackData : public SaxResolver, public ::testing::WithParamInterface<ReleaseRow> {};

// Every string slot is filled; the library must release exactly the slots of
// the table (under the sanitizer build a wrong slot is a double release or a
// leak), then zero the slots, kind, name and next and keep argCount.
TEST_P(ClearCallbackData, ReleasesTheSlotsOfItsKindAndZeroesTheEvent) {
    unsigned char event[lumtest::evt::kSize] = {};
    writeAt<uint32_t>(event, lumtest::evt::kKind, GetParam().kind);
    writeAt<const char*>(event, lumtest::evt::kName, "host name");
    writeAt<uint32_t>(event, lumtest::evt::kArgCount, 4);
    writeAt<void*>(event, lumtest::evt::kNext, event);
    char* slots[5];
    for (int i = 0; i < 5; ++i) {
        slots[i] = libraryString(("slot " + std::to_string(i + 1)).c_str());
        writeAt<char*>(event, lumtest::evt::kArg1 + 8 * static_cast<size_t>(i), slots[i]);
    }

    lumSAXClearCallbackData(reinterpret_cast<SaxEvent*>(event));

    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(readAt<void*>(event, lumtest::evt::kArg1 + 8 * static_cast<size_t>(i)), nullptr);
        if (i >= GetParam().releasedSlots) releaseLibraryString(slots[i]);
    }
    EXPECT_EQ(readAt<uint32_t>(event, lumtest::evt::kKind), uint32_t{LUM_SAX_EVENT_EMPTY});
    EXPECT_EQ(stringAt(event, lumtest::evt::kName), nullptr);
    EXPECT_EQ(readAt<void*>(event, lumtest::evt::kNext), nullptr);
    EXPECT_EQ(readAt<uint32_t>(event, lumtest::evt::kArgCount), 4u);
}

INSTANTIATE_TEST_SUITE_P(
    ReleaseTable, ClearCallbackData,
    ::testing::Values(ReleaseRow{LUM_SAX_EVENT_EMPTY, 0},
                      ReleaseRow{LUM_SAX_EVENT_START_DOCUMENT, 0},
                      ReleaseRow{LUM_SAX_EVENT_END_DOCUMENT, 0},
                      ReleaseRow{LUM_SAX_EVENT_START_PREFIX_MAPPING, 2},
                      ReleaseRow{LUM_SAX_EVENT_END_PREFIX_MAPPING, 1},
                      ReleaseRow{LUM_SAX_EVENT_END_ELEMENT, 3},
                      ReleaseRow{LUM_SAX_EVENT_PROCESSING_INSTRUCTION, 2},
                      ReleaseRow{LUM_SAX_EVENT_SKIPPED_ENTITY, 0},
                      ReleaseRow{LUM_SAX_EVENT_SET_DOC_LOCATOR, 0},
                      ReleaseRow{LUM_SAX_EVENT_UNPARSED_ENTITY_DECL, 4},
                      ReleaseRow{LUM_SAX_EVENT_NOTATION_DECL, 3},
                      ReleaseRow{LUM_SAX_EVENT_RESOLVE_ENTITY, 2},
                      ReleaseRow{LUM_SAX_EVENT_WARNING, 1},
                      ReleaseRow{LUM_SAX_EVENT_ERROR, 1},
                      ReleaseRow{LUM_SAX_EVENT_FATAL_ERROR, 1},
                      ReleaseRow{99, 0}),
    [](const ::testing::TestParamInfo<ReleaseRow>& info) {
        return "Kind" + std::to_string(info.param.kind);
    });

TEST_F(SaxResolver, ClearingTextEventsLeavesTheirLengthUnreleased) {
    for (uint32_t kind : {uint32_t{LUM_SAX_EVENT_CHARACTERS},
                          uint32_t{LUM_SAX_EVENT_IGNORABLE_WHITESPACE}}) {
        unsigned char event[lumtest::evt::kSize] = {};
        writeAt<uint32_t>(event, lumtest::evt::kKind, kind);
        writeAt<char*>(event, lumtest::evt::kArg1, libraryString("text"));
        writeAt<uintptr_t>(event, lumtest::evt::kArg2, 4);  // a length, not a string
        lumSAXClearCallbackData(reinterpret_cast<SaxEvent*>(event));
        EXPECT_EQ(readAt<void*>(event, lumtest::evt::kArg1), nullptr);
        EXPECT_EQ(readAt<void*>(event, lumtest::evt::kArg2), nullptr);
    }
}

TEST_F(SaxResolver, ClearingStartElementReleasesItsAttributeList) {
    unsigned char event[lumtest::evt::kSize] = {};
    writeAt<uint32_t>(event, lumtest::evt::kKind, LUM_SAX_EVENT_START_ELEMENT);
    writeAt<char*>(event, lumtest::evt::kArg1, libraryString("urn:x"));
    writeAt<char*>(event, lumtest::evt::kArg2, libraryString("r"));
    writeAt<char*>(event, lumtest::evt::kArg3, libraryString("x:r"));
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "a", "1", nullptr, "CDATA");
    lumSAXInsertAttribute(&list, "p:b", "2", "urn:p", "CDATA");
    // The list's fields move into arg4/arg5, where the event keeps them.
    std::memcpy(event + lumtest::evt::kArg4, list, sizeof(SaxAttrList));
    std::memset(list, 0, sizeof(SaxAttrList));
    lumSAXDeleteAttrList(list);

    lumSAXClearCallbackData(reinterpret_cast<SaxEvent*>(event));

    for (size_t offset = lumtest::evt::kArg1; offset <= lumtest::evt::kArg5; offset += 8) {
        EXPECT_EQ(readAt<void*>(event, offset), nullptr) << offset;
    }
}

TEST_F(SaxResolver, ClearingANullEventDoesNothing) { lumSAXClearCallbackData(nullptr); }

}  // namespace
