// The pull reader through its exports, as a host drives it (one event per
// call), beside libxml2's pull reader over the same bytes. The raw Xerces
// SAX2 baseline is XercesSax2Parse in baseline_bench.cpp.
#include <cstring>
#include <string>

#include <benchmark/benchmark.h>
#include <libxml/xmlreader.h>

#include "documents.h"
#include "lumxml.h"
#include "suite.h"

namespace {

void LumSaxPull(benchmark::State& state) {
    bench::startLibrary();
    const std::string& text = bench::cachedCatalogue(state.range(0));
    int64_t events = 0;
    for (auto _ : state) {
        SaxParserInstance record;
        std::memset(&record, 0, sizeof record);
        record.inputKind = 1;
        record.memoryBuffer = text.data();
        record.memoryLength = static_cast<uint32_t>(text.size());
        record.entityExpansionLimit = 50000;
        int32_t result = lumSAXParseFirst(&record);
        while (result == 1) {
            if (record.eventHead != nullptr) {
                ++events;
                benchmark::DoNotOptimize(record.eventHead->kind);
            }
            result = lumSAXParseNext(&record);
        }
        lumSAXDeleteParserInstance(&record);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.SetItemsProcessed(events);
}

void Libxml2TextReader(benchmark::State& state) {
    const std::string& text = bench::cachedCatalogue(state.range(0));
    int64_t nodes = 0;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForMemory(text.data(), static_cast<int>(text.size()),
                                                     "MEMPTR", nullptr, XML_PARSE_NONET);
        while (xmlTextReaderRead(reader) == 1) {
            ++nodes;
            benchmark::DoNotOptimize(xmlTextReaderNodeType(reader));
        }
        xmlFreeTextReader(reader);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.SetItemsProcessed(nodes);
}

}  // namespace

void bench::registerPull() {
    const int64_t megabytes = sizes().megabytes;
    add("Pull", "lumxml", LumSaxPull)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Pull", "libxml2-reader", Libxml2TextReader, 1.0)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
}
