// Document exports before lumInitParser. Run as one program the tests go in
// the order written: the last one starts the library part way through.
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

TEST(DocumentsNotInitialised, InitDocumentAnswersNotInitializedAndWritesNoDocument) {
    ErrorSlot error;
    void* cell = reinterpret_cast<void*>(0x1234);
    lumInitDocument(&cell, 1, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_EQ(cell, reinterpret_cast<void*>(0x1234));
}

TEST(DocumentsNotInitialised, LoadAnswersNotInitializedBeforeAnythingElse) {
    ErrorSlot error;
    void* cell = nullptr;
    char encoding[300] = "untouched";
    const char* locations[3] = {"dirA", "urn:x x.xsd", "y.xsd"};
    int32_t limit = 0;
    lumDocLoad(&cell, 7, 9, encoding, "/nonexistent.xml", "<a/>", 4, "sys", &limit, 0, locations,
               error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_EQ(cell, nullptr);
    EXPECT_STREQ(encoding, "untouched");
}

TEST(DocumentsNotInitialised, DeleteOfNullDocumentDoesNotCheckAndWritesNothing) {
    ErrorSlot error;
    lumDocDelete(nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK);
    EXPECT_EQ(error.text(), "");
}

TEST(DocumentsNotInitialised, CreateInputSourceAnswersNull) {
    EXPECT_EQ(lumCreateInputSource("/tmp/some.xml", nullptr, 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, "<a/>", 4), nullptr);
}

// A host that passes a non-zero code in still gets a started library, and
// its documents still answer their host handle.
TEST(DocumentsAfterALateStart, StartWithAPresetCodeLeavesCodeAndBufferButStartsTheLibrary) {
    char buffer[257];
    std::memset(buffer, 0x41, sizeof buffer);
    int32_t code = 5;
    EXPECT_EQ(lumInitParser("utf-8", buffer, &code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(code, LUM_ERR_CHILD_INDEX);
    for (size_t i = 0; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x41) << "byte " << i;

    ErrorSlot error;
    void* cell = nullptr;
    lumInitDocument(&cell, 6060, error.buffer, &error.code);
    ASSERT_EQ(error.code, LUM_OK) << error.text();
    ASSERT_NE(cell, nullptr);
    void* element = nullptr;
    int32_t type = LUM_NODE_ELEMENT;
    ASSERT_EQ(docCall(cell, LUM_DOC_CREATE_NODE, {const_cast<char*>("e"), &type}, &element).code,
              LUM_OK);
    ASSERT_EQ(docCall(cell, LUM_DOC_INSERT_BEFORE, {element, nullptr}, nullptr).code, LUM_OK);
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(element, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 6060);

    // A later, clean start makes the key; the earlier document keeps its record.
    code = 0;
    EXPECT_EQ(lumInitParser("UTF-8", buffer, &code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(code, LUM_OK);
    handle = 0;
    EXPECT_EQ(nodeCall(element, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 6060);

    char encoding[257] = {0};
    const std::string bytes = "<b/>";
    lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, bytes.data(),
               static_cast<uint32_t>(bytes.size()), nullptr, nullptr, 0, nullptr, error.buffer,
               &error.code);
    ASSERT_EQ(error.code, LUM_OK) << error.text();
    void* root = nullptr;
    ASSERT_EQ(docCall(cell, LUM_DOC_DOCUMENT_ELEMENT, {}, &root).code, LUM_OK);
    handle = 0;
    EXPECT_EQ(nodeCall(root, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 6060);
    lumDocDelete(cell, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK);
}

}  // namespace
