// The pull reader's spare event blocks and its marker test without a copy:
// a handled event's block comes back zero-filled for a later event, the
// pool keeps a bounded number of spares and frees them with itself, and a
// URI or prefix that is the text "EMPTY" gives null without being copied.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "sax/sax_events.h"
#include "sax/sax_parser.h"
#include "start_library.h"

using namespace lumxml;

namespace {

class SaxEventReuse : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals("UTF-8");
        std::memset(&instance, 0, sizeof instance);
        instance.state = sax::kStateRunning;
    }
    void TearDown() override {
        sax::deleteParserInstance(&instance);
        lumtest::startInternals("UTF-8");
    }

    SaxParserInstance instance;
};

// Owns a library copy (released as every event string is).
struct Copy {
    explicit Copy(char* text) : text(text) {}
    ~Copy() { codec::release(text); }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    const char* get() const { return text; }
    char* text;
};

bool isZeroFilled(const SaxEvent& event) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&event);
    for (size_t i = 0; i < sizeof event; ++i) {
        if (bytes[i] != 0) return false;
    }
    return true;
}

TEST_F(SaxEventReuse, HandledEventBlockIsReusedZeroFilled) {
    sax::EventPool pool;
    SaxEvent* first = sax::enqueueEvent(instance, &pool);
    ASSERT_NE(first, nullptr);
    first->arg1 = sax::hostCopy(u"text");
    first->arg2 = reinterpret_cast<void*>(uintptr_t{4});
    sax::finishEvent(*first, sax::kCharacters, 2);

    // Handled: unlinked from the head and given back.
    instance.eventHead = first->next;
    instance.eventTail = nullptr;
    --instance.eventCount;
    sax::freeEvent(first, &pool);
    EXPECT_EQ(pool.spareCount(), 1);

    SaxEvent* second = sax::enqueueEvent(instance, &pool);
    EXPECT_EQ(second, first);  // the same block again
    EXPECT_EQ(pool.spareCount(), 0);
    EXPECT_TRUE(isZeroFilled(*second));
    EXPECT_EQ(instance.eventHead, second);
    EXPECT_EQ(instance.eventCount, 1);
}

TEST_F(SaxEventReuse, PoolKeepsABoundedNumberOfSpares) {
    sax::EventPool pool;
    const int many = sax::EventPool::kMaxSpares + 5;
    for (int i = 0; i < many; ++i) ASSERT_NE(sax::enqueueEvent(instance, &pool), nullptr);
    EXPECT_EQ(instance.eventCount, many);
    SaxEvent* event = instance.eventHead;
    instance.eventHead = nullptr;
    instance.eventTail = nullptr;
    instance.eventCount = 0;
    while (event != nullptr) {
        SaxEvent* next = event->next;
        sax::freeEvent(event, &pool);
        event = next;
    }
    // The rest went back to the heap; the spares go with the pool (the
    // leak checker of the sanitizer build sees that nothing stays).
    EXPECT_EQ(pool.spareCount(), sax::EventPool::kMaxSpares);
}

TEST_F(SaxEventReuse, PooledAndHeapEventsMixInOneQueue) {
    sax::EventPool pool;
    SaxEvent* fromPool = sax::enqueueEvent(instance, &pool);
    SaxEvent* fromHeap = sax::enqueueEvent(instance);
    ASSERT_NE(fromPool, nullptr);
    ASSERT_NE(fromHeap, nullptr);
    EXPECT_EQ(fromPool->next, fromHeap);
    // A heap block may become a spare, a pooled one may go to the heap.
    instance.eventHead = fromHeap;
    sax::freeEvent(fromPool);
    instance.eventHead = nullptr;
    instance.eventTail = nullptr;
    instance.eventCount = 0;
    sax::freeEvent(fromHeap, &pool);
    EXPECT_EQ(pool.spareCount(), 1);
}

TEST_F(SaxEventReuse, EmptyMarkerGivesNullWithoutACopy) {
    EXPECT_EQ(sax::hostCopyUnlessEmptyMarker(u"EMPTY"), nullptr);
    EXPECT_EQ(sax::hostCopyUnlessEmptyMarker(nullptr), nullptr);
    EXPECT_EQ(sax::hostCopyUnlessEmptyMarker(u"", true), nullptr);
    Copy empty(sax::hostCopyUnlessEmptyMarker(u""));
    ASSERT_NE(empty.get(), nullptr);  // an element's empty URI stays ""
    EXPECT_STREQ(empty.get(), "");
    for (const char16_t* near : {u"EMPT", u"EMPTYX", u"empty", u"xEMPTY"}) {
        Copy copy(sax::hostCopyUnlessEmptyMarker(near));
        Copy plain(sax::hostCopy(near));
        EXPECT_STREQ(copy.get(), plain.get());
    }
}

TEST_F(SaxEventReuse, EmptyMarkerIsJudgedOnTheCopyInOtherCodePages) {
    lumtest::startInternals("ISO-8859-1");
    EXPECT_EQ(sax::hostCopyUnlessEmptyMarker(u"EMPTY"), nullptr);
    EXPECT_EQ(sax::hostCopyUnlessEmptyMarker(u"", true), nullptr);
    Copy kept(sax::hostCopyUnlessEmptyMarker(u"caf\u00E9"));
    EXPECT_STREQ(kept.get(), "caf\xE9");
    Copy empty(sax::hostCopyUnlessEmptyMarker(u""));
    ASSERT_NE(empty.get(), nullptr);
    EXPECT_STREQ(empty.get(), "");
}

}  // namespace
