// The load parser adds an element's attributes itself (wide elements, and
// elements whose type has DTD defaults): seeded random documents must give
// the attributes the stock XercesDOMParser gives, in the same order, with
// the same namespaces, values and specified flags; and a default never
// duplicates or replaces an attribute of the document.
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>

#include "dom/load/text_gathering_parser.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

std::u16string text(const XMLCh* value) {
    return value == nullptr ? u"<null>" : std::u16string(value);
}

// Every element's attributes in map order: name, namespace, value, flags.
std::u16string attributesOf(const DOMDocument* document) {
    std::u16string out;
    std::vector<const DOMNode*> pending{document};
    while (!pending.empty()) {
        const DOMNode* node = pending.back();
        pending.pop_back();
        if (const DOMNamedNodeMap* attributes = node->getAttributes()) {
            out += u"<" + text(node->getNodeName());
            for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
                const auto* attribute = static_cast<const DOMAttr*>(attributes->item(i));
                out += u" " + text(attribute->getNodeName()) + u"{" +
                       text(attribute->getNamespaceURI()) + u"}=" + text(attribute->getValue()) +
                       (attribute->getSpecified() ? u"" : u"!d") +
                       (attribute->isId() ? u"!id" : u"");
            }
            out += u">";
        }
        for (const DOMNode* child = node->getLastChild(); child != nullptr;
             child = child->getPreviousSibling())
            pending.push_back(child);
    }
    return out;
}

template <class Parser>
std::u16string parseWith(const std::string& bytes, bool namespaces) {
    Parser parser;
    HandlerBase quiet;  // errors are ignored; fatal ones throw and end the parse
    parser.setErrorHandler(&quiet);
    parser.setDoNamespaces(namespaces);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), "m");
    try {
        if constexpr (std::is_same_v<Parser, TextGatheringParser>)
            parser.parseGathering(source);
        else
            parser.parse(source);
    } catch (const SAXParseException&) {
        return u"<fatal>";
    }
    return parser.getDocument() != nullptr ? attributesOf(parser.getDocument()) : u"<none>";
}

// Random attributes (some wide elements) and DTD defaults that the stock
// builder handles correctly: unprefixed names, xml:lang, namespace
// declarations and prefixes the document declares itself.
std::string randomDocument(std::mt19937& random, bool withDtd) {
    auto chance = [&](int percent) { return static_cast<int>(random() % 100) < percent; };
    std::string text;
    if (withDtd) {
        text = "<!DOCTYPE r [<!ATTLIST e";
        for (int i = 0; i < 6; ++i)
            if (chance(50))
                text += " d" + std::to_string(i) + " CDATA 'v" + std::to_string(i) + "'";
        if (chance(50)) text += " xml:lang CDATA 'en'";
        if (chance(50)) text += " xmlns:p CDATA #FIXED 'urn:p'";
        if (chance(30)) text += " i ID #IMPLIED";
        text += ">]>";
    }
    text += "<r xmlns:p='urn:p' xmlns:q='urn:q'>";
    const int elements = 1 + static_cast<int>(random() % 6);
    for (int n = 0; n < elements; ++n) {
        const std::string name = chance(70) ? "e" : "f";
        text += "<" + name;
        const bool wide = chance(20);
        const int names = wide ? 40 + static_cast<int>(random() % 30) : 8;
        std::vector<int> order(static_cast<size_t>(names));
        for (int i = 0; i < names; ++i) order[static_cast<size_t>(i)] = i;
        std::shuffle(order.begin(), order.end(), random);
        for (int i : order) {
            if (!wide && !chance(40)) continue;
            if (i == 6)
                text += " p:x='px'";
            else if (i == 7)
                text += " q:y='qy'";
            else if (i < 6)
                text += " d" + std::to_string(i) + "='" + std::to_string(random() % 9) + "'";
            else
                text += " w" + std::to_string(i) + "='" + std::to_string(i) + "'";
        }
        if (withDtd && chance(20)) text += " i='id" + std::to_string(n) + "'";
        text += chance(50) ? "/>" : ">t</" + name + ">";
    }
    return text + "</r>";
}

class ElementAttributes : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::startInternals(); }
};

TEST_F(ElementAttributes, RandomElementsGetTheStockAttributes) {
    std::mt19937 random(20261123);
    for (int round = 0; round < 400; ++round) {
        const std::string document = randomDocument(random, round % 3 != 0);
        for (bool namespaces : {true, false}) {
            EXPECT_EQ(parseWith<XercesDOMParser>(document, namespaces),
                      parseWith<TextGatheringParser>(document, namespaces))
                << document << " namespaces " << namespaces;
        }
    }
}

TEST_F(ElementAttributes, PrefixedDefaultIsNotAddedTwice) {
    const std::string document =
        "<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED 'http://example.org' "
        "tst:att CDATA '1'>]><doc att='1'/>";
    EXPECT_EQ(parseWith<TextGatheringParser>(document, true),
              u"<doc att{<null>}=1 tst:att{http://example.org}=1!d "
              u"xmlns:tst{http://www.w3.org/2000/xmlns/}=http://example.org!d>");
}

TEST_F(ElementAttributes, DefaultDoesNotReplaceTheAuthorsAttributeUnderAnotherPrefix) {
    const std::string document =
        "<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED 'http://example.org' "
        "tst:att CDATA '1'>]><doc xmlns:other='http://example.org' other:att='2'/>";
    EXPECT_EQ(parseWith<TextGatheringParser>(document, true),
              u"<doc other:att{http://example.org}=2 "
              u"xmlns:other{http://www.w3.org/2000/xmlns/}=http://example.org "
              u"xmlns:tst{http://www.w3.org/2000/xmlns/}=http://example.org!d>");
}

}  // namespace
