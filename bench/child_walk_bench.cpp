// A host's tree walk: the child count, then each child by index with its
// name, through the exports (node methods 5, 8 and 21), beside a direct
// Xerces first-child/next-sibling walk that transcodes the same names, and
// beside Xerces' own indexed child list for contrast.
#include <cstring>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include "lumxml.h"

XERCES_CPP_NAMESPACE_USE

namespace {

std::string wideDocument(int64_t children) {
    std::string xml = "<root>";
    xml.reserve(static_cast<size_t>(children) * 10 + 16);
    for (int64_t i = 0; i < children; ++i) xml += "<item/>";
    xml += "</root>";
    return xml;
}

// One library document per size, loaded once as a host would.
struct HostTree {
    void* cell = nullptr;
    void* root = nullptr;
};

HostTree& hostTree(int64_t children) {
    static int64_t loadedSize = -1;
    static HostTree tree;
    if (loadedSize == children) return tree;
    char error[257] = {0};
    int32_t code = 0;
    static bool started = [] {
        char message[257] = {0};
        int32_t status = 0;
        lumInitParser("UTF-8", message, &status);
        return status == 0;
    }();
    (void)started;
    if (tree.cell != nullptr) lumDocDelete(tree.cell, error, &code);
    lumInitDocument(&tree.cell, 1, error, &code);
    std::string xml = wideDocument(children);
    char encoding[257];
    lumDocLoad(&tree.cell, 0, 1, encoding, nullptr, xml.data(), static_cast<uint32_t>(xml.size()),
               nullptr, nullptr, 0, nullptr, error, &code);
    void* slots[1] = {nullptr};
    lumDocExecute(tree.cell, 4, slots, &tree.root, error, &code);
    loadedSize = children;
    return tree;
}

void HostWalkThroughExports(benchmark::State& state) {
    HostTree& tree = hostTree(state.range(0));
    char error[257] = {0};
    int32_t code = 0;
    for (auto _ : state) {
        int32_t count = 0;
        lumNodeExecute(tree.root, 5, nullptr, &count, error, &code);
        size_t nameBytes = 0;
        for (int32_t i = 0; i < count; ++i) {
            void* child = nullptr;
            void* indexSlot[1] = {&i};
            lumNodeExecute(tree.root, 8, indexSlot, &child, error, &code);
            char name[64];
            int32_t limit = sizeof name;
            void* limitSlot[1] = {&limit};
            lumNodeExecute(child, 21, limitSlot, name, error, &code);
            nameBytes += std::strlen(name);
        }
        benchmark::DoNotOptimize(nameBytes);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

struct XercesTree {
    std::unique_ptr<XercesDOMParser> parser;
    DOMElement* root = nullptr;
};

XercesTree& xercesTree(int64_t children) {
    static int64_t loadedSize = -1;
    static XercesTree tree;
    if (loadedSize == children) return tree;
    static bool started = [] {
        XMLPlatformUtils::Initialize(0x4000, 0x80000, 4096);
        return true;
    }();
    (void)started;
    tree.parser = std::make_unique<XercesDOMParser>();
    std::string xml = wideDocument(children);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "MEMPTR");
    tree.parser->parse(source);
    tree.root = tree.parser->getDocument()->getDocumentElement();
    loadedSize = children;
    return tree;
}

void XercesSiblingWalk(benchmark::State& state) {
    XercesTree& tree = xercesTree(state.range(0));
    for (auto _ : state) {
        size_t nameBytes = 0;
        for (DOMNode* child = tree.root->getFirstChild(); child != nullptr;
             child = child->getNextSibling()) {
            char name[64];
            XMLString::transcode(child->getNodeName(), name, sizeof name - 1);
            nameBytes += std::strlen(name);
        }
        benchmark::DoNotOptimize(nameBytes);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

// What an indexed walk costs without the library's cursor.
void XercesIndexedWalk(benchmark::State& state) {
    XercesTree& tree = xercesTree(state.range(0));
    for (auto _ : state) {
        DOMNodeList* children = tree.root->getChildNodes();
        XMLSize_t count = children->getLength();
        size_t nameBytes = 0;
        for (XMLSize_t i = 0; i < count; ++i) {
            char name[64];
            XMLString::transcode(children->item(i)->getNodeName(), name, sizeof name - 1);
            nameBytes += std::strlen(name);
        }
        benchmark::DoNotOptimize(nameBytes);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

}  // namespace

BENCHMARK(HostWalkThroughExports)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(XercesSiblingWalk)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(XercesIndexedWalk)->Arg(2500)->Arg(5000)->Arg(10000)->Unit(benchmark::kMillisecond);
