// Every export, document and node method, writer command and attribute-list
// export, on its success, refusal and failure paths, round after round:
// after the first round (which makes what Xerces and lumxml make once per
// process) the heap must stay flat, block for block and byte for byte.
//
// Rounds: LUMXML_SOAK_ROUNDS (10000 for the full soak; CI runs fewer).
// Left out on purpose: lumInitParser (each call makes a new user-data key
// and keeps the old one, as documented) and lumDocLoad with an unsupported
// source kind (it keeps its parser unreleased, as documented).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "counting_new.h"
#include "host_sessions.h"
#include "host_test.h"
#include "lumxml.h"

namespace {

namespace heap = lumtest::heap;

// ---- Host calls with the error slot ----------------------------------------------

struct Slot {
    char buffer[257];
    int32_t code;
    Slot() { clear(); }
    void clear() {
        std::memset(buffer, 0, sizeof buffer);
        code = 0;
    }
};

// Counts of the codes seen, to show that the failure paths were taken.
struct PathCounts {
    int ok = 0;
    int failed = 0;
};
PathCounts paths;

void note(int32_t code) { (code == LUM_OK ? paths.ok : paths.failed)++; }

// One call of lumDocExecute or lumNodeExecute with up to four arguments.
int32_t execute(void (*call)(void*, int32_t, void**, void*, char*, int32_t*), void* target,
                int32_t method, void* a0, void* a1, void* a2, void* a3, void* result) {
    Slot slot;
    void* args[4] = {a0, a1, a2, a3};
    char scratch[1024];
    call(target, method, args, result != nullptr ? result : scratch, slot.buffer, &slot.code);
    note(slot.code);
    return slot.code;
}

int32_t doc(void* document, int32_t method, void* a0 = nullptr, void* a1 = nullptr,
            void* a2 = nullptr, void* a3 = nullptr, void* result = nullptr) {
    return execute(lumDocExecute, document, method, a0, a1, a2, a3, result);
}

int32_t node(void* target, int32_t method, void* a0 = nullptr, void* a1 = nullptr,
             void* a2 = nullptr, void* result = nullptr) {
    return execute(lumNodeExecute, target, method, a0, a1, a2, nullptr, result);
}

void* newDocument() {
    Slot slot;
    void* cell = nullptr;
    lumInitDocument(&cell, 99, slot.buffer, &slot.code);
    note(slot.code);
    return cell;
}

void deleteDocument(void* cell) {
    Slot slot;
    lumDocDelete(cell, slot.buffer, &slot.code);
    note(slot.code);
}

int32_t load(void** cell, uint32_t flags, uint32_t kind, const char* file, const std::string& bytes,
             const char* systemId = nullptr, const int32_t* limit = nullptr,
             const char* const* locations = nullptr) {
    Slot slot;
    char encoding[257];
    lumDocLoad(cell, flags, kind, encoding, file, bytes.data(),
               static_cast<uint32_t>(bytes.size()), systemId, limit, 0, locations, slot.buffer,
               &slot.code);
    note(slot.code);
    return slot.code;
}

// ---- The files of a round ----------------------------------------------------------

struct Files {
    lumtest::TempDir dir;
    std::string good, broken, invalid, withDtd, viaDirectory, entityDirectory, saved, written;
    Files() {
        good = dir.write("good.xml", "<r a='1'><c>t</c></r>");
        broken = dir.write("broken.xml", "<r><c></r>");
        dir.write("doc.dtd", "<!ELEMENT r (c)><!ELEMENT c (#PCDATA)><!ATTLIST r a CDATA #IMPLIED>"
                             "<!ENTITY e 'from the DTD'>");
        invalid = dir.write("invalid.xml", "<!DOCTYPE r SYSTEM 'doc.dtd'><r><x/></r>");
        withDtd = dir.write("dtd.xml", "<!DOCTYPE r SYSTEM 'doc.dtd'><r a='1'><c>&e;</c></r>");
        entityDirectory = dir.path() + "/entities";
        dir.write("entities/only-here.dtd", "<!ENTITY here 'found in the directory'>");
        viaDirectory = "<!DOCTYPE r SYSTEM 'only-here.dtd'><r>&here;</r>";
        saved = dir.file("saved.xml");
        written = dir.file("written.xml");
    }
};

Files* files = nullptr;

// ---- Documents -------------------------------------------------------------------------

void documentLoads() {
    void* cell = newDocument();
    const int32_t limit = 3;
    const int32_t noEntities = 0;
    const char* directories[3] = {files->entityDirectory.c_str(), nullptr, nullptr};
    const char* schemaPair[3] = {nullptr, "urn:x missing.xsd", "missing.xsd"};
    load(&cell, 0, LUM_LOAD_FROM_FILE, files->good.c_str(), "");
    load(&cell, 0, LUM_LOAD_FROM_FILE, files->broken.c_str(), "");  // fatal error, code 10
    // validity error, code 9
    load(&cell, LUM_LOAD_VALIDATE, LUM_LOAD_FROM_FILE, files->invalid.c_str(), "");
    load(&cell, 0, LUM_LOAD_FROM_FILE, files->withDtd.c_str(), "");  // external DTD
    load(&cell, 0, LUM_LOAD_FROM_FILE, (files->dir.path() + "/missing.xml").c_str(), "");  // code 3
    load(&cell, 0, LUM_LOAD_FROM_FILE, nullptr, "");  // null name
    load(&cell, 0, LUM_LOAD_FROM_FILE, "//server/share/none.xml", "");  // network form
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "<r xmlns:p='urn:p'><p:c/></r>");
    load(&cell, LUM_LOAD_NO_NAMESPACES, LUM_LOAD_FROM_MEMORY, nullptr, "<p:r/>");  // namespaces off
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "<r><unclosed></r>");
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "<q:r/>");  // unbound prefix
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "");  // empty memory
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, files->viaDirectory, nullptr, nullptr,
         directories);
    load(&cell, LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION, LUM_LOAD_FROM_MEMORY, nullptr,
         files->viaDirectory, nullptr, nullptr, directories);
    load(&cell, LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION, LUM_LOAD_FROM_MEMORY, nullptr,
         files->viaDirectory);  // not found: code 10
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr,
         "<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;&a;&a;'>]><r>&b;</r>", nullptr,
         &limit);  // limit reached
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "<!DOCTYPE r [<!ENTITY a 'x'>]><r>&a;</r>",
         nullptr, &noEntities);
    load(&cell, LUM_LOAD_VALIDATE, LUM_LOAD_FROM_MEMORY, nullptr, "<r/>", nullptr, nullptr,
         schemaPair);
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, "<r/>", files->withDtd.c_str());
    load(nullptr, 0, LUM_LOAD_FROM_FILE, files->withDtd.c_str(), "");  // no cell
    deleteDocument(cell);
    lumDocDelete(nullptr, nullptr, nullptr);
}

