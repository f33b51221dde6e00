// The namespace declarations that a save adds to elements, owned for the
// length of that save: destroying the list takes each one out of the tree.
#pragma once

#include <xercesc/dom/DOMAttr.hpp>

namespace lumxml {

class DomNodeListItem {
public:
    explicit DomNodeListItem(XERCES_CPP_NAMESPACE::DOMAttr* attr) : attr(attr) {}
    // Removes the attribute from its element and releases it. Never throws:
    // it runs in clean-up paths where another failure is being reported.
    virtual ~DomNodeListItem() noexcept;

    DomNodeListItem(const DomNodeListItem&) = delete;
    DomNodeListItem& operator=(const DomNodeListItem&) = delete;

    DomNodeListItem* next = nullptr;
    XERCES_CPP_NAMESPACE::DOMAttr* attr;
};

class DomNodeList {
public:
    DomNodeList() = default;
    // Destroys the items head first, in the order they were added.
    virtual ~DomNodeList() noexcept;

    DomNodeList(const DomNodeList&) = delete;
    DomNodeList& operator=(const DomNodeList&) = delete;

    void append(DomNodeListItem* item);

    DomNodeListItem* head = nullptr;
    DomNodeListItem* tail = nullptr;
};

}  // namespace lumxml
