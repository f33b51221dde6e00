// Node methods (lumNodeExecute) that read, set and remove attributes
// (12-16, 34, 35, 39), called as a host does.
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


// ---- 12: attribute names -------------------------------------------------------

TEST_F(NodeMethods, Method12NamesAttributesWithCommasUncounted) {
    char names[64] = "x";
    int32_t limit = 4;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names).code, LUM_OK);
    EXPECT_STREQ(names, "a,bb");
}

TEST_F(NodeMethods, Method12StopsWhenTheTotalReachesTheLimitKeepingWhatWasAppended) {
    char names[64] = "x";
    int32_t limit = 3;
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(names, "a,");
}

TEST_F(NodeMethods, Method12NegativeLimitIsRefused) {
    char names[64] = "x";
    int32_t limit = -1;
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length is negative");
    EXPECT_STREQ(names, "");
}

TEST_F(NodeMethods, Method12WithoutAttributeMapLeavesTheResult) {
    char names[64] = "untouched";
    int32_t limit = 10;
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names).code,
              LUM_OK);
    EXPECT_STREQ(names, "untouched");
    EXPECT_EQ(nodeCall(child(1), LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names).code, LUM_OK);
    EXPECT_STREQ(names, "");
}

TEST_F(NodeMethodsOnMixedContent, AttributeNamesOfANodeWithoutMapLeaveTheResult) {
    void* text = childOf(root, 1);
    int32_t limit = -1;
    char out[16] = "keep";
    Answer answer = nodeCall(text, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_STREQ(out, "keep");
}

TEST_F(NodeMethodsOnMixedContent, AttributeNamesOfAnElementWithoutAttributesIsEmpty) {
    void* x = childOf(root, 0);
    int32_t limit = 0;
    char out[16] = "keep";
    Answer answer = nodeCall(x, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_STREQ(out, "");
}

// ---- 13, 39: attribute values --------------------------------------------------

TEST_F(NodeMethods, Method13FindsTheValueByName) {
    char value[64] = "x";
    int32_t limit = 3;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("bb"), &limit},
                       value).code, LUM_OK);
    EXPECT_STREQ(value, "22");
}

TEST_F(NodeMethods, Method13NoMatchOrNoMapLeavesTheResult) {
    char value[64] = "untouched";
    int32_t limit = 10;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("zz"), &limit},
                       value).code, LUM_OK);
    EXPECT_STREQ(value, "untouched");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_ATTRIBUTE_VALUE,
                       {const_cast<char*>("a"), &limit}, value)
                  .code,
              LUM_OK);
    EXPECT_STREQ(value, "untouched");
}

TEST_F(NodeMethodsOnMixedContent, AttributeValueOfAMissingNameLeavesTheResult) {
    const char* name = "zz";
    int32_t limit = 16;
    char out[16] = "keep";
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>(name), &limit},
                             out);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_STREQ(out, "keep");
}

TEST_F(NodeMethods, Method13MatchesQualifiedNames) {
    void* item = child(6);
    char value[64] = "";
    int32_t limit = 64;
    EXPECT_EQ(nodeCall(item, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("ns:attr"), &limit},
                       value).code, LUM_OK);
    EXPECT_STREQ(value, "nsvalue");
}

TEST_F(NodeMethodsOnMixedContent, AttributeValueTooLongLeavesTheEmptyString) {
    const char* name = "bb";
    int32_t limit = 2;
    char out[16] = "keep";
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>(name), &limit},
                             out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    limit = 3;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>(name), &limit},
                       out).code, LUM_OK);
    EXPECT_STREQ(out, "22");
}

TEST_F(NodeMethods, Method39ReadsANamespacedAttribute) {
    char value[64] = "x";
    int32_t limit = 64;
    Answer answer = nodeCall(
        child(6), LUM_NODE_ATTRIBUTE_NS, {const_cast<char*>("urn:ns"), const_cast<char*>("attr"),
                                          &limit}, value);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_STREQ(value, "nsvalue");
}

TEST_F(NodeMethods, Method39EmptyValueReturnsAtOnceEvenWithLimitZero) {
    char value[64] = "x";
    int32_t limit = 0;
    Answer answer = nodeCall(
        child(6), LUM_NODE_ATTRIBUTE_NS, {const_cast<char*>("urn:ns"),
                                          const_cast<char*>("missing"), &limit}, value);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_ATTRIBUTE_NS,
                       {const_cast<char*>("urn:ns"), const_cast<char*>("a"), &limit}, value)
                  .code,
              LUM_ERR_NODE_TYPE);
}

