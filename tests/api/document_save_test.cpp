// Saving documents as a host does: lumDocSave / lumDocSaveW to a file, host
// memory and a host stream, with the exact bytes of every output, and every
// failure's message and code. No test here asks for character or attribute
// escapes: those flags are sticky for the process (see
// document_save_sticky_test.cpp).
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include <xercesc/dom/DOMNamedNodeMap.hpp>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_memory.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"
#include "text_files.h"
#include "wide_names.h"

using namespace lumtest;

namespace {

const char kDecl[] = "<?xml version=\"1.0\" ?>\n";
const char kNamespaceErrorText[] =
    "attempt is made to create or change an object in a way which is incorrect with respect "
    "to namespaces";

class DocumentSave : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }

    // Loads `xml` into `document` and expects success.
    void load(HostDocument& document, const std::string& xml) {
        LoadAnswer answer = document.loadMemory(xml);
        ASSERT_EQ(answer.code, 0) << answer.message;
    }

    std::string loadAndSave(const std::string& xml, const char* encoding = nullptr) {
        HostDocument document;
        load(document, xml);
        return saveToMemory(document.cell, encoding);
    }

    static std::string utf16le(const std::string& ascii) {
        std::string out;
        for (char c : ascii) {
            out += c;
            out += '\0';
        }
        return out;
    }
    static std::string utf16be(const std::string& ascii) {
        std::string out;
        for (char c : ascii) {
            out += '\0';
            out += c;
        }
        return out;
    }
};

// ---- The XML text ---------------------------------------------------------------

TEST_F(DocumentSave, EmptyRootWithoutEncodingHasPlainDeclarationThenLineFeed) {
    EXPECT_EQ(loadAndSave("<r/>"), "<?xml version=\"1.0\" ?>\n<r/>");
}

TEST_F(DocumentSave, Utf8EncodingIsNamedInTheDeclaration) {
    EXPECT_EQ(loadAndSave("<r/>", "UTF-8"), "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<r/>");
}

TEST_F(DocumentSave, EmptyEncodingNameCountsAsNone) {
    EXPECT_EQ(loadAndSave("<r/>", ""), std::string(kDecl) + "<r/>");
}

TEST_F(DocumentSave, TextIsWrittenWithStdEscapes) {
    EXPECT_EQ(loadAndSave("<r>a&lt;b&amp;c</r>"), std::string(kDecl) + "<r>a&lt;b&amp;c</r>");
}

TEST_F(DocumentSave, TextQuotesAndGreaterThanAreEscapedByDefault) {
    EXPECT_EQ(loadAndSave("<r>\"'&gt;</r>"), std::string(kDecl) + "<r>&quot;&apos;&gt;</r>");
}

TEST_F(DocumentSave, AttributeValuesAreWrittenWithStdEscapes) {
    EXPECT_EQ(loadAndSave("<r a='&lt;&quot;&apos;&gt;&amp;'/>"),
              std::string(kDecl) + "<r a=\"&lt;&quot;&apos;&gt;&amp;\"/>");
}

TEST_F(DocumentSave, CommentAndCDataSectionAreWrittenUnescaped) {
    EXPECT_EQ(loadAndSave("<r><!-- a<b&c --><![CDATA[x<y&z\"]]></r>"),
              std::string(kDecl) + "<r><!-- a<b&c --><![CDATA[x<y&z\"]]></r>");
}

TEST_F(DocumentSave, ProcessingInstructionWithEmptyDataIsWrittenWithoutBlank) {
    EXPECT_EQ(loadAndSave("<r><?t?><?u  data here?></r>"),
              std::string(kDecl) + "<r><?t?><?u data here?></r>");
}

TEST_F(DocumentSave, NothingIsIndentedAndWhitespaceIsKept) {
    EXPECT_EQ(loadAndSave("<?xml version='1.0' standalone='yes'?>\n<r>\n  <a x='1'  y='2'/>\n</r>\n"),
              std::string(kDecl) + "<r>\n  <a x=\"1\" y=\"2\"/>\n</r>");
}

TEST_F(DocumentSave, DocumentTypeWithInternalSubsetIsFollowedByNoLineBreak) {
    EXPECT_EQ(loadAndSave("<!DOCTYPE r [<!ELEMENT r ANY>]>\n<r/>"),
              std::string(kDecl) + "<!DOCTYPE r[<!ELEMENT r ANY>]><r/>");
}

TEST_F(DocumentSave, EntityReferencesAreWrittenAsTheirExpansion) {
    EXPECT_EQ(loadAndSave("<!DOCTYPE r [<!ENTITY e '<b>x&amp;y</b>'>]><r>&e;&e;</r>"),
              std::string(kDecl) + "<!DOCTYPE r[<!ENTITY e \"<b>x&amp;y</b>\">]>"
                                   "<r><b>x&amp;y</b><b>x&amp;y</b></r>");
}

