// Document exports in a process that never calls lumInitParser.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

TEST(DocumentsNotInitialised, InitDocumentAnswersNotInitializedAndWritesNoDocument) {
    ErrorSlot error;
    void* cell = reinterpret_cast<void*>(0x1234);
    lumInitDocument(&cell, 1, error.buffer, &error.code);
    EXPECT_EQ(error.code, 2);
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
    EXPECT_EQ(error.code, 2);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_EQ(cell, nullptr);
    EXPECT_STREQ(encoding, "untouched");
}

TEST(DocumentsNotInitialised, DeleteOfNullDocumentDoesNotCheckAndWritesNothing) {
    ErrorSlot error;
    lumDocDelete(nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(error.text(), "");
}

TEST(DocumentsNotInitialised, CreateInputSourceAnswersNull) {
    EXPECT_EQ(lumCreateInputSource("/tmp/some.xml", nullptr, 0), nullptr);
    EXPECT_EQ(lumCreateInputSource(nullptr, "<a/>", 4), nullptr);
}

}  // namespace