TEST_F(NodeMethodsOnMixedContent, NamespacedAttributeEmptyValueReturnsBeforeTheLimit) {
    const char* local = "missing";
    int32_t limit = 0;
    char out[8] = "keep";
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_NS, {nullptr, const_cast<char*>(local),
                                                           &limit}, out);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_STREQ(out, "");
}

TEST_F(NodeMethodsOnMixedContent, NamespacedAttributeValueAtTheLimitIsTooLong) {
    const char* local = "bb";
    int32_t limit = 2;
    char out[8] = "keep";
    Answer answer = nodeCall(root, LUM_NODE_ATTRIBUTE_NS, {nullptr, const_cast<char*>(local),
                                                           &limit}, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    limit = 3;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NS, {nullptr, const_cast<char*>(local), &limit},
                       out).code, LUM_OK);
    EXPECT_STREQ(out, "22");
}

TEST_F(NodeMethodsOnMixedContent, ElementOnlyMethodsRefuseOtherTypesWithoutTouchingTheResult) {
    void* text = childOf(root, 1);
    const char* a = "a";
    const char* v = "v";
    int32_t limit = 16;
    char out[16] = "keep";
    auto expectRefused = [&](int32_t method, std::initializer_list<void*> args) {
        Answer answer = nodeCall(text, method, args, out);
        EXPECT_EQ(answer.code, LUM_ERR_NODE_TYPE) << method;
        EXPECT_EQ(answer.message, "Invalid node type") << method;
        EXPECT_STREQ(out, "keep") << method;
    };
    expectRefused(LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>(a), const_cast<char*>(v)});
    expectRefused(LUM_NODE_REMOVE_ATTRIBUTE, {const_cast<char*>(a)});
    expectRefused(LUM_NODE_REMOVE_ATTRIBUTE_NODE, {root});
    expectRefused(LUM_NODE_NORMALIZE, {});
    expectRefused(LUM_NODE_SET_ATTRIBUTE_NODE, {root});
    expectRefused(LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>(a)});
    expectRefused(LUM_NODE_ATTRIBUTE_NS, {nullptr, const_cast<char*>(a), &limit});
    EXPECT_EQ(valueOf(text), "text");
}

// ---- 14, 15, 16: set and remove ------------------------------------------------

TEST_F(NodeMethods, Method14SetsAnAttributeOnElementsOnly) {
    EXPECT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>("c"),
                                                      const_cast<char*>("new")}, nullptr).code,
              LUM_OK);
    char value[16];
    int32_t limit = 16;
    nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("c"), &limit}, value);
    EXPECT_STREQ(value, "new");
    Answer answer = nodeCall(childOf(child(0), 0), LUM_NODE_SET_ATTRIBUTE,
                             {const_cast<char*>("c"), const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_NODE_TYPE);
    EXPECT_EQ(answer.message, "Invalid node type");
}

TEST_F(NodeMethods, Method14WithAnInvalidNameIsADomError) {
    Answer answer =
        nodeCall(root, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>("1bad"), const_cast<char*>("v")},
                 nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(NodeMethods, Method15RemovesAnAttributeByName) {
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_ATTRIBUTE, {const_cast<char*>("a")}, nullptr).code,
              LUM_OK);
    char names[64];
    int32_t limit = 64;
    nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, names);
    EXPECT_STREQ(names, "bb");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_REMOVE_ATTRIBUTE, {const_cast<char*>("a")},
                       nullptr).code, LUM_ERR_NODE_TYPE);
}

TEST_F(NodeMethodsOnMixedContent, SetAndRemoveAttributeByName) {
    const char* name = "c";
    const char* value = "3";
    ASSERT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>(name),
                                                      const_cast<char*>(value)}, nullptr).code,
              LUM_OK);
    char out[32] = "";
    int32_t limit = sizeof out;
    nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out);
    EXPECT_STREQ(out, "a,bb,c");
    ASSERT_EQ(nodeCall(root, LUM_NODE_REMOVE_ATTRIBUTE, {const_cast<char*>("a")}, nullptr).code,
              LUM_OK);
    nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out);
    EXPECT_STREQ(out, "bb,c");
}

TEST_F(NodeMethods, Method16OfANonAttributeIsNotFound) {
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_ATTRIBUTE_NODE, {child(0)}, nullptr).code,
              LUM_ERR_DOM);
    EXPECT_EQ(nodeCall(child(0), LUM_NODE_REMOVE_ATTRIBUTE_NODE, {nullptr}, nullptr).code,
              LUM_ERR_DOM);
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_REMOVE_ATTRIBUTE_NODE, {nullptr},
                       nullptr).code, LUM_ERR_NODE_TYPE);
}

