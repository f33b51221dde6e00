// The three output targets: byte-order marks, file modes, host streams and
// the growable memory block with the host's memory functions.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "frame/library_state.h"
#include "host_memory.h"
#include "host_test.h"
#include "out/byte_order.h"
#include "out/file_out.h"
#include "out/memio.h"
#include "out/stream_out.h"
#include "text_files.h"
#include "wide_names.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;
using lumtest::HostMemory;
using lumtest::MemoryCall;

namespace {


const std::string kLittleMark("\xFF\xFE", 2);
const std::string kBigMark("\xFE\xFF", 2);

std::string nativeMark() { return XMLPlatformUtils::fgXMLChBigEndian ? kBigMark : kLittleMark; }

void startLibrary() {
    lumtest::startInternals();
}

std::string contentOf(const XMLMemOut& out) {
    return std::string(reinterpret_cast<const char*>(out.buffer()), out.length());
}

void writeBytes(XMLFormatTarget& target, const std::string& bytes) {
    target.writeChars(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), nullptr);
}

// Formats `text` through an XMLFormatter into `target`, as the library's
// writers do.
void formatInto(XMLFormatTarget& target, const char* encoding, const XMLCh* text) {
    XMLFormatter formatter(encoding, &target, XMLFormatter::NoEscapes,
                           XMLFormatter::UnRep_CharRef);
    formatter << text;
}

// ---- The byte-order-mark rule ----------------------------------------------

TEST(ByteOrderMarkRule, NeutralUtf16NamesGetThePlatformOrder) {
    startLibrary();
    ByteOrderMark native = XMLPlatformUtils::fgXMLChBigEndian ? ByteOrderMark::BigEndian
                                                              : ByteOrderMark::LittleEndian;
    for (const char* name : {"utf-16", "UTF-16", "ucs2", "UCS2", "ibm1200", "ibm-1200",
                             "IBM-1200", "iso-10646-ucs-2", "ISO-10646-UCS-2", "csUnicode",
                             "csunicode", "CSUNICODE"}) {
        EXPECT_EQ(byteOrderMarkFor(name), native) << name;
    }
}

TEST(ByteOrderMarkRule, ExplicitOrdersIgnoreCase) {
    EXPECT_EQ(byteOrderMarkFor("utf-16be"), ByteOrderMark::BigEndian);
    EXPECT_EQ(byteOrderMarkFor("UTF-16BE"), ByteOrderMark::BigEndian);
    EXPECT_EQ(byteOrderMarkFor("utf-16le"), ByteOrderMark::LittleEndian);
    EXPECT_EQ(byteOrderMarkFor("Utf-16LE"), ByteOrderMark::LittleEndian);
}

TEST(ByteOrderMarkRule, OtherNamesAndNullGetNoMark) {
    for (const char* name : {"ucs-2", "utf-8", "UTF-8", "ISO-8859-1", "utf16", "utf-16 ", "",
                             "utf-32"}) {
        EXPECT_EQ(byteOrderMarkFor(name), ByteOrderMark::None) << name;
    }
    EXPECT_EQ(byteOrderMarkFor(nullptr), ByteOrderMark::None);
}

TEST(ByteOrderMarkRule, MarkBytes) {
    uint8_t bytes[2] = {0, 0};
    ASSERT_EQ(byteOrderMarkBytes(ByteOrderMark::BigEndian, bytes), 2u);
    EXPECT_EQ(bytes[0], 0xFE);
    EXPECT_EQ(bytes[1], 0xFF);
    ASSERT_EQ(byteOrderMarkBytes(ByteOrderMark::LittleEndian, bytes), 2u);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xFE);
    EXPECT_EQ(byteOrderMarkBytes(ByteOrderMark::None, bytes), 0u);
}

TEST(ByteOrderMarkRule, Utf16NamesOpenFilesInBinaryModeOthersInTextMode) {
    EXPECT_STREQ(fileModeFor("UTF-16"), "wb");
    EXPECT_STREQ(fileModeFor("UTF-16BE"), "wb");
    EXPECT_STREQ(fileModeFor("utf-16le"), "wb");
    EXPECT_STREQ(fileModeFor("csunicode"), "wb");
    EXPECT_STREQ(fileModeFor("utf-8"), "w");
    EXPECT_STREQ(fileModeFor("ucs-2"), "w");
    EXPECT_STREQ(fileModeFor(nullptr), "w");
}

