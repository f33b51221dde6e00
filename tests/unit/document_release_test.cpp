// Releasing whole documents without DOMDocument::release()'s user-data walk:
// every kind of document type goes with its document, documents that carry
// the host record go whole, and depth costs no stack. Leaks and bad frees
// are the sanitizer build's to find.
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "dom/methods/doc_user_data.h"
#include "dom/methods/document_release.h"
#include "frame/library_state.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

class DocumentRelease : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }

    static DOMImplementation* implementation() {
        return DOMImplementationRegistry::getDOMImplementation(u"Core");
    }

    static DOMDocument* parse(const std::string& bytes) {
        XercesDOMParser parser;
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                 "memory");
        parser.parse(source);
        return parser.adoptDocument();
    }
};

TEST_F(DocumentRelease, ReleasesADocumentWithoutDocumentType) {
    DOMDocument* document = implementation()->createDocument(nullptr, u"root", nullptr);
    attachUserData(asNode(document), new DocUserData);
    delete detachUserData(asNode(document));
    releaseDocument(document);
}

TEST_F(DocumentRelease, ReleasesAParsedDocumentType) {
    DOMDocument* document = parse("<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>");
    ASSERT_NE(document, nullptr);
    ASSERT_NE(document->getDoctype(), nullptr);
    releaseDocument(document);
}

// Xerces' replaceChild(type, type) on a document takes the type out of the
// children while the document still names it as its type.
TEST_F(DocumentRelease, ReleasesADocumentTypeDetachedButStillNamed) {
    DOMDocument* document = parse("<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>");
    ASSERT_NE(document, nullptr);
    DOMDocumentType* type = document->getDoctype();
    document->replaceChild(type, type);
    ASSERT_EQ(document->getDoctype(), type);
    ASSERT_EQ(type->getParentNode(), nullptr);
    attachUserData(asNode(document), new DocUserData);
    delete detachUserData(asNode(document));
    releaseDocument(document);
}

TEST_F(DocumentRelease, ReleasesADocumentTypeMadeOnTheGlobalHeap) {
    DOMDocumentType* type = implementation()->createDocumentType(u"r", u"-//P", u"r.dtd");
    DOMDocument* document = implementation()->createDocument(nullptr, u"r", type);
    ASSERT_EQ(document->getDoctype(), type);
    releaseDocument(document);
}

TEST_F(DocumentRelease, ReleasesATreeNestedAMillionDeepInPlace) {
    std::string xml;
    for (int i = 0; i < 1000000; ++i) xml += "<e>";
    for (int i = 0; i < 1000000; ++i) xml += "</e>";
    XercesDOMParser parser;
    parser.setDoNamespaces(false);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "memory");
    parser.parse(source);
    DOMDocument* document = parser.adoptDocument();
    ASSERT_NE(document, nullptr);
    attachUserData(asNode(document), new DocUserData);
    delete detachUserData(asNode(document));
    releaseDocument(document);
}

TEST_F(DocumentRelease, NullIsNothingToRelease) { releaseDocument(nullptr); }

}  // namespace
