// The namespace declarations a saved element needs, added to the tree for
// the length of one save.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>

#include "dom/dom_node_list.h"

namespace lumxml {

// One save's namespace fix-up over a subtree walked from `start` in
// document order.
//
// The rule looks for a declaration on the element, then on its ancestors
// nearest first, until one with a non-empty value answers. Done literally
// that walk is quadratic in the depth of the tree; instead the values that
// the open elements declare are kept on one stack per declaration name,
// pushed when an element's children are entered and popped when it is
// closed, so every lookup costs the same whatever the depth. Ancestors
// above the start node are never changed by the save; their answer is
// looked up once per name.
class NamespaceFixup {
public:
    NamespaceFixup(XERCES_CPP_NAMESPACE::DOMNode* start, DomNodeList& additions)
        : start_(start), additions_(additions) {}

    NamespaceFixup(const NamespaceFixup&) = delete;
    NamespaceFixup& operator=(const NamespaceFixup&) = delete;

    // Makes sure the namespace of `node` (the element itself or one of its
    // prefixed attributes) is declared on `element` or one of its
    // ancestors. When it is not, a declaration attribute is added to
    // `element` and recorded in the additions, whose destruction removes it
    // again. A declaration of the same prefix on `element` with another
    // namespace raises the DOM namespace error (DOMException code 14).
    void fix(XERCES_CPP_NAMESPACE::DOMNode* node, XERCES_CPP_NAMESPACE::DOMElement* element);

    // `element`, fixed up, is about to have its children written: its
    // declarations now answer for them.
    void enter(XERCES_CPP_NAMESPACE::DOMElement* element);
    // The children of the element last entered are written.
    void leave();

private:
    using Name = std::u16string;

    // The value that the nearest ancestor of `element` declaring `name`
    // with a non-empty value gives, else null.
    const XMLCh* inherited(const XMLCh* name);
    const XMLCh* inheritedAboveStart(const Name& name);

    XERCES_CPP_NAMESPACE::DOMNode* start_;
    DomNodeList& additions_;
    // Non-empty declared values of the entered elements, innermost last.
    std::unordered_map<Name, std::vector<const XMLCh*>> inScope_;
    // The names each entered element pushed, to pop them again.
    std::vector<std::vector<Name>> pushed_;
    std::unordered_map<Name, const XMLCh*> aboveStart_;
};

}  // namespace lumxml
