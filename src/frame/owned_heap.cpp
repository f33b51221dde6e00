#include "frame/owned_heap.h"

#include "frame/parse_budget.h"

#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/util/PlatformUtils.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

OwnedHeap* OwnedHeap::create() { return new OwnedHeap(); }

OwnedHeap::OwnedHeap() noexcept {
    list_.previous = &list_;
    list_.next = &list_;
    list_.size = 0;
}

OwnedHeap::~OwnedHeap() { freeAll(); }

OwnedHeap* OwnedHeap::of(MemoryManager* manager) noexcept {
    return dynamic_cast<OwnedHeap*>(manager);
}

OwnedHeap* OwnedHeap::ofDocument(const DOMDocument* document) noexcept {
    if (document == nullptr) return nullptr;
    // Every DOMDocument Xerces makes is a DOMDocumentImpl.
    return of(static_cast<const DOMDocumentImpl*>(document)->getMemoryManager());
}

void OwnedHeap::drop() noexcept {
    if (--references_ == 0) delete this;
}

void* OwnedHeap::allocate(XMLSize_t size) {
    // Only a block this big can be one item grown past a hardened parse's
    // limit; every other allocation pays one comparison.
    if (size > ParseBudget::kMaxItemBlockBytes) ParseBudget::noteLargeBlock(this);
    // Throws OutOfMemoryException as Xerces' own manager does.
    auto* header = static_cast<Header*>(
        XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Header) + size));
    header->size = size;
    header->previous = &list_;
    header->next = list_.next;
    list_.next->previous = header;
    list_.next = header;
    ++blocks_;
    bytes_ += size;
    return header + 1;
}

void OwnedHeap::deallocate(void* block) {
    if (block == nullptr) return;
    Header* header = static_cast<Header*>(block) - 1;
    header->previous->next = header->next;
    header->next->previous = header->previous;
    --blocks_;
    bytes_ -= header->size;
    XMLPlatformUtils::fgMemoryManager->deallocate(header);
}

MemoryManager* OwnedHeap::getExceptionMemoryManager() {
    return XMLPlatformUtils::fgMemoryManager->getExceptionMemoryManager();
}

void OwnedHeap::freeAll() noexcept {
    Header* header = list_.next;
    while (header != &list_) {
        Header* next = header->next;
        XMLPlatformUtils::fgMemoryManager->deallocate(header);
        header = next;
    }
    list_.previous = &list_;
    list_.next = &list_;
    blocks_ = 0;
    bytes_ = 0;
}

HeapRef& HeapRef::operator=(HeapRef&& other) noexcept {
    if (this != &other) {
        reset();
        heap_ = other.heap_;
        other.heap_ = nullptr;
    }
    return *this;
}

OwnedHeap* HeapRef::release() noexcept {
    OwnedHeap* heap = heap_;
    heap_ = nullptr;
    return heap;
}

void HeapRef::reset() noexcept {
    if (heap_ != nullptr) heap_->drop();
    heap_ = nullptr;
}

}  // namespace lumxml
