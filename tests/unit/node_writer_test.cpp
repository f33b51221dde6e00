// The node writer's exact bytes for every node type, the namespace
// declarations it adds for the length of a save, and its walk of very deep
// trees.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "dom/save/dom_node_list.h"
#include "dom/save/node_writer.h"
#include "frame/library_state.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

const XMLCh kU[] = u"urn:u";
const XMLCh kV[] = u"urn:v";
const XMLCh kXmlns[] = u"http://www.w3.org/2000/xmlns/";

class StringTarget : public XMLFormatTarget {
public:
    void writeChars(const XMLByte* bytes, XMLSize_t count, XMLFormatter*) override {
        text.append(reinterpret_cast<const char*>(bytes), count);
    }
    std::string text;
};

class NodeWriterTest : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals();
        document = DOMImplementationRegistry::getDOMImplementation(u"Core")->createDocument();
    }
    void TearDown() override {
        if (document != nullptr) document->release();
    }

    // Writes `start` through a formatter in `encoding`; the declarations
    // added for the save are gone again when this returns.
    std::string write(DOMNode* start, NodeWriterOptions options = {},
                      const XMLCh* encoding = u"UTF-8") {
        StringTarget target;
        XMLFormatter formatter(encoding, &target, XMLFormatter::NoEscapes,
                               XMLFormatter::UnRep_CharRef);
        DomNodeList additions;
        NodeWriter(formatter, options, additions).write(start);
        return target.text;
    }

    // Parses `xml` with namespaces and entity reference nodes; the parser
    // keeps the document.
    DOMDocument* parse(const std::string& xml) {
        parser.reset(new XercesDOMParser);
        parser->setDoNamespaces(true);
        parser->setCreateEntityReferenceNodes(true);
        parser->setValidationScheme(XercesDOMParser::Val_Never);
        parser->setLoadExternalDTD(false);
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                 "test");
        parser->parse(source);
        return parser->getDocument();
    }

    DOMElement* root(const XMLCh* name) {
        DOMElement* element = document->createElement(name);
        document->appendChild(element);
        return element;
    }

    DOMDocument* document = nullptr;
    std::unique_ptr<XercesDOMParser> parser;
};

// ---- Document and declaration ---------------------------------------------

TEST_F(NodeWriterTest, EmptyRootWithoutEncodingHasPlainDeclarationAndLineFeed) {
    root(u"r");
    EXPECT_EQ(write(document), "<?xml version=\"1.0\" ?>\n<r/>");
}

TEST_F(NodeWriterTest, RequestedEncodingIsNamedInTheDeclaration) {
    root(u"r");
    NodeWriterOptions options;
    options.encoding = u"UTF-8";
    EXPECT_EQ(write(document, options), "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<r/>");
}

TEST_F(NodeWriterTest, DocumentWithoutChildrenIsTheDeclarationAlone) {
    EXPECT_EQ(write(document), "<?xml version=\"1.0\" ?>\n");
}

TEST_F(NodeWriterTest, NullStartNodeWritesNothing) { EXPECT_EQ(write(nullptr), ""); }

TEST_F(NodeWriterTest, ChildrenOfTheDocumentFollowInOrderWithoutLineBreaks) {
    document->appendChild(document->createComment(u"c"));
    document->appendChild(document->createProcessingInstruction(u"p", u"d"));
    root(u"r");
    document->appendChild(document->createComment(u"e"));
    EXPECT_EQ(write(document), "<?xml version=\"1.0\" ?>\n<!--c--><?p d?><r/><!--e-->");
}

// ---- Elements and attributes ------------------------------------------------

TEST_F(NodeWriterTest, ElementWithChildrenHasEndTag) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createElement(u"a"));
    DOMElement* b = document->createElement(u"b");
    b->appendChild(document->createTextNode(u"t"));
    r->appendChild(b);
    EXPECT_EQ(write(r), "<r><a/><b>t</b></r>");
}

TEST_F(NodeWriterTest, AttributesFollowTheNameInMapOrder) {
    DOMElement* r = root(u"r");
    r->setAttribute(u"z", u"1");
    r->setAttribute(u"a", u"2");
    EXPECT_EQ(write(r), "<r a=\"2\" z=\"1\"/>");
}

