// Turns a node and its subtree into XML text through an XMLFormatter.
//
// lumxml does its own markup rather than using the DOM serialiser: no
// indentation, no line breaks beyond the one after the XML declaration and
// the one after an entity declaration, and the namespace declarations the
// output needs are added to the tree (recorded in `additions`, which the
// caller destroys to take them out again).
//
// The subtree is walked with the tree's own child and sibling links and a
// stack of the open elements on the heap, never with the call stack, so
// that a document nested a million levels deep is written like any other.
// (Xerces answers a child's parent through a dynamic_cast, which costs
// more than writing the child's bytes.)
#pragma once

#include <string>
#include <vector>

#include <xercesc/dom/DOMNode.hpp>
#include <xercesc/framework/XMLFormatter.hpp>

#include "dom/save/dom_node_list.h"
#include "dom/save/namespace_fixup.h"
#include "out/byte_buffer.h"
#include "out/utf8_escaper.h"

namespace lumxml {

struct NodeWriterOptions {
    // Text nodes with CharEscapes (& < >) instead of StdEscapes.
    bool textCharEscapes = false;
    // Attribute values with AttrEscapes (& < ") instead of StdEscapes.
    bool attrEscapes = false;
    // The encoding named in the XML declaration, or null for none.
    const XMLCh* encoding = nullptr;
    // When the output is UTF-8: its target. The writer then encodes and
    // escapes itself (the same bytes as the formatter's, learned from it)
    // and leaves the formatter only texts with a lone surrogate.
    XERCES_CPP_NAMESPACE::XMLFormatTarget* utf8Target = nullptr;
    // The namespace fix-up's shortcuts (see NamespaceFixup); off only in
    // the tests that compare them with the full lookups.
    bool namespaceShortcuts = true;
};

class NodeWriter {
public:
    NodeWriter(XERCES_CPP_NAMESPACE::XMLFormatter& formatter, const NodeWriterOptions& options,
               DomNodeList& additions)
        : formatter_(formatter), options_(options), additions_(additions) {
        if (options.utf8Target != nullptr) {
            utf8_ = &Utf8Escaper::instance();
            plainLiterals_ = utf8_->plainMarkup();
        }
    }

    // Writes `start` (null writes nothing) and everything below it.
    void write(XERCES_CPP_NAMESPACE::DOMNode* start);

private:
    using DOMNode = XERCES_CPP_NAMESPACE::DOMNode;

    void walk(DOMNode* start);
    // Writes what comes before a node's children and answers the first
    // child to descend into, or null when the node is complete.
    DOMNode* open(DOMNode* node);
    // Writes what follows the last child of a node that was descended into.
    void close(DOMNode* node);

    DOMNode* openElement(XERCES_CPP_NAMESPACE::DOMElement* element);
    void writeAttributes(XERCES_CPP_NAMESPACE::DOMElement* element);
    void writeText(DOMNode* text);
    void writeCData(DOMNode* section);
    void writeEntity(DOMNode* entity);
    void writeProcessingInstruction(DOMNode* instruction);
    void writeComment(DOMNode* comment);
    void writeDeclaration();
    void writeDocumentType(DOMNode* type);

    // Markup and unescaped text, gathered and handed to the formatter in
    // one piece before escaped text and at the end: far fewer trips
    // through the formatter and the target, the same bytes.
    void markup(const XMLCh* text);
    // Markup of the writer's own: printable ASCII without a carriage
    // return, copied as it is for UTF-8 output.
    void literal(const XMLCh* text);
    void quoted(const XMLCh* text);
    void escaped(const XMLCh* text, XMLSize_t count,
                 XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags escapes);
    void flush();
    // Encoded UTF-8 (fast way) handed to the target.
    void flushBytes();
    // After every piece of UTF-8: the bytes go on once a chunk is full.
    void pieceWritten() {
        if (bytes_.size() >= kChunkBytes) flushBytes();
    }

    // The formatter hands its target at most this many bytes at a time.
    static constexpr size_t kChunkBytes = 16384;

    XERCES_CPP_NAMESPACE::XMLFormatter& formatter_;
    NodeWriterOptions options_;
    DomNodeList& additions_;
    NamespaceFixup* fixup_ = nullptr;  // the current write's
    std::u16string pending_;            // markup not yet formatted
    const Utf8Escaper* utf8_ = nullptr;  // the fast way, for UTF-8 output
    bool plainLiterals_ = false;         // literal() may copy ASCII as it is
    ByteBuffer bytes_;                   // its bytes not yet written
    std::vector<DOMNode*> open_;         // the nodes whose children are being written
};

}  // namespace lumxml