// ---- XMLFileOut ----------------------------------------------------------

TEST(FileOutput, Utf16InCapitalsBeginsWithTheNativeMark) {
    startLibrary();
    lumtest::TempDir dir;
    std::string path = dir.file("a.xml");
    { XMLFileOut out(path.c_str(), "UTF-16"); ASSERT_NE(out.file(), nullptr); }
    EXPECT_EQ(lumtest::readFile(path), nativeMark());
}

TEST(FileOutput, Utf16BigEndianInCapitalsBeginsFeFf) {
    lumtest::TempDir dir;
    std::string path = dir.file("a.xml");
    { XMLFileOut out(path.c_str(), "UTF-16BE"); }
    EXPECT_EQ(lumtest::readFile(path), kBigMark);
}

TEST(FileOutput, Utf16LittleEndianBeginsFfFe) {
    lumtest::TempDir dir;
    std::string path = dir.file("a.xml");
    { XMLFileOut out(path.c_str(), "utf-16le"); }
    EXPECT_EQ(lumtest::readFile(path), kLittleMark);
}

TEST(FileOutput, Utf8AndNullEncodingWriteNoMark) {
    lumtest::TempDir dir;
    std::string utf8 = dir.file("u.xml");
    std::string none = dir.file("n.xml");
    {
        XMLFileOut a(utf8.c_str(), "utf-8");
        XMLFileOut b(none.c_str(), nullptr);
        writeBytes(a, "<a/>");
        writeBytes(b, "<b/>");
    }
    EXPECT_EQ(lumtest::readFile(utf8), "<a/>");
    EXPECT_EQ(lumtest::readFile(none), "<b/>");
}

TEST(FileOutput, CsunicodeLowerAndIbm1200CapitalsGetAMarkButUcs2DoesNot) {
    lumtest::TempDir dir;
    std::string a = dir.file("a"), b = dir.file("b"), c = dir.file("c");
    {
        XMLFileOut one(a.c_str(), "csunicode");
        XMLFileOut two(b.c_str(), "IBM-1200");
        XMLFileOut three(c.c_str(), "ucs-2");
    }
    EXPECT_EQ(lumtest::readFile(a), nativeMark());
    EXPECT_EQ(lumtest::readFile(b), nativeMark());
    EXPECT_EQ(lumtest::readFile(c), "");
}

TEST(FileOutput, WritesAndFlushesBytesAsGiven) {
    lumtest::TempDir dir;
    std::string path = dir.file("a.xml");
    XMLFileOut out(path.c_str(), "UTF-8");
    writeBytes(out, std::string("x\0y\n", 4));
    out.flush();
    // "UTF-8" means text mode: "\r\n" on Windows.
    EXPECT_EQ(lumtest::readFile(path), lumtest::textModeBytes(std::string("x\0y\n", 4)));
}

TEST(FileOutput, UnopenableFileLeavesANullStreamAndWritesNothing) {
    lumtest::TempDir dir;
    std::string path = dir.file("missing-dir/a.xml");
    XMLFileOut out(path.c_str(), "UTF-16");  // no mark through a null stream
    EXPECT_EQ(out.file(), nullptr);
    writeBytes(out, "ignored");
    out.flush();
    EXPECT_EQ(lumtest::readFile(path), "");
}

TEST(FileOutput, NullFileNameLeavesANullStream) {
    XMLFileOut narrow(static_cast<const char*>(nullptr), "UTF-16");
    XMLFileOut wide(static_cast<const lum_wchar_t*>(nullptr), "UTF-16");
    EXPECT_EQ(narrow.file(), nullptr);
    EXPECT_EQ(wide.file(), nullptr);
}

