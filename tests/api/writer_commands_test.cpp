// The writer's entry point: creation, the handling before the command
// table, every command in every state, and the failure step.
#include <gtest/gtest.h>

#include <cstdlib>

#include <cstring>
#include <string>

#include "host_test.h"
#include "lumxml.h"
#include "writer_fixtures.h"
#include "writer_host.h"

using lumtest::HostAttrs;
using lumtest::HostWriter;

namespace {

class WriterCommands : public lumtest::WriterTest {};

// Brings a fresh writer on memory output (fragment, not strict) to `state`.
void bringTo(HostWriter& w, int32_t state) {
    w.options.fragment = 1;
    if (state == LUM_WRITER_STATE_CREATED) return;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    switch (state) {
        case LUM_WRITER_STATE_START_TAG_OPEN:
            w.run(LUM_WRITER_START_ELEMENT, "r");
            break;
        case LUM_WRITER_STATE_AFTER_END_TAG:
            w.run(LUM_WRITER_START_ELEMENT, "r");
            w.run(LUM_WRITER_START_ELEMENT, "a");
            w.run(LUM_WRITER_END_ELEMENT, "a");
            break;
        case LUM_WRITER_STATE_AFTER_TEXT:
            w.run(LUM_WRITER_START_ELEMENT, "r");
            w.run(LUM_WRITER_CHARACTERS, "t");
            break;
        case LUM_WRITER_STATE_ENDED:
            w.run(LUM_WRITER_END_DOCUMENT);
            break;
        case LUM_WRITER_STATE_FAILED:
            w.run(LUM_WRITER_STOP);
            break;
        default: break;
    }
    ASSERT_EQ(w.state(), state);
}

struct CommandInStates {
    int32_t command;
    const char* results;  // the result in states 1..7
    const char* writes;   // 1: something was written, in states 1..7
};

// One row per command: what it answers and whether it writes, in each
// state. Commands 10 and 11 need state 3, 31 needs state 2; commands that
// write need an open output; in state 3 every command but 10, 11 and 12
// first writes the pending start tag.
constexpr CommandInStates kTable[] = {
    // cmd  states 1234567  writes 1234567
    {LUM_WRITER_CREATE,                  "0000001", "0010000"},
    {LUM_WRITER_ADD_ATTRIBUTE,           "1101111", "0000000"},
    {LUM_WRITER_DECLARE_NAMESPACE,       "1101111", "0000000"},
    {LUM_WRITER_RESTART_MEMORY,          "0000001", "0000000"},
    {LUM_WRITER_END_DOCUMENT,            "0000001", "0010000"},
    {LUM_WRITER_START_ELEMENT,           "1000011", "0010000"},
    {LUM_WRITER_END_ELEMENT,             "1000011", "0111100"},
    {LUM_WRITER_CHARACTERS,              "1000011", "0111100"},
    {LUM_WRITER_EMPTY_ELEMENT,           "1000011", "0010000"},
    {LUM_WRITER_DATA_ELEMENT,            "1000011", "0111100"},
    {LUM_WRITER_COMMENT,                 "1000011", "0111100"},
    {LUM_WRITER_PROCESSING_INSTRUCTION,  "1000011", "0111100"},
    {LUM_WRITER_RAW_TEXT,                "1000011", "0111100"},
    {LUM_WRITER_DOCTYPE,                 "1011111", "0110000"},
    {LUM_WRITER_ENTITY_REFERENCE,        "1000011", "0111100"},
    {LUM_WRITER_CDATA,                   "1000011", "0111100"},
    {40, "0000001", "0010000"},
};

TEST_F(WriterCommands, EveryCommandInEveryState) {
    for (const CommandInStates& row : kTable) {
        for (int32_t state = 1; state <= 7; ++state) {
            HostWriter w;
            bringTo(w, state);
            std::string before = w.memory();
            void* blockBefore = w.options.memoryBuffer;
            // A host restarting memory output terminates its text first
            // (the spare byte behind the data is there for it).
            if (row.command == LUM_WRITER_RESTART_MEMORY && blockBefore != nullptr &&
                w.options.memoryLength != nullptr)
                static_cast<char*>(blockBefore)[*w.options.memoryLength] = '\0';
            int32_t result = w.run(row.command, "n", "v");
            // A restart leaves the old block to the host.
            if (row.command == LUM_WRITER_RESTART_MEMORY && blockBefore != w.options.memoryBuffer)
                std::free(blockBefore);
            bool wrote = w.memory() != before;
            EXPECT_EQ(result, row.results[state - 1] - '0')
                << "command " << row.command << " in state " << state;
            EXPECT_EQ(wrote, row.writes[state - 1] == '1')
                << "command " << row.command << " in state " << state;
        }
    }
}

TEST_F(WriterCommands, StateAfterEachCommand) {
    const std::pair<int32_t, int32_t> afterFromState2[] = {
        {LUM_WRITER_CREATE, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_RESTART_MEMORY, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_END_DOCUMENT, LUM_WRITER_STATE_ENDED},
        {LUM_WRITER_START_ELEMENT, LUM_WRITER_STATE_START_TAG_OPEN},
        {LUM_WRITER_END_ELEMENT, LUM_WRITER_STATE_AFTER_END_TAG},
        {LUM_WRITER_CHARACTERS, LUM_WRITER_STATE_AFTER_TEXT},
        {LUM_WRITER_EMPTY_ELEMENT, LUM_WRITER_STATE_START_TAG_OPEN},
        {LUM_WRITER_DATA_ELEMENT, LUM_WRITER_STATE_AFTER_END_TAG},
        {LUM_WRITER_COMMENT, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_PROCESSING_INSTRUCTION, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_RAW_TEXT, LUM_WRITER_STATE_AFTER_TEXT},
        {LUM_WRITER_DOCTYPE, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_ENTITY_REFERENCE, LUM_WRITER_STATE_PROLOG},
        {LUM_WRITER_CDATA, LUM_WRITER_STATE_PROLOG},
        {40, LUM_WRITER_STATE_PROLOG}};
    for (const auto& [command, after] : afterFromState2) {
        HostWriter w;
        bringTo(w, LUM_WRITER_STATE_PROLOG);
        void* blockBefore = w.options.memoryBuffer;
        static_cast<char*>(blockBefore)[*w.options.memoryLength] = '\0';
        w.run(command, "n", "v");
        if (command == LUM_WRITER_RESTART_MEMORY) std::free(blockBefore);
        EXPECT_EQ(w.state(), after) << command;
    }
    HostWriter w;
    bringTo(w, LUM_WRITER_STATE_START_TAG_OPEN);
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "a", "1"), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p"), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
}

