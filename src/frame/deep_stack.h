// Xerces-C walks trees recursively in a few operations (deep clone and
// import, normalize, releasing a node). A tree nested hundreds of
// thousands deep would overflow the caller's stack there. Such calls are
// made through runForDepth, which moves them to a thread whose stack is
// sized for the depth at hand; shallow trees, the common case, run in place.
#pragma once

#include <cstddef>
#include <exception>
#include <utility>

#include <xercesc/dom/DOMNode.hpp>

namespace lumxml {

// Greatest depth below `node` (0 for a leaf), found without recursion.
size_t subtreeDepth(const XERCES_CPP_NAMESPACE::DOMNode* node);

namespace detail {
// Runs `work(context)` with room for `depth` levels; false if no thread
// with such a stack could be made (the work has then not run).
bool runWithRoomFor(size_t depth, void (*work)(void*), void* context);
}  // namespace detail

// Runs `work()` with a stack that can hold the recursion of Xerces' walks
// over a subtree `depth` levels deep. Exceptions reach the caller as if the
// work had run in place.
template <class Work>
void runForDepth(size_t depth, Work&& work) {
    struct Context {
        Work* work;
        std::exception_ptr failure;
    } context{&work, nullptr};
    auto trampoline = [](void* raw) {
        Context* c = static_cast<Context*>(raw);
        try {
            (*c->work)();
        } catch (...) {
            c->failure = std::current_exception();
        }
    };
    if (!detail::runWithRoomFor(depth, trampoline, &context)) {
        work();  // no thread: try in place, as Xerces itself would
        return;
    }
    if (context.failure) std::rethrow_exception(context.failure);
}

// runForDepth for the subtree below `node`.
template <class Work>
void runForSubtree(const XERCES_CPP_NAMESPACE::DOMNode* node, Work&& work) {
    runForDepth(node != nullptr ? subtreeDepth(node) : 0, std::forward<Work>(work));
}

// release() of a node, whose walk recurses over the subtree.
inline void releaseDeep(XERCES_CPP_NAMESPACE::DOMNode* node) {
    runForSubtree(node, [node] { node->release(); });
}

}  // namespace lumxml
