// The writer's shortcuts for UTF-8 output (host texts encoded without
// UTF-16, bytes encoded straight into the memory block) write exactly what
// the general way writes: the same bytes, and the same calls to the host's
// memory functions (sizes and call sites), in every mode and on texts that
// need escapes, hold characters beyond ASCII, four-byte characters or
// ill-formed bytes.
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/library_state.h"
#include "out/memio.h"
#include "writer/writer.h"
#include "start_library.h"
#include "lumxml.h"

using namespace lumxml;

namespace {

// ---- The host's memory functions, recording every call -------------------

struct MemoryCall {
    uint32_t size;
    int32_t line;
    bool operator==(const MemoryCall& other) const { return size == other.size && line == other.line; }
};
std::vector<MemoryCall> gCalls;

void* recordingAlloc(uint32_t size, const char*, int32_t line) {
    gCalls.push_back({size, line});
    return std::malloc(size);
}
void* recordingRealloc(void* block, uint32_t size, const char*, int32_t line) {
    gCalls.push_back({size, line});
    return std::realloc(block, size);
}

// ---- One document, written with or without the shortcuts ------------------

struct Mode {
    bool strict;
    bool formatted;
    bool fragment;
    int32_t kind;  // LUM_WRITER_TO_MEMORY_WITH_BOM, _TO_STREAM or _TO_MEMORY
    const char* encoding;
};

struct Written {
    std::string bytes;
    std::vector<MemoryCall> calls;
    std::vector<int32_t> results;
};

std::string gStreamed;
int32_t streamWrite(int64_t, int32_t, const void* bytes, uint32_t count, void*) {
    gStreamed.append(static_cast<const char*>(bytes), count);
    return 0;
}

class Script {
public:
    Script(const Mode& mode, bool shortcuts) : mode_(mode), shortcuts_(shortcuts) {}

    Written run(const std::vector<std::string>& texts) {
        gCalls.clear();
        gStreamed.clear();
        WriterArgs created{};
        executeWriterCommand(nullptr, LUM_WRITER_CREATE, nullptr, &created);
        writer_ = static_cast<SAXWriter*>(created.arg0);
        options_ = WriterOptions{};
        options_.version = const_cast<char*>("1.0");
        options_.encoding = const_cast<char*>(mode_.encoding);
        options_.strict = mode_.strict;
        options_.formatted = mode_.formatted;
        options_.fragment = mode_.fragment;
        options_.outputKind = mode_.kind;
        options_.streamWrite = streamWrite;
        command(LUM_WRITER_OPEN);
        if (!shortcuts_) {
            writer_->hostBytesDirect = false;
            writer_->memoryDirect = false;
        }
        command(LUM_WRITER_START_ELEMENT, "root");
        for (size_t i = 0; i < texts.size(); ++i) {
            const char* text = texts[i].c_str();
            const char* name = (i % 3 == 0) ? "p:item" : "item";
            command(LUM_WRITER_START_ELEMENT, name, i % 3 == 0 ? "urn:p" : nullptr);
            command(LUM_WRITER_ADD_ATTRIBUTE, "a", text);
            command(LUM_WRITER_DECLARE_NAMESPACE, "urn:q", "q");
            command(LUM_WRITER_ADD_ATTRIBUTE, "q:b", text, "urn:q");
            command(LUM_WRITER_DECLARE_NAMESPACE, "urn:x&y<\"z\xC3\xA9", "x");
            command(LUM_WRITER_CHARACTERS, text);
            switch (i % 7) {
                case 0: command(LUM_WRITER_COMMENT, text); break;
                case 1: command(LUM_WRITER_PROCESSING_INSTRUCTION, "target", text); break;
                case 2: command(LUM_WRITER_RAW_TEXT, text); break;
                case 3: command(LUM_WRITER_DATA_ELEMENT, "data", text); break;
                case 4: command(LUM_WRITER_EMPTY_ELEMENT, "empty",
                                nullptr); command(LUM_WRITER_ADD_ATTRIBUTE, "c", text); break;
                case 5: command(LUM_WRITER_ENTITY_REFERENCE, "amp"); break;
                default:
                    command(LUM_WRITER_CDATA, std::strstr(text, "]]>") ? "plain" : text);
                    break;
            }
            command(LUM_WRITER_END_ELEMENT, name, i % 3 == 0 ? "urn:p" : nullptr);
        }
        command(LUM_WRITER_END_ELEMENT, "root");
        command(LUM_WRITER_END_DOCUMENT);
        Written written;
        written.results = results_;
        if (mode_.kind == LUM_WRITER_TO_STREAM) {
            written.bytes = gStreamed;
        } else if (options_.memoryBuffer != nullptr && options_.memoryLength != nullptr) {
            written.bytes.assign(static_cast<const char*>(options_.memoryBuffer), *options_.memoryLength);
        }
        std::free(options_.memoryBuffer);
        executeWriterCommand(writer_, LUM_WRITER_FREE, &options_, nullptr);
        written.calls = gCalls;
        return written;
    }

private:
    void command(int32_t number, const char* a0 = nullptr, const char* a1 = nullptr,
                 const char* a2 = nullptr) {
        WriterArgs args{const_cast<char*>(a0), const_cast<char*>(a1), const_cast<char*>(a2), nullptr};
        results_.push_back(executeWriterCommand(writer_, number, &options_, &args));
    }

