#include "dom/methods/node_methods.h"
#include "lumxml.h"
#include "frame/deep_stack.h"

#include <cstring>
#include <string>

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/util/XMLString.hpp>

#include "dom/methods/child_cursor.h"
#include "dom/methods/doc_user_data.h"
#include "dom/methods/method_call.h"
#include "frame/dom_errors.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

using NodeRun = void (*)(DOMNode* node, MethodCall& call);

struct NodeMethod {
    NodeRun run;
    // A DOMException is translated (code 6) only by these methods; in the
    // others it is an unexpected failure (code 13).
    bool translatesDomErrors;
};

// ---- helpers ---------------------------------------------------------------

DOMNode& the(DOMNode* node) {
    if (node == nullptr) throw MissingHostValue("null node handle");
    return *node;
}

// The node as an element, or null after refusing with "Invalid node type".
DOMElement* elementOrRefuse(DOMNode* node, MethodCall& call) {
    if (the(node).getNodeType() != DOMNode::ELEMENT_NODE) {
        call.report().fixed("Invalid node type", LUM_ERR_NODE_TYPE);
        return nullptr;
    }
    return dynamic_cast<DOMElement*>(node);
}

DOMAttr* asAttribute(DOMNode* node) {
    return node != nullptr && node->getNodeType() == DOMNode::ATTRIBUTE_NODE
               ? dynamic_cast<DOMAttr*>(node)
               : nullptr;
}

// First attribute of the map whose node name equals `name`, in map order.
DOMNode* attributeNamed(DOMNamedNodeMap* map, const XMLCh* name) {
    if (map == nullptr) return nullptr;
    XMLSize_t length = map->getLength();
    for (XMLSize_t i = 0; i < length; ++i) {
        DOMNode* attribute = map->item(i);
        if (XMLString::equals(attribute->getNodeName(), name)) return attribute;
    }
    return nullptr;
}

constexpr XMLCh kCdataEnd[] = {u']', u']', u'>', 0};

// The value setter of methods 20 and 37: a CDATA section refuses "]]>", and
// an element refuses any value with the no-modification DOM error (hosts
// rely on that answer; Xerces itself would ignore the value).
void setValue(DOMNode& node, const XMLCh* value, MethodCall& call) {
    if (node.getNodeType() == DOMNode::CDATA_SECTION_NODE && value != nullptr &&
        XMLString::patternMatch(value, kCdataEnd) >= 0) {
        call.report().fixed("The sequence ']]>' is not allowed in character data", LUM_ERR_DOM);
        return;
    }
    if (node.getNodeType() == DOMNode::ELEMENT_NODE)
        throw DOMException(DOMException::NO_MODIFICATION_ALLOWED_ERR, 0);
    // An attribute's value is its list of children.
    noteSubtreeChanged(&node);
    node.setNodeValue(value);
}

// ---- change notes for indexed child reads ------------------------------------

// A node inserted somewhere leaves its old parent first; a fragment gives
// up all its children.
void noteChildMoving(DOMNode* moving) {
    noteChildrenChanged(moving->getParentNode());
    if (moving->getNodeType() == DOMNode::DOCUMENT_FRAGMENT_NODE) noteChildrenChanged(moving);
}

// Setting or removing an attribute replaces, releases or moves attribute
// nodes (whose children are their value) but no child of the element.
void noteAttributesChanged(DOMElement* element) {
    DOMNamedNodeMap* attributes = element->getAttributes();
    for (XMLSize_t i = 0, n = attributes->getLength(); i < n; ++i)
        noteSubtreeChanged(attributes->item(i));
}

// ---- refusals (they never touch the node) ----------------------------------

void notValidOnNodeRef(DOMNode*, MethodCall& call) {
    call.report().fixed("Method not valid on X-NodeRef", LUM_ERR_NOT_SUPPORTED);
}

void invalidMethodNumber(DOMNode*, MethodCall& call) {
    call.report().fixed("Invalid method number", LUM_ERR_NODE_METHOD_NUMBER);
}

// ---- tree ------------------------------------------------------------------

void insertBefore(DOMNode* node, MethodCall& call) {
    DOMNode* newChild = call.nodeArg(0);
    DOMNode* refChild = call.nodeArg(1);
    // Xerces checks the ancestors but not the node itself; inserting a node
    // into itself would make a cycle.
    if (newChild == nullptr || newChild == node)
        throw DOMException(DOMException::HIERARCHY_REQUEST_ERR, 0);
    bool appends = refChild == nullptr && newChild->getParentNode() != node &&
                   newChild->getNodeType() != DOMNode::DOCUMENT_FRAGMENT_NODE;
    noteChildMoving(newChild);
    if (!appends) noteChildrenChanged(node);
    the(node).insertBefore(newChild, refChild);
    if (appends) noteChildAppended(node, newChild);
}