TEST(FileOutput, Utf16FileNameWithNonAsciiLetters) {
    lumtest::TempDir dir;
    std::u16string name = u"\u00e9t\u00e9-\u65e5\u672c.xml";
    std::u16string wide(dir.path().begin(), dir.path().end());
    wide += u"/" + name;
    {
        XMLFileOut out(lumtest::wideUnits(wide), "UTF-16BE");
        ASSERT_NE(out.file(), nullptr);
        writeBytes(out, std::string("\0a", 2));
    }
    EXPECT_EQ(lumtest::readWideNamedFile(wide), kBigMark + std::string("\0a", 2));
}

TEST(FileOutput, UnopenableUtf16FileNameLeavesANullStream) {
    std::u16string wide = u"/nonexistent-lumxml-dir/\u00e9.xml";
    XMLFileOut out(lumtest::wideUnits(wide), "utf-16");
    EXPECT_EQ(out.file(), nullptr);
}

// ---- XMLStreamOut ----------------------------------------------------------

struct StreamCall {
    int64_t handle;
    int32_t one;
    std::string bytes;
    bool scratchGiven;
};

std::vector<StreamCall>& streamCalls() {
    static std::vector<StreamCall> calls;
    return calls;
}

int32_t recordStream(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                     void* scratch) {
    if (scratch != nullptr) std::memset(scratch, 0xAB, 8);  // the host may scribble here
    streamCalls().push_back(
        {handle, one, std::string(static_cast<const char*>(bytes), count), scratch != nullptr});
    return -1;  // ignored by the library
}

std::string streamBytes() {
    std::string all;
    for (const StreamCall& call : streamCalls()) all += call.bytes;
    return all;
}

TEST(StreamOutput, MarkIsOneCallOfTwoBytes) {
    streamCalls().clear();
    XMLStreamOut out(77, recordStream, "UTF-16BE");
    ASSERT_EQ(streamCalls().size(), 1u);
    EXPECT_EQ(streamCalls()[0].handle, 77);
    EXPECT_EQ(streamCalls()[0].one, 1);
    EXPECT_EQ(streamCalls()[0].bytes, kBigMark);
    EXPECT_TRUE(streamCalls()[0].scratchGiven);
}

TEST(StreamOutput, NoMarkForUtf8NullOrUcs2) {
    streamCalls().clear();
    XMLStreamOut a(1, recordStream, "UTF-8");
    XMLStreamOut b(1, recordStream, nullptr);
    XMLStreamOut c(1, recordStream, "ucs-2");
    EXPECT_TRUE(streamCalls().empty());
}

TEST(StreamOutput, EachWriteIsOneCallWithHandleOneAndCount) {
    streamCalls().clear();
    XMLStreamOut out(-5, recordStream, "utf-8");
    writeBytes(out, "abc");
    writeBytes(out, std::string("\0d", 2));
    ASSERT_EQ(streamCalls().size(), 2u);
    EXPECT_EQ(streamCalls()[0].handle, -5);
    EXPECT_EQ(streamCalls()[0].one, 1);
    EXPECT_EQ(streamCalls()[0].bytes, "abc");
    EXPECT_EQ(streamCalls()[1].bytes, std::string("\0d", 2));
}

// ---- XMLMemOut -------------------------------------------------------------

class MemoryOutput : public ::testing::Test {
protected:
    void SetUp() override {
        startLibrary();
        HostMemory::reset();
    }
    void TearDown() override {
        memioInit(nullptr, nullptr, nullptr);
        HostMemory::reset();
    }
    static void useHostMemory() {
        memioInit(HostMemory::reserved, HostMemory::alloc, HostMemory::realloc);
    }
};

// A block from the host's functions, or one handed over, belongs to the
// host once the target is gone.
struct HostBlock {
    void* block = nullptr;
    ~HostBlock() { std::free(block); }
};

TEST_F(MemoryOutput, StartsWithA16384ByteBlockAndNoContent) {
    XMLMemOut out("UTF-8", true);
    EXPECT_NE(out.buffer(), nullptr);
    EXPECT_EQ(out.capacity(), 16384u);
    EXPECT_EQ(out.length(), 0u);
}

TEST_F(MemoryOutput, Utf16WithMarkOnStoresTheNativeMark) {
    XMLMemOut out("utf-16", true);
    EXPECT_EQ(contentOf(out), nativeMark());
}

TEST_F(MemoryOutput, Utf16WithMarkOffStaysEmpty) {
    XMLMemOut out("utf-16", false);
    EXPECT_EQ(out.length(), 0u);
}

