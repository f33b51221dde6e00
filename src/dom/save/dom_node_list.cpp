#include "dom/save/dom_node_list.h"

#include <xercesc/dom/DOMElement.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

DomNodeListItem::~DomNodeListItem() noexcept {
    if (attr == nullptr) return;
    try {
        DOMElement* owner = attr->getOwnerElement();
        if (owner != nullptr) owner->removeAttributeNode(attr);
        attr->release();
    } catch (...) {
        // Nothing sensible is left to do; the attribute stays where it is.
    }
}

DomNodeList::~DomNodeList() noexcept {
    DomNodeListItem* item = head;
    while (item != nullptr) {
        DomNodeListItem* following = item->next;
        delete item;
        item = following;
    }
}

void DomNodeList::append(DomNodeListItem* item) {
    if (head == nullptr) {
        head = item;
        tail = item;
    } else {
        tail->next = item;
        tail = item;
    }
}

}  // namespace lumxml
