// Making, loading and deleting documents as a host does.
#include <cstdint>
#include <cstdio>
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

class Documents : public ::testing::Test {
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

TEST_F(Documents, InitDocumentMakesAnEmptyDocumentCarryingTheHostHandle) {
    HostDocument document(777);
    ASSERT_NE(document.cell, nullptr);
    EXPECT_EQ(documentElement(document.cell), nullptr);
    EXPECT_EQ(documentNode(document.cell)->getFirstChild(), nullptr);
    ASSERT_NE(hostRecord(document.cell), nullptr);
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 777);
    EXPECT_EQ(hostRecord(document.cell)->restrictOwner, 0);
    EXPECT_EQ(hostRecord(document.cell)->restrictParent, 0);
}

TEST_F(Documents, InitDocumentWritesNoErrorAndLeavesTheCodeAlone) {
    ErrorSlot error;
    error.code = 55;
    void* cell = nullptr;
    lumInitDocument(&cell, 1, error.buffer, &error.code);
    EXPECT_EQ(error.code, 55);
    EXPECT_EQ(error.text(), "");
    ErrorSlot deleteError;
    lumDocDelete(cell, deleteError.buffer, &deleteError.code);
    EXPECT_EQ(deleteError.code, LUM_OK);
}

TEST_F(Documents, InitDocumentAndDeleteNeverTouchABufferOnSuccess) {
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

TEST_F(Documents, LoadedFileReplacesTheDocumentAndTakesOverTheHostRecord) {
    HostDocument document(31337);
    void* before = document.cell;
    LoadAnswer answer = document.loadFile(dir.write("a.xml", "<root><child>hi</child></root>"));
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.message, "");
    EXPECT_NE(document.cell, before);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "root");
    EXPECT_EQ(textOf(documentElement(document.cell)), "hi");
    ASSERT_NE(hostRecord(document.cell), nullptr);
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 31337);
}

TEST_F(Documents, LoadingTwiceKeepsTheRecordMoving) {
    HostDocument document(9);
    document.loadFile(dir.write("a.xml", "<a/>"));
    LoadAnswer answer = document.loadMemory("<b/>");
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "b");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 9);
}

TEST_F(Documents, ReloadedDocumentStillAnswersTheHostHandle) {
    HostDocument document(31337);
    document.loadMemory("<a/>");
    document.loadMemory("<b><c/></b>");
    int64_t handle = 0;
    void* c = childOf(documentElementOf(document.cell), 0);
    EXPECT_EQ(nodeCall(c, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 31337);
}

TEST_F(Documents, SuccessfulLoadLeavesEveryBufferByteAndThePresetCodeAlone) {
    HostDocument document;
    char buffer[257];
    std::memset(buffer, 0x5A, sizeof buffer);
    int32_t code = 77;
    char encoding[257] = {0};
    const std::string bytes = "<a/>";
    lumDocLoad(&document.cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, bytes.data(),
               static_cast<uint32_t>(bytes.size()), nullptr, nullptr, 0, nullptr, buffer, &code);
    EXPECT_EQ(code, 77);
    for (size_t i = 0; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x5A) << "byte " << i;
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
}

TEST_F(Documents, FailureOverwritesAPresetCodeAndEndsTheTextWithItsNul) {
    HostDocument document;
    char buffer[257];
    std::memset(buffer, 'Z', sizeof buffer);
    int32_t code = 77;
    char encoding[257] = {0};
    lumDocLoad(&document.cell, 0, 5, encoding, nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr,
               buffer, &code);
    EXPECT_EQ(code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_STREQ(buffer, "Not supported");
}

TEST_F(Documents, WarningOnlyLoadReplacesTheDocumentAndAnswersCode8) {
    HostDocument document;
    void* before = document.cell;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ELEMENT a EMPTY><!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a/>");
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_WARNING);
    EXPECT_EQ(answer.message, "WARNING: file 'MEMPTR', line '1', column '62', message "
                              "'attribute 'x' has already been declared for element 'a''");
    EXPECT_NE(document.cell, before);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 4242);
}

TEST_F(Documents, WarningFollowedByAFatalErrorKeepsOnlyTheWarning) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a></b>");
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_WARNING);
    EXPECT_EQ(answer.message, "WARNING: file 'MEMPTR', line '1', column '60', message "
                              "'attribute 'x' has already been declared for element 'a''");
}