int32_t appendToString(int64_t handle, int32_t, const void* bytes, uint32_t count, void*) {
    reinterpret_cast<std::string*>(handle)->append(static_cast<const char*>(bytes), count);
    return 0;
}

void saves(void* cell, void* element) {
    Slot slot;
    void* block = nullptr;
    uint32_t length = 0;
    for (int32_t target : {LUM_SAVE_TO_FILE, LUM_SAVE_TO_MEMORY, 3, LUM_SAVE_NODE_TO_MEMORY, 9}) {
        for (const char* encoding : {(const char*)nullptr, "UTF-8", "ISO-8859-1", "UTF-16", "bogus"}) {
            slot.clear();
            block = nullptr;
            void* saveCell = target == LUM_SAVE_NODE_TO_MEMORY ? element : cell;
            std::string stream;
            lumDocSave(&saveCell, target, 1, 1, 0, encoding, files->saved.c_str(), &block, &length,
                       reinterpret_cast<int64_t>(&stream), encoding != nullptr ? appendToString : nullptr,
                       slot.buffer, &slot.code);
            note(slot.code);
            std::free(block);
        }
    }
    const lum_wchar_t wide[] = {'/', 'n', 'o', '/', 's', 'u', 'c', 'h', 0};
    slot.clear();
    lumDocSaveW(&cell, LUM_SAVE_TO_FILE, 0, 0, 0, nullptr, wide, &block, &length, 0, nullptr,
                slot.buffer, &slot.code);
    note(slot.code);
}

