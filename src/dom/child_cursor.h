// Indexed access to a node's children in amortised constant time for
// sequential and nearby indexes.
//
// Hosts walk a tree by asking a node for its child count and then for each
// child by index, first to last. Xerces' getChildNodes()->item(i) and
// getLength() walk the sibling chain from the first child on every call,
// which makes such a walk quadratic. The cursor remembers the last
// (parent, index, child) position and the parent's child count, and answers
// exactly what item(i) and getLength() would.
//
// Every change to any child list in the process must call noteTreeChange()
// (all mutating node and document methods, loads, deletes, replacing a
// document): it invalidates every thread's cursor, since node memory that
// Xerces releases is reused at once and a stale position could otherwise
// match a new node by address.
#pragma once

#include <cstdint>

#include <xercesc/dom/DOMNode.hpp>

namespace lumxml {

void noteTreeChange();

// getChildNodes()->item(index) of `parent`; null past the end.
XERCES_CPP_NAMESPACE::DOMNode* childAt(const XERCES_CPP_NAMESPACE::DOMNode* parent,
                                       uint64_t index);
// getChildNodes()->getLength() of `parent`.
uint64_t childCount(const XERCES_CPP_NAMESPACE::DOMNode* parent);
// Index of `child` among the children of `parent` (its parent node).
uint64_t positionAmongSiblings(const XERCES_CPP_NAMESPACE::DOMNode* parent,
                               XERCES_CPP_NAMESPACE::DOMNode* child);

}  // namespace lumxml
