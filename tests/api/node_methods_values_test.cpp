// Node methods (lumNodeExecute) that read and set names and values, whole
// and counted, and the string limits they share, called as a host does.
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"
#include "method_fixtures.h"

using namespace lumtest;

namespace {

class NodeMethods : public NodeMethodsTree {};
class NodeMethodsOnMixedContent : public MixedContentTree {};


// ---- 19, 20, 21, 26-29: names and values ---------------------------------------

TEST_F(NodeMethods, Method19OfValueAbcWithLimit3LeavesThreeBytesAndNoTerminator) {
    void* text = childOf(child(6), 0);
    nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("abc")}, nullptr);
    char value[8];
    std::memset(value, '#', sizeof value);
    int32_t limit = 3;
    Answer answer = nodeCall(text, LUM_NODE_VALUE, {&limit}, value);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_EQ(std::string(value, 4), "abc#");
}

TEST_F(NodeMethods, Method19OfValueAbWithLimit3ArrivesWhole) {
    void* text = childOf(child(6), 0);
    nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("ab")}, nullptr);
    char value[8];
    std::memset(value, '#', sizeof value);
    int32_t limit = 3;
    Answer answer = nodeCall(text, LUM_NODE_VALUE, {&limit}, value);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(std::string(value, 4), std::string("ab\0#", 4));
}

TEST_F(NodeMethods, Method19OfANodeWithoutValueGivesTheEmptyString) {
    char value[8] = "x";
    int32_t limit = 0;
    EXPECT_EQ(nodeCall(root, LUM_NODE_VALUE, {&limit}, value).code, LUM_OK);
    EXPECT_STREQ(value, "");
}

