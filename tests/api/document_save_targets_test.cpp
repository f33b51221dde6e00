// Saving documents as a host does: lumDocSave / lumDocSaveW to a file, host
// memory and a host stream, the byte-order marks of each, and every failure's
// message and code.
// No test here asks for character or attribute escapes: those flags are
// sticky for the process (see document_save_sticky_test.cpp and
// document_save_escapes_test.cpp).
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <xercesc/dom/DOMNamedNodeMap.hpp>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"
#include "save_fixtures.h"
#include "host_memory.h"
#include "text_files.h"
#include "wide_names.h"

using namespace lumtest;

namespace {

constexpr int32_t kElement = 1;
constexpr int32_t kAttribute = 2;

// ---- Target kinds -------------------------------------------------------------------

TEST_F(DocumentSave, OtherTargetKindsAreNotSupported) {
    HostDocument document;
    load(document, "<r/>");
    for (int32_t target : {3, 4, 5, 7, -1, 100}) {
        SaveArgs args;
        args.target = target;
        SaveAnswer answer = save(document.cell, args);
        EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED) << target;
        EXPECT_EQ(answer.message, "Operation not supported") << target;
        EXPECT_FALSE(answer.handedOver) << target;
    }
}

TEST_F(DocumentSave, KindSixOnAnElementWritesItsSubtreeWithoutDeclaration) {
    HostDocument document;
    load(document, "<r><a x='1'><b>t</b></a><c/></r>");
    XERCES_CPP_NAMESPACE::DOMNode* a = documentElement(document.cell)->getFirstChild();
    SaveArgs args;
    args.target = LUM_SAVE_NODE_TO_MEMORY;
    SaveAnswer answer = save(a, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.bytes, "<a x=\"1\"><b>t</b></a>");
}

TEST_F(DocumentSave, KindSixOnTheDocumentNodeWritesTheDeclaration) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = LUM_SAVE_NODE_TO_MEMORY;
    SaveAnswer answer = save(documentNode(document.cell), args);
    EXPECT_EQ(answer.bytes, std::string(kDecl) + "<r/>");
}

TEST_F(DocumentSave, KindSixOnAPrefixedElementDeclaresWhatTheSubtreeLacks) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'><p:a><p:b/></p:a></p:r>");
    SaveArgs args;
    args.target = LUM_SAVE_NODE_TO_MEMORY;
    SaveAnswer answer = save(documentElement(document.cell)->getFirstChild(), args);
    // The declaration on the parent above the start node is in scope.
    EXPECT_EQ(answer.bytes, "<p:a><p:b/></p:a>");
}

TEST_F(DocumentSave, FileGetsTheSameBytesAsMemory) {
    HostDocument document;
    load(document, "<r a='1'>x</r>");
    TempDir dir;
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    const std::string path = dir.file("out.xml");
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_FALSE(answer.handedOver);
    // A UTF-8 file is written in text mode: "\r\n" on Windows.
    EXPECT_EQ(readFile(path), lumtest::textModeBytes(std::string(kDecl) + "<r a=\"1\">x</r>"));
    EXPECT_EQ(readFile(path), lumtest::textModeBytes(saveToMemory(document.cell)));
}

TEST_F(DocumentSave, FileIsTruncatedBeforeWriting) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.write("out.xml", std::string(1000, 'z'));
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).code, LUM_OK);
    EXPECT_EQ(readFile(path), lumtest::textModeBytes(std::string(kDecl) + "<r/>"));
}

TEST_F(DocumentSave, WideFileNameWithNonAsciiCharacters) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    std::u16string wide;
    for (char c : dir.path()) wide += static_cast<char16_t>(static_cast<unsigned char>(c));
    wide += u"/d\u00e9j\u00e0-\u4e2d\u6587.xml";
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.wideFileName = lumtest::wideUnits(wide);
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(lumtest::readWideNamedFile(wide), lumtest::textModeBytes(std::string(kDecl) + "<r/>"));
}

TEST_F(DocumentSave, FileThatCannotBeOpenedIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.file("missing/dir/out.xml");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, WideFileThatCannotBeOpenedIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.wideFileName = lumtest::wideUnits(u"/nonexistent-dir/\u00e9/out.xml");
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, NullFileNameIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, FileNameIsIgnoredForOtherKinds) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.file("never.xml");
    SaveArgs args;
    args.target = LUM_SAVE_TO_MEMORY;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).bytes, std::string(kDecl) + "<r/>");
    args.target = 3;
    EXPECT_EQ(save(document.cell, args).code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(readFile(path), "");
    EXPECT_EQ(std::fopen(path.c_str(), "r"), nullptr);
}

