#include "dom/namespace_fixup.h"

#include <memory>

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUniDefs.hpp>
#include <xercesc/util/XMLUni.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// The name of the attribute declaring `prefix`: "xmlns:" + prefix, or
// "xmlns" for the default namespace. Released with XMLString::release.
class DeclarationName {
public:
    explicit DeclarationName(const XMLCh* prefix) {
        static const XMLCh xmlnsColon[] = u"xmlns:";
        if (prefix == nullptr) {
            name_ = XMLString::replicate(XMLUni::fgXMLNSString);
        } else {
            XMLSize_t length = XMLString::stringLen(prefix);
            name_ = static_cast<XMLCh*>(
                XMLPlatformUtils::fgMemoryManager->allocate((length + 7) * sizeof(XMLCh)));
            XMLString::copyString(name_, xmlnsColon);
            XMLString::copyString(name_ + 6, prefix);
        }
    }
    ~DeclarationName() { XMLString::release(&name_); }
    DeclarationName(const DeclarationName&) = delete;
    DeclarationName& operator=(const DeclarationName&) = delete;

    const XMLCh* get() const { return name_; }

private:
    XMLCh* name_ = nullptr;
};

// A null namespace counts as the empty one.
bool sameNamespace(const XMLCh* a, const XMLCh* b) {
    return XMLString::equals(a == nullptr ? XMLUni::fgZeroLenString : a,
                             b == nullptr ? XMLUni::fgZeroLenString : b);
}

// The declaration attribute of `name` on `element`, looked for first by
// name and then by namespace. The namespace lookup passes the full name as
// the local name, as lumxml always has; it finds declarations whose node
// name differs from `name`, which the name lookup would miss.
DOMAttr* findDeclaration(DOMElement* element, const XMLCh* name) {
    DOMAttr* attr = element->getAttributeNode(name);
    if (attr == nullptr) attr = element->getAttributeNodeNS(XMLUni::fgXMLNSURIName, name);
    return attr;
}

// The namespace bound to `name` by the nearest ancestor of `element` that
// declares it. The walk goes on past an empty (undeclaring) value: only a
// non-empty value ends it.
const XMLCh* inheritedNamespace(DOMElement* element, const XMLCh* name) {
    const XMLCh* value = nullptr;
    for (DOMNode* ancestor = element->getParentNode(); ancestor != nullptr;
         ancestor = ancestor->getParentNode()) {
        if (value != nullptr && *value != 0) break;
        if (ancestor->getNodeType() != DOMNode::ELEMENT_NODE) continue;
        DOMAttr* attr = findDeclaration(static_cast<DOMElement*>(ancestor), name);
        value = attr == nullptr ? nullptr : attr->getValue();
    }
    return value;
}

void declare(DOMNode* node, DOMElement* element, const XMLCh* prefix, const XMLCh* name,
             const XMLCh* uri, DomNodeList& additions) {
    DOMDocument* document = node->getOwnerDocument();
    // The item owns the attribute from its creation on, so that an attribute
    // that could not be attached is released, and one that was is removed
    // again with the others when the save ends.
    std::unique_ptr<DomNodeListItem> item(new DomNodeListItem(
        prefix != nullptr ? document->createAttributeNS(XMLUni::fgXMLNSURIName, name)
                          : document->createAttribute(XMLUni::fgXMLNSString)));
    // A null namespace gives an empty value, which undeclares the default.
    item->attr->setValue(uri == nullptr ? XMLUni::fgZeroLenString : uri);
    if (prefix != nullptr)
        element->setAttributeNodeNS(item->attr);
    else
        element->setAttributeNode(item->attr);
    additions.append(item.release());
}

}  // namespace

void fixNamespace(DOMNode* node, DOMElement* element, DomNodeList& additions) {
    if (node->getLocalName() == nullptr) return;  // made without namespace support
    const XMLCh* uri = node->getNamespaceURI();
    const XMLCh* prefix = node->getPrefix();
    if (XMLString::equals(uri, XMLUni::fgXMLURIName)) return;
    if (XMLString::startsWith(node->getNodeName(), XMLUni::fgXMLNSString)) return;

    DeclarationName name(prefix);
    if (DOMAttr* own = findDeclaration(element, name.get())) {
        if (sameNamespace(own->getValue(), uri)) return;
        throw DOMException(DOMException::NAMESPACE_ERR, 0, XMLPlatformUtils::fgMemoryManager);
    }
    if (sameNamespace(inheritedNamespace(element, name.get()), uri)) return;
    declare(node, element, prefix, name.get(), uri, additions);
}

}  // namespace lumxml
