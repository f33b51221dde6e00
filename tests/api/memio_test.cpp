// lumMemioInit as a host uses it: the writer's memory output allocated,
// grown and replaced through the host's functions, which see every size,
// the source file and the call-site line.
#include <gtest/gtest.h>

#include <string>

#include "host_memory.h"
#include "host_test.h"
#include "lumxml.h"
#include "writer_host.h"

using lumtest::HostMemory;
using lumtest::HostWriter;
using lumtest::MemoryCall;

namespace {

class HostMemoryFunctions : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::initLibraryOnce();
        HostMemory::reset();
        lumMemioInit(HostMemory::reserved, HostMemory::alloc, HostMemory::realloc);
    }
    void TearDown() override {
        lumMemioInit(nullptr, nullptr, nullptr);
        HostMemory::reset();
    }
};

TEST_F(HostMemoryFunctions, OpeningAllocates16384BytesAtLine84) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    ASSERT_EQ(HostMemory::calls().size(), 1u);
    const MemoryCall& call = HostMemory::calls()[0];
    EXPECT_EQ(call.kind, MemoryCall::Alloc);
    EXPECT_EQ(call.size, 16384u);
    EXPECT_EQ(call.line, LUM_MEMIO_LINE_NEW_BLOCK);
    EXPECT_FALSE(call.sourceFile.empty());
}

TEST_F(HostMemoryFunctions, Writing16383BytesGrowsAtLine175And16382DoesNot) {
    for (size_t size : {16382u, 16383u}) {
        HostMemory::reset();
        HostWriter w;
        w.options.fragment = 1;
        ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
        std::string text(size, 'a');
        ASSERT_EQ(w.run(LUM_WRITER_RAW_TEXT, text.c_str()), LUM_WRITER_OK);
        EXPECT_EQ(*w.options.memoryLength, size);
        const auto& calls = HostMemory::calls();
        if (size == 16382u) {
            EXPECT_EQ(calls.size(), 1u);
        } else {
            ASSERT_EQ(calls.size(), 2u);
            EXPECT_EQ(calls[1].kind, MemoryCall::Realloc);
            EXPECT_EQ(calls[1].size, 32768u);
            EXPECT_EQ(calls[1].line, LUM_MEMIO_LINE_GROW);
            EXPECT_EQ(calls[1].sourceFile, calls[0].sourceFile);
        }
        EXPECT_EQ(w.memory(), text);
    }
}

TEST_F(HostMemoryFunctions, HostSeesTheLiveBlockAndLengthWhileWriting) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    std::string chunk(5000, 'x');
    std::string expected = "<r>";
    for (int i = 0; i < 10; ++i) {
        w.run(LUM_WRITER_CHARACTERS, chunk.c_str());
        expected += chunk;
        EXPECT_EQ(w.memory(), expected);  // through the host's own variables
    }
    w.run(LUM_WRITER_END_ELEMENT, "r");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), expected + "</r>");
}

TEST_F(HostMemoryFunctions, FailedGrowthGives80AndClosesTheOutput) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    HostMemory::failNextReallocs(1);
    std::string text(20000, 'z');
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, text.c_str()), LUM_WRITER_ERR_MEMORY);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
    const auto& calls = HostMemory::calls();
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[2].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[2].size, 16384u);
    EXPECT_EQ(calls[2].line, LUM_MEMIO_LINE_REPLACEMENT);
    // The fresh block is the host allocator's; this host frees its blocks
    // when it resets.
    HostMemory::freeLiveBlocks();
}

TEST_F(HostMemoryFunctions, ReservedFunctionIsNeverCalled) {
    // HostMemory::reserved aborts the process if called.
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
}

}  // namespace
