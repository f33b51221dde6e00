#include "dom/methods/child_cursor.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include <xercesc/dom/DOMNamedNodeMap.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// Parents with at most this many children are answered by walking from the
// first child: a few pointer steps cost less than any lookup, and leaves
// and small elements, most of a document's nodes, take no list at all.
constexpr uint64_t kWalked = 8;

// ---- stamps ------------------------------------------------------------------

// One stamp per hash slot of a node or document address. A collision only
// makes a list look changed when it is not (it is then taken again), never
// the other way round, so the table can stay small and fixed. Relaxed
// atomics: threads work on different documents, and a host that hands a
// document from one thread to another orders those calls itself.
constexpr unsigned kStampBits = 16;
std::atomic<uint64_t> stamps[size_t{1} << kStampBits];

std::atomic<uint64_t>& stampSlot(const void* address) {
    uint64_t bits = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(address));
    return stamps[((bits >> 4) * 0x9E3779B97F4A7C15ull) >> (64 - kStampBits)];
}

uint64_t stampOf(const void* address) {
    return stampSlot(address).load(std::memory_order_relaxed);
}

uint64_t bump(const void* address) {
    return stampSlot(address).fetch_add(1, std::memory_order_relaxed) + 1;
}

// ---- one parent's children ---------------------------------------------------

constexpr uint64_t kNoIndex = ~uint64_t{0};

struct ChildList {
    const DOMNode* parent = nullptr;
    // Null for a document node (Xerces gives a document no owner).
    const DOMDocument* document = nullptr;
    uint64_t parentStamp = 0;
    uint64_t documentStamp = 0;
    std::vector<DOMNode*> children;
    // (child, index) sorted by address, made the first time a position is
    // asked out of order; empty until then.
    std::vector<std::pair<const DOMNode*, uint64_t>> byAddress;
    uint64_t lastUse = 0;
    uint64_t lastIndex = kNoIndex;
    // Reached an end by stepping towards it: a walk is done with this
    // parent, so its slot is the first to give up.
    bool finished = false;

    bool holds(const DOMNode* of) const {
        return parent == of && parentStamp == stampOf(of) &&
               document == of->getOwnerDocument() && documentStamp == stampOf(document);
    }

    // The list is filled before it names its parent: if an allocation
    // fails half way, it names nothing and is never taken for valid.
    void take(const DOMNode* of) {
        parent = nullptr;
        uint64_t stampBefore = stampOf(of);
        // A list once made for a huge parent is not kept for a small one.
        if (children.capacity() > 65536) std::vector<DOMNode*>().swap(children);
        children.clear();
        std::vector<std::pair<const DOMNode*, uint64_t>>().swap(byAddress);
        for (DOMNode* child = of->getFirstChild(); child != nullptr;
             child = child->getNextSibling())
            children.push_back(child);
        document = of->getOwnerDocument();
        documentStamp = stampOf(document);
        parentStamp = stampBefore;
        parent = of;
        lastIndex = kNoIndex;
        finished = false;
    }

    void forget() {
        parent = nullptr;
        document = nullptr;
        std::vector<DOMNode*>().swap(children);
        std::vector<std::pair<const DOMNode*, uint64_t>>().swap(byAddress);
        lastUse = 0;
        finished = false;
    }

    void visit(uint64_t index) {
        bool stepped = lastIndex != kNoIndex && (index == lastIndex + 1 || index + 1 == lastIndex);
        finished = index >= children.size() ||
                   (stepped && (index == 0 || index + 1 == children.size()));
        lastIndex = index;
    }

    DOMNode* at(uint64_t index) {
        visit(index);
        return index < children.size() ? children[index] : nullptr;
    }

    uint64_t positionOf(const DOMNode* child) {
        uint64_t found = nearLastIndex(child);
        if (found == kNoIndex) found = byAddressLookup(child);
        visit(found);
        return found;
    }

private:
    // Walks by position or sibling ask for the child next to the last one.
    uint64_t nearLastIndex(const DOMNode* child) const {
        if (lastIndex == kNoIndex) return kNoIndex;
        for (uint64_t at : {lastIndex + 1, lastIndex, lastIndex - 1})
            if (at < children.size() && children[at] == child) return at;
        return kNoIndex;
    }

