// The host's document objects (X-DOCUMENT): made empty, loaded from a file,
// a URL or a memory block, and deleted.
#pragma once

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
constexpr uint32_t kLoadValidate = 1;
constexpr uint32_t kLoadNamespacesOff = 2;
constexpr uint32_t kLoadNoDefaultEntityResolution = 4;

// Source kinds of a load.
constexpr uint32_t kSourceFile = 0;
constexpr uint32_t kSourceMemory = 1;

void initDocument(void** documentOut, int64_t hostHandle, ErrorReport& report);
void loadDocument(const LoadRequest& request, ErrorReport& report);
void deleteDocument(void* document);

}  // namespace lumxml
