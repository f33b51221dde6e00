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
    if (state == 1) return;
    ASSERT_EQ(w.openMemory(), 0);
    switch (state) {
        case 3: w.run(23, "r"); break;
        case 4: w.run(23, "r"); w.run(23, "a"); w.run(24, "a"); break;
        case 5: w.run(23, "r"); w.run(25, "t"); break;
        case 6: w.run(22); break;
        case 7: w.run(5); break;
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
    {1,  "0000001", "0010000"},
    {10, "1101111", "0000000"},
    {11, "1101111", "0000000"},
    {12, "0000001", "0000000"},
    {22, "0000001", "0010000"},
    {23, "1000011", "0010000"},
    {24, "1000011", "0111100"},
    {25, "1000011", "0111100"},
    {26, "1000011", "0010000"},
    {27, "1000011", "0111100"},
    {28, "1000011", "0111100"},
    {29, "1000011", "0111100"},
    {30, "1000011", "0111100"},
    {31, "1011111", "0110000"},
    {32, "1000011", "0111100"},
    {33, "1000011", "0111100"},
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
            if (row.command == 12 && blockBefore != nullptr && w.options.memoryLength != nullptr)
                static_cast<char*>(blockBefore)[*w.options.memoryLength] = '\0';
            int32_t result = w.run(row.command, "n", "v");
            // A restart leaves the old block to the host.
            if (row.command == 12 && blockBefore != w.options.memoryBuffer) std::free(blockBefore);
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
        {1, 2}, {12, 2}, {22, 6}, {23, 3}, {24, 4}, {25, 5}, {26, 3}, {27, 4},
        {28, 2}, {29, 2}, {30, 5}, {31, 2}, {32, 2}, {33, 2}, {40, 2}};
    for (const auto& [command, after] : afterFromState2) {
        HostWriter w;
        bringTo(w, 2);
        void* blockBefore = w.options.memoryBuffer;
        static_cast<char*>(blockBefore)[*w.options.memoryLength] = '\0';
        w.run(command, "n", "v");
        if (command == 12) std::free(blockBefore);
        EXPECT_EQ(w.state(), after) << command;
    }
    HostWriter w;
    bringTo(w, 3);
    EXPECT_EQ(w.run(10, "a", "1"), 0);
    EXPECT_EQ(w.state(), 3);
    EXPECT_EQ(w.run(11, "urn:u", "p"), 0);
    EXPECT_EQ(w.state(), 3);
}

TEST_F(WriterCommands, NullWriterCreatesWithCommand1AndRefusesOthers) {
    WriterOptions options{};
    WriterArgs args{};
    for (int32_t command : {2, 3, 4, 5, 21, 22, 23}) {
        EXPECT_EQ(lumSAXWriterExecute(nullptr, command, &options, &args), 1) << command;
        EXPECT_EQ(args.arg0, nullptr);
    }
    ASSERT_EQ(lumSAXWriterExecute(nullptr, 1, &options, &args), 0);
    ASSERT_NE(args.arg0, nullptr);
    SAXWriter* writer = static_cast<SAXWriter*>(args.arg0);
    EXPECT_EQ(lumSAXWriterExecute(writer, 3, &options, &args), 1);
    EXPECT_EQ(lumSAXWriterExecute(writer, 2, &options, &args), 0);
}

TEST_F(WriterCommands, Command3InState7Returns7AndCommand23WritesNothing) {
    HostWriter w;
    bringTo(w, 3);
    EXPECT_EQ(w.run(5), 0);
    EXPECT_EQ(w.run(3), 7);
    EXPECT_EQ(w.run(23, "x"), 1);
    EXPECT_EQ(w.memory(), "");  // not even the pending tag
}

TEST_F(WriterCommands, Command10AfterAnEndTagIsRefusedAndWritesNothing) {
    HostWriter w;
    bringTo(w, 4);
    std::string before = w.memory();
    EXPECT_EQ(before, "<r><a></a>");
    EXPECT_EQ(w.run(10, "b", "1"), 1);
    EXPECT_EQ(w.memory(), before);
    EXPECT_EQ(w.state(), 4);
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r><a></a></r>");
}

TEST_F(WriterCommands, Command2FreesAWriterInState7) {
    HostWriter w;
    bringTo(w, 7);
    EXPECT_EQ(w.run(2), 0);
    EXPECT_EQ(w.writer, nullptr);
}

TEST_F(WriterCommands, Command4InEveryStateHandsBackAFreshWriter) {
    for (int32_t state = 1; state <= 7; ++state) {
        HostWriter w;
        bringTo(w, state);
        SAXWriter* old = w.writer;
        WriterArgs args{};
        EXPECT_EQ(lumSAXWriterExecute(old, 4, &w.options, &args), 0);
        ASSERT_NE(args.arg0, nullptr);
        w.writer = static_cast<SAXWriter*>(args.arg0);
        EXPECT_EQ(w.state(), 1) << state;
    }
}

TEST_F(WriterCommands, Command5StopsTheWriter) {
    HostWriter w;
    bringTo(w, 2);
    EXPECT_EQ(w.run(5), 0);
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.run(21), 1);
    EXPECT_EQ(w.run(22), 1);
}

TEST_F(WriterCommands, Command2WritesThePendingStartTagBeforeFreeing) {
    lumtest::TempDir dir;
    std::string path = dir.file("p.xml");
    {
        HostWriter w;
        w.options.outputKind = 1;
        w.options.fileName = path.c_str();
        w.options.fragment = 1;
        ASSERT_EQ(w.run(21), 0);
        w.run(23, "r");
    }
    EXPECT_EQ(lumtest::readFile(path), "<r>");
}

