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

void note(int32_t code) { (code == 0 ? paths.ok : paths.failed)++; }

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
    load(&cell, 0, 0, files->good.c_str(), "");
    load(&cell, 0, 0, files->broken.c_str(), "");                 // fatal error, code 10
    load(&cell, 1, 0, files->invalid.c_str(), "");                // validity error, code 9
    load(&cell, 0, 0, files->withDtd.c_str(), "");                // external DTD
    load(&cell, 0, 0, (files->dir.path() + "/missing.xml").c_str(), "");  // code 3
    load(&cell, 0, 0, nullptr, "");                               // null name
    load(&cell, 0, 0, "//server/share/none.xml", "");             // network form
    load(&cell, 0, 1, nullptr, "<r xmlns:p='urn:p'><p:c/></r>");
    load(&cell, 2, 1, nullptr, "<p:r/>");                         // namespaces off
    load(&cell, 0, 1, nullptr, "<r><unclosed></r>");
    load(&cell, 0, 1, nullptr, "<q:r/>");                          // unbound prefix
    load(&cell, 0, 1, nullptr, "");                                // empty memory
    load(&cell, 0, 1, nullptr, files->viaDirectory, nullptr, nullptr, directories);
    load(&cell, 4, 1, nullptr, files->viaDirectory, nullptr, nullptr, directories);
    load(&cell, 4, 1, nullptr, files->viaDirectory);               // not found: code 10
    load(&cell, 0, 1, nullptr, "<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '&a;&a;&a;&a;'>]><r>&b;</r>",
         nullptr, &limit);                                         // limit reached
    load(&cell, 0, 1, nullptr, "<!DOCTYPE r [<!ENTITY a 'x'>]><r>&a;</r>", nullptr, &noEntities);
    load(&cell, 1, 1, nullptr, "<r/>", nullptr, nullptr, schemaPair);
    load(&cell, 0, 1, nullptr, "<r/>", files->withDtd.c_str());
    load(nullptr, 0, 0, files->withDtd.c_str(), "");              // no cell
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
    for (int32_t target : {0, 1, 3, 6, 9}) {
        for (const char* encoding : {(const char*)nullptr, "UTF-8", "ISO-8859-1", "UTF-16", "bogus"}) {
            slot.clear();
            block = nullptr;
            void* saveCell = target == 6 ? element : cell;
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
    lumDocSaveW(&cell, 0, 0, 0, 0, nullptr, wide, &block, &length, 0, nullptr, slot.buffer,
                &slot.code);
    note(slot.code);
}

void documentMethods() {
    void* cell = newDocument();
    load(&cell, 0, 1, nullptr,
         "<!DOCTYPE r PUBLIC 'pub' 'sys' [<!ELEMENT r ANY>]>"
         "<r xmlns:p='urn:p' a='1' p:b='2'>text<c>x</c><!--n--><?pi d?></r>");
    void* root = nullptr;
    doc(cell, 4, nullptr, nullptr, nullptr, nullptr, &root);
    for (int32_t type = 0; type <= 13; ++type) {
        void* made = nullptr;
        doc(cell, 1, const_cast<char*>("n"), &type, nullptr, nullptr, &made);
        doc(cell, 1, const_cast<char*>("1bad"), &type);  // bad name
        doc(cell, 1, const_cast<char*>(""), &type);
        int32_t nsType = type;
        doc(cell, 30, const_cast<char*>("urn:n"), const_cast<char*>("p:n"), &nsType);
        doc(cell, 30, nullptr, const_cast<char*>("p:n"), &nsType);  // namespace error
        doc(cell, 30, const_cast<char*>("urn:n"), const_cast<char*>("xml:n"), &nsType);
    }
    int32_t index = 0, bad = 50, limit = 3, big = 1000, deep = 1;
    doc(cell, 3);
    doc(cell, 5);
    doc(cell, 6);
    doc(cell, 7);
    doc(cell, 8, &index);
    doc(cell, 8, &bad);
    doc(cell, 9, &deep);
    doc(cell, 17);
    doc(cell, 18);
    doc(cell, 19, &big);
    doc(cell, 20, const_cast<char*>("v"));
    doc(cell, 21, &big);
    doc(cell, 21, &limit);
    doc(cell, 22, root, &deep);
    doc(cell, 22, nullptr, &deep);
    doc(cell, 23);
    doc(cell, 32, &big);
    doc(cell, 32, &limit);
    doc(cell, 33, &big);
    doc(cell, 99);
    doc(cell, -1);
    // Children of the document: append, replace and remove an element.
    int32_t elementType = 1;
    void* extra = nullptr;
    doc(cell, 1, const_cast<char*>("extra"), &elementType, nullptr, nullptr, &extra);
    doc(cell, 2, extra, nullptr);  // a second document element: DOM error
    doc(cell, 10, extra);          // not a child: DOM error
    doc(cell, 11, extra, root);
    doc(cell, 11, root, extra);
    saves(cell, root);
    deleteDocument(cell);
}

void nodeMethods() {
    void* cell = newDocument();
    load(&cell, 0, 1, nullptr,
         "<r xmlns:p='urn:p' a='1' p:b='2'>text<c>x</c><c>y</c><!--n--></r>");
    void* root = nullptr;
    doc(cell, 4, nullptr, nullptr, nullptr, nullptr, &root);
    int32_t zero = 0, one = 1, bad = 50, big = 1000, small = 2, elementType = 1, attrType = 2;
    void* child = nullptr;
    node(root, 8, &one, nullptr, nullptr, &child);
    void* made = nullptr;
    doc(cell, 1, const_cast<char*>("made"), &elementType, nullptr, nullptr, &made);
    void* attribute = nullptr;
    doc(cell, 1, const_cast<char*>("at"), &attrType, nullptr, nullptr, &attribute);
    for (int32_t method = 0; method <= 41; ++method) {
        switch (method) {
            case 2: node(root, 2, made, nullptr); node(root, 2, root, nullptr); break;
            case 3: break;  // below, on a node of its own
            case 8: node(root, 8, &zero); node(root, 8, &bad); break;
            case 9: node(root, 9, &one); node(root, 9, &zero); break;
            case 10: node(root, 10, made); node(root, 10, made); break;
            case 11: node(root, 11, made, child); node(root, 11, child, made); break;
            case 12: node(root, 12, &big); node(root, 12, &small); break;
            case 13: node(root, 13, const_cast<char*>("a"), &big);
                     node(root, 13, const_cast<char*>("a"), &zero); break;
            case 14: node(root, 14, const_cast<char*>("n"), const_cast<char*>("v"));
                     node(root, 14, const_cast<char*>("1bad"), const_cast<char*>("v"));
                     node(child, 14, const_cast<char*>("n"), const_cast<char*>("v")); break;
            case 15: node(root, 15, const_cast<char*>("n")); break;
            case 16: node(root, 16, attribute); break;  // not its attribute: DOM error
            case 19: case 21: case 26: case 27: case 28:
                node(root, method, &big); node(root, method, &zero); break;
            case 20: node(root, 20, const_cast<char*>("v")); node(child, 20, const_cast<char*>("v"));
                     break;
            case 29: node(root, 29, const_cast<char*>("p")); node(root, 29, const_cast<char*>("1bad"));
                     break;
            case 34: node(root, 34, attribute); node(root, 34, attribute); break;
            case 35: node(root, 35, const_cast<char*>("a")); node(root, 35, const_cast<char*>("none"));
                     break;
            case 36: {
                char* whole = nullptr;
                int32_t length = 0;
                node(child, 36, &whole, &length);
                node(child, 38, &whole);
                break;
            }
            case 37: {
                int32_t count = 3;
                node(child, 37, const_cast<char*>("abc"), &count);
                int32_t negative = -1;
                node(child, 37, const_cast<char*>("abc"), &negative);
                break;
            }
            case 38: break;  // with 36
            case 39: node(root, 39, const_cast<char*>("urn:p"), const_cast<char*>("b"), &big);
                     node(root, 39, const_cast<char*>("urn:p"), const_cast<char*>("b"), &zero);
                     break;
            default: node(root, method); break;
        }
    }
    // Method 3 releases a node of the tree; a detached one is left alone.
    void* victim = nullptr;
    node(root, 8, &one, nullptr, nullptr, &victim);
    node(victim, 3);
    void* loose = nullptr;
    doc(cell, 1, const_cast<char*>("loose"), &elementType, nullptr, nullptr, &loose);
    node(loose, 3);
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
          int32_t limit = -1, const char* searchPath = nullptr, ResolveEntityFn callback = nullptr,
          int stopAfter = 100000) {
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
    for (int32_t more = lumSAXParseFirst(&record); more == 1 && steps < stopAfter; ++steps) {
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
    pull(1, nullptr, "<r a='1' xmlns:p='urn:p'><p:c>t</p:c><!--c--><?pi d?></r>");
    pull(5, nullptr, "<r><c></r>");                                   // fatal error events
    pull(1, nullptr, rich, 1);                                         // namespaces off
    pull(0, files->withDtd.c_str(), "", 2);                            // external DTD, validating
    pull(0, files->invalid.c_str(), "", 2);                            // validity errors
    pull(0, (files->dir.path() + "/missing.xml").c_str(), "");        // cannot open
    pull(0, nullptr, "");                                              // no file
    pull(7, nullptr, "<r/>");                                          // refused kind
    pull(1, nullptr, files->viaDirectory, 4, -1, files->entityDirectory.c_str());
    pull(1, nullptr, files->viaDirectory, 4);                          // not found
    pull(1, nullptr, bomb, 0, 2);                                      // limit reached
    callbackSource = "<!ENTITY here 'from the host'>";
    pull(1, nullptr, files->viaDirectory, 0, -1, nullptr, supplySource);
    callbackSource.clear();
    pull(1, nullptr, files->viaDirectory, 0, -1, nullptr, supplySource);
    pull(0, files->withDtd.c_str(), "", 0, -1, nullptr, nullptr, 2);  // abandoned half-way
    for (const std::string& file : {files->withDtd, files->invalid, files->broken}) {
        for (uint32_t flags : {0u, 2u}) {
            SaxParserInstance record;
            std::memset(&record, 0, sizeof record);
            record.fileName = file.c_str();
            record.flags = flags;
            record.entityExpansionLimit = -1;
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

    Writer() { run(1); }
    ~Writer() {
        run(2);
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
    w.run(23, "early");  // refused before the output is open
    w.run(21);
    w.run(31, "doc", "-//pub//EN", "doc.dtd");
    w.run(23, "doc", nullptr, list);
    w.run(11, "urn:p", "p");
    w.run(11, "urn:q", "q");
    w.run(10, "c", "<v>", nullptr);
    w.run(10, "q:d", "v", "urn:q");
    w.run(10, "1bad", "v", nullptr);  // strict: bad name
    w.run(25, "text & more \xC3\xA9");
    w.run(28, "a comment");
    w.run(29, "target", "data");
    w.run(29, "xml", "data");
    w.run(33, "raw <text>");
    w.run(33, "bad ]]> cdata");
    w.run(32, "amp");
    w.run(32, "1bad");
    w.run(30, "<raw/>");
    w.run(27, "q:e", "data", "urn:q", list);
    w.run(26, "empty", nullptr, nullptr, nullptr);
    w.run(12);
    w.run(24, "other", nullptr);  // mismatched end
    w.run(24, "doc", nullptr);
    w.run(23, "second");          // strict: a second root
    w.run(25, "outside");
    w.run(3);
    w.run(22);
    w.run(22);
    lumSAXDeleteAttrList(list);
}

void writers() {
    for (int32_t kind : {1, 2, 3, 4, 5, 0}) {
        for (bool strict : {false, true}) {
            writerDocument(kind, strict, false, "UTF-8");
            writerDocument(kind, strict, true, "ISO-8859-1");
        }
    }
    writerDocument(5, false, false, "UTF-16");
    writerDocument(5, false, false, "bogus-encoding");
    {
        Writer w;
        w.run(4);   // made again
        w.run(5);   // failed on purpose
        w.run(23, "r");
        w.run(3);
    }
    {
        Writer w;
        w.options.outputKind = 1;
        w.options.fileName = "/no/such/dir/out.xml";
        w.run(21);
    }
    {
        Writer w;
        w.options.outputKind = 5;
        w.options.strict = 1;
        w.run(21);
        w.run(23, "r");
        w.run(22);  // an element still open
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
        doc(cell, 31, const_cast<char*>("urn:r"), const_cast<char*>("p:r"),
            const_cast<char*>("pub"), const_cast<char*>("sys"), &made);
        if (made != nullptr) cell = made;
        doc(cell, 31, nullptr, const_cast<char*>("p:r"), nullptr, nullptr, &made);  // namespace error
        if (made != nullptr) cell = made;
        doc(cell, 31, nullptr, const_cast<char*>("1bad"), nullptr, nullptr, &made);
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
