// Releasing a whole document.
#pragma once

#include <memory>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/parsers/AbstractDOMParser.hpp>

namespace lumxml {

// Frees `document`, its heap and every node in it, like
// DOMDocument::release() but without that call's tree walk (see the .cpp).
// Runs in place whatever the depth of the tree.
// A document made on a heap of lumxml's own holds one reference to it,
// dropped here once the document is gone (what Xerces left in the heap is
// freed with it).
void releaseDocument(XERCES_CPP_NAMESPACE::DOMDocument* document);

// The parser's document, handed over to the caller (null when it built
// none) with its own reference to the parser's heap: it outlives the parser.
XERCES_CPP_NAMESPACE::DOMDocument* adoptDocument(XERCES_CPP_NAMESPACE::AbstractDOMParser& parser);

// Releases a document the caller has not handed to the host yet.
struct DocumentReleaser {
    void operator()(XERCES_CPP_NAMESPACE::DOMDocument* document) const noexcept;
};
using OwnedDocument = std::unique_ptr<XERCES_CPP_NAMESPACE::DOMDocument, DocumentReleaser>;

}  // namespace lumxml
