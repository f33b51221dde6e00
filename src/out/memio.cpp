#include "out/memio.h"

#include <cstdlib>
#include <cstring>

#include "out/byte_order.h"

namespace lumxml {

// ---- Host memory functions ---------------------------------------------

namespace {

// Library-wide and unguarded: the host registers them before any output
// to memory starts.
MemioReservedFn gReserved = nullptr;
MemioAllocFn gAlloc = nullptr;
MemioReallocFn gRealloc = nullptr;

void* allocateBlock(uint32_t size, MemioCallSite line) {
    if (gAlloc != nullptr) return gAlloc(size, memioSourceFile(), line);
    return std::malloc(size);
}

void* reallocateBlock(void* block, uint32_t size, MemioCallSite line) {
    if (gRealloc != nullptr) return gRealloc(block, size, memioSourceFile(), line);
    return std::realloc(block, size);
}

}  // namespace

void memioInit(MemioReservedFn reserved, MemioAllocFn alloc, MemioReallocFn realloc) {
    gReserved = reserved;
    gAlloc = alloc;
    gRealloc = realloc;
    (void)gReserved;  // kept, never called
}

const char* memioSourceFile() { return "lumxml/src/out/memio.cpp"; }

// ---- XMLMemOut -----------------------------------------------------------

XMLMemOut::XMLMemOut(const char* encoding, bool writeBom)
    : buffer_(static_cast<uint8_t*>(allocateBlock(kInitialCapacity, kMemioLineConstruct))),
      capacity_(kInitialCapacity),
      fromHostAllocator_(gAlloc != nullptr) {
    if (encoding == nullptr || !writeBom || buffer_ == nullptr) return;
    uint8_t mark[2];
    size_t size = byteOrderMarkBytes(byteOrderMarkFor(encoding), mark);
    std::memcpy(buffer_, mark, size);
    length_ = static_cast<uint32_t>(size);
}

uint32_t XMLMemOut::growthIncrement(uint32_t capacity, XMLSize_t count) {
    uint32_t increment;
    if (capacity < 0x800000u)
        increment = capacity;
    else if (capacity < 0x2000000u)
        increment = capacity >> 1;
    else if (capacity < 0x8000000u)
        increment = capacity >> 2;
    else if (capacity < 0x10000000u)
        increment = capacity >> 3;
    else
        increment = capacity >> 4;
    if (count >= increment) increment += static_cast<uint32_t>(count);
    return increment;
}

XMLMemOut::~XMLMemOut() {
    if (!handedOver_) discard();
}

void XMLMemOut::discard() {
    if (!fromHostAllocator_) std::free(buffer_);
    buffer_ = nullptr;
    capacity_ = 0;
    length_ = 0;
    publishBuffer();
}

void XMLMemOut::grow(XMLSize_t count) {
    capacity_ += growthIncrement(capacity_, count);
    void* old = buffer_;
    fromHostAllocator_ = gRealloc != nullptr;
    buffer_ = static_cast<uint8_t*>(reallocateBlock(buffer_, capacity_, kMemioLineGrow));
    // The runtime's realloc keeps the old block when it fails, and nobody
    // holds it any more (the host's variable is set to null below), so it
    // is freed here. A host realloc keeps its own rules.
    if (buffer_ == nullptr && gRealloc == nullptr) std::free(old);
    // The host's variable follows every reallocation, a failed one too.
    publishBuffer();
}

void XMLMemOut::replaceAfterFailedGrowth() {
    fromHostAllocator_ = gAlloc != nullptr;
    buffer_ = static_cast<uint8_t*>(allocateBlock(kInitialCapacity, kMemioLineReplace));
    capacity_ = kInitialCapacity;
    length_ = 0;
    publishBuffer();
    throw kGrowthFailed;
}

void XMLMemOut::writeChars(const XMLByte* toWrite, XMLSize_t count,
                           XERCES_CPP_NAMESPACE::XMLFormatter*) {
    // One spare byte always stays behind the data: release() trims to
    // length + 1.
    if (static_cast<uint64_t>(count) + 1 + length_ >= capacity_) grow(count);
    if (buffer_ == nullptr) replaceAfterFailedGrowth();
    std::memcpy(buffer_ + length_, toWrite, count);
    length_ += static_cast<uint32_t>(count);
}

void XMLMemOut::publishBuffer() {
    if (hostBufferSlot_ != nullptr) *hostBufferSlot_ = buffer_;
}

void XMLMemOut::attachHost(void** bufferOut, uint32_t** lengthOut) {
    if (bufferOut != nullptr) *bufferOut = buffer_;
    if (lengthOut != nullptr) *lengthOut = &length_;
    hostBufferSlot_ = bufferOut;
    handedOver_ = true;
}

void XMLMemOut::release(void** bufferOut, uint32_t* lengthOut) {
    if (buffer_ != nullptr) {
        void* trimmed = reallocateBlock(buffer_, length_ + 1, kMemioLineTrim);
        // Shrinking cannot really fail; if it does, the old block stands.
        if (trimmed != nullptr) buffer_ = static_cast<uint8_t*>(trimmed);
    }
    handedOver_ = true;
    if (bufferOut != nullptr) *bufferOut = buffer_;
    if (lengthOut != nullptr) *lengthOut = length_;
}

}  // namespace lumxml