TEST_F(WriterCommands, NullWriterCreatesWithCommand1AndRefusesOthers) {
    WriterOptions options{};
    WriterArgs args{};
    for (int32_t command : {LUM_WRITER_FREE, LUM_WRITER_GET_STATE, LUM_WRITER_RESET,
                            LUM_WRITER_STOP, LUM_WRITER_OPEN, LUM_WRITER_END_DOCUMENT,
                            LUM_WRITER_START_ELEMENT}) {
        EXPECT_EQ(lumSAXWriterExecute(nullptr, command, &options, &args),
                  LUM_WRITER_REFUSED) << command;
        EXPECT_EQ(args.arg0, nullptr);
    }
    ASSERT_EQ(lumSAXWriterExecute(nullptr, LUM_WRITER_CREATE, &options, &args), LUM_WRITER_OK);
    ASSERT_NE(args.arg0, nullptr);
    SAXWriter* writer = static_cast<SAXWriter*>(args.arg0);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_GET_STATE, &options, &args),
              LUM_WRITER_STATE_CREATED);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_FREE, &options, &args), LUM_WRITER_OK);
}

TEST_F(WriterCommands, Command3InState7Returns7AndCommand23WritesNothing) {
    HostWriter w;
    bringTo(w, LUM_WRITER_STATE_START_TAG_OPEN);
    EXPECT_EQ(w.run(LUM_WRITER_STOP), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_GET_STATE), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "x"), LUM_WRITER_REFUSED);
    EXPECT_EQ(w.memory(), "");  // not even the pending tag
}

TEST_F(WriterCommands, Command10AfterAnEndTagIsRefusedAndWritesNothing) {
    HostWriter w;
    bringTo(w, LUM_WRITER_STATE_AFTER_END_TAG);
    std::string before = w.memory();
    EXPECT_EQ(before, "<r><a></a>");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "b", "1"), LUM_WRITER_REFUSED);
    EXPECT_EQ(w.memory(), before);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_END_TAG);
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r><a></a></r>");
}

TEST_F(WriterCommands, Command2FreesAWriterInState7) {
    HostWriter w;
    bringTo(w, LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.run(LUM_WRITER_FREE), LUM_WRITER_OK);
    EXPECT_EQ(w.writer, nullptr);
}

TEST_F(WriterCommands, Command4InEveryStateHandsBackAFreshWriter) {
    for (int32_t state = 1; state <= 7; ++state) {
        HostWriter w;
        bringTo(w, state);
        SAXWriter* old = w.writer;
        WriterArgs args{};
        EXPECT_EQ(lumSAXWriterExecute(old, LUM_WRITER_RESET, &w.options, &args), LUM_WRITER_OK);
        ASSERT_NE(args.arg0, nullptr);
        w.writer = static_cast<SAXWriter*>(args.arg0);
        EXPECT_EQ(w.state(), LUM_WRITER_STATE_CREATED) << state;
    }
}

TEST_F(WriterCommands, Command5StopsTheWriter) {
    HostWriter w;
    bringTo(w, LUM_WRITER_STATE_PROLOG);
    EXPECT_EQ(w.run(LUM_WRITER_STOP), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_REFUSED);
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_REFUSED);
}

TEST_F(WriterCommands, Command2WritesThePendingStartTagBeforeFreeing) {
    lumtest::TempDir dir;
    std::string path = dir.file("p.xml");
    {
        HostWriter w;
        w.options.outputKind = LUM_WRITER_TO_FILE;
        w.options.fileName = path.c_str();
        w.options.fragment = 1;
        ASSERT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        w.run(LUM_WRITER_START_ELEMENT, "r");
    }
    EXPECT_EQ(lumtest::readFile(path), "<r>");
}

