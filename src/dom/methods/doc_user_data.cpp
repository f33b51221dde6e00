#include "dom/methods/doc_user_data.h"

#include "dom/methods/child_cursor.h"
#include "dom/methods/document_release.h"

#include "frame/library_state.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// A host that started the library with a non-zero error code gets no key;
// Xerces compares keys by their text, so the same text serves instead.
const XMLCh* key() {
    const XMLCh* made = userDataKey();
    return made != nullptr ? made : u"udatakey";
}

}  // namespace

DocUserData* userDataOf(const DOMNode* node) {
    return static_cast<DocUserData*>(node->getUserData(key()));
}

DocUserData* detachUserData(DOMNode* node) {
    DocUserData* record = userDataOf(node);
    node->setUserData(key(), nullptr, nullptr);
    return record;
}

void attachUserData(DOMNode* node, DocUserData* record) {
    node->setUserData(key(), record, nullptr);
}

// The record is on `to` before it leaves `from`, and `from` goes last: a
// failure on the way leaves `from` whole and holding its record.
DOMDocument* replaceDocument(DOMDocument* from, DOMDocument* to) {
    attachUserData(asNode(to), userDataOf(asNode(from)));
    detachUserData(asNode(from));
    noteDocumentReleased(from);
    releaseDocument(from);
    return to;
}

}  // namespace lumxml
