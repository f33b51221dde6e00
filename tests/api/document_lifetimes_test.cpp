// Making and deleting documents in a loop, every way a host makes them,
// leaves the process heap where it was: nothing a document took outlives
// it, Xerces' blocks included.
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
#define LUMTEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUMTEST_ASAN 1
#endif
#endif
#if defined(LUMTEST_ASAN)
// From the sanitizer runtime (its header is not installed with every
// compiler).
extern "C" size_t __sanitizer_get_current_allocated_bytes(void);
#elif defined(__GLIBC__)
#include <malloc.h>
#endif

#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

// Bytes the process has allocated and not freed; -1 where it cannot be read.
long long heapInUse() {
#if defined(LUMTEST_ASAN)
    return static_cast<long long>(__sanitizer_get_current_allocated_bytes());
#elif defined(__GLIBC__)
    // Small blocks in the arenas plus the large ones malloc maps on its own.
    struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks + info.hblkhd);
#else
    return -1;
#endif
}

#if defined(LUMTEST_ASAN)
constexpr int kRounds = 10000;
#else
constexpr int kRounds = 100000;
#endif

// Runs `round` a few times to reach a steady state, then kRounds times, and
// answers the heap growth per round.
template <class Round>
double growthPerRound(Round&& round) {
    for (int i = 0; i < 200; ++i) round(i);
    long long before = heapInUse();
    for (int i = 0; i < kRounds; ++i) round(i);
    long long after = heapInUse();
    return static_cast<double>(after - before) / kRounds;
}

// Less than a byte per round: a leak of even one small block per document
// would show as 16 or more.
constexpr double kFlat = 1.0;

class DocumentLifetimes : public ::testing::Test {
protected:
    void SetUp() override {
        if (heapInUse() < 0) GTEST_SKIP() << "no heap counter on this platform";
    }

    static void* newDocument() {
        void* cell = nullptr;
        ErrorSlot error;
        lumInitDocument(&cell, 7, error.buffer, &error.code);
        EXPECT_EQ(error.code, LUM_OK);
        return cell;
    }

    static void deleteDocument(void* cell) {
        ErrorSlot error;
        lumDocDelete(cell, error.buffer, &error.code);
        EXPECT_EQ(error.code, LUM_OK);
    }

    LibraryStarted started;
};

TEST_F(DocumentLifetimes, InitialisedDocumentsDeletedLeaveNoGrowth) {
    double growth = growthPerRound([](int) { deleteDocument(newDocument()); });
    EXPECT_LT(growth, kFlat);
}

TEST_F(DocumentLifetimes, NewDocumentsWithATypeDeletedLeaveNoGrowth) {
    double growth = growthPerRound([](int) {
        void* cell = newDocument();
        void* made = nullptr;
        Answer answer = docCall(cell, LUM_DOC_NEW_WITH_DOCTYPE,
                                {const_cast<char*>("urn:x"), const_cast<char*>("p:root"),
                                 const_cast<char*>("-//P//EN"), const_cast<char*>("root.dtd")},
                                &made);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
        deleteDocument(made != nullptr ? made : cell);
    });
    EXPECT_LT(growth, kFlat);
}

TEST_F(DocumentLifetimes, RefusedNewDocumentsWithATypeLeaveNoGrowth) {
    double growth = growthPerRound([](int) {
        void* cell = newDocument();
        void* made = nullptr;
        // A prefix without a namespace: the namespace error, and the host's
        // document stays.
        Answer answer = docCall(cell, LUM_DOC_NEW_WITH_DOCTYPE,
                                {nullptr, const_cast<char*>("p:r"), nullptr, nullptr}, &made);
        EXPECT_EQ(answer.code, LUM_ERR_DOM);
        EXPECT_EQ(made, nullptr);
        deleteDocument(cell);
    });
    EXPECT_LT(growth, kFlat);
}

TEST_F(DocumentLifetimes, LoadsIntoTheSameCellLeaveNoGrowth) {
    HostDocument document;
    double growth = growthPerRound([&](int i) {
        std::string xml = "<r a='" + std::to_string(i % 10) + "'><c>text</c><!--n--><?p i?></r>";
        EXPECT_EQ(document.loadMemory(xml).code, LUM_OK);
    });
    EXPECT_LT(growth, kFlat);
}

TEST_F(DocumentLifetimes, DocumentsFilledByImportsLeaveNoGrowth) {
    HostDocument source;
    ASSERT_EQ(source.loadMemory("<r><a x='1'>one<b/>two</a><a x='2'/><!--c--></r>").code, LUM_OK);
    void* from = childOf(documentElementOf(source.cell), 0);
    double growth = growthPerRound([&](int) {
        void* cell = newDocument();
        void* root = createNode(cell, "root", LUM_NODE_ELEMENT);
        docCall(cell, LUM_DOC_INSERT_BEFORE, {root, nullptr}, nullptr);
        for (int k = 0; k < 4; ++k) {
            int32_t deep = k % 2;
            void* copy = nullptr;
            docCall(cell, LUM_DOC_IMPORT_NODE, {from, &deep}, &copy);
            appendChild(root, copy);
        }
        deleteDocument(cell);
    });
    EXPECT_LT(growth, kFlat);
}

}  // namespace

namespace {

// The name of the new document's type is checked before the document is
// made, with the answers Xerces gives for a type of that name.
struct TypeNameCase {
    const char* namespaceURI;
    const char* qualifiedName;
    int32_t code;
    const char* message;
};

class NewDocumentTypeNames : public ::testing::TestWithParam<TypeNameCase> {
protected:
    LibraryStarted started;
    HostDocument document;
};

TEST_P(NewDocumentTypeNames, AnswerAsTheTypesOwnChecks) {
    const TypeNameCase& c = GetParam();
    void* made = reinterpret_cast<void*>(1);
    Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                            {const_cast<char*>(c.namespaceURI), const_cast<char*>(c.qualifiedName),
                             nullptr, nullptr},
                            &made);
    EXPECT_EQ(answer.code, c.code) << c.qualifiedName;
    EXPECT_EQ(answer.message, c.message) << c.qualifiedName;
    if (c.code == LUM_OK) {
        EXPECT_NE(made, nullptr);
        document.cell = made;
    } else {
        EXPECT_EQ(made, nullptr);
    }
}

constexpr const char* kInvalid = "An invalid character was specified";
// The namespace error reaches hosts under the catch-all text (code 6).
constexpr const char* kNamespace = "XML Parser not initialized";

INSTANTIATE_TEST_SUITE_P(
    Names, NewDocumentTypeNames,
    ::testing::Values(TypeNameCase{"urn:x", "p:r", LUM_OK, ""},
                      TypeNameCase{nullptr, "r", LUM_OK, ""},
                      // No name at all is refused like the empty one.
                      TypeNameCase{nullptr, nullptr, LUM_ERR_DOM, kInvalid},
                      TypeNameCase{nullptr, "", LUM_ERR_DOM, kInvalid},
                      TypeNameCase{"urn:x", "1r", LUM_ERR_DOM, kInvalid},
                      TypeNameCase{"urn:x", "a:", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", ":a", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", "a:b:c", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", "a:1b", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", "a:-b", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{nullptr, "p:r", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", "xml:r", LUM_ERR_DOM, kNamespace},
                      TypeNameCase{"urn:x", "xmlns", LUM_OK, ""}));

}  // namespace
