// The save's fast paths against the ways they stand in for, on seeded
// random input:
//   - the direct UTF-8 encoding of a text or markup (Utf8Escaper::encodeText)
//     against the formatter route every save took before (writeFormatted);
//   - a whole save through the node writer with UTF-8 written directly
//     against the same save with every byte through the formatter, and the
//     namespace fix-up's shortcuts against its full lookups, on random
//     trees (namespaces, declarations, attributes, text with escapes,
//     surrogate pairs, lone surrogates and characters no 8-bit code page
//     holds).
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/XMLFormatter.hpp>

#include "dom/save/dom_node_list.h"
#include "dom/save/formatter_text.h"
#include "dom/save/node_writer.h"
#include "format_capture.h"
#include "out/utf8_escaper.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

const XMLFormatter::EscapeFlags kFlags[] = {XMLFormatter::NoEscapes, XMLFormatter::StdEscapes,
                                            XMLFormatter::AttrEscapes, XMLFormatter::CharEscapes};
const XMLCh kUtf8[] = u"UTF-8";

// Characters of every kind: ASCII controls, markup, letters; two- and
// three-byte characters, among them ones no 8-bit code page holds; the
// edges of the basic plane; surrogate pairs; lone surrogates.
std::u16string randomText(std::mt19937& random, size_t maxLength, bool loneSurrogates) {
    static const char16_t kPool[] = {u'a',      u'Z',      u'0',      u' ',      u'<',
                                     u'>',      u'&',      u'"',      u'\'',     u'\n',
                                     u'\r',     u'\t',     u'\x01',   u'\x1f',   u'\x7f',
                                     u']',      u'-',      u'?',      u'\u0080', u'\u00a0',
                                     u'\u00e9', u'\u00ff', u'\u0100', u'\u0152', u'\u07ff',
                                     u'\u0800', u'\u20ac', u'\u2028', u'\u4e2d', u'\ud7ff',
                                     u'\ue000', u'\ufeff', u'\ufffd', u'\ufffe', u'\uffff'};
    std::u16string text;
    const size_t length = random() % (maxLength + 1);
    while (text.size() < length) {
        const unsigned kind = random() % 20;
        if (kind == 0) {
            // A surrogate pair from anywhere in the planes above the basic one.
            const uint32_t code = 0x10000 + random() % 0x100000;
            text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else if (kind == 1 && loneSurrogates) {
            text += static_cast<char16_t>(0xD800 + random() % 0x800);
        } else if (kind < 8) {
            text += static_cast<char16_t>(0x20 + random() % 0x5F);
        } else {
            text += kPool[random() % (sizeof kPool / sizeof kPool[0])];
        }
    }
    return text;
}

bool holdsLoneSurrogate(const std::u16string& text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            return true;
        }
    }
    return false;
}

const XMLCh* units(const std::u16string& text) { return reinterpret_cast<const XMLCh*>(text.data()); }

class SaveFastPaths : public ::testing::Test {
protected:
    void SetUp() override { lumtest::startInternals(); }

    // The bytes of the formatter route a save takes for `text`.
    static std::string formatted(const std::u16string& text, XMLFormatter::EscapeFlags flags) {
        lumtest::FormatCapture capture;
        XMLFormatter formatter(kUtf8, &capture, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef);
        writeFormatted(formatter, units(text), text.size(), flags);
        return capture.bytes;
    }

    // The direct bytes, or "<declined>" when the fast path leaves the text
    // to the formatter.
    static std::string direct(const std::u16string& text, XMLFormatter::EscapeFlags flags) {
        const Utf8Escaper& escaper = Utf8Escaper::instance();
        std::string out(escaper.maxBytes(text.size()) + 1, '\0');
        char* end = escaper.encodeText(units(text), text.size(), flags, &out[0]);
        if (end == nullptr) return "<declined>";
        out.resize(static_cast<size_t>(end - &out[0]));
        return out;
    }
};

// ---- The direct encoding ------------------------------------------------------