TEST_F(NodeWriterTest, AttributeValueWithStdEscapesEscapesAllFive) {
    DOMElement* r = root(u"r");
    r->setAttribute(u"v", u"a<\"'>&");
    EXPECT_EQ(write(r), "<r v=\"a&lt;&quot;&apos;&gt;&amp;\"/>");
}

TEST_F(NodeWriterTest, AttributeValueWithAttrEscapesKeepsApostropheAndGreaterThan) {
    DOMElement* r = root(u"r");
    r->setAttribute(u"v", u"a<\"'>&");
    NodeWriterOptions options;
    options.attrEscapes = true;
    EXPECT_EQ(write(r, options), "<r v=\"a&lt;&quot;'>&amp;\"/>");
}

TEST_F(NodeWriterTest, AttributeStartNodeWritesNothing) {
    DOMElement* r = root(u"r");
    r->setAttribute(u"v", u"1");
    EXPECT_EQ(write(r->getAttributeNode(u"v")), "");
}

// ---- Character data -----------------------------------------------------------

TEST_F(NodeWriterTest, TextWithStdEscapes) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createTextNode(u"a<b&c"));
    EXPECT_EQ(write(r), "<r>a&lt;b&amp;c</r>");
}

TEST_F(NodeWriterTest, TextWithStdEscapesEscapesQuotesAndGreaterThan) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createTextNode(u"\"'>"));
    EXPECT_EQ(write(r), "<r>&quot;&apos;&gt;</r>");
}

TEST_F(NodeWriterTest, TextWithCharEscapesKeepsQuotes) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createTextNode(u"a<b&c\"'>"));
    NodeWriterOptions options;
    options.textCharEscapes = true;
    EXPECT_EQ(write(r, options), "<r>a&lt;b&amp;c\"'&gt;</r>");
}

TEST_F(NodeWriterTest, CommentIsWrittenUnescaped) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createComment(u" a<b&c "));
    EXPECT_EQ(write(r), "<r><!-- a<b&c --></r>");
}

TEST_F(NodeWriterTest, CDataSectionIsWrittenUnescaped) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createCDATASection(u"a<b&c\"'"));
    EXPECT_EQ(write(r), "<r><![CDATA[a<b&c\"']]></r>");
}

TEST_F(NodeWriterTest, ProcessingInstructionWithEmptyDataHasNoBlank) {
    EXPECT_EQ(write(document->createProcessingInstruction(u"t", u"")), "<?t?>");
}

TEST_F(NodeWriterTest, ProcessingInstructionDataFollowsOneBlank) {
    EXPECT_EQ(write(document->createProcessingInstruction(u"t", u"a<b")), "<?t a<b?>");
}

TEST_F(NodeWriterTest, CharactersTheEncodingCannotHoldBecomeCharacterReferences) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createTextNode(u"\u00e9\u20ac\U0001F600<"));
    EXPECT_EQ(write(r, {}, u"ISO-8859-1"), "<r>\xe9&#x20AC;&#x1F600;&lt;</r>");
}

TEST_F(NodeWriterTest, Utf16OutputCarriesNulBytes) {
    root(u"r");
    const std::string expected("<\0r\0/\0>\0", 8);
    std::string text = write(document->getDocumentElement(), {}, u"UTF-16LE");
    EXPECT_EQ(text, expected);
}

// A high surrogate without its low half would make the formatter loop for
// ever (UTF-8) or read past the text; it is written as a reference.
TEST_F(NodeWriterTest, LoneHighSurrogateAtTheEndIsAReference) {
    DOMElement* r = root(u"r");
    const XMLCh text[] = {u'a', 0xD800, 0};
    r->appendChild(document->createTextNode(text));
    EXPECT_EQ(write(r), "<r>a&#xD800;</r>");
    EXPECT_EQ(write(r, {}, u"ISO-8859-1"), "<r>a&#xD800;</r>");
}

