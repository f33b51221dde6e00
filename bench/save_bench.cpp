// Saving a loaded document to memory: lumDocSave as a host calls it (UTF-8,
// a memory block), beside Xerces' DOMLSSerializer writing the same document
// to a MemBufFormatTarget and libxml2 dumping its own tree of it, once with
// the encoding named (xmlDocDumpMemoryEnc, "UTF-8") and once in the
// document's own (xmlDocDumpMemory). Two documents: the flat catalogue and
// the nested one (sections within sections, mixed content, international
// text).
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

using Document = const std::string& (*)(int64_t);

void lumxmlSave(benchmark::State& state, Document document) {
    bench::startLibrary();
    const std::string& text = document(state.range(0));
    char error[257] = {0};
    int32_t code = 0;
    void* cell = nullptr;
    lumInitDocument(&cell, 1, error, &code);
    char encoding[300] = {0};
    lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, text.data(),
               static_cast<uint32_t>(text.size()), nullptr, nullptr, 0, nullptr, error, &code);
    if (code != LUM_OK) {
        state.SkipWithError(error);
        return;
    }
    uint64_t written = 0;
    for (auto _ : state) {
        void* block = nullptr;
        uint32_t length = 0;
        lumDocSave(&cell, LUM_SAVE_TO_MEMORY, 0, 0, 0, "UTF-8", nullptr, &block, &length, 0,
                   nullptr, error, &code);
        written += length;
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
    if (code != LUM_OK) state.SkipWithError(error);
    lumDocDelete(cell, error, &code);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.counters["output_bytes"] = static_cast<double>(written) / state.iterations();
}

void xercesSerializerSave(benchmark::State& state, Document document) {
    bench::startLibrary();  // Xerces, started the way lumxml starts it
    const std::string& text = document(state.range(0));
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

// libxml2's dump of its own tree of `document`: with "UTF-8" named
// (xmlDocDumpMemoryEnc) or, with `encoding` null, in the document's own
// encoding (xmlDocDumpMemory).
void libxml2Save(benchmark::State& state, Document document, const char* encoding) {
    const std::string& text = document(state.range(0));
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "MEMPTR", nullptr,
                                  XML_PARSE_NONET);
    for (auto _ : state) {
        xmlChar* out = nullptr;
        int size = 0;
        if (encoding != nullptr)
            xmlDocDumpMemoryEnc(doc, &out, &size, encoding);
        else
            xmlDocDumpMemory(doc, &out, &size);
        benchmark::DoNotOptimize(out);
        xmlFree(out);
    }
    xmlFreeDoc(doc);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void SaveLumxml(benchmark::State& state) { lumxmlSave(state, bench::cachedCatalogue); }
void SaveXercesSerializer(benchmark::State& state) {
    xercesSerializerSave(state, bench::cachedCatalogue);
}
void SaveLibxml2(benchmark::State& state) { libxml2Save(state, bench::cachedCatalogue, "UTF-8"); }
void SaveLibxml2Dump(benchmark::State& state) {
    libxml2Save(state, bench::cachedCatalogue, nullptr);
}
void SaveNestedLumxml(benchmark::State& state) {
    lumxmlSave(state, bench::cachedNestedCatalogue);
}
void SaveNestedXercesSerializer(benchmark::State& state) {
    xercesSerializerSave(state, bench::cachedNestedCatalogue);
}
void SaveNestedLibxml2(benchmark::State& state) {
    libxml2Save(state, bench::cachedNestedCatalogue, "UTF-8");
}
void SaveNestedLibxml2Dump(benchmark::State& state) {
    libxml2Save(state, bench::cachedNestedCatalogue, nullptr);
}

}  // namespace

void bench::registerSave() {
    const int64_t megabytes = sizes().megabytes;
    add("Save", "lumxml", SaveLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Save", "xerces-serializer", SaveXercesSerializer)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Save", "libxml2", SaveLibxml2, 1.0)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Save", "libxml2-dump", SaveLibxml2Dump)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("SaveNested", "lumxml", SaveNestedLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("SaveNested", "xerces-serializer", SaveNestedXercesSerializer)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("SaveNested", "libxml2", SaveNestedLibxml2, 1.0)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("SaveNested", "libxml2-dump", SaveNestedLibxml2Dump)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
}
