#include "frame/deep_stack.h"

#include "frame/platform.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// Up to this depth the caller's own stack is ample.
constexpr size_t kDepthInPlace = 2000;

#if defined(__SANITIZE_ADDRESS__)
#define LUMXML_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUMXML_ASAN 1
#endif
#endif

// Xerces' recursive walks take a few frames per level; sanitizers make
// frames several times larger.
#if defined(LUMXML_ASAN)
constexpr size_t kBytesPerLevel = 4096;
#else
constexpr size_t kBytesPerLevel = 1024;
#endif
constexpr size_t kBaseStack = 16u << 20;

}  // namespace

size_t subtreeDepth(const DOMNode* node) {
    size_t deepest = 0;
    size_t depth = 0;
    const DOMNode* current = node;
    while (current != nullptr) {
        const DOMNode* child = current->getFirstChild();
        if (child != nullptr) {
            current = child;
            if (++depth > deepest) deepest = depth;
            continue;
        }
        // Up until a node with a next sibling, never above `node`.
        while (current != node && current->getNextSibling() == nullptr) {
            current = current->getParentNode();
            --depth;
        }
        if (current == node) break;
        current = current->getNextSibling();
    }
    return deepest;
}

namespace detail {

bool runWithRoomFor(size_t depth, void (*work)(void*), void* context) {
    if (depth <= kDepthInPlace) {
        work(context);
        return true;
    }
    return platform::runOnLargeStack(kBaseStack + depth * kBytesPerLevel, work, context);
}

}  // namespace detail

}  // namespace lumxml