TEST_F(NodeWriterTest, LoneHighSurrogateInsideTextDoesNotSwallowTheNextCharacter) {
    DOMElement* r = root(u"r");
    const XMLCh text[] = {u'a', 0xDBFF, u'b', 0xD83D, 0xDE00, 0};
    r->appendChild(document->createTextNode(text));
    EXPECT_EQ(write(r), "<r>a&#xDBFF;b\xf0\x9f\x98\x80</r>");
    EXPECT_EQ(write(r, {}, u"US-ASCII"), "<r>a&#xDBFF;b&#x1F600;</r>");
}

// ---- Document types and entities ------------------------------------------------

TEST_F(NodeWriterTest, DocumentTypeWithPublicAndSystemId) {
    DOMDocumentType* type = document->createDocumentType(u"r", u"-//P//EN", u"r.dtd");
    EXPECT_EQ(write(type), "<!DOCTYPE r PUBLIC \"-//P//EN\" \"r.dtd\">");
}

TEST_F(NodeWriterTest, DocumentTypeWithPublicIdWritesAnEmptySystemLiteral) {
    DOMDocumentType* type = document->createDocumentType(u"r", u"-//P//EN", u"");
    EXPECT_EQ(write(type), "<!DOCTYPE r PUBLIC \"-//P//EN\" \"\">");
}

TEST_F(NodeWriterTest, DocumentTypeWithSystemIdOnly) {
    DOMDocumentType* type = document->createDocumentType(u"r", u"", u"r.dtd");
    EXPECT_EQ(write(type), "<!DOCTYPE r SYSTEM \"r.dtd\">");
}

TEST_F(NodeWriterTest, DocumentTypeWithEmptyIdsIsTheNameAlone) {
    DOMDocumentType* type = document->createDocumentType(u"r", u"", u"");
    EXPECT_EQ(write(type), "<!DOCTYPE r>");
}

TEST_F(NodeWriterTest, DocumentTypeWithInternalSubsetAndNoLineBreak) {
    DOMDocument* parsed = parse("<!DOCTYPE r [<!ELEMENT r ANY>]><r/>");
    EXPECT_EQ(write(parsed), "<?xml version=\"1.0\" ?>\n<!DOCTYPE r[<!ELEMENT r ANY>]><r/>");
}

TEST_F(NodeWriterTest, EntityReferenceIsWrittenAsItsExpansion) {
    DOMDocument* parsed =
        parse("<!DOCTYPE r [<!ENTITY e \"x<y a='1'>&amp;</y>z\">]><r>[&e;]</r>");
    EXPECT_EQ(write(parsed->getDocumentElement()), "<r>[x<y a=\"1\">&amp;</y>z]</r>");
}

TEST_F(NodeWriterTest, EntityReferenceWithoutChildrenWritesNothing) {
    DOMElement* r = root(u"r");
    r->appendChild(document->createEntityReference(u"e"));
    EXPECT_EQ(write(r), "<r></r>");
}

TEST_F(NodeWriterTest, EntityDeclarationForms) {
    DOMDocument* parsed = parse(
        "<!DOCTYPE r [<!NOTATION n SYSTEM 'n'>"
        "<!ENTITY internal 'v'>"
        "<!ENTITY sys SYSTEM 's.xml'>"
        "<!ENTITY pub PUBLIC '-//P//EN' 'p.xml'>"
        "<!ENTITY data SYSTEM 'd.bin' NDATA n>]><r/>");
    DOMNamedNodeMap* entities = parsed->getDoctype()->getEntities();
    EXPECT_EQ(write(entities->getNamedItem(u"internal")), "<!ENTITY internal>\r\n");
    EXPECT_EQ(write(entities->getNamedItem(u"sys")), "<!ENTITY sysSYSTEM \"s.xml\">\r\n");
    EXPECT_EQ(write(entities->getNamedItem(u"pub")),
              "<!ENTITY pubPUBLIC \"-//P//EN\"SYSTEM \"p.xml\">\r\n");
    EXPECT_EQ(write(entities->getNamedItem(u"data")),
              "<!ENTITY dataSYSTEM \"d.bin\"NDATA \"n\">\r\n");
}

