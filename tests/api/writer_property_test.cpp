// Property: random well-formed trees written through the writer with strict
// checks on are accepted (result 0 for every command) and parse back, with
// Xerces-C, to the same infoset: element and attribute names with their
// namespace URIs, attribute values, text (character data, CDATA sections
// and entity references together), comments and processing instructions.
// The same trees written in formatted mode give the same infoset apart
// from whitespace.
//
// The generator plays a careful host: a namespaced attribute always has a
// prefix, and that prefix is declared on its element; an element in no
// namespace below a namespaced one un-declares the default namespace
// (xmlns=""), since the writer never does that by itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "dom_peek.h"
#include "host_test.h"
#include "lumxml.h"
#include "writer_host.h"

XERCES_CPP_NAMESPACE_USE
using lumtest::HostWriter;

namespace {

// ---- The generated tree ------------------------------------------------------

struct Attr {
    std::string prefix;  // empty: none
    std::string local;
    std::string uri;     // empty: no namespace
    std::string value;
};

struct Element;

enum class Kind { kElement, kText, kEntity, kCdata, kComment, kPi };

struct Node {
    Kind kind;
    std::string text;  // text, CDATA, comment, PI target, entity name
    std::string data;  // PI data
    std::shared_ptr<Element> element;
};

struct Element {
    std::string prefix;
    std::string local;
    std::string uri;
    std::vector<Attr> attrs;
    // Namespace declarations the host adds: prefix ("" = default) and URI
    // ("" with the default namespace: un-declaring it).
    std::vector<std::pair<std::string, std::string>> declarations;
    bool attrsAsList = false;  // through the start command's list, else command 10/11
    std::vector<Node> children;
};

struct Document {
    std::vector<Node> prolog;
    std::shared_ptr<Element> root;
    std::vector<Node> epilog;
    std::string encoding;  // "" for the default
};

const char* const kUris[] = {"urn:lumxml:a", "urn:lumxml:b", "http://example.com/ns?x=1&y=\"2\"",
                             "urn:\xC3\xA9t\xC3\xA9"};
const char* const kElementPrefixes[] = {"p", "q", "\xC3\xA9"};
const char* const kAttrPrefixes[] = {"a1", "a2"};
const char* const kLocals[] = {"a", "b", "item", "x", "y", "n-1", "_u", "v.2", "\xC3\xA9l"};
const char* const kPiTargets[] = {"pi", "target-1", "x-y", "go"};
const char* const kEntities[][2] = {{"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""},
                                    {"apos", "'"}};
// Pieces of text: markup characters, line breaks, tabs and characters
// beyond ASCII (one outside the basic plane).
const char* const kTextPieces[] = {"a", "bc", " ", "<", "&", ">", "\"", "'", "]]>", "\n",
                                   "\t", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9D\x84\x9E", "x y"};
// As above, where no reference can stand for a character: no "]]>", no
// "--", no "?>"; only characters that every tried encoding holds.
const char* const kPlainPieces[] = {"a", "bc", " ", "<", "&", ">", "\"", "'", "]", "\n",
                                    "\t", "\xC3\xA9", "x y", "-z"};
const char* const kEncodings[] = {"", "UTF-8", "UTF-16", "ISO-8859-1"};

class Generator {
public:
    explicit Generator(uint32_t seed) : random_(seed) {}

    Document document() {
        Document doc;
        doc.encoding = kEncodings[pick(4)];
        // Attribute prefixes keep one URI per document.
        for (const char* prefix : kAttrPrefixes) attrUris_[prefix] = kUris[pick(4)];
        doc.prolog = misc();
        doc.root = element(0, false);
        doc.epilog = misc();
        return doc;
    }

private:
    size_t pick(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }
    bool chance(int percent) { return static_cast<int>(pick(100)) < percent; }

    std::string text(const char* const* pieces, size_t count, size_t maxPieces) {
        std::string out;
        size_t n = pick(maxPieces + 1);
        for (size_t i = 0; i < n; ++i) out += pieces[pick(count)];
        return out;
    }
    std::string anyText() { return text(kTextPieces, std::size(kTextPieces), 6); }
    std::string plainText() { return text(kPlainPieces, std::size(kPlainPieces), 5); }

    std::vector<Node> misc() {
        std::vector<Node> nodes;
        size_t n = pick(3);
        for (size_t i = 0; i < n; ++i) nodes.push_back(chance(50) ? comment() : pi());
        return nodes;
    }
    Node comment() { return Node{Kind::kComment, commentText(), "", nullptr}; }
    Node pi() {
        // Data never begins with whitespace: the parser drops it.
        std::string data = plainText();
        while (!data.empty() && (data[0] == ' ' || data[0] == '\n' || data[0] == '\t'))
            data.erase(0, 1);
        return Node{Kind::kPi, kPiTargets[pick(std::size(kPiTargets))], data, nullptr};
    }
    std::string commentText() {
        std::string t = plainText();
        // A comment never holds "--"; the writer puts blanks around it.
        for (size_t at; (at = t.find("--")) != std::string::npos;) t.erase(at, 1);
        return t;
    }

    std::shared_ptr<Element> element(int depth, bool insideNamespace) {
        auto e = std::make_shared<Element>();
        e->local = kLocals[pick(std::size(kLocals))];
        int shape = static_cast<int>(pick(3));
        if (shape == 1) e->uri = kUris[pick(4)];
        if (shape == 2) {
            e->prefix = kElementPrefixes[pick(std::size(kElementPrefixes))];
            e->uri = kUris[pick(4)];
        }
        e->attrsAsList = chance(50);
        attributes(*e);
        declarations(*e, insideNamespace);
        if (depth < 5) children(*e, depth, insideNamespace || !e->uri.empty());
        return e;
    }

    void attributes(Element& e) {
        std::set<std::pair<std::string, std::string>> taken;  // (uri, local)
        size_t n = pick(5);
        for (size_t i = 0; i < n; ++i) {
            Attr a;
            a.local = kLocals[pick(std::size(kLocals))];
            if (chance(40)) {
                a.prefix = kAttrPrefixes[pick(2)];
                a.uri = attrUris_[a.prefix];
            }
            // Values are written with attribute escapes, line breaks and
            // tabs as character references, so the parser keeps them.
            for (size_t k = pick(5); k > 0; --k) a.value += kTextPieces[pick(std::size(kTextPieces))];
            if (!taken.insert({a.uri, a.local}).second) continue;
            e.attrs.push_back(a);
        }
    }

    void declarations(Element& e, bool insideNamespace) {
        std::set<std::string> declared;
        for (const Attr& a : e.attrs)
            if (!a.prefix.empty() && declared.insert(a.prefix).second)
                e.declarations.push_back({a.prefix, a.uri});
        if (e.uri.empty()) {
            // No namespace below a namespaced element: un-declare the default.
            if (insideNamespace) e.declarations.push_back({"", ""});
            return;
        }
        if (e.prefix.empty()) return;
        // A prefixed element may declare its own prefix again, other
        // element prefixes and a default namespace for its children.
        for (const char* prefix : kElementPrefixes) {
            if (!chance(25)) continue;
            e.declarations.push_back({prefix, prefix == e.prefix ? e.uri : kUris[pick(4)]});
        }
        if (chance(20)) e.declarations.push_back({"", kUris[pick(4)]});
    }

    void children(Element& e, int depth, bool insideNamespace) {
        size_t n = pick(depth == 0 ? 6 : 5);
        for (size_t i = 0; i < n; ++i) {
            switch (pick(8)) {
                case 0:
                case 1:
                case 2: e.children.push_back(Node{Kind::kElement, "", "", element(depth + 1, insideNamespace)}); break;
                case 3:
                case 4: e.children.push_back(Node{Kind::kText, anyText(), "", nullptr}); break;
                case 5: {
                    std::string cdata = plainText();
                    // Pieces may meet to form the one sequence CDATA cannot hold.
                    for (size_t at; (at = cdata.find("]]>")) != std::string::npos;) cdata.erase(at, 1);
                    e.children.push_back(Node{Kind::kCdata, cdata, "", nullptr});
                    break;
                }
                case 6: e.children.push_back(chance(50) ? comment() : pi()); break;
                default: e.children.push_back(Node{Kind::kEntity, kEntities[pick(5)][0], "", nullptr});
            }
        }
    }

    std::mt19937 random_;
    std::map<std::string, std::string> attrUris_;
};

// ---- Writing the tree through the writer -------------------------------------

std::string qualified(const std::string& prefix, const std::string& local) {
    return prefix.empty() ? local : prefix + ":" + local;
}
const char* orNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

class TreeWriter {
public:
    explicit TreeWriter(HostWriter& w) : w_(w) {}

    void node(const Node& n) {
        switch (n.kind) {
            case Kind::kElement: element(*n.element); break;
            case Kind::kText: run(LUM_WRITER_CHARACTERS, orNull(n.text)); break;
            case Kind::kEntity: run(LUM_WRITER_ENTITY_REFERENCE, n.text.c_str()); break;
            case Kind::kCdata: run(LUM_WRITER_CDATA, orNull(n.text)); break;
            case Kind::kComment: run(LUM_WRITER_COMMENT, orNull(n.text)); break;
            case Kind::kPi: run(LUM_WRITER_PROCESSING_INSTRUCTION, n.text.c_str(),
                                orNull(n.data)); break;
        }
    }

    // The first failing command, as "command -> result".
    std::string failure;
    // Every command run, one a line, to show with a failure.
    std::string trace;

private:
    void run(int32_t command, const void* a0 = nullptr, const void* a1 = nullptr,
             const void* a2 = nullptr, const void* a3 = nullptr) {
        int32_t result = w_.run(command, a0, a1, a2, a3);
        trace += std::to_string(command);
        const void* texts[] = {a0, a1, a2, a3};
        for (int i = 0; i < 4; ++i) {
            // The list slot (arg2 of 23 and 26, arg3 of 27) is no text.
            const bool startTag =
                command == LUM_WRITER_START_ELEMENT || command == LUM_WRITER_EMPTY_ELEMENT;
            const bool list = (command == LUM_WRITER_DATA_ELEMENT) ? i == 3 : startTag && i == 2;
            if (list && texts[i] != nullptr) {
                const SaxAttrList* l = static_cast<const SaxAttrList*>(texts[i]);
                for (int32_t k = 0; k < l->count; ++k)
                    trace += std::string(" [") + l->entries[k].qName + " " +
                             (l->entries[k].uri ? l->entries[k].uri : "-") + " " +
                             l->entries[k].value + "]";
            } else if (!list && i < 3) {
                trace += std::string(" ") + (texts[i] ? static_cast<const char*>(texts[i]) : "-");
            }
        }
        trace += " -> " + std::to_string(result) + "\n";
        if (result != LUM_WRITER_OK && failure.empty())
            failure = "command " + std::to_string(command) + " -> " + std::to_string(result) +
                      " (" + w_.message() + ")";
    }

    // The attributes and declarations as a host-owned list.
    struct HostList {
        std::vector<std::string> names;
        std::vector<SaxAttribute> entries;
        SaxAttrList list{};
    };
    void fillList(const Element& e, HostList& h) {
        h.names.reserve(e.attrs.size() + e.declarations.size());
        for (const Attr& a : e.attrs) {
            h.names.push_back(qualified(a.prefix, a.local));
            h.entries.push_back(SaxAttribute{nullptr, h.names.back().data(),
                                             const_cast<char*>(orNull(a.uri)), nullptr,
                                             const_cast<char*>(a.value.c_str())});
        }
        for (const auto& d : e.declarations) {
            h.names.push_back(d.first.empty() ? "xmlns" : "xmlns:" + d.first);
            h.entries.push_back(SaxAttribute{nullptr, h.names.back().data(), nullptr, nullptr,
                                             const_cast<char*>(d.second.c_str())});
        }
        h.list.capacity = static_cast<int32_t>(h.entries.size());
        h.list.count = h.list.capacity;
        h.list.entries = h.entries.data();
    }

    void element(const Element& e) {
        const std::string name = qualified(e.prefix, e.local);
        HostList h;
        if (e.attrsAsList) fillList(e, h);
        const SaxAttrList* list = e.attrsAsList ? &h.list : nullptr;
        const bool dataElement = e.children.size() == 1 && e.children[0].kind == Kind::kText;
        if (dataElement && (e.attrsAsList || (e.attrs.empty() && e.declarations.empty()))) {
            run(LUM_WRITER_DATA_ELEMENT, name.c_str(), orNull(e.children[0].text), orNull(e.uri),
                list);
            return;
        }
        run(e.children.empty() ? LUM_WRITER_EMPTY_ELEMENT : LUM_WRITER_START_ELEMENT, name.c_str(),
            orNull(e.uri), list);
        if (!e.attrsAsList) {
            for (const auto& d : e.declarations) run(LUM_WRITER_DECLARE_NAMESPACE,
                                                     orNull(d.second), orNull(d.first));
            for (const Attr& a : e.attrs)
                run(LUM_WRITER_ADD_ATTRIBUTE, qualified(a.prefix, a.local).c_str(),
                    orNull(a.value), orNull(a.uri));
        }
        if (e.children.empty()) return;
        for (const Node& child : e.children) node(child);
        run(LUM_WRITER_END_ELEMENT, name.c_str(), orNull(e.uri));
    }

    HostWriter& w_;
};

// ---- Infosets as text ----------------------------------------------------------
//
// One line per item; text runs (adjacent text, CDATA and references) are
// joined. In formatted mode every whitespace character of a run goes and
// runs left empty are dropped.

std::string shown(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\n') out += "\\n";
        else if (c == '\t') out += "\\t";
        else if (c == '"' || c == '\\') out += std::string("\\") + c;
        else out += c;
    }
    return out + "\"";
}

class InfosetText {
public:
    explicit InfosetText(bool ignoreWhitespace) : ignoreWhitespace_(ignoreWhitespace) {}

    void startElement(const std::string& uri, const std::string& local,
                      std::vector<std::string> attributes) {
        flushText();
        line("<{" + uri + "}" + local);
        ++depth_;
        std::sort(attributes.begin(), attributes.end());
        for (const std::string& a : attributes) line("@" + a);
    }
    void endElement() {
        flushText();
        --depth_;
        line(">");
    }
    void text(const std::string& t) { run_ += t; }
    void comment(const std::string& t) {
        flushText();
        line("!" + shown(t));
    }
    void pi(const std::string& target, const std::string& data) {
        flushText();
        line("?" + target + " " + shown(data));
    }
    std::string finish() {
        flushText();
        return out_;
    }
    static std::string attribute(const std::string& uri, const std::string& local,
                                 const std::string& value) {
        return "{" + uri + "}" + local + "=" + shown(value);
    }

private:
    void flushText() {
        std::string t;
        t.swap(run_);
        if (ignoreWhitespace_)
            t.erase(std::remove_if(t.begin(), t.end(),
                                   [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }),
                    t.end());
        if (!t.empty()) line("#" + shown(t));
    }
    void line(const std::string& l) { out_ += std::string(2 * depth_, ' ') + l + "\n"; }

    bool ignoreWhitespace_;
    int depth_ = 0;
    std::string run_;
    std::string out_;
};

void expected(const Node& n, InfosetText& out);

void expected(const Element& e, InfosetText& out) {
    std::vector<std::string> attributes;
    for (const Attr& a : e.attrs) attributes.push_back(InfosetText::attribute(a.uri, a.local, a.value));
    out.startElement(e.uri, e.local, attributes);
    for (const Node& child : e.children) expected(child, out);
    out.endElement();
}

void expected(const Node& n, InfosetText& out) {
    switch (n.kind) {
        case Kind::kElement: expected(*n.element, out); break;
        case Kind::kText:
        case Kind::kCdata: out.text(n.text); break;
        case Kind::kEntity:
            for (const auto& entity : kEntities)
                if (n.text == entity[0]) out.text(entity[1]);
            break;
        // The writer puts a blank on each side of a comment's text.
        case Kind::kComment: out.comment(" " + n.text + " "); break;
        case Kind::kPi: out.pi(n.text, n.data); break;
    }
}

std::string expectedInfoset(const Document& doc, bool ignoreWhitespace) {
    InfosetText out(ignoreWhitespace);
    for (const Node& n : doc.prolog) expected(n, out);
    expected(*doc.root, out);
    for (const Node& n : doc.epilog) expected(n, out);
    return out.finish();
}

// ---- Parsing back with Xerces-C --------------------------------------------------

using lumtest::utf8;

class CollectErrors : public ErrorHandler {
public:
    void warning(const SAXParseException&) override {}
    void error(const SAXParseException& e) override { note(e); }
    void fatalError(const SAXParseException& e) override { note(e); }
    void resetErrors() override {}
    std::string messages;

private:
    void note(const SAXParseException& e) {
        messages += std::to_string(e.getLineNumber()) + ":" + std::to_string(e.getColumnNumber()) +
                    " " + utf8(e.getMessage()) + "\n";
    }
};

const std::string kXmlnsUri = "http://www.w3.org/2000/xmlns/";

void parsed(const DOMNode* n, InfosetText& out) {
    switch (n->getNodeType()) {
        case DOMNode::ELEMENT_NODE: {
            std::vector<std::string> attributes;
            const DOMNamedNodeMap* map = n->getAttributes();
            for (XMLSize_t i = 0; i < map->getLength(); ++i) {
                const DOMNode* a = map->item(i);
                std::string uri = utf8(a->getNamespaceURI());
                if (uri == kXmlnsUri) continue;  // declarations are the writer's choice
                attributes.push_back(
                    InfosetText::attribute(uri, utf8(a->getLocalName()), utf8(a->getNodeValue())));
            }
            out.startElement(utf8(n->getNamespaceURI()), utf8(n->getLocalName()), attributes);
            for (const DOMNode* c = n->getFirstChild(); c != nullptr; c = c->getNextSibling())
                parsed(c, out);
            out.endElement();
            break;
        }
        case DOMNode::TEXT_NODE:
        case DOMNode::CDATA_SECTION_NODE: out.text(utf8(n->getNodeValue())); break;
        case DOMNode::COMMENT_NODE: out.comment(utf8(n->getNodeValue())); break;
        case DOMNode::PROCESSING_INSTRUCTION_NODE:
            out.pi(utf8(n->getNodeName()), utf8(n->getNodeValue()));
            break;
        default: break;
    }
}

// The infoset of the bytes, or the parser's messages.
std::string parsedInfoset(const std::string& bytes, bool ignoreWhitespace) {
    XercesDOMParser parser;
    parser.setDoNamespaces(true);
    parser.setValidationScheme(XercesDOMParser::Val_Never);
    parser.setLoadExternalDTD(false);
    CollectErrors errors;
    parser.setErrorHandler(&errors);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                             "written");
    parser.parse(source);
    if (!errors.messages.empty() || parser.getDocument() == nullptr)
        return "parse errors:\n" + errors.messages;
    InfosetText out(ignoreWhitespace);
    for (const DOMNode* c = parser.getDocument()->getFirstChild(); c != nullptr; c = c->getNextSibling())
        parsed(c, out);
    return out.finish();
}

// ---- The property ------------------------------------------------------------------

constexpr uint32_t kSeeds = 2000;

struct Written {
    std::string bytes;
    std::string failure;  // first command not answered 0
    std::string trace;    // the commands run
};

Written write(const Document& doc, bool formatted) {
    HostWriter w;
    w.options.strict = 1;
    w.options.formatted = formatted ? 1 : 0;
    w.options.version = "1.0";
    w.options.encoding = orNull(doc.encoding);
    Written out;
    int32_t opened = w.openMemory(LUM_WRITER_TO_MEMORY);
    if (opened != 0) {
        out.failure = "open -> " + std::to_string(opened);
        return out;
    }
    TreeWriter tree(w);
    for (const Node& n : doc.prolog) tree.node(n);
    tree.node(Node{Kind::kElement, "", "", doc.root});
    for (const Node& n : doc.epilog) tree.node(n);
    int32_t ended = w.run(LUM_WRITER_END_DOCUMENT);
    out.failure = tree.failure;
    out.trace = tree.trace;
    if (out.failure.empty() && ended != 0) out.failure = "command 22 -> " + std::to_string(ended);
    out.bytes = w.memory();
    return out;
}

class WriterProperty : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::initLibraryOnce();
        // The parser below is used directly; this start is counted, and
        // matched by the library's own.
        XMLPlatformUtils::Initialize();
    }
    static void TearDownTestSuite() { XMLPlatformUtils::Terminate(); }

    void check(bool formatted) {
        for (uint32_t seed = 1; seed <= kSeeds; ++seed) {
            Document doc = Generator(seed).document();
            Written written = write(doc, formatted);
            ASSERT_EQ(written.failure, "") << "seed " << seed << ", commands:\n" << written.trace;
            ASSERT_EQ(parsedInfoset(written.bytes, formatted), expectedInfoset(doc, formatted))
                << "seed " << seed << ", encoding '" << doc.encoding << "', written:\n"
                << written.bytes << "\ncommands:\n" << written.trace;
        }
    }
};

TEST_F(WriterProperty, StrictTreesParseBackToTheSameInfoset) { check(false); }

TEST_F(WriterProperty, FormattedTreesParseBackToTheSameInfosetApartFromWhitespace) { check(true); }

}  // namespace
