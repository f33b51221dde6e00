// Input sources made for the host from a file name or a memory block.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include "dom/load/input_source.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "host_test.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

// The shared temporary folder of the test support (mkdtemp on Linux, a
// portable equivalent on Windows).
using ScratchDir = lumtest::TempDir;

class InputSources : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }

    static std::string contentOf(InputSource& source) {
        std::unique_ptr<BinInputStream> stream(source.makeStream());
        if (!stream) return "<no stream>";
        std::string content;
        XMLByte chunk[64];
        while (XMLSize_t got = stream->readBytes(chunk, sizeof chunk))
            content.append(reinterpret_cast<const char*>(chunk), got);
        return content;
    }

    static std::string systemIdOf(const InputSource& source) {
        return HostString(source.getSystemId()).get();
    }
};

TEST_F(InputSources, FileNameGivesALocalFileSource) {
    ScratchDir dir;
    std::string path = dir.write("a.xml", "<a/>");
    std::unique_ptr<InputSource> source(createInputSource(path.c_str(), nullptr, 0));
    ASSERT_NE(dynamic_cast<LocalFileInputSource*>(source.get()), nullptr);
    EXPECT_EQ(systemIdOf(*source), path);
    EXPECT_EQ(contentOf(*source), "<a/>");
}

TEST_F(InputSources, FileNameWinsOverMemory) {
    ScratchDir dir;
    std::string path = dir.write("b.xml", "<file/>");
    const char memory[] = "<memory/>";
    std::unique_ptr<InputSource> source(createInputSource(path.c_str(), memory, 9));
    ASSERT_NE(dynamic_cast<LocalFileInputSource*>(source.get()), nullptr);
    EXPECT_EQ(contentOf(*source), "<file/>");
}

TEST_F(InputSources, RelativeFileNameResolvesAgainstTheCurrentDirectory) {
    std::unique_ptr<InputSource> source(createInputSource("some/relative.xml", nullptr, 0));
    ASSERT_NE(source, nullptr);
    XMLCh* cwd = XMLPlatformUtils::getCurrentDirectory();
    std::string expected = std::string(HostString(cwd).get()) + "/some/relative.xml";
    XMLString::release(&cwd);
    EXPECT_EQ(systemIdOf(*source), expected);
}

TEST_F(InputSources, MissingFileStillGivesASourceWithoutStream) {
    std::unique_ptr<InputSource> source(createInputSource("/nonexistent/x.xml", nullptr, 0));
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(contentOf(*source), "<no stream>");
}

TEST_F(InputSources, MemoryGivesAMemorySourceNamedMEMPTR) {
    const char memory[] = "<m>text</m>";
    std::unique_ptr<InputSource> source(createInputSource(nullptr, memory, 11));
    ASSERT_NE(dynamic_cast<MemBufInputSource*>(source.get()), nullptr);
    EXPECT_EQ(systemIdOf(*source), "MEMPTR");
    EXPECT_EQ(contentOf(*source), "<m>text</m>");
}

TEST_F(InputSources, EmptyFileNameFallsBackToMemory) {
    const char memory[] = "<m/>";
    std::unique_ptr<InputSource> source(createInputSource("", memory, 4));
    ASSERT_NE(dynamic_cast<MemBufInputSource*>(source.get()), nullptr);
    EXPECT_EQ(contentOf(*source), "<m/>");
}

TEST_F(InputSources, EmptyFileNameAndZeroLengthGiveNull) {
    const char memory[] = "<m/>";
    EXPECT_EQ(createInputSource("", memory, 0), nullptr);
    EXPECT_EQ(createInputSource(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(createInputSource(nullptr, nullptr, 10), nullptr);
}

TEST_F(InputSources, NegativeLengthGivesNull) {
    const char memory[] = "<m/>";
    EXPECT_EQ(createInputSource(nullptr, memory, -1), nullptr);
}

}  // namespace
