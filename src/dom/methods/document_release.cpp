#include "dom/methods/document_release.h"

#include <xercesc/dom/DOMDocumentType.hpp>

#include "dom/methods/doc_user_data.h"
#include "frame/deep_stack.h"
#include "frame/owned_heap.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

// Once a document has carried user data, which every lumxml document does
// (its host record), DOMDocument::release() first walks the whole tree,
// recursively, to call user-data handlers on every node. lumxml registers no
// handlers, so the walk finds nothing to call; it only cost a fifth of a
// load-and-delete cycle and a stack as deep as the tree. The rest of
// release() is done here in the same order: the document type first (its
// own release frees one made on the global heap by a DOMImplementation),
// then the document, whose destructor frees its heap and with it every node
// without visiting them.
void releaseDocument(DOMDocument* document) {
    if (document == nullptr) return;
    // Dropped when this returns, after the document's own blocks.
    HeapRef heap(OwnedHeap::ofDocument(document));
    DOMDocumentType* type = document->getDoctype();
    if (type != nullptr && type->getParentNode() != asNode(document)) {
        // The document still names a type it no longer holds: Xerces'
        // replaceChild(type, type) on a document leaves it so. Only
        // release() can free such a type, so it takes the stock route.
        releaseDeep(asNode(document));
        return;
    }
    if (type != nullptr) {
        document->removeChild(type);
        type->release();
    }
    delete document;
}

DOMDocument* adoptDocument(AbstractDOMParser& parser) {
    DOMDocument* document = parser.adoptDocument();
    if (OwnedHeap* heap = OwnedHeap::ofDocument(document)) heap->retain();
    return document;
}

void DocumentReleaser::operator()(DOMDocument* document) const noexcept {
    try {
        releaseDocument(document);
    } catch (...) {
        // Only reached on a failure path that already reports its own.
    }
}

}  // namespace lumxml
