// String results of node and document methods under an ISO-8859-1 host:
// limits count UTF-16 units, the host receives its own code page's bytes.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class Latin1Methods : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(document.loadMemory("<caf\xC3\xA9 n\xC3\xA9=\"\xC3\xA9t\xC3\xA9\">"
                                      "d\xC3\xA9j\xC3\xA0 \xE2\x82\xAC</caf\xC3\xA9>")
                      .code,
                  LUM_OK);
        root = documentElementOf(document.cell);
    }
    LibraryStarted started{"ISO-8859-1"};
    HostDocument document;
    void* root = nullptr;
};

TEST_F(Latin1Methods, NameArrivesInTheHostCodePage) {
    char name[16];
    int32_t limit = 5;  // "café" is 4 UTF-16 units
    void* slots[1] = {&limit};
    ErrorSlot error;
    lumNodeExecute(root, LUM_NODE_NAME, slots, name, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK);
    EXPECT_STREQ(name, "caf\xE9");
    limit = 4;
    EXPECT_EQ(nodeCall(root, LUM_NODE_NAME, {&limit}, name).code, LUM_ERR_STRING_LENGTH);
}

TEST_F(Latin1Methods, AttributeLookupTakesAHostName) {
    char value[16];
    int32_t limit = 4;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("n\xE9"), &limit},
                       value).code, LUM_OK);
    EXPECT_STREQ(value, "\xE9t\xE9");
}

TEST_F(Latin1Methods, UnrepresentableCharacterIsSubstituted) {
    void* text = childOf(root, 0);
    char value[16];
    std::memset(value, '#', sizeof value);
    int32_t limit = 16;
    EXPECT_EQ(nodeCall(text, LUM_NODE_VALUE, {&limit}, value).code, LUM_OK);
    // "déjà €": 6 units; the euro sign has no ISO-8859-1 byte.
    EXPECT_EQ(std::string(value, 6), "d\xE9j\xE0 \x1A");
}

TEST_F(Latin1Methods, ValueSetFromHostBytesIsStoredAsUnicode) {
    void* text = childOf(root, 0);
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("gar\xE7on")}, nullptr).code,
              LUM_OK);
    char* whole = nullptr;
    int32_t length = 0;
    EXPECT_EQ(nodeCall(text, LUM_NODE_WHOLE_VALUE, {&whole, &length}, nullptr).code, LUM_OK);
    EXPECT_STREQ(whole, "gar\xE7on");
    EXPECT_EQ(length, 6);
    nodeCall(text, LUM_NODE_RELEASE_VALUE, {&whole}, nullptr);
}


}  // namespace
