// Saving trees nested a hundred thousand levels deep with namespaces in
// scope: every level is written (the walk keeps its own stack) and every
// namespace lookup answers from the declarations in scope, whatever the
// depth, byte for byte, written directly as UTF-8 and through the
// formatter alike. The trees are built with DOM calls: Xerces' parser
// itself looks a prefix up through every open element, so loading such a
// document takes quadratic time before any save starts.
#include <string>

#include <gtest/gtest.h>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/XMLFormatter.hpp>

#include "dom/save/dom_node_list.h"
#include "dom/save/node_writer.h"
#include "format_capture.h"
#include "frame/deep_stack.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

constexpr int kDepth = 100000;
const XMLCh kXmlnsUri[] = u"http://www.w3.org/2000/xmlns/";

class SaveDeepNamespaces : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals();
        document = DOMImplementationRegistry::getDOMImplementation(u"Core")->createDocument();
    }
    // Xerces releases a tree recursively: on a stack sized for the depth.
    void TearDown() override {
        runForDepth(kDepth, [this] { document->release(); });
    }

    // kDepth elements, each the only child of the one before.
    template <class Make>
    void nest(Make make) {
        DOMNode* parent = document;
        for (int i = 0; i < kDepth; ++i) parent = parent->appendChild(make(i));
    }

    std::string write(bool direct) {
        lumtest::FormatCapture target;
        XMLFormatter formatter(u"UTF-8", &target, XMLFormatter::NoEscapes,
                               XMLFormatter::UnRep_CharRef);
        NodeWriterOptions options;
        options.utf8Target = direct ? &target : nullptr;
        DomNodeList additions;
        NodeWriter(formatter, options, additions).write(document);
        return target.bytes;
    }

    // The text of the same nesting: `first` start tag, then `inner` ones,
    // the innermost empty, then the end tags of `name`.
    static std::string expected(const std::string& first, const std::string& inner,
                                const std::string& name) {
        std::string xml = "<?xml version=\"1.0\" ?>\n" + first;
        for (int i = 1; i < kDepth - 1; ++i) xml += inner;
        xml += inner.substr(0, inner.size() - 1) + "/>";
        for (int i = 1; i < kDepth; ++i) xml += "</" + name + ">";
        return xml;
    }

    void expectBothWays(const std::string& text) {
        const std::string direct = write(true);
        EXPECT_EQ(direct.size(), text.size());
        EXPECT_TRUE(direct == text);
        EXPECT_TRUE(write(false) == text);
    }

    DOMDocument* document = nullptr;
};

TEST_F(SaveDeepNamespaces, DefaultNamespaceIsDeclaredOnceAtTheTop) {
    nest([this](int) { return document->createElementNS(u"urn:x", u"e"); });
    expectBothWays(expected("<e xmlns=\"urn:x\">", "<e>", "e"));
}

TEST_F(SaveDeepNamespaces, PrefixedElementsAndAttributesUnderOneDeclaration) {
    nest([this](int) {
        DOMElement* e = document->createElementNS(u"urn:p", u"p:e");
        e->setAttribute(u"a", u"1");
        e->setAttributeNS(u"urn:p", u"p:b", u"2");
        return e;
    });
    expectBothWays(expected("<p:e a=\"1\" p:b=\"2\" xmlns:p=\"urn:p\">",
                            "<p:e a=\"1\" p:b=\"2\">", "p:e"));
}

TEST_F(SaveDeepNamespaces, EveryLevelDeclaringItsOwnNamespace) {
    nest([this](int) {
        DOMElement* e = document->createElementNS(u"urn:x", u"e");
        e->setAttributeNS(kXmlnsUri, u"xmlns", u"urn:x");
        return e;
    });
    expectBothWays(expected("<e xmlns=\"urn:x\">", "<e xmlns=\"urn:x\">", "e"));
}

TEST_F(SaveDeepNamespaces, NamespacesAlternatingByLevel) {
    nest([this](int i) {
        return document->createElementNS(i % 2 == 0 ? u"urn:a" : u"urn:b", u"e");
    });
    std::string text = "<?xml version=\"1.0\" ?>\n";
    for (int i = 0; i < kDepth; ++i) {
        text += i % 2 == 0 ? "<e xmlns=\"urn:a\"" : "<e xmlns=\"urn:b\"";
        text += i + 1 < kDepth ? ">" : "/>";
    }
    for (int i = 1; i < kDepth; ++i) text += "</e>";
    expectBothWays(text);
}

}  // namespace
