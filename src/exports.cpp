// The exported lum* functions: thin wrappers that hand each call to the
// family that implements it. Every export is noexcept at the boundary: the
// families report through the error convention, and guardExport catches
// whatever escapes them.
#include "lumxml.h"

#include <optional>

#include "dom/methods/document_methods.h"
#include "dom/save/document_save.h"
#include "dom/load/documents.h"
#include "dom/load/input_source.h"
#include "dom/methods/node_methods.h"
#include "dom/methods/node_types.h"
#include "frame/boundary.h"
#include "frame/library_state.h"
#include "out/file_out.h"
#include "out/memio.h"
#include "sax/attr_list.h"
#include "sax/sax_events.h"
#include "sax/sax_parser.h"
#include "writer/writer.h"

using namespace lumxml;

// ---- Library ---------------------------------------------------------------

extern "C" LUM_API int32_t lumInitParser(const char* codePage, char* errorBuffer,
                                         int32_t* errorCode) {
    int32_t found = 0;
    guardExport(ErrorReport(errorBuffer, errorCode),
                [&] { found = initParser(codePage, errorBuffer, errorCode); });
    return found;
}

// ---- Output ----------------------------------------------------------------

extern "C" LUM_API void lumMemioInit(MemioReservedFn reserved, MemioAllocFn alloc,
                                     MemioReallocFn realloc) {
    memioInit(reserved, alloc, realloc);
}

// ---- Documents -------------------------------------------------------------

extern "C" LUM_API void lumInitDocument(void** documentOut, int64_t hostHandle, char* errorBuffer,
                                        int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    guardExport(report, [&] { initDocument(documentOut, hostHandle, report); });
}

extern "C" LUM_API void lumDocLoad(void** document, uint32_t flags, uint32_t sourceKind,
                                   char* encodingOut, const char* fileName, const void* memory,
                                   uint32_t memoryLength, const char* systemId,
                                   const int32_t* entityExpansionLimit, int64_t /*spare*/,
                                   const char* const* locations, char* errorBuffer,
                                   int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    LoadRequest request{document, flags,    sourceKind,           encodingOut, fileName,
                        memory,   memoryLength, systemId, entityExpansionLimit, locations};
    guardExport(report, [&] { loadDocument(request, report); });
}

// No initialisation check and no error buffer: null answers every failure.
extern "C" LUM_API void* lumCreateInputSource(const char* fileName, const void* memory,
                                              int32_t memoryLength) {
    return guardValue<void*>(nullptr, [&]() -> void* {
        return createInputSource(fileName, memory, memoryLength);
    });
}

extern "C" LUM_API void lumDocDelete(void* document, char* errorBuffer, int32_t* errorCode) {
    guardExport(ErrorReport(errorBuffer, errorCode), [&] { deleteDocument(document); },
                "Unexpected exception deleting X-DOCUMENT");
}

// ---- Document methods ------------------------------------------------------

// The host's document cell holds the DOMDocument* itself.
extern "C" LUM_API void lumDocExecute(void* document, int32_t method, void** args, void* result,
                                      char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    guardExport(report, [&] {
        documentExecute(static_cast<XERCES_CPP_NAMESPACE::DOMDocument*>(document), method, args,
                        result, report);
    });
}

// ---- Document saving -------------------------------------------------------

namespace {

// Both save exports open the file first, before any check, so that for
// kind 0 the file is created or truncated even when the save is then
// refused. The target lives on the stack: it is made before the library
// is known to be initialised, when Xerces' allocator may not exist yet.
template <class FileName>
void saveWithFile(void** document, int32_t target, uint8_t charEscapes, uint8_t attributeEscapes,
                  uint8_t noByteOrderMark, const char* encoding, FileName fileName,
                  void** memoryOut, uint32_t* memoryLength, int64_t streamHandle,
                  StreamWriteFn streamWrite, char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    guardExport(report, [&] {
        std::optional<XMLFileOut> file;
        if (target == LUM_SAVE_TO_FILE && fileName != nullptr) file.emplace(fileName, encoding);
        SaveRequest request{document,     target,      charEscapes,  attributeEscapes,
                            noByteOrderMark, encoding, file ? &*file : nullptr, memoryOut,
                            memoryLength, streamHandle, streamWrite};
        saveDocument(request, report);
    });
}

}  // namespace

extern "C" LUM_API void lumDocSave(void** document, int32_t target, uint8_t charEscapes,
                                   uint8_t attributeEscapes, uint8_t noByteOrderMark,
                                   const char* encoding, const char* fileName, void** memoryOut,
                                   uint32_t* memoryLength, int64_t streamHandle,
                                   StreamWriteFn streamWrite, char* errorBuffer,
                                   int32_t* errorCode) {
    saveWithFile(document, target, charEscapes, attributeEscapes, noByteOrderMark, encoding,
                 fileName, memoryOut, memoryLength, streamHandle, streamWrite, errorBuffer,
                 errorCode);
}

