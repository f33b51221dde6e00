// Host-side helpers for document tests: a host document object (made with
// lumInitDocument, deleted with lumDocDelete) and a load call with every
// lumDocLoad argument spelled out.
#pragma once

#include <cstdint>
#include <string>

#include "host_test.h"

namespace lumtest {

struct LoadArgs {
    uint32_t flags = 0;
    uint32_t sourceKind = LUM_LOAD_FROM_FILE;
    const char* fileName = nullptr;
    std::string memory;
    const char* systemId = nullptr;
    const int32_t* entityExpansionLimit = nullptr;
    const char* const* locations = nullptr;
};

struct LoadAnswer {
    int32_t code = 0;
    std::string message;
    std::string encoding;
};

// Starts the library when a fixture is built: declared before a fixture's
// HostDocument members, it runs before they are made.
struct LibraryStarted {
    explicit LibraryStarted(const char* codePage = "UTF-8") { initLibraryOnce(codePage); }
};

// The host's X-DOCUMENT: a document cell that it owns and deletes.
class HostDocument {
public:
    explicit HostDocument(int64_t hostHandle = 4242);
    ~HostDocument();
    HostDocument(const HostDocument&) = delete;
    HostDocument& operator=(const HostDocument&) = delete;

    void* cell = nullptr;

    LoadAnswer load(const LoadArgs& args);
    LoadAnswer loadFile(const std::string& fileName, uint32_t flags = 0);
    LoadAnswer loadMemory(const std::string& bytes, uint32_t flags = 0,
                          const char* systemId = nullptr);
};

}  // namespace lumtest
