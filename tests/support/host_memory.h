// Host memory functions for tests: they allocate with malloc/realloc like
// a host allocator would and record every call (size, source file, line),
// and can be told to fail.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "lumxml.h"

namespace lumtest {

struct MemoryCall {
    enum Kind { Alloc, Realloc } kind;
    uint32_t size;
    std::string sourceFile;
    int32_t line;
};

class HostMemory {
public:
    // The calls recorded since the last reset().
    static const std::vector<MemoryCall>& calls();
    static void reset();
    // The next `count` reallocations answer null (the block is kept by
    // the test, so that it can be freed: a host allocator's business).
    static void failNextReallocs(int count);

    static void* alloc(uint32_t size, const char* sourceFile, int32_t line);
    static void* realloc(void* block, uint32_t size, const char* sourceFile, int32_t line);
    static void reserved();

    // Frees the blocks kept back by failed reallocations.
    static void freeKeptBlocks();
    // Frees the last block handed out by alloc (a host whose variable
    // was cleared by the library frees it through its own records).
    static void freeLiveBlocks();
};

}  // namespace lumtest