    Mode mode_;
    bool shortcuts_;
    SAXWriter* writer_ = nullptr;
    WriterOptions options_{};
    std::vector<int32_t> results_;
};

class WriterFastPaths : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
        memioInit(nullptr, recordingAlloc, recordingRealloc);
    }
    static void TearDownTestSuite() { memioInit(nullptr, nullptr, nullptr); }

    static void expectSame(const Mode& mode, const std::vector<std::string>& texts) {
        Written fast = Script(mode, true).run(texts);
        Written general = Script(mode, false).run(texts);
        EXPECT_EQ(fast.results, general.results);
        EXPECT_EQ(fast.bytes, general.bytes);
        EXPECT_TRUE(fast.calls == general.calls) << fast.calls.size() << " calls against "
                                                 << general.calls.size();
        EXPECT_FALSE(fast.bytes.empty());
        // The script is well formed: every command succeeds.
        for (size_t i = 0; i < fast.results.size(); ++i)
            ASSERT_EQ(fast.results[i], 0) << "command " << i;
    }
};

const std::vector<std::string> kTricky = {
    "plain text",
    "needs & < > \" ' escapes",
    "line\nfeed\rreturn\ttab",
    "control \x01\x1F\x7F characters",
    "caf\xC3\xA9 \xC2\x85 \xDF\xBF",                          // two-byte characters
    "\xE4\xB8\xAD\xE6\x96\x87 \xE2\x80\xA8 \xEF\xBF\xBE\xEF\xBF\xBF",  // three-byte ones
    "smile \xF0\x9F\x98\x80 & more",                           // a surrogate pair
    "cut \xC3",                                                // ill-formed bytes
    "surrogate \xED\xA0\x80 in UTF-8",
    "overlong \xC0\xAF \xE0\x80\x80",
    "stray \x80\xBF\xFF",
    "cdata ]]> end",
    "xml-ish <?pi?> <!-- c --> &amp;",
};

TEST_F(WriterFastPaths, Utf8MemoryOutputIsTheSameInEveryMode) {
    for (bool strict : {false, true})
        for (bool formatted : {false, true})
            for (bool fragment : {false, true}) {
                SCOPED_TRACE(testing::Message() << "strict " << strict << " formatted " << formatted
                                                << " fragment " << fragment);
                expectSame({strict, formatted, fragment, LUM_WRITER_TO_MEMORY, "UTF-8"}, kTricky);
            }
}

TEST_F(WriterFastPaths, MemoryOutputWithAMarkAndStreamOutputAreTheSame) {
    expectSame({false, true, false, LUM_WRITER_TO_MEMORY_WITH_BOM, "utf-8"}, kTricky);
    expectSame({true, false, false, LUM_WRITER_TO_STREAM, "UTF8"}, kTricky);
}

