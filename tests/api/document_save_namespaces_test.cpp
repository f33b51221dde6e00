// Saving documents as a host does: the namespace declarations a save adds
// for the output only and takes away again, and the namespace errors it ends in.
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
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
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
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
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
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    EXPECT_EQ(answer.message, std::string("earlier: ") + kNamespaceErrorText);
}

TEST_F(DocumentSave, DomTextIsCutToTheRoomLeftInTheBuffer) {
    HostDocument document;
    load(document, "<p:r xmlns:p='urn:u'/>");
    documentElement(document.cell)->setAttribute(u"xmlns:p", u"urn:v");
    SaveArgs args;
    args.bufferBefore = std::string(200, 'x');
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    ASSERT_EQ(answer.message.size(), 256u);
    EXPECT_EQ(answer.message,
              std::string(200, 'x') + std::string(kNamespaceErrorText).substr(0, 53) + "...");
}

// ---- declarations for trees built through the methods ------------------------

TEST_F(DocumentSave, DefaultNamespaceElementGainsXmlnsAndTheTreeDoesNot) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"/>");
    EXPECT_EQ(attributeNames(r), "");
}

// A child in no namespace below a default namespace undeclares it.
TEST_F(DocumentSave, ChildWithoutNamespaceBelowADefaultUndeclaresIt) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    appendChild(r, elementNS(nullptr, "c"));
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"><c xmlns=\"\"/></r>");
}

TEST_F(DocumentSave, ChildInTheInheritedNamespaceAddsNothing) {
    void* r = elementNS("urn:u", "p:r");
    appendToDocument(r);
    appendChild(r, elementNS("urn:u", "p:c"));
    EXPECT_EQ(saved(), kDecl + "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(DocumentSave, SamePrefixRedeclaredForAnotherNamespaceBelow) {
    void* r = elementNS("urn:u", "p:r");
    appendToDocument(r);
    appendChild(r, elementNS("urn:v", "p:c"));
    EXPECT_EQ(saved(), kDecl + "<p:r xmlns:p=\"urn:u\"><p:c xmlns:p=\"urn:v\"/></p:r>");
}

// Elements made without namespace support have no local name: no fix-up,
// not even below a default namespace.
TEST_F(DocumentSave, ElementsWithoutNamespaceSupportAreLeftAlone) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    appendChild(r, createNode(document.cell, "c", kElement));
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"><c/></r>");
}

TEST_F(DocumentSave, ElementInNoNamespaceWithNoDefaultInScopeAddsNothing) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    appendChild(r, elementNS(nullptr, "c"));
    EXPECT_EQ(saved(), kDecl + "<r><c/></r>");
}

TEST_F(DocumentSave, PrefixedAttributeGainsItsDeclarationOnItsElement) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("urn:v", "q:at", "1"));
    std::string bytes = saved();
    EXPECT_EQ(bytes, kDecl + "<r q:at=\"1\" xmlns:q=\"urn:v\"/>");
    EXPECT_EQ(attributeNames(r), "q:at");
}

TEST_F(DocumentSave, AttributeInTheXmlNamespaceNeedsNoDeclaration) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("http://www.w3.org/XML/1998/namespace", "xml:lang", "en"));
    EXPECT_EQ(saved(), kDecl + "<r xml:lang=\"en\"/>");
}

TEST_F(DocumentSave, AttributeDeclaredByAnAncestorAddsNothing) {
    void* r = elementNS("urn:v", "q:r");
    appendToDocument(r);
    void* c = elementNS(nullptr, "c");
    appendChild(r, c);
    setAttributeNode(c, attributeNS("urn:v", "q:at", "1"));
    EXPECT_EQ(saved(), kDecl + "<q:r xmlns:q=\"urn:v\"><c q:at=\"1\"/></q:r>");
}

TEST_F(DocumentSave, PrefixedAttributeAgainstItsElementsOwnDeclarationIsANamespaceError) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("http://www.w3.org/2000/xmlns/", "xmlns:q", "urn:one"));
    setAttributeNode(r, attributeNS("urn:two", "q:at", "1"));
    SaveArgs args;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    EXPECT_FALSE(answer.handedOver);
    EXPECT_NE(answer.message.find("namespace"), std::string::npos) << answer.message;
    // The next save fails the same way: the tree was left as it was.
    EXPECT_EQ(save(document.cell, args).code, LUM_ERR_UNEXPECTED);
}

// An explicit undeclaration on the parent does not end the walk upwards: the
// grandparent's non-empty default is found, so the child repeats xmlns="".
TEST_F(DocumentSave, UndeclaredDefaultOnTheParentStillLooksFurtherUp) {
    ASSERT_EQ(document.loadMemory("<A xmlns='urn:u'><B xmlns=''><C/></B></A>").code, LUM_OK);
    EXPECT_EQ(saved(), kDecl + "<A xmlns=\"urn:u\"><B xmlns=\"\"><C xmlns=\"\"/></B></A>");
}

}  // namespace
