// Document and node methods as an independent host sees them: every rule
// checked here is stated by the method tables (numbers, argument slots,
// result memory, messages and codes), called through the exports only.
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

constexpr int32_t kElement = 1;
constexpr int32_t kAttribute = 2;
constexpr int32_t kText = 3;
constexpr int32_t kCData = 4;
constexpr int32_t kEntity = 6;
constexpr int32_t kComment = 8;

class ConformanceMethods : public ::testing::Test {
protected:
    void SetUp() override {
        initLibraryOnce();
        LoadAnswer answer = document.loadMemory(
            "<r a=\"1\" bb=\"22\"><x/>text<y/><![CDATA[cd]]></r>");
        ASSERT_EQ(answer.code, 0) << answer.message;
        root = documentElementOf(document.cell);
        ASSERT_NE(root, nullptr);
    }

    // A fresh 64-bit result cell pre-set to a marker, to see whether a
    // method writes it.
    static void* marker() { return reinterpret_cast<void*>(uintptr_t{0x5a5a5a5a}); }

    std::string attributeNamesOfRoot() {
        char out[64] = "";
        int32_t limit = sizeof out;
        EXPECT_EQ(nodeCall(root, 12, {&limit}, out).code, 0);
        return out;
    }

    LibraryStarted started;  // before the first document is made
    HostDocument document;
    void* root = nullptr;
};

// ---- refusals by number ------------------------------------------------------