TEST_F(NodeWriterTest, NotationAndFragmentWriteNothing) {
    DOMDocument* parsed = parse("<!DOCTYPE r [<!NOTATION n SYSTEM 'n'>]><r/>");
    EXPECT_EQ(write(parsed->getDoctype()->getNotations()->getNamedItem(u"n")), "");
    DOMDocumentFragment* fragment = document->createDocumentFragment();
    fragment->appendChild(document->createElement(u"a"));
    EXPECT_EQ(write(fragment), "");
    fragment->release();
}

// ---- Namespace declarations -----------------------------------------------------

TEST_F(NodeWriterTest, PrefixedElementGainsItsDeclarationForTheSaveOnly) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    EXPECT_EQ(write(document), "<?xml version=\"1.0\" ?>\n<p:r xmlns:p=\"urn:u\"/>");
    EXPECT_EQ(r->getAttributes()->getLength(), 0u);
    EXPECT_EQ(r->getAttributeNodeNS(kXmlns, u"p"), nullptr);
}

TEST_F(NodeWriterTest, DefaultNamespaceIsDeclaredOnceForTheSubtree) {
    DOMElement* r = document->createElementNS(kU, u"r");
    document->appendChild(r);
    r->appendChild(document->createElementNS(kU, u"c"));
    EXPECT_EQ(write(r), "<r xmlns=\"urn:u\"><c/></r>");
    EXPECT_FALSE(r->hasAttributes());
}

TEST_F(NodeWriterTest, ElementInNoNamespaceUnderADefaultUndeclaresIt) {
    DOMElement* r = document->createElementNS(kU, u"r");
    document->appendChild(r);
    r->appendChild(document->createElementNS(nullptr, u"c"));
    EXPECT_EQ(write(r), "<r xmlns=\"urn:u\"><c xmlns=\"\"/></r>");
}

TEST_F(NodeWriterTest, ElementInNoNamespaceWithNoDefaultInScopeAddsNothing) {
    DOMElement* r = document->createElementNS(nullptr, u"r");
    document->appendChild(r);
    EXPECT_EQ(write(r), "<r/>");
}

TEST_F(NodeWriterTest, ElementMadeWithoutNamespaceSupportAddsNothing) {
    DOMElement* r = document->createElementNS(kU, u"r");
    document->appendChild(r);
    r->appendChild(document->createElement(u"c"));
    EXPECT_EQ(write(r), "<r xmlns=\"urn:u\"><c/></r>");
}

TEST_F(NodeWriterTest, PrefixedAttributeGainsItsDeclarationAfterTheOthers) {
    DOMElement* r = root(u"r");
    r->setAttributeNS(kV, u"q:a", u"1");
    EXPECT_EQ(write(r), "<r q:a=\"1\" xmlns:q=\"urn:v\"/>");
    EXPECT_EQ(r->getAttributes()->getLength(), 1u);
}

TEST_F(NodeWriterTest, XmlPrefixNeedsNoDeclaration) {
    DOMElement* r = root(u"r");
    r->setAttributeNS(u"http://www.w3.org/XML/1998/namespace", u"xml:lang", u"en");
    EXPECT_EQ(write(r), "<r xml:lang=\"en\"/>");
}

TEST_F(NodeWriterTest, DeclarationOnAnAncestorIsInScope) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    r->setAttributeNS(kXmlns, u"xmlns:p", kU);
    DOMElement* c = document->createElementNS(kU, u"p:c");
    r->appendChild(c);
    EXPECT_EQ(write(r), "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
    // Written alone, the child still finds its parent's declaration.
    EXPECT_EQ(write(c), "<p:c/>");
}

TEST_F(NodeWriterTest, NearerDeclarationWins) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    DOMElement* m = document->createElementNS(kV, u"p:m");
    r->appendChild(m);
    m->appendChild(document->createElementNS(kU, u"p:c"));
    EXPECT_EQ(write(r),
              "<p:r xmlns:p=\"urn:u\"><p:m xmlns:p=\"urn:v\"><p:c xmlns:p=\"urn:u\"/></p:m></p:r>");
}

