// Node and document methods in a process that never calls lumInitParser:
// the not-initialised answer comes before anything else.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class MethodsNotInitialised : public ::testing::TestWithParam<int32_t> {};

TEST_P(MethodsNotInitialised, NodeMethodAnswersNotInitializedWithCode2) {
    ErrorSlot error;
    char result[16] = "untouched";
    lumNodeExecute(nullptr, GetParam(), nullptr, result, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_STREQ(result, "untouched");
}

TEST_P(MethodsNotInitialised, DocumentMethodAnswersNotInitializedWithCode2) {
    ErrorSlot error;
    char result[16] = "untouched";
    lumDocExecute(nullptr, GetParam(), nullptr, result, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_STREQ(result, "untouched");
}

// Every number of both tables, and numbers outside them.
INSTANTIATE_TEST_SUITE_P(EveryNumber, MethodsNotInitialised, ::testing::Range(-1, 42));

// The start is checked before the document handle is looked at.
TEST(DocumentMethodsNotInitialised, BogusDocumentHandleIsNeverRead) {
    int32_t result = 0;
    Answer answer = docCall(reinterpret_cast<void*>(0x1234), LUM_DOC_DOCUMENT_ELEMENT, {}, &result);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

}  // namespace
