// Host-side helpers for save tests: one lumDocSave / lumDocSaveW call with
// every argument spelled out, the memory block copied out and freed as a
// host would, and a stream callback that collects the bytes.
#pragma once

#include <cstdint>
#include <string>

#include "host_test.h"
#include "lumxml.h"

namespace lumtest {

struct SaveArgs {
    int32_t target = LUM_SAVE_TO_MEMORY;
    uint8_t charEscapes = 0;
    uint8_t attributeEscapes = 0;
    uint8_t noByteOrderMark = 0;
    const char* encoding = nullptr;
    const char* fileName = nullptr;
    // When set, lumDocSaveW is called with this name instead.
    const lum_wchar_t* wideFileName = nullptr;
    int64_t streamHandle = 0;
    StreamWriteFn streamWrite = nullptr;
    // Text the host's error buffer holds before the call.
    std::string bufferBefore;
};

struct SaveAnswer {
    int32_t code = 0;
    std::string message;
    // The memory block's bytes (kinds 1 and 6), when one was handed over.
    std::string bytes;
    bool handedOver = false;
    uint32_t length = 0;
};

// Saves the document (or node) in `cell`. A handed-over block is copied
// into `bytes` and freed with free(): the test hosts' allocators are malloc.
SaveAnswer save(void* cell, const SaveArgs& args);

// The bytes of a memory save (kind 1) with `encoding`; expects success.
std::string saveToMemory(void* cell, const char* encoding = nullptr);

// A host stream: the callback appends every write to the std::string whose
// address is the stream handle, and counts the calls.
struct StreamCollector {
    std::string bytes;
    int calls = 0;
    int64_t handle() { return static_cast<int64_t>(reinterpret_cast<intptr_t>(this)); }
    static int32_t write(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                         void* scratch8);
};

}  // namespace lumtest