void documentMethods() {
    void* cell = newDocument();
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr,
         "<!DOCTYPE r PUBLIC 'pub' 'sys' [<!ELEMENT r ANY>]>"
         "<r xmlns:p='urn:p' a='1' p:b='2'>text<c>x</c><!--n--><?pi d?></r>");
    void* root = nullptr;
    doc(cell, LUM_DOC_DOCUMENT_ELEMENT, nullptr, nullptr, nullptr, nullptr, &root);
    for (int32_t type = 0; type <= 13; ++type) {
        void* made = nullptr;
        doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("n"), &type, nullptr, nullptr, &made);
        doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("1bad"), &type);  // bad name
        doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>(""), &type);
        int32_t nsType = type;
        doc(cell, LUM_DOC_CREATE_NODE_NS, const_cast<char*>("urn:n"), const_cast<char*>("p:n"),
            &nsType);
        // a namespace error
        doc(cell, LUM_DOC_CREATE_NODE_NS, nullptr, const_cast<char*>("p:n"), &nsType);
        doc(cell, LUM_DOC_CREATE_NODE_NS, const_cast<char*>("urn:n"), const_cast<char*>("xml:n"),
            &nsType);
    }
    int32_t index = 0, bad = 50, limit = 3, big = 1000, deep = 1;
    doc(cell, LUM_NODE_REMOVE);
    doc(cell, LUM_DOC_CHILD_COUNT);
    doc(cell, LUM_NODE_INDEX_IN_PARENT);
    doc(cell, LUM_DOC_PARENT);
    doc(cell, LUM_DOC_CHILD_AT, &index);
    doc(cell, LUM_DOC_CHILD_AT, &bad);
    doc(cell, LUM_DOC_CLONE, &deep);
    doc(cell, LUM_DOC_OWNER_HANDLE);
    doc(cell, LUM_DOC_TYPE_CODE);
    doc(cell, LUM_DOC_VALUE, &big);
    doc(cell, LUM_DOC_SET_VALUE, const_cast<char*>("v"));
    doc(cell, LUM_DOC_NAME, &big);
    doc(cell, LUM_DOC_NAME, &limit);
    doc(cell, LUM_DOC_IMPORT_NODE, root, &deep);
    doc(cell, LUM_DOC_IMPORT_NODE, nullptr, &deep);
    doc(cell, LUM_NODE_NORMALIZE);
    doc(cell, LUM_DOC_DOCTYPE_PUBLIC_ID, &big);
    doc(cell, LUM_DOC_DOCTYPE_PUBLIC_ID, &limit);
    doc(cell, LUM_DOC_DOCTYPE_SYSTEM_ID, &big);
    doc(cell, 99);
    doc(cell, -1);
    // Children of the document: append, replace and remove an element.
    int32_t elementType = LUM_NODE_ELEMENT;
    void* extra = nullptr;
    doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("extra"), &elementType, nullptr, nullptr,
        &extra);
    doc(cell, LUM_DOC_INSERT_BEFORE, extra, nullptr);  // a second document element: DOM error
    doc(cell, LUM_DOC_REMOVE_CHILD, extra);          // not a child: DOM error
    doc(cell, LUM_DOC_REPLACE_CHILD, extra, root);
    doc(cell, LUM_DOC_REPLACE_CHILD, root, extra);
    saves(cell, root);
    deleteDocument(cell);
}