// Limit 1: the first byte is written, then the counter reaches 0.
TEST_F(NodeMethodsOnMixedContent, NodeValueWithLimitOneLeavesOneByte) {
    void* text = childOf(root, 1);
    int32_t limit = 1;
    char out[8];
    std::memset(out, '#', sizeof out);
    Answer answer = nodeCall(text, LUM_NODE_VALUE, {&limit}, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_EQ(std::string(out, 3), "t##");
}

// The limit of method 19 is a byte counter read unsigned: -1 never stops it.
TEST_F(NodeMethodsOnMixedContent, NodeValueWithNegativeLimitArrivesWhole) {
    void* text = childOf(root, 1);
    int32_t limit = -1;
    char out[16];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(nodeCall(text, LUM_NODE_VALUE, {&limit}, out).code, LUM_OK);
    EXPECT_STREQ(out, "text");
}

TEST_F(NodeMethods, Method20SetsTextValues) {
    void* text = childOf(child(0), 0);
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("changed")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(valueOf(text), "changed");
    void* comment = child(4);
    EXPECT_EQ(nodeCall(comment, LUM_NODE_SET_VALUE, {const_cast<char*>("a ]]> b")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(valueOf(comment), "a ]]> b");
}

TEST_F(NodeMethods, Method20OnAnElementIsTheNoModificationError) {
    Answer answer = nodeCall(root, LUM_NODE_SET_VALUE, {const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "An attempt was made to modify an object where modifications are not allowed");
}

TEST_F(NodeMethods, Method20OnACdataSectionRefusesTheEndSequenceAndKeepsTheOldValue) {
    void* cdata = child(3);
    Answer answer = nodeCall(cdata, LUM_NODE_SET_VALUE, {const_cast<char*>("x]]>y")}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "old data");
    EXPECT_EQ(nodeCall(cdata, LUM_NODE_SET_VALUE, {const_cast<char*>("x]]y")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(valueOf(cdata), "x]]y");
}

TEST_F(NodeMethodsOnMixedContent, TextNodesTakeTheClosingSequence) {
    void* text = childOf(root, 1);
    const char* value = "a]]>b";
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>(value)}, nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "a]]>b");
}

TEST_F(NodeMethods, Method21WithLimit5OnAbcdeFailsAndWithLimit6Yields) {
    void* element = createNode(document.cell, "abcde", LUM_NODE_ELEMENT);
    char name[16] = "x";
    int32_t limit = 5;
    Answer answer = nodeCall(element, LUM_NODE_NAME, {&limit}, name);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(name, "");
    limit = 6;
    EXPECT_EQ(nodeCall(element, LUM_NODE_NAME, {&limit}, name).code, LUM_OK);
    EXPECT_STREQ(name, "abcde");
}

TEST_F(NodeMethods, Methods26To28ReadNamespaceParts) {
    void* item = child(6);
    char text[64];
    int32_t limit = 64;
    EXPECT_EQ(nodeCall(item, LUM_NODE_NAMESPACE_URI, {&limit}, text).code, LUM_OK);
    EXPECT_STREQ(text, "urn:ns");
    EXPECT_EQ(nodeCall(item, LUM_NODE_PREFIX, {&limit}, text).code, LUM_OK);
    EXPECT_STREQ(text, "ns");
    EXPECT_EQ(nodeCall(item, LUM_NODE_LOCAL_NAME, {&limit}, text).code, LUM_OK);
    EXPECT_STREQ(text, "item");
    std::strcpy(text, "x");
    EXPECT_EQ(nodeCall(root, LUM_NODE_PREFIX, {&limit}, text).code, LUM_OK);
    EXPECT_STREQ(text, "");
}

TEST_F(NodeMethods, Method29SetsThePrefix) {
    void* item = child(6);
    EXPECT_EQ(nodeCall(item, LUM_NODE_SET_PREFIX, {const_cast<char*>("other")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(nameOf(item), "other:item");
    Answer answer = nodeCall(root, LUM_NODE_SET_PREFIX, {const_cast<char*>("p")}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

// A prefix on a node made without namespace support is a namespace error:
// the catch-all text, code 6.
TEST_F(NodeMethodsOnMixedContent, SetPrefixWithoutNamespaceGivesTheCatchAllText) {
    const char* prefix = "p";
    Answer answer = nodeCall(root, LUM_NODE_SET_PREFIX, {const_cast<char*>(prefix)}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

TEST_F(NodeMethodsOnMixedContent, SetPrefixOnANamespacedElementRenamesIt) {
    const char* uri = "urn:u";
    const char* qname = "e";
    int32_t type = kElement;
    void* element = nullptr;
    ASSERT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                      {const_cast<char*>(uri), const_cast<char*>(qname), &type},
                      &element)
                  .code,
              LUM_OK);
    EXPECT_EQ(nodeCall(element, LUM_NODE_SET_PREFIX, {const_cast<char*>("q")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(nameOf(element), "q:e");
}

// ---- 36, 37, 38: whole and counted values --------------------------------------

TEST_F(NodeMethods, Method36HandsTheWholeValueAndMethod38ReleasesIt) {
    char* text = nullptr;
    int32_t length = -1;
    EXPECT_EQ(nodeCall(childOf(child(2), 0), LUM_NODE_WHOLE_VALUE, {&text, &length}, nullptr).code,
              LUM_OK);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "three");
    EXPECT_EQ(length, 5);
    EXPECT_EQ(nodeCall(root, LUM_NODE_RELEASE_VALUE, {&text}, nullptr).code, LUM_OK);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(nodeCall(root, LUM_NODE_RELEASE_VALUE, {&text}, nullptr).code, LUM_OK);
}

TEST_F(NodeMethods, Method36OfANullValueSetsBothCellsToZero) {
    char* text = reinterpret_cast<char*>(1);
    int32_t length = -1;
    EXPECT_EQ(nodeCall(root, LUM_NODE_WHOLE_VALUE, {&text, &length}, nullptr).code, LUM_OK);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0);
}

TEST_F(NodeMethodsOnMixedContent, WholeValueOfAnElementSetsBothCellsToZero) {
    char* text = reinterpret_cast<char*>(marker());
    int32_t length = 77;
    EXPECT_EQ(nodeCall(root, LUM_NODE_WHOLE_VALUE, {&text, &length}, nullptr).code, LUM_OK);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0);
    // Giving back a null string leaves the cell alone.
    EXPECT_EQ(nodeCall(root, LUM_NODE_RELEASE_VALUE, {&text}, nullptr).code, LUM_OK);
    EXPECT_EQ(text, nullptr);
}

TEST_F(NodeMethodsOnMixedContent, WholeValueCountsBytesNotUnits) {
    void* text = childOf(root, 1);
    const char* value = "\xC3\xA9t\xC3\xA9";  // two-byte letters in UTF-8
    ASSERT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>(value)}, nullptr).code, LUM_OK);
    char* whole = nullptr;
    int32_t length = 0;
    ASSERT_EQ(nodeCall(text, LUM_NODE_WHOLE_VALUE, {&whole, &length}, nullptr).code, LUM_OK);
    ASSERT_NE(whole, nullptr);
    EXPECT_EQ(length, 5);
    EXPECT_STREQ(whole, value);
    EXPECT_EQ(nodeCall(text, LUM_NODE_RELEASE_VALUE, {&whole}, nullptr).code, LUM_OK);
    EXPECT_EQ(whole, nullptr);
}

TEST_F(NodeMethods, Method37WithAbcAndCount2SetsAb) {
    void* text = childOf(child(0), 0);
    int32_t count = 2;
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>("abc"), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "ab");
}

TEST_F(NodeMethods, Method37WithANulInsideTheCountEndsThere) {
    void* text = childOf(child(0), 0);
    const char bytes[] = {'a', '\0', 'c'};
    int32_t count = 3;
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>(bytes), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "a");
}

TEST_F(NodeMethods, Method37WithoutNulUsesExactlyTheCount) {
    void* text = childOf(child(0), 0);
    const char bytes[] = {'x', 'y', 'z'};
    int32_t count = 3;
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>(bytes), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "xyz");
}

TEST_F(NodeMethods, Method37WithZeroOrNegativeCountSetsTheEmptyValue) {
    void* text = childOf(child(0), 0);
    int32_t count = 0;
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>("abc"), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "");
    nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("again")}, nullptr);
    count = -5;
    EXPECT_EQ(nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>("abc"), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(text), "");
}

TEST_F(NodeMethodsOnMixedContent, CountedValueWithZeroOrNegativeCountIsEmpty) {
    void* text = childOf(root, 1);
    const char* bytes = "abc";
    for (int32_t count : {0, -5}) {
        ASSERT_EQ(nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>("old")}, nullptr).code,
                  LUM_OK);
        Answer answer =
            nodeCall(text, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>(bytes), &count}, nullptr);
        EXPECT_EQ(answer.code, LUM_OK) << count;
        EXPECT_EQ(valueOf(text), "") << count;
    }
}

