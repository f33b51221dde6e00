#include "host_save.h"

#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

namespace lumtest {

SaveAnswer save(void* cell, const SaveArgs& args) {
    ErrorSlot error;
    std::memcpy(error.buffer, args.bufferBefore.c_str(), args.bufferBefore.size() + 1);
    void* const untouched = reinterpret_cast<void*>(static_cast<intptr_t>(-1));
    void* block = untouched;
    uint32_t length = 0xFFFFFFFFu;
    if (args.wideFileName != nullptr)
        lumDocSaveW(&cell, args.target, args.charEscapes, args.attributeEscapes,
                    args.noByteOrderMark, args.encoding, args.wideFileName, &block, &length,
                    args.streamHandle, args.streamWrite, error.buffer, &error.code);
    else
        lumDocSave(&cell, args.target, args.charEscapes, args.attributeEscapes,
                   args.noByteOrderMark, args.encoding, args.fileName, &block, &length,
                   args.streamHandle, args.streamWrite, error.buffer, &error.code);
    SaveAnswer answer;
    answer.code = error.code;
    answer.message = error.text();
    if (block != untouched) {
        answer.handedOver = true;
        answer.length = length;
        if (block != nullptr) answer.bytes.assign(static_cast<const char*>(block), length);
        std::free(block);
    }
    return answer;
}

std::string saveToMemory(void* cell, const char* encoding) {
    SaveArgs args;
    args.encoding = encoding;
    SaveAnswer answer = save(cell, args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_TRUE(answer.handedOver);
    return answer.bytes;
}

int32_t StreamCollector::write(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                               void* scratch8) {
    EXPECT_EQ(one, 1);
    EXPECT_NE(scratch8, nullptr);
    auto* collector = reinterpret_cast<StreamCollector*>(static_cast<intptr_t>(handle));
    collector->bytes.append(static_cast<const char*>(bytes), count);
    ++collector->calls;
    return 0;
}

}  // namespace lumtest