void nodeMethods() {
    void* cell = newDocument();
    load(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr,
         "<r xmlns:p='urn:p' a='1' p:b='2'>text<c>x</c><c>y</c><!--n--></r>");
    void* root = nullptr;
    doc(cell, LUM_DOC_DOCUMENT_ELEMENT, nullptr, nullptr, nullptr, nullptr, &root);
    int32_t zero = 0, one = 1, bad = 50, big = 1000, small = 2;
    int32_t elementType = LUM_NODE_ELEMENT, attrType = LUM_NODE_ATTRIBUTE;
    void* child = nullptr;
    node(root, LUM_NODE_CHILD_AT, &one, nullptr, nullptr, &child);
    void* made = nullptr;
    doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("made"), &elementType, nullptr, nullptr,
        &made);
    void* attribute = nullptr;
    doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("at"), &attrType, nullptr, nullptr,
        &attribute);
    for (int32_t method = 0; method <= 41; ++method) {
        switch (method) {
            case LUM_NODE_INSERT_BEFORE:
                node(root, method, made, nullptr);
                node(root, method, root, nullptr);
                break;
            case LUM_NODE_REMOVE: break;  // below, on a node of its own
            case LUM_NODE_CHILD_AT:
                node(root, method, &zero);
                node(root, method, &bad);
                break;
            case LUM_NODE_CLONE:
                node(root, method, &one);
                node(root, method, &zero);
                break;
            case LUM_NODE_REMOVE_CHILD:
                node(root, method, made);
                node(root, method, made);
                break;
            case LUM_NODE_REPLACE_CHILD:
                node(root, method, made, child);
                node(root, method, child, made);
                break;
            case LUM_NODE_ATTRIBUTE_NAMES:
                node(root, method, &big);
                node(root, method, &small);
                break;
            case LUM_NODE_ATTRIBUTE_VALUE:
                node(root, method, const_cast<char*>("a"), &big);
                node(root, method, const_cast<char*>("a"), &zero);
                break;
            case LUM_NODE_SET_ATTRIBUTE:
                node(root, method, const_cast<char*>("n"), const_cast<char*>("v"));
                node(root, method, const_cast<char*>("1bad"), const_cast<char*>("v"));
                node(child, method, const_cast<char*>("n"), const_cast<char*>("v"));
                break;
            case LUM_NODE_REMOVE_ATTRIBUTE: node(root, method, const_cast<char*>("n")); break;
            case LUM_NODE_REMOVE_ATTRIBUTE_NODE:
                node(root, method, attribute);  // not its attribute: DOM error
                break;
            case LUM_NODE_VALUE:
            case LUM_NODE_NAME:
            case LUM_NODE_NAMESPACE_URI:
            case LUM_NODE_PREFIX:
            case LUM_NODE_LOCAL_NAME:
                node(root, method, &big);
                node(root, method, &zero);
                break;
            case LUM_NODE_SET_VALUE:
                node(root, method, const_cast<char*>("v"));
                node(child, method, const_cast<char*>("v"));
                break;
            case LUM_NODE_SET_PREFIX:
                node(root, method, const_cast<char*>("p"));
                node(root, method, const_cast<char*>("1bad"));
                break;
            case LUM_NODE_SET_ATTRIBUTE_NODE:
                node(root, method, attribute);
                node(root, method, attribute);
                break;
            case LUM_NODE_ATTRIBUTE_NODE:
                node(root, method, const_cast<char*>("a"));
                node(root, method, const_cast<char*>("none"));
                break;
            case LUM_NODE_WHOLE_VALUE: {
                char* whole = nullptr;
                int32_t length = 0;
                node(child, LUM_NODE_WHOLE_VALUE, &whole, &length);
                node(child, LUM_NODE_RELEASE_VALUE, &whole);
                break;
            }
            case LUM_NODE_SET_VALUE_COUNTED: {
                int32_t count = 3;
                node(child, method, const_cast<char*>("abc"), &count);
                int32_t negative = -1;
                node(child, method, const_cast<char*>("abc"), &negative);
                break;
            }
            case LUM_NODE_RELEASE_VALUE: break;  // with LUM_NODE_WHOLE_VALUE
            case LUM_NODE_ATTRIBUTE_NS:
                node(root, method, const_cast<char*>("urn:p"), const_cast<char*>("b"), &big);
                node(root, method, const_cast<char*>("urn:p"), const_cast<char*>("b"), &zero);
                break;
            default: node(root, method); break;
        }
    }
    // LUM_NODE_REMOVE releases a node of the tree; a detached one is left alone.
    void* victim = nullptr;
    node(root, LUM_NODE_CHILD_AT, &one, nullptr, nullptr, &victim);
    node(victim, LUM_NODE_REMOVE);
    void* loose = nullptr;
    doc(cell, LUM_DOC_CREATE_NODE, const_cast<char*>("loose"), &elementType, nullptr, nullptr,
        &loose);
    node(loose, LUM_NODE_REMOVE);
    lumNodeDelete();
    char name[64];
    for (int32_t type = -1; type <= 14; ++type) lumTypeToChar(type, name);
    for (const char* typeName : {"ELEMENT_NODE", "TEXT", "bogus", ""}) lumTypeToInt(typeName);
    deleteDocument(cell);
}

