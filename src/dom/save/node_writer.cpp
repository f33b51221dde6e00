#include "dom/save/node_writer.h"

#include <xercesc/dom/DOMCharacterData.hpp>
#include <xercesc/dom/DOMDocumentType.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMEntity.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/dom/DOMProcessingInstruction.hpp>

#include <xercesc/util/XMLString.hpp>

#include "dom/save/formatter_text.h"
#include "dom/save/namespace_fixup.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

bool nonEmpty(const XMLCh* text) { return text != nullptr && *text != 0; }

const XMLCh kQuote[] = u"\"";
// Markup gathered beyond this many units is handed on at once.
constexpr size_t kPendingLimit = 8192;
// The longest literal() markup.
constexpr size_t kLiteralRoom = 32;

// The value of an attribute and its length. An attribute whose value is
// one text node (nearly all) gives that node's text directly: asking the
// attribute itself costs Xerces a dynamic_cast per attribute.
const XMLCh* attributeValue(DOMNode* attr, XMLSize_t& length) {
    DOMNode* first = attr->getFirstChild();
    if (first != nullptr && first->getNodeType() == DOMNode::TEXT_NODE &&
        first->getNextSibling() == nullptr) {
        const DOMCharacterData* text = static_cast<DOMCharacterData*>(first);
        length = text->getLength();
        return text->getData();
    }
    const XMLCh* value = attr->getNodeValue();
    length = value == nullptr ? 0 : XMLString::stringLen(value);
    return value;
}

}  // namespace

void NodeWriter::write(DOMNode* start) {
    if (start == nullptr) return;
    NamespaceFixup fixup(start, additions_, options_.namespaceShortcuts);
    fixup_ = &fixup;
    try {
        walk(start);
    } catch (...) {
        // What came before the failure is written, as it would have been
        // piece by piece.
        fixup_ = nullptr;
        flush();
        throw;
    }
    fixup_ = nullptr;
    flush();
}

void NodeWriter::walk(DOMNode* start) {
    open_.clear();
    DOMNode* node = start;
    for (;;) {
        if (DOMNode* child = open(node)) {
            open_.push_back(node);
            node = child;
            continue;
        }
        // `node` is complete: move on to its next sibling, closing every
        // open node whose last child it was, and stop back at the start
        // (the only node that is complete with nothing open).
        for (;;) {
            if (open_.empty()) return;
            if (DOMNode* sibling = node->getNextSibling()) {
                node = sibling;
                break;
            }
            node = open_.back();
            open_.pop_back();
            close(node);
        }
    }
}

DOMNode* NodeWriter::open(DOMNode* node) {
    switch (node->getNodeType()) {
        case DOMNode::ELEMENT_NODE:
            return openElement(static_cast<DOMElement*>(node));
        case DOMNode::TEXT_NODE:
            writeText(node);
            return nullptr;
        case DOMNode::CDATA_SECTION_NODE:
            writeCData(node);
            return nullptr;
        case DOMNode::ENTITY_REFERENCE_NODE:
            // No reference text: the expansion, child by child.
            return node->getFirstChild();
        case DOMNode::ENTITY_NODE:
            writeEntity(node);
            return nullptr;
        case DOMNode::PROCESSING_INSTRUCTION_NODE:
            writeProcessingInstruction(node);
            return nullptr;
        case DOMNode::COMMENT_NODE:
            writeComment(node);
            return nullptr;
        case DOMNode::DOCUMENT_NODE:
            writeDeclaration();
            return node->getFirstChild();
        case DOMNode::DOCUMENT_TYPE_NODE:
            writeDocumentType(node);
            return nullptr;
        default:
            // Attributes are written by their element; fragments and
            // notations are not written at all.
            return nullptr;
    }
}

void NodeWriter::close(DOMNode* node) {
    if (node->getNodeType() != DOMNode::ELEMENT_NODE) return;
    fixup_->leave();
    literal(u"</");
    markup(node->getNodeName());
    literal(u">");
}

DOMNode* NodeWriter::openElement(DOMElement* element) {
    literal(u"<");
    markup(element->getNodeName());
    writeAttributes(element);
    DOMNode* child = element->getFirstChild();
    literal(child != nullptr ? u">" : u"/>");
    if (child != nullptr) fixup_->enter(element);
    return child;
}

void NodeWriter::writeAttributes(DOMElement* element) {
    fixup_->fixElement(element);
    DOMNamedNodeMap* attributes = element->getAttributes();
    const XMLFormatter::EscapeFlags valueEscapes =
        options_.attrEscapes ? XMLFormatter::AttrEscapes : XMLFormatter::StdEscapes;
    const XMLSize_t count = attributes->getLength();
    for (XMLSize_t i = 0; i < count; ++i) {
        DOMNode* attr = attributes->item(i);
        literal(u" ");
        markup(attr->getNodeName());
        literal(u"=\"");
        XMLSize_t length = 0;
        const XMLCh* value = attributeValue(attr, length);
        escaped(value, length, valueEscapes);
        literal(kQuote);
    }
}

void NodeWriter::writeText(DOMNode* text) {
    const DOMCharacterData* data = static_cast<DOMCharacterData*>(text);
    escaped(data->getData(), data->getLength(),
                   options_.textCharEscapes ? XMLFormatter::CharEscapes
                                            : XMLFormatter::StdEscapes);
}

