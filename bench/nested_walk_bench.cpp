// Host walks over a nested, attribute-rich catalogue through the exports,
// the way a generic host reads any DOM: for every node its type (node
// method 18) and child count (5), each child by index (8), and its name (21)
// or value (19). Beside it, a Xerces first-child/next-sibling walk that
// reads and transcodes the same strings. Each walk runs at two sizes ten
// times apart: the cost per node must stay flat.
//
// Variants, each a way hosts walk: forwards; backwards (last index first);
// by position, parent and sibling methods; two documents walked in
// alternation; a walk that changes another document as it goes, and one
// that changes the walked document under other parents. The copy walk
// makes, for each element read, a new element in a second document and
// appends it there, beside the same copy made with Xerces calls.
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLString.hpp>

#include "documents.h"
#include "host_copy.h"
#include "lumxml.h"
#include "suite.h"

XERCES_CPP_NAMESPACE_USE

namespace {

// ---- documents ----------------------------------------------------------------

// The two sizes of a walk: a fifth and twice the suite's document size
// (4 MB and 40 MB by default).
int64_t smallBytes() { return (bench::sizes().megabytes << 20) / 5; }
int64_t largeBytes() { return (bench::sizes().megabytes << 20) * 2; }

const std::string& nestedText(int64_t bytes) {
    static std::map<int64_t, std::string> texts;
    static std::mutex made;
    std::lock_guard<std::mutex> lock(made);
    std::string& text = texts[bytes];
    if (text.empty()) text = bench::nestedCatalogue(static_cast<size_t>(bytes));
    return text;
}

// A library document loaded from memory, deleted with the object.
class HostDocument {
public:
    explicit HostDocument(const std::string& xml) {
        bench::startLibrary();
        lumInitDocument(&cell, 1, error, &code);
        char encoding[257];
        lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, xml.data(),
                   static_cast<uint32_t>(xml.size()), nullptr, nullptr, 0, nullptr, error, &code);
    }
    HostDocument() {
        bench::startLibrary();
        lumInitDocument(&cell, 1, error, &code);
    }
    ~HostDocument() { lumDocDelete(cell, error, &code); }
    HostDocument(const HostDocument&) = delete;
    HostDocument& operator=(const HostDocument&) = delete;

    // The document as a node: a walk starts from here.
    void* node() const {
        return static_cast<DOMNode*>(static_cast<DOMDocument*>(cell));
    }

    void* cell = nullptr;
    char error[257] = {0};
    int32_t code = 0;
};

// The document of `bytes` (`which` of two alike), kept for the whole run.
HostDocument& cachedDocument(int64_t bytes, int which = 0) {
    static std::map<std::pair<int64_t, int>, std::unique_ptr<HostDocument>> documents;
    static std::mutex made;  // the threaded walks ask from two threads
    std::lock_guard<std::mutex> lock(made);
    std::unique_ptr<HostDocument>& document = documents[{bytes, which}];
    if (!document) document = std::make_unique<HostDocument>(nestedText(bytes));
    return *document;
}

// ---- the host's calls ------------------------------------------------------------

struct Calls {
    char error[257] = {0};
    int32_t code = 0;

    int32_t int32(void* node, int32_t method) {
        int32_t value = 0;
        lumNodeExecute(node, method, nullptr, &value, error, &code);
        return value;
    }
    void* child(void* node, int32_t index) {
        void* found = nullptr;
        void* slots[1] = {&index};
        lumNodeExecute(node, LUM_NODE_CHILD_AT, slots, &found, error, &code);
        return found;
    }
    void* nodeResult(void* node, int32_t method) {
        void* found = nullptr;
        lumNodeExecute(node, method, nullptr, &found, error, &code);
        return found;
    }
    // Type, then name (elements) or value (the rest): what a host reads.
    size_t read(void* node) {
        int32_t type = int32(node, LUM_NODE_TYPE_CODE);
        char text[64];
        int32_t limit = sizeof text;
        void* slots[1] = {&limit};
        text[0] = '\0';
        lumNodeExecute(node, type == LUM_NODE_ELEMENT ? LUM_NODE_NAME : LUM_NODE_VALUE, slots,
                       text, error, &code);
        code = 0;  // a value longer than the buffer is refused: the walk goes on
        return static_cast<size_t>(type) + std::strlen(text);
    }
};

struct Place {
    void* node;
    int32_t count;
    int32_t next;
};

enum class Order { Forward, Backward };

// One step of a generic walk: answers false when the walk is over.
class GenericWalk {
public:
    GenericWalk(void* root, Order order) : order_(order) { stack_.push_back({root, -1, 0}); }