TEST_F(MemoryOutput, NullEncodingWithMarkOnStaysEmpty) {
    XMLMemOut out(nullptr, true);
    EXPECT_EQ(out.length(), 0u);
}

TEST_F(MemoryOutput, MarksForEveryUtf16NameAndNoneForUcs2AndUtf8) {
    const std::pair<const char*, std::string> cases[] = {
        {"utf-16", nativeMark()},  {"UTF-16BE", kBigMark},  {"utf-16le", kLittleMark},
        {"csunicode", nativeMark()}, {"IBM-1200", nativeMark()}, {"ucs2", nativeMark()},
        {"ibm1200", nativeMark()}, {"ISO-10646-UCS-2", nativeMark()},
        {"ucs-2", ""},             {"utf-8", ""}};
    for (const auto& [name, mark] : cases) {
        XMLMemOut out(name, true);
        EXPECT_EQ(contentOf(out), mark) << name;
    }
}

TEST_F(MemoryOutput, Writing16383BytesIntoAFreshBlockGrowsItTo32768) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    HostBlock owner;
    writeBytes(out, std::string(16383, 'a'));
    owner.block = out.buffer();
    EXPECT_EQ(out.capacity(), 32768u);
    EXPECT_EQ(out.length(), 16383u);
    ASSERT_EQ(HostMemory::calls().size(), 2u);
    EXPECT_EQ(HostMemory::calls()[1].kind, MemoryCall::Realloc);
    EXPECT_EQ(HostMemory::calls()[1].size, 32768u);
    EXPECT_EQ(HostMemory::calls()[1].line, LUM_MEMIO_LINE_GROW);
}

TEST_F(MemoryOutput, Writing16382BytesDoesNotGrow) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    HostBlock owner{out.buffer()};
    writeBytes(out, std::string(16382, 'a'));
    EXPECT_EQ(out.capacity(), 16384u);
    EXPECT_EQ(out.length(), 16382u);
    EXPECT_EQ(HostMemory::calls().size(), 1u);  // only the first block
}

TEST_F(MemoryOutput, HostFunctionsSeeSizeSourceFileAndLine) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    writeBytes(out, std::string(10000, 'a'));
    writeBytes(out, std::string(10000, 'a'));
    void* block = nullptr;
    uint32_t length = 0;
    out.release(&block, &length);
    HostBlock owner{block};
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[0].size, 16384u);
    EXPECT_EQ(calls[0].line, LUM_MEMIO_LINE_NEW_BLOCK);
    EXPECT_EQ(calls[1].kind, MemoryCall::Realloc);
    EXPECT_EQ(calls[1].size, 32768u);
    EXPECT_EQ(calls[1].line, LUM_MEMIO_LINE_GROW);
    EXPECT_EQ(calls[2].kind, MemoryCall::Realloc);
    EXPECT_EQ(calls[2].size, 20001u);
    EXPECT_EQ(calls[2].line, LUM_MEMIO_LINE_TRIM);
    for (const MemoryCall& call : calls) EXPECT_EQ(call.sourceFile, memioSourceFile());
    EXPECT_EQ(length, 20000u);
    EXPECT_EQ(std::string(static_cast<char*>(block), length), std::string(20000, 'a'));
}

TEST_F(MemoryOutput, GrowthScheduleByCapacityBand) {
    // Below 8 MiB the block doubles; then a half, a quarter, an eighth,
    // a sixteenth of the capacity.
    EXPECT_EQ(XMLMemOut::growthIncrement(16384, 1), 16384u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x7FFFFF, 1), 0x7FFFFFu);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x800000, 1), 0x400000u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x1FFFFFF, 1), 0x1FFFFFFu >> 1);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x2000000, 1), 0x800000u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x7FFFFFF, 1), 0x7FFFFFFu >> 2);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x8000000, 1), 0x1000000u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0xFFFFFFF, 1), 0xFFFFFFFu >> 3);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x10000000, 1), 0x1000000u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x40000000, 1), 0x4000000u);
}

