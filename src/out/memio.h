// The memory output target and the host's memory functions.
//
// The host may register its own allocator with lumMemioInit; every block
// of an XMLMemOut then comes from it, so that the host can keep and free
// the block with its own allocator once the output is done. The library
// never frees such a block.
#pragma once

#include <cstdint>

#include <xercesc/framework/XMLFormatter.hpp>

#include "lumxml.h"

namespace lumxml {

// ---- Host memory functions ---------------------------------------------

// Stores the three host functions (any of them may be null), replacing
// earlier ones. The first is kept and never called.
void memioInit(MemioReservedFn reserved, MemioAllocFn alloc, MemioReallocFn realloc);

// The source-file text handed to the host functions with every call.
const char* memioSourceFile();

// The call sites named to the host functions by their line argument.
enum MemioCallSite : int32_t {
    kMemioLineConstruct = LUM_MEMIO_LINE_NEW_BLOCK,  // the first block of a new target
    kMemioLineGrow = LUM_MEMIO_LINE_GROW,            // growth while writing
    kMemioLineReplace = LUM_MEMIO_LINE_REPLACEMENT,  // the fresh block after a failed growth
    kMemioLineTrim = LUM_MEMIO_LINE_TRIM,            // the final trim of release()
};

// ---- XMLMemOut -----------------------------------------------------------

class XMLMemOut : public XERCES_CPP_NAMESPACE::XMLFormatTarget {
public:
    static constexpr uint32_t kInitialCapacity = 16384;
    // The integer thrown when the block cannot grow; handlers turn it into
    // the error code of the same number.
    static constexpr int kGrowthFailed = LUM_ERR_MEMORY_GROWTH;

    // A 16384-byte block; the byte-order mark that `encoding` asks for is
    // stored at its start only when `encoding` is not null and `writeBom`.
    XMLMemOut(const char* encoding, bool writeBom);

    // A block never handed to the host (no attachHost, no release) is
    // still the library's and is freed here when the runtime allocated
    // it; a handed-over block belongs to the host and is left alone.
    ~XMLMemOut() override;

    XMLMemOut(const XMLMemOut&) = delete;
    XMLMemOut& operator=(const XMLMemOut&) = delete;

    // Appends, growing the block first when the bytes and one spare byte
    // would not fit. A failed growth installs a fresh 16384-byte block,
    // drops everything written and throws the integer 80.
    void writeChars(const XMLByte* toWrite, XMLSize_t count,
                    XERCES_CPP_NAMESPACE::XMLFormatter* formatter) override;

    // Room to append up to `count` bytes in place: the end of the data when
    // a writeChars of that many bytes would not grow the block (nor find
    // it missing), else null. Bytes put there and then committed are
    // exactly a writeChars of them: a writer encodes straight into the
    // block instead of through a buffer of its own.
    uint8_t* room(XMLSize_t count) {
        if (buffer_ == nullptr || static_cast<uint64_t>(count) + 1 + length_ >= capacity_)
            return nullptr;
        return buffer_ + length_;
    }
    // Takes `count` bytes put at room() (at most the count asked for there).
    void commit(XMLSize_t count) { length_ += static_cast<uint32_t>(count); }

    // Publishes the block and the address of the live length to the host;
    // from then on every reallocation also updates *bufferOut.
    void attachHost(void** bufferOut, uint32_t** lengthOut);
    // Trims the block to length + 1 bytes and hands block and length over.
    void release(void** bufferOut, uint32_t* lengthOut);
    // For a creator that is about to forget the block for the host (the
    // host's variables are set to null): a block from the runtime
    // allocator is freed, since nobody could free it later; a block from
    // the host's allocator is left to the host's allocator.
    void discard();

    uint8_t* buffer() const { return buffer_; }
    uint32_t capacity() const { return capacity_; }
    uint32_t length() const { return length_; }
    bool fromHostAllocator() const { return fromHostAllocator_; }

    // The increment for a block of `capacity` bytes that must take `count`
    // more (the growth schedule by capacity band).
    static uint32_t growthIncrement(uint32_t capacity, XMLSize_t count);

private:
    void grow(XMLSize_t count);
    void replaceAfterFailedGrowth();
    void publishBuffer();

    uint8_t* buffer_ = nullptr;
    uint32_t capacity_ = 0;
    uint32_t length_ = 0;
    void** hostBufferSlot_ = nullptr;
    bool fromHostAllocator_ = false;  // the block came from the host's functions
    bool handedOver_ = false;
};

}  // namespace lumxml