TEST_F(Documents, FatalErrorAdoptsThePartlyBuiltDocumentWithCode10) {
    HostDocument document;
    std::string path = dir.write("broken.xml", "<a><b>text</b><c>more</a>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message, "FATAL ERROR: file '" + path +
                                  "', line '1', column '24', message 'expected end of tag 'c''");
    // The partly built tree is the host's: it can walk it and delete it.
    ASSERT_NE(documentElement(document.cell), nullptr);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
    EXPECT_EQ(nameOf(documentElement(document.cell)->getFirstChild()), "b");
    EXPECT_EQ(textOf(documentElement(document.cell)), "textmore");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 4242);
}

TEST_F(Documents, FatalErrorLineNamesTheFileLineAndColumn) {
    HostDocument document;
    std::string path = dir.write("two-lines.xml", "<a>\n  <b></c></a>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "', line '2', column '", 0), 0u)
        << answer.message;
    const std::string tail = "', message 'expected end of tag 'b''";
    ASSERT_GT(answer.message.size(), tail.size());
    EXPECT_EQ(answer.message.substr(answer.message.size() - tail.size()), tail);
}

TEST_F(Documents, LongFatalMessageEndsAtCharacter256WithDotsAndTheClosingQuote) {
    HostDocument document;
    std::string name = repeated("n", 400);
    LoadAnswer answer = document.loadMemory("<" + name + "></x>");
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    ASSERT_EQ(answer.message.size(), 256u) << answer.message;
    std::string prefix = "FATAL ERROR: file 'MEMPTR', line '1', column '" +
                         std::to_string(name.size() + 5) + "', message ";
    EXPECT_EQ(answer.message.rfind(prefix + "'expected end of tag 'nnn", 0), 0u) << answer.message;
    EXPECT_EQ(answer.message.substr(252), "...'");
}

TEST_F(Documents, LongFatalMessageIsNeverCutInsideACharacter) {
    // Two names whose cut falls on either byte of a two-byte character.
    for (const std::string& lead : {std::string(), std::string("n")}) {
        HostDocument document;
        std::string name = lead + repeated("\xC3\xA9", 200);
        LoadAnswer answer = document.loadMemory("<" + name + "></x>");
        EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
        EXPECT_LE(answer.message.size(), 256u);
        EXPECT_TRUE(isWholeUtf8(answer.message)) << answer.message;
        EXPECT_EQ(answer.message.substr(answer.message.size() - 4), "...'") << answer.message;
    }
}

TEST_F(Documents, PercentSignsInAFileNameReachTheReporterLineVerbatim) {
    HostDocument document;
    std::string path = dir.write("p%d%s%%.xml", "<a></b>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "', line '1', column '", 0), 0u)
        << answer.message;
}

TEST_F(Documents, MissingFileIsAFatalErrorAndKeepsTheOldDocument) {
    HostDocument document;
    void* before = document.cell;
    std::string path = dir.file("missing.xml");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message, "FATAL ERROR: file '', line '0', column '0', message 'unable to "
                              "open primary document entity '" + path + "''");
    EXPECT_EQ(document.cell, before);
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 4242);
    // The kept document was made empty: Xerces reports no encoding for it.
    EXPECT_EQ(answer.encoding, "UTF-8");
}

TEST_F(Documents, NameWithTwoLeadingSlashesReachesXercesWithBackslashes) {
    HostDocument document;
    LoadAnswer answer = document.loadFile("//server/share/doc.xml");
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(answer.message.find("\\\\server\\share\\doc.xml'"), std::string::npos)
        << answer.message;
    EXPECT_EQ(answer.message.find('/' + std::string("/server")), std::string::npos);
}

TEST_F(Documents, NameWithOneLeadingSlashIsParsedUnchanged) {
#if defined(_WIN32)
    GTEST_SKIP() << "a POSIX path: Windows paths start with a drive letter";
#endif
    HostDocument document;
    std::string path = dir.write("sub/one.xml", "<one/>");
    ASSERT_EQ(path[0], '/');
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(nameOf(documentElement(document.cell)), "one");
}

TEST_F(Documents, FileUrlIsLoaded) {
#if defined(_WIN32)
    GTEST_SKIP() << "builds a POSIX file: URL (file:// + /path)";
#endif
    HostDocument document;
    std::string path = dir.write("url.xml", "<viaUrl/>");
    LoadAnswer answer = document.loadFile("file://" + path);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(nameOf(documentElement(document.cell)), "viaUrl");
}