TEST_F(DocumentSave, UnknownEncodingIsAnXmlExceptionAfterTheFileWasCreated) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.write("out.xml", "old content");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.encoding = "no-such-encoding";
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_EQ(answer.message,
              "XML Parser Exception: unable to create converter for 'no-such-encoding' encoding");
    EXPECT_EQ(readFile(path), "");
}

TEST_F(DocumentSave, UnknownEncodingToMemoryHandsNothingOver) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.encoding = "no-such-encoding";
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_FALSE(answer.handedOver);
}

TEST_F(DocumentSave, StreamCollectsTheSameBytesAsMemory) {
    HostDocument document;
    load(document, "<r a='1'><b>x&amp;y</b><!--c--></r>");
    StreamCollector stream;
    SaveArgs args;
    args.target = LUM_SAVE_TO_STREAM;
    args.streamHandle = stream.handle();
    args.streamWrite = &StreamCollector::write;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_FALSE(answer.handedOver);
    EXPECT_EQ(stream.bytes, std::string(kDecl) + "<r a=\"1\"><b>x&amp;y</b><!--c--></r>");
    EXPECT_EQ(stream.bytes, saveToMemory(document.cell));
}

TEST_F(DocumentSave, StreamWithoutWriteFunctionIsNotSupported) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = LUM_SAVE_TO_STREAM;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Operation not supported");
}

// ---- Encodings and byte-order marks ------------------------------------------------

TEST_F(DocumentSave, Utf16LittleEndianToMemoryStartsWithItsMark) {
    HostDocument document;
    load(document, "<r/>");
    EXPECT_EQ(saveToMemory(document.cell, "utf-16le"),
              "\xff\xfe" + utf16le("<?xml version=\"1.0\" encoding=\"utf-16le\" ?>\n<r/>"));
}

TEST_F(DocumentSave, Utf16BigEndianToMemoryStartsWithItsMark) {
    HostDocument document;
    load(document, "<r/>");
    EXPECT_EQ(saveToMemory(document.cell, "UTF-16BE"),
              "\xfe\xff" + utf16be("<?xml version=\"1.0\" encoding=\"UTF-16BE\" ?>\n<r/>"));
}

TEST_F(DocumentSave, Utf16WithoutMarkWhenTheHostAsksForNone) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.encoding = "UTF-16";
    args.noByteOrderMark = 1;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.bytes, utf16le("<?xml version=\"1.0\" encoding=\"UTF-16\" ?>\n<r/>"));
}

TEST_F(DocumentSave, GenericUtf16NamesGetTheMarkOfTheMachineOrder) {
    HostDocument document;
    load(document, "<r/>");
    for (const char* name : {"utf-16", "UTF-16", "csunicode", "IBM-1200"}) {
        const std::string bytes = saveToMemory(document.cell, name);
        ASSERT_GE(bytes.size(), 4u) << name;
        EXPECT_EQ(bytes.substr(0, 4), std::string("\xff\xfe<\0", 4)) << name;
    }
}

TEST_F(DocumentSave, Ucs2AndUtf8GetNoMark) {
    HostDocument document;
    load(document, "<r/>");
    EXPECT_EQ(saveToMemory(document.cell, "ucs-2").substr(0, 2), std::string("<\0", 2));
    EXPECT_EQ(saveToMemory(document.cell, "utf-8"),
              "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<r/>");
}

TEST_F(DocumentSave, Utf16ToStreamAndFileHaveTheMarkEvenWhenMemoryWouldNot) {
    HostDocument document;
    load(document, "<r/>");
    const std::string expected =
        "\xff\xfe" + utf16le("<?xml version=\"1.0\" encoding=\"UTF-16\" ?>\n<r/>");
    StreamCollector stream;
    SaveArgs args;
    args.target = LUM_SAVE_TO_STREAM;
    args.encoding = "UTF-16";
    args.noByteOrderMark = 1;  // only memory targets look at it
    args.streamHandle = stream.handle();
    args.streamWrite = &StreamCollector::write;
    EXPECT_EQ(save(document.cell, args).code, LUM_OK);
    EXPECT_EQ(stream.bytes, expected);

    TempDir dir;
    const std::string path = dir.file("out16.xml");
    args.target = LUM_SAVE_TO_FILE;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).code, LUM_OK);
    EXPECT_EQ(readFile(path), expected);
}