void removeAndRelease(DOMNode* node, MethodCall&) {
    DOMNode* parent = the(node).getParentNode();
    if (parent == nullptr) return;
    noteChildrenChanged(parent);
    parent->removeChild(node);
    noteSubtreeChanged(node);
    releaseDeep(node);
}

void childCountOf(DOMNode* node, MethodCall& call) {
    call.writeInt32(static_cast<int32_t>(childCount(&the(node))));
}

void positionOf(DOMNode* node, MethodCall& call) {
    DOMNode* parent = the(node).getParentNode();
    if (parent == nullptr) return;
    call.writeInt32(-1);
    call.writeInt32(static_cast<int32_t>(positionAmongSiblings(parent, node)));
}

void parentOf(DOMNode* node, MethodCall& call) {
    DocUserData* record = userDataOf(&the(node));
    if (record != nullptr && record->restrictParent) {
        call.report().fixed("Restricted node", LUM_ERR_NOT_SUPPORTED);
        return;
    }
    call.writeNode(node->getParentNode());
}

void childByIndex(DOMNode* node, MethodCall& call) {
    // Sign-extended as item() would take it: a negative index finds nothing.
    int64_t index = call.intArg(0);
    DOMNode& parent = the(node);
    DOMNode* child = index < 0 ? nullptr : childAt(&parent, static_cast<uint64_t>(index));
    if (child == nullptr) {
        call.report().fixed("Invalid child index", LUM_ERR_CHILD_INDEX);
        call.writeNode(nullptr);
        return;
    }
    call.writeNode(child);
}

void cloneOf(DOMNode* node, MethodCall& call) {
    bool deep = call.intArg(0) != 0;
    DOMNode* copy = nullptr;
    if (deep)
        runForSubtree(node, [&] { copy = the(node).cloneNode(true); });
    else
        copy = the(node).cloneNode(false);
    call.writeNode(copy);
}

void removeChild(DOMNode* node, MethodCall& call) {
    DOMNode* child = call.nodeArg(0);
    if (child == nullptr) throw DOMException(DOMException::NOT_FOUND_ERR, 0);
    noteChildrenChanged(&the(node));
    node->removeChild(child);
}

void replaceChild(DOMNode* node, MethodCall& call) {
    DOMNode* newChild = call.nodeArg(0);
    DOMNode* oldChild = call.nodeArg(1);
    if (newChild == nullptr || newChild == node)
        throw DOMException(DOMException::HIERARCHY_REQUEST_ERR, 0);
    if (oldChild == nullptr) throw DOMException(DOMException::NOT_FOUND_ERR, 0);
    noteChildMoving(newChild);
    noteChildrenChanged(&the(node));
    node->replaceChild(newChild, oldChild);
}

void normalize(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    noteSubtreeChanged(element);
    runForSubtree(element, [element] { element->normalize(); });
}

// ---- attributes ------------------------------------------------------------

// Names joined by commas; the running total of name lengths in UTF-16 units
// (commas not counted) must stay below the limit. Names already appended
// stay when it does not.
void attributeNames(DOMNode* node, MethodCall& call) {
    DOMNamedNodeMap* map = the(node).getAttributes();
    if (map == nullptr) return;
    XMLSize_t length = map->getLength();
    call.writeEmptyString();
    int32_t limit = call.intArg(0);
    if (limit < 0) {
        call.report().fixed("String length is negative", LUM_ERR_STRING_LENGTH);
        return;
    }
    int64_t total = 0;
    for (XMLSize_t i = 0; i < length; ++i) {
        const XMLCh* name = map->item(i)->getNodeName();
        total += static_cast<int64_t>(XMLString::stringLen(name));
        if (total >= limit) {
            call.report().fixed(kStringTooLong, kStringTooLongCode);
            return;
        }
        call.appendString(HostString(name).get());
        if (i + 1 < length) call.appendString(",");
    }
}

void attributeValue(DOMNode* node, MethodCall& call) {
    XmlString name(call.stringArg(0));
    DOMNode* attribute = attributeNamed(the(node).getAttributes(), name);
    if (attribute == nullptr) return;
    call.writeEmptyString();
    call.stringOut(attribute->getNodeValue(), static_cast<uint32_t>(call.intArg(1)));
}