// ---- Commands and states, pending tags and codes ------------------------------------------------------

TEST_F(WriterCommands, StateRefusedCommandStillCompletesThePendingStartTag) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    // Command 31 needs state 2; its completion has already written the tag.
    EXPECT_EQ(w.run(31, "a", "a.dtd"), 1);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), 3);
}

TEST_F(WriterCommands, UnknownCommandWritesThePendingTagAndKeepsTheState) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    EXPECT_EQ(w.run(40), 0);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), 3);
    EXPECT_EQ(w.run(1), 0);
    EXPECT_EQ(w.state(), 3);
}

TEST_F(WriterCommands, AttributesAndDeclarationsDoNotCompleteTheTag) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    EXPECT_EQ(w.run(10, "x", "1"), 0);
    EXPECT_EQ(w.run(11, "urn:u", "p"), 0);
    EXPECT_EQ(w.memory(), "");
    EXPECT_EQ(w.run(24, "a"), 0);
    // Declarations and attributes keep their call order.
    EXPECT_EQ(w.memory(), "<a x=\"1\" xmlns:p=\"urn:u\"></a>");
}

TEST_F(WriterCommands, EmptyElementStateIs3AndAttributesStillJoinIt) {
    openFragment();
    ASSERT_EQ(w.run(26, "e"), 0);
    EXPECT_EQ(w.state(), 3);
    EXPECT_EQ(w.run(10, "k", "v"), 0);
    EXPECT_EQ(w.run(25, "t"), 0);
    EXPECT_EQ(w.memory(), "<e k=\"v\"/>t");
    EXPECT_EQ(w.state(), 5);
}

TEST_F(WriterCommands, FailureResultIsTheCodeBeforeTheCloseStep) {
    // The close step finds the root still open (9); the answer stays 6.
    openStream(true, false, false);
    ASSERT_EQ(w.run(23, "r"), 0);
    EXPECT_EQ(w.run(32, "1bad"), 6);
    EXPECT_EQ(w.message(), "1bad");
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.stream(), "<?xml?><r>&1bad;");
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterCommands, CodeWithoutMessageLeavesTheMessageAsItWas) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(31, "doc", "doc.dtd"), 0);
    EXPECT_EQ(w.run(23, "other"), 14);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.stream(), "<?xml?><!DOCTYPE doc SYSTEM \"doc.dtd\"><other>");
}

TEST_F(WriterCommands, AfterAFailureOnlyFreeStateResetAndStopAreTaken) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(33, "x"), 13);
    for (int32_t command : {1, 10, 11, 12, 21, 22, 23, 24, 25, 28, 33})
        EXPECT_EQ(w.run(command, "a"), 1) << command;
    EXPECT_EQ(w.run(5), 0);
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.run(4), 0);
    EXPECT_EQ(w.state(), 1);
}

// ---- The failure step ----------------------------------------------------------

TEST_F(WriterCommands, FailureWritesThePendingTagClosesAndClearsTheHostFields) {
    lumtest::TempDir dir;
    std::string path = dir.file("f.xml");
    HostWriter w;
    w.options.outputKind = 1;
    w.options.fileName = path.c_str();
    w.options.strict = 1;
    w.options.fragment = 1;
    ASSERT_EQ(w.run(21), 0);
    w.run(23, "r");
    w.run(10, "a", "1");
    // The strict error 6 is the answer, not the 9 the close step finds.
    EXPECT_EQ(w.run(23, "1bad"), 6);
    EXPECT_EQ(w.message(), "1bad");
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
    // The file is closed: its content is complete on disk.
    EXPECT_EQ(lumtest::readFile(path), "<r a=\"1\"><1bad>");
    EXPECT_EQ(w.run(25, "x"), 1);
    EXPECT_EQ(lumtest::readFile(path), "<r a=\"1\"><1bad>");
}

TEST_F(WriterCommands, FailureOnMemoryOutputNullsTheHostBlockFields) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(2), 0);
    w.run(23, "r");
    w.run(25, "text");
    EXPECT_NE(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.run(24, "other"), 8);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
    EXPECT_EQ(w.message(), "r");
    EXPECT_EQ(w.state(), 7);
}

TEST_F(WriterCommands, StrictEndOfDocumentWithAnOpenElementGives9) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), 0);
    w.run(23, "r");
    EXPECT_EQ(w.run(22), 9);
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
}

TEST_F(WriterCommands, StrictEndOfDocumentTwiceGives9) {
    HostWriter w;
    w.options.strict = 1;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), 0);
    w.run(26, "r");
    ASSERT_EQ(w.run(22), 0);
    EXPECT_EQ(w.memory(), "<r/>");
    w.freeBlock();
    EXPECT_EQ(w.run(22), 9);
}

TEST_F(WriterCommands, PublishedMessageAddressStaysValidWhenTheMessageGrows) {
    HostWriter w;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), 0);
    const char* published = w.options.message;
    ASSERT_NE(published, nullptr);
    std::string longName = "1" + std::string(2000, 'n');
    EXPECT_EQ(w.run(23, longName.c_str()), 6);
    EXPECT_EQ(w.message(), longName);
    // The first block is still readable memory, too.
    EXPECT_EQ(published[0], '\0');
}

}  // namespace