// ---- Host memory ------------------------------------------------------------------------

class DocumentSaveHostMemory : public DocumentSave {
protected:
    void SetUp() override {
        DocumentSave::SetUp();
        HostMemory::reset();
        lumMemioInit(HostMemory::reserved, HostMemory::alloc, HostMemory::realloc);
    }
    void TearDown() override {
        lumMemioInit(nullptr, nullptr, nullptr);
        HostMemory::reset();
    }
};

TEST_F(DocumentSaveHostMemory, BlockComesFromTheHostAndIsTrimmedToLengthPlusOne) {
    HostDocument document;
    load(document, "<r/>");
    HostMemory::reset();
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.bytes, std::string(kDecl) + "<r/>");
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[0].size, 16384u);
    EXPECT_EQ(calls[0].line, LUM_MEMIO_LINE_NEW_BLOCK);
    EXPECT_EQ(calls[1].kind, MemoryCall::Realloc);
    EXPECT_EQ(calls[1].size, answer.length + 1);
    EXPECT_EQ(calls[1].line, LUM_MEMIO_LINE_TRIM);
}

TEST_F(DocumentSaveHostMemory, LargeDocumentGrowsTheHostBlock) {
    HostDocument document;
    std::string xml = "<r>";
    for (int i = 0; i < 3000; ++i) xml += "<item n='" + std::to_string(i) + "'>text</item>";
    xml += "</r>";
    load(document, xml);
    HostMemory::reset();
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    std::string expected = std::string(kDecl) + "<r>";
    for (int i = 0; i < 3000; ++i)
        expected += "<item n=\"" + std::to_string(i) + "\">text</item>";
    expected += "</r>";
    EXPECT_EQ(answer.bytes, expected);
    int growths = 0;
    for (const MemoryCall& call : HostMemory::calls()) growths += call.line == LUM_MEMIO_LINE_GROW;
    EXPECT_GE(growths, 2);
}

TEST_F(DocumentSaveHostMemory, FailedGrowthGivesCode80AndHandsNothingOver) {
    HostDocument document;
    load(document, "<r>" + std::string(20000, 'x') + "</r>");
    HostMemory::reset();
    HostMemory::failNextReallocs(1);
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, LUM_ERR_MEMORY_GROWTH);
    EXPECT_EQ(answer.message, "");
    EXPECT_FALSE(answer.handedOver);
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[1].line, LUM_MEMIO_LINE_GROW);
    EXPECT_EQ(calls[2].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[2].size, 16384u);
    EXPECT_EQ(calls[2].line, LUM_MEMIO_LINE_REPLACEMENT);
    // The host's allocator still holds the old and the fresh block.
    HostMemory::freeKeptBlocks();
    HostMemory::freeLiveBlocks();
    // The document is unchanged and saves again.
    EXPECT_EQ(saveToMemory(document.cell).size(), std::string(kDecl).size() + 20007);
}

// ---- what the stream and memory targets hand over --------------------------

struct StreamCall {
    int64_t handle;
    int32_t one;
    std::string bytes;
    bool scratch;
};
std::vector<StreamCall> gStreamCalls;

int32_t recordStreamCall(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                         void* scratch8) {
    gStreamCalls.push_back(
        {handle, one, std::string(static_cast<const char*>(bytes), count), scratch8 != nullptr});
    return -7;  // ignored by the library
}

TEST_F(DocumentSave, StreamGetsTheHandleTheConstantOneAndAScratchCell) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    gStreamCalls.clear();
    // Called directly, as a host does, with cells that must stay untouched.
    void* block = reinterpret_cast<void*>(uintptr_t{0x77});
    uint32_t length = 0x77;
    ErrorSlot error;
    lumDocSave(&document.cell, LUM_SAVE_TO_STREAM, 0, 0, 0, nullptr, "ignored.xml", &block, &length,
               INT64_C(0x123456789ab), recordStreamCall, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK) << error.text();
    EXPECT_EQ(block, reinterpret_cast<void*>(uintptr_t{0x77}));
    EXPECT_EQ(length, 0x77u);
    std::string all;
    for (const StreamCall& call : gStreamCalls) {
        EXPECT_EQ(call.handle, INT64_C(0x123456789ab));
        EXPECT_EQ(call.one, 1);
        EXPECT_TRUE(call.scratch);
        all += call.bytes;
    }
    EXPECT_EQ(all, kDecl + "<r/>");
}