void setAttribute(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    noteAttributesChanged(element);
    XmlString name(call.stringArg(0));
    XmlString value(call.stringArg(1));
    element->setAttribute(name, value);
}

void removeAttribute(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    noteAttributesChanged(element);
    element->removeAttribute(XmlString(call.stringArg(0)));
}

void removeAttributeNode(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    noteAttributesChanged(element);
    DOMAttr* attribute = asAttribute(call.nodeArg(0));
    if (attribute == nullptr) throw DOMException(DOMException::NOT_FOUND_ERR, 0);
    element->removeAttributeNode(attribute);
}

void setAttributeNode(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    noteAttributesChanged(element);
    DOMAttr* attribute = asAttribute(call.nodeArg(0));
    // Xerces answers a node that is not an attribute with WRONG_DOCUMENT_ERR
    // (it checks the type before anything else); hosts see that answer, and
    // a null node (which Xerces cannot take) is answered the same way.
    if (attribute == nullptr) throw DOMException(DOMException::WRONG_DOCUMENT_ERR, 0);
    // The attribute it replaces, if any, is dropped without release.
    element->setAttributeNode(attribute);
}

void attributeNode(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    XmlString name(call.stringArg(0));
    if (DOMNode* attribute = attributeNamed(element->getAttributes(), name))
        call.writeNode(attribute);
}

void attributeNS(DOMNode* node, MethodCall& call) {
    DOMElement* element = elementOrRefuse(node, call);
    if (element == nullptr) return;
    call.writeEmptyString();
    XmlString namespaceURI(call.stringArg(0));
    XmlString localName(call.stringArg(1));
    const XMLCh* value = element->getAttributeNS(namespaceURI, localName);
    if (value == nullptr || value[0] == 0) return;
    call.stringOut(value, static_cast<uint32_t>(call.intArg(2)));
}

// ---- owner -----------------------------------------------------------------

void ownerHandle(DOMNode* node, MethodCall& call) {
    DocUserData* own = userDataOf(&the(node));
    if (own != nullptr && own->restrictOwner) {
        call.report().fixed("Restricted node", LUM_ERR_NOT_SUPPORTED);
        return;
    }
    // A document is its own owner (Xerces answers null for it).
    const DOMNode* owner = node->getNodeType() == DOMNode::DOCUMENT_NODE
                               ? node
                               : asNode(node->getOwnerDocument());
    DocUserData* record = owner != nullptr ? userDataOf(owner) : nullptr;
    if (record == nullptr) throw MissingHostValue("document without host record");
    call.writeHandle(record->hostHandle);
}

// ---- names and values ------------------------------------------------------

void nodeType(DOMNode* node, MethodCall& call) {
    call.writeInt32(static_cast<int32_t>(the(node).getNodeType()));
}

void nodeValue(DOMNode* node, MethodCall& call) {
    call.writeEmptyString();
    // The byte counter is this method's only limit check.
    call.countedStringOut(the(node).getNodeValue(), static_cast<uint32_t>(call.intArg(0)));
}

void setNodeValue(DOMNode* node, MethodCall& call) {
    XmlString value(call.stringArg(0));
    setValue(the(node), value, call);
}

void nodeName(DOMNode* node, MethodCall& call) {
    call.writeEmptyString();
    call.stringOut(the(node).getNodeName(), static_cast<uint32_t>(call.intArg(0)));
}

void namespaceURI(DOMNode* node, MethodCall& call) {
    call.writeEmptyString();
    call.stringOut(the(node).getNamespaceURI(), static_cast<uint32_t>(call.intArg(0)));
}

void prefix(DOMNode* node, MethodCall& call) {
    call.writeEmptyString();
    call.stringOut(the(node).getPrefix(), static_cast<uint32_t>(call.intArg(0)));
}

void localName(DOMNode* node, MethodCall& call) {
    call.writeEmptyString();
    call.stringOut(the(node).getLocalName(), static_cast<uint32_t>(call.intArg(0)));
}

void setPrefix(DOMNode* node, MethodCall& call) {
    XmlString value(call.stringArg(0));
    the(node).setPrefix(value);
}

// The whole value with no limit, in a string from Xerces' memory manager
// that the host hands back with method 38.
void wholeValue(DOMNode* node, MethodCall& call) {
    if (call.rawArg(0) == nullptr || call.rawArg(1) == nullptr)
        throw MissingHostValue("no cells for a whole value");
    const XMLCh* value = the(node).getNodeValue();
    char* text = value != nullptr ? codec::toHost(value) : nullptr;
    call.writeStringCell(0, text);
    call.writeLengthCell(1, text != nullptr ? static_cast<int32_t>(std::strlen(text)) : 0);
}

