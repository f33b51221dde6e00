// The exported lum* functions: thin wrappers that hand each call to the
// family that implements it. Every export is noexcept at the boundary: the
// families report through the error convention, and guardExport catches
// whatever escapes them.
#include "lumxml.h"

#include "dom/node_types.h"
#include "frame/boundary.h"
#include "frame/library_state.h"
#include "out/memio.h"
#include "sax/attr_list.h"
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

// ---- Document methods ------------------------------------------------------

// ---- Document saving -------------------------------------------------------

// ---- Nodes -----------------------------------------------------------------

extern "C" LUM_API void lumTypeToChar(int32_t type, char* name) { typeToChar(type, name); }

extern "C" LUM_API int32_t lumTypeToInt(const char* name) { return typeToInt(name); }

// ---- SAX reader ------------------------------------------------------------

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