void NodeWriter::writeCData(DOMNode* section) {
    literal(u"<![CDATA[");
    markup(section->getNodeValue());
    literal(u"]]>");
}

// The entity declaration keeps lumxml's own forms: no blank between the
// name and PUBLIC, between the two literals or before NDATA, and a quoted
// notation name.
void NodeWriter::writeEntity(DOMNode* node) {
    const DOMEntity* entity = static_cast<DOMEntity*>(node);
    literal(u"<!ENTITY ");
    markup(entity->getNodeName());
    if (nonEmpty(entity->getPublicId())) {
        literal(u"PUBLIC ");
        quoted(entity->getPublicId());
    }
    if (nonEmpty(entity->getSystemId())) {
        literal(u"SYSTEM ");
        quoted(entity->getSystemId());
    }
    if (nonEmpty(entity->getNotationName())) {
        literal(u"NDATA ");
        quoted(entity->getNotationName());
    }
    markup(u">\r\n");
}

void NodeWriter::writeProcessingInstruction(DOMNode* node) {
    const DOMProcessingInstruction* instruction = static_cast<DOMProcessingInstruction*>(node);
    literal(u"<?");
    markup(instruction->getTarget());
    if (nonEmpty(instruction->getData())) {
        literal(u" ");
        markup(instruction->getData());
    }
    literal(u"?>");
}

void NodeWriter::writeComment(DOMNode* comment) {
    literal(u"<!--");
    markup(comment->getNodeValue());
    literal(u"-->");
}

// A blank before "?>" and never a standalone pseudo-attribute. Without a
// requested encoding the declaration names none, although UTF-8 is written.
void NodeWriter::writeDeclaration() {
    literal(u"<?xml version=\"1.0");
    if (options_.encoding != nullptr) {
        literal(u"\" encoding=\"");
        markup(options_.encoding);
    }
    literal(u"\" ?>\n");
}

// The system literal after a public one is written whenever it is present,
// even when empty; on its own only when non-empty.
void NodeWriter::writeDocumentType(DOMNode* node) {
    const DOMDocumentType* type = static_cast<DOMDocumentType*>(node);
    literal(u"<!DOCTYPE ");
    markup(type->getNodeName());
    if (nonEmpty(type->getPublicId())) {
        literal(u" PUBLIC ");
        quoted(type->getPublicId());
        if (type->getSystemId() != nullptr) {
            literal(u" ");
            quoted(type->getSystemId());
        }
    } else if (nonEmpty(type->getSystemId())) {
        literal(u" SYSTEM ");
        quoted(type->getSystemId());
    }
    if (nonEmpty(type->getInternalSubset())) {
        literal(u"[");
        markup(type->getInternalSubset());
        literal(u"]");
    }
    literal(u">");
}

void NodeWriter::markup(const XMLCh* text) {
    if (text == nullptr) return;
    if (utf8_ != nullptr) {
        escaped(text, XMLString::stringLen(text), XMLFormatter::NoEscapes);
        return;
    }
    appendMarkup(pending_, text, XMLString::stringLen(text));
    if (pending_.size() >= kPendingLimit) flush();
}

void NodeWriter::literal(const XMLCh* text) {
    if (!plainLiterals_) {
        markup(text);
        return;
    }
    char* at = bytes_.room(kLiteralRoom);
    while (*text != 0) *at++ = static_cast<char>(*text++);
    bytes_.commit(at);
    pieceWritten();
}

void NodeWriter::escaped(const XMLCh* text, XMLSize_t count, XMLFormatter::EscapeFlags escapes) {
    if (utf8_ != nullptr) {
        char* at = bytes_.room(utf8_->maxBytes(count));
        if (char* end = utf8_->encodeText(text, count, escapes, at)) {
            bytes_.commit(end);
            pieceWritten();
            return;
        }
    }
    flush();
    writeFormatted(formatter_, text, count, escapes);
}

void NodeWriter::flushBytes() {
    if (bytes_.empty()) return;
    // Cleared also when the target fails, so that nothing is written twice.
    struct Clear {
        ByteBuffer& bytes;
        ~Clear() { bytes.clear(); }
    } clear{bytes_};
    // In pieces no larger than the formatter's own.
    const XMLByte* data = reinterpret_cast<const XMLByte*>(bytes_.data());
    for (size_t at = 0; at < bytes_.size(); at += kChunkBytes) {
        size_t count = bytes_.size() - at < kChunkBytes ? bytes_.size() - at : kChunkBytes;
        options_.utf8Target->writeChars(data + at, count, &formatter_);
    }
}

void NodeWriter::flush() {
    flushBytes();
    if (pending_.empty()) return;
    // Cleared also when the target fails, so that nothing is written twice.
    struct Clear {
        std::u16string& text;
        ~Clear() { text.clear(); }
    } clear{pending_};
    formatter_.formatBuf(pending_.data(), pending_.size(), XMLFormatter::NoEscapes);
}

void NodeWriter::quoted(const XMLCh* text) {
    literal(kQuote);
    markup(text);
    literal(kQuote);
}

}  // namespace lumxml
