#include "dom/save/namespace_fixup.h"

#include <memory>

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// The name of the attribute declaring `prefix`: "xmlns:" + prefix, or
// "xmlns" for the default namespace (into `name`, whose memory is reused).
void setDeclarationName(std::u16string& name, const XMLCh* prefix) {
    name.assign(XMLUni::fgXMLNSString);
    if (prefix != nullptr) {
        name += u':';
        name += prefix;
    }
}

// True when some attribute of the map could answer findDeclaration: a name
// starting with "xmlns" or the namespace of declarations.
bool mayHoldDeclaration(DOMNamedNodeMap* attributes, XMLSize_t count) {
    for (XMLSize_t i = 0; i < count; ++i) {
        DOMNode* attr = attributes->item(i);
        if (attr == nullptr) continue;
        if (XMLString::startsWith(attr->getNodeName(), XMLUni::fgXMLNSString)) return true;
        if (XMLString::equals(attr->getNamespaceURI(), XMLUni::fgXMLNSURIName)) return true;
    }
    return false;
}

bool nonEmpty(const XMLCh* text) { return text != nullptr && *text != 0; }

// A null namespace counts as the empty one.
bool sameNamespace(const XMLCh* a, const XMLCh* b) {
    return XMLString::equals(a == nullptr ? XMLUni::fgZeroLenString : a,
                             b == nullptr ? XMLUni::fgZeroLenString : b);
}

// The declaration attribute of `name` on `element`, looked for first by
// name and then by namespace. The namespace lookup passes the full name as
// the local name, as lumxml always has.
DOMAttr* findDeclaration(DOMElement* element, const XMLCh* name) {
    DOMAttr* attr = element->getAttributeNode(name);
    if (attr == nullptr) attr = element->getAttributeNodeNS(XMLUni::fgXMLNSURIName, name);
    return attr;
}

const XMLCh* declaredValue(DOMElement* element, const XMLCh* name) {
    DOMAttr* attr = findDeclaration(element, name);
    return attr == nullptr ? nullptr : attr->getValue();
}

// The names under which `attr` can answer findDeclaration.
void addDeclarationNames(DOMNode* attr, std::vector<std::u16string>& names) {
    const XMLCh* name = attr->getNodeName();
    if (XMLString::startsWith(name, XMLUni::fgXMLNSString)) names.emplace_back(name);
    const XMLCh* localName = attr->getLocalName();
    if (localName != nullptr && XMLString::equals(attr->getNamespaceURI(), XMLUni::fgXMLNSURIName))
        names.emplace_back(localName);
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

void NamespaceFixup::fixElement(DOMElement* element) {
    DOMNamedNodeMap* attributes = element->getAttributes();
    const XMLSize_t original = attributes->getLength();
    fixedElement_ = element;
    mayDeclare_ = !shortcuts_ || mayHoldDeclaration(attributes, original);
    fix(element, element);
    for (XMLSize_t i = 0; i < original; ++i) {
        DOMNode* attr = attributes->item(i);
        if (attr != nullptr && attr->getPrefix() != nullptr) fix(attr, element);
    }
}

void NamespaceFixup::fix(DOMNode* node, DOMElement* element) {
    if (node->getLocalName() == nullptr) return;  // made without namespace support
    const XMLCh* uri = node->getNamespaceURI();
    const XMLCh* prefix = node->getPrefix();
    // Every early answer below leaves the tree as it is, so a use known to
    // be in scope may answer before them.
    const bool ownUnknown = element != fixedElement_ || mayDeclare_;
    if (!ownUnknown && knownInScope(prefix, uri)) return;
    if (XMLString::equals(uri, XMLUni::fgXMLURIName)) return;
    if (XMLString::startsWith(node->getNodeName(), XMLUni::fgXMLNSString)) return;

    setDeclarationName(name_, prefix);
    if (ownUnknown) {
        if (DOMAttr* own = findDeclaration(element, name_.c_str())) {
            if (sameNamespace(own->getValue(), uri)) return;
            throw DOMException(DOMException::NAMESPACE_ERR, 0, XMLPlatformUtils::fgMemoryManager);
        }
    }
    // An ancestor's empty value (an undeclared default) does not end the
    // search: only a non-empty one does. Nothing found counts as empty, so
    // an element in no namespace with no default in scope adds nothing.
    if (sameNamespace(inherited(name_), uri)) {
        if (!ownUnknown) noteInScope(prefix, uri);
        return;
    }
    declare(node, element, prefix, name_.c_str(), uri, additions_);
    if (element == fixedElement_) mayDeclare_ = true;
}

bool NamespaceFixup::knownInScope(const XMLCh* prefix, const XMLCh* uri) const {
    for (const KnownUse& use : known_) {
        if (use.valid && use.prefix == prefix && use.uri == uri && use.scope == scopeChanges_)
            return true;
    }
    return false;
}

void NamespaceFixup::noteInScope(const XMLCh* prefix, const XMLCh* uri) {
    KnownUse& use = known_[nextKnown_];
    nextKnown_ = (nextKnown_ + 1) % kKnownUses;
    use.prefix = prefix;
    use.uri = uri;
    use.scope = scopeChanges_;
    use.valid = true;
}

void NamespaceFixup::enter(DOMElement* element) {
    if (element == fixedElement_ && !mayDeclare_) {
        // No attribute can declare anything: nothing to push.
        pushed_.emplace_back();
        return;
    }
    std::vector<Name> names;
    DOMNamedNodeMap* attributes = element->getAttributes();
    const XMLSize_t count = attributes->getLength();
    for (XMLSize_t i = 0; i < count; ++i) addDeclarationNames(attributes->item(i), names);

    std::vector<Name> pushedNames;
    for (const Name& name : names) {
        bool seen = false;
        for (const Name& done : pushedNames) seen = seen || done == name;
        if (seen) continue;
        const XMLCh* value = declaredValue(element, name.c_str());
        if (!nonEmpty(value)) continue;
        inScope_[name].push_back(value);
        pushedNames.push_back(name);
    }
    if (!pushedNames.empty()) ++scopeChanges_;
    pushed_.push_back(std::move(pushedNames));
}

void NamespaceFixup::leave() {
    if (pushed_.empty()) return;
    for (const Name& name : pushed_.back()) inScope_.find(name)->second.pop_back();
    if (!pushed_.back().empty()) ++scopeChanges_;
    pushed_.pop_back();
}

const XMLCh* NamespaceFixup::inherited(const Name& name) {
    auto found = inScope_.find(name);
    if (found != inScope_.end() && !found->second.empty()) return found->second.back();
    return inheritedAboveStart(name);
}

const XMLCh* NamespaceFixup::inheritedAboveStart(const Name& name) {
    auto cached = aboveStart_.find(name);
    if (cached != aboveStart_.end()) return cached->second;
    const XMLCh* value = nullptr;
    for (DOMNode* ancestor = start_ == nullptr ? nullptr : start_->getParentNode();
         ancestor != nullptr; ancestor = ancestor->getParentNode()) {
        if (ancestor->getNodeType() != DOMNode::ELEMENT_NODE) continue;
        const XMLCh* declared = declaredValue(static_cast<DOMElement*>(ancestor), name.c_str());
        if (nonEmpty(declared)) {
            value = declared;
            break;
        }
    }
    aboveStart_.emplace(name, value);
    return value;
}

}  // namespace lumxml
