// Read-only looks into a document that lumxml made, for tests that check
// what a load built. Only virtual calls of the DOM interfaces are used, so
// the test needs the Xerces headers but does not link Xerces itself.
#pragma once

#include <cstdint>
#include <string>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>

namespace lumtest {

// The document in a host cell, as the DOM node it is (a real cast: the two
// interfaces live at different addresses).
inline XERCES_CPP_NAMESPACE::DOMNode* documentNode(void* cell) {
    return static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(
        static_cast<XERCES_CPP_NAMESPACE::DOMDocument*>(cell));
}

inline XERCES_CPP_NAMESPACE::DOMElement* documentElement(void* cell) {
    return static_cast<XERCES_CPP_NAMESPACE::DOMDocument*>(cell)->getDocumentElement();
}

// UTF-16 to UTF-8, enough for test expectations.
inline std::string utf8(const XMLCh* text) {
    std::string out;
    if (text == nullptr) return out;
    for (size_t i = 0; text[i] != 0; ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

// Text of a subtree: the text, CDATA and entity-reference contents in order.
inline std::string textOf(const XERCES_CPP_NAMESPACE::DOMNode* node) {
    using XERCES_CPP_NAMESPACE::DOMNode;
    if (node == nullptr) return "";
    if (node->getNodeType() == DOMNode::TEXT_NODE ||
        node->getNodeType() == DOMNode::CDATA_SECTION_NODE)
        return utf8(node->getNodeValue());
    std::string text;
    for (const DOMNode* child = node->getFirstChild(); child; child = child->getNextSibling())
        text += textOf(child);
    return text;
}

inline std::string nameOf(const XERCES_CPP_NAMESPACE::DOMNode* node) {
    return node == nullptr ? std::string("<none>") : utf8(node->getNodeName());
}

// The host record a document carries: its host handle, or -1 without one.
struct HostRecordView {
    int64_t hostHandle;
    uint8_t restrictOwner;
    uint8_t restrictParent;
};

inline HostRecordView* hostRecord(void* cell) {
    return static_cast<HostRecordView*>(documentNode(cell)->getUserData(u"udatakey"));
}

}  // namespace lumtest
