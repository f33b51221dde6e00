// The load parser gathers each run of character data and hands it to the
// tree once; the trees it builds must be the ones the stock XercesDOMParser
// builds from the same bytes, node for node, including the partial trees
// left by fatal errors.
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>

#include "dom/load/text_gathering_parser.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "host_test.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

// Keeps parsing quiet: errors are counted, never thrown.
class CountingErrors : public ErrorHandler {
public:
    void warning(const SAXParseException&) override {}
    void error(const SAXParseException&) override { ++count; }
    void fatalError(const SAXParseException&) override { ++count; }
    void resetErrors() override {}
    int count = 0;
};

std::u16string text(const XMLCh* value) {
    return value == nullptr ? u"<null>" : std::u16string(reinterpret_cast<const char16_t*>(value));
}

// A node-by-node description of a tree, iterative so deep trees are fine.
std::u16string describe(const DOMNode* root) {
    std::u16string out;
    std::vector<const DOMNode*> pending{root};
    while (!pending.empty()) {
        const DOMNode* node = pending.back();
        pending.pop_back();
        if (node == nullptr) {
            out += u")";
            continue;
        }
        out += u"(" + std::u16string(1, static_cast<char16_t>(u'0' + node->getNodeType())) +
               u"|" + text(node->getNodeName()) + u"|" + text(node->getNodeValue());
        if (const DOMNamedNodeMap* attributes = node->getAttributes()) {
            for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
                const DOMNode* attribute = attributes->item(i);
                out += u"|@" + text(attribute->getNodeName()) + u"=" +
                       text(attribute->getNodeValue());
            }
        }
        if (node->getNodeType() == DOMNode::TEXT_NODE)
            out += static_cast<const DOMText*>(node)->isIgnorableWhitespace() ? u"|iw" : u"";
        pending.push_back(nullptr);
        std::vector<const DOMNode*> children;
        for (const DOMNode* child = node->getFirstChild(); child != nullptr;
             child = child->getNextSibling())
            children.push_back(child);
        for (auto it = children.rbegin(); it != children.rend(); ++it) pending.push_back(*it);
    }
    return out;
}

template <class Parser>
std::u16string parseWith(const std::string& bytes, bool validate,
                         const std::string& noNamespaceSchema = {}) {
    Parser parser;
    CountingErrors errors;
    parser.setErrorHandler(&errors);
    parser.setDoNamespaces(true);
    if (validate) parser.setValidationScheme(XercesDOMParser::Val_Always);
    if (!noNamespaceSchema.empty()) {
        parser.setDoSchema(true);
        parser.setExternalNoNamespaceSchemaLocation(
            XmlString(noNamespaceSchema.c_str()).get());
    }
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                             "memory");
    if constexpr (std::is_same_v<Parser, TextGatheringParser>)
        parser.parseGathering(source);
    else
        parser.parse(source);
    const DOMDocument* document = parser.getDocument();
    std::u16string tree = document == nullptr ? u"<none>" : describe(document);
    return tree + u"#errors=" + std::u16string(1, static_cast<char16_t>(u'0' + errors.count));
}

void expectSameTrees(const std::string& bytes, bool validate = false,
                     const std::string& noNamespaceSchema = {}) {
    EXPECT_EQ(parseWith<XercesDOMParser>(bytes, validate, noNamespaceSchema),
              parseWith<TextGatheringParser>(bytes, validate, noNamespaceSchema))
        << bytes;
}

class TextGathering : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }
};

const char kRich[] =
    "<?xml version=\"1.0\"?>\n"
    "<!DOCTYPE r [<!ENTITY e \"inner &amp; <b>bold</b> text\"><!ENTITY plain \"words\">]>\n"
    "<r a=\"x &amp; &#233;\">one &amp; two &#x20AC; three&lt;<![CDATA[raw & <cdata>]]>after"
    "<!-- c -->&e;&plain;tail<?pi data?>more&#10;&#13;end</r>\n";

TEST_F(TextGathering, ReferencesBetweenTextPiecesGiveTheSameTree) {
    expectSameTrees("<r>a &amp; b &lt; c &#233; d &#x1F600; e</r>");
}

TEST_F(TextGathering, CdataCommentsPisAndEntityReferencesGiveTheSameTree) {
    expectSameTrees(kRich);
}

TEST_F(TextGathering, EveryPrefixOfARichDocumentGivesTheSamePartialTree) {
    std::string rich = kRich;
    for (size_t length = 0; length <= rich.size(); ++length)
        expectSameTrees(rich.substr(0, length));
}

TEST_F(TextGathering, IgnorableWhitespaceUnderValidationGivesTheSameTree) {
    expectSameTrees(
        "<!DOCTYPE r [<!ELEMENT r (s*)><!ELEMENT s (#PCDATA)>]>\n<r>\n  <s>x &amp; y</s>\n  "
        "<s/>\n</r>",
        true);
}

// A schema that collapses whitespace to nothing makes Xerces hand over
// character data of length 0; the stock parser makes an empty text node of
// it, which a save then writes as <e></e> rather than <e/>.
TEST_F(TextGathering, EmptyTextFromASchemaCollapseIsKept) {
    lumtest::TempDir dir;
    std::string schema = dir.write(
        "t.xsd",
        "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
        "<xs:element name=\"e\" type=\"xs:token\"/></xs:schema>");
    std::u16string tree = parseWith<TextGatheringParser>("<e> </e>", true, schema);
    EXPECT_NE(tree.find(u"(3|#text|)"), std::u16string::npos);
    expectSameTrees("<e> </e>", true, schema);
    expectSameTrees("<e>a<![CDATA[b]]> </e>", true, schema);
}

TEST_F(TextGathering, TextLongerThanTheScannerBufferGivesTheSameTree) {
    std::string xml = "<r>";
    for (int i = 0; i < 20000; ++i) xml += i % 7 == 0 ? "&amp;word " : "plain words ";
    xml += "</r>";
    expectSameTrees(xml);
}

TEST_F(TextGathering, TestDataFilesGiveTheSameTrees) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(LUMXML_TEST_DATA_DIR)) {
        if (entry.path().extension() != ".xml") continue;
        std::ifstream in(entry.path(), std::ios::binary);
        std::stringstream content;
        content << in.rdbuf();
        SCOPED_TRACE(entry.path().string());
        expectSameTrees(content.str());
        ++files;
    }
    EXPECT_GT(files, 5);
}

}  // namespace
