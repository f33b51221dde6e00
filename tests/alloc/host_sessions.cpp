#include "host_sessions.h"

#include <cstdlib>
#include <cstring>

#include "host_test.h"
#include "lumxml.h"

namespace lumtest {

const char kRichDocument[] =
    "<?xml version='1.0' encoding='UTF-8'?>\n"
    "<!DOCTYPE doc SYSTEM 'doc.dtd' [\n"
    "  <!ENTITY inner 'in &amp; out'>\n"
    "  <!ENTITY outer 'before &inner; after'>\n"
    "  <!ATTLIST item kind CDATA 'plain'>\n"
    "]>\n"
    "<!-- before the root -->\n"
    "<doc xmlns='urn:default' xmlns:p='urn:p' p:at='1'>\n"
    "  <?target some data?>\n"
    "  <item id='a'>&outer; &#233;&#x4E2D;</item>\n"
    "  <p:item kind='rich'><![CDATA[<raw> & ]]>text&external;</p:item>\n"
    "  <empty/>\n"
    "</doc>\n";

namespace {

const char kDtd[] =
    "<!ELEMENT doc ANY>\n"
    "<!ENTITY external 'from the external subset'>\n"
    "<!ATTLIST doc version CDATA '2'>\n";

}  // namespace

// ---- The trace ------------------------------------------------------------------

namespace {
// FNV-1a, folded into `digest`.
void fold(uint64_t& digest, const void* bytes, size_t length) {
    const auto* p = static_cast<const unsigned char*>(bytes);
    for (size_t i = 0; i < length; ++i) {
        digest ^= p[i];
        digest *= 1099511628211ull;
    }
}

void foldText(uint64_t& digest, const char* text) {
    if (text == nullptr) {
        const int64_t none = -1;
        fold(digest, &none, sizeof none);
        return;
    }
    fold(digest, text, std::strlen(text) + 1);
}
}  // namespace

void SessionTrace::mix(const void* bytes, size_t length) { fold(digest, bytes, length); }

void SessionTrace::mixText(const char* text) { foldText(digest, text); }

void SessionTrace::mixNumber(int64_t value) { mix(&value, sizeof value); }

void SessionTrace::answer(int32_t code, const char* message) {
    for (uint64_t* d : {&digest, &answers}) {
        const int64_t wide = code;
        fold(*d, &wide, sizeof wide);
        foldText(*d, message);
    }
    if (code == LUM_OK) return;
    ++failures;
    lastCode = code;
    std::strncpy(lastMessage, message != nullptr ? message : "", sizeof lastMessage - 1);
    if (message == nullptr || message[0] == '\0') ++silentFailures;
}

// ---- The files ---------------------------------------------------------------------

namespace {
TempDir& sessionDirectory() {
    static TempDir* directory = new TempDir();
    return *directory;
}
}  // namespace

SessionFiles::SessionFiles()
    : directory(sessionDirectory().path()),
      documentFile(sessionDirectory().write("doc.xml", kRichDocument)),
      dtdFile(sessionDirectory().write("doc.dtd", kDtd)) {}

SessionFiles::~SessionFiles() = default;

// ---- The document session -------------------------------------------------------------

namespace {

// The host's error slot, reused call after call.
struct Slot {
    char buffer[257];
    int32_t code;
    Slot& clear() {
        buffer[0] = '\0';
        code = 0;
        return *this;
    }
};

int32_t nodeInt(void* node, int32_t method, SessionTrace& trace) {
    Slot slot;
    void* args[4] = {nullptr, nullptr, nullptr, nullptr};
    int32_t value = 0;
    lumNodeExecute(node, method, args, &value, slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    trace.mixNumber(value);
    return slot.code == LUM_OK ? value : 0;
}

void nodeText(void* node, int32_t method, SessionTrace& trace) {
    Slot slot;
    char text[1024] = "";
    int32_t limit = sizeof text;
    void* args[4] = {&limit, nullptr, nullptr, nullptr};
    lumNodeExecute(node, method, args, text, slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    if (slot.code == LUM_OK) trace.mixText(text);
}

void walk(void* node, SessionTrace& trace) {
    nodeInt(node, LUM_NODE_TYPE_CODE, trace);   // type
    nodeText(node, LUM_NODE_NAME, trace);  // name
    nodeText(node, LUM_NODE_VALUE, trace);  // value
    const int32_t count = nodeInt(node, LUM_NODE_CHILD_COUNT, trace);
    for (int32_t i = 0; i < count; ++i) {
        Slot slot;
        int32_t index = i;
        void* args[4] = {&index, nullptr, nullptr, nullptr};
        void* child = nullptr;
        lumNodeExecute(node, LUM_NODE_CHILD_AT, args, &child, slot.clear().buffer, &slot.code);
        trace.answer(slot.code, slot.buffer);
        if (child != nullptr) walk(child, trace);
    }
}

}  // namespace

void domSession(const SessionFiles& files, SessionTrace& trace) {
    Slot slot;
    void* cell = nullptr;
    lumInitDocument(&cell, 7, slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    if (cell == nullptr) return;

    char encoding[257] = "";
    const int32_t limit = 50000;
    lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, kRichDocument,
               sizeof kRichDocument - 1, files.documentFile.c_str(), &limit, 0, nullptr,
               slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    trace.mixText(encoding);

    void* args[4] = {nullptr, nullptr, nullptr, nullptr};
    void* root = nullptr;
    lumDocExecute(cell, LUM_DOC_DOCUMENT_ELEMENT, args, &root, slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    if (root != nullptr) walk(root, trace);

    void* block = nullptr;
    uint32_t length = 0;
    lumDocSave(&cell, LUM_SAVE_TO_MEMORY, 0, 0, 0, nullptr, nullptr, &block, &length, 0, nullptr,
               slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
    if (block != nullptr) trace.mix(block, length);
    std::free(block);

    lumDocDelete(cell, slot.clear().buffer, &slot.code);
    trace.answer(slot.code, slot.buffer);
}

// ---- The pull session ------------------------------------------------------------------

void pullSession(const SessionFiles& files, SessionTrace& trace) {
    SaxParserInstance record;
    std::memset(&record, 0, sizeof record);
    record.inputKind = LUM_SAX_INPUT_FILE;
    record.fileName = files.documentFile.c_str();
    record.entityExpansionLimit = 50000;
    int32_t more = lumSAXParseFirst(&record);
    for (int steps = 0; steps < 10000; ++steps) {
        trace.mixNumber(more);
        trace.answer(record.errorCode, record.errorText);
        if (more != LUM_SAX_MORE) break;
        if (const SaxEvent* event = record.eventHead) {
            trace.mixNumber(event->kind);
            trace.mixText(event->name);
        }
        more = lumSAXParseNext(&record);
    }
    lumSAXDeleteParserInstance(&record);
}

void validationSession(const SessionFiles& files, SessionTrace& trace) {
    SaxParserInstance record;
    std::memset(&record, 0, sizeof record);
    record.fileName = files.documentFile.c_str();
    record.flags = 2;  // validate
    record.entityExpansionLimit = 50000;
    trace.mixNumber(lumSAXParse(&record));
    trace.answer(record.errorCode, record.errorText);
    lumSAXDeleteParserInstance(&record);
}

// ---- The writer session -------------------------------------------------------------------

namespace {

struct WriterRun {
    SAXWriter* writer = nullptr;
    WriterOptions options{};
    SessionTrace& trace;

    explicit WriterRun(SessionTrace& t) : trace(t) {}

    void run(int32_t command, const void* a0 = nullptr, const void* a1 = nullptr,
             const void* a2 = nullptr, const void* a3 = nullptr) {
        const int32_t result = writerCommand(writer, options, command, a0, a1, a2, a3);
        // The writer's codes are its message: a host reads them as they are.
        trace.answer(result, result != LUM_WRITER_OK ? "writer code" : "");
    }
};

}  // namespace

int32_t writerCommand(SAXWriter*& writer, WriterOptions& options, int32_t command,
                      const void* a0, const void* a1, const void* a2, const void* a3) {
    WriterArgs args{const_cast<void*>(a0), const_cast<void*>(a1), const_cast<void*>(a2),
                    const_cast<void*>(a3)};
    const int32_t result = lumSAXWriterExecute(writer, command, &options, &args);
    if (command == 1 || command == 4) writer = static_cast<SAXWriter*>(args.arg0);
    if (command == 2) writer = nullptr;
    return result;
}

void attributeListSession(SessionTrace& trace) {
    SaxAttrList* list = lumSAXNewAttrList(1);
    trace.mixNumber(list != nullptr);
    for (int i = 0; i < 12; ++i) {
        const char* stored = lumSAXInsertAttribute(&list, i % 2 ? "p:b" : "a", "1 < 2 & \"3\"",
                                                   i % 2 ? "urn:p" : nullptr, "CDATA");
        trace.mixText(stored);
    }
    if (list != nullptr && list->count > 1) {
        trace.mixText(lumSAXSetAttribute(&list->entries[0], "c", "v", "urn:c", "ID"));
        trace.mixText(lumSAXSetAttributeValue(&list->entries[1], "w"));
        lumSAXFixAttrMem(&list->entries[1].type, "NMTOKEN");
        lumSAXClearAttribute(&list->entries[1]);
    }
    if (list != nullptr) trace.mixNumber(list->count);
    lumSAXDeleteAttrList(list);
}

void writerSession(SaxAttrList* attributes, SessionTrace& trace) {
    WriterRun w(trace);
    w.run(LUM_WRITER_CREATE);
    if (w.writer == nullptr) return;
    w.options.version = "1.0";
    w.options.encoding = "UTF-8";
    w.options.strict = 1;
    w.options.outputKind = LUM_WRITER_TO_MEMORY;
    w.run(LUM_WRITER_OPEN);
    w.run(LUM_WRITER_DOCTYPE, "doc", "-//lumxml//test//EN", "doc.dtd");
    w.run(LUM_WRITER_START_ELEMENT, "doc", nullptr, attributes);
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:q", "q");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "c", "<v>", nullptr);
    w.run(LUM_WRITER_CHARACTERS, "text & more \xC3\xA9");
    w.run(LUM_WRITER_COMMENT, "a comment");
    w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "target", "data");
    w.run(LUM_WRITER_CDATA, "raw <text>");
    w.run(LUM_WRITER_ENTITY_REFERENCE, "amp");
    w.run(LUM_WRITER_DATA_ELEMENT, "q:e", "data", "urn:q", nullptr);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "empty", nullptr, nullptr, nullptr);
    w.run(LUM_WRITER_END_ELEMENT, "doc", nullptr);
    w.run(LUM_WRITER_END_DOCUMENT);
    if (w.options.memoryBuffer != nullptr && w.options.memoryLength != nullptr)
        trace.mix(w.options.memoryBuffer, *w.options.memoryLength);
    w.run(LUM_WRITER_FREE);
    std::free(w.options.memoryBuffer);
}

}  // namespace lumtest
