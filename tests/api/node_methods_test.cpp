// Node methods (lumNodeExecute), called as a host does.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class NodeMethods : public ::testing::Test {
protected:
    void SetUp() override {
        LoadAnswer answer = document.loadMemory(
            "<root a=\"1\" bb=\"22\">"
            "<first>one</first><second/><third x=\"y\">three</third>"
            "<![CDATA[old data]]><!--note--><?pi data?>"
            "<ns:item xmlns:ns=\"urn:ns\" ns:attr=\"nsvalue\">abcde</ns:item>"
            "</root>");
        ASSERT_EQ(answer.code, 0) << answer.message;
        root = documentElementOf(document.cell);
    }

    void* child(int32_t index) { return childOf(root, index); }
    void* rootNode() { return documentNode(document.cell); }

    LibraryStarted started;
    HostDocument document;
    void* root = nullptr;
};

// ---- method numbers --------------------------------------------------------

class RefusedNodeMethod : public NodeMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(RefusedNodeMethod, InvalidMethodNumberWithCode3) {
    char result[16] = "untouched";
    Answer answer = nodeCall(root, GetParam(), {}, result);
    EXPECT_EQ(answer.code, 3);
    EXPECT_EQ(answer.message, "Invalid method number");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, RefusedNodeMethod,
                         ::testing::Values(-1, 0, 22, 31, 32, 33, 40, 1000, INT32_MIN));

class NotForNodeRefs : public NodeMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(NotForNodeRefs, MethodNotValidOnXNodeRefWithCodeMinus1) {
    char result[16] = "untouched";
    Answer answer = nodeCall(root, GetParam(), {}, result);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "Method not valid on X-NodeRef");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, NotForNodeRefs, ::testing::Values(1, 4, 24, 25, 30));

TEST_F(NodeMethods, RefusedNumbersNeverReadTheArgumentsOrTheNode) {
    ErrorSlot error;
    lumNodeExecute(nullptr, 40, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, 3);
    error.clear();
    lumNodeExecute(nullptr, 1, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, -1);
}

TEST_F(NodeMethods, NullNodeHandleIsAnUnexpectedException) {
    int32_t count = 0;
    ErrorSlot error;
    lumNodeExecute(nullptr, 5, nullptr, &count, error.buffer, &error.code);
    EXPECT_EQ(error.code, 13);
    EXPECT_EQ(error.text(), "Unexpected exception");
}

TEST_F(NodeMethods, SuccessLeavesTheErrorSlotUntouched) {
    ErrorSlot error;
    std::strcpy(error.buffer, "earlier");
    error.code = 77;
    int32_t count = 0;
    lumNodeExecute(root, 5, nullptr, &count, error.buffer, &error.code);
    EXPECT_EQ(error.code, 77);
    EXPECT_EQ(error.text(), "earlier");
}

TEST_F(NodeMethods, NodeDeleteDoesNothing) {
    lumNodeDelete();
    EXPECT_EQ(childCountOf(root), 7);
}

// ---- 2, 3, 10, 11: tree changes ----------------------------------------------

TEST_F(NodeMethods, Method2InsertsBeforeTheReferenceChild) {
    void* made = createNode(document.cell, "made", 1);
    void* second = child(1);
    Answer answer = nodeCall(root, 2, {made, second}, nullptr);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(nameOf(child(1)), "made");
    EXPECT_EQ(nameOf(child(2)), "second");
}

TEST_F(NodeMethods, Method2WithNullReferenceAppends) {
    void* made = createNode(document.cell, "last", 1);
    EXPECT_EQ(nodeCall(root, 2, {made, nullptr}, nullptr).code, 0);
    EXPECT_EQ(nameOf(child(childCountOf(root) - 1)), "last");
}