TEST_F(DocumentSave, DeclaredNamespacesAreKeptAsTheyAre) {
    const std::string xml = "<p:r xmlns:p='urn:u' xmlns='urn:d'><c p:a='1'/><p:c/></p:r>";
    EXPECT_EQ(loadAndSave(xml),
              std::string(kDecl) + "<p:r xmlns=\"urn:d\" xmlns:p=\"urn:u\"><c p:a=\"1\"/><p:c/></p:r>");
}

TEST_F(DocumentSave, CharactersTheEncodingCannotHoldBecomeCharacterReferences) {
    EXPECT_EQ(loadAndSave("<r>\xc3\xa9\xe2\x82\xac</r>", "ISO-8859-1"),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" ?>\n<r>\xe9&#x20AC;</r>");
}

TEST_F(DocumentSave, NullDocumentWritesNothing) {
    SaveAnswer answer = save(nullptr, SaveArgs{});
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_TRUE(answer.handedOver);
    EXPECT_EQ(answer.length, 0u);
}

// ---- Namespace declarations added for the save -------------------------------------

// A loaded element whose declaration the host removed keeps its namespace.
TEST_F(DocumentSave, PrefixedElementWithoutDeclarationGainsOneOnlyInTheOutput) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'/>");
    documentElement(document.cell)->removeAttribute(u"xmlns:p");
    ASSERT_FALSE(documentElement(document.cell)->hasAttributes());
    EXPECT_EQ(saveToMemory(document.cell), std::string(kDecl) + "<p:r xmlns:p=\"urn:u\"/>");
    EXPECT_FALSE(documentElement(document.cell)->hasAttributes());
    EXPECT_EQ(documentElement(document.cell)->getAttributeNode(u"xmlns:p"), nullptr);
    // And again: nothing of the first save is left over.
    EXPECT_EQ(saveToMemory(document.cell), std::string(kDecl) + "<p:r xmlns:p=\"urn:u\"/>");
}

TEST_F(DocumentSave, OwnDeclarationOfAnotherNamespaceEndsTheSaveWithTheDomText) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'><p:c/></p:r>");
    XERCES_CPP_NAMESPACE::DOMElement* r = documentElement(document.cell);
    r->setAttribute(u"xmlns:p", u"urn:v");
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, 13);
    EXPECT_EQ(answer.message, kNamespaceErrorText);
    EXPECT_FALSE(answer.handedOver);
    EXPECT_EQ(r->getAttributes()->getLength(), 1u);
    EXPECT_EQ(utf8(r->getAttribute(u"xmlns:p")), "urn:v");
}

TEST_F(DocumentSave, DeclarationsAddedBeforeTheNamespaceErrorAreRemoved) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'><q:c xmlns:q='urn:q'/></p:r>");
    XERCES_CPP_NAMESPACE::DOMElement* r = documentElement(document.cell);
    auto* c = static_cast<XERCES_CPP_NAMESPACE::DOMElement*>(r->getFirstChild());
    r->removeAttribute(u"xmlns:p");  // the save will add it back for its length
    c->setAttribute(u"xmlns:q", u"urn:other");
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, 13);
    EXPECT_FALSE(r->hasAttributes());
    EXPECT_EQ(c->getAttributes()->getLength(), 1u);
}

TEST_F(DocumentSave, DomTextIsAppendedToWhatTheBufferHolds) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'/>");
    documentElement(document.cell)->setAttribute(u"xmlns:p", u"urn:v");
    SaveArgs args;
    args.bufferBefore = "earlier: ";
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 13);
    EXPECT_EQ(answer.message, std::string("earlier: ") + kNamespaceErrorText);
}

TEST_F(DocumentSave, DomTextIsCutToTheRoomLeftInTheBuffer) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'/>");
    documentElement(document.cell)->setAttribute(u"xmlns:p", u"urn:v");
    SaveArgs args;
    args.bufferBefore = std::string(200, 'x');
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 13);
    ASSERT_EQ(answer.message.size(), 256u);
    EXPECT_EQ(answer.message,
              std::string(200, 'x') + std::string(kNamespaceErrorText).substr(0, 53) + "...");
}

// ---- Target kinds -------------------------------------------------------------------

TEST_F(DocumentSave, OtherTargetKindsAreNotSupported) {
    HostDocument document;
    load(document, "<r/>");
    for (int32_t target : {3, 4, 5, 7, -1, 100}) {
        SaveArgs args;
        args.target = target;
        SaveAnswer answer = save(document.cell, args);
        EXPECT_EQ(answer.code, -1) << target;
        EXPECT_EQ(answer.message, "Operation not supported") << target;
        EXPECT_FALSE(answer.handedOver) << target;
    }
}