TEST_F(MemoryOutput, AWriteAsLargeAsTheIncrementAddsItsCount) {
    EXPECT_EQ(XMLMemOut::growthIncrement(16384, 16383), 16384u);
    EXPECT_EQ(XMLMemOut::growthIncrement(16384, 16384), 32768u);
    EXPECT_EQ(XMLMemOut::growthIncrement(16384, 100000), 116384u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x800000, 0x3FFFFF), 0x400000u);
    EXPECT_EQ(XMLMemOut::growthIncrement(0x800000, 0x400000), 0x800000u);
}

TEST_F(MemoryOutput, AWriteLargerThanTheIncrementGrowsByIncrementPlusCount) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    writeBytes(out, std::string(100000, 'b'));
    HostBlock owner{out.buffer()};
    EXPECT_EQ(out.capacity(), 16384u + 16384u + 100000u);
    EXPECT_EQ(HostMemory::calls().back().size, 132768u);
    EXPECT_EQ(contentOf(out), std::string(100000, 'b'));
}

TEST_F(MemoryOutput, EightMebibyteBlockGrowsByFourMebibytes) {
    useHostMemory();
    XMLMemOut out(nullptr, false);
    // Doubling from 16384 reaches exactly 8 MiB; filling it to the brim
    // (one spare byte) then needs the next band.
    std::string chunk(8192, 'c');
    while (out.capacity() < 0x800000u) writeBytes(out, chunk);
    ASSERT_EQ(out.capacity(), 0x800000u);
    while (out.length() + chunk.size() + 1 < 0x800000u) writeBytes(out, chunk);
    HostMemory::reset();
    writeBytes(out, chunk);
    HostBlock owner{out.buffer()};
    EXPECT_EQ(out.capacity(), 0xC00000u);
    ASSERT_EQ(HostMemory::calls().size(), 1u);
    EXPECT_EQ(HostMemory::calls()[0].size, 0xC00000u);
    EXPECT_EQ(HostMemory::calls()[0].line, LUM_MEMIO_LINE_GROW);
}

TEST_F(MemoryOutput, WithoutHostFunctionsTheRuntimeAllocatorIsUsed) {
    XMLMemOut out("UTF-8", true);
    for (int i = 0; i < 4; ++i) writeBytes(out, std::string(10000, 'd'));
    EXPECT_TRUE(HostMemory::calls().empty());
    EXPECT_EQ(out.capacity(), 65536u);
    EXPECT_EQ(contentOf(out), std::string(40000, 'd'));
}

TEST_F(MemoryOutput, AttachedHostVariableFollowsEveryReallocation) {
    useHostMemory();
    XMLMemOut out("UTF-16LE", true);
    void* hostBuffer = nullptr;
    uint32_t* hostLength = nullptr;
    out.attachHost(&hostBuffer, &hostLength);
    EXPECT_EQ(hostBuffer, out.buffer());
    ASSERT_NE(hostLength, nullptr);
    EXPECT_EQ(*hostLength, 2u);
    for (int i = 0; i < 6; ++i) {
        writeBytes(out, std::string(10000, 'e'));
        EXPECT_EQ(hostBuffer, out.buffer());
        EXPECT_EQ(*hostLength, 2u + 10000u * static_cast<uint32_t>(i + 1));
    }
    EXPECT_EQ(std::string(static_cast<char*>(hostBuffer), *hostLength),
              kLittleMark + std::string(60000, 'e'));
    HostBlock owner{hostBuffer};
}

TEST_F(MemoryOutput, FailedGrowthInstallsAFreshBlockAndThrows80) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    void* hostBuffer = nullptr;
    uint32_t* hostLength = nullptr;
    out.attachHost(&hostBuffer, &hostLength);
    writeBytes(out, "kept until the failure");
    HostMemory::failNextReallocs(1);
    int thrown = 0;
    try {
        writeBytes(out, std::string(20000, 'f'));
    } catch (int value) {
        thrown = value;
    }
    HostBlock owner{hostBuffer};
    EXPECT_EQ(thrown, 80);
    EXPECT_NE(hostBuffer, nullptr);
    EXPECT_EQ(hostBuffer, out.buffer());
    EXPECT_EQ(out.capacity(), 16384u);
    EXPECT_EQ(out.length(), 0u);
    EXPECT_EQ(*hostLength, 0u);
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[1].kind, MemoryCall::Realloc);
    EXPECT_EQ(calls[1].line, LUM_MEMIO_LINE_GROW);
    EXPECT_EQ(calls[2].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[2].size, 16384u);
    EXPECT_EQ(calls[2].line, LUM_MEMIO_LINE_REPLACEMENT);
    // The fresh block takes later writes.
    writeBytes(out, "again");
    EXPECT_EQ(contentOf(out), "again");
}

