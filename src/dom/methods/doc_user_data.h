// The host record of a document: ties a DOM document back to the host
// object that owns it. Kept on the document node under the user-data key
// "udatakey"; it moves with the host object whenever the library replaces
// the DOMDocument behind it (load, new document with a document type).
#pragma once

#include <cstdint>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMNode.hpp>

namespace lumxml {

struct DocUserData {
    int64_t hostHandle = 0;
    // Nothing in lumxml sets these; a host reaches the record by other means.
    uint8_t restrictOwner = 0;
    uint8_t restrictParent = 0;
};

// The document as a node: DOMDocument* and DOMNode* are different addresses.
inline XERCES_CPP_NAMESPACE::DOMNode* asNode(XERCES_CPP_NAMESPACE::DOMDocument* document) {
    return static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(document);
}

// The record on `node`, or null.
DocUserData* userDataOf(const XERCES_CPP_NAMESPACE::DOMNode* node);
// Takes the record off `node` (null when there was none).
DocUserData* detachUserData(XERCES_CPP_NAMESPACE::DOMNode* node);
// Attaches `record` to `node` (no handler: the library frees it itself).
void attachUserData(XERCES_CPP_NAMESPACE::DOMNode* node, DocUserData* record);

// Moves the host record from `from` to `to`, releases `from` and answers `to`.
XERCES_CPP_NAMESPACE::DOMDocument* replaceDocument(XERCES_CPP_NAMESPACE::DOMDocument* from,
                                                   XERCES_CPP_NAMESPACE::DOMDocument* to);

}  // namespace lumxml
