// Indexed child reads (node and document method 8, method 5, method 6)
// answer exactly what the DOM child list holds, whatever changed before.
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;
XERCES_CPP_NAMESPACE_USE

namespace {

class ChildWalks : public ::testing::Test {
protected:
    void SetUp() override {
        std::string xml = "<root>";
        for (int i = 0; i < 60; ++i) xml += "<c" + std::to_string(i) + ">t</c" + std::to_string(i) + ">";
        xml += "</root>";
        ASSERT_EQ(document.loadMemory(xml).code, LUM_OK);
        root = documentElementOf(document.cell);
    }

    // What the DOM itself answers, the slow way.
    static DOMNode* itemOf(void* parent, int32_t index) {
        return static_cast<DOMNode*>(parent)->getChildNodes()->item(static_cast<XMLSize_t>(
            static_cast<int64_t>(index)));
    }
    static int32_t lengthOf(void* parent) {
        return static_cast<int32_t>(static_cast<DOMNode*>(parent)->getChildNodes()->getLength());
    }

    void expectIndexedRead(void* parent, int32_t index) {
        void* child = reinterpret_cast<void*>(1);
        void* slots[1] = {&index};
        ErrorSlot error;
        lumNodeExecute(parent, LUM_NODE_CHILD_AT, slots, &child, error.buffer, &error.code);
        DOMNode* expected = itemOf(parent, index);
        EXPECT_EQ(child, static_cast<void*>(expected)) << "index " << index;
        EXPECT_EQ(error.code, expected == nullptr ? LUM_ERR_CHILD_INDEX : LUM_OK);
    }

    void expectCount(void* parent) {
        int32_t count = -1;
        nodeCall(parent, LUM_NODE_CHILD_COUNT, {}, &count);
        EXPECT_EQ(count, lengthOf(parent));
    }