TEST_F(NodeMethods, Method2OfTheNodeIntoItselfIsAHierarchyError) {
    Answer answer = nodeCall(root, 2, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethods, Method11WithTheNodeItselfIsAHierarchyError) {
    Answer answer = nodeCall(root, 11, {root, child(0)}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    EXPECT_EQ(childCountOf(root), 7);
}

TEST_F(NodeMethods, Method2OfANodeFromAnotherDocumentIsAWrongDocumentError) {
    HostDocument other;
    other.loadMemory("<other/>");
    Answer answer = nodeCall(root, 2, {documentElementOf(other.cell), nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "A node was used in a different document than the one the created it");
}

TEST_F(NodeMethods, Method3RemovesAndReleasesAChild) {
    void* second = child(1);
    EXPECT_EQ(nodeCall(second, 3, {}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 6);
    EXPECT_EQ(nameOf(child(1)), "third");
}

TEST_F(NodeMethods, Method3OnANodeWithoutParentLeavesItAlive) {
    void* loose = createNode(document.cell, "loose", 1);
    EXPECT_EQ(nodeCall(loose, 3, {}, nullptr).code, 0);
    EXPECT_EQ(nameOf(loose), "loose");
    appendChild(root, loose);
    EXPECT_EQ(nameOf(child(7)), "loose");
}

TEST_F(NodeMethods, Method10RemovesWithoutReleasing) {
    void* first = child(0);
    EXPECT_EQ(nodeCall(root, 10, {first}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 6);
    // Still a node the host can use and put back.
    EXPECT_EQ(nameOf(first), "first");
    appendChild(root, first);
    EXPECT_EQ(nameOf(child(6)), "first");
}

TEST_F(NodeMethods, Method10OfANonChildIsNotFound) {
    void* loose = createNode(document.cell, "loose", 1);
    Answer answer = nodeCall(root, 10, {loose}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
    EXPECT_EQ(nodeCall(root, 10, {nullptr}, nullptr).code, 6);
}

TEST_F(NodeMethods, Method11ReplacesAChild) {
    void* made = createNode(document.cell, "replacement", 1);
    void* second = child(1);
    EXPECT_EQ(nodeCall(root, 11, {made, second}, nullptr).code, 0);
    EXPECT_EQ(nameOf(child(1)), "replacement");
    EXPECT_EQ(childCountOf(root), 7);
    EXPECT_EQ(nodeCall(root, 11, {made, nullptr}, nullptr).code, 6);
}

// ---- 5, 6, 7, 8, 9: structure ------------------------------------------------

TEST_F(NodeMethods, Method5CountsChildren) {
    EXPECT_EQ(childCountOf(root), 7);
    EXPECT_EQ(childCountOf(child(1)), 0);
    EXPECT_EQ(childCountOf(rootNode()), 1);
}

TEST_F(NodeMethods, Method6GivesThePositionAmongSiblings) {
    int32_t position = 99;
    EXPECT_EQ(nodeCall(child(2), 6, {}, &position).code, 0);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(nodeCall(child(0), 6, {}, &position).code, 0);
    EXPECT_EQ(position, 0);
}

TEST_F(NodeMethods, Method6WithoutParentLeavesTheResult) {
    int32_t position = 99;
    EXPECT_EQ(nodeCall(rootNode(), 6, {}, &position).code, 0);
    EXPECT_EQ(position, 99);
    void* loose = createNode(document.cell, "loose", 1);
    EXPECT_EQ(nodeCall(loose, 6, {}, &position).code, 0);
    EXPECT_EQ(position, 99);
}

TEST_F(NodeMethods, Method7GivesTheParent) {
    void* parent = reinterpret_cast<void*>(1);
    EXPECT_EQ(nodeCall(child(0), 7, {}, &parent).code, 0);
    EXPECT_EQ(parent, root);
    EXPECT_EQ(nodeCall(rootNode(), 7, {}, &parent).code, 0);
    EXPECT_EQ(parent, nullptr);
}

TEST_F(NodeMethods, Method7OnARestrictedRecordIsRefused) {
    hostRecord(document.cell)->restrictParent = 1;
    void* parent = reinterpret_cast<void*>(1);
    Answer answer = nodeCall(rootNode(), 7, {}, &parent);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "Restricted node");
    EXPECT_EQ(parent, reinterpret_cast<void*>(1));
    // Nodes without a record of their own are not restricted.
    EXPECT_EQ(nodeCall(child(0), 7, {}, &parent).code, 0);
}

TEST_F(NodeMethods, Method8IndexZeroOfASingleChildYieldsItAndIndexOneFails) {
    void* first = child(0);
    void* text = childOf(first, 0);
    EXPECT_EQ(typeOf(text), 3);
    void* result = reinterpret_cast<void*>(1);
    int32_t index = 1;
    Answer answer = nodeCall(first, 8, {&index}, &result);
    EXPECT_EQ(answer.code, 5);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(result, nullptr);
}

TEST_F(NodeMethods, Method8NegativeIndexIsInvalid) {
    void* result = reinterpret_cast<void*>(1);
    int32_t index = -1;
    EXPECT_EQ(nodeCall(root, 8, {&index}, &result).code, 5);
    EXPECT_EQ(result, nullptr);
}

TEST_F(NodeMethods, Method8AnswersWhatTheChildListHolds) {
    auto* parent = static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(root);
    for (int32_t i = 6; i >= 0; --i) EXPECT_EQ(child(i), parent->getChildNodes()->item(i));
}

TEST_F(NodeMethods, Method9ClonesShallowAndDeep) {
    void* third = child(2);
    void* shallow = nullptr;
    void* deep = nullptr;
    int32_t no = 0, yes = 1;
    EXPECT_EQ(nodeCall(third, 9, {&no}, &shallow).code, 0);
    EXPECT_EQ(nodeCall(third, 9, {&yes}, &deep).code, 0);
    EXPECT_EQ(nameOf(shallow), "third");
    EXPECT_EQ(childCountOf(shallow), 0);
    EXPECT_EQ(childCountOf(deep), 1);
    EXPECT_EQ(valueOf(childOf(deep, 0)), "three");
    void* parent = reinterpret_cast<void*>(1);
    nodeCall(deep, 7, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

// ---- 12, 13, 14, 15, 16, 34, 35, 39: attributes -------------------------------

TEST_F(NodeMethods, Method12NamesAttributesWithCommasUncounted) {
    char names[64] = "x";
    int32_t limit = 4;
    EXPECT_EQ(nodeCall(root, 12, {&limit}, names).code, 0);
    EXPECT_STREQ(names, "a,bb");
}

TEST_F(NodeMethods, Method12StopsWhenTheTotalReachesTheLimitKeepingWhatWasAppended) {
    char names[64] = "x";
    int32_t limit = 3;
    Answer answer = nodeCall(root, 12, {&limit}, names);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(names, "a,");
}

TEST_F(NodeMethods, Method12NegativeLimitIsRefused) {
    char names[64] = "x";
    int32_t limit = -1;
    Answer answer = nodeCall(root, 12, {&limit}, names);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length is negative");
    EXPECT_STREQ(names, "");
}

TEST_F(NodeMethods, Method12WithoutAttributeMapLeavesTheResult) {
    char names[64] = "untouched";
    int32_t limit = 10;
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 12, {&limit}, names).code, 0);
    EXPECT_STREQ(names, "untouched");
    EXPECT_EQ(nodeCall(child(1), 12, {&limit}, names).code, 0);
    EXPECT_STREQ(names, "");
}

TEST_F(NodeMethods, Method13FindsTheValueByName) {
    char value[64] = "x";
    int32_t limit = 3;
    EXPECT_EQ(nodeCall(root, 13, {const_cast<char*>("bb"), &limit}, value).code, 0);
    EXPECT_STREQ(value, "22");
}

TEST_F(NodeMethods, Method13NoMatchOrNoMapLeavesTheResult) {
    char value[64] = "untouched";
    int32_t limit = 10;
    EXPECT_EQ(nodeCall(root, 13, {const_cast<char*>("zz"), &limit}, value).code, 0);
    EXPECT_STREQ(value, "untouched");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 13, {const_cast<char*>("a"), &limit}, value).code,
              0);
    EXPECT_STREQ(value, "untouched");
}

TEST_F(NodeMethods, Method13MatchesQualifiedNames) {
    void* item = child(6);
    char value[64] = "";
    int32_t limit = 64;
    EXPECT_EQ(nodeCall(item, 13, {const_cast<char*>("ns:attr"), &limit}, value).code, 0);
    EXPECT_STREQ(value, "nsvalue");
}

TEST_F(NodeMethods, Method14SetsAnAttributeOnElementsOnly) {
    EXPECT_EQ(nodeCall(root, 14, {const_cast<char*>("c"), const_cast<char*>("new")}, nullptr).code,
              0);
    char value[16];
    int32_t limit = 16;
    nodeCall(root, 13, {const_cast<char*>("c"), &limit}, value);
    EXPECT_STREQ(value, "new");
    Answer answer = nodeCall(childOf(child(0), 0), 14,
                             {const_cast<char*>("c"), const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, 7);
    EXPECT_EQ(answer.message, "Invalid node type");
}

TEST_F(NodeMethods, Method14WithAnInvalidNameIsADomError) {
    Answer answer =
        nodeCall(root, 14, {const_cast<char*>("1bad"), const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(NodeMethods, Method15RemovesAnAttributeByName) {
    EXPECT_EQ(nodeCall(root, 15, {const_cast<char*>("a")}, nullptr).code, 0);
    char names[64];
    int32_t limit = 64;
    nodeCall(root, 12, {&limit}, names);
    EXPECT_STREQ(names, "bb");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 15, {const_cast<char*>("a")}, nullptr).code, 7);
}

TEST_F(NodeMethods, Method35FindsTheAttributeNodeAndMethod16RemovesIt) {
    void* attribute = nullptr;
    EXPECT_EQ(nodeCall(root, 35, {const_cast<char*>("bb")}, &attribute).code, 0);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(typeOf(attribute), 2);
    EXPECT_EQ(valueOf(attribute), "22");
    EXPECT_EQ(nodeCall(root, 16, {attribute}, nullptr).code, 0);
    // Not released: the host still holds a working node.
    EXPECT_EQ(nameOf(attribute), "bb");
    void* again = reinterpret_cast<void*>(1);
    EXPECT_EQ(nodeCall(root, 35, {const_cast<char*>("bb")}, &again).code, 0);
    EXPECT_EQ(again, reinterpret_cast<void*>(1));
    // Put back with method 34.
    EXPECT_EQ(nodeCall(root, 34, {attribute}, nullptr).code, 0);
    EXPECT_EQ(nodeCall(root, 35, {const_cast<char*>("bb")}, &again).code, 0);
    EXPECT_EQ(again, attribute);
}

TEST_F(NodeMethods, Method16OfANonAttributeIsNotFound) {
    EXPECT_EQ(nodeCall(root, 16, {child(0)}, nullptr).code, 6);
    EXPECT_EQ(nodeCall(child(0), 16, {nullptr}, nullptr).code, 6);
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 16, {nullptr}, nullptr).code, 7);
}

TEST_F(NodeMethods, Method34SetsAnAttributeNodeReplacingTheOld) {
    void* made = createNode(document.cell, "a", 2);
    int32_t limit = 16;
    char value[16];
    nodeCall(made, 20, {const_cast<char*>("replaced")}, nullptr);
    EXPECT_EQ(nodeCall(root, 34, {made}, nullptr).code, 0);
    nodeCall(root, 13, {const_cast<char*>("a"), &limit}, value);
    EXPECT_STREQ(value, "replaced");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 34, {made}, nullptr).code, 7);
}

TEST_F(NodeMethods, Method34OfAnAttributeInUseIsADomError) {
    void* attribute = nullptr;
    nodeCall(child(2), 35, {const_cast<char*>("x")}, &attribute);
    Answer answer = nodeCall(root, 34, {attribute}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "Attribute already exists");
}

TEST_F(NodeMethods, Method35OnANonElementIsRefused) {
    void* attribute = reinterpret_cast<void*>(1);
    Answer answer = nodeCall(childOf(child(0), 0), 35, {const_cast<char*>("a")}, &attribute);
    EXPECT_EQ(answer.code, 7);
    EXPECT_EQ(attribute, reinterpret_cast<void*>(1));
}

TEST_F(NodeMethods, Method39ReadsANamespacedAttribute) {
    char value[64] = "x";
    int32_t limit = 64;
    Answer answer = nodeCall(
        child(6), 39, {const_cast<char*>("urn:ns"), const_cast<char*>("attr"), &limit}, value);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_STREQ(value, "nsvalue");
}

TEST_F(NodeMethods, Method39EmptyValueReturnsAtOnceEvenWithLimitZero) {
    char value[64] = "x";
    int32_t limit = 0;
    Answer answer = nodeCall(
        child(6), 39, {const_cast<char*>("urn:ns"), const_cast<char*>("missing"), &limit}, value);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(nodeCall(childOf(child(0), 0), 39,
                       {const_cast<char*>("urn:ns"), const_cast<char*>("a"), &limit}, value)
                  .code,
              7);
}

// ---- 17, 18: owner and type --------------------------------------------------

TEST_F(NodeMethods, Method17GivesTheOwnerDocumentsHostHandle) {
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(child(2), 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 4242);
    handle = 0;
    EXPECT_EQ(nodeCall(rootNode(), 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 4242);
}

TEST_F(NodeMethods, Method17OnARestrictedRecordIsRefusedThoughTheDocumentExists) {
    hostRecord(document.cell)->restrictOwner = 1;
    int64_t handle = 5;
    Answer answer = nodeCall(rootNode(), 17, {}, &handle);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "Restricted node");
    EXPECT_EQ(handle, 5);
}

TEST_F(NodeMethods, Method18GivesTheDomTypeCode) {
    EXPECT_EQ(typeOf(root), 1);
    EXPECT_EQ(typeOf(childOf(child(0), 0)), 3);
    EXPECT_EQ(typeOf(child(3)), 4);
    EXPECT_EQ(typeOf(child(4)), 8);
    EXPECT_EQ(typeOf(child(5)), 7);
    EXPECT_EQ(typeOf(rootNode()), 9);
}

// ---- 19, 20, 21, 26-29: names and values --------------------------------------

TEST_F(NodeMethods, Method19OfValueAbcWithLimit3LeavesThreeBytesAndNoTerminator) {
    void* text = childOf(child(6), 0);
    nodeCall(text, 20, {const_cast<char*>("abc")}, nullptr);
    char value[8];
    std::memset(value, '#', sizeof value);
    int32_t limit = 3;
    Answer answer = nodeCall(text, 19, {&limit}, value);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_EQ(std::string(value, 4), "abc#");
}

TEST_F(NodeMethods, Method19OfValueAbWithLimit3ArrivesWhole) {
    void* text = childOf(child(6), 0);
    nodeCall(text, 20, {const_cast<char*>("ab")}, nullptr);
    char value[8];
    std::memset(value, '#', sizeof value);
    int32_t limit = 3;
    Answer answer = nodeCall(text, 19, {&limit}, value);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(std::string(value, 4), std::string("ab\0#", 4));
}

TEST_F(NodeMethods, Method19OfANodeWithoutValueGivesTheEmptyString) {
    char value[8] = "x";
    int32_t limit = 0;
    EXPECT_EQ(nodeCall(root, 19, {&limit}, value).code, 0);
    EXPECT_STREQ(value, "");
}

TEST_F(NodeMethods, Method20SetsTextValues) {
    void* text = childOf(child(0), 0);
    EXPECT_EQ(nodeCall(text, 20, {const_cast<char*>("changed")}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "changed");
    void* comment = child(4);
    EXPECT_EQ(nodeCall(comment, 20, {const_cast<char*>("a ]]> b")}, nullptr).code, 0);
    EXPECT_EQ(valueOf(comment), "a ]]> b");
}

TEST_F(NodeMethods, Method20OnAnElementIsTheNoModificationError) {
    Answer answer = nodeCall(root, 20, {const_cast<char*>("v")}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to modify an object where modifications are not allowed");
}

TEST_F(NodeMethods, Method20OnACdataSectionRefusesTheEndSequenceAndKeepsTheOldValue) {
    void* cdata = child(3);
    Answer answer = nodeCall(cdata, 20, {const_cast<char*>("x]]>y")}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "old data");
    EXPECT_EQ(nodeCall(cdata, 20, {const_cast<char*>("x]]y")}, nullptr).code, 0);
    EXPECT_EQ(valueOf(cdata), "x]]y");
}

TEST_F(NodeMethods, Method21WithLimit5OnAbcdeFailsAndWithLimit6Yields) {
    void* element = createNode(document.cell, "abcde", 1);
    char name[16] = "x";
    int32_t limit = 5;
    Answer answer = nodeCall(element, 21, {&limit}, name);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(name, "");
    limit = 6;
    EXPECT_EQ(nodeCall(element, 21, {&limit}, name).code, 0);
    EXPECT_STREQ(name, "abcde");
}

TEST_F(NodeMethods, Methods26To28ReadNamespaceParts) {
    void* item = child(6);
    char text[64];
    int32_t limit = 64;
    EXPECT_EQ(nodeCall(item, 26, {&limit}, text).code, 0);
    EXPECT_STREQ(text, "urn:ns");
    EXPECT_EQ(nodeCall(item, 27, {&limit}, text).code, 0);
    EXPECT_STREQ(text, "ns");
    EXPECT_EQ(nodeCall(item, 28, {&limit}, text).code, 0);
    EXPECT_STREQ(text, "item");
    std::strcpy(text, "x");
    EXPECT_EQ(nodeCall(root, 27, {&limit}, text).code, 0);
    EXPECT_STREQ(text, "");
}

TEST_F(NodeMethods, Method29SetsThePrefix) {
    void* item = child(6);
    EXPECT_EQ(nodeCall(item, 29, {const_cast<char*>("other")}, nullptr).code, 0);
    EXPECT_EQ(nameOf(item), "other:item");
    Answer answer = nodeCall(root, 29, {const_cast<char*>("p")}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

// ---- 23: normalize -------------------------------------------------------------

TEST_F(NodeMethods, Method23NormalizesAdjacentTextOnElementsOnly) {
    void* second = child(1);
    appendChild(second, createNode(document.cell, "", 3));
    void* a = childOf(second, 0);
    nodeCall(a, 20, {const_cast<char*>("left")}, nullptr);
    void* b = createNode(document.cell, "", 3);
    nodeCall(b, 20, {const_cast<char*>("right")}, nullptr);
    appendChild(second, b);
    EXPECT_EQ(childCountOf(second), 2);
    EXPECT_EQ(nodeCall(second, 23, {}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(second), 1);
    EXPECT_EQ(valueOf(childOf(second, 0)), "leftright");
    EXPECT_EQ(nodeCall(childOf(second, 0), 23, {}, nullptr).code, 7);
}

// ---- 36, 37, 38: whole and counted values -----------------------------------

TEST_F(NodeMethods, Method36HandsTheWholeValueAndMethod38ReleasesIt) {
    char* text = nullptr;
    int32_t length = -1;
    EXPECT_EQ(nodeCall(childOf(child(2), 0), 36, {&text, &length}, nullptr).code, 0);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "three");
    EXPECT_EQ(length, 5);
    EXPECT_EQ(nodeCall(root, 38, {&text}, nullptr).code, 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(nodeCall(root, 38, {&text}, nullptr).code, 0);
}

TEST_F(NodeMethods, Method36OfANullValueSetsBothCellsToZero) {
    char* text = reinterpret_cast<char*>(1);
    int32_t length = -1;
    EXPECT_EQ(nodeCall(root, 36, {&text, &length}, nullptr).code, 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0);
}

TEST_F(NodeMethods, Method37WithAbcAndCount2SetsAb) {
    void* text = childOf(child(0), 0);
    int32_t count = 2;
    EXPECT_EQ(nodeCall(text, 37, {const_cast<char*>("abc"), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "ab");
}

TEST_F(NodeMethods, Method37WithANulInsideTheCountEndsThere) {
    void* text = childOf(child(0), 0);
    const char bytes[] = {'a', '\0', 'c'};
    int32_t count = 3;
    EXPECT_EQ(nodeCall(text, 37, {const_cast<char*>(bytes), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "a");
}

TEST_F(NodeMethods, Method37WithoutNulUsesExactlyTheCount) {
    void* text = childOf(child(0), 0);
    const char bytes[] = {'x', 'y', 'z'};
    int32_t count = 3;
    EXPECT_EQ(nodeCall(text, 37, {const_cast<char*>(bytes), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "xyz");
}

TEST_F(NodeMethods, Method37WithZeroOrNegativeCountSetsTheEmptyValue) {
    void* text = childOf(child(0), 0);
    int32_t count = 0;
    EXPECT_EQ(nodeCall(text, 37, {const_cast<char*>("abc"), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "");
    nodeCall(text, 20, {const_cast<char*>("again")}, nullptr);
    count = -5;
    EXPECT_EQ(nodeCall(text, 37, {const_cast<char*>("abc"), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "");
}

TEST_F(NodeMethods, Method37OnACdataSectionRefusesTheEndSequence) {
    void* cdata = child(3);
    int32_t count = 5;
    Answer answer = nodeCall(cdata, 37, {const_cast<char*>("a]]>b"), &count}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "old data");
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
        case 13: return nodeCall(root, 13, {const_cast<char*>("bb5"), &limit}, out);
        case 19: return nodeCall(childOf(item, 0), 19, {&limit}, out);
        case 21: return nodeCall(fiveNamed, 21, {&limit}, out);
        case 26: return nodeCall(fiveNs, 26, {&limit}, out);
        case 27: return nodeCall(fiveNs, 27, {&limit}, out);
        case 28: return nodeCall(fiveNs, 28, {&limit}, out);
        default:
            return nodeCall(fiveNs, 39, {const_cast<char*>("urn:x"), const_cast<char*>("at"), &limit},
                            out);
        }
    }
    void SetUp() override {
        NodeMethods::SetUp();
        nodeCall(root, 14, {const_cast<char*>("bb5"), const_cast<char*>("fives")}, nullptr);
        fiveNamed = createNode(document.cell, "abcde", 1);
        int32_t element = 1;
        docCall(document.cell, 30,
                {const_cast<char*>("urn:x"), const_cast<char*>("ppppp:lllll"), &element},
                &fiveNs);
        int32_t attribute = 2;
        void* at = nullptr;
        docCall(document.cell, 30, {const_cast<char*>("urn:x"), const_cast<char*>("q:at"), &attribute},
                &at);
        nodeCall(at, 20, {const_cast<char*>("vvvvv")}, nullptr);
        nodeCall(fiveNs, 34, {at}, nullptr);
    }
    void* fiveNamed = nullptr;
    void* fiveNs = nullptr;
};

TEST_P(StringLimits, LimitOneAboveTheLengthFits) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(6, out);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(std::strlen(out), 5u);
}

TEST_P(StringLimits, LimitEqualToTheLengthIsTooLong) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(5, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    if (GetParam().method == 19) {
        EXPECT_EQ(std::string(out, 6), "abcde#");  // the byte counter's partial copy
    } else {
        EXPECT_STREQ(out, "");
    }
}

TEST_P(StringLimits, LimitOneBelowTheLengthIsTooLong) {
    char out[16];
    std::memset(out, '#', sizeof out);
    Answer answer = read(4, out);
    EXPECT_EQ(answer.code, 12);
    if (GetParam().method == 19) {
        EXPECT_EQ(std::string(out, 5), "abcd#");
    }
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, StringLimits,
                         ::testing::Values(LimitCase{"AttributeValue", 13},
                                           LimitCase{"NodeValue", 19}, LimitCase{"NodeName", 21},
                                           LimitCase{"NamespaceURI", 26},
                                           LimitCase{"Prefix", 27}, LimitCase{"LocalName", 28},
                                           LimitCase{"AttributeNS", 39}),
                         [](const ::testing::TestParamInfo<LimitCase>& info) {
                             return std::string(info.param.name);
                         });

TEST_F(NodeMethods, NegativeLimitReadsAsAVeryLargeOne) {
    char name[16];
    int32_t limit = -1;
    EXPECT_EQ(nodeCall(root, 21, {&limit}, name).code, 0);
    EXPECT_STREQ(name, "root");
}

}  // namespace
