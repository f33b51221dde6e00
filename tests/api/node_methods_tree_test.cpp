// Node methods (lumNodeExecute) that answer by number or change and walk
// the tree, called as a host does.
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


// ---- method numbers ------------------------------------------------------------

class RefusedNodeMethod : public NodeMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(RefusedNodeMethod, InvalidMethodNumberWithCode3) {
    char result[16] = "untouched";
    Answer answer = nodeCall(root, GetParam(), {}, result);
    EXPECT_EQ(answer.code, LUM_ERR_NODE_METHOD_NUMBER);
    EXPECT_EQ(answer.message, "Invalid method number");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, RefusedNodeMethod,
                         ::testing::Values(-1, 0, 22, 31, 32, 33, 40, 1000, INT32_MIN));

class NotForNodeRefs : public NodeMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(NotForNodeRefs, MethodNotValidOnXNodeRefWithCodeMinus1) {
    char result[16] = "untouched";
    Answer answer = nodeCall(root, GetParam(), {}, result);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Method not valid on X-NodeRef");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(NodeMethods, NotForNodeRefs, ::testing::Values(LUM_DOC_CREATE_NODE,
                                                                        LUM_DOC_DOCUMENT_ELEMENT,
                                                                        24, 25,
                                                                        LUM_DOC_CREATE_NODE_NS));

