// A host's view of the library frame and of documents: the error
// convention, the DOM error texts a host matches on, the load reporter's
// lines and budget, input sources, node type names. Everything goes through
// the exports with host-owned buffers, records and cells.
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <xercesc/sax/InputSource.hpp>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class ConformanceDocuments : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }
    TempDir dir;
};

// True when `text` is well-formed UTF-8 (no character cut in half).
bool isWholeUtf8(const std::string& text) {
    size_t i = 0;
    while (i < text.size()) {
        unsigned char lead = static_cast<unsigned char>(text[i]);
        size_t length = lead < 0x80 ? 1 : (lead >> 5) == 6 ? 2 : (lead >> 4) == 14 ? 3
                                        : (lead >> 3) == 30 ? 4 : 0;
        if (length == 0 || i + length > text.size()) return false;
        for (size_t k = 1; k < length; ++k)
            if ((static_cast<unsigned char>(text[i + k]) >> 6) != 2) return false;
        i += length;
    }
    return true;
}

// The system id of a source that lumCreateInputSource made, which the host
// then deletes as its owner. The test does not link Xerces: the type check
// of the undefined-behaviour sanitizer would need Xerces' type information.
__attribute__((no_sanitize("vptr"))) std::string systemIdOfAndDelete(void* made) {
    auto* source = static_cast<XERCES_CPP_NAMESPACE::InputSource*>(made);
    std::string id = utf8(source->getSystemId());
    delete source;
    return id;
}

std::string repeated(const std::string& piece, size_t times) {
    std::string out;
    for (size_t i = 0; i < times; ++i) out += piece;
    return out;
}

// ---- Error convention ---------------------------------------------------------

TEST_F(ConformanceDocuments, SuccessfulLoadLeavesEveryBufferByteAndThePresetCodeAlone) {
    HostDocument document;
    char buffer[257];
    std::memset(buffer, 0x5A, sizeof buffer);
    int32_t code = 77;
    char encoding[257] = {0};
    const std::string bytes = "<a/>";
    lumDocLoad(&document.cell, 0, 1, encoding, nullptr, bytes.data(),
               static_cast<uint32_t>(bytes.size()), nullptr, nullptr, 0, nullptr, buffer, &code);
    EXPECT_EQ(code, 77);
    for (size_t i = 0; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x5A) << "byte " << i;
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
}

TEST_F(ConformanceDocuments, FailureOverwritesAPresetCodeAndEndsTheTextWithItsNul) {
    HostDocument document;
    char buffer[257];
    std::memset(buffer, 'Z', sizeof buffer);
    int32_t code = 77;
    char encoding[257] = {0};
    lumDocLoad(&document.cell, 0, 5, encoding, nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr,
               buffer, &code);
    EXPECT_EQ(code, -1);
    EXPECT_STREQ(buffer, "Not supported");
}

TEST_F(ConformanceDocuments, InitDocumentAndDeleteNeverTouchABufferOnSuccess) {
    char buffer[257];
    std::memset(buffer, 0x33, sizeof buffer);
    int32_t code = -9;
    void* cell = nullptr;
    lumInitDocument(&cell, 5, buffer, &code);
    ASSERT_NE(cell, nullptr);
    lumDocDelete(cell, buffer, &code);
    EXPECT_EQ(code, -9);
    for (size_t i = 0; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x33) << "byte " << i;
}

// ---- DOM error texts through the dispatchers --------------------------------

