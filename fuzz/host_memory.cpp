#include "host_memory.h"

#include <cstdlib>
#include <set>

#include "lumxml.h"

namespace fuzz {

namespace {

std::set<void*>& blocks() {
    static auto* live = new std::set<void*>;
    return *live;
}
uint32_t reallocsUntilFailure = 0;

void* hostAlloc(uint32_t size, const char*, int32_t) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) blocks().insert(block);
    return block;
}

void* hostRealloc(void* block, uint32_t size, const char*, int32_t) {
    if (reallocsUntilFailure != 0 && --reallocsUntilFailure == 0) return nullptr;
    void* grown = std::realloc(block, size == 0 ? 1 : size);
    if (grown == nullptr) return nullptr;
    if (block != nullptr) blocks().erase(block);
    blocks().insert(grown);
    return grown;
}

}  // namespace

void installHostMemory() {
    static bool installed = [] {
        lumMemioInit(nullptr, hostAlloc, hostRealloc);
        return true;
    }();
    (void)installed;
}

void failReallocAfter(uint32_t n) { reallocsUntilFailure = n; }

void releaseHostMemory() {
    for (void* block : blocks()) std::free(block);
    blocks().clear();
    reallocsUntilFailure = 0;
}

}  // namespace fuzz
