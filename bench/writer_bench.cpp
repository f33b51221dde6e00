// Writing a large document to memory: the SAX writer through its export,
// beside libxml2's xmlTextWriter writing the same document.
//
// The document: a root element holding `count` elements, each with three
// attributes (one of them with a character to escape) and a text with
// markup characters, about 100 bytes per element.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <benchmark/benchmark.h>
#include <libxml/xmlwriter.h>

#include "documents.h"
#include "lumxml.h"
#include "suite.h"

namespace {

constexpr const char kText[] = "Widget & blue <boxed>";
constexpr const char kCategory[] = "tools & hardware";

void itemId(char (&buffer)[24], int64_t i) { std::snprintf(buffer, sizeof buffer, "i%07lld", static_cast<long long>(i)); }
void itemPrice(char (&buffer)[24], int64_t i) { std::snprintf(buffer, sizeof buffer, "%lld.%02lld", static_cast<long long>(i % 1000), static_cast<long long>(i % 100)); }

int32_t run(SAXWriter* writer, int32_t command, WriterOptions* options, const void* a0 = nullptr,
            const void* a1 = nullptr, const void* a2 = nullptr) {
    WriterArgs args{const_cast<void*>(a0), const_cast<void*>(a1), const_cast<void*>(a2), nullptr};
    return lumSAXWriterExecute(writer, command, options, &args);
}

void LumxmlWriterToMemory(benchmark::State& state) {
    bench::startLibrary();
    const int64_t count = state.range(0);
    const bool strict = state.range(1) != 0;
    int64_t bytes = 0;
    for (auto _ : state) {
        WriterArgs created{};
        lumSAXWriterExecute(nullptr, LUM_WRITER_CREATE, nullptr, &created);
        SAXWriter* writer = static_cast<SAXWriter*>(created.arg0);
        WriterOptions options{};
        options.version = "1.0";
        options.encoding = "UTF-8";
        options.outputKind = LUM_WRITER_TO_MEMORY;
        options.strict = strict ? 1 : 0;
        int32_t failed = run(writer, LUM_WRITER_OPEN, &options);
        failed |= run(writer, LUM_WRITER_START_ELEMENT, &options, "catalogue");
        char id[24], price[24];
        for (int64_t i = 0; i < count; ++i) {
            itemId(id, i);
            itemPrice(price, i);
            failed |= run(writer, LUM_WRITER_START_ELEMENT, &options, "item");
            failed |= run(writer, LUM_WRITER_ADD_ATTRIBUTE, &options, "id", id);
            failed |= run(writer, LUM_WRITER_ADD_ATTRIBUTE, &options, "category", kCategory);
            failed |= run(writer, LUM_WRITER_ADD_ATTRIBUTE, &options, "price", price);
            failed |= run(writer, LUM_WRITER_CHARACTERS, &options, kText);
            failed |= run(writer, LUM_WRITER_END_ELEMENT, &options, "item");
        }
        failed |= run(writer, LUM_WRITER_END_ELEMENT, &options, "catalogue");
        failed |= run(writer, LUM_WRITER_END_DOCUMENT, &options);
        if (failed != 0 || options.memoryLength == nullptr) {
            state.SkipWithError("the writer failed");
            break;
        }
        bytes = *options.memoryLength;
        std::free(options.memoryBuffer);
        run(writer, LUM_WRITER_FREE, &options);
    }
    state.SetBytesProcessed(bytes * static_cast<int64_t>(state.iterations()));
    state.counters["bytes"] = static_cast<double>(bytes);
}

void Libxml2TextWriterToMemory(benchmark::State& state) {
    const int64_t count = state.range(0);
    int64_t bytes = 0;
    for (auto _ : state) {
        xmlBufferPtr buffer = xmlBufferCreate();
        xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
        int failed = xmlTextWriterStartDocument(writer, "1.0", "UTF-8", nullptr) < 0;
        failed |= xmlTextWriterStartElement(writer, BAD_CAST "catalogue") < 0;
        char id[24], price[24];
        for (int64_t i = 0; i < count; ++i) {
            itemId(id, i);
            itemPrice(price, i);
            failed |= xmlTextWriterStartElement(writer, BAD_CAST "item") < 0;
            failed |= xmlTextWriterWriteAttribute(writer, BAD_CAST "id", BAD_CAST id) < 0;
            failed |= xmlTextWriterWriteAttribute(writer, BAD_CAST "category", BAD_CAST kCategory) < 0;
            failed |= xmlTextWriterWriteAttribute(writer, BAD_CAST "price", BAD_CAST price) < 0;
            failed |= xmlTextWriterWriteString(writer, BAD_CAST kText) < 0;
            failed |= xmlTextWriterEndElement(writer) < 0;
        }
        failed |= xmlTextWriterEndElement(writer) < 0;
        failed |= xmlTextWriterEndDocument(writer) < 0;
        xmlFreeTextWriter(writer);  // flushes into the buffer
        bytes = static_cast<int64_t>(xmlBufferLength(buffer));
        xmlBufferFree(buffer);
        if (failed) {
            state.SkipWithError("xmlTextWriter failed");
            break;
        }
    }
    state.SetBytesProcessed(bytes * static_cast<int64_t>(state.iterations()));
    state.counters["bytes"] = static_cast<double>(bytes);
}

}  // namespace

void bench::registerWriter() {
    const int64_t elements = sizes().writerElements;
    add("Writer", "lumxml", LumxmlWriterToMemory)
        ->Args({elements, 0})->Unit(benchmark::kMillisecond);
    add("Writer", "libxml2-writer", Libxml2TextWriterToMemory, 1.0)
        ->Args({elements, 0})->Unit(benchmark::kMillisecond);
    add("WriterStrict", "lumxml", LumxmlWriterToMemory)
        ->Args({elements, 1})->Unit(benchmark::kMillisecond);
    add("WriterStrict", "libxml2-writer", Libxml2TextWriterToMemory, 1.0)
        ->Args({elements, 1})->Unit(benchmark::kMillisecond);
}
