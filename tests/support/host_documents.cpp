#include "host_documents.h"

#include <gtest/gtest.h>

#include "lumxml.h"

namespace lumtest {

HostDocument::HostDocument(int64_t hostHandle) {
    ErrorSlot error;
    lumInitDocument(&cell, hostHandle, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK) << error.text();
}

HostDocument::~HostDocument() {
    if (cell == nullptr) return;
    ErrorSlot error;
    lumDocDelete(cell, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK) << error.text();
}

LoadAnswer HostDocument::load(const LoadArgs& args) {
    ErrorSlot error;
    char encoding[300];
    std::memset(encoding, 0, sizeof encoding);
    lumDocLoad(&cell, args.flags, args.sourceKind, encoding, args.fileName,
               args.memory.empty() ? nullptr : args.memory.data(),
               static_cast<uint32_t>(args.memory.size()), args.systemId,
               args.entityExpansionLimit, 0, args.locations, error.buffer, &error.code);
    return LoadAnswer{error.code, error.text(), encoding};
}

LoadAnswer HostDocument::loadFile(const std::string& fileName, uint32_t flags) {
    LoadArgs args;
    args.flags = flags;
    args.fileName = fileName.c_str();
    return load(args);
}

LoadAnswer HostDocument::loadMemory(const std::string& bytes, uint32_t flags,
                                    const char* systemId) {
    LoadArgs args;
    args.flags = flags;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    args.memory = bytes;
    args.systemId = systemId;
    return load(args);
}

}  // namespace lumtest