    LibraryStarted started;
    HostDocument document;
    void* root = nullptr;
};

TEST_F(ChildWalks, SequentialWalkForwardAndBackMatchesTheChildList) {
    expectCount(root);
    for (int32_t i = 0; i <= lengthOf(root); ++i) expectIndexedRead(root, i);
    for (int32_t i = lengthOf(root); i >= 0; --i) expectIndexedRead(root, i);
    for (int32_t i = 0; i < 60; i += 7) expectIndexedRead(root, 59 - i);
    expectIndexedRead(root, -1);
    expectIndexedRead(root, 1 << 30);
}

TEST_F(ChildWalks, PositionAfterIndexedReadsMatches) {
    for (int32_t i = 0; i < 60; i += 3) {
        void* child = childOf(root, i);
        int32_t position = -5;
        nodeCall(child, LUM_NODE_INDEX_IN_PARENT, {}, &position);
        EXPECT_EQ(position, i);
    }
    int32_t position = -5;
    nodeCall(childOf(root, 59), LUM_NODE_INDEX_IN_PARENT, {}, &position);
    EXPECT_EQ(position, 59);
    nodeCall(childOf(root, 1), LUM_NODE_INDEX_IN_PARENT, {}, &position);
    EXPECT_EQ(position, 1);
}

// Interleaves every kind of change with indexed reads at random positions,
// checking each answer against the DOM's own child list.
TEST_F(ChildWalks, RandomChangesInterleavedWithIndexedReadsAlwaysMatch) {
    std::mt19937 random(20261122);
    auto pick = [&](int32_t bound) {
        return bound <= 0 ? 0 : static_cast<int32_t>(random() % static_cast<uint32_t>(bound));
    };
    void* other = childOf(root, 0);  // a second parent whose list also changes
    for (int round = 0; round < 1500; ++round) {
        int32_t length = lengthOf(root);
        switch (random() % 9) {
        case 0: {  // insert before a random child (or append)
            void* made = createNode(document.cell, "n", LUM_NODE_ELEMENT);
            void* before = length > 0 && random() % 4 ? childOf(root, pick(length)) : nullptr;
            nodeCall(root, LUM_NODE_INSERT_BEFORE, {made, before}, nullptr);
            break;
        }
        case 1:  // remove and release through method 3 (never the other parent,
                 // which later rounds still read)
            if (length > 2) {
                void* released = childOf(root, pick(length));
                if (released != other) nodeCall(released, LUM_NODE_REMOVE, {}, nullptr);
            }
            break;
        case 2:  // remove without release, then put it elsewhere
            if (length > 2) {
                void* moved = childOf(root, pick(length));
                if (moved == other) break;
                nodeCall(root, LUM_NODE_REMOVE_CHILD, {moved}, nullptr);
                nodeCall(other, LUM_NODE_INSERT_BEFORE, {moved, nullptr}, nullptr);
            }
            break;
        case 3: {  // replace
            if (length == 0) break;
            void* made = createNode(document.cell, "r", LUM_NODE_ELEMENT);
            void* old = childOf(root, pick(length));
            if (old == other) break;
            nodeCall(root, LUM_NODE_REPLACE_CHILD, {made, old}, nullptr);
            nodeCall(old, LUM_NODE_REMOVE, {}, nullptr);
            break;
        }
        case 4: {  // text nodes side by side, then normalize
            void* a = createNode(document.cell, "", LUM_NODE_TEXT);
            void* b = createNode(document.cell, "", LUM_NODE_TEXT);
            nodeCall(a, LUM_NODE_SET_VALUE, {const_cast<char*>("x")}, nullptr);
            nodeCall(b, LUM_NODE_SET_VALUE, {const_cast<char*>("y")}, nullptr);
            nodeCall(root, LUM_NODE_INSERT_BEFORE, {a, nullptr}, nullptr);
            nodeCall(root, LUM_NODE_INSERT_BEFORE, {b, nullptr}, nullptr);
            if (random() % 2) nodeCall(root, LUM_NODE_NORMALIZE, {}, nullptr);
            break;
        }
        case 5: {  // deep clone of the parent put under it
            if (length > 80) break;
            int32_t deep = random() % 2;
            void* copy = nullptr;
            nodeCall(other, LUM_NODE_CLONE, {&deep}, &copy);
            nodeCall(root, LUM_NODE_INSERT_BEFORE,
                     {copy, length > 0 ? childOf(root, pick(length)) : nullptr}, nullptr);
            break;
        }
        case 6:  // reads on the other parent in between
            expectCount(other);
            expectIndexedRead(other, pick(lengthOf(other) + 2));
            break;
        default:
            break;
        }
        length = lengthOf(root);
        expectCount(root);
        int32_t at = pick(length + 3) - 1;
        for (int32_t k = 0; k < 4; ++k) expectIndexedRead(root, at + k);
        expectIndexedRead(root, pick(length + 1));
        if (length > 0) {
            int32_t index = pick(length);
            int32_t position = -5;
            nodeCall(childOf(root, index), LUM_NODE_INDEX_IN_PARENT, {}, &position);
            EXPECT_EQ(position, index);
        }
        if (HasFailure()) {
            ADD_FAILURE() << "first mismatch in round " << round;
            return;
        }
    }
}

// Depth first, as hosts walk: each parent's position must survive the walk
// of its children's children, past more ancestors than are remembered.
TEST_F(ChildWalks, DepthFirstWalkVisitsExactlyTheDomsNodesInOrder) {
    std::string xml;
    for (int depth = 0; depth < 100; ++depth) xml += "<d>a<w/><w>b</w>";
    for (int depth = 0; depth < 100; ++depth) xml += "c</d>";
    HostDocument deep;
    ASSERT_EQ(deep.loadMemory(xml).code, LUM_OK);
    std::vector<void*> visited;
    std::vector<DOMNode*> expected;
    struct Place {
        void* node;
        int32_t count;
        int32_t next;
    };
    std::vector<Place> stack{{documentElementOf(deep.cell), -1, 0}};
    while (!stack.empty()) {
        Place& place = stack.back();
        if (place.count < 0) {
            visited.push_back(place.node);
            place.count = childCountOf(place.node);
        }
        if (place.next >= place.count) {
            stack.pop_back();
            continue;
        }
        void* child = childOf(place.node, place.next++);
        stack.push_back({child, -1, 0});
    }
    std::vector<DOMNode*> pending{static_cast<DOMNode*>(documentElementOf(deep.cell))};
    while (!pending.empty()) {
        DOMNode* node = pending.back();
        pending.pop_back();
        expected.push_back(node);
        for (DOMNode* c = node->getLastChild(); c != nullptr; c = c->getPreviousSibling())
            pending.push_back(c);
    }
    ASSERT_EQ(visited.size(), expected.size());
    for (size_t i = 0; i < visited.size(); ++i) EXPECT_EQ(visited[i], expected[i]) << i;
}

TEST_F(ChildWalks, DocumentMethod8MatchesAfterReplacingTheDocumentElement) {
    void* child = nullptr;
    int32_t index = 0;
    docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child);
    EXPECT_EQ(child, root);
    void* made = createNode(document.cell, "fresh", LUM_NODE_ELEMENT);
    docCall(document.cell, LUM_DOC_REPLACE_CHILD, {made, root}, nullptr);
    docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child);
    EXPECT_EQ(child, made);
    docCall(document.cell, LUM_DOC_REMOVE_CHILD, {made}, nullptr);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child).code, LUM_ERR_CHILD_INDEX);
    nodeCall(made, LUM_NODE_REMOVE, {}, nullptr);
}

TEST_F(ChildWalks, ReloadingAndReplacingDocumentsInvalidatesPositions) {
    int32_t index = 5;
    void* child = nullptr;
    nodeCall(root, LUM_NODE_CHILD_AT, {&index}, &child);
    int32_t count = 0;
    nodeCall(root, LUM_NODE_CHILD_COUNT, {}, &count);
    EXPECT_EQ(count, 60);
    document.loadMemory("<root><only/></root>");
    void* newRoot = documentElementOf(document.cell);
    expectCount(newRoot);
    for (int32_t i = 0; i < 3; ++i) expectIndexedRead(newRoot, i);
}

}  // namespace
