// Saving documents as a host does: the exact bytes of the XML text a save
// writes for every kind of node, whole documents and single nodes.
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

using namespace lumtest;

namespace {

constexpr int32_t kElement = 1;
constexpr int32_t kAttribute = 2;

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
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_TRUE(answer.handedOver);
    EXPECT_EQ(answer.length, 0u);
}

// ---- document types ------------------------------------------------------------------

class DocumentSaveDocumentType : public DocumentSave {
protected:
    void makeDocument(const char* publicId, const char* systemId) {
        const char* qname = "top";
        void* made = nullptr;
        Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                                {nullptr, const_cast<char*>(qname), const_cast<char*>(publicId),
                                 const_cast<char*>(systemId)},
                                &made);
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
        document.cell = made;
    }
};

TEST_F(DocumentSaveDocumentType, PublicAndSystemIds) {
    makeDocument("-//P//EN", "s.dtd");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top PUBLIC \"-//P//EN\" \"s.dtd\"><top/>");
}

// After a public id the system literal is written when present, even empty.
TEST_F(DocumentSaveDocumentType, EmptySystemIdAfterAPublicIdIsStillWritten) {
    makeDocument("-//P//EN", "");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top PUBLIC \"-//P//EN\" \"\"><top/>");
}

TEST_F(DocumentSaveDocumentType, SystemIdAlone) {
    makeDocument("", "s.dtd");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top SYSTEM \"s.dtd\"><top/>");
}

TEST_F(DocumentSaveDocumentType, NoIdsAtAll) {
    makeDocument("", "");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top><top/>");
}

TEST_F(DocumentSaveDocumentType, KindSixOnTheDocumentTypeWritesItAlone) {
    makeDocument("", "s.dtd");
    int32_t index = 0;
    void* type = nullptr;
    ASSERT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &type).code, LUM_OK);
    EXPECT_EQ(savedNode(type), "<!DOCTYPE top SYSTEM \"s.dtd\">");
}

// ---- other node kinds as the start node -------------------------------------------------

TEST_F(DocumentSave, KindSixOnAnEntityWritesItsDeclarationWithCrLf) {
    void* entity = createNode(document.cell, "ent", LUM_NODE_ENTITY);
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(savedNode(entity), "<!ENTITY ent>\r\n");
}

TEST_F(DocumentSave, KindSixOnATextNodeWritesItEscaped) {
    void* text = createNode(document.cell, "", LUM_NODE_TEXT);
    ASSERT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("a<b")}, nullptr).code, LUM_OK);
    EXPECT_EQ(savedNode(text), "a&lt;b");
}

TEST_F(DocumentSave, KindSixOnAttributesFragmentsAndNotationsWritesNothing) {
    void* attr = createNode(document.cell, "a", kAttribute);
    EXPECT_EQ(savedNode(attr), "");
    void* fragment = createNode(document.cell, "", LUM_NODE_DOCUMENT_FRAGMENT);
    appendChild(fragment, createNode(document.cell, "x", kElement));
    EXPECT_EQ(savedNode(fragment), "");
    EXPECT_EQ(savedNode(createNode(document.cell, "n", LUM_NODE_NOTATION)), "");
}

TEST_F(DocumentSave, ProcessingInstructionDataFollowsOneBlank) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    void* pi = createNode(document.cell, "t", LUM_NODE_PROCESSING_INSTRUCTION);
    ASSERT_EQ(nodeCall(pi, LUM_NODE_SET_VALUE, {const_cast<char*>("d e")}, nullptr).code, LUM_OK);
    appendChild(r, pi);
    void* comment = createNode(document.cell, "", LUM_NODE_COMMENT);
    ASSERT_EQ(nodeCall(comment, LUM_NODE_SET_VALUE, {const_cast<char*>(" c&<")}, nullptr).code,
              LUM_OK);
    appendChild(r, comment);
    EXPECT_EQ(saved(), kDecl + "<r><?t d e?><!-- c&<--></r>");
}

TEST_F(DocumentSave, AttributesAreWrittenInMapOrder) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    for (const char* name : {"zeta", "alpha", "mid"})
        ASSERT_EQ(nodeCall(r, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>(name),
                                                       const_cast<char*>(name)}, nullptr).code,
                  LUM_OK);
    std::string names = attributeNames(r);
    std::string expected = "<r";
    size_t from = 0;
    while (from <= names.size()) {
        size_t comma = names.find(',', from);
        if (comma == std::string::npos) comma = names.size();
        std::string name = names.substr(from, comma - from);
        expected += " " + name + "=\"" + name + "\"";
        from = comma + 1;
    }
    EXPECT_EQ(saved(), kDecl + expected + "/>");
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
    ASSERT_EQ(loaded.code, LUM_OK) << loaded.message;
    const std::string first = saveToMemory(document.cell);
    HostDocument again;
    ASSERT_EQ(again.loadMemory(first, 0, LUMXML_SOURCE_DIR "/examples/catalog.xml").code, LUM_OK);
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
    LoadAnswer loaded = document.loadMemory(xml, LUM_LOAD_NO_NAMESPACES);  // namespaces off
    ASSERT_EQ(loaded.code, LUM_OK) << loaded.message;
    std::string expected = kDecl;
    for (int i = 1; i < depth; ++i) expected += "<e>";
    expected += "<e/>";
    for (int i = 1; i < depth; ++i) expected += "</e>";
    const std::string bytes = saveToMemory(document.cell);
    EXPECT_EQ(bytes.size(), expected.size());
    EXPECT_TRUE(bytes == expected);
}

}  // namespace