TEST_F(NodeMethodsOnMixedContent, RemovingAnAttributeOfAnotherElementIsNotFound) {
    void* x = childOf(root, 0);
    void* attr = nullptr;
    ASSERT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("a")}, &attr).code,
              LUM_OK);
    Answer answer = nodeCall(x, LUM_NODE_REMOVE_ATTRIBUTE_NODE, {attr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

// ---- 34, 35: attribute nodes ---------------------------------------------------

TEST_F(NodeMethods, Method35FindsTheAttributeNodeAndMethod16RemovesIt) {
    void* attribute = nullptr;
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("bb")}, &attribute).code,
              LUM_OK);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(typeOf(attribute), LUM_NODE_ATTRIBUTE);
    EXPECT_EQ(valueOf(attribute), "22");
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_ATTRIBUTE_NODE, {attribute}, nullptr).code, LUM_OK);
    // Not released: the host still holds a working node.
    EXPECT_EQ(nameOf(attribute), "bb");
    void* again = reinterpret_cast<void*>(1);
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("bb")}, &again).code,
              LUM_OK);
    EXPECT_EQ(again, reinterpret_cast<void*>(1));
    // Put back with method 34.
    EXPECT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE_NODE, {attribute}, nullptr).code, LUM_OK);
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("bb")}, &again).code,
              LUM_OK);
    EXPECT_EQ(again, attribute);
}

TEST_F(NodeMethods, Method35OnANonElementIsRefused) {
    void* attribute = reinterpret_cast<void*>(1);
    Answer answer = nodeCall(childOf(child(0), 0), LUM_NODE_ATTRIBUTE_NODE,
                             {const_cast<char*>("a")}, &attribute);
    EXPECT_EQ(answer.code, LUM_ERR_NODE_TYPE);
    EXPECT_EQ(attribute, reinterpret_cast<void*>(1));
}

TEST_F(NodeMethodsOnMixedContent, AttributeNodeByNameMissingLeavesTheResult) {
    const char* name = "nope";
    void* cell = marker();
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>(name)}, &cell).code,
              LUM_OK);
    EXPECT_EQ(cell, marker());
    const char* bb = "bb";
    EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>(bb)}, &cell).code, LUM_OK);
    ASSERT_NE(cell, marker());
    EXPECT_EQ(typeOf(cell), kAttribute);
    EXPECT_EQ(valueOf(cell), "22");
}

TEST_F(NodeMethods, Method34SetsAnAttributeNodeReplacingTheOld) {
    void* made = createNode(document.cell, "a", LUM_NODE_ATTRIBUTE);
    int32_t limit = 16;
    char value[16];
    nodeCall(made, LUM_NODE_SET_VALUE, {const_cast<char*>("replaced")}, nullptr);
    EXPECT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE_NODE, {made}, nullptr).code, LUM_OK);
    nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("a"), &limit}, value);
    EXPECT_STREQ(value, "replaced");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), LUM_NODE_SET_ATTRIBUTE_NODE, {made}, nullptr).code,
              LUM_ERR_NODE_TYPE);
}

TEST_F(NodeMethodsOnMixedContent, SetAttributeNodeReplacesTheSameName) {
    void* attr = createNode(document.cell, "a", kAttribute);
    ASSERT_EQ(nodeCall(attr, LUM_NODE_SET_VALUE, {const_cast<char*>("new")}, nullptr).code, LUM_OK);
    ASSERT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE_NODE, {attr}, nullptr).code, LUM_OK);
    char out[16] = "";
    int32_t limit = sizeof out;
    ASSERT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_VALUE, {const_cast<char*>("a"), &limit}, out).code,
              LUM_OK);
    EXPECT_STREQ(out, "new");
}

TEST_F(NodeMethods, Method34OfAnAttributeInUseIsADomError) {
    void* attribute = nullptr;
    nodeCall(child(2), LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("x")}, &attribute);
    Answer answer = nodeCall(root, LUM_NODE_SET_ATTRIBUTE_NODE, {attribute}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "Attribute already exists");
}

// setAttributeNode answers a node that is not an attribute as the DOM does:
// a wrong-document error (DOM code 4), with its misspelled text.
TEST_F(NodeMethodsOnMixedContent, SettingANonAttributeNodeIsAWrongDocumentError) {
    void* x = childOf(root, 0);
    for (void* notAttribute : {x, childOf(root, 1), static_cast<void*>(nullptr)}) {
        Answer answer = nodeCall(root, LUM_NODE_SET_ATTRIBUTE_NODE, {notAttribute}, nullptr);
        EXPECT_EQ(answer.code, LUM_ERR_DOM);
        EXPECT_EQ(answer.message,
                  "A node was used in a different document than the one the created it");
    }
    EXPECT_EQ(childCountOf(root), 4);
    EXPECT_EQ(attributeNamesOfRoot(), "a,bb");
}

}  // namespace