// ---- Commands and states, pending tags and codes ------------------------------------------------------

TEST_F(WriterCommands, StateRefusedCommandStillCompletesThePendingStartTag) {
    openFragment();
    ASSERT_EQ(w.run(LUM_WRITER_START_ELEMENT, "a"), LUM_WRITER_OK);
    // Command 31 needs state 2; its completion has already written the tag.
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "a", "a.dtd"), LUM_WRITER_REFUSED);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
}

TEST_F(WriterCommands, UnknownCommandWritesThePendingTagAndKeepsTheState) {
    openFragment();
    ASSERT_EQ(w.run(LUM_WRITER_START_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(40), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
    EXPECT_EQ(w.run(LUM_WRITER_CREATE), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
}

TEST_F(WriterCommands, AttributesAndDeclarationsDoNotCompleteTheTag) {
    openFragment();
    ASSERT_EQ(w.run(LUM_WRITER_START_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    // Declarations and attributes keep their call order.
    EXPECT_EQ(w.memory(), "<a x=\"1\" xmlns:p=\"urn:u\"></a>");
}

TEST_F(WriterCommands, EmptyElementStateIs3AndAttributesStillJoinIt) {
    openFragment();
    ASSERT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "e"), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "k", "v"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<e k=\"v\"/>t");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_TEXT);
}

TEST_F(WriterCommands, FailureResultIsTheCodeBeforeTheCloseStep) {
    // The close step finds the root still open (9); the answer stays 6.
    openStream(true, false, false);
    ASSERT_EQ(w.run(LUM_WRITER_START_ELEMENT, "r"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_ENTITY_REFERENCE, "1bad"), LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), "1bad");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.stream(), "<?xml?><r>&1bad;");
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterCommands, CodeWithoutMessageLeavesTheMessageAsItWas) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(LUM_WRITER_DOCTYPE, "doc", "doc.dtd"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "other"), LUM_WRITER_ERR_ROOT_NOT_DOCTYPE);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.stream(), "<?xml?><!DOCTYPE doc SYSTEM \"doc.dtd\"><other>");
}

TEST_F(WriterCommands, AfterAFailureOnlyFreeStateResetAndStopAreTaken) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(LUM_WRITER_CDATA, "x"), LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT);
    for (int32_t command : {LUM_WRITER_CREATE, LUM_WRITER_ADD_ATTRIBUTE,
                            LUM_WRITER_DECLARE_NAMESPACE, LUM_WRITER_RESTART_MEMORY,
                            LUM_WRITER_OPEN, LUM_WRITER_END_DOCUMENT, LUM_WRITER_START_ELEMENT,
                            LUM_WRITER_END_ELEMENT, LUM_WRITER_CHARACTERS, LUM_WRITER_COMMENT,
                            LUM_WRITER_CDATA})
        EXPECT_EQ(w.run(command, "a"), LUM_WRITER_REFUSED) << command;
    EXPECT_EQ(w.run(LUM_WRITER_STOP), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.run(LUM_WRITER_RESET), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_CREATED);
}

// ---- The failure step ----------------------------------------------------------

TEST_F(WriterCommands, FailureWritesThePendingTagClosesAndClearsTheHostFields) {
    lumtest::TempDir dir;
    std::string path = dir.file("f.xml");
    HostWriter w;
    w.options.outputKind = LUM_WRITER_TO_FILE;
    w.options.fileName = path.c_str();
    w.options.strict = 1;
    w.options.fragment = 1;
    ASSERT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "a", "1");
    // The strict error 6 is the answer, not the 9 the close step finds.
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "1bad"), LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), "1bad");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
    // The file is closed: its content is complete on disk.
    EXPECT_EQ(lumtest::readFile(path), "<r a=\"1\"><1bad>");
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "x"), LUM_WRITER_REFUSED);
    EXPECT_EQ(lumtest::readFile(path), "<r a=\"1\"><1bad>");
}

TEST_F(WriterCommands, FailureOnMemoryOutputNullsTheHostBlockFields) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(LUM_WRITER_TO_MEMORY_WITH_BOM), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_CHARACTERS, "text");
    EXPECT_NE(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "other"), LUM_WRITER_ERR_END_TAG_MISMATCH);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
    EXPECT_EQ(w.message(), "r");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

TEST_F(WriterCommands, StrictEndOfDocumentWithAnOpenElementGives9) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_ERR_ELEMENT_OPEN);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
}

TEST_F(WriterCommands, StrictEndOfDocumentTwiceGives9) {
    HostWriter w;
    w.options.strict = 1;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "r");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<r/>");
    w.freeBlock();
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_ERR_ELEMENT_OPEN);
}

TEST_F(WriterCommands, PublishedMessageAddressStaysValidWhenTheMessageGrows) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    const char* published = w.options.message;
    ASSERT_NE(published, nullptr);
    std::string longName = "1" + std::string(2000, 'n');
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, longName.c_str()), LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), longName);
    // The first block is still readable memory, too.
    EXPECT_EQ(published[0], '\0');
}

}  // namespace