void releaseWholeValue(DOMNode*, MethodCall& call) {
    char* text = call.stringCell(0);
    if (text == nullptr) return;
    codec::release(text);
    call.writeStringCell(0, nullptr);
}

// N bytes that need not be terminated: a NUL inside them ends the value
// there; otherwise (and for N not positive, taken as 0) a terminated copy
// of the N bytes is used.
void setCountedValue(DOMNode* node, MethodCall& call) {
    const char* bytes = static_cast<const char*>(call.rawArg(0));
    int32_t count = call.intArg(1);
    the(node);
    if (count < 0) count = 0;
    if (bytes == nullptr && count > 0) throw MissingHostValue("no bytes for a counted value");
    bool terminatedInside = count > 0 && std::memchr(bytes, '\0', count) != nullptr;
    std::string copy;
    if (!terminatedInside && count > 0) copy.assign(bytes, static_cast<size_t>(count));
    XmlString value(terminatedInside ? bytes : copy.c_str());
    setValue(*node, value, call);
}

// ---- the table ---------------------------------------------------------------

constexpr bool kTranslated = true;
constexpr bool kUnexpected = false;

const NodeMethod kNodeMethods[kHighestNodeMethod] = {
    /* 1 */ {notValidOnNodeRef, kUnexpected},
    /* 2 */ {insertBefore, kTranslated},
    /* 3 */ {removeAndRelease, kTranslated},
    /* 4 */ {notValidOnNodeRef, kUnexpected},
    /* 5 */ {childCountOf, kUnexpected},
    /* 6 */ {positionOf, kUnexpected},
    /* 7 */ {parentOf, kUnexpected},
    /* 8 */ {childByIndex, kUnexpected},
    /* 9 */ {cloneOf, kUnexpected},
    /* 10 */ {removeChild, kTranslated},
    /* 11 */ {replaceChild, kTranslated},
    /* 12 */ {attributeNames, kUnexpected},
    /* 13 */ {attributeValue, kUnexpected},
    /* 14 */ {setAttribute, kTranslated},
    /* 15 */ {removeAttribute, kTranslated},
    /* 16 */ {removeAttributeNode, kTranslated},
    /* 17 */ {ownerHandle, kUnexpected},
    /* 18 */ {nodeType, kUnexpected},
    /* 19 */ {nodeValue, kUnexpected},
    /* 20 */ {setNodeValue, kTranslated},
    /* 21 */ {nodeName, kUnexpected},
    /* 22 */ {invalidMethodNumber, kUnexpected},
    /* 23 */ {normalize, kTranslated},
    /* 24 */ {notValidOnNodeRef, kUnexpected},
    /* 25 */ {notValidOnNodeRef, kUnexpected},
    /* 26 */ {namespaceURI, kUnexpected},
    /* 27 */ {prefix, kUnexpected},
    /* 28 */ {localName, kUnexpected},
    /* 29 */ {setPrefix, kTranslated},
    /* 30 */ {notValidOnNodeRef, kUnexpected},
    /* 31 */ {invalidMethodNumber, kUnexpected},
    /* 32 */ {invalidMethodNumber, kUnexpected},
    /* 33 */ {invalidMethodNumber, kUnexpected},
    /* 34 */ {setAttributeNode, kTranslated},
    /* 35 */ {attributeNode, kUnexpected},
    /* 36 */ {wholeValue, kUnexpected},
    /* 37 */ {setCountedValue, kTranslated},
    /* 38 */ {releaseWholeValue, kUnexpected},
    /* 39 */ {attributeNS, kUnexpected},
};

}  // namespace

void nodeExecute(DOMNode* node, int32_t method, void** args, void* result, ErrorReport& report) {
    if (!isInitialised()) {
        report.fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return;
    }
    if (static_cast<uint32_t>(method) - 1 > kHighestNodeMethod - 1) {
        report.fixed("Invalid method number", LUM_ERR_NODE_METHOD_NUMBER);
        return;
    }
    const NodeMethod& entry = kNodeMethods[method - 1];
    MethodCall call(args, result, report);
    try {
        entry.run(node, call);
    } catch (const DOMException& e) {
        if (entry.translatesDomErrors)
            reportDomError(e, report);
        else
            report.formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
    }
}

}  // namespace lumxml