void inputSources() {
    // Sources the host made and gave to nobody are its own to delete: only
    // the null answers are made here; the pull reader's callback below
    // hands a made one over.
    lumCreateInputSource(nullptr, nullptr, 0);
    lumCreateInputSource("", nullptr, 0);
}

// ---- The pull reader ----------------------------------------------------------------------

std::string callbackSource;
SaxParserInstance* driving = nullptr;

int32_t supplySource() {
    SaxEvent* event = driving->eventHead;
    if (event != nullptr && !callbackSource.empty())
        event->arg3 = lumCreateInputSource(nullptr, callbackSource.data(),
                                           static_cast<int32_t>(callbackSource.size()));
    return 0;
}

void pull(int32_t kind, const char* file, const std::string& bytes, uint32_t flags = 0,
          int32_t limit = LUM_SAX_NO_ENTITY_LIMIT, const char* searchPath = nullptr,
          ResolveEntityFn callback = nullptr,          int stopAfter = 100000) {
    SaxParserInstance record;
    std::memset(&record, 0, sizeof record);
    record.inputKind = kind;
    record.fileName = file;
    record.memoryBuffer = bytes.data();
    record.memoryLength = static_cast<uint32_t>(bytes.size());
    record.flags = flags;
    record.entityExpansionLimit = limit;
    record.searchPath = searchPath;
    record.resolveEntityCallback = callback;
    driving = &record;
    int steps = 0;
    for (int32_t more = lumSAXParseFirst(&record); more == LUM_SAX_MORE && steps < stopAfter;
         ++steps) {
        note(record.errorCode);
        // Cleared by the host as well: only an event alone in the queue, as
        // clearing one zeroes its link to the events queued behind it.
        if (steps == 3 && record.eventCount == 1) lumSAXClearCallbackData(record.eventHead);
        more = lumSAXParseNext(&record);
    }
    note(record.errorCode);
    lumSAXParseNext(&record);  // past the end
    lumSAXDeleteParserInstance(&record);
    lumSAXDeleteParserInstance(&record);  // twice is harmless
    driving = nullptr;
}

