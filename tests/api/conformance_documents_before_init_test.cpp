// A host's first calls, before and during lumInitParser. The tests run in
// the order written: the library is started part way through.
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

TEST(ConformanceBeforeInit, TypeNamesNeedNoStart) {
    char name[23];
    lumTypeToChar(10, name);
    EXPECT_STREQ(name, "DOCUMENT-TYPE");
    lumTypeToChar(0, name);
    EXPECT_STREQ(name, "Invalid node type");
    EXPECT_EQ(lumTypeToInt("comment"), 8);
}

TEST(ConformanceBeforeInit, LoadChecksTheStartBeforeTheSourceKind) {
    void* cell = reinterpret_cast<void*>(0x1234);
    char encoding[257] = {0};
    ErrorSlot error;
    lumDocLoad(&cell, 0, 9, encoding, nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr,
               error.buffer, &error.code);
    EXPECT_EQ(error.code, 2);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_EQ(cell, reinterpret_cast<void*>(0x1234));
}

TEST(ConformanceBeforeInit, DocumentExecuteAnswersNotInitialized) {
    int32_t result = 0;
    Answer answer = docCall(reinterpret_cast<void*>(0x1234), 4, {}, &result);
    EXPECT_EQ(answer.code, 2);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

// A host that passes a non-zero code in still gets a started library, and
// its documents still answer their host handle.
TEST(ConformanceBeforeInit, StartWithAPresetCodeLeavesCodeAndBufferButStartsTheLibrary) {
    char buffer[257];
    std::memset(buffer, 0x41, sizeof buffer);
    int32_t code = 5;
    EXPECT_EQ(lumInitParser("utf-8", buffer, &code), 1);
    EXPECT_EQ(code, 5);
    for (size_t i = 0; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x41) << "byte " << i;

    ErrorSlot error;
    void* cell = nullptr;
    lumInitDocument(&cell, 6060, error.buffer, &error.code);
    ASSERT_EQ(error.code, 0) << error.text();
    ASSERT_NE(cell, nullptr);
    void* element = nullptr;
    int32_t type = 1;
    ASSERT_EQ(docCall(cell, 1, {const_cast<char*>("e"), &type}, &element).code, 0);
    ASSERT_EQ(docCall(cell, 2, {element, nullptr}, nullptr).code, 0);
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(element, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 6060);

    // A later, clean start makes the key; the earlier document keeps its record.
    code = 0;
    EXPECT_EQ(lumInitParser("UTF-8", buffer, &code), 1);
    EXPECT_EQ(code, 0);
    handle = 0;
    EXPECT_EQ(nodeCall(element, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 6060);

    char encoding[257] = {0};
    const std::string bytes = "<b/>";
    lumDocLoad(&cell, 0, 1, encoding, nullptr, bytes.data(), static_cast<uint32_t>(bytes.size()),
               nullptr, nullptr, 0, nullptr, error.buffer, &error.code);
    ASSERT_EQ(error.code, 0) << error.text();
    void* root = nullptr;
    ASSERT_EQ(docCall(cell, 4, {}, &root).code, 0);
    handle = 0;
    EXPECT_EQ(nodeCall(root, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 6060);
    lumDocDelete(cell, error.buffer, &error.code);
    EXPECT_EQ(error.code, 0);
}

}  // namespace