    bool step(Calls& calls, size_t& seen) {
        while (!stack_.empty()) {
            Place& place = stack_.back();
            if (place.count < 0) {
                seen += calls.read(place.node);
                place.count = calls.int32(place.node, LUM_NODE_CHILD_COUNT);
                ++nodes_;
            }
            if (place.next >= place.count) {
                stack_.pop_back();
                continue;
            }
            int32_t index = order_ == Order::Forward ? place.next : place.count - 1 - place.next;
            ++place.next;
            stack_.push_back({calls.child(place.node, index), -1, 0});
            return true;
        }
        return false;
    }

    int64_t nodes() const { return nodes_; }

private:
    Order order_;
    std::vector<Place> stack_;
    int64_t nodes_ = 0;
};

void finish(benchmark::State& state, Calls& calls, int64_t nodes, size_t seen) {
    benchmark::DoNotOptimize(seen);
    if (calls.code != LUM_OK) state.SkipWithError(calls.error);
    state.SetItemsProcessed(nodes);
}

// A generic walk over document `which` of the size (one per thread in the
// threaded walk).
void walkOnce(benchmark::State& state, Order order, int which = 0) {
    HostDocument& document = cachedDocument(state.range(0), which);
    Calls calls;
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        GenericWalk walk(document.node(), order);
        while (walk.step(calls, seen)) {
        }
        nodes += walk.nodes();
    }
    finish(state, calls, nodes, seen);
}

void NestedWalkLumxml(benchmark::State& state) { walkOnce(state, Order::Forward); }
void NestedWalkBackwardLumxml(benchmark::State& state) { walkOnce(state, Order::Backward); }
// Two threads, each walking its own document.
void NestedWalkThreadsLumxml(benchmark::State& state) {
    walkOnce(state, Order::Forward, state.thread_index());
}

// First child by index 0, then parent (7), position (6) and the parent's
// child at position + 1 (8): a walk by position, parent and sibling.
void NestedWalkByPositionLumxml(benchmark::State& state) {
    HostDocument& document = cachedDocument(state.range(0));
    Calls calls;
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        void* node = document.node();
        while (node != nullptr) {
            seen += calls.read(node);
            ++nodes;
            if (calls.int32(node, LUM_NODE_CHILD_COUNT) > 0) {
                node = calls.child(node, 0);
                continue;
            }
            // Up until a node with a next sibling.
            while (node != nullptr) {
                void* parent = calls.nodeResult(node, LUM_NODE_PARENT);
                if (parent == nullptr) {
                    node = nullptr;
                    break;
                }
                int32_t position = calls.int32(node, LUM_NODE_INDEX_IN_PARENT);
                if (position + 1 < calls.int32(parent, LUM_NODE_CHILD_COUNT)) {
                    node = calls.child(parent, position + 1);
                    break;
                }
                node = parent == document.node() ? nullptr : parent;
            }
        }
    }
    finish(state, calls, nodes, seen);
}

// Two documents, one step of each in turn.
void NestedWalkTwoDocumentsLumxml(benchmark::State& state) {
    HostDocument& first = cachedDocument(state.range(0), 0);
    HostDocument& second = cachedDocument(state.range(0), 1);
    Calls calls;
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        GenericWalk a(first.node(), Order::Forward);
        GenericWalk b(second.node(), Order::Forward);
        bool more = true;
        while (more) more = a.step(calls, seen) | b.step(calls, seen);
        nodes += a.nodes() + b.nodes();
    }
    finish(state, calls, nodes, seen);
}

