// Making, loading and deleting documents as a host does.
#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class Documents : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }
    TempDir dir;
};

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
    EXPECT_EQ(deleteError.code, 0);
}

TEST_F(Documents, LoadedFileReplacesTheDocumentAndTakesOverTheHostRecord) {
    HostDocument document(31337);
    void* before = document.cell;
    LoadAnswer answer = document.loadFile(dir.write("a.xml", "<root><child>hi</child></root>"));
    EXPECT_EQ(answer.code, 0) << answer.message;
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
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "b");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 9);
}

TEST_F(Documents, WarningOnlyLoadReplacesTheDocumentAndAnswersCode8) {
    HostDocument document;
    void* before = document.cell;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ELEMENT a EMPTY><!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a/>");
    EXPECT_EQ(answer.code, 8);
    EXPECT_EQ(answer.message, "WARNING: file 'MEMPTR', line '1', column '62', message "
                              "'attribute 'x' has already been declared for element 'a''");
    EXPECT_NE(document.cell, before);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 4242);
}

TEST_F(Documents, FatalErrorAdoptsThePartlyBuiltDocumentWithCode10) {
    HostDocument document;
    std::string path = dir.write("broken.xml", "<a><b>text</b><c>more</a>");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, 10);
    EXPECT_EQ(answer.message, "FATAL ERROR: file '" + path +
                                  "', line '1', column '24', message 'expected end of tag 'c''");
    // The partly built tree is the host's: it can walk it and delete it.
    ASSERT_NE(documentElement(document.cell), nullptr);
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
    EXPECT_EQ(nameOf(documentElement(document.cell)->getFirstChild()), "b");
    EXPECT_EQ(textOf(documentElement(document.cell)), "textmore");
    EXPECT_EQ(hostRecord(document.cell)->hostHandle, 4242);
}

TEST_F(Documents, MissingFileIsAFatalErrorAndKeepsTheOldDocument) {
    HostDocument document;
    void* before = document.cell;
    std::string path = dir.file("missing.xml");
    LoadAnswer answer = document.loadFile(path);
    EXPECT_EQ(answer.code, 10);
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
    EXPECT_EQ(answer.code, 10);
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
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(nameOf(documentElement(document.cell)), "one");
}

TEST_F(Documents, FileUrlIsLoaded) {
#if defined(_WIN32)
    GTEST_SKIP() << "builds a POSIX file: URL (file:// + /path)";
#endif
    HostDocument document;
    std::string path = dir.write("url.xml", "<viaUrl/>");
    LoadAnswer answer = document.loadFile("file://" + path);
    EXPECT_EQ(answer.code, 0) << answer.message;
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
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "from the current directory");
}

TEST_F(Documents, MemoryLoadWithSystemIdResolvesAgainstIt) {
    dir.write("near/entity.txt", "beside the system id");
    std::string systemId = dir.file("near/doc.xml");
    HostDocument document;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ENTITY e SYSTEM \"entity.txt\">]><a>&e;</a>", 0, systemId.c_str());
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "beside the system id");
}

TEST_F(Documents, MemoryFatalErrorNamesMEMPTR) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<a>");
    EXPECT_EQ(answer.code, 10);
    EXPECT_EQ(answer.message, "FATAL ERROR: file 'MEMPTR', line '1', column '4', message 'input "
                              "ended before all started tags were ended; last tag started is 'a''");
}

TEST_F(Documents, EmptyMemoryBlockIsAFatalError) {
    HostDocument document;
    LoadArgs args;
    args.sourceKind = 1;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, 10);
    EXPECT_NE(answer.message.find("FATAL ERROR: file 'MEMPTR'"), std::string::npos);
}

TEST_F(Documents, NullFileNameIsReportedNotFollowed) {
    HostDocument document;
    LoadArgs args;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, 10);
    EXPECT_NE(answer.message.find("unable to open primary document entity"), std::string::npos);
}

