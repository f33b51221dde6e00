#include "dom/child_cursor.h"

#include <atomic>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

std::atomic<uint64_t> treeGeneration{1};

// One cursor per thread: loads of different documents may run side by
// side, and a cursor only trusts what it saw under the current generation.
struct Cursor {
    uint64_t generation = 0;
    const DOMNode* parent = nullptr;
    uint64_t index = 0;
    DOMNode* child = nullptr;  // item(index) of parent; null when no position is held
    bool countKnown = false;
    uint64_t count = 0;

    bool holds(const DOMNode* of) const {
        return generation == treeGeneration.load(std::memory_order_acquire) && parent == of;
    }
    void restart(const DOMNode* of) {
        generation = treeGeneration.load(std::memory_order_acquire);
        parent = of;
        child = nullptr;
        index = 0;
        countKnown = false;
    }
    void moveTo(uint64_t at, DOMNode* node) {
        index = at;
        child = node;
    }
};

thread_local Cursor cursor;

DOMNode* forward(DOMNode* from, uint64_t steps) {
    while (from != nullptr && steps-- > 0) from = from->getNextSibling();
    return from;
}

DOMNode* backward(DOMNode* from, uint64_t steps) {
    while (from != nullptr && steps-- > 0) from = from->getPreviousSibling();
    return from;
}

// item(index) from the nearest known point: the first child, the held
// position (forwards or backwards).
DOMNode* walkTo(const DOMNode* parent, uint64_t index) {
    if (cursor.child != nullptr) {
        if (index >= cursor.index) return forward(cursor.child, index - cursor.index);
        uint64_t back = cursor.index - index;
        if (back < index) return backward(cursor.child, back);
    }
    return forward(parent->getFirstChild(), index);
}

}  // namespace

void noteTreeChange() { treeGeneration.fetch_add(1, std::memory_order_acq_rel); }

DOMNode* childAt(const DOMNode* parent, uint64_t index) {
    if (!cursor.holds(parent)) cursor.restart(parent);
    if (cursor.countKnown && index >= cursor.count) return nullptr;
    DOMNode* found = walkTo(parent, index);
    if (found != nullptr) cursor.moveTo(index, found);
    return found;
}

uint64_t childCount(const DOMNode* parent) {
    if (!cursor.holds(parent)) cursor.restart(parent);
    if (cursor.countKnown) return cursor.count;
    uint64_t count = 0;
    const DOMNode* node = parent->getFirstChild();
    if (cursor.child != nullptr) {
        count = cursor.index;
        node = cursor.child;
    }
    for (; node != nullptr; node = node->getNextSibling()) ++count;
    cursor.count = count;
    cursor.countKnown = true;
    return count;
}

uint64_t positionAmongSiblings(const DOMNode* parent, DOMNode* child) {
    if (cursor.holds(parent) && cursor.child == child) return cursor.index;
    uint64_t position = 0;
    for (DOMNode* before = child->getPreviousSibling(); before != nullptr;
         before = before->getPreviousSibling())
        ++position;
    if (!cursor.holds(parent)) cursor.restart(parent);
    cursor.moveTo(position, child);
    return position;
}

}  // namespace lumxml