TEST_F(ConformanceDocuments, NamespaceErrorReachesTheHostAsNotInitializedWithCode6) {
    HostDocument document;
    int32_t type = 1;
    void* node = nullptr;
    // A prefix without a namespace URI is a DOM namespace error.
    Answer answer = docCall(document.cell, 30,
                            {nullptr, const_cast<char*>("p:x"), &type}, &node);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

TEST_F(ConformanceDocuments, EmptyElementNameIsAnInvalidCharacterWithCode6) {
    HostDocument document;
    int32_t type = 1;
    void* node = nullptr;
    Answer answer = docCall(document.cell, 1, {const_cast<char*>(""), &type}, &node);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(ConformanceDocuments, NodeOfAnotherDocumentKeepsTheMisspelledWrongDocumentText) {
    HostDocument first;
    HostDocument second;
    first.loadMemory("<a/>");
    second.loadMemory("<b/>");
    void* stranger = documentElementOf(second.cell);
    Answer answer = nodeCall(documentElementOf(first.cell), 2, {stranger, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "A node was used in a different document than the one the created it");
}

TEST_F(ConformanceDocuments, RemovingANodeThatIsNotAChildIsNotFound) {
    HostDocument document;
    document.loadMemory("<a><b/></a><!---->");
    void* root = documentElementOf(document.cell);
    void* b = childOf(root, 0);
    Answer answer = nodeCall(b, 10, {root}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

TEST_F(ConformanceDocuments, InsertingIntoATextNodeIsAHierarchyError) {
    HostDocument document;
    document.loadMemory("<a>text<b/></a>");
    void* root = documentElementOf(document.cell);
    Answer answer = nodeCall(childOf(root, 0), 2, {childOf(root, 1), nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(ConformanceDocuments, SettingTheValueOfAnElementIsANoModificationError) {
    HostDocument document;
    document.loadMemory("<a/>");
    Answer answer =
        nodeCall(documentElementOf(document.cell), 20, {const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to modify an object where modifications are not allowed");
}

TEST_F(ConformanceDocuments, AttributeOwnedByAnotherElementAlreadyExists) {
    HostDocument document;
    document.loadMemory("<a><b/><c/></a>");
    void* root = documentElementOf(document.cell);
    void* attribute = createNode(document.cell, "x", 2);
    ASSERT_NE(attribute, nullptr);
    ASSERT_EQ(nodeCall(childOf(root, 0), 34, {attribute}, nullptr).code, 0);
    Answer answer = nodeCall(childOf(root, 1), 34, {attribute}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "Attribute already exists");
}

// Import is one of the document methods whose DOM errors are not translated.
TEST_F(ConformanceDocuments, ImportingADocumentIsAnUnexpectedExceptionNotADomErrorText) {
    HostDocument source;
    HostDocument target;
    source.loadMemory("<a/>");
    void* sourceDocumentNode = nullptr;
    ASSERT_EQ(nodeCall(documentElementOf(source.cell), 7, {}, &sourceDocumentNode).code, 0);
    ASSERT_NE(sourceDocumentNode, nullptr);
    int32_t deep = 1;
    void* imported = nullptr;
    Answer answer = docCall(target.cell, 22, {sourceDocumentNode, &deep}, &imported);
    EXPECT_EQ(answer.code, 13);
    EXPECT_EQ(answer.message, "Unexpected exception");
}

// ---- Load reporter ------------------------------------------------------------

TEST_F(ConformanceDocuments, WarningFollowedByAFatalErrorKeepsOnlyTheWarning) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a></b>");
    EXPECT_EQ(answer.code, 8);
    EXPECT_EQ(answer.message, "WARNING: file 'MEMPTR', line '1', column '60', message "
                              "'attribute 'x' has already been declared for element 'a''");
}

TEST_F(ConformanceDocuments, FatalErrorLineNamesTheFileLineAndColumn) {
    HostDocument document;
    std::string path = dir.write("two-lines.xml", "<a>\n  <b></c></a>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, 10);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "', line '2', column '", 0), 0u)
        << answer.message;
    const std::string tail = "', message 'expected end of tag 'b''";
    ASSERT_GT(answer.message.size(), tail.size());
    EXPECT_EQ(answer.message.substr(answer.message.size() - tail.size()), tail);
}

TEST_F(ConformanceDocuments, LongFatalMessageEndsAtCharacter256WithDotsAndTheClosingQuote) {
    HostDocument document;
    std::string name = repeated("n", 400);
    LoadAnswer answer = document.loadMemory("<" + name + "></x>");
    EXPECT_EQ(answer.code, 10);
    ASSERT_EQ(answer.message.size(), 256u) << answer.message;
    std::string prefix = "FATAL ERROR: file 'MEMPTR', line '1', column '" +
                         std::to_string(name.size() + 5) + "', message ";
    EXPECT_EQ(answer.message.rfind(prefix + "'expected end of tag 'nnn", 0), 0u) << answer.message;
    EXPECT_EQ(answer.message.substr(252), "...'");
}

TEST_F(ConformanceDocuments, LongFatalMessageIsNeverCutInsideACharacter) {
    // Two names whose cut falls on either byte of a two-byte character.
    for (const std::string& lead : {std::string(), std::string("n")}) {
        HostDocument document;
        std::string name = lead + repeated("\xC3\xA9", 200);
        LoadAnswer answer = document.loadMemory("<" + name + "></x>");
        EXPECT_EQ(answer.code, 10);
        EXPECT_LE(answer.message.size(), 256u);
        EXPECT_TRUE(isWholeUtf8(answer.message)) << answer.message;
        EXPECT_EQ(answer.message.substr(answer.message.size() - 4), "...'") << answer.message;
    }
}

TEST_F(ConformanceDocuments, ValidationErrorIsOnlyTheQuotedMessageAndPrintsNothing) {
    HostDocument document;
    testing::internal::CaptureStdout();
    LoadAnswer answer =
        document.loadMemory("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a><b/></a>", 1);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(answer.code, 9);
    ASSERT_FALSE(answer.message.empty());
    EXPECT_EQ(answer.message.front(), '\'');
    EXPECT_EQ(answer.message.back(), '\'');
    EXPECT_EQ(answer.message.find("ERROR:"), std::string::npos) << answer.message;
    EXPECT_EQ(printed, "");
    // The document the parser built replaces the host's.
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "a");
}

TEST_F(ConformanceDocuments, PercentSignsInAFileNameReachTheReporterLineVerbatim) {
    HostDocument document;
    std::string path = dir.write("p%d%s%%.xml", "<a></b>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, 10);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "', line '1', column '", 0), 0u)
        << answer.message;
}

// ---- Loading ------------------------------------------------------------------

TEST_F(ConformanceDocuments, EncodingOfADocumentDeclaredInAnotherCaseIsReported) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<?xml version='1.0' encoding='utf-8'?><a/>");
    EXPECT_EQ(answer.code, 0);
    EXPECT_FALSE(answer.encoding.empty());
    EXPECT_LE(answer.encoding.size(), 256u);
}

TEST_F(ConformanceDocuments, EntityExpansionLimitZeroMakesAFileLoadFatal) {
    HostDocument document;
    std::string path =
        dir.write("ent.xml", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;&e;</a>");
    int32_t limit = 0;
    LoadArgs args;
    args.fileName = path.c_str();
    args.entityExpansionLimit = &limit;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, 10);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "'", 0), 0u) << answer.message;
}

TEST_F(ConformanceDocuments, NegativeExpansionLimitIsSignExtendedToNoLimit) {
    HostDocument document;
    int32_t limit = -1;
    LoadArgs args;
    args.sourceKind = 1;
    args.memory = "<!DOCTYPE a [<!ENTITY e 'x'>]><a>" + repeated("&e;", 100) + "</a>";
    args.entityExpansionLimit = &limit;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "a");
}

TEST_F(ConformanceDocuments, ReloadedDocumentStillAnswersTheHostHandle) {
    HostDocument document(31337);
    document.loadMemory("<a/>");
    document.loadMemory("<b><c/></b>");
    int64_t handle = 0;
    void* c = childOf(documentElementOf(document.cell), 0);
    EXPECT_EQ(nodeCall(c, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 31337);
}

// ---- Input sources ------------------------------------------------------------

TEST_F(ConformanceDocuments, InputSourceWithFileNameAndMemoryIsTheFile) {
    std::string path = dir.write("source.xml", "<a/>");
    const char bytes[] = "<m/>";
    void* source = lumCreateInputSource(path.c_str(), bytes, 4);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(systemIdOfAndDelete(source), path);
}

TEST_F(ConformanceDocuments, InputSourceOverMemoryIsNamedMEMPTR) {
    const char bytes[] = "<m/>";
    void* source = lumCreateInputSource("", bytes, 4);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(systemIdOfAndDelete(source), "MEMPTR");
}

TEST_F(ConformanceDocuments, InputSourceWithNothingIsNull) {
    const char bytes[] = "<m/>";
    EXPECT_EQ(lumCreateInputSource(nullptr, nullptr, 4), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, bytes, 0), nullptr);
}

// ---- Node type names ----------------------------------------------------------

TEST_F(ConformanceDocuments, TypeNamesAreTheTwelveOfTheTable) {
    const char* names[] = {"ELEMENT", "ATTRIBUTE", "TEXT", "CDATA-SECTION", "ENTITY-REFERENCE",
                           "ENTITY", "PROCESSING-INSTRUCTION", "COMMENT", "DOCUMENT",
                           "DOCUMENT-TYPE", "DOCUMENT-FRAGMENT", "NOTATION"};
    for (int32_t code = 1; code <= 12; ++code) {
        char name[23];
        std::memset(name, 'Z', sizeof name);
        lumTypeToChar(code, name);
        EXPECT_STREQ(name, names[code - 1]);
        EXPECT_EQ(lumTypeToInt(names[code - 1]), code);
    }
}

TEST_F(ConformanceDocuments, TypeNameMatchIsAsciiCaseFoldingOnly) {
    EXPECT_EQ(lumTypeToInt("processing-instruction"), 7);
    EXPECT_EQ(lumTypeToInt("Cdata-Section"), 4);
    EXPECT_EQ(lumTypeToInt("TEXT "), -1);
    EXPECT_EQ(lumTypeToInt("ELEMENTS"), -1);
    EXPECT_EQ(lumTypeToInt("ELEMEN"), -1);
    EXPECT_EQ(lumTypeToInt("CDATA_SECTION"), -1);
}

TEST_F(ConformanceDocuments, UnknownTypeCodesWriteTheRefusalText) {
    for (int32_t code : {0, 13, -1, 100, INT32_MIN, INT32_MAX}) {
        char name[23];
        std::memset(name, 'Z', sizeof name);
        lumTypeToChar(code, name);
        EXPECT_STREQ(name, "Invalid node type");
    }
}

}  // namespace
