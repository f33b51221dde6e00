// Indexed access to a node's children in constant time, whatever order a
// host reads them in.
//
// Hosts walk a tree by asking each node for its child count and then for
// each child by index (forwards, backwards or at random), or by asking a
// node for its position. Xerces' getChildNodes()->item(i) and getLength()
// walk the sibling chain from the first child on every call, which makes
// such walks quadratic.
//
// A parent with a handful of children is answered by walking its siblings
// from the first child: that is cheaper than any lookup. A larger parent
// gets a list of its children, taken forwards from its first child (the one
// link Xerces always keeps right: a clone can carry a stale first-child flag
// that makes getPreviousSibling() answer null in the middle of a list, so
// no answer here ever uses it). Lists live in a small cache per thread and
// stay valid while two stamps are unchanged: the parent's own (bumped by a
// change to its child list) and its document's (bumped when the document
// is released). A change therefore invalidates only the lists it can move,
// never those of other parents or other documents.
//
// Every change to a child list must be announced before the next read:
// noteChildrenChanged for the parent (and for the old parent of a moved
// node), noteSubtreeChanged where Xerces changes lists throughout a subtree
// (normalize) or releases one (its nodes' memory is reused at once, so a
// stale list could otherwise match a new node by address), and
// noteDocumentReleased for a whole document.
#pragma once

#include <cstdint>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMNode.hpp>

namespace lumxml {

// The child list of `parent` may have changed (insert, remove, replace).
void noteChildrenChanged(const XERCES_CPP_NAMESPACE::DOMNode* parent);
// `child` was appended to the end of `parent`'s children and nothing else
// changed there: a list held for `parent` is extended rather than dropped.
void noteChildAppended(const XERCES_CPP_NAMESPACE::DOMNode* parent,
                       XERCES_CPP_NAMESPACE::DOMNode* child);
// Child lists anywhere in the subtree of `root` (attributes included) may
// change, or the subtree is about to be released.
void noteSubtreeChanged(const XERCES_CPP_NAMESPACE::DOMNode* root);
// `document` is about to be released; this thread's lists of it are freed.
void noteDocumentReleased(const XERCES_CPP_NAMESPACE::DOMDocument* document);

// getChildNodes()->item(index) of `parent`; null past the end.
XERCES_CPP_NAMESPACE::DOMNode* childAt(const XERCES_CPP_NAMESPACE::DOMNode* parent,
                                       uint64_t index);
// getChildNodes()->getLength() of `parent`.
uint64_t childCount(const XERCES_CPP_NAMESPACE::DOMNode* parent);
// Index of `child` among the children of `parent` (its parent node).
uint64_t positionAmongSiblings(const XERCES_CPP_NAMESPACE::DOMNode* parent,
                               const XERCES_CPP_NAMESPACE::DOMNode* child);

}  // namespace lumxml