void pullReads() {
    const std::string rich(lumtest::kRichDocument);
    const std::string bomb = "<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;&a;'>]><r>&b;&b;</r>";
    pull(LUM_SAX_INPUT_MEMORY, nullptr,
         "<r a='1' xmlns:p='urn:p'><p:c>t</p:c><!--c--><?pi d?></r>");
    pull(LUM_SAX_INPUT_BUFFER, nullptr, "<r><c></r>");  // fatal error events
    pull(LUM_SAX_INPUT_MEMORY, nullptr, rich, LUM_SAX_NO_NAMESPACES);  // namespaces off
    // external DTD, validating
    pull(LUM_SAX_INPUT_FILE, files->withDtd.c_str(), "", LUM_SAX_VALIDATE);
    pull(LUM_SAX_INPUT_FILE, files->invalid.c_str(), "", LUM_SAX_VALIDATE);  // validity errors
    pull(LUM_SAX_INPUT_FILE, (files->dir.path() + "/missing.xml").c_str(), "");  // cannot open
    pull(LUM_SAX_INPUT_FILE, nullptr, "");  // no file
    pull(7, nullptr, "<r/>");  // refused kind
    pull(LUM_SAX_INPUT_MEMORY, nullptr, files->viaDirectory, LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION,
         LUM_SAX_NO_ENTITY_LIMIT, files->entityDirectory.c_str());
    pull(LUM_SAX_INPUT_MEMORY, nullptr, files->viaDirectory,
         LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION);  // not found
    pull(LUM_SAX_INPUT_MEMORY, nullptr, bomb, 0, 2);  // limit reached
    callbackSource = "<!ENTITY here 'from the host'>";
    pull(LUM_SAX_INPUT_MEMORY, nullptr, files->viaDirectory, 0, LUM_SAX_NO_ENTITY_LIMIT, nullptr,
         supplySource);
    callbackSource.clear();
    pull(LUM_SAX_INPUT_MEMORY, nullptr, files->viaDirectory, 0, LUM_SAX_NO_ENTITY_LIMIT, nullptr,
         supplySource);
    pull(LUM_SAX_INPUT_FILE, files->withDtd.c_str(), "", 0, LUM_SAX_NO_ENTITY_LIMIT, nullptr,
         nullptr, 2);  // abandoned half-way
    for (const std::string& file : {files->withDtd, files->invalid, files->broken}) {
        for (uint32_t flags : {0u, 2u}) {
            SaxParserInstance record;
            std::memset(&record, 0, sizeof record);
            record.fileName = file.c_str();
            record.flags = flags;
            record.entityExpansionLimit = LUM_SAX_NO_ENTITY_LIMIT;
            record.searchPath = files->entityDirectory.c_str();
            lumSAXParse(&record);
            note(record.errorCode);
            lumSAXDeleteParserInstance(&record);
        }
    }
    lumSAXParse(nullptr);
    lumSAXParseFirst(nullptr);
    lumSAXParseNext(nullptr);
    lumSAXDeleteParserInstance(nullptr);
    lumSAXClearCallbackData(nullptr);
}

// ---- Attribute lists and the writer ----------------------------------------------------

void attributeLists() {
    lumtest::SessionTrace trace;
    lumtest::attributeListSession(trace);
    SaxAttrList* list = nullptr;
    for (int i = 0; i < 25; ++i) lumSAXInsertAttribute(&list, "n", "v", nullptr, nullptr);
    lumSAXFixAttrMem(nullptr, "x");
    lumSAXFixAttrMem(&list->entries[0].value, nullptr);
    lumSAXDeleteAttrList(list);
    lumSAXDeleteAttrList(nullptr);
}

struct Writer {
    SAXWriter* writer = nullptr;
    WriterOptions options{};
    std::string stream;

    Writer() { run(LUM_WRITER_CREATE); }
    ~Writer() {
        run(LUM_WRITER_FREE);
        std::free(options.memoryBuffer);
    }
    int32_t run(int32_t command, const void* a0 = nullptr, const void* a1 = nullptr,
                const void* a2 = nullptr, const void* a3 = nullptr) {
        const int32_t result = lumtest::writerCommand(writer, options, command, a0, a1, a2, a3);
        note(result);
        return result;
    }
};