TEST_F(NodeMethods, Method37OnACdataSectionRefusesTheEndSequence) {
    void* cdata = child(3);
    int32_t count = 5;
    Answer answer =
        nodeCall(cdata, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>("a]]>b"), &count}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "old data");
}

TEST_F(NodeMethodsOnMixedContent, CountedValueOnCDataRefusesTheClosingSequence) {
    void* cdata = childOf(root, 3);
    ASSERT_EQ(typeOf(cdata), kCData);
    const char bytes[] = {'a', ']', ']', '>', 'z'};
    int32_t count = 4;
    Answer answer = nodeCall(cdata, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>(bytes), &count},
                             nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "cd");
    count = 3;
    EXPECT_EQ(nodeCall(cdata, LUM_NODE_SET_VALUE_COUNTED, {const_cast<char*>(bytes), &count},
                       nullptr).code, LUM_OK);
    EXPECT_EQ(valueOf(cdata), "a]]");
}

// ---- string limits at L-1, L and L+1 --------------------------------------------

// Each method reads a string of length 5 ("abcde", "urn:x", ...).
struct LimitCase {
    const char* name;
    int32_t method;
};

class StringLimits : public NodeMethods, public ::testing::WithParamInterface<LimitCase> {
protected:
    // The node and argument block that make `method` read a 5-unit string.
    Answer read(int32_t limit, char* out) {
        void* item = child(6);
        switch (GetParam().method) {
        case LUM_NODE_ATTRIBUTE_VALUE:
            return nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("bb5"), &limit},
                            out);
        case LUM_NODE_VALUE:
            return nodeCall(childOf(item, 0), LUM_NODE_VALUE, {&limit}, out);
        case LUM_NODE_NAME:
            return nodeCall(fiveNamed, LUM_NODE_NAME, {&limit}, out);
        case LUM_NODE_NAMESPACE_URI:
            return nodeCall(fiveNs, LUM_NODE_NAMESPACE_URI, {&limit}, out);
        case LUM_NODE_PREFIX:
            return nodeCall(fiveNs, LUM_NODE_PREFIX, {&limit}, out);
        case LUM_NODE_LOCAL_NAME:
            return nodeCall(fiveNs, LUM_NODE_LOCAL_NAME, {&limit}, out);
        default:
            return nodeCall(fiveNs, LUM_NODE_ATTRIBUTE_NS, {const_cast<char*>("urn:x"),
                                                            const_cast<char*>("at"), &limit},
                            out);
        }
    }
    void SetUp() override {
        NodeMethods::SetUp();
        nodeCall(root, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>("bb5"),
                                                const_cast<char*>("fives")}, nullptr);
        fiveNamed = createNode(document.cell, "abcde", LUM_NODE_ELEMENT);
        int32_t element = 1;
        docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                {const_cast<char*>("urn:x"), const_cast<char*>("ppppp:lllll"), &element},
                &fiveNs);
        int32_t attribute = 2;
        void* at = nullptr;
        docCall(document.cell, LUM_DOC_CREATE_NODE_NS, {const_cast<char*>("urn:x"),
                                                        const_cast<char*>("q:at"), &attribute},
                &at);
        nodeCall(at, LUM_NODE_SET_VALUE, {const_cast<char*>("vvvvv")}, nullptr);
        nodeCall(fiveNs, LUM_NODE_SET_ATTRIBUTE_NODE, {at}, nullptr);
    }
    void* fiveNamed = nullptr;
    void* fiveNs = nullptr;
};

