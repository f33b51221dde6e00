// The item length limit as the heap and the budget see it: while an armed
// budget is installed, its parse's heap refuses a block past the size a
// buffer of the limit needs; other heaps, unarmed budgets, text-node
// allowances and blocks up to the size pass.
#include <string>

#include <gtest/gtest.h>

#include "frame/owned_heap.h"
#include "frame/parse_budget.h"
#include "start_library.h"

using lumxml::HeapRef;
using lumxml::OwnedHeap;
using lumxml::ParseBudget;
using lumxml::ParseLimitStop;

namespace {

constexpr size_t kLargest = ParseBudget::kMaxItemBlockBytes;

class ParseBudgetBlocks : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::startInternals(); }

    void SetUp() override {
        budget.arm(50000, 1000, false);
        budget.setHeap(heap.get());
    }

    // Allocates and frees a block of `bytes` from `from`; false when the
    // budget stopped the parse.
    static bool allocates(OwnedHeap* from, size_t bytes, std::string* message = nullptr) {
        try {
            from->deallocate(from->allocate(bytes));
            return true;
        } catch (const ParseLimitStop& stop) {
            if (message != nullptr) *message = stop.message;
            return false;
        }
    }

    HeapRef heap{OwnedHeap::create()};
    ParseBudget budget;
};

TEST_F(ParseBudgetBlocks, BlockOfTheLimitPasses) {
    ParseBudget::Scope scope(&budget);
    EXPECT_TRUE(allocates(heap.get(), kLargest));
    EXPECT_TRUE(budget.armed());
}

TEST_F(ParseBudgetBlocks, LargerBlockStopsTheParseOnce) {
    ParseBudget::Scope scope(&budget);
    std::string message;
    EXPECT_FALSE(allocates(heap.get(), kLargest + 1, &message));
    EXPECT_EQ(message,
              "an item in the document is longer than '16777216' characters; this is the size "
              "limit imposed by the application");
    // Unwinding after the stop is not stopped again.
    EXPECT_FALSE(budget.armed());
    EXPECT_TRUE(allocates(heap.get(), kLargest + 1));
    EXPECT_EQ(heap.get()->blocksOut(), 0u);
}

TEST_F(ParseBudgetBlocks, AnotherHeapIsNotChecked) {
    HeapRef other(OwnedHeap::create());
    ParseBudget::Scope scope(&budget);
    EXPECT_TRUE(allocates(other.get(), kLargest + 1));
    EXPECT_TRUE(budget.armed());
}

TEST_F(ParseBudgetBlocks, NothingIsCheckedOutsideTheParse) {
    EXPECT_TRUE(allocates(heap.get(), kLargest + 1));
}

TEST_F(ParseBudgetBlocks, AnUnarmedBudgetChecksNothing) {
    ParseBudget unarmed;
    unarmed.setHeap(heap.get());
    ParseBudget::Scope scope(&unarmed);
    EXPECT_TRUE(allocates(heap.get(), kLargest + 1));
}

TEST_F(ParseBudgetBlocks, LargeBlocksAllowedForATextNode) {
    ParseBudget::Scope scope(&budget);
    {
        ParseBudget::LargeBlocks textNode(budget);
        EXPECT_TRUE(allocates(heap.get(), kLargest + 1));
    }
    EXPECT_FALSE(allocates(heap.get(), kLargest + 1));
}

}  // namespace