extern "C" LUM_API void lumDocSaveW(void** document, int32_t target, uint8_t charEscapes,
                                    uint8_t attributeEscapes, uint8_t noByteOrderMark,
                                    const char* encoding, const lum_wchar_t* fileName,
                                    void** memoryOut, uint32_t* memoryLength,
                                    int64_t streamHandle, StreamWriteFn streamWrite,
                                    char* errorBuffer, int32_t* errorCode) {
    saveWithFile(document, target, charEscapes, attributeEscapes, noByteOrderMark, encoding,
                 fileName, memoryOut, memoryLength, streamHandle, streamWrite, errorBuffer,
                 errorCode);
}

// ---- Nodes -----------------------------------------------------------------

// Node handles are DOMNode* addresses.
extern "C" LUM_API void lumNodeExecute(void* node, int32_t method, void** args, void* result,
                                       char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    guardExport(report, [&] {
        nodeExecute(static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(node), method, args, result,
                    report);
    });
}

// Does nothing: a node is removed and released through node method 3.
extern "C" LUM_API void lumNodeDelete(void) {}

extern "C" LUM_API void lumTypeToChar(int32_t type, char* name) { typeToChar(type, name); }

extern "C" LUM_API int32_t lumTypeToInt(const char* name) { return typeToInt(name); }

// ---- SAX reader ------------------------------------------------------------
// Failures are reported in the record's error text and code.

extern "C" LUM_API int32_t lumSAXParse(SaxParserInstance* instance) {
    return guardValue<int32_t>(0, [&] { return sax::validateFile(instance); });
}

extern "C" LUM_API int32_t lumSAXParseFirst(SaxParserInstance* instance) {
    return guardValue<int32_t>(0, [&] { return sax::parseFirst(instance); });
}

extern "C" LUM_API int32_t lumSAXParseNext(SaxParserInstance* instance) {
    return guardValue<int32_t>(0, [&] { return sax::parseNext(instance); });
}

extern "C" LUM_API void lumSAXDeleteParserInstance(SaxParserInstance* instance) {
    guardValue(false, [&] {
        sax::deleteParserInstance(instance);
        return true;
    });
}

extern "C" LUM_API void lumSAXClearCallbackData(SaxEvent* event) {
    guardValue(false, [&] {
        sax::clearEvent(event);
        return true;
    });
}

// ---- Attribute lists -------------------------------------------------------
// No error is reported by these exports; a failure answers null or leaves
// the list as it was.

extern "C" LUM_API SaxAttrList* lumSAXNewAttrList(int32_t capacity) {
    return guardValue<SaxAttrList*>(nullptr, [&] { return attrlist::newList(capacity); });
}

extern "C" LUM_API char* lumSAXInsertAttribute(SaxAttrList** list, const char* qName,
                                               const char* value, const char* uri,
                                               const char* type) {
    return guardValue<char*>(nullptr,
                             [&] { return attrlist::insert(list, qName, value, uri, type); });
}

extern "C" LUM_API char* lumSAXSetAttribute(SaxAttribute* entry, const char* qName,
                                            const char* value, const char* uri,
                                            const char* type) {
    return guardValue<char*>(nullptr,
                             [&] { return attrlist::set(entry, qName, value, uri, type); });
}

extern "C" LUM_API char* lumSAXSetAttributeValue(SaxAttribute* entry, const char* value) {
    return guardValue<char*>(nullptr, [&] { return attrlist::setValue(entry, value); });
}

extern "C" LUM_API void lumSAXClearAttribute(SaxAttribute* entry) {
    guardValue(false, [&] {
        attrlist::clear(entry);
        return true;
    });
}

extern "C" LUM_API void lumSAXDeleteAttrList(SaxAttrList* list) {
    guardValue(false, [&] {
        attrlist::deleteList(list);
        return true;
    });
}

extern "C" LUM_API void lumSAXFixAttrMem(char** slot, const char* text) {
    guardValue(false, [&] {
        attrlist::fixString(slot, text);
        return true;
    });
}

// ---- SAX writer ------------------------------------------------------------

extern "C" LUM_API int32_t lumSAXWriterExecute(SAXWriter* writer, int32_t command,
                                               WriterOptions* options, WriterArgs* args) {
    return guardValue(static_cast<int32_t>(kErrUnexpected),
                      [&] { return executeWriterCommand(writer, command, options, args); });
}
