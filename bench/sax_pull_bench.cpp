// The pull reader through its exports, as a host drives it (one event per
// call, reading each event's kind, name and strings), beside the things it
// is measured against over the same bytes:
//   - a raw Xerces SAX2 parse whose handler makes the UTF-8 copy of every
//     string a host-facing layer must hand out (element and attribute
//     names, values, text, comments, processing instructions, prefixes);
//   - a raw Xerces SAX2 parse whose handler only transcodes names
//     (elements and attributes) and character chunks to UTF-8 into one
//     reused buffer: far less than a host-facing layer must hand out;
//   - libxml2's xmlTextReader reading every node's type, name and value,
//     attributes included.
// PullMemory reports the peak memory a pull through a large document needs.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <libxml/xmlreader.h>
#include <malloc.h>
#include <unistd.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>

#include "documents.h"
#include "lumxml.h"
#include "suite.h"

XERCES_CPP_NAMESPACE_USE

namespace {

// ---- lumxml ------------------------------------------------------------------

// What a host reads of one event: its kind, its name and the first byte of
// every string it carries (the host would copy them out).
uint64_t touchEvent(const SaxEvent& event) {
    uint64_t sum = event.kind;
    if (event.name != nullptr) sum += static_cast<unsigned char>(event.name[0]);
    auto touch = [&sum](const void* text) {
        if (text != nullptr) sum += static_cast<unsigned char>(*static_cast<const char*>(text));
    };
    switch (event.kind) {
        case 5: {  // StartElement: names and every attribute
            touch(event.arg1);
            touch(event.arg2);
            touch(event.arg3);
            const SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(&event);
            for (int32_t i = 0; i < list->count; ++i) {
                const SaxAttribute& attribute = list->entries[i];
                touch(attribute.localName);
                touch(attribute.qName);
                touch(attribute.uri);
                touch(attribute.type);
                touch(attribute.value);
            }
            break;
        }
        case 6:  // EndElement
            touch(event.arg1);
            touch(event.arg2);
            touch(event.arg3);
            break;
        case 3:  // StartPrefixMapping
        case 9:  // ProcessingInstruction
            touch(event.arg1);
            touch(event.arg2);
            break;
        case 4:  // EndPrefixMapping
        case 7:  // Characters
        case 8:  // IgnorableWhitespace
        case 15:
        case 16:
        case 17:
            touch(event.arg1);
            break;
        default:
            break;
    }
    return sum;
}

// Pulls the record's input to its end; answers the events handed out.
int64_t pullAll(SaxParserInstance& record) {
    int64_t events = 0;
    uint64_t sum = 0;
    int32_t result = lumSAXParseFirst(&record);
    while (result == LUM_SAX_MORE) {
        if (record.eventHead != nullptr) {
            ++events;
            sum += touchEvent(*record.eventHead);
        }
        result = lumSAXParseNext(&record);
    }
    benchmark::DoNotOptimize(sum);
    lumSAXDeleteParserInstance(&record);
    return events;
}

void memoryRecord(SaxParserInstance& record, const std::string& text) {
    std::memset(&record, 0, sizeof record);
    record.inputKind = LUM_SAX_INPUT_MEMORY;
    record.memoryBuffer = text.data();
    record.memoryLength = static_cast<uint32_t>(text.size());
    record.entityExpansionLimit = 50000;
}

using Document = const std::string& (*)(int64_t);

void lumxmlPull(benchmark::State& state, Document document) {
    bench::startLibrary();
    const std::string& text = document(state.range(0));
    int64_t events = 0;
    for (auto _ : state) {
        SaxParserInstance record;
        memoryRecord(record, text);
        events += pullAll(record);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.SetItemsProcessed(events);
}

// ---- raw Xerces SAX2 ---------------------------------------------------------

// A SAX2 handler with Xerces' own UTF-8 transcoder and the counters a run
// reads afterwards.
class Utf8Handler : public DefaultHandler {
public:
    Utf8Handler() {
        XMLTransService::Codes code = XMLTransService::Ok;
        transcoder_ = XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
            XMLRecognizer::UTF_8, code, 16 * 1024);
    }
    ~Utf8Handler() override { delete transcoder_; }

    int64_t events = 0;
    uint64_t sum = 0;

protected:
    XMLTranscoder* transcoder_ = nullptr;
};

// Makes and drops the UTF-8 copy of every string, with Xerces' own UTF-8
// transcoder, as a layer that hands strings to a host must. (Xerces'
// TranscodeToStr and XMLString::transcode were tried too: both are slower
// than this, which makes this the strictest reference.)
class CopyingHandler : public Utf8Handler {
public:
    void startElement(const XMLCh* const uri, const XMLCh* const localname,
                      const XMLCh* const qname, const Attributes& attrs) override {
        ++events;
        copy(uri);
        copy(localname);
        copy(qname);
        for (XMLSize_t i = 0; i < attrs.getLength(); ++i) {
            copy(attrs.getURI(i));
            copy(attrs.getLocalName(i));
            copy(attrs.getQName(i));
            copy(attrs.getType(i));
            copy(attrs.getValue(i));
        }
    }
    void endElement(const XMLCh* const uri, const XMLCh* const localname,
                    const XMLCh* const qname) override {
        ++events;
        copy(uri);
        copy(localname);
        copy(qname);
    }
    void characters(const XMLCh* const chars, const XMLSize_t length) override {
        ++events;
        copy(chars, length);
    }
    void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) override {
        ++events;
        copy(chars, length);
    }
    void processingInstruction(const XMLCh* const target, const XMLCh* const data) override {
        ++events;
        copy(target);
        copy(data);
    }
    void comment(const XMLCh* const chars, const XMLSize_t length) override {
        ++events;
        copy(chars, length);
    }
    void startPrefixMapping(const XMLCh* const prefix, const XMLCh* const uri) override {
        ++events;
        copy(prefix);
        copy(uri);
    }
    void endPrefixMapping(const XMLCh* const prefix) override {
        ++events;
        copy(prefix);
    }
    void startDocument() override { ++events; }
    void endDocument() override { ++events; }

private:
    void copy(const XMLCh* text) {
        if (text != nullptr) copy(text, XMLString::stringLen(text));
    }
    // One block from Xerces' memory manager per string, filled by the
    // transcoder and released: the least a layer that hands out owned
    // copies can do with Xerces' own tools.
    void copy(const XMLCh* text, XMLSize_t length) {
        MemoryManager* memory = XMLPlatformUtils::fgMemoryManager;
        const XMLSize_t room = length * 3 + 1;
        auto* out = static_cast<XMLByte*>(memory->allocate(room));
        XMLSize_t eaten = 0;
        const XMLSize_t made =
            transcoder_->transcodeTo(text, length, out, room, eaten, XMLTranscoder::UnRep_RepChar);
        out[made] = 0;
        sum += out[0];
        memory->deallocate(out);
    }
};

