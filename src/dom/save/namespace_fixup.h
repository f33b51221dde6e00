// The namespace declarations a saved element needs, added to the tree for
// the length of one save.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>

#include "dom/save/dom_node_list.h"

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
//
// Most elements declare nothing and use a namespace already in scope: an
// element whose attributes cannot hold a declaration skips the lookups on
// the element itself, and the last few namespace uses found in scope are
// remembered (by the addresses of prefix and namespace, which the tree
// keeps for the save) until the declarations in scope change.
class NamespaceFixup {
public:
    // Without `shortcuts` every lookup is made in full (for the tests that
    // compare the two).
    NamespaceFixup(XERCES_CPP_NAMESPACE::DOMNode* start, DomNodeList& additions,
                   bool shortcuts = true)
        : start_(start), additions_(additions), shortcuts_(shortcuts) {}

    NamespaceFixup(const NamespaceFixup&) = delete;
    NamespaceFixup& operator=(const NamespaceFixup&) = delete;

    // Makes sure the namespace of `node` (the element itself or one of its
    // prefixed attributes) is declared on `element` or one of its
    // ancestors. When it is not, a declaration attribute is added to
    // `element` and recorded in the additions, whose destruction removes it
    // again. A declaration of the same prefix on `element` with another
    // namespace raises the DOM namespace error (DOMException code 14).
    void fix(XERCES_CPP_NAMESPACE::DOMNode* node, XERCES_CPP_NAMESPACE::DOMElement* element);

    // fix() for `element` itself, then for each of its prefixed attributes
    // in map order. The map is live and kept sorted by name, so a
    // declaration added here can shift the attributes still to be checked;
    // the positions present at the start are checked as they stand then.
    void fixElement(XERCES_CPP_NAMESPACE::DOMElement* element);

    // `element`, fixed up, is about to have its children written: its
    // declarations now answer for them.
    void enter(XERCES_CPP_NAMESPACE::DOMElement* element);
    // The children of the element last entered are written.
    void leave();

private:
    using Name = std::u16string;

    // The value that the nearest ancestor of `element` declaring `name`
    // with a non-empty value gives, else null.
    const XMLCh* inherited(const Name& name);
    const XMLCh* inheritedAboveStart(const Name& name);
    // A namespace use known to be in scope with nothing declared since.
    bool knownInScope(const XMLCh* prefix, const XMLCh* uri) const;
    void noteInScope(const XMLCh* prefix, const XMLCh* uri);

    XERCES_CPP_NAMESPACE::DOMNode* start_;
    DomNodeList& additions_;
    bool shortcuts_;
    // Non-empty declared values of the entered elements, innermost last
    // (a name whose stack is empty is not in scope).
    std::unordered_map<Name, std::vector<const XMLCh*>> inScope_;
    // The names each entered element pushed, to pop them again.
    std::vector<std::vector<Name>> pushed_;
    std::unordered_map<Name, const XMLCh*> aboveStart_;
    Name name_;  // the declaration name of the current lookup

    // The element of the last fixElement, and whether its attributes may
    // hold a declaration (one that fixElement added included).
    XERCES_CPP_NAMESPACE::DOMElement* fixedElement_ = nullptr;
    bool mayDeclare_ = true;
    // Namespace uses found in scope, valid while the declarations in scope
    // stay as they were (`scopeChanges_` unchanged).
    struct KnownUse {
        const XMLCh* prefix = nullptr;
        const XMLCh* uri = nullptr;
        uint64_t scope = 0;
        bool valid = false;
    };
    static constexpr int kKnownUses = 4;
    KnownUse known_[kKnownUses];
    int nextKnown_ = 0;
    uint64_t scopeChanges_ = 0;
};

}  // namespace lumxml