    uint64_t byAddressLookup(const DOMNode* child) {
        if (byAddress.empty()) {
            // Made aside and swapped in, so that a failed allocation leaves none.
            std::vector<std::pair<const DOMNode*, uint64_t>> made;
            made.reserve(children.size());
            for (uint64_t i = 0; i < children.size(); ++i) made.emplace_back(children[i], i);
            std::sort(made.begin(), made.end());
            byAddress.swap(made);
        }
        auto it = std::lower_bound(byAddress.begin(), byAddress.end(),
                                   std::make_pair(child, uint64_t{0}));
        // Not among the children: answered as the count, as a full walk would.
        return it != byAddress.end() && it->first == child ? it->second : children.size();
    }
};

// ---- the lists of one thread -------------------------------------------------

// Set-associative: a parent is looked for among the few slots of its set.
// A depth-first walk keeps one unfinished list per large ancestor; lists of
// finished parents give way first, then the least recently used, so the
// ancestors of the node being walked keep theirs however many large
// parents their subtrees hold.
constexpr size_t kSets = 16;
constexpr size_t kWays = 8;

class ChildLists {
public:
    ChildList* find(const DOMNode* parent) {
        for (ChildList& list : setOf(parent))
            if (list.holds(parent)) {
                list.lastUse = ++clock_;
                return &list;
            }
        return nullptr;
    }

    ChildList& make(const DOMNode* parent) {
        ChildList& list = victim(parent);
        list.take(parent);
        list.lastUse = ++clock_;
        return list;
    }

    void forgetDocument(const DOMDocument* document, const DOMNode* documentNode) {
        for (auto& set : sets_)
            for (ChildList& list : set)
                if (list.parent != nullptr &&
                    (list.document == document || list.parent == documentNode))
                    list.forget();
    }

private:
    ChildList (&setOf(const void* parent))[kWays] {
        uint64_t bits = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(parent));
        return sets_[((bits >> 4) * 0x9E3779B97F4A7C15ull) >> 60];
    }

    ChildList& victim(const DOMNode* parent) {
        ChildList(&set)[kWays] = setOf(parent);
        ChildList* chosen = &set[0];
        for (ChildList& list : set) {
            if (list.parent == parent || list.parent == nullptr) return list;
            if (list.finished != chosen->finished) {
                if (list.finished) chosen = &list;
            } else if (list.lastUse < chosen->lastUse) {
                chosen = &list;
            }
        }
        return *chosen;
    }

    static_assert(kSets == 16, "setOf takes the top four bits of the hash");
    ChildList sets_[kSets][kWays];
    uint64_t clock_ = 0;
};

// One cache per thread, made on first use. Its pointer is a plain
// thread_local that outlives the cache: a host may still delete documents
// or walk them from its own exit code after this thread's thread_local
// objects are gone; then no list is kept and every answer is walked.
thread_local ChildLists* threadLists = nullptr;

#if defined(_WIN32)
// A DLL's thread_local destructors run at thread detach under the loader
// lock, where freeing the cache can deadlock the exiting thread. So on
// Windows a thread's cache is never destroyed: what it holds at the
// thread's end (lists of documents the thread did not delete) stays.
ChildLists* lists() {
    if (threadLists == nullptr) threadLists = new ChildLists;
    return threadLists;
}
#else
thread_local bool threadListsEnded = false;

struct ThreadListsOwner {
    ~ThreadListsOwner() {
        delete threadLists;
        threadLists = nullptr;
        threadListsEnded = true;
    }
};
thread_local ThreadListsOwner threadListsOwner;

ChildLists* lists() {
    if (threadLists == nullptr && !threadListsEnded) {
        (void)&threadListsOwner;  // registers the owner's destructor for this thread
        threadLists = new ChildLists;
    }
    return threadLists;
}
#endif