// Transcodes element and attribute names (qualified) and character chunks
// into one reused buffer with Xerces' UTF-8 transcoder: no allocation per
// string, nothing for values, URIs, local names, types, prefixes or
// comments.
class TranscodingHandler : public Utf8Handler {
public:
    void startElement(const XMLCh* const, const XMLCh* const, const XMLCh* const qname,
                      const Attributes& attrs) override {
        ++events;
        transcode(qname);
        for (XMLSize_t i = 0; i < attrs.getLength(); ++i) transcode(attrs.getQName(i));
    }
    void endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const qname) override {
        ++events;
        transcode(qname);
    }
    void characters(const XMLCh* const chars, const XMLSize_t length) override {
        ++events;
        transcode(chars, length);
    }
    void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) override {
        ++events;
        transcode(chars, length);
    }

private:
    void transcode(const XMLCh* text) { transcode(text, XMLString::stringLen(text)); }
    void transcode(const XMLCh* text, XMLSize_t length) {
        if (buffer_.size() < length * 3 + 1) buffer_.resize(length * 3 + 1);
        auto* out = reinterpret_cast<XMLByte*>(&buffer_[0]);
        XMLSize_t eaten = 0;
        const XMLSize_t made = transcoder_->transcodeTo(text, length, out, buffer_.size(), eaten,
                                                        XMLTranscoder::UnRep_RepChar);
        sum += made != 0 ? out[0] : 0;
    }

    std::string buffer_;
};

