// The memory manager lumxml gives to every parse and to every document it
// makes: it owns each block it hands to Xerces and frees what Xerces left
// behind when the last of its users (the parser, the document the parser
// built) lets go of it.
//
// Xerces does not free everything it allocates: a parse that reads an
// external DTD leaves about 128 bytes behind on this platform, parse after
// parse. Blocks come from XMLPlatformUtils::fgMemoryManager with a small
// header in front that links them into the heap's list, so the heap knows
// every block still out, at a constant cost per allocation.
#pragma once

#include <cstddef>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/dom/DOMDocument.hpp>

namespace lumxml {

class OwnedHeap final : public XERCES_CPP_NAMESPACE::MemoryManager {
public:
    // A new heap with one reference, held by the caller.
    static OwnedHeap* create();
    // The heap behind `manager`, or null when it is another manager.
    static OwnedHeap* of(XERCES_CPP_NAMESPACE::MemoryManager* manager) noexcept;
    // The heap the document allocates from, or null for one made on
    // another manager.
    static OwnedHeap* ofDocument(const XERCES_CPP_NAMESPACE::DOMDocument* document) noexcept;

    void retain() noexcept { ++references_; }
    // The last reference frees every block still out, then the heap.
    void drop() noexcept;

    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;
    // Exceptions can outlive the parser that threw them: their text comes
    // from the process-wide manager.
    XERCES_CPP_NAMESPACE::MemoryManager* getExceptionMemoryManager() override;

    size_t blocksOut() const noexcept { return blocks_; }
    size_t bytesOut() const noexcept { return bytes_; }

private:
    struct alignas(16) Header {
        Header* previous;
        Header* next;
        size_t size;
    };

    OwnedHeap() noexcept;
    ~OwnedHeap() override;
    void freeAll() noexcept;

    Header list_;  // sentinel of the circular list of blocks out
    size_t references_ = 1;
    size_t blocks_ = 0;
    size_t bytes_ = 0;
};

// One reference to a heap, dropped when the holder goes.
class HeapRef {
public:
    HeapRef() = default;
    // Takes over a reference the caller held.
    explicit HeapRef(OwnedHeap* heap) noexcept : heap_(heap) {}
    HeapRef(HeapRef&& other) noexcept : heap_(other.heap_) { other.heap_ = nullptr; }
    HeapRef& operator=(HeapRef&& other) noexcept;
    HeapRef(const HeapRef&) = delete;
    HeapRef& operator=(const HeapRef&) = delete;
    ~HeapRef() { reset(); }

    OwnedHeap* get() const noexcept { return heap_; }
    // Hands the reference over to the caller.
    OwnedHeap* release() noexcept;
    void reset() noexcept;

private:
    OwnedHeap* heap_ = nullptr;
};

}  // namespace lumxml
