// The exported lum* functions: thin wrappers that hand each call to the
// family that implements it. Every export is noexcept at the boundary: the
// families report through the error convention, and guardExport catches
// whatever escapes them.
#include "lumxml.h"

#include "dom/input_source.h"
#include "dom/node_types.h"
#include "frame/boundary.h"
#include "frame/library_state.h"

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

// ---- Documents -------------------------------------------------------------

// No initialisation check and no error buffer: null answers every failure.
extern "C" LUM_API void* lumCreateInputSource(const char* fileName, const void* memory,
                                              int32_t memoryLength) {
    return guardValue<void*>(nullptr, [&]() -> void* {
        return createInputSource(fileName, memory, memoryLength);
    });
}

// ---- Document methods ------------------------------------------------------

// ---- Document saving -------------------------------------------------------

// ---- Nodes -----------------------------------------------------------------

extern "C" LUM_API void lumTypeToChar(int32_t type, char* name) { typeToChar(type, name); }

extern "C" LUM_API int32_t lumTypeToInt(const char* name) { return typeToInt(name); }

// ---- SAX reader ------------------------------------------------------------

// ---- Attribute lists -------------------------------------------------------

// ---- SAX writer ------------------------------------------------------------
