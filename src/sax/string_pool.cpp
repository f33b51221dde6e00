#include "sax/string_pool.h"

#include <cstring>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "frame/host_codec.h"

namespace lumxml {
namespace sax {

StringPool::~StringPool() {
    for (Spares& spares : spares_) {
        while (spares.count != 0) codec::release(spares.blocks[--spares.count]);
    }
}

char* StringPool::allocate(size_t bytes) {
    xercesc::MemoryManager* memory = xercesc::XMLPlatformUtils::fgMemoryManager;
    if (memory == nullptr) return nullptr;
    return static_cast<char*>(memory->allocate(bytes));
}

void StringPool::release(char* block) { codec::release(block); }

void StringPool::give(char* text) {
    if (text == nullptr) return;
    const size_t bytes = std::strlen(text) + 1;
    if (bytes <= kMaxBytes) {
        Spares& spares = spares_[bytes];
        if (spares.count != kPerLength) {
            spares.blocks[spares.count++] = text;
            return;
        }
    }
    codec::release(text);
}

}  // namespace sax
}  // namespace lumxml
