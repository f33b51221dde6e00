// Saving a loaded document to memory: lumDocSave as a host calls it (UTF-8,
// a memory block), beside Xerces' DOMLSSerializer writing the same document
// to a MemBufFormatTarget and libxml2's xmlDocDumpMemoryEnc.
#include <cstdlib>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "documents.h"
#include "lumxml.h"
#include "suite.h"

XERCES_CPP_NAMESPACE_USE

namespace {

void SaveLumxml(benchmark::State& state) {
    bench::startLibrary();
    const std::string& text = bench::cachedCatalogue(state.range(0));
    char error[257] = {0};
    int32_t code = 0;
    void* cell = nullptr;
    lumInitDocument(&cell, 1, error, &code);
    char encoding[300] = {0};
    lumDocLoad(&cell, 0, 1, encoding, nullptr, text.data(), static_cast<uint32_t>(text.size()),
               nullptr, nullptr, 0, nullptr, error, &code);
    if (code != 0) {
        state.SkipWithError(error);
        return;
    }
    uint64_t written = 0;
    for (auto _ : state) {
        void* block = nullptr;
        uint32_t length = 0;
        lumDocSave(&cell, 1, 0, 0, 0, "UTF-8", nullptr, &block, &length, 0, nullptr, error,
                   &code);
        written += length;
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
    if (code != 0) state.SkipWithError(error);
    lumDocDelete(cell, error, &code);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.counters["output_bytes"] = static_cast<double>(written) / state.iterations();
}

void SaveXercesSerializer(benchmark::State& state) {
    bench::startLibrary();  // Xerces, started the way lumxml starts it
    const std::string& text = bench::cachedCatalogue(state.range(0));
    XercesDOMParser parser;
    parser.setDoNamespaces(true);
    MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                             "MEMPTR");
    parser.parse(source);
    DOMImplementation* impl = DOMImplementationRegistry::getDOMImplementation(u"LS");
    for (auto _ : state) {
        DOMLSSerializer* serializer = impl->createLSSerializer();
        DOMLSOutput* output = impl->createLSOutput();
        MemBufFormatTarget target;
        output->setByteStream(&target);
        output->setEncoding(u"UTF-8");
        serializer->write(parser.getDocument(), output);
        benchmark::DoNotOptimize(target.getLen());
        output->release();
        serializer->release();
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void SaveLibxml2(benchmark::State& state) {
    const std::string& text = bench::cachedCatalogue(state.range(0));
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "MEMPTR", nullptr,
                                  XML_PARSE_NONET);
    for (auto _ : state) {
        xmlChar* out = nullptr;
        int size = 0;
        xmlDocDumpMemoryEnc(doc, &out, &size, "UTF-8");
        benchmark::DoNotOptimize(out);
        xmlFree(out);
    }
    xmlFreeDoc(doc);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

}  // namespace

void bench::registerSave() {
    const int64_t megabytes = sizes().megabytes;
    add("Save", "lumxml", SaveLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Save", "xerces-serializer", SaveXercesSerializer, 1.0)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Save", "libxml2", SaveLibxml2)->Arg(megabytes)->Unit(benchmark::kMillisecond);
}