template <class Handler>
void xercesSax2Run(benchmark::State& state, Document document) {
    bench::startLibrary();
    const std::string& text = document(state.range(0));
    int64_t events = 0;
    for (auto _ : state) {
        SAX2XMLReaderImpl reader;
        reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
        Handler handler;
        reader.setContentHandler(&handler);
        reader.setLexicalHandler(&handler);
        reader.setErrorHandler(&handler);
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                 "MEMPTR", false);
        reader.parse(source);
        benchmark::DoNotOptimize(handler.sum);
        events += handler.events;
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.SetItemsProcessed(events);
}

void xercesSax2Pull(benchmark::State& state, Document document) {
    xercesSax2Run<CopyingHandler>(state, document);
}

void xercesSax2Names(benchmark::State& state, Document document) {
    xercesSax2Run<TranscodingHandler>(state, document);
}

// ---- libxml2 -----------------------------------------------------------------

uint64_t touchText(const xmlChar* text) { return text != nullptr ? text[0] : 0; }

void libxml2ReaderPull(benchmark::State& state, Document document) {
    const std::string& text = document(state.range(0));
    int64_t nodes = 0;
    uint64_t sum = 0;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForMemory(text.data(), static_cast<int>(text.size()),
                                                     "MEMPTR", nullptr, XML_PARSE_NONET);
        while (xmlTextReaderRead(reader) == 1) {
            ++nodes;
            sum += static_cast<uint64_t>(xmlTextReaderNodeType(reader));
            sum += touchText(xmlTextReaderConstName(reader));
            sum += touchText(xmlTextReaderConstValue(reader));
            while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
                sum += touchText(xmlTextReaderConstName(reader));
                sum += touchText(xmlTextReaderConstValue(reader));
            }
            xmlTextReaderMoveToElement(reader);
        }
        xmlFreeTextReader(reader);
    }
    benchmark::DoNotOptimize(sum);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.SetItemsProcessed(nodes);
}

void PullLumxml(benchmark::State& state) { lumxmlPull(state, bench::cachedCatalogue); }
void PullXercesSax2(benchmark::State& state) { xercesSax2Pull(state, bench::cachedCatalogue); }
void PullLibxml2Reader(benchmark::State& state) {
    libxml2ReaderPull(state, bench::cachedCatalogue);
}
void PullNestedLumxml(benchmark::State& state) {
    lumxmlPull(state, bench::cachedNestedCatalogue);
}
void PullNestedXercesSax2(benchmark::State& state) {
    xercesSax2Pull(state, bench::cachedNestedCatalogue);
}
void PullXercesSax2Names(benchmark::State& state) {
    xercesSax2Names(state, bench::cachedCatalogue);
}
void PullNestedXercesSax2Names(benchmark::State& state) {
    xercesSax2Names(state, bench::cachedNestedCatalogue);
}
void PullNestedLibxml2Reader(benchmark::State& state) {
    libxml2ReaderPull(state, bench::cachedNestedCatalogue);
}

// ---- Peak memory ---------------------------------------------------------------

// A field of /proc/self/status in kB ("VmRSS", "VmHWM"); -1 when unknown.
int64_t statusKilobytes(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const size_t length = std::strlen(field);
    while (std::getline(status, line)) {
        if (line.compare(0, length, field) == 0 && line.size() > length && line[length] == ':')
            return std::strtoll(line.c_str() + length + 1, nullptr, 10);
    }
    return -1;
}