TEST_F(MemoryOutput, ReleaseTrimsToLengthPlusOneAndWritesNoTerminator) {
    useHostMemory();
    XMLMemOut out("UTF-8", true);
    writeBytes(out, "abc");
    out.buffer()[3] = 'Z';  // the spare byte is left as it is
    void* block = nullptr;
    uint32_t length = 99;
    out.release(&block, &length);
    HostBlock owner{block};
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(HostMemory::calls().back().size, 4u);
    EXPECT_EQ(HostMemory::calls().back().line, LUM_MEMIO_LINE_TRIM);
    EXPECT_EQ(std::string(static_cast<char*>(block), 4), "abcZ");
}

TEST_F(MemoryOutput, ABlockNeverHandedOverIsFreedWithTheTarget) {
    // Runs leak-free under the address sanitizer: nobody else holds it.
    auto out = std::make_unique<XMLMemOut>("UTF-8", true);
    writeBytes(*out, std::string(50000, 'g'));
    EXPECT_EQ(out->length(), 50000u);
    out.reset();
}

TEST_F(MemoryOutput, DiscardFreesARuntimeBlockAndNullsTheHostVariable) {
    XMLMemOut out("UTF-8", true);
    void* hostBuffer = nullptr;
    uint32_t* hostLength = nullptr;
    out.attachHost(&hostBuffer, &hostLength);
    writeBytes(out, "abc");
    out.discard();
    EXPECT_EQ(hostBuffer, nullptr);
    EXPECT_EQ(out.buffer(), nullptr);
    EXPECT_EQ(*hostLength, 0u);
}

TEST_F(MemoryOutput, DiscardLeavesAHostBlockToTheHostAllocator) {
    useHostMemory();
    void* block = nullptr;
    {
        XMLMemOut out("UTF-8", true);
        block = out.buffer();
        out.discard();
        EXPECT_EQ(out.buffer(), nullptr);
    }
    std::free(block);  // the host's allocator still owns it
}

TEST_F(MemoryOutput, RegisteringAgainReplacesTheFunctions) {
    useHostMemory();
    XMLMemOut first("UTF-8", true);
    HostBlock a{first.buffer()};
    memioInit(nullptr, nullptr, nullptr);
    XMLMemOut second("UTF-8", true);
    EXPECT_EQ(HostMemory::calls().size(), 1u);
}

// ---- Through the formatter -------------------------------------------------

TEST_F(MemoryOutput, Utf16ThroughTheFormatterToMemoryStreamAndFileIsTheSame) {
    lumtest::TempDir dir;
    const XMLCh* text = u"<r>\u00e9</r>";
    for (const char* encoding : {"UTF-16", "UTF-16BE", "utf-16le", "UTF-8"}) {
        XMLMemOut memory(encoding, true);
        formatInto(memory, encoding, text);

        streamCalls().clear();
        {
            XMLStreamOut stream(3, recordStream, encoding);
            formatInto(stream, encoding, text);
        }
        std::string path = dir.file(std::string(encoding) + ".xml");
        {
            XMLFileOut file(path.c_str(), encoding);
            formatInto(file, encoding, text);
        }
        EXPECT_EQ(streamBytes(), contentOf(memory)) << encoding;
        EXPECT_EQ(lumtest::readFile(path), contentOf(memory)) << encoding;
    }
}

TEST_F(MemoryOutput, Utf16BigEndianGoldenBytes) {
    XMLMemOut memory("UTF-16BE", true);
    formatInto(memory, "UTF-16BE", u"<a/>");
    EXPECT_EQ(contentOf(memory), std::string("\xFE\xFF\0<\0a\0/\0>", 10));
}

}  // namespace