TEST_F(DocumentSave, KindSixOnAnElementWritesItsSubtreeWithoutDeclaration) {
    HostDocument document;
    load(document, "<r><a x='1'><b>t</b></a><c/></r>");
    XERCES_CPP_NAMESPACE::DOMNode* a = documentElement(document.cell)->getFirstChild();
    SaveArgs args;
    args.target = 6;
    SaveAnswer answer = save(a, args);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(answer.bytes, "<a x=\"1\"><b>t</b></a>");
}

TEST_F(DocumentSave, KindSixOnTheDocumentNodeWritesTheDeclaration) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = 6;
    SaveAnswer answer = save(documentNode(document.cell), args);
    EXPECT_EQ(answer.bytes, std::string(kDecl) + "<r/>");
}

TEST_F(DocumentSave, KindSixOnAPrefixedElementDeclaresWhatTheSubtreeLacks) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'><p:a><p:b/></p:a></p:r>");
    SaveArgs args;
    args.target = 6;
    SaveAnswer answer = save(documentElement(document.cell)->getFirstChild(), args);
    // The declaration on the parent above the start node is in scope.
    EXPECT_EQ(answer.bytes, "<p:a><p:b/></p:a>");
}

TEST_F(DocumentSave, FileGetsTheSameBytesAsMemory) {
    HostDocument document;
    load(document, "<r a='1'>x</r>");
    TempDir dir;
    SaveArgs args;
    args.target = 0;
    const std::string path = dir.file("out.xml");
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 0) << answer.message;
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
    args.target = 0;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).code, 0);
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
    args.target = 0;
    args.wideFileName = lumtest::wideUnits(wide);
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(lumtest::readWideNamedFile(wide), lumtest::textModeBytes(std::string(kDecl) + "<r/>"));
}

TEST_F(DocumentSave, FileThatCannotBeOpenedIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.file("missing/dir/out.xml");
    SaveArgs args;
    args.target = 0;
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, WideFileThatCannotBeOpenedIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = 0;
    args.wideFileName = lumtest::wideUnits(u"/nonexistent-dir/\u00e9/out.xml");
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, NullFileNameIsAnInvalidPath) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = 0;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
    EXPECT_EQ(answer.message, "XML Parser Exception: Invalid file or path name");
}

TEST_F(DocumentSave, FileNameIsIgnoredForOtherKinds) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.file("never.xml");
    SaveArgs args;
    args.target = 1;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).bytes, std::string(kDecl) + "<r/>");
    args.target = 3;
    EXPECT_EQ(save(document.cell, args).code, -1);
    EXPECT_EQ(readFile(path), "");
    EXPECT_EQ(std::fopen(path.c_str(), "r"), nullptr);
}

TEST_F(DocumentSave, UnknownEncodingIsAnXmlExceptionAfterTheFileWasCreated) {
    HostDocument document;
    load(document, "<r/>");
    TempDir dir;
    const std::string path = dir.write("out.xml", "old content");
    SaveArgs args;
    args.target = 0;
    args.encoding = "no-such-encoding";
    args.fileName = path.c_str();
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
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
    EXPECT_EQ(answer.code, 11);
    EXPECT_FALSE(answer.handedOver);
}

TEST_F(DocumentSave, StreamCollectsTheSameBytesAsMemory) {
    HostDocument document;
    load(document, "<r a='1'><b>x&amp;y</b><!--c--></r>");
    StreamCollector stream;
    SaveArgs args;
    args.target = 2;
    args.streamHandle = stream.handle();
    args.streamWrite = &StreamCollector::write;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_FALSE(answer.handedOver);
    EXPECT_EQ(stream.bytes, std::string(kDecl) + "<r a=\"1\"><b>x&amp;y</b><!--c--></r>");
    EXPECT_EQ(stream.bytes, saveToMemory(document.cell));
}

TEST_F(DocumentSave, StreamWithoutWriteFunctionIsNotSupported) {
    HostDocument document;
    load(document, "<r/>");
    SaveArgs args;
    args.target = 2;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, -1);
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
    EXPECT_EQ(answer.code, 0) << answer.message;
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
    args.target = 2;
    args.encoding = "UTF-16";
    args.noByteOrderMark = 1;  // only memory targets look at it
    args.streamHandle = stream.handle();
    args.streamWrite = &StreamCollector::write;
    EXPECT_EQ(save(document.cell, args).code, 0);
    EXPECT_EQ(stream.bytes, expected);

    TempDir dir;
    const std::string path = dir.file("out16.xml");
    args.target = 0;
    args.fileName = path.c_str();
    EXPECT_EQ(save(document.cell, args).code, 0);
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
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(answer.bytes, std::string(kDecl) + "<r/>");
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[0].size, 16384u);
    EXPECT_EQ(calls[0].line, 84);
    EXPECT_EQ(calls[1].kind, MemoryCall::Realloc);
    EXPECT_EQ(calls[1].size, answer.length + 1);
    EXPECT_EQ(calls[1].line, 231);
}