// ---- subtree walks without recursion -----------------------------------------

// Calls `visit` for every node below and including `root` that has
// children, attributes and their subtrees included, following only first
// child, next sibling and parent links.
template <class Visit>
void forEachParentIn(const DOMNode* root, Visit&& visit);

template <class Visit>
void forEachAttributeParent(const DOMNode* element, Visit&& visit) {
    DOMNamedNodeMap* attributes = element->getAttributes();
    if (attributes == nullptr) return;
    for (XMLSize_t i = 0, n = attributes->getLength(); i < n; ++i)
        forEachParentIn(attributes->item(i), visit);
}

template <class Visit>
void forEachParentIn(const DOMNode* root, Visit&& visit) {
    const DOMNode* node = root;
    while (node != nullptr) {
        if (node->getNodeType() == DOMNode::ELEMENT_NODE) forEachAttributeParent(node, visit);
        const DOMNode* first = node->getFirstChild();
        if (first != nullptr) {
            visit(node);
            node = first;
            continue;
        }
        while (node != root && node->getNextSibling() == nullptr) node = node->getParentNode();
        node = node == root ? nullptr : node->getNextSibling();
    }
}

}  // namespace

void noteChildrenChanged(const DOMNode* parent) {
    if (parent != nullptr) bump(parent);
}

void noteChildAppended(const DOMNode* parent, DOMNode* child) {
    ChildLists* cache = lists();
    ChildList* list = cache != nullptr ? cache->find(parent) : nullptr;
    uint64_t stamp = bump(parent);
    if (list == nullptr) return;
    list->children.push_back(child);
    std::vector<std::pair<const DOMNode*, uint64_t>>().swap(list->byAddress);
    list->parentStamp = stamp;
    list->finished = false;
}

void noteSubtreeChanged(const DOMNode* root) {
    if (root == nullptr) return;
    bump(root);
    forEachParentIn(root, [](const DOMNode* parent) { bump(parent); });
}

void noteDocumentReleased(const DOMDocument* document) {
    if (document == nullptr) return;
    const DOMNode* node = static_cast<const DOMNode*>(document);
    bump(document);
    bump(node);
    if (threadLists != nullptr) threadLists->forgetDocument(document, node);
}

DOMNode* childAt(const DOMNode* parent, uint64_t index) {
    ChildLists* cache = lists();
    if (cache != nullptr)
        if (ChildList* list = cache->find(parent)) return list->at(index);
    DOMNode* child = parent->getFirstChild();
    uint64_t at = 0;
    while (child != nullptr && at < index && (at < kWalked || cache == nullptr)) {
        child = child->getNextSibling();
        ++at;
    }
    if (child == nullptr || at == index) return child;
    return cache->make(parent).at(index);
}

uint64_t childCount(const DOMNode* parent) {
    const DOMNode* child = parent->getFirstChild();
    if (child == nullptr) return 0;
    ChildLists* cache = lists();
    if (cache != nullptr)
        if (ChildList* list = cache->find(parent)) return list->children.size();
    uint64_t count = 0;
    while (child != nullptr && (count <= kWalked || cache == nullptr)) {
        ++count;
        child = child->getNextSibling();
    }
    if (child == nullptr) return count;
    return cache->make(parent).children.size();
}

uint64_t positionAmongSiblings(const DOMNode* parent, const DOMNode* child) {
    ChildLists* cache = lists();
    if (cache != nullptr)
        if (ChildList* list = cache->find(parent)) return list->positionOf(child);
    uint64_t at = 0;
    const DOMNode* node = parent->getFirstChild();
    for (; node != nullptr && (at <= kWalked || cache == nullptr); node = node->getNextSibling(), ++at)
        if (node == child) return at;
    if (node == nullptr) return at;  // not among them: the count, as a full walk answers
    return cache->make(parent).positionOf(child);
}

}  // namespace lumxml