// Lets the peak (VmHWM) start again from the current resident size.
bool resetPeak() {
    std::FILE* refs = std::fopen("/proc/self/clear_refs", "w");
    if (refs == nullptr) return false;
    const bool written = std::fputs("5", refs) >= 0;
    return std::fclose(refs) == 0 && written;
}

// The peak resident growth (MB) over what the process held just before
// `pull` ran.
template <class Pull>
double peakGrowthMegabytes(Pull pull) {
    // Free heap pages kept from earlier benchmarks go back to the system
    // first, or the pull would reuse them unseen.
    malloc_trim(0);
    const int64_t before = statusKilobytes("VmRSS");
    if (before < 0 || !resetPeak()) return -1;
    pull();
    const int64_t peak = statusKilobytes("VmHWM");
    return peak < 0 ? -1 : static_cast<double>(peak - before) / 1024.0;
}

// Peak memory of a pull through a pullRssMegabytes document, twice:
//   peak_rss_mb: read from a file, so nothing but the pull's own memory
//     counts (growth over this process as the suite left it; a fresh
//     process that only pulls grows by under 1 MB over its start-up);
//   memory_input_peak_rss_mb: from a host memory block (the host's own
//     buffer, resident before the pull, is not counted); this includes the
//     copy of the block that Xerces' memory input source makes, which
//     lumxml keeps because nothing in its contract obliges a host to keep
//     its block alive and unchanged until the parse ends.
void PullMemoryLumxml(benchmark::State& state) {
    bench::startLibrary();
    const int64_t megabytes = state.range(0);
    char pattern[] = "/tmp/lumxml-pull-XXXXXX";
    const int descriptor = mkstemp(pattern);
    if (descriptor < 0) {
        state.SkipWithError("no temporary file");
        return;
    }
    close(descriptor);
    const std::string fileName = pattern;
    // The host's block, resident before either pull starts (not counted).
    const std::string text = bench::catalogue(static_cast<size_t>(megabytes) << 20);
    std::ofstream(fileName, std::ios::binary)
        .write(text.data(), static_cast<std::streamsize>(text.size()));
    const int64_t bytes = static_cast<int64_t>(text.size());
    double filePeak = 0;
    double memoryPeak = 0;
    int64_t events = 0;
    for (auto _ : state) {
        filePeak = peakGrowthMegabytes([&] {
            SaxParserInstance record;
            std::memset(&record, 0, sizeof record);
            record.inputKind = LUM_SAX_INPUT_FILE;
            record.fileName = fileName.c_str();
            record.entityExpansionLimit = 50000;
            events += pullAll(record);
        });
        memoryPeak = peakGrowthMegabytes([&] {
            SaxParserInstance record;
            memoryRecord(record, text);
            events += pullAll(record);
        });
    }
    std::remove(fileName.c_str());
    state.counters["peak_rss_mb"] = filePeak;
    state.counters["memory_input_peak_rss_mb"] = memoryPeak;
    state.SetBytesProcessed(2 * bytes * state.iterations());
    state.SetItemsProcessed(events);
}

}  // namespace

void bench::registerPull() {
    const int64_t megabytes = sizes().megabytes;
    add("Pull", "lumxml", PullLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Pull", "xerces-sax2", PullXercesSax2, 1.5)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Pull", "xerces-sax2-names", PullXercesSax2Names, 1.15)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("Pull", "libxml2-reader", PullLibxml2Reader, 1.0)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("PullNested", "lumxml", PullNestedLumxml)->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("PullNested", "xerces-sax2", PullNestedXercesSax2)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("PullNested", "xerces-sax2-names", PullNestedXercesSax2Names, 1.15)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("PullNested", "libxml2-reader", PullNestedLibxml2Reader)
        ->Arg(megabytes)->Unit(benchmark::kMillisecond);
    add("PullMemory", "lumxml", PullMemoryLumxml)
        ->Arg(sizes().pullRssMegabytes)->Iterations(1)->Unit(benchmark::kMillisecond);
}