TEST_P(StringLimits, LimitOneAboveTheLengthFits) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(6, out);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(std::strlen(out), 5u);
}

TEST_P(StringLimits, LimitEqualToTheLengthIsTooLong) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(5, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    if (GetParam().method == LUM_NODE_VALUE) {
        EXPECT_EQ(std::string(out, 6), "abcde#");  // the byte counter's partial copy
    } else {
        EXPECT_STREQ(out, "");
    }
}

TEST_P(StringLimits, LimitOneBelowTheLengthIsTooLong) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(4, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    if (GetParam().method == LUM_NODE_VALUE) {
        EXPECT_EQ(std::string(out, 5), "abcd#");
    }
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, StringLimits,
                         ::testing::Values(LimitCase{"AttributeValue", LUM_NODE_ATTRIBUTE_VALUE},
                                           LimitCase{"NodeValue", LUM_NODE_VALUE},
                                           LimitCase{"NodeName", LUM_NODE_NAME},
                                           LimitCase{"NamespaceURI", LUM_NODE_NAMESPACE_URI},
                                           LimitCase{"Prefix", LUM_NODE_PREFIX},
                                           LimitCase{"LocalName", LUM_NODE_LOCAL_NAME},
                                           LimitCase{"AttributeNS", LUM_NODE_ATTRIBUTE_NS}),
                         [](const ::testing::TestParamInfo<LimitCase>& info) {
                             return std::string(info.param.name);
                         });

// The limit of the string methods is read unsigned: -1 is never too small.
TEST_F(NodeMethodsOnMixedContent, NegativeLimitNeverCountsAsTooSmall) {
    int32_t limit = -1;
    char out[16] = "";
    EXPECT_EQ(nodeCall(root, LUM_NODE_NAME, {&limit}, out).code, LUM_OK);
    EXPECT_STREQ(out, "r");
    const char* name = "a";
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>(name), &limit},
                       out).code, LUM_OK);
    EXPECT_STREQ(out, "1");
}

}  // namespace
