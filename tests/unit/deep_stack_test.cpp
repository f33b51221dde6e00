// Xerces' recursive walks run on a stack sized for the tree's depth.
#include <stdexcept>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>

#include "frame/deep_stack.h"
#include "frame/library_state.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

class DeepStack : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals();
        document = DOMImplementationRegistry::getDOMImplementation(u"Core")->createDocument();
    }
    void TearDown() override { document->release(); }

    // A chain of `depth` nested elements under a new root, built without recursion.
    DOMElement* chain(size_t depth) {
        DOMElement* root = document->createElement(u"e");
        DOMElement* current = root;
        for (size_t i = 0; i < depth; ++i) {
            DOMElement* child = document->createElement(u"e");
            current->appendChild(child);
            current = child;
        }
        current->appendChild(document->createTextNode(u"x"));
        return root;
    }

    DOMDocument* document = nullptr;
};

TEST_F(DeepStack, DepthOfALeafIsZero) {
    DOMElement* leaf = document->createElement(u"a");
    EXPECT_EQ(subtreeDepth(leaf), 0u);
    leaf->release();
}

TEST_F(DeepStack, DepthCountsTheLongestPath) {
    DOMElement* root = document->createElement(u"r");
    DOMElement* a = document->createElement(u"a");
    root->appendChild(a);
    a->appendChild(document->createElement(u"b"));
    root->appendChild(document->createElement(u"c"));
    EXPECT_EQ(subtreeDepth(root), 2u);
    EXPECT_EQ(subtreeDepth(a), 1u);
    root->release();
}

TEST_F(DeepStack, ExceptionsReachTheCaller) {
    EXPECT_THROW(runForDepth(100000, [] { throw std::runtime_error("x"); }),
                 std::runtime_error);
    EXPECT_THROW(runForDepth(1, [] { throw std::runtime_error("x"); }), std::runtime_error);
}

TEST_F(DeepStack, DeepCloneAndReleaseOfThreeHundredThousandLevels) {
    DOMElement* root = chain(300000);
    EXPECT_EQ(subtreeDepth(root), 300001u);
    DOMNode* copy = nullptr;
    runForSubtree(root, [&] { copy = root->cloneNode(true); });
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(subtreeDepth(copy), 300001u);
    runForSubtree(copy, [&] { copy->release(); });
    runForSubtree(root, [&] { root->release(); });
}

}  // namespace