// Every 16 steps, a new element is appended somewhere else: in another
// document, or in the walked one under a parent the walk is not in.
void walkWithChanges(benchmark::State& state, bool sameDocument) {
    HostDocument& document = cachedDocument(state.range(0));
    Calls calls;
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        state.PauseTiming();
        HostDocument other;
        void* target = nullptr;
        void* made = nullptr;
        int32_t elementType = LUM_NODE_ELEMENT;
        const char* name = "scratch";
        void* createSlots[2] = {const_cast<char*>(name), &elementType};
        void* changed = sameDocument ? document.cell : other.cell;
        lumDocExecute(changed, LUM_DOC_CREATE_NODE, createSlots, &target, calls.error, &calls.code);
        void* appendSlots[2] = {target, nullptr};
        // The scratch element sits at the top of the changed document.
        if (sameDocument) {
            void* root = nullptr;
            lumDocExecute(document.cell, LUM_DOC_DOCUMENT_ELEMENT, nullptr, &root, calls.error,
                          &calls.code);
            lumNodeExecute(root, LUM_NODE_INSERT_BEFORE, appendSlots, nullptr, calls.error,
                           &calls.code);
        } else {
            lumDocExecute(other.cell, LUM_DOC_INSERT_BEFORE, appendSlots, nullptr, calls.error,
                          &calls.code);
        }
        state.ResumeTiming();
        GenericWalk walk(document.node(), Order::Forward);
        int64_t steps = 0;
        while (walk.step(calls, seen)) {
            if (++steps % 16 != 0) continue;
            lumDocExecute(changed, LUM_DOC_CREATE_NODE, createSlots, &made, calls.error,
                          &calls.code);
            void* slots[2] = {made, nullptr};
            lumNodeExecute(target, LUM_NODE_INSERT_BEFORE, slots, nullptr, calls.error,
                           &calls.code);
        }
        nodes += walk.nodes();
        state.PauseTiming();
        if (sameDocument) lumNodeExecute(target, LUM_NODE_REMOVE, nullptr, nullptr, calls.error,
                                         &calls.code);
        state.ResumeTiming();
    }
    finish(state, calls, nodes, seen);
}

void NestedWalkChangingAnotherDocumentLumxml(benchmark::State& state) {
    walkWithChanges(state, false);
}
void NestedWalkChangingElsewhereLumxml(benchmark::State& state) { walkWithChanges(state, true); }

// ---- the copy walk -------------------------------------------------------------------

void NestedCopyLumxml(benchmark::State& state) {
    HostDocument& source = cachedDocument(state.range(0));
    Calls calls;
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto copy = std::make_unique<HostDocument>();
        state.ResumeTiming();
        // (source node, its copy's parent in the new document)
        struct Step {
            Place place;
            void* into;
        };
        std::vector<Step> stack{{{source.node(), -1, 0}, copy->node()}};
        while (!stack.empty()) {
            Step& step = stack.back();
            Place& place = step.place;
            if (place.count < 0) {
                ++nodes;
                int32_t type = calls.int32(place.node, LUM_NODE_TYPE_CODE);
                place.count = calls.int32(place.node, LUM_NODE_CHILD_COUNT);
                if (type == LUM_NODE_ELEMENT) {
                    char name[64];
                    int32_t limit = sizeof name;
                    void* nameSlots[1] = {&limit};
                    lumNodeExecute(place.node, LUM_NODE_NAME, nameSlots, name, calls.error,
                                   &calls.code);
                    int32_t elementType = LUM_NODE_ELEMENT;
                    void* createSlots[2] = {name, &elementType};
                    void* made = nullptr;
                    lumDocExecute(copy->cell, LUM_DOC_CREATE_NODE, createSlots, &made, calls.error,
                                  &calls.code);
                    void* appendSlots[2] = {made, nullptr};
                    lumNodeExecute(step.into, LUM_NODE_INSERT_BEFORE, appendSlots, nullptr,
                                   calls.error, &calls.code);
                    step.into = made;
                    seen += std::strlen(name);
                }
            }
            if (place.next >= place.count) {
                stack.pop_back();
                continue;
            }
            void* child = calls.child(place.node, place.next++);
            stack.push_back({{child, -1, 0}, step.into});
        }
        state.PauseTiming();
        copy.reset();
        state.ResumeTiming();
    }
    finish(state, calls, nodes, seen);
}

// ---- Xerces references ------------------------------------------------------------------

// Parsed once per size and kept for the whole run.
DOMDocument* xercesDocument(int64_t bytes, int which = 0) {
    static std::map<std::pair<int64_t, int>, std::unique_ptr<XercesDOMParser>> parsers;
    static std::mutex made;  // the threaded walks ask from two threads
    std::lock_guard<std::mutex> lock(made);
    std::unique_ptr<XercesDOMParser>& parser = parsers[{bytes, which}];
    if (!parser) {
        bench::startLibrary();
        parser = std::make_unique<XercesDOMParser>();
        parser->setDoNamespaces(true);
        const std::string& xml = nestedText(bytes);
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                 "MEMPTR");
        parser->parse(source);
    }
    return parser->getDocument();
}

size_t readXerces(const DOMNode* node) {
    char text[64];
    DOMNode::NodeType type = node->getNodeType();
    return static_cast<size_t>(type) +
           bench::hostCopy(type == DOMNode::ELEMENT_NODE ? node->getNodeName() : node->getNodeValue(), text);
}