TEST_F(NodeMethodsOnMixedContent, NodeMethodNumbersFarOutOfRangeAreInvalid) {
    for (int32_t method : {-1, -100, 41, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = nodeCall(root, method, {}, nullptr);
        EXPECT_EQ(answer.code, LUM_ERR_NODE_METHOD_NUMBER) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(NodeMethodsOnMixedContent, RefusalsByNumberLeaveTheResultAlone) {
    void* cell = marker();
    nodeCall(root, LUM_DOC_CREATE_NODE, {}, &cell);
    nodeCall(root, 22, {}, &cell);
    docCall(document.cell, LUM_NODE_REMOVE, {}, &cell);
    EXPECT_EQ(cell, marker());
}

TEST_F(NodeMethods, RefusedNumbersNeverReadTheArgumentsOrTheNode) {
    ErrorSlot error;
    lumNodeExecute(nullptr, 40, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NODE_METHOD_NUMBER);
    error.clear();
    lumNodeExecute(nullptr, LUM_DOC_CREATE_NODE, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_SUPPORTED);
}

TEST_F(NodeMethods, NullNodeHandleIsAnUnexpectedException) {
    int32_t count = 0;
    ErrorSlot error;
    lumNodeExecute(nullptr, LUM_NODE_CHILD_COUNT, nullptr, &count, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_UNEXPECTED);
    EXPECT_EQ(error.text(), "Unexpected exception");
}

TEST_F(NodeMethods, SuccessLeavesTheErrorSlotUntouched) {
    ErrorSlot error;
    std::strcpy(error.buffer, "earlier");
    error.code = 77;
    int32_t count = 0;
    lumNodeExecute(root, LUM_NODE_CHILD_COUNT, nullptr, &count, error.buffer, &error.code);
    EXPECT_EQ(error.code, 77);
    EXPECT_EQ(error.text(), "earlier");
}

TEST_F(NodeMethodsOnMixedContent, SuccessfulNodeMethodLeavesBufferAndCode) {
    int32_t limit = 8;
    char out[8] = "";
    void* args[] = {&limit};
    ErrorSlot slot;
    std::strcpy(slot.buffer, "host text");
    slot.code = -42;
    lumNodeExecute(root, LUM_NODE_NAME, args, out, slot.buffer, &slot.code);
    EXPECT_STREQ(out, "r");
    EXPECT_EQ(slot.code, -42);
    EXPECT_EQ(slot.text(), "host text");
}

TEST_F(NodeMethods, NodeDeleteDoesNothing) {
    lumNodeDelete();
    EXPECT_EQ(childCountOf(root), 7);
}

// ---- 2, 3, 10, 11: tree changes ------------------------------------------------

TEST_F(NodeMethods, Method2InsertsBeforeTheReferenceChild) {
    void* made = createNode(document.cell, "made", LUM_NODE_ELEMENT);
    void* second = child(1);
    Answer answer = nodeCall(root, LUM_NODE_INSERT_BEFORE, {made, second}, nullptr);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(nameOf(child(1)), "made");
    EXPECT_EQ(nameOf(child(2)), "second");
}

TEST_F(NodeMethodsOnMixedContent, InsertBeforeWithNullReferenceAppends) {
    void* made = createNode(document.cell, "z", kElement);
    EXPECT_EQ(nodeCall(root, LUM_NODE_INSERT_BEFORE, {made, nullptr}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(root), 5);
    EXPECT_EQ(childOf(root, 4), made);
    int32_t position = 99;
    EXPECT_EQ(nodeCall(made, LUM_NODE_INDEX_IN_PARENT, {}, &position).code, LUM_OK);
    EXPECT_EQ(position, 4);
}

TEST_F(NodeMethods, Method2OfTheNodeIntoItselfIsAHierarchyError) {
    Answer answer = nodeCall(root, LUM_NODE_INSERT_BEFORE, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethodsOnMixedContent, InsertingAnAncestorIsAHierarchyError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, LUM_NODE_INSERT_BEFORE, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethods, InsertingIntoATextNodeIsAHierarchyError) {
    HostDocument document;
    document.loadMemory("<a>text<b/></a>");
    void* root = documentElementOf(document.cell);
    Answer answer = nodeCall(childOf(root, 0), LUM_NODE_INSERT_BEFORE, {childOf(root, 1), nullptr},
                             nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethods, Method11WithTheNodeItselfIsAHierarchyError) {
    Answer answer = nodeCall(root, LUM_NODE_REPLACE_CHILD, {root, child(0)}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    EXPECT_EQ(childCountOf(root), 7);
}

TEST_F(NodeMethods, Method2OfANodeFromAnotherDocumentIsAWrongDocumentError) {
    HostDocument other;
    other.loadMemory("<other/>");
    Answer answer = nodeCall(root, LUM_NODE_INSERT_BEFORE, {documentElementOf(other.cell),
                                                            nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "A node was used in a different document than the one the created it");
}

TEST_F(NodeMethodsOnMixedContent, InsertingANodeOfAnotherDocumentKeepsTheMisspelledText) {
    HostDocument other;
    void* foreign = createNode(other.cell, "f", kElement);
    Answer answer = nodeCall(root, LUM_NODE_INSERT_BEFORE, {foreign, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "A node was used in a different document than the one the created it");
}

TEST_F(NodeMethods, Method3RemovesAndReleasesAChild) {
    void* second = child(1);
    EXPECT_EQ(nodeCall(second, LUM_NODE_REMOVE, {}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(root), 6);
    EXPECT_EQ(nameOf(child(1)), "third");
}

TEST_F(NodeMethods, Method3OnANodeWithoutParentLeavesItAlive) {
    void* loose = createNode(document.cell, "loose", LUM_NODE_ELEMENT);
    EXPECT_EQ(nodeCall(loose, LUM_NODE_REMOVE, {}, nullptr).code, LUM_OK);
    EXPECT_EQ(nameOf(loose), "loose");
    appendChild(root, loose);
    EXPECT_EQ(nameOf(child(7)), "loose");
}

TEST_F(NodeMethods, Method10RemovesWithoutReleasing) {
    void* first = child(0);
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_CHILD, {first}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(root), 6);
    // Still a node the host can use and put back.
    EXPECT_EQ(nameOf(first), "first");
    appendChild(root, first);
    EXPECT_EQ(nameOf(child(6)), "first");
}

TEST_F(NodeMethodsOnMixedContent, RemovedChildStaysAliveAndCanComeBack) {
    void* x = childOf(root, 0);
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_CHILD, {x}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(root), 3);
    EXPECT_EQ(nameOf(x), "x");
    EXPECT_EQ(nodeCall(root, LUM_NODE_INSERT_BEFORE, {x, nullptr}, nullptr).code, LUM_OK);
    EXPECT_EQ(childOf(root, 3), x);
}

TEST_F(NodeMethods, Method10OfANonChildIsNotFound) {
    void* loose = createNode(document.cell, "loose", LUM_NODE_ELEMENT);
    Answer answer = nodeCall(root, LUM_NODE_REMOVE_CHILD, {loose}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
    EXPECT_EQ(nodeCall(root, LUM_NODE_REMOVE_CHILD, {nullptr}, nullptr).code, LUM_ERR_DOM);
}

TEST_F(NodeMethodsOnMixedContent, RemovingANonChildIsANotFoundError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, LUM_NODE_REMOVE_CHILD, {root}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

TEST_F(NodeMethods, Method11ReplacesAChild) {
    void* made = createNode(document.cell, "replacement", LUM_NODE_ELEMENT);
    void* second = child(1);
    EXPECT_EQ(nodeCall(root, LUM_NODE_REPLACE_CHILD, {made, second}, nullptr).code, LUM_OK);
    EXPECT_EQ(nameOf(child(1)), "replacement");
    EXPECT_EQ(childCountOf(root), 7);
    EXPECT_EQ(nodeCall(root, LUM_NODE_REPLACE_CHILD, {made, nullptr}, nullptr).code, LUM_ERR_DOM);
}

TEST_F(NodeMethodsOnMixedContent, ReplaceChildPutsTheNewNodeInPlace) {
    void* y = childOf(root, 2);
    void* made = createNode(document.cell, "w", kElement);
    EXPECT_EQ(nodeCall(root, LUM_NODE_REPLACE_CHILD, {made, y}, nullptr).code, LUM_OK);
    EXPECT_EQ(childOf(root, 2), made);
    void* parent = marker();
    EXPECT_EQ(nodeCall(y, LUM_NODE_PARENT, {}, &parent).code, LUM_OK);
    EXPECT_EQ(parent, nullptr);
}

// ---- 5, 6, 7, 8, 9: structure --------------------------------------------------

TEST_F(NodeMethods, Method5CountsChildren) {
    EXPECT_EQ(childCountOf(root), 7);
    EXPECT_EQ(childCountOf(child(1)), 0);
    EXPECT_EQ(childCountOf(rootNode()), 1);
}

TEST_F(NodeMethods, Method6GivesThePositionAmongSiblings) {
    int32_t position = 99;
    EXPECT_EQ(nodeCall(child(2), LUM_NODE_INDEX_IN_PARENT, {}, &position).code, LUM_OK);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(nodeCall(child(0), LUM_NODE_INDEX_IN_PARENT, {}, &position).code, LUM_OK);
    EXPECT_EQ(position, 0);
}

TEST_F(NodeMethods, Method6WithoutParentLeavesTheResult) {
    int32_t position = 99;
    EXPECT_EQ(nodeCall(rootNode(), LUM_NODE_INDEX_IN_PARENT, {}, &position).code, LUM_OK);
    EXPECT_EQ(position, 99);
    void* loose = createNode(document.cell, "loose", LUM_NODE_ELEMENT);
    EXPECT_EQ(nodeCall(loose, LUM_NODE_INDEX_IN_PARENT, {}, &position).code, LUM_OK);
    EXPECT_EQ(position, 99);
}

TEST_F(NodeMethods, Method7GivesTheParent) {
    void* parent = reinterpret_cast<void*>(1);
    EXPECT_EQ(nodeCall(child(0), LUM_NODE_PARENT, {}, &parent).code, LUM_OK);
    EXPECT_EQ(parent, root);
    EXPECT_EQ(nodeCall(rootNode(), LUM_NODE_PARENT, {}, &parent).code, LUM_OK);
    EXPECT_EQ(parent, nullptr);
}

TEST_F(NodeMethods, Method7OnARestrictedRecordIsRefused) {
    hostRecord(document.cell)->restrictParent = 1;
    void* parent = reinterpret_cast<void*>(1);
    Answer answer = nodeCall(rootNode(), LUM_NODE_PARENT, {}, &parent);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Restricted node");
    EXPECT_EQ(parent, reinterpret_cast<void*>(1));
    // Nodes without a record of their own are not restricted.
    EXPECT_EQ(nodeCall(child(0), LUM_NODE_PARENT, {}, &parent).code, LUM_OK);
}

TEST_F(NodeMethods, Method8IndexZeroOfASingleChildYieldsItAndIndexOneFails) {
    void* first = child(0);
    void* text = childOf(first, 0);
    EXPECT_EQ(typeOf(text), LUM_NODE_TEXT);
    void* result = reinterpret_cast<void*>(1);
    int32_t index = 1;
    Answer answer = nodeCall(first, LUM_NODE_CHILD_AT, {&index}, &result);
    EXPECT_EQ(answer.code, LUM_ERR_CHILD_INDEX);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(result, nullptr);
}

TEST_F(NodeMethods, Method8NegativeIndexIsInvalid) {
    void* result = reinterpret_cast<void*>(1);
    int32_t index = -1;
    EXPECT_EQ(nodeCall(root, LUM_NODE_CHILD_AT, {&index}, &result).code, LUM_ERR_CHILD_INDEX);
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
    EXPECT_EQ(nodeCall(third, LUM_NODE_CLONE, {&no}, &shallow).code, LUM_OK);
    EXPECT_EQ(nodeCall(third, LUM_NODE_CLONE, {&yes}, &deep).code, LUM_OK);
    EXPECT_EQ(nameOf(shallow), "third");
    EXPECT_EQ(childCountOf(shallow), 0);
    EXPECT_EQ(childCountOf(deep), 1);
    EXPECT_EQ(valueOf(childOf(deep, 0)), "three");
    void* parent = reinterpret_cast<void*>(1);
    nodeCall(deep, LUM_NODE_PARENT, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

TEST_F(NodeMethodsOnMixedContent, CloneShallowAndDeep) {
    int32_t deep = 0;
    void* copy = nullptr;
    ASSERT_EQ(nodeCall(root, LUM_NODE_CLONE, {&deep}, &copy).code, LUM_OK);
    EXPECT_EQ(childCountOf(copy), 0);
    char out[16] = "";
    int32_t limit = sizeof out;
    nodeCall(copy, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out);
    EXPECT_STREQ(out, "a,bb");
    deep = 7;
    ASSERT_EQ(nodeCall(root, LUM_NODE_CLONE, {&deep}, &copy).code, LUM_OK);
    EXPECT_EQ(childCountOf(copy), 4);
    void* parent = marker();
    nodeCall(copy, LUM_NODE_PARENT, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

// ---- 17, 18: owner and type ----------------------------------------------------

TEST_F(NodeMethods, Method17GivesTheOwnerDocumentsHostHandle) {
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(child(2), LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 4242);
    handle = 0;
    EXPECT_EQ(nodeCall(rootNode(), LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 4242);
}

TEST_F(NodeMethods, Method17OnARestrictedRecordIsRefusedThoughTheDocumentExists) {
    hostRecord(document.cell)->restrictOwner = 1;
    int64_t handle = 5;
    Answer answer = nodeCall(rootNode(), LUM_NODE_OWNER_HANDLE, {}, &handle);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Restricted node");
    EXPECT_EQ(handle, 5);
}

TEST_F(NodeMethods, Method18GivesTheDomTypeCode) {
    EXPECT_EQ(typeOf(root), LUM_NODE_ELEMENT);
    EXPECT_EQ(typeOf(childOf(child(0), 0)), LUM_NODE_TEXT);
    EXPECT_EQ(typeOf(child(3)), LUM_NODE_CDATA_SECTION);
    EXPECT_EQ(typeOf(child(4)), LUM_NODE_COMMENT);
    EXPECT_EQ(typeOf(child(5)), LUM_NODE_PROCESSING_INSTRUCTION);
    EXPECT_EQ(typeOf(rootNode()), LUM_NODE_DOCUMENT);
}

// ---- 23: normalize -------------------------------------------------------------

TEST_F(NodeMethods, Method23NormalizesAdjacentTextOnElementsOnly) {
    void* second = child(1);
    appendChild(second, createNode(document.cell, "", LUM_NODE_TEXT));
    void* a = childOf(second, 0);
    nodeCall(a, LUM_NODE_SET_VALUE, {const_cast<char*>("left")}, nullptr);
    void* b = createNode(document.cell, "", LUM_NODE_TEXT);
    nodeCall(b, LUM_NODE_SET_VALUE, {const_cast<char*>("right")}, nullptr);
    appendChild(second, b);
    EXPECT_EQ(childCountOf(second), 2);
    EXPECT_EQ(nodeCall(second, LUM_NODE_NORMALIZE, {}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(second), 1);
    EXPECT_EQ(valueOf(childOf(second, 0)), "leftright");
    EXPECT_EQ(nodeCall(childOf(second, 0), LUM_NODE_NORMALIZE, {}, nullptr).code,
              LUM_ERR_NODE_TYPE);
}

TEST_F(NodeMethodsOnMixedContent, NormalizeJoinsAdjacentText) {
    void* extra = createNode(document.cell, "", kText);
    ASSERT_EQ(nodeCall(extra, LUM_NODE_SET_VALUE, {const_cast<char*>("more")}, nullptr).code,
              LUM_OK);
    void* y = childOf(root, 2);
    ASSERT_EQ(nodeCall(root, LUM_NODE_INSERT_BEFORE, {extra, y}, nullptr).code, LUM_OK);
    ASSERT_EQ(childCountOf(root), 5);
    EXPECT_EQ(nodeCall(root, LUM_NODE_NORMALIZE, {}, nullptr).code, LUM_OK);
    EXPECT_EQ(childCountOf(root), 4);
    EXPECT_EQ(valueOf(childOf(root, 1)), "textmore");
}

}  // namespace