void writerDocument(int32_t kind, bool strict, bool fragment, const char* encoding) {
    Writer w;
    w.options.version = "1.0";
    w.options.encoding = encoding;
    w.options.strict = strict;
    w.options.fragment = fragment;
    w.options.formatted = 1;
    w.options.outputKind = kind;
    w.options.fileName = files->written.c_str();
    w.options.streamHandle = reinterpret_cast<int64_t>(&w.stream);
    w.options.streamWrite = appendToString;
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "p:a", "1 < 2", "urn:p", "CDATA");
    lumSAXInsertAttribute(&list, "b", "\"q\"", nullptr, "CDATA");
    w.run(LUM_WRITER_START_ELEMENT, "early");  // refused before the output is open
    w.run(LUM_WRITER_OPEN);
    w.run(LUM_WRITER_DOCTYPE, "doc", "-//pub//EN", "doc.dtd");
    w.run(LUM_WRITER_START_ELEMENT, "doc", nullptr, list);
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:q", "q");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "c", "<v>", nullptr);
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "q:d", "v", "urn:q");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "1bad", "v", nullptr);  // strict: bad name
    w.run(LUM_WRITER_CHARACTERS, "text & more \xC3\xA9");
    w.run(LUM_WRITER_COMMENT, "a comment");
    w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "target", "data");
    w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "xml", "data");
    w.run(LUM_WRITER_CDATA, "raw <text>");
    w.run(LUM_WRITER_CDATA, "bad ]]> cdata");
    w.run(LUM_WRITER_ENTITY_REFERENCE, "amp");
    w.run(LUM_WRITER_ENTITY_REFERENCE, "1bad");
    w.run(LUM_WRITER_RAW_TEXT, "<raw/>");
    w.run(LUM_WRITER_DATA_ELEMENT, "q:e", "data", "urn:q", list);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "empty", nullptr, nullptr, nullptr);
    w.run(LUM_WRITER_RESTART_MEMORY);
    w.run(LUM_WRITER_END_ELEMENT, "other", nullptr);  // mismatched end
    w.run(LUM_WRITER_END_ELEMENT, "doc", nullptr);
    w.run(LUM_WRITER_START_ELEMENT, "second");          // strict: a second root
    w.run(LUM_WRITER_CHARACTERS, "outside");
    w.run(LUM_WRITER_GET_STATE);
    w.run(LUM_WRITER_END_DOCUMENT);
    w.run(LUM_WRITER_END_DOCUMENT);
    lumSAXDeleteAttrList(list);
}

void writers() {
    for (int32_t kind : {LUM_WRITER_TO_FILE, LUM_WRITER_TO_MEMORY_WITH_BOM, LUM_WRITER_TO_STREAM, 4,
                         LUM_WRITER_TO_MEMORY, 0}) {
        for (bool strict : {false, true}) {
            writerDocument(kind, strict, false, "UTF-8");
            writerDocument(kind, strict, true, "ISO-8859-1");
        }
    }
    writerDocument(LUM_WRITER_TO_MEMORY, false, false, "UTF-16");
    writerDocument(LUM_WRITER_TO_MEMORY, false, false, "bogus-encoding");
    {
        Writer w;
        w.run(LUM_WRITER_RESET);   // made again
        w.run(LUM_WRITER_STOP);   // failed on purpose
        w.run(LUM_WRITER_START_ELEMENT, "r");
        w.run(LUM_WRITER_GET_STATE);
    }
    {
        Writer w;
        w.options.outputKind = LUM_WRITER_TO_FILE;
        w.options.fileName = "/no/such/dir/out.xml";
        w.run(LUM_WRITER_OPEN);
    }
    {
        Writer w;
        w.options.outputKind = LUM_WRITER_TO_MEMORY;
        w.options.strict = 1;
        w.run(LUM_WRITER_OPEN);
        w.run(LUM_WRITER_START_ELEMENT, "r");
        w.run(LUM_WRITER_END_DOCUMENT);  // an element still open
    }
    lumSAXWriterExecute(nullptr, 7, nullptr, nullptr);
}

