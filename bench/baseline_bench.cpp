// The baselines: raw Xerces-C and libxml2 on the same documents.
#include <cstring>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "documents.h"

XERCES_CPP_NAMESPACE_USE

namespace {

void startXerces() {
    static bool started = [] {
        XMLPlatformUtils::Initialize(0x4000, 0x80000, 4096);
        return true;
    }();
    (void)started;
}

void XercesDomLoad(benchmark::State& state) {
    startXerces();
    const std::string& text = bench::cachedCatalogue(state.range(0));
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

class CountingHandler : public DefaultHandler {
public:
    void startElement(const XMLCh*, const XMLCh*, const XMLCh*, const Attributes&) override {
        ++elements;
    }
    size_t elements = 0;
};

void XercesSax2Parse(benchmark::State& state) {
    startXerces();
    const std::string& text = bench::cachedCatalogue(state.range(0));
    for (auto _ : state) {
        SAX2XMLReaderImpl reader;
        CountingHandler handler;
        reader.setContentHandler(&handler);
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                 "MEMPTR");
        reader.parse(source);
        benchmark::DoNotOptimize(handler.elements);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void Libxml2DomLoad(benchmark::State& state) {
    const std::string& text = bench::cachedCatalogue(state.range(0));
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "MEMPTR",
                                      nullptr, XML_PARSE_NONET);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void Libxml2Save(benchmark::State& state) {
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

void XercesSave(benchmark::State& state) {
    startXerces();
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

void Libxml2SaxParse(benchmark::State& state) {
    const std::string& text = bench::cachedCatalogue(state.range(0));
    for (auto _ : state) {
        xmlSAXHandler handler;
        std::memset(&handler, 0, sizeof handler);
        size_t elements = 0;
        handler.startElement = [](void* user, const xmlChar*, const xmlChar**) {
            ++*static_cast<size_t*>(user);
        };
        xmlSAXUserParseMemory(&handler, &elements, text.data(), static_cast<int>(text.size()));
        benchmark::DoNotOptimize(elements);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

}  // namespace

BENCHMARK(XercesSave)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(Libxml2SaxParse)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(XercesDomLoad)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(XercesSax2Parse)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(Libxml2DomLoad)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(Libxml2Save)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
