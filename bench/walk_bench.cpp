// A host's walk over one parent's children through the exports: the child
// count (node method 5), then for every child by index (8) its type (18),
// name (21) and value (19), beside a direct Xerces first-child/next-sibling
// walk that reads and transcodes the same strings. Sizes from 10^4 to 10^6
// children: the cost per child must stay flat.
#include <cstring>
#include <memory>
#include <string>

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

// One library document per size, loaded once as a host would.
struct HostTree {
    void* cell = nullptr;
    void* root = nullptr;
    int64_t children = -1;
};

HostTree& hostTree(int64_t children) {
    static HostTree tree;
    if (tree.children == children) return tree;
    bench::startLibrary();
    char error[257] = {0};
    int32_t code = 0;
    if (tree.cell != nullptr) lumDocDelete(tree.cell, error, &code);
    lumInitDocument(&tree.cell, 1, error, &code);
    std::string xml = bench::wide(children);
    char encoding[257];
    lumDocLoad(&tree.cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, xml.data(),
               static_cast<uint32_t>(xml.size()), nullptr, nullptr, 0, nullptr, error, &code);
    void* slots[1] = {nullptr};
    lumDocExecute(tree.cell, LUM_DOC_DOCUMENT_ELEMENT, slots, &tree.root, error, &code);
    tree.children = children;
    return tree;
}

void WalkLumxml(benchmark::State& state) {
    HostTree& tree = hostTree(state.range(0));
    char error[257] = {0};
    int32_t code = 0;
    for (auto _ : state) {
        int32_t count = 0;
        lumNodeExecute(tree.root, LUM_NODE_CHILD_COUNT, nullptr, &count, error, &code);
        size_t seen = 0;
        for (int32_t i = 0; i < count; ++i) {
            void* child = nullptr;
            void* indexSlot[1] = {&i};
            lumNodeExecute(tree.root, LUM_NODE_CHILD_AT, indexSlot, &child, error, &code);
            int32_t type = 0;
            lumNodeExecute(child, LUM_NODE_TYPE_CODE, nullptr, &type, error, &code);
            char name[64];
            char value[64];
            int32_t limit = 64;
            void* limitSlot[1] = {&limit};
            lumNodeExecute(child, LUM_NODE_NAME, limitSlot, name, error, &code);
            lumNodeExecute(child, LUM_NODE_VALUE, limitSlot, value, error, &code);
            seen += static_cast<size_t>(type) + std::strlen(name) + std::strlen(value);
        }
        benchmark::DoNotOptimize(seen);
    }
    if (code != LUM_OK) state.SkipWithError(error);
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

struct XercesTree {
    std::unique_ptr<XercesDOMParser> parser;
    DOMElement* root = nullptr;
    int64_t children = -1;
};

XercesTree& xercesTree(int64_t children) {
    static XercesTree tree;
    if (tree.children == children) return tree;
    bench::startLibrary();  // Xerces, started the way lumxml starts it
    tree.parser = std::make_unique<XercesDOMParser>();
    std::string xml = bench::wide(children);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "MEMPTR");
    tree.parser->parse(source);
    tree.root = tree.parser->getDocument()->getDocumentElement();
    tree.children = children;
    return tree;
}

// What a host reads of one child: its type, and 8-bit copies of its name
// and value.
size_t readChild(const DOMNode* child) {
    char name[64];
    char value[64];
    return static_cast<size_t>(child->getNodeType()) + bench::hostCopy(child->getNodeName(), name) +
           bench::hostCopy(child->getNodeValue(), value);
}

void WalkXercesSiblings(benchmark::State& state) {
    XercesTree& tree = xercesTree(state.range(0));
    for (auto _ : state) {
        size_t seen = 0;
        for (DOMNode* child = tree.root->getFirstChild(); child != nullptr;
             child = child->getNextSibling())
            seen += readChild(child);
        benchmark::DoNotOptimize(seen);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

// For contrast: Xerces' own indexed child list, which walks the sibling
// chain from the first child on every item(i) (quadratic in the count).
void WalkXercesIndexed(benchmark::State& state) {
    XercesTree& tree = xercesTree(state.range(0));
    for (auto _ : state) {
        DOMNodeList* children = tree.root->getChildNodes();
        XMLSize_t count = children->getLength();
        size_t seen = 0;
        for (XMLSize_t i = 0; i < count; ++i) seen += readChild(children->item(i));
        benchmark::DoNotOptimize(seen);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

}  // namespace

size_t bench::hostCopy(const XMLCh* text, char (&buffer)[64]) {
    buffer[0] = '\0';
    if (text != nullptr) XMLString::transcode(text, buffer, sizeof buffer - 1);
    return std::strlen(buffer);
}

void bench::registerWalk() {
    auto* lumxml = add("Walk", "lumxml", WalkLumxml);
    auto* xerces = add("Walk", "xerces-siblings", WalkXercesSiblings, 3.0);
    for (int64_t children : sizes().walkChildren) {
        lumxml->Arg(children)->Unit(benchmark::kMillisecond);
        xerces->Arg(children)->Unit(benchmark::kMillisecond);
    }
    // Only at the smallest size: at 10^6 children it would take hours.
    add("Walk", "xerces-indexed", WalkXercesIndexed)
        ->Arg(sizes().walkChildren[0])->Unit(benchmark::kMillisecond);
    registerNestedWalk();
}