// Only a non-empty value ends the search up the ancestors: an undeclared
// default nearer to the element is passed over.
TEST_F(NodeWriterTest, EmptyDefaultOnAnAncestorDoesNotEndTheSearch) {
    DOMElement* r = document->createElementNS(kU, u"r");
    document->appendChild(r);
    r->setAttributeNS(kXmlns, u"xmlns", kU);
    DOMElement* m = document->createElementNS(nullptr, u"m");
    m->setAttributeNS(kXmlns, u"xmlns", u"");
    r->appendChild(m);
    m->appendChild(document->createElementNS(kU, u"c"));
    EXPECT_EQ(write(r), "<r xmlns=\"urn:u\"><m xmlns=\"\"><c/></m></r>");
}

TEST_F(NodeWriterTest, OwnDeclarationWithAnotherNamespaceIsANamespaceError) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    r->setAttributeNS(kXmlns, u"xmlns:p", kV);
    r->setAttributeNS(kV, u"q:a", u"1");
    try {
        write(r);
        FAIL() << "no DOM error";
    } catch (const DOMException& e) {
        EXPECT_EQ(e.code, DOMException::NAMESPACE_ERR);
    }
    EXPECT_EQ(r->getAttributes()->getLength(), 2u);
}

TEST_F(NodeWriterTest, OutputBeforeANamespaceErrorStaysInTheTarget) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    r->setAttributeNS(kXmlns, u"xmlns:p", kV);
    StringTarget target;
    XMLFormatter formatter(u"UTF-8", &target, XMLFormatter::NoEscapes,
                           XMLFormatter::UnRep_CharRef);
    DomNodeList additions;
    EXPECT_THROW(NodeWriter(formatter, {}, additions).write(document), DOMException);
    EXPECT_EQ(target.text, "<?xml version=\"1.0\" ?>\n<p:r");
}

TEST_F(NodeWriterTest, DeclarationsAddedBeforeAFailureAreRemovedAgain) {
    DOMElement* r = document->createElementNS(kU, u"p:r");
    document->appendChild(r);
    DOMElement* c = document->createElementNS(kU, u"q:c");
    c->setAttributeNS(kXmlns, u"xmlns:q", kV);
    r->appendChild(c);
    EXPECT_THROW(write(document), DOMException);
    EXPECT_FALSE(r->hasAttributes());
    EXPECT_EQ(c->getAttributes()->getLength(), 1u);
}

// The attribute map is kept sorted by name and is live: a declaration
// added while the first attributes are checked moves the later ones, and
// only the first N positions (N counted before any addition) are checked.
TEST_F(NodeWriterTest, PrefixedAttributesAreCheckedByPositionInTheLiveMap) {
    DOMElement* r = root(u"r");
    r->setAttributeNS(kU, u"y:a", u"1");
    r->setAttributeNS(kV, u"z:b", u"2");
    EXPECT_EQ(write(r), "<r xmlns:y=\"urn:u\" y:a=\"1\" z:b=\"2\"/>");
}

// ---- Depth ------------------------------------------------------------------------

TEST_F(NodeWriterTest, MillionLevelsDeepIsWrittenWithoutTheCallStack) {
    const int depth = 1000000;
    // Built from the innermost element outwards: appending to a parent
    // that has no parent yet checks no ancestors.
    DOMElement* inner = document->createElementNS(nullptr, u"e");
    for (int i = 1; i < depth; ++i) {
        DOMElement* outer = document->createElementNS(nullptr, u"e");
        outer->appendChild(inner);
        inner = outer;
    }
    document->appendChild(inner);
    std::string expected = "<?xml version=\"1.0\" ?>\n";
    expected.reserve(expected.size() + 7u * depth);
    for (int i = 1; i < depth; ++i) expected += "<e>";
    expected += "<e/>";
    for (int i = 1; i < depth; ++i) expected += "</e>";
    std::string text = write(document);
    EXPECT_EQ(text.size(), expected.size());
    EXPECT_TRUE(text == expected);
}

}  // namespace