TEST_F(SaveFastPaths, EncodedTextEqualsTheFormatterOnRandomText) {
    std::mt19937 random(1701);
    int declined = 0;
    for (int round = 0; round < 4000; ++round) {
        const std::u16string text = randomText(random, 60, round % 4 == 0);
        for (XMLFormatter::EscapeFlags flags : kFlags) {
            const std::string fast = direct(text, flags);
            if (fast == "<declined>") {
                // Only a lone surrogate sends a text to the formatter.
                ASSERT_TRUE(holdsLoneSurrogate(text)) << "round " << round;
                ++declined;
                continue;
            }
            ASSERT_EQ(fast, formatted(text, flags)) << "round " << round << ", flags " << flags;
        }
    }
    EXPECT_GT(declined, 0);
}

TEST_F(SaveFastPaths, SurrogatePairsAreTheirFourByteForm) {
    const std::u16string text = u"a\U0001D11E\U0010FFFF\U00010000b";
    EXPECT_EQ(direct(text, XMLFormatter::StdEscapes),
              "a\xF0\x9D\x84\x9E\xF4\x8F\xBF\xBF\xF0\x90\x80\x80"
              "b");
    EXPECT_EQ(direct(text, XMLFormatter::StdEscapes), formatted(text, XMLFormatter::StdEscapes));
}

TEST_F(SaveFastPaths, LoneSurrogatesAndZeroUnitsAreLeftToTheFormatter) {
    EXPECT_EQ(direct(u"a\xD800", XMLFormatter::StdEscapes), "<declined>");
    EXPECT_EQ(direct(u"a\xD800z", XMLFormatter::NoEscapes), "<declined>");
    EXPECT_EQ(direct(u"\xDC00", XMLFormatter::NoEscapes), "<declined>");
    EXPECT_EQ(direct(std::u16string(u"a\0b", 3), XMLFormatter::NoEscapes), "<declined>");
}

TEST_F(SaveFastPaths, LongAsciiRunsAndEscapesAtEitherEnd) {
    const std::u16string middle(5000, u'x');
    for (const std::u16string& text :
         {u"&" + middle, middle + u"<", u"\"" + middle + u"'", middle + u"\u00e9" + middle}) {
        for (XMLFormatter::EscapeFlags flags : kFlags)
            EXPECT_EQ(direct(text, flags), formatted(text, flags));
    }
}

// ---- Whole saves of random trees --------------------------------------------------

const XMLCh* const kUris[] = {nullptr, u"urn:a", u"urn:b", u"urn:\u00e9t\u00e9"};
const XMLCh* const kPrefixes[] = {nullptr, u"p", u"q", u"\u00e9l"};
const XMLCh* const kLocalNames[] = {u"e", u"item", u"\u00e9l\u00e9ment", u"\u4e2d", u"x-y.z"};
const XMLCh kXmlnsUri[] = u"http://www.w3.org/2000/xmlns/";

class RandomTree {
public:
    RandomTree(DOMDocument* document, std::mt19937& random) : document_(document), random_(random) {}

    void build(int nodes) {
        DOMElement* root = element();
        document_->appendChild(root);
        std::vector<DOMElement*> elements{root};
        for (int i = 0; i < nodes; ++i) {
            DOMElement* parent = elements[random_() % elements.size()];
            // Deeper trees: prefer the newest elements as parents.
            if (random_() % 2 == 0) parent = elements.back();
            DOMNode* child = node();
            parent->appendChild(child);
            if (child->getNodeType() == DOMNode::ELEMENT_NODE)
                elements.push_back(static_cast<DOMElement*>(child));
        }
    }

private:
    std::u16string qualified(const XMLCh* prefix, const XMLCh* local) {
        std::u16string name;
        if (prefix != nullptr) name = std::u16string(prefix) + u":";
        return name + local;
    }
    template <class T, size_t N>
    T pick(T const (&items)[N]) {
        return items[random_() % N];
    }

    DOMElement* element() {
        const XMLCh* uri = pick(kUris);
        // A prefix needs a namespace.
        const XMLCh* prefix = uri == nullptr ? nullptr : pick(kPrefixes);
        const std::u16string name = qualified(prefix, pick(kLocalNames));
        DOMElement* e = random_() % 10 == 0 ? document_->createElement(units(name))
                                            : document_->createElementNS(uri, units(name));
        for (unsigned n = random_() % 4; n > 0; --n) attribute(e);
        if (random_() % 8 == 0) declaration(e, prefix, uri);
        return e;
    }