TEST_F(DocumentSave, Utf16StreamMarkIsOneCallOfTwoBytes) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    gStreamCalls.clear();
    SaveArgs args;
    args.target = LUM_SAVE_TO_STREAM;
    args.encoding = "UTF-16BE";
    args.streamHandle = 5;
    args.streamWrite = recordStreamCall;
    ASSERT_EQ(save(document.cell, args).code, LUM_OK);
    ASSERT_GE(gStreamCalls.size(), 2u);
    EXPECT_EQ(gStreamCalls[0].bytes, std::string("\xFE\xFF", 2));
    std::string rest;
    for (size_t i = 1; i < gStreamCalls.size(); ++i) rest += gStreamCalls[i].bytes;
    std::string expected;
    for (char c : "<?xml version=\"1.0\" encoding=\"UTF-16BE\" ?>\n<r/>") {
        if (c == 0) break;
        expected += '\0';
        expected += c;
    }
    EXPECT_EQ(rest, expected);
}

// The memory block is trimmed to the length plus one spare byte.
TEST_F(DocumentSave, MemoryLengthCountsTheBytesWithoutTerminator) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    SaveArgs args;
    args.encoding = "UTF-8";
    SaveAnswer answer = save(document.cell, args);
    ASSERT_EQ(answer.code, LUM_OK);
    const std::string expected = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<r/>";
    EXPECT_EQ(answer.length, expected.size());
    EXPECT_EQ(answer.bytes, expected);
}

TEST_F(DocumentSave, Utf16LeNameInMixedCaseGetsTheMark) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    SaveArgs args;
    args.encoding = "Utf-16Le";
    SaveAnswer answer = save(document.cell, args);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    ASSERT_GE(answer.bytes.size(), 4u);
    EXPECT_EQ(answer.bytes.substr(0, 4), std::string("\xFF\xFE<\0", 4));
}

// What was written before a failure stays with the target: a stream has
// already been handed it, a file keeps it.
TEST_F(DocumentSave, OutputBeforeANamespaceErrorStaysInStreamAndFile) {
    ASSERT_EQ(document.loadMemory("<r><p:c xmlns:p='urn:one'/></r>").code, LUM_OK);
    void* c = childOf(documentElementOf(document.cell), 0);
    void* attr = nullptr;
    ASSERT_EQ(nodeCall(c, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("xmlns:p")}, &attr).code,
              LUM_OK);
    ASSERT_EQ(nodeCall(attr, LUM_NODE_SET_VALUE, {const_cast<char*>("urn:two")}, nullptr).code,
              LUM_OK);
    const std::string written = kDecl + "<r><p:c";

    gStreamCalls.clear();
    SaveArgs stream;
    stream.target = LUM_SAVE_TO_STREAM;
    stream.streamWrite = recordStreamCall;
    SaveAnswer answer = save(document.cell, stream);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    std::string all;
    for (const StreamCall& call : gStreamCalls) all += call.bytes;
    EXPECT_EQ(all, written);

    TempDir dir;
    const std::string path = dir.file("partial.xml");
    SaveArgs file;
    file.target = LUM_SAVE_TO_FILE;
    file.fileName = path.c_str();
    answer = save(document.cell, file);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    // A file without a byte-order mark is written in text mode ("\r\n" on Windows).
    EXPECT_EQ(readFile(path), lumtest::textModeBytes(written));
}

// The Xerces text goes through the budget rule, which formats it: "%%"
// arrives as "%", and a conversion with no argument is copied as it is.
TEST_F(DocumentSave, XmlExceptionTextIsFormattedByTheBudgetRule) {
    appendToDocument(createNode(document.cell, "r", kElement));
    SaveArgs args;
    args.encoding = "x%%y%s";
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    EXPECT_FALSE(answer.handedOver);
    EXPECT_EQ(answer.message,
              "XML Parser Exception: unable to create converter for 'x%y%s' encoding");
}

// The prefix starts the buffer afresh: what the host left there is gone,
// unlike the DOM errors, which are appended behind it.
TEST_F(DocumentSave, XmlExceptionTextReplacesWhatTheBufferHeld) {
    appendToDocument(createNode(document.cell, "r", kElement));
    const std::string name(40, 'e');
    SaveArgs args;
    args.encoding = name.c_str();
    args.bufferBefore = std::string(250, 'p');
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_SAVE);
    const std::string whole = "XML Parser Exception: unable to create converter for '" + name +
                              "' encoding";
    ASSERT_LE(whole.size(), 256u);
    EXPECT_EQ(answer.message, whole);
}

}  // namespace