// Depth first by first child, next sibling and parent links.
template <class Visit>
void siblingWalk(DOMNode* root, Visit&& visit) {
    DOMNode* node = root;
    while (node != nullptr) {
        visit(node);
        if (DOMNode* first = node->getFirstChild()) {
            node = first;
            continue;
        }
        while (node != root && node->getNextSibling() == nullptr) node = node->getParentNode();
        node = node == root ? nullptr : node->getNextSibling();
    }
}

// The sibling walk `times` times over document `which` of the size (twice
// where the lumxml walk reads two documents; one document per thread in
// the threaded walk).
void siblingWalks(benchmark::State& state, int times, int which = 0) {
    DOMDocument* document = xercesDocument(state.range(0), which);
    int64_t nodes = 0;
    size_t seen = 0;
    for (auto _ : state) {
        for (int time = 0; time < times; ++time)
            siblingWalk(document, [&](DOMNode* node) {
                seen += readXerces(node);
                ++nodes;
            });
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(nodes);
}

void NestedWalkXercesSiblings(benchmark::State& state) { siblingWalks(state, 1); }
void NestedWalkXercesSiblingsTwice(benchmark::State& state) { siblingWalks(state, 2); }
void NestedWalkThreadsXerces(benchmark::State& state) {
    siblingWalks(state, 1, state.thread_index());
}

void NestedCopyXerces(benchmark::State& state) {
    DOMDocument* source = xercesDocument(state.range(0));
    DOMImplementation* implementation =
        DOMImplementationRegistry::getDOMImplementation(u"Core");
    int64_t nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        DOMDocument* copy = implementation->createDocument();
        state.ResumeTiming();
        // (source node, the copy's parent for it)
        std::vector<std::pair<DOMNode*, DOMNode*>> pending{{source, copy}};
        while (!pending.empty()) {
            auto [node, into] = pending.back();
            pending.pop_back();
            ++nodes;
            if (node->getNodeType() == DOMNode::ELEMENT_NODE) {
                char name[64];
                bench::hostCopy(node->getNodeName(), name);
                XMLCh* wide = XMLString::transcode(name);
                DOMElement* made = copy->createElement(wide);
                XMLString::release(&wide);
                into->appendChild(made);
                into = made;
            }
            for (DOMNode* child = node->getLastChild(); child != nullptr;
                 child = child->getPreviousSibling())
                pending.push_back({child, into});
        }
        state.PauseTiming();
        copy->release();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(nodes);
}

}  // namespace

void bench::registerNestedWalk() {
    for (auto [path, body] : {std::pair{"NestedWalk", NestedWalkLumxml},
                              std::pair{"NestedWalkBackward", NestedWalkBackwardLumxml},
                              std::pair{"NestedWalkByPosition", NestedWalkByPositionLumxml},
                              std::pair{"NestedWalkTwoDocuments", NestedWalkTwoDocumentsLumxml},
                              std::pair{"NestedWalkChangingAnotherDocument",
                                        NestedWalkChangingAnotherDocumentLumxml},
                              std::pair{"NestedWalkChangingElsewhere",
                                        NestedWalkChangingElsewhereLumxml}}) {
        auto* lumxml = add(path, "lumxml", body);
        bool two = std::string(path) == "NestedWalkTwoDocuments";
        auto* xerces = add(path, "xerces-siblings",
                           two ? NestedWalkXercesSiblingsTwice : NestedWalkXercesSiblings,
                           std::string(path) == "NestedWalk" ? 1.5 : 0);
        for (int64_t bytes : {smallBytes(), largeBytes()}) {
            lumxml->Arg(bytes)->Unit(benchmark::kMillisecond);
            xerces->Arg(bytes)->Unit(benchmark::kMillisecond);
        }
    }
    auto* threads = add("NestedWalkThreads", "lumxml", NestedWalkThreadsLumxml);
    auto* xercesThreads = add("NestedWalkThreads", "xerces-siblings", NestedWalkThreadsXerces);
    for (int64_t bytes : {smallBytes(), largeBytes()}) {
        threads->Arg(bytes)->Threads(2)->UseRealTime()->Unit(benchmark::kMillisecond);
        xercesThreads->Arg(bytes)->Threads(2)->UseRealTime()->Unit(benchmark::kMillisecond);
    }
    auto* lumxml = add("NestedCopy", "lumxml", NestedCopyLumxml);
    auto* xerces = add("NestedCopy", "xerces", NestedCopyXerces);
    for (int64_t bytes : {smallBytes() / 4, largeBytes() / 4}) {
        lumxml->Arg(bytes)->Unit(benchmark::kMillisecond);
        xerces->Arg(bytes)->Unit(benchmark::kMillisecond);
    }
}
