// Spare blocks of released event strings, kept by length for the strings
// of later events.
//
// Every string of an event is a block of its own from Xerces' memory
// manager, which the host may replace or release on its own
// (lumSAXFixAttrMem, lumSAXClearCallbackData): strings cannot share one
// block per event. What a pull reader may still save is the allocator's
// round trip: when the library clears a handled event, each string it
// releases is kept here under its length, and a later string of the same
// length takes that block instead of a new one. A block is filed under
// strlen + 1 bytes, whatever made it: however the host replaced or
// shortened a string, its block holds at least that many, so a block is
// only ever handed out for a string it can hold.
#pragma once

#include <cstddef>

namespace lumxml {
namespace sax {

class StringPool {
public:
    // Strings up to this many bytes, the NUL included, are kept.
    static constexpr size_t kMaxBytes = 128;
    // Blocks kept per length.
    static constexpr int kPerLength = 24;

    StringPool() = default;
    ~StringPool();
    StringPool(const StringPool&) = delete;
    StringPool& operator=(const StringPool&) = delete;

    // A block of at least `bytes` bytes from Xerces' memory manager (so
    // that XMLString::release frees it): a kept one when there is one.
    // Null when memory runs out.
    char* take(size_t bytes) {
        if (bytes <= kMaxBytes) {
            Spares& spares = spares_[bytes];
            if (spares.count != 0) return spares.blocks[--spares.count];
        }
        return allocate(bytes);
    }
    // A released string (null does nothing): kept, or released when its
    // length has enough spares or is too long.
    void give(char* text);
    // A block from take(bytes) that was not used after all.
    void putBack(char* block, size_t bytes) {
        if (bytes <= kMaxBytes && spares_[bytes].count != kPerLength) {
            Spares& spares = spares_[bytes];
            spares.blocks[spares.count++] = block;
            return;
        }
        release(block);
    }

private:
    static char* allocate(size_t bytes);
    static void release(char* block);

    struct Spares {
        char* blocks[kPerLength];
        int count = 0;
    };
    Spares spares_[kMaxBytes + 1];
};

}  // namespace sax
}  // namespace lumxml