TEST_F(WriterFastPaths, OtherEncodingsTakeNoShortcutAndStayTheSame) {
    expectSame({false, false, false, LUM_WRITER_TO_MEMORY, "ISO-8859-1"}, kTricky);
    expectSame({true, true, false, LUM_WRITER_TO_MEMORY_WITH_BOM, "UTF-16"}, kTricky);
}

TEST_F(WriterFastPaths, GrowingBlockSeesTheSameGrowthAndBytes) {
    // Many texts of random lengths, a few larger than one growth step, so
    // that the block grows many times, sometimes by a whole large write.
    std::mt19937 random(5);
    const std::vector<std::string> pieces = {"a", "&", "<", "\xC3\xA9", "\xE4\xB8\xAD",
                                             "\xF0\x9F\x98\x80", " ", "\""};
    std::vector<std::string> texts;
    for (int i = 0; i < 3000; ++i) {
        size_t length = (i % 500 == 499) ? 20000 + random() % 30000 : 1 + random() % 60;
        std::string text;
        while (text.size() < length) text += pieces[random() % pieces.size()];
        texts.push_back(text);
    }
    expectSame({false, false, false, LUM_WRITER_TO_MEMORY, "UTF-8"}, texts);
    expectSame({true, true, false, LUM_WRITER_TO_MEMORY, "UTF-8"}, texts);
}

TEST_F(WriterFastPaths, ShortcutsAreChosenOnlyForUtf8) {
    WriterArgs created{};
    executeWriterCommand(nullptr, LUM_WRITER_CREATE, nullptr, &created);
    SAXWriter* writer = static_cast<SAXWriter*>(created.arg0);
    WriterOptions options{};
    options.outputKind = LUM_WRITER_TO_MEMORY;
    options.encoding = const_cast<char*>("UTF-8");
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_OPEN, &options, nullptr), LUM_WRITER_OK);
    EXPECT_TRUE(writer->hostBytesDirect);
    EXPECT_TRUE(writer->memoryDirect);
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_END_DOCUMENT, &options, nullptr),
              LUM_WRITER_OK);
    std::free(options.memoryBuffer);
    options = WriterOptions{};
    options.outputKind = LUM_WRITER_TO_MEMORY;
    options.encoding = const_cast<char*>("ISO-8859-1");
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_OPEN, &options, nullptr), LUM_WRITER_OK);
    EXPECT_FALSE(writer->hostBytesDirect);
    EXPECT_FALSE(writer->memoryDirect);
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_END_DOCUMENT, &options, nullptr),
              LUM_WRITER_OK);
    std::free(options.memoryBuffer);
    executeWriterCommand(writer, LUM_WRITER_FREE, &options, nullptr);
}

// Runs last: it changes the host code page of the process.
TEST_F(WriterFastPaths, ZzOtherHostCodePageWritesItsOwnCharacters) {
    lumtest::startInternals("ISO-8859-1");
    WriterArgs created{};
    executeWriterCommand(nullptr, LUM_WRITER_CREATE, nullptr, &created);
    SAXWriter* writer = static_cast<SAXWriter*>(created.arg0);
    WriterOptions options{};
    options.outputKind = LUM_WRITER_TO_MEMORY;
    options.fragment = 1;
    options.encoding = const_cast<char*>("UTF-8");
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_OPEN, &options, nullptr), LUM_WRITER_OK);
    // Latin-1 bytes are not UTF-8: no host shortcut.
    EXPECT_FALSE(writer->hostBytesDirect);
    EXPECT_TRUE(writer->memoryDirect);
    WriterArgs args{const_cast<char*>("caf\xE9 &"), nullptr, nullptr, nullptr};
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_CHARACTERS, &options, &args), LUM_WRITER_OK);
    ASSERT_EQ(executeWriterCommand(writer, LUM_WRITER_END_DOCUMENT, &options, nullptr),
              LUM_WRITER_OK);
    EXPECT_EQ(std::string(static_cast<const char*>(options.memoryBuffer), *options.memoryLength),
              "caf\xC3\xA9 &amp;");
    std::free(options.memoryBuffer);
    executeWriterCommand(writer, LUM_WRITER_FREE, &options, nullptr);
    lumtest::startInternals("UTF-8");
}

}  // namespace
