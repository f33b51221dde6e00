// Allocation failures injected into every allocation of a session, one at
// a time: the n-th allocation fails once, and then every allocation from
// the n-th on, for every n the session makes. Xerces' blocks (through
// lumxml's heaps and Xerces' own manager) and lumxml's own objects come
// from the replaced global operator new, so both are refused alike.
//
// Each run must end with the failure reported to the host (a code, and a
// message where the export has an error buffer) or with the session's
// normal outcome; must leave no block behind once the host has released
// what it holds; and the same session run right after must give exactly
// the answers of an undisturbed one.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>

#include "counting_new.h"
#include "host_sessions.h"
#include "host_test.h"

namespace {

using lumtest::SessionTrace;
namespace heap = lumtest::heap;

using Session = std::function<void(SessionTrace&)>;

class AllocationFailure : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::initLibraryOnce();
        files = new lumtest::SessionFiles();
    }

    // Every failure point of `session`, in both modes.
    // `reports`: the exports report their failures (the attribute-list
    // exports report none).
    static void sweep(const Session& session, bool reports = true) {
        SessionTrace golden;
        session(golden);  // first use: whatever Xerces makes once per process
        ASSERT_EQ(golden.silentFailures, 0) << golden.lastCode;
        SessionTrace second;
        session(second);
        ASSERT_EQ(second.digest, golden.digest);

        const heap::Counts base = heap::now();
        heap::countFrom();
        SessionTrace counted;
        session(counted);
        const int64_t total = heap::stopFailing();
        expectBackTo(base, heap::now(), 0, false);
        ASSERT_EQ(counted.digest, golden.digest);
        ASSERT_GT(total, 0);

        int reported = 0;
        for (bool onward : {false, true}) {
            for (int64_t n = 1; n <= total; ++n) {
                const heap::Counts before = heap::now();
                heap::failFrom(n, onward);
                SessionTrace failed;
                session(failed);
                heap::stopFailing();
                // Read before the test's own messages allocate anything.
                const heap::Counts counts = heap::now();
                const int64_t leftBlock = heap::firstNumberedOut();
                SCOPED_TRACE(::testing::Message() << "allocation " << n << " of " << total
                                                  << (onward ? " onward" : " once"));
                EXPECT_EQ(failed.silentFailures, 0) << "code " << failed.lastCode;
                if (reports && failed.answers == golden.answers) {
                    EXPECT_EQ(failed.digest, golden.digest)
                        << "a refused allocation changed the outcome without a report";
                }
                expectBackTo(before, counts, n, onward);
                EXPECT_EQ(leftBlock, 0) << "the block of allocation " << leftBlock << " is left";
                SessionTrace after;
                session(after);
                EXPECT_EQ(after.digest, golden.digest) << "the next session differs";
                // A few failure points are enough to see what is wrong.
                if (::testing::Test::HasFailure() && ++reported == 10) return;
            }
        }
    }

    static void expectBackTo(const heap::Counts& base, const heap::Counts& counts, int64_t n,
                             bool onward) {
        EXPECT_EQ(counts.blocks, base.blocks)
            << "blocks left after failing allocation " << n << (onward ? " onward" : "");
        EXPECT_EQ(counts.bytes, base.bytes);
    }

    static lumtest::SessionFiles* files;
};

lumtest::SessionFiles* AllocationFailure::files = nullptr;

TEST_F(AllocationFailure, DocumentLoadWalkAndSaveReportEveryFailureAndLeakNothing) {
    sweep([](SessionTrace& trace) { lumtest::domSession(*files, trace); });
}

TEST_F(AllocationFailure, PullReadingToTheEndReportsEveryFailureAndLeaksNothing) {
    sweep([](SessionTrace& trace) { lumtest::pullSession(*files, trace); });
}

TEST_F(AllocationFailure, OneShotValidationReportsEveryFailureAndLeaksNothing) {
    sweep([](SessionTrace& trace) { lumtest::validationSession(*files, trace); });
}

TEST_F(AllocationFailure, WriterSessionReportsEveryFailureAndLeaksNothing) {
    SaxAttrList* attributes = nullptr;
    lumSAXInsertAttribute(&attributes, "a", "1 < 2 & \"3\"", nullptr, "CDATA");
    lumSAXInsertAttribute(&attributes, "p:b", "x", "urn:p", "CDATA");
    sweep([attributes](SessionTrace& trace) { lumtest::writerSession(attributes, trace); });
    lumSAXDeleteAttrList(attributes);
}

TEST_F(AllocationFailure, AttributeListExportsLeakNothing) {
    sweep([](SessionTrace& trace) { lumtest::attributeListSession(trace); }, false);
}

// Out of memory in the middle of a parse with an expansion limit set:
// Xerces leaves its parser marked as parsing, and its setters then throw;
// the load still answers and the host keeps a working document.
TEST_F(AllocationFailure, LoadRunningOutOfMemoryUnderALimitAnswersUnexpectedException) {
    char buffer[257] = "";
    int32_t code = 0;
    void* cell = nullptr;
    lumInitDocument(&cell, 1, buffer, &code);
    ASSERT_EQ(code, LUM_OK);
    const int32_t limit = 50000;
    auto loadRich = [&] {
        buffer[0] = '\0';
        code = 0;
        lumDocLoad(&cell, 0, LUM_LOAD_FROM_MEMORY, nullptr, nullptr, lumtest::kRichDocument,
                   std::strlen(lumtest::kRichDocument), files->documentFile.c_str(), &limit, 0,
                   nullptr, buffer, &code);
    };
    heap::countFrom();
    loadRich();
    const int64_t total = heap::stopFailing();
    ASSERT_EQ(code, LUM_OK) << buffer;
    void* before = cell;
    heap::failFrom(total / 2, true);
    loadRich();
    heap::stopFailing();
    EXPECT_EQ(code, LUM_ERR_UNEXPECTED);
    EXPECT_STREQ(buffer, "Unexpected exception");
    EXPECT_EQ(cell, before);
    void* args[4] = {nullptr, nullptr, nullptr, nullptr};
    void* root = nullptr;
    code = 0;
    lumDocExecute(cell, LUM_DOC_DOCUMENT_ELEMENT, args, &root, buffer, &code);
    EXPECT_EQ(code, LUM_OK);
    EXPECT_NE(root, nullptr);
    loadRich();
    EXPECT_EQ(code, LUM_OK) << buffer;
    lumDocDelete(cell, buffer, &code);
}

}  // namespace
