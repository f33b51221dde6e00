#include "host_memory.h"

#include <cstdlib>

namespace lumtest {

namespace {

std::vector<MemoryCall>& recorded() {
    static std::vector<MemoryCall> calls;
    return calls;
}

std::vector<void*>& keptBlocks() {
    static std::vector<void*> blocks;
    return blocks;
}

int gFailingReallocs = 0;
void* gLastAllocated = nullptr;

}  // namespace

const std::vector<MemoryCall>& HostMemory::calls() { return recorded(); }

void HostMemory::reset() {
    recorded().clear();
    gFailingReallocs = 0;
    freeKeptBlocks();
}

void HostMemory::failNextReallocs(int count) { gFailingReallocs = count; }

void* HostMemory::alloc(uint32_t size, const char* sourceFile, int32_t line) {
    recorded().push_back({MemoryCall::Alloc, size, sourceFile ? sourceFile : "", line});
    gLastAllocated = std::malloc(size);
    return gLastAllocated;
}

void* HostMemory::realloc(void* block, uint32_t size, const char* sourceFile, int32_t line) {
    recorded().push_back({MemoryCall::Realloc, size, sourceFile ? sourceFile : "", line});
    if (gFailingReallocs > 0) {
        --gFailingReallocs;
        keptBlocks().push_back(block);
        return nullptr;
    }
    return std::realloc(block, size);
}

void HostMemory::reserved() { std::abort(); }  // never to be called

void HostMemory::freeLiveBlocks() {
    std::free(gLastAllocated);
    gLastAllocated = nullptr;
}

void HostMemory::freeKeptBlocks() {
    for (void* block : keptBlocks()) std::free(block);
    keptBlocks().clear();
}

}  // namespace lumtest
