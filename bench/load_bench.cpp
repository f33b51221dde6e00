// Loading a document from memory: lumDocLoad (and lumDocDelete) as a host
// calls them, beside a raw XercesDOMParser in a process where Xerces was
// started with XMLPlatformUtils::Initialize()'s defaults, and beside
// libxml2's xmlReadMemory. Three documents: the plain catalogue, the nested
// one (sections within sections, mixed content, international text), and
// prose dense with entity and character references, where the default DOM
// heap makes Xerces quadratic.
#include <string>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "documents.h"
#include "lumxml.h"
#include "suite.h"

XERCES_CPP_NAMESPACE_USE

namespace {

using Document = const std::string& (*)(int64_t);

void lumxmlLoad(benchmark::State& state, Document document) {
    bench::startLibrary();
    const std::string& text = document(state.range(0));
    char error[257] = {0};
    int32_t code = 0;
    for (auto _ : state) {
        void* cell = nullptr;
        lumInitDocument(&cell, 1, error, &code);
        char encoding[257];
        lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, text.data(),
                   static_cast<uint32_t>(text.size()), nullptr, nullptr, 0, nullptr, error,
                   &code);
        lumDocDelete(cell, error, &code);
        if (code != LUM_OK) {
            state.SkipWithError(error);
            break;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

// A raw XercesDOMParser loading `document` on every iteration (the parser
// frees the document when it goes).
void parseWithXerces(benchmark::State& state, Document document) {
    const std::string& text = document(state.range(0));
    for (auto _ : state) {
        XercesDOMParser parser;
        parser.setDoNamespaces(true);
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                 "MEMPTR");
        parser.parse(source);
        benchmark::DoNotOptimize(parser.getDocument());
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

// Xerces started with its defaults: possible only while nothing else in
// the process has started it, because the first start fixes the DOM heap
// sizes. The suite runs these first and stops Xerces again afterwards.
void xercesDefaultLoad(benchmark::State& state, Document document) {
    if (XMLPlatformUtils::fgMemoryManager != nullptr) {
        state.SkipWithError("Xerces was already started; run the suite unfiltered or filter "
                            "to the xerces-default loads alone");
        return;
    }
    XMLPlatformUtils::Initialize();
    parseWithXerces(state, document);
    XMLPlatformUtils::Terminate();
}

// The same parser once lumxml has started Xerces with its DOM heap sizes:
// what lumDocLoad adds to Xerces itself.
void xercesLoad(benchmark::State& state, Document document) {
    bench::startLibrary();
    parseWithXerces(state, document);
}

void libxml2Load(benchmark::State& state, Document document) {
    const std::string& text = document(state.range(0));
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "MEMPTR",
                                      nullptr, XML_PARSE_NONET);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void LoadLumxml(benchmark::State& state) { lumxmlLoad(state, bench::cachedCatalogue); }
void LoadXercesDefault(benchmark::State& state) {
    xercesDefaultLoad(state, bench::cachedCatalogue);
}
void LoadXerces(benchmark::State& state) { xercesLoad(state, bench::cachedCatalogue); }
void LoadLibxml2(benchmark::State& state) { libxml2Load(state, bench::cachedCatalogue); }
void LoadNestedLumxml(benchmark::State& state) { lumxmlLoad(state, bench::cachedNestedCatalogue); }
void LoadNestedXercesDefault(benchmark::State& state) {
    xercesDefaultLoad(state, bench::cachedNestedCatalogue);
}
void LoadNestedXerces(benchmark::State& state) {
    xercesLoad(state, bench::cachedNestedCatalogue);
}
void LoadNestedLibxml2(benchmark::State& state) {
    libxml2Load(state, bench::cachedNestedCatalogue);
}
void LoadReferencesLumxml(benchmark::State& state) {
    lumxmlLoad(state, bench::cachedReferenceDense);
}
void LoadReferencesXercesDefault(benchmark::State& state) {
    xercesDefaultLoad(state, bench::cachedReferenceDense);
}
void LoadReferencesXerces(benchmark::State& state) {
    xercesLoad(state, bench::cachedReferenceDense);
}
void LoadReferencesLibxml2(benchmark::State& state) {
    libxml2Load(state, bench::cachedReferenceDense);
}

}  // namespace

void bench::registerLoad() {
    const int64_t megabytes = sizes().megabytes;
    // The default-started Xerces runs come first (see xercesDefaultLoad).
    add("Load", "xerces-default", LoadXercesDefault, 1.05)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadNested", "xerces-default", LoadNestedXercesDefault)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    // Quadratic: seconds to a minute a load. One load tells the story.
    add("LoadReferences", "xerces-default", LoadReferencesXercesDefault, 0.5)
        ->Arg(megabytes)->Iterations(1)->Repetitions(1)->Unit(benchmark::kMillisecond);
    add("Load", "lumxml", LoadLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Load", "xerces", LoadXerces)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Load", "libxml2", LoadLibxml2)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadNested", "lumxml", LoadNestedLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadNested", "xerces", LoadNestedXerces, 1.05)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadNested", "libxml2", LoadNestedLibxml2)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadReferences", "lumxml", LoadReferencesLumxml)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadReferences", "xerces", LoadReferencesXerces)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("LoadReferences", "libxml2", LoadReferencesLibxml2)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
}
