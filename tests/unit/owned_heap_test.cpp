// The heaps of lumxml's own: blocks are counted while out, the last
// reference frees whatever is left, and a document made on a heap holds a
// reference that its release drops. Leaks and bad frees are the sanitizer
// build's to find.
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "dom/methods/document_release.h"
#include "frame/owned_heap.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using lumxml::HeapRef;
using lumxml::OwnedHeap;

namespace {

class OwnedHeapTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::startInternals(); }
};

TEST_F(OwnedHeapTest, CountsTheBlocksAndBytesOut) {
    HeapRef heap(OwnedHeap::create());
    void* a = heap.get()->allocate(10);
    void* b = heap.get()->allocate(300);
    EXPECT_EQ(heap.get()->blocksOut(), 2u);
    EXPECT_EQ(heap.get()->bytesOut(), 310u);
    heap.get()->deallocate(a);
    heap.get()->deallocate(nullptr);
    EXPECT_EQ(heap.get()->blocksOut(), 1u);
    EXPECT_EQ(heap.get()->bytesOut(), 300u);
    heap.get()->deallocate(b);
    EXPECT_EQ(heap.get()->blocksOut(), 0u);
}

TEST_F(OwnedHeapTest, BlocksKeepTheAlignmentOfTheProcessManager) {
    HeapRef heap(OwnedHeap::create());
    for (XMLSize_t size : {1u, 7u, 16u, 33u}) {
        void* block = heap.get()->allocate(size);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
        std::memset(block, 0xA5, size);
    }
    // The four blocks are freed with the heap.
}

TEST_F(OwnedHeapTest, TheLastReferenceFreesWhatIsLeft) {
    OwnedHeap* heap = OwnedHeap::create();
    heap->retain();
    heap->allocate(64);
    heap->allocate(4096);
    heap->drop();
    EXPECT_EQ(heap->blocksOut(), 2u);  // still held once
    heap->drop();                      // gone, and its blocks with it
}

TEST_F(OwnedHeapTest, OnlyItsOwnManagerIsRecognised) {
    HeapRef heap(OwnedHeap::create());
    EXPECT_EQ(OwnedHeap::of(heap.get()), heap.get());
    EXPECT_EQ(OwnedHeap::of(XMLPlatformUtils::fgMemoryManager), nullptr);
    EXPECT_EQ(OwnedHeap::of(nullptr), nullptr);
    EXPECT_EQ(OwnedHeap::ofDocument(nullptr), nullptr);
}

TEST_F(OwnedHeapTest, ADocumentHoldsItsHeapUntilReleased) {
    DOMImplementation* implementation = DOMImplementationRegistry::getDOMImplementation(u"Core");
    OwnedHeap* heap = OwnedHeap::create();
    DOMDocument* document = implementation->createDocument(nullptr, nullptr, nullptr, heap);
    EXPECT_EQ(OwnedHeap::ofDocument(document), heap);
    document->appendChild(document->createElement(u"root"));
    EXPECT_GT(heap->blocksOut(), 0u);
    // The document takes over the creator's reference; its release drops it.
    lumxml::releaseDocument(document);
}

TEST_F(OwnedHeapTest, DocumentsOnTheProcessManagerAreReleasedAsBefore) {
    DOMImplementation* implementation = DOMImplementationRegistry::getDOMImplementation(u"Core");
    DOMDocument* document = implementation->createDocument(nullptr, nullptr, nullptr,
                                                           XMLPlatformUtils::fgMemoryManager);
    EXPECT_EQ(OwnedHeap::ofDocument(document), nullptr);
    lumxml::releaseDocument(document);
}

}  // namespace