TEST_F(Documents, MemoryLoadWithoutSystemIdResolvesAgainstTheCurrentDirectory) {
    // Tests run in the build's tests directory; the entity file is put there.
    std::string cwdFile = "lumxml-documents-cwd-entity.txt";
    FILE* out = std::fopen(cwdFile.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    std::fputs("from the current directory", out);
    std::fclose(out);
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<!DOCTYPE a [<!ENTITY e SYSTEM \"" + cwdFile +
                                            "\">]><a>&e;</a>");
    std::remove(cwdFile.c_str());
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "from the current directory");
}

TEST_F(Documents, MemoryLoadWithSystemIdResolvesAgainstIt) {
    dir.write("near/entity.txt", "beside the system id");
    std::string systemId = dir.file("near/doc.xml");
    HostDocument document;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ENTITY e SYSTEM \"entity.txt\">]><a>&e;</a>", 0, systemId.c_str());
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "beside the system id");
}

TEST_F(Documents, MemoryFatalErrorNamesMEMPTR) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<a>");
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message, "FATAL ERROR: file 'MEMPTR', line '1', column '4', message 'input "
                              "ended before all started tags were ended; last tag started is 'a''");
}

TEST_F(Documents, EmptyMemoryBlockIsAFatalError) {
    HostDocument document;
    LoadArgs args;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(answer.message.find("FATAL ERROR: file 'MEMPTR'"), std::string::npos);
}

TEST_F(Documents, NullFileNameIsReportedNotFollowed) {
    HostDocument document;
    LoadArgs args;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(answer.message.find("unable to open primary document entity"), std::string::npos);
}

TEST_F(Documents, GarbageBytesAreAFatalErrorNotACrash) {
    HostDocument document;
    std::string garbage;
    for (int i = 0; i < 512; ++i) garbage.push_back(static_cast<char>((i * 97 + 13) & 0xFF));
    LoadAnswer answer = document.loadMemory(garbage);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
}

TEST_F(Documents, UnsupportedSourceKindAnswersNotSupportedAndKeepsTheDocument) {
    HostDocument document;
    void* before = document.cell;
    LoadArgs args;
    args.sourceKind = 2;
    args.memory = "<a/>";
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Not supported");
    EXPECT_EQ(answer.encoding, "");
    EXPECT_EQ(document.cell, before);
}

TEST_F(Documents, NamespacesOffKeepsPrefixedNamesAsPlainNames) {
    const std::string xml = "<p:a xmlns:p=\"urn:x\"><p:b/></p:a>";
    HostDocument withNamespaces;
    withNamespaces.loadMemory(xml);
    EXPECT_EQ(utf8(documentElement(withNamespaces.cell)->getLocalName()), "a");
    EXPECT_EQ(utf8(documentElement(withNamespaces.cell)->getNamespaceURI()), "urn:x");

    HostDocument without;
    LoadAnswer answer = without.loadMemory(xml, LUM_LOAD_NO_NAMESPACES);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(nameOf(documentElement(without.cell)), "p:a");
    EXPECT_EQ(documentElement(without.cell)->getLocalName(), nullptr);
    EXPECT_EQ(documentElement(without.cell)->getNamespaceURI(), nullptr);
}

TEST_F(Documents, UnboundPrefixIsFatalOnlyWithNamespaces) {
    HostDocument strict;
    EXPECT_EQ(strict.loadMemory("<p:a/>").code, LUM_ERR_PARSE_FATAL);
    HostDocument plain;
    EXPECT_EQ(plain.loadMemory("<p:a/>", LUM_LOAD_NO_NAMESPACES).code, LUM_OK);
}

TEST_F(Documents, ValidationFlagReportsAnUndeclaredElementAsCode9) {
    HostDocument document;
    ::testing::internal::CaptureStdout();
    LoadAnswer answer = document.loadMemory("<a/>", LUM_LOAD_VALIDATE);
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_ERROR);
    EXPECT_EQ(answer.message, "'no declaration found for element 'a''");
    EXPECT_EQ(printed, "");
    HostDocument lax;
    EXPECT_EQ(lax.loadMemory("<a/>").code, LUM_OK);
}

TEST_F(Documents, ValidationErrorIsOnlyTheQuotedMessageAndPrintsNothing) {
    HostDocument document;
    testing::internal::CaptureStdout();
    LoadAnswer answer =
        document.loadMemory("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a><b/></a>", LUM_LOAD_VALIDATE);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_ERROR);
    ASSERT_FALSE(answer.message.empty());
    EXPECT_EQ(answer.message.front(), '\'');
    EXPECT_EQ(answer.message.back(), '\'');
    EXPECT_EQ(answer.message.find("ERROR:"), std::string::npos) << answer.message;
    EXPECT_EQ(printed, "");
    // The document the parser built replaces the host's.
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "a");
}