// Each part of a round, with what it left on the heap in each round
// (LUMXML_SOAK_VERBOSE=1 prints it, and numbers the allocations of the
// third round to name the first block left; LUMXML_SOAK_ONLY=<word> runs
// only the parts whose name holds the word).
void round() {
    static const bool verbose = std::getenv("LUMXML_SOAK_VERBOSE") != nullptr;
    const struct {
        const char* name;
        void (*run)();
    } parts[] = {{"document loads", documentLoads}, {"document methods", documentMethods},
                 {"node methods", nodeMethods},     {"input sources", inputSources},
                 {"pull reads", pullReads},         {"attribute lists", attributeLists},
                 {"writers", writers}};
    static int number = 0;
    const bool numbered = verbose && ++number == 3;
    static const char* only = std::getenv("LUMXML_SOAK_ONLY");
    for (const auto& part : parts) {
        if (only != nullptr && std::strstr(part.name, only) == nullptr) continue;
        const heap::Counts before = heap::now();
        if (numbered) heap::countFrom();
        part.run();
        if (numbered) heap::stopFailing();
        const heap::Counts after = heap::now();
        if (verbose)
            std::printf("  %s: %+lld blocks, %+lld bytes, first block left: allocation %lld\n",
                        part.name, static_cast<long long>(after.blocks - before.blocks),
                        static_cast<long long>(after.bytes - before.bytes),
                        static_cast<long long>(numbered ? heap::firstNumberedOut() : 0));
    }
}

int rounds() {
    const char* text = std::getenv("LUMXML_SOAK_ROUNDS");
    const int asked = text != nullptr ? std::atoi(text) : 0;
    return asked > 2 ? asked : 30;
}

TEST(Soak, EveryExportOnEveryPathLeavesTheHeapFlatAfterTheFirstRound) {
    lumtest::initLibraryOnce();
    Files roundFiles;
    files = &roundFiles;
    round();
    const heap::Counts first = heap::now();
    round();
    const heap::Counts second = heap::now();
    const int total = rounds();
    for (int i = 2; i < total; ++i) round();
    const heap::Counts last = heap::now();
    std::printf("soak: %d rounds, %d calls answered 0 and %d a failure code per round;"
                " heap after round 1: %lld blocks, %lld bytes; after round 2: %lld, %lld;"
                " after round %d: %lld, %lld; %lld allocations in all\n",
                total, paths.ok / total, paths.failed / total,
                static_cast<long long>(first.blocks), static_cast<long long>(first.bytes),
                static_cast<long long>(second.blocks), static_cast<long long>(second.bytes),
                total, static_cast<long long>(last.blocks), static_cast<long long>(last.bytes),
                static_cast<long long>(last.allocations));
    EXPECT_GT(paths.failed, 0);
    EXPECT_EQ(last.blocks, first.blocks);
    EXPECT_EQ(last.bytes, first.bytes);
    files = nullptr;
}

// Document method 31 (a new document with a document type), on its success
// and failure paths, round after round: the type is made on the new
// document's own heap, so nothing of it outlives the document.
TEST(Soak, NewDocumentWithTypeLeavesTheHeapFlat) {
    lumtest::initLibraryOnce();
    auto roundOf31 = [] {
        void* cell = newDocument();
        void* made = nullptr;
        doc(cell, LUM_DOC_NEW_WITH_DOCTYPE, const_cast<char*>("urn:r"), const_cast<char*>("p:r"),
            const_cast<char*>("pub"), const_cast<char*>("sys"), &made);
        if (made != nullptr) cell = made;
        // a namespace error
        doc(cell, LUM_DOC_NEW_WITH_DOCTYPE, nullptr, const_cast<char*>("p:r"), nullptr, nullptr,
            &made);
        if (made != nullptr) cell = made;
        doc(cell, LUM_DOC_NEW_WITH_DOCTYPE, nullptr, const_cast<char*>("1bad"), nullptr, nullptr,
            &made);
        if (made != nullptr) cell = made;
        deleteDocument(cell);
    };
    roundOf31();
    const heap::Counts first = heap::now();
    for (int i = 1; i < rounds(); ++i) roundOf31();
    const heap::Counts last = heap::now();
    EXPECT_EQ(last.blocks, first.blocks);
    EXPECT_EQ(last.bytes, first.bytes);
}

}  // namespace
