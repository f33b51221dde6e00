// The namespace declarations a saved element needs, added to the tree for
// the length of one save.
#pragma once

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNode.hpp>

#include "dom/dom_node_list.h"

namespace lumxml {

// Makes sure the namespace of `node` (the element itself or one of its
// prefixed attributes) is declared on `element` or one of its ancestors.
// When it is not, a declaration attribute is added to `element` and
// recorded in `additions`, whose destruction removes it again. A
// declaration of the same prefix on `element` with another namespace raises
// the DOM namespace error (DOMException code 14).
void fixNamespace(XERCES_CPP_NAMESPACE::DOMNode* node, XERCES_CPP_NAMESPACE::DOMElement* element,
                  DomNodeList& additions);

}  // namespace lumxml