TEST_F(Documents, EntityExpansionLimitZeroMakesAFileLoadFatal) {
    HostDocument document;
    std::string path =
        dir.write("ent.xml", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;&e;</a>");
    int32_t limit = 0;
    LoadArgs args;
    args.fileName = path.c_str();
    args.entityExpansionLimit = &limit;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file '" + path + "'", 0), 0u) << answer.message;
}

TEST_F(Documents, NegativeExpansionLimitIsSignExtendedToNoLimit) {
    HostDocument document;
    int32_t limit = -1;
    LoadArgs args;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    args.memory = "<!DOCTYPE a [<!ENTITY e 'x'>]><a>" + repeated("&e;", 100) + "</a>";
    args.entityExpansionLimit = &limit;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "a");
}

// ---- encodingOut -----------------------------------------------------------

TEST_F(Documents, EncodingOfUtf8DocumentWithDeclaration) {
    HostDocument document;
    LoadAnswer answer =
        document.loadFile(dir.write("u.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"));
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(answer.encoding, "UTF-8");
}

TEST_F(Documents, EncodingOfIso88591DocumentIsItsDeclaredName) {
    HostDocument document;
    LoadAnswer answer = document.loadFile(
        dir.write("l.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>caf\xE9</a>"));
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.encoding, "ISO-8859-1");
    EXPECT_EQ(textOf(documentElement(document.cell)), "caf\xC3\xA9");
}

TEST_F(Documents, EncodingOfUtf16DocumentWithByteOrderMark) {
    std::string bytes = "\xFF\xFE";
    for (char c : std::string("<a>x</a>")) {
        bytes.push_back(c);
        bytes.push_back('\0');
    }
    HostDocument document;
    LoadAnswer answer = document.loadFile(dir.write("w.xml", bytes));
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    // Xerces' own name for what it detected from the byte-order mark.
    EXPECT_EQ(answer.encoding, "UTF-16 (LE)");
    EXPECT_EQ(textOf(documentElement(document.cell)), "x");
}

TEST_F(Documents, EncodingOfDocumentWithoutDeclarationIsWhatXercesDetected) {
    HostDocument document;
    LoadAnswer answer = document.loadFile(dir.write("n.xml", "<a/>"));
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(answer.encoding, "UTF-8");
}

TEST_F(Documents, EncodingOfDeclaredButUndetectedNameIsKept) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<?xml version=\"1.0\" encoding=\"US-ASCII\"?><a/>");
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.encoding, "US-ASCII");
}

TEST_F(Documents, EncodingOfADocumentDeclaredInAnotherCaseIsReported) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<?xml version='1.0' encoding='utf-8'?><a/>");
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_FALSE(answer.encoding.empty());
    EXPECT_LE(answer.encoding.size(), 256u);
}

// ---- lumDocDelete and lumCreateInputSource --------------------------------

TEST_F(Documents, DeleteOfALoadedDocumentWritesNoError) {
    void* cell = nullptr;
    ErrorSlot error;
    lumInitDocument(&cell, 5, error.buffer, &error.code);
    char encoding[300];
    lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, "<a><b/></a>", 11, nullptr,
               nullptr, 0, nullptr, error.buffer, &error.code);
    ASSERT_EQ(error.code, LUM_OK);
    lumDocDelete(cell, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK);
    EXPECT_EQ(error.text(), "");
}

TEST_F(Documents, DeleteOfNullDocumentDoesNothing) {
    ErrorSlot error;
    lumDocDelete(nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK);
}

TEST_F(Documents, CreateInputSourceWithEmptyNameAndZeroLengthIsNull) {
    EXPECT_EQ(lumCreateInputSource("", "<a/>", 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, "<a/>", -4), nullptr);
}

TEST_F(Documents, InputSourceWithNothingIsNull) {
    const char bytes[] = "<m/>";
    EXPECT_EQ(lumCreateInputSource(nullptr, nullptr, 4), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, bytes, 0), nullptr);
}

TEST_F(Documents, InputSourceWithFileNameAndMemoryIsTheFile) {
    std::string path = dir.write("source.xml", "<a/>");
    const char bytes[] = "<m/>";
    void* source = lumCreateInputSource(path.c_str(), bytes, 4);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(systemIdOfAndDelete(source), path);
}

TEST_F(Documents, InputSourceOverMemoryIsNamedMEMPTR) {
    const char bytes[] = "<m/>";
    void* source = lumCreateInputSource("", bytes, 4);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(systemIdOfAndDelete(source), "MEMPTR");
}

}  // namespace