TEST_F(DocumentSaveHostMemory, LargeDocumentGrowsTheHostBlock) {
    HostDocument document;
    std::string xml = "<r>";
    for (int i = 0; i < 3000; ++i) xml += "<item n='" + std::to_string(i) + "'>text</item>";
    xml += "</r>";
    load(document, xml);
    HostMemory::reset();
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, 0) << answer.message;
    std::string expected = std::string(kDecl) + "<r>";
    for (int i = 0; i < 3000; ++i)
        expected += "<item n=\"" + std::to_string(i) + "\">text</item>";
    expected += "</r>";
    EXPECT_EQ(answer.bytes, expected);
    int growths = 0;
    for (const MemoryCall& call : HostMemory::calls()) growths += call.line == 175;
    EXPECT_GE(growths, 2);
}

TEST_F(DocumentSaveHostMemory, FailedGrowthGivesCode80AndHandsNothingOver) {
    HostDocument document;
    load(document, "<r>" + std::string(20000, 'x') + "</r>");
    HostMemory::reset();
    HostMemory::failNextReallocs(1);
    SaveAnswer answer = save(document.cell, SaveArgs{});
    EXPECT_EQ(answer.code, 80);
    EXPECT_EQ(answer.message, "");
    EXPECT_FALSE(answer.handedOver);
    const auto& calls = HostMemory::calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[1].line, 175);
    EXPECT_EQ(calls[2].kind, MemoryCall::Alloc);
    EXPECT_EQ(calls[2].size, 16384u);
    EXPECT_EQ(calls[2].line, 202);
    // The host's allocator still holds the old and the fresh block.
    HostMemory::freeKeptBlocks();
    HostMemory::freeLiveBlocks();
    // The document is unchanged and saves again.
    EXPECT_EQ(saveToMemory(document.cell).size(), std::string(kDecl).size() + 20007);
}

// ---- Round trips and depth ----------------------------------------------------------

TEST_F(DocumentSave, RoundTripGivesIdenticalBytes) {
    const std::string documents[] = {
        "<r/>",
        "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xe9'>\xe9</r>",
        "<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;<![CDATA[<>]]><!--c--><?p d?></r>",
        "<p:r xmlns:p='urn:u' xmlns='urn:d'><a p:b='&lt;&amp;&quot;'>\"'&gt;</a></p:r>",
    };
    for (const std::string& xml : documents) {
        const std::string first = loadAndSave(xml, "UTF-8");
        EXPECT_EQ(loadAndSave(first, "UTF-8"), first) << xml;
    }
}

TEST_F(DocumentSave, RoundTripOfTheExampleCatalogue) {
    HostDocument document;
    LoadAnswer loaded = document.loadFile(LUMXML_SOURCE_DIR "/examples/catalog.xml");
    ASSERT_EQ(loaded.code, 0) << loaded.message;
    const std::string first = saveToMemory(document.cell);
    HostDocument again;
    ASSERT_EQ(again.loadMemory(first, 0, LUMXML_SOURCE_DIR "/examples/catalog.xml").code, 0);
    EXPECT_EQ(saveToMemory(again.cell), first);
}

// Loaded without namespaces: Xerces' namespace scanner is itself quadratic
// in the depth (the node writer's own namespace walk is not). A hundred
// thousand levels, because releasing a document that carries user data
// recurses inside Xerces and a million levels overflow its stack there; the
// unit test writes a million-deep tree of namespace-aware elements.
TEST_F(DocumentSave, HundredThousandLevelsDeepLoadAndSave) {
    const int depth = 100000;
    std::string xml;
    xml.reserve(8u * depth);
    for (int i = 0; i < depth; ++i) xml += "<e>";
    for (int i = 0; i < depth; ++i) xml += "</e>";
    HostDocument document;
    LoadAnswer loaded = document.loadMemory(xml, 2);  // namespaces off
    ASSERT_EQ(loaded.code, 0) << loaded.message;
    std::string expected = kDecl;
    for (int i = 1; i < depth; ++i) expected += "<e>";
    expected += "<e/>";
    for (int i = 1; i < depth; ++i) expected += "</e>";
    const std::string bytes = saveToMemory(document.cell);
    EXPECT_EQ(bytes.size(), expected.size());
    EXPECT_TRUE(bytes == expected);
}

}  // namespace