TEST_F(ConformanceMethods, NodeMethodNumbersFarOutOfRangeAreInvalid) {
    for (int32_t method : {-1, -100, 41, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = nodeCall(root, method, {}, nullptr);
        EXPECT_EQ(answer.code, 3) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(ConformanceMethods, DocumentMethodNumbersFarOutOfRangeUseCodeFour) {
    for (int32_t method : {-1, 40, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, 4) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(ConformanceMethods, RefusedDocumentMethodsSayNotValidOnXDocument) {
    for (int32_t method : {3, 6, 12, 13, 14, 15, 16, 23, 26, 27, 28, 29, 34, 35, 36, 37, 38}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, -1) << method;
        EXPECT_EQ(answer.message, "Method not valid on X-Document") << method;
    }
}

TEST_F(ConformanceMethods, DocumentMethodTwentyFiveIsDeprecatedLikeTwentyFour) {
    Answer answer = docCall(document.cell, 25, {}, nullptr);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "This method is deprecated. Please use CREATE-NODE-NAMESPACE");
}

TEST_F(ConformanceMethods, RefusalsByNumberLeaveTheResultAlone) {
    void* cell = marker();
    nodeCall(root, 1, {}, &cell);
    nodeCall(root, 22, {}, &cell);
    docCall(document.cell, 3, {}, &cell);
    EXPECT_EQ(cell, marker());
}

// ---- document methods ----------------------------------------------------------

TEST_F(ConformanceMethods, CreateNodeWritesNothingWhileTheHostCodeIsSet) {
    const char* name = "e";
    int32_t type = kElement;
    void* args[] = {const_cast<char*>(name), &type};
    void* cell = marker();
    ErrorSlot slot;
    slot.code = 99;
    lumDocExecute(document.cell, 1, args, &cell, slot.buffer, &slot.code);
    EXPECT_EQ(cell, marker());
    EXPECT_EQ(slot.code, 99);
}

TEST_F(ConformanceMethods, CreateAttributeWithEmptyNameIsAnInvalidCharacter) {
    const char* name = "";
    int32_t type = kAttribute;
    void* cell = marker();
    Answer answer = docCall(document.cell, 1, {const_cast<char*>(name), &type}, &cell);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(cell, marker());
}

TEST_F(ConformanceMethods, CreateNodeTypesZeroAndThirteenAreNotSupported) {
    for (int32_t type : {0, 13, -2}) {
        const char* name = "n";
        void* cell = marker();
        Answer answer = docCall(document.cell, 1, {const_cast<char*>(name), &type}, &cell);
        EXPECT_EQ(answer.code, -1) << type;
        EXPECT_EQ(answer.message, "Not supported") << type;
        EXPECT_EQ(cell, marker()) << type;
    }
}

TEST_F(ConformanceMethods, CreatedTextCDataAndCommentNodesStartEmpty) {
    for (int32_t type : {kText, kCData, kComment}) {
        void* node = createNode(document.cell, "ignored", type);
        ASSERT_NE(node, nullptr) << type;
        EXPECT_EQ(typeOf(node), type);
        EXPECT_EQ(valueOf(node), "") << type;
    }
}

TEST_F(ConformanceMethods, CreatedProcessingInstructionTakesTheNameAsTarget) {
    void* pi = createNode(document.cell, "tgt", 7);
    ASSERT_NE(pi, nullptr);
    EXPECT_EQ(nameOf(pi), "tgt");
    EXPECT_EQ(valueOf(pi), "");
}

TEST_F(ConformanceMethods, CreateNodeWithNamespaceRefusesOtherTypes) {
    const char* uri = "urn:u";
    const char* qname = "p:e";
    for (int32_t type : {0, 3, 8, 9}) {
        void* cell = marker();
        Answer answer = docCall(document.cell, 30,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &cell);
        EXPECT_EQ(answer.code, 7) << type;
        EXPECT_EQ(answer.message, "Method not valid on the Node type") << type;
        EXPECT_EQ(cell, marker()) << type;
    }
}

TEST_F(ConformanceMethods, CreateNodeWithNamespaceTypeMinusOneWritesNothing) {
    const char* uri = "urn:u";
    const char* qname = "e";
    int32_t type = -1;
    void* cell = marker();
    Answer answer = docCall(document.cell, 30,
                            {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &cell);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(cell, marker());
}

TEST_F(ConformanceMethods, CreateNodeWithNamespaceMakesAttributesWithPrefixAndUri) {
    const char* uri = "urn:u";
    const char* qname = "p:at";
    int32_t type = kAttribute;
    void* attr = nullptr;
    Answer answer = docCall(document.cell, 30,
                            {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &attr);
    ASSERT_EQ(answer.code, 0) << answer.message;
    ASSERT_NE(attr, nullptr);
    EXPECT_EQ(typeOf(attr), kAttribute);
    char text[64] = "";
    int32_t limit = sizeof text;
    nodeCall(attr, 26, {&limit}, text);
    EXPECT_STREQ(text, "urn:u");
    nodeCall(attr, 27, {&limit}, text);
    EXPECT_STREQ(text, "p");
    nodeCall(attr, 28, {&limit}, text);
    EXPECT_STREQ(text, "at");
}

// A prefix without a namespace is a DOM namespace error (14), which reaches
// the host under the catch-all text with code 6.
TEST_F(ConformanceMethods, CreateNodeWithNamespacePrefixWithoutUriGivesTheCatchAllText) {
    const char* qname = "p:e";
    int32_t type = kElement;
    void* cell = marker();
    Answer answer = docCall(document.cell, 30, {nullptr, const_cast<char*>(qname), &type}, &cell);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

TEST_F(ConformanceMethods, DocumentChildIndexNegativeIsInvalidAndWritesNull) {
    int32_t index = -1;
    void* cell = marker();
    Answer answer = docCall(document.cell, 8, {&index}, &cell);
    EXPECT_EQ(answer.code, 5);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(cell, nullptr);
}

TEST_F(ConformanceMethods, DocumentChildIndexZeroIsTheRoot) {
    int32_t index = 0;
    void* cell = nullptr;
    Answer answer = docCall(document.cell, 8, {&index}, &cell);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(cell, root);
}

TEST_F(ConformanceMethods, EmptyDocumentHasNoDocumentElement) {
    HostDocument empty;
    void* cell = marker();
    Answer answer = docCall(empty.cell, 4, {}, &cell);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(cell, nullptr);
}

TEST_F(ConformanceMethods, ForwardedMethodsAnswerForTheDocumentNode) {
    int32_t count = -1;
    EXPECT_EQ(docCall(document.cell, 5, {}, &count).code, 0);
    EXPECT_EQ(count, 1);
    int32_t type = 0;
    EXPECT_EQ(docCall(document.cell, 18, {}, &type).code, 0);
    EXPECT_EQ(type, 9);
    char name[32] = "x";
    int32_t limit = sizeof name;
    EXPECT_EQ(docCall(document.cell, 21, {&limit}, name).code, 0);
    EXPECT_STREQ(name, "#document");
    void* parent = marker();
    EXPECT_EQ(docCall(document.cell, 7, {}, &parent).code, 0);
    EXPECT_EQ(parent, nullptr);
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 4242);
}

TEST_F(ConformanceMethods, ImportNodeShallowCopiesNoChildren) {
    HostDocument other;
    int32_t deep = 0;
    void* copy = nullptr;
    Answer answer = docCall(other.cell, 22, {root, &deep}, &copy);
    ASSERT_EQ(answer.code, 0) << answer.message;
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(nameOf(copy), "r");
    EXPECT_EQ(childCountOf(copy), 0);
    deep = 1;
    answer = docCall(other.cell, 22, {root, &deep}, &copy);
    ASSERT_EQ(answer.code, 0) << answer.message;
    EXPECT_EQ(childCountOf(copy), 4);
}

class NewDocumentWithType : public ConformanceMethods {
protected:
    void makeDocument(const char* publicId, const char* systemId) {
        const char* uri = "urn:u";
        const char* qname = "top";
        void* made = marker();
        Answer answer = docCall(document.cell, 31,
                                {const_cast<char*>(uri), const_cast<char*>(qname),
                                 const_cast<char*>(publicId), const_cast<char*>(systemId)},
                                &made);
        ASSERT_EQ(answer.code, 0) << answer.message;
        ASSERT_NE(made, nullptr);
        document.cell = made;
    }
    Answer id(int32_t method, int32_t limit, char* out) {
        return docCall(document.cell, method, {&limit}, out);
    }
};

TEST_F(NewDocumentWithType, DocumentTypeIdsAreReadBack) {
    makeDocument("pub", "sys");
    char out[16] = "junk";
    EXPECT_EQ(id(32, 16, out).code, 0);
    EXPECT_STREQ(out, "pub");
    EXPECT_EQ(id(33, 16, out).code, 0);
    EXPECT_STREQ(out, "sys");
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "top");
}

// The limit is the buffer's capacity with its NUL: three units need four.
TEST_F(NewDocumentWithType, DocumentTypeIdAsLongAsTheLimitIsTooLong) {
    makeDocument("pub", "sys");
    char out[16] = "junk";
    Answer answer = id(32, 3, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    EXPECT_EQ(id(33, 4, out).code, 0);
    EXPECT_STREQ(out, "sys");
}

TEST_F(NewDocumentWithType, MissingIdWithLimitZeroIsTooLong) {
    makeDocument(nullptr, nullptr);
    char out[4] = "xy";
    Answer answer = id(32, 0, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    EXPECT_EQ(id(33, 1, out).code, 0);
    EXPECT_STREQ(out, "");
}

TEST_F(ConformanceMethods, NewDocumentWithBadNameLeavesTheOldDocument) {
    const char* qname = "1bad";
    void* made = marker();
    Answer answer = docCall(document.cell, 31, {nullptr, const_cast<char*>(qname), nullptr, nullptr},
                            &made);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(documentElementOf(document.cell), root);
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(root, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 4242);
}

// ---- node methods ----------------------------------------------------------------

TEST_F(ConformanceMethods, AttributeValueOfAMissingNameLeavesTheResult) {
    const char* name = "zz";
    int32_t limit = 16;
    char out[16] = "keep";
    Answer answer = nodeCall(root, 13, {const_cast<char*>(name), &limit}, out);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(out, "keep");
}

TEST_F(ConformanceMethods, AttributeValueTooLongLeavesTheEmptyString) {
    const char* name = "bb";
    int32_t limit = 2;
    char out[16] = "keep";
    Answer answer = nodeCall(root, 13, {const_cast<char*>(name), &limit}, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    limit = 3;
    EXPECT_EQ(nodeCall(root, 13, {const_cast<char*>(name), &limit}, out).code, 0);
    EXPECT_STREQ(out, "22");
}

// The limit of the string methods is read unsigned: -1 is never too small.
TEST_F(ConformanceMethods, NegativeLimitNeverCountsAsTooSmall) {
    int32_t limit = -1;
    char out[16] = "";
    EXPECT_EQ(nodeCall(root, 21, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "r");
    const char* name = "a";
    EXPECT_EQ(nodeCall(root, 13, {const_cast<char*>(name), &limit}, out).code, 0);
    EXPECT_STREQ(out, "1");
}

TEST_F(ConformanceMethods, AttributeNamesOfANodeWithoutMapLeaveTheResult) {
    void* text = childOf(root, 1);
    int32_t limit = -1;
    char out[16] = "keep";
    Answer answer = nodeCall(text, 12, {&limit}, out);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(out, "keep");
}

TEST_F(ConformanceMethods, AttributeNamesOfAnElementWithoutAttributesIsEmpty) {
    void* x = childOf(root, 0);
    int32_t limit = 0;
    char out[16] = "keep";
    Answer answer = nodeCall(x, 12, {&limit}, out);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(out, "");
}

TEST_F(ConformanceMethods, ElementOnlyMethodsRefuseOtherTypesWithoutTouchingTheResult) {
    void* text = childOf(root, 1);
    const char* a = "a";
    const char* v = "v";
    int32_t limit = 16;
    char out[16] = "keep";
    auto expectRefused = [&](int32_t method, std::initializer_list<void*> args) {
        Answer answer = nodeCall(text, method, args, out);
        EXPECT_EQ(answer.code, 7) << method;
        EXPECT_EQ(answer.message, "Invalid node type") << method;
        EXPECT_STREQ(out, "keep") << method;
    };
    expectRefused(14, {const_cast<char*>(a), const_cast<char*>(v)});
    expectRefused(15, {const_cast<char*>(a)});
    expectRefused(16, {root});
    expectRefused(23, {});
    expectRefused(34, {root});
    expectRefused(35, {const_cast<char*>(a)});
    expectRefused(39, {nullptr, const_cast<char*>(a), &limit});
    EXPECT_EQ(valueOf(text), "text");
}

TEST_F(ConformanceMethods, AttributeNodeByNameMissingLeavesTheResult) {
    const char* name = "nope";
    void* cell = marker();
    EXPECT_EQ(nodeCall(root, 35, {const_cast<char*>(name)}, &cell).code, 0);
    EXPECT_EQ(cell, marker());
    const char* bb = "bb";
    EXPECT_EQ(nodeCall(root, 35, {const_cast<char*>(bb)}, &cell).code, 0);
    ASSERT_NE(cell, marker());
    EXPECT_EQ(typeOf(cell), kAttribute);
    EXPECT_EQ(valueOf(cell), "22");
}

TEST_F(ConformanceMethods, NamespacedAttributeEmptyValueReturnsBeforeTheLimit) {
    const char* local = "missing";
    int32_t limit = 0;
    char out[8] = "keep";
    Answer answer = nodeCall(root, 39, {nullptr, const_cast<char*>(local), &limit}, out);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(out, "");
}

TEST_F(ConformanceMethods, NamespacedAttributeValueAtTheLimitIsTooLong) {
    const char* local = "bb";
    int32_t limit = 2;
    char out[8] = "keep";
    Answer answer = nodeCall(root, 39, {nullptr, const_cast<char*>(local), &limit}, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    limit = 3;
    EXPECT_EQ(nodeCall(root, 39, {nullptr, const_cast<char*>(local), &limit}, out).code, 0);
    EXPECT_STREQ(out, "22");
}

TEST_F(ConformanceMethods, NodeValueOfAnElementIsEmpty) {
    int32_t limit = 0;
    char out[8] = "keep";
    EXPECT_EQ(nodeCall(root, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "");
}

// Limit 1: the first byte is written, then the counter reaches 0.
TEST_F(ConformanceMethods, NodeValueWithLimitOneLeavesOneByte) {
    void* text = childOf(root, 1);
    int32_t limit = 1;
    char out[8];
    std::memset(out, '#', sizeof out);
    Answer answer = nodeCall(text, 19, {&limit}, out);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_EQ(std::string(out, 3), "t##");
}

TEST_F(ConformanceMethods, WholeValueOfAnElementSetsBothCellsToZero) {
    char* text = reinterpret_cast<char*>(marker());
    int32_t length = 77;
    EXPECT_EQ(nodeCall(root, 36, {&text, &length}, nullptr).code, 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0);
    // Giving back a null string leaves the cell alone.
    EXPECT_EQ(nodeCall(root, 38, {&text}, nullptr).code, 0);
    EXPECT_EQ(text, nullptr);
}

TEST_F(ConformanceMethods, WholeValueCountsBytesNotUnits) {
    void* text = childOf(root, 1);
    const char* value = "\xC3\xA9t\xC3\xA9";  // two-byte letters in UTF-8
    ASSERT_EQ(nodeCall(text, 20, {const_cast<char*>(value)}, nullptr).code, 0);
    char* whole = nullptr;
    int32_t length = 0;
    ASSERT_EQ(nodeCall(text, 36, {&whole, &length}, nullptr).code, 0);
    ASSERT_NE(whole, nullptr);
    EXPECT_EQ(length, 5);
    EXPECT_STREQ(whole, value);
    EXPECT_EQ(nodeCall(text, 38, {&whole}, nullptr).code, 0);
    EXPECT_EQ(whole, nullptr);
}

TEST_F(ConformanceMethods, CountedValueWithZeroOrNegativeCountIsEmpty) {
    void* text = childOf(root, 1);
    const char* bytes = "abc";
    for (int32_t count : {0, -5}) {
        ASSERT_EQ(nodeCall(text, 20, {const_cast<char*>("old")}, nullptr).code, 0);
        Answer answer = nodeCall(text, 37, {const_cast<char*>(bytes), &count}, nullptr);
        EXPECT_EQ(answer.code, 0) << count;
        EXPECT_EQ(valueOf(text), "") << count;
    }
}

TEST_F(ConformanceMethods, CountedValueOnCDataRefusesTheClosingSequence) {
    void* cdata = childOf(root, 3);
    ASSERT_EQ(typeOf(cdata), kCData);
    const char bytes[] = {'a', ']', ']', '>', 'z'};
    int32_t count = 4;
    Answer answer = nodeCall(cdata, 37, {const_cast<char*>(bytes), &count}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(valueOf(cdata), "cd");
    count = 3;
    EXPECT_EQ(nodeCall(cdata, 37, {const_cast<char*>(bytes), &count}, nullptr).code, 0);
    EXPECT_EQ(valueOf(cdata), "a]]");
}

TEST_F(ConformanceMethods, TextNodesTakeTheClosingSequence) {
    void* text = childOf(root, 1);
    const char* value = "a]]>b";
    EXPECT_EQ(nodeCall(text, 20, {const_cast<char*>(value)}, nullptr).code, 0);
    EXPECT_EQ(valueOf(text), "a]]>b");
}

TEST_F(ConformanceMethods, InsertBeforeWithNullReferenceAppends) {
    void* made = createNode(document.cell, "z", kElement);
    EXPECT_EQ(nodeCall(root, 2, {made, nullptr}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 5);
    EXPECT_EQ(childOf(root, 4), made);
    int32_t position = 99;
    EXPECT_EQ(nodeCall(made, 6, {}, &position).code, 0);
    EXPECT_EQ(position, 4);
}

TEST_F(ConformanceMethods, InsertingAnAncestorIsAHierarchyError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, 2, {root, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
}

TEST_F(ConformanceMethods, InsertingANodeOfAnotherDocumentKeepsTheMisspelledText) {
    HostDocument other;
    void* foreign = createNode(other.cell, "f", kElement);
    Answer answer = nodeCall(root, 2, {foreign, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "A node was used in a different document than the one the created it");
}

TEST_F(ConformanceMethods, RemovedChildStaysAliveAndCanComeBack) {
    void* x = childOf(root, 0);
    EXPECT_EQ(nodeCall(root, 10, {x}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 3);
    EXPECT_EQ(nameOf(x), "x");
    EXPECT_EQ(nodeCall(root, 2, {x, nullptr}, nullptr).code, 0);
    EXPECT_EQ(childOf(root, 3), x);
}

TEST_F(ConformanceMethods, RemovingANonChildIsANotFoundError) {
    void* x = childOf(root, 0);
    Answer answer = nodeCall(x, 10, {root}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

TEST_F(ConformanceMethods, ReplaceChildPutsTheNewNodeInPlace) {
    void* y = childOf(root, 2);
    void* made = createNode(document.cell, "w", kElement);
    EXPECT_EQ(nodeCall(root, 11, {made, y}, nullptr).code, 0);
    EXPECT_EQ(childOf(root, 2), made);
    void* parent = marker();
    EXPECT_EQ(nodeCall(y, 7, {}, &parent).code, 0);
    EXPECT_EQ(parent, nullptr);
}

TEST_F(ConformanceMethods, SetAttributeWithABadNameIsAnInvalidCharacter) {
    const char* name = "1a";
    const char* value = "v";
    Answer answer =
        nodeCall(root, 14, {const_cast<char*>(name), const_cast<char*>(value)}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(ConformanceMethods, SetAndRemoveAttributeByName) {
    const char* name = "c";
    const char* value = "3";
    ASSERT_EQ(nodeCall(root, 14, {const_cast<char*>(name), const_cast<char*>(value)}, nullptr).code,
              0);
    char out[32] = "";
    int32_t limit = sizeof out;
    nodeCall(root, 12, {&limit}, out);
    EXPECT_STREQ(out, "a,bb,c");
    ASSERT_EQ(nodeCall(root, 15, {const_cast<char*>("a")}, nullptr).code, 0);
    nodeCall(root, 12, {&limit}, out);
    EXPECT_STREQ(out, "bb,c");
}

TEST_F(ConformanceMethods, RemovingAnAttributeOfAnotherElementIsNotFound) {
    void* x = childOf(root, 0);
    void* attr = nullptr;
    ASSERT_EQ(nodeCall(root, 35, {const_cast<char*>("a")}, &attr).code, 0);
    Answer answer = nodeCall(x, 16, {attr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message,
              "An attempt was made to reference a node in a context where it does not exist");
}

TEST_F(ConformanceMethods, AttributeNodeInUseElsewhereIsRefused) {
    void* x = childOf(root, 0);
    void* attr = nullptr;
    ASSERT_EQ(nodeCall(root, 35, {const_cast<char*>("a")}, &attr).code, 0);
    Answer answer = nodeCall(x, 34, {attr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "Attribute already exists");
}

TEST_F(ConformanceMethods, SetAttributeNodeReplacesTheSameName) {
    void* attr = createNode(document.cell, "a", kAttribute);
    ASSERT_EQ(nodeCall(attr, 20, {const_cast<char*>("new")}, nullptr).code, 0);
    ASSERT_EQ(nodeCall(root, 34, {attr}, nullptr).code, 0);
    char out[16] = "";
    int32_t limit = sizeof out;
    ASSERT_EQ(nodeCall(root, 13, {const_cast<char*>("a"), &limit}, out).code, 0);
    EXPECT_STREQ(out, "new");
}

TEST_F(ConformanceMethods, NormalizeJoinsAdjacentText) {
    void* extra = createNode(document.cell, "", kText);
    ASSERT_EQ(nodeCall(extra, 20, {const_cast<char*>("more")}, nullptr).code, 0);
    void* y = childOf(root, 2);
    ASSERT_EQ(nodeCall(root, 2, {extra, y}, nullptr).code, 0);
    ASSERT_EQ(childCountOf(root), 5);
    EXPECT_EQ(nodeCall(root, 23, {}, nullptr).code, 0);
    EXPECT_EQ(childCountOf(root), 4);
    EXPECT_EQ(valueOf(childOf(root, 1)), "textmore");
}

// A prefix on a node made without namespace support is a namespace error:
// the catch-all text, code 6.
TEST_F(ConformanceMethods, SetPrefixWithoutNamespaceGivesTheCatchAllText) {
    const char* prefix = "p";
    Answer answer = nodeCall(root, 29, {const_cast<char*>(prefix)}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
}

TEST_F(ConformanceMethods, SetPrefixOnANamespacedElementRenamesIt) {
    const char* uri = "urn:u";
    const char* qname = "e";
    int32_t type = kElement;
    void* element = nullptr;
    ASSERT_EQ(docCall(document.cell, 30, {const_cast<char*>(uri), const_cast<char*>(qname), &type},
                      &element)
                  .code,
              0);
    EXPECT_EQ(nodeCall(element, 29, {const_cast<char*>("q")}, nullptr).code, 0);
    EXPECT_EQ(nameOf(element), "q:e");
}

TEST_F(ConformanceMethods, CloneShallowAndDeep) {
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

TEST_F(ConformanceMethods, EntityNodeMadeByTheDocumentHasItsName) {
    void* entity = createNode(document.cell, "ent", kEntity);
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(typeOf(entity), kEntity);
    EXPECT_EQ(nameOf(entity), "ent");
}

TEST_F(ConformanceMethods, NodeDeleteDoesNothing) {
    lumNodeDelete();
    EXPECT_EQ(nameOf(root), "r");
}

// The limit of method 19 is a byte counter read unsigned: -1 never stops it.
TEST_F(ConformanceMethods, NodeValueWithNegativeLimitArrivesWhole) {
    void* text = childOf(root, 1);
    int32_t limit = -1;
    char out[16];
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(nodeCall(text, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "text");
}

TEST_F(ConformanceMethods, DocumentRefusesASecondRootThroughForwardedInsert) {
    void* second = createNode(document.cell, "second", kElement);
    Answer answer = docCall(document.cell, 2, {second, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    int32_t count = 0;
    docCall(document.cell, 5, {}, &count);
    EXPECT_EQ(count, 1);
}

TEST_F(ConformanceMethods, ForwardedRemoveAndReplaceOnTheDocument) {
    void* other = createNode(document.cell, "other", kElement);
    ASSERT_EQ(docCall(document.cell, 11, {other, root}, nullptr).code, 0);
    EXPECT_EQ(documentElementOf(document.cell), other);
    ASSERT_EQ(docCall(document.cell, 10, {other}, nullptr).code, 0);
    EXPECT_EQ(documentElementOf(document.cell), nullptr);
    int32_t index = 0;
    void* cell = marker();
    EXPECT_EQ(docCall(document.cell, 8, {&index}, &cell).code, 5);
    EXPECT_EQ(cell, nullptr);
}

TEST_F(ConformanceMethods, ForwardedValueMethodsOnTheDocumentNode) {
    char out[8] = "keep";
    int32_t limit = 8;
    EXPECT_EQ(docCall(document.cell, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(docCall(document.cell, 20, {const_cast<char*>("v")}, nullptr).code, 0);
    EXPECT_EQ(docCall(document.cell, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "");
}

TEST_F(ConformanceMethods, CreatedDocumentTypeAndNotationCarryTheirNames) {
    void* type = createNode(document.cell, "dt", 10);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(typeOf(type), 10);
    EXPECT_EQ(nameOf(type), "dt");
    void* notation = createNode(document.cell, "nt", 12);
    ASSERT_NE(notation, nullptr);
    EXPECT_EQ(typeOf(notation), 12);
    EXPECT_EQ(nameOf(notation), "nt");
    void* reference = createNode(document.cell, "er", 5);
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(typeOf(reference), 5);
    EXPECT_EQ(nameOf(reference), "er");
}

// setAttributeNode answers a node that is not an attribute as the DOM does:
// a wrong-document error (DOM code 4), with its misspelled text.
TEST_F(ConformanceMethods, SettingANonAttributeNodeIsAWrongDocumentError) {
    void* x = childOf(root, 0);
    for (void* notAttribute : {x, childOf(root, 1), static_cast<void*>(nullptr)}) {
        Answer answer = nodeCall(root, 34, {notAttribute}, nullptr);
        EXPECT_EQ(answer.code, 6);
        EXPECT_EQ(answer.message,
                  "A node was used in a different document than the one the created it");
    }
    EXPECT_EQ(childCountOf(root), 4);
    EXPECT_EQ(attributeNamesOfRoot(), "a,bb");
}

// Unlike method 1, method 30 writes the new address whatever the host's
// code holds; and a success leaves the host's buffer and code as they were.
TEST_F(ConformanceMethods, CreateNodeWithNamespaceWritesEvenWhileTheHostCodeIsSet) {
    const char* uri = "urn:u";
    const char* qname = "e";
    int32_t type = kElement;
    void* args[] = {const_cast<char*>(uri), const_cast<char*>(qname), &type};
    void* cell = nullptr;
    ErrorSlot slot;
    std::strcpy(slot.buffer, "host text");
    slot.code = 99;
    lumDocExecute(document.cell, 30, args, &cell, slot.buffer, &slot.code);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(nameOf(cell), "e");
    EXPECT_EQ(slot.code, 99);
    EXPECT_EQ(slot.text(), "host text");
}

TEST_F(ConformanceMethods, SuccessfulNodeMethodLeavesBufferAndCode) {
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

}  // namespace
