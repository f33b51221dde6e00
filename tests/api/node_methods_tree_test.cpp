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

TEST_F(NodeMethodsOnMixedContent, NodeMethodNumbersFarOutOfRangeAreInvalid) {
    for (int32_t method : {-1, -100, 41, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = nodeCall(root, method, {}, nullptr);
        EXPECT_EQ(answer.code, 3) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(NodeMethodsOnMixedContent, RefusalsByNumberLeaveTheResultAlone) {
    void* cell = marker();
    nodeCall(root, 1, {}, &cell);
    nodeCall(root, 22, {}, &cell);
    docCall(document.cell, 3, {}, &cell);
    EXPECT_EQ(cell, marker());
}

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

TEST_F(NodeMethodsOnMixedContent, SuccessfulNodeMethodLeavesBufferAndCode) {
    int32_t limit = 8;
    char out[8] = "";
    void* args[] = {&limit};
    ErrorSlot slot;
    std::strcpy(slot.buffer, "host text");
    slot.code = -42;
    lumNodeExecute(root, 21, args, out, slot.buffer, &slot.code);
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
    void* made = createNode(document.cell, "made", 1);
    void* second = child(1);
    Answer answer = nodeCall(root, 2, {made, second}, nullptr);
    EXPECT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(nameOf(child(1)), "made");
    EXPECT_EQ(nameOf(child(2)), "second");
}

TEST_F(NodeMethodsOnMixedContent, InsertBeforeWithNullReferenceAppends) {
    void* made = createNode(document.cell, "z", kElement);
    EXPECT_EQ(nodeCall(root, 2, {made, nullptr}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 5);
    EXPECT_EQ(childOf(root, 4), made);
    int32_t position = 99;
    EXPECT_EQ(nodeCall(made, 6, {}, &position).code, 0);
    EXPECT_EQ(position, 4);
}

TEST_F(NodeMethods, Method2OfTheNodeIntoItselfIsAHierarchyError) {
    Answer answer = nodeCall(root, 2, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethodsOnMixedContent, InsertingAnAncestorIsAHierarchyError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, 2, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(NodeMethods, InsertingIntoATextNodeIsAHierarchyError) {
    HostDocument document;
    document.loadMemory("<a>text<b/></a>");
    void* root = documentElementOf(document.cell);
    Answer answer = nodeCall(childOf(root, 0), 2, {childOf(root, 1), nullptr}, nullptr);
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

TEST_F(NodeMethodsOnMixedContent, InsertingANodeOfAnotherDocumentKeepsTheMisspelledText) {
    HostDocument other;
    void* foreign = createNode(other.cell, "f", kElement);
    Answer answer = nodeCall(root, 2, {foreign, nullptr}, nullptr);
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

TEST_F(NodeMethodsOnMixedContent, RemovedChildStaysAliveAndCanComeBack) {
    void* x = childOf(root, 0);
    EXPECT_EQ(nodeCall(root, 10, {x}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 3);
    EXPECT_EQ(nameOf(x), "x");
    EXPECT_EQ(nodeCall(root, 2, {x, nullptr}, nullptr).code, 0);
    EXPECT_EQ(childOf(root, 3), x);
}

TEST_F(NodeMethods, Method10OfANonChildIsNotFound) {
    void* loose = createNode(document.cell, "loose", 1);
    Answer answer = nodeCall(root, 10, {loose}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
    EXPECT_EQ(nodeCall(root, 10, {nullptr}, nullptr).code, 6);
}

TEST_F(NodeMethodsOnMixedContent, RemovingANonChildIsANotFoundError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, 10, {root}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

TEST_F(NodeMethods, Method11ReplacesAChild) {
    void* made = createNode(document.cell, "replacement", 1);
    void* second = child(1);
    EXPECT_EQ(nodeCall(root, 11, {made, second}, nullptr).code, 0);
    EXPECT_EQ(nameOf(child(1)), "replacement");
    EXPECT_EQ(childCountOf(root), 7);
    EXPECT_EQ(nodeCall(root, 11, {made, nullptr}, nullptr).code, 6);
}

TEST_F(NodeMethodsOnMixedContent, ReplaceChildPutsTheNewNodeInPlace) {
    void* y = childOf(root, 2);
    void* made = createNode(document.cell, "w", kElement);
    EXPECT_EQ(nodeCall(root, 11, {made, y}, nullptr).code, 0);
    EXPECT_EQ(childOf(root, 2), made);
    void* parent = marker();
    EXPECT_EQ(nodeCall(y, 7, {}, &parent).code, 0);
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

TEST_F(NodeMethodsOnMixedContent, CloneShallowAndDeep) {
    int32_t deep = 0;
    void* copy = nullptr;
    ASSERT_EQ(nodeCall(root, 9, {&deep}, &copy).code, 0);
    EXPECT_EQ(childCountOf(copy), 0);
    char out[16] = "";
    int32_t limit = sizeof out;
    nodeCall(copy, 12, {&limit}, out);
    EXPECT_STREQ(out, "a,bb");
    deep = 7;
    ASSERT_EQ(nodeCall(root, 9, {&deep}, &copy).code, 0);
    EXPECT_EQ(childCountOf(copy), 4);
    void* parent = marker();
    nodeCall(copy, 7, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

// ---- 17, 18: owner and type ----------------------------------------------------

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

TEST_F(NodeMethodsOnMixedContent, NormalizeJoinsAdjacentText) {
    void* extra = createNode(document.cell, "", kText);
    ASSERT_EQ(nodeCall(extra, 20, {const_cast<char*>("more")}, nullptr).code, 0);
    void* y = childOf(root, 2);
    ASSERT_EQ(nodeCall(root, 2, {extra, y}, nullptr).code, 0);
    ASSERT_EQ(childCountOf(root), 5);
    EXPECT_EQ(nodeCall(root, 23, {}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 4);
    EXPECT_EQ(valueOf(childOf(root, 1)), "textmore");
}

}  // namespace