    void attribute(DOMElement* e) {
        const std::u16string value = randomText(random_, 12, true);
        const XMLCh* uri = pick(kUris);
        if (uri == nullptr || random_() % 3 == 0) {
            e->setAttribute(units(u"a" + std::u16string(1, u'0' + random_() % 10)), units(value));
            return;
        }
        // Mostly one prefix per namespace; now and then any (which may
        // clash with a declaration on the element: a namespace error).
        const XMLCh* prefix = uri == kUris[1] ? u"ra" : uri == kUris[2] ? u"rb" : u"rc";
        if (random_() % 8 == 0) prefix = pick(kPrefixes);
        if (prefix == nullptr) prefix = u"r";
        e->setAttributeNS(uri, units(qualified(prefix, u"at")), units(value));
    }

    // Declarations of their own: the element's own namespace (nothing to
    // add), another one (a namespace error when its prefix is used here),
    // an empty default, or one the subtree may use.
    void declaration(DOMElement* e, const XMLCh* prefix, const XMLCh* uri) {
        if (random_() % 2 == 0) {
            prefix = pick(kPrefixes);
            uri = pick(kUris);
        }
        if (prefix == nullptr)
            e->setAttributeNS(kXmlnsUri, u"xmlns", uri == nullptr ? u"" : uri);
        else if (uri != nullptr)
            e->setAttributeNS(kXmlnsUri, units(qualified(u"xmlns", prefix)), uri);
    }

    DOMNode* node() {
        switch (random_() % 8) {
            case 0:
            case 1:
            case 2:
                return element();
            case 3:
                return document_->createComment(units(randomText(random_, 10, false)));
            case 4:
                return document_->createCDATASection(units(randomText(random_, 10, false)));
            case 5:
                return document_->createProcessingInstruction(
                    u"pi", units(randomText(random_, 6, false)));
            default:
                return document_->createTextNode(units(randomText(random_, 30, true)));
        }
    }

    DOMDocument* document_;
    std::mt19937& random_;
};

struct Written {
    std::string bytes;
    bool namespaceError = false;
    bool operator==(const Written& other) const {
        return bytes == other.bytes && namespaceError == other.namespaceError;
    }
};

Written writeTree(DOMNode* start, bool direct, bool shortcuts, bool attrEscapes) {
    lumtest::FormatCapture target;
    XMLFormatter formatter(kUtf8, &target, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef);
    NodeWriterOptions options;
    options.encoding = kUtf8;
    options.attrEscapes = attrEscapes;
    options.textCharEscapes = attrEscapes;
    options.utf8Target = direct ? &target : nullptr;
    options.namespaceShortcuts = shortcuts;
    DomNodeList additions;
    Written written;
    try {
        NodeWriter(formatter, options, additions).write(start);
    } catch (const DOMException& e) {
        written.namespaceError = e.code == DOMException::NAMESPACE_ERR;
    }
    written.bytes = target.bytes;
    return written;
}

TEST_F(SaveFastPaths, RandomTreesSaveAsThroughTheFormatterAndTheFullLookups) {
    std::mt19937 random(4242);
    int errors = 0;
    for (int round = 0; round < 300; ++round) {
        DOMDocument* document =
            DOMImplementationRegistry::getDOMImplementation(u"Core")->createDocument();
        RandomTree(document, random).build(5 + static_cast<int>(random() % 60));
        const bool attrEscapes = round % 3 == 0;
        // The whole document, and a subtree (its ancestors' declarations
        // answer from above the start).
        DOMNode* starts[] = {document, document->getDocumentElement()->getLastChild()};
        for (DOMNode* start : starts) {
            if (start == nullptr) continue;
            const Written slow = writeTree(start, false, false, attrEscapes);
            errors += slow.namespaceError;
            ASSERT_EQ(writeTree(start, true, true, attrEscapes), slow) << "round " << round;
            ASSERT_EQ(writeTree(start, true, false, attrEscapes), slow) << "round " << round;
            ASSERT_EQ(writeTree(start, false, true, attrEscapes), slow) << "round " << round;
        }
        document->release();
    }
    // Both outcomes were seen.
    EXPECT_GT(errors, 0);
    EXPECT_LT(errors, 500);
}

}  // namespace