TEST_F(Documents, GarbageBytesAreAFatalErrorNotACrash) {
    HostDocument document;
    std::string garbage;
    for (int i = 0; i < 512; ++i) garbage.push_back(static_cast<char>((i * 97 + 13) & 0xFF));
    LoadAnswer answer = document.loadMemory(garbage);
    EXPECT_EQ(answer.code, 10);
}

TEST_F(Documents, UnsupportedSourceKindAnswersNotSupportedAndKeepsTheDocument) {
    HostDocument document;
    void* before = document.cell;
    LoadArgs args;
    args.sourceKind = 2;
    args.memory = "<a/>";
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, -1);
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
    LoadAnswer answer = without.loadMemory(xml, 2);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(nameOf(documentElement(without.cell)), "p:a");
    EXPECT_EQ(documentElement(without.cell)->getLocalName(), nullptr);
    EXPECT_EQ(documentElement(without.cell)->getNamespaceURI(), nullptr);
}

TEST_F(Documents, UnboundPrefixIsFatalOnlyWithNamespaces) {
    HostDocument strict;
    EXPECT_EQ(strict.loadMemory("<p:a/>").code, 10);
    HostDocument plain;
    EXPECT_EQ(plain.loadMemory("<p:a/>", 2).code, 0);
}

TEST_F(Documents, ValidationFlagReportsAnUndeclaredElementAsCode9) {
    HostDocument document;
    ::testing::internal::CaptureStdout();
    LoadAnswer answer = document.loadMemory("<a/>", 1);
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(answer.code, 9);
    EXPECT_EQ(answer.message, "'no declaration found for element 'a''");
    EXPECT_EQ(printed, "");
    HostDocument lax;
    EXPECT_EQ(lax.loadMemory("<a/>").code, 0);
}

// ---- encodingOut -----------------------------------------------------------

TEST_F(Documents, EncodingOfUtf8DocumentWithDeclaration) {
    HostDocument document;
    LoadAnswer answer =
        document.loadFile(dir.write("u.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>"));
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.encoding, "UTF-8");
}

TEST_F(Documents, EncodingOfIso88591DocumentIsItsDeclaredName) {
    HostDocument document;
    LoadAnswer answer = document.loadFile(
        dir.write("l.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>caf\xE9</a>"));
    EXPECT_EQ(answer.code, 0) << answer.message;
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
    EXPECT_EQ(answer.code, 0) << answer.message;
    // Xerces' own name for what it detected from the byte-order mark.
    EXPECT_EQ(answer.encoding, "UTF-16 (LE)");
    EXPECT_EQ(textOf(documentElement(document.cell)), "x");
}

TEST_F(Documents, EncodingOfDocumentWithoutDeclarationIsWhatXercesDetected) {
    HostDocument document;
    LoadAnswer answer = document.loadFile(dir.write("n.xml", "<a/>"));
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(answer.encoding, "UTF-8");
}

TEST_F(Documents, EncodingOfDeclaredButUndetectedNameIsKept) {
    HostDocument document;
    LoadAnswer answer = document.loadMemory("<?xml version=\"1.0\" encoding=\"US-ASCII\"?><a/>");
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(answer.encoding, "US-ASCII");
}

// ---- lumDocDelete and lumCreateInputSource --------------------------------

TEST_F(Documents, DeleteOfALoadedDocumentWritesNoError) {
    void* cell = nullptr;
    ErrorSlot error;
    lumInitDocument(&cell, 5, error.buffer, &error.code);
    char encoding[300];
    lumDocLoad(&cell, 0, 1, encoding, nullptr, "<a><b/></a>", 11, nullptr, nullptr, 0, nullptr,
               error.buffer, &error.code);
    ASSERT_EQ(error.code, 0);
    lumDocDelete(cell, error.buffer, &error.code);
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(error.text(), "");
}

TEST_F(Documents, DeleteOfNullDocumentDoesNothing) {
    ErrorSlot error;
    lumDocDelete(nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, 0);
}

TEST_F(Documents, CreateInputSourceWithEmptyNameAndZeroLengthIsNull) {
    EXPECT_EQ(lumCreateInputSource("", "<a/>", 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, "<a/>", -4), nullptr);
}

}  // namespace
