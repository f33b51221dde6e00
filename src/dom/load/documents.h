// The host's document objects (X-DOCUMENT): made empty, loaded from a file,
// a URL or a memory block, and deleted.
#pragma once

#include "lumxml.h"

#include <cstdint>

#include "frame/error_report.h"

namespace lumxml {

// lumDocLoad's arguments, as the host passes them.
struct LoadRequest {
    void** document;
    uint32_t flags;
    uint32_t sourceKind;
    char* encodingOut;
    const char* fileName;
    const void* memory;
    uint32_t memoryLength;
    const char* systemId;
    const int32_t* entityExpansionLimit;
    const char* const* locations;
};

// Option bits of a load.
constexpr uint32_t kLoadValidate = LUM_LOAD_VALIDATE;
constexpr uint32_t kLoadNamespacesOff = LUM_LOAD_NO_NAMESPACES;
constexpr uint32_t kLoadNoDefaultEntityResolution = LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION;

// Source kinds of a load.
constexpr uint32_t kSourceFile = LUM_LOAD_FROM_FILE;
constexpr uint32_t kSourceMemory = LUM_LOAD_FROM_MEMORY;

void initDocument(void** documentOut, int64_t hostHandle, ErrorReport& report);
void loadDocument(const LoadRequest& request, ErrorReport& report);
void deleteDocument(void* document);

}  // namespace lumxml
