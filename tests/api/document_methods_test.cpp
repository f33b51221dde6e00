// Document methods (lumDocExecute), called as a host does.
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

class DocumentMethods : public ::testing::Test {
protected:
    LibraryStarted started;
    HostDocument document{1001};
};

class DocumentMethodsOnMixedContent : public MixedContentTree {};

char* text(const char* value) { return const_cast<char*>(value); }


// ---- method numbers ------------------------------------------------------------

class DocumentMethodNumber : public DocumentMethods,
                             public ::testing::WithParamInterface<int32_t> {};

TEST_P(DocumentMethodNumber, OutOfRangeIsInvalidWithCode4) {
    char result[16] = "untouched";
    Answer answer = docCall(document.cell, GetParam(), {}, result);
    EXPECT_EQ(answer.code, 4);
    EXPECT_EQ(answer.message, "Invalid method number");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, DocumentMethodNumber,
                         ::testing::Values(0, 39, -1, 40, INT32_MIN, INT32_MAX));

class NotForDocuments : public DocumentMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(NotForDocuments, MethodNotValidOnXDocumentWithCodeMinus1) {
    char result[16] = "untouched";
    Answer answer = docCall(document.cell, GetParam(), {}, result);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "Method not valid on X-Document");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, NotForDocuments,
                         ::testing::Values(3, 6, 12, 13, 14, 15, 16, 23, 26, 27, 28, 29, 34, 35,
                                           36, 37, 38));

class Deprecated : public DocumentMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(Deprecated, PointsToCreateNodeNamespaceWithCodeMinus1) {
    Answer answer = docCall(document.cell, GetParam(), {}, nullptr);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "This method is deprecated. Please use CREATE-NODE-NAMESPACE");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, Deprecated, ::testing::Values(24, 25));

TEST_F(DocumentMethodsOnMixedContent, DocumentMethodNumbersFarOutOfRangeUseCodeFour) {
    for (int32_t method : {-1, 40, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, 4) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(DocumentMethodsOnMixedContent, RefusedDocumentMethodsSayNotValidOnXDocument) {
    for (int32_t method : {3, 6, 12, 13, 14, 15, 16, 23, 26, 27, 28, 29, 34, 35, 36, 37, 38}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, -1) << method;
        EXPECT_EQ(answer.message, "Method not valid on X-Document") << method;
    }
}

TEST_F(DocumentMethodsOnMixedContent, DocumentMethodTwentyFiveIsDeprecatedLikeTwentyFour) {
    Answer answer = docCall(document.cell, 25, {}, nullptr);
    EXPECT_EQ(answer.code, -1);
    EXPECT_EQ(answer.message, "This method is deprecated. Please use CREATE-NODE-NAMESPACE");
}

TEST_F(DocumentMethods, RefusedNumbersReadNoArgumentsAndNoDocument) {
    ErrorSlot error;
    lumDocExecute(nullptr, 39, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, 4);
    error.clear();
    lumDocExecute(nullptr, 3, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, -1);
}

TEST_F(DocumentMethods, NullDocumentIsAnUnexpectedException) {
    void* element = nullptr;
    Answer answer = docCall(nullptr, 4, {}, &element);
    EXPECT_EQ(answer.code, 13);
    EXPECT_EQ(answer.message, "Unexpected exception");
}

// ---- method 1 ------------------------------------------------------------------

struct CreatedType {
    int32_t type;
    const char* name;  // given to method 1
    const char* nodeName;
    const char* typeName;
};

class CreateEveryType : public DocumentMethods, public ::testing::WithParamInterface<CreatedType> {};

TEST_P(CreateEveryType, NameValueAndTypeReadBack) {
    const CreatedType& c = GetParam();
    void* node = createNode(document.cell, c.name, c.type);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(typeOf(node), c.type);
    EXPECT_EQ(nameOf(node), c.nodeName);
    EXPECT_EQ(valueOf(node), "");
    char name[32];
    lumTypeToChar(typeOf(node), name);
    EXPECT_STREQ(name, c.typeName);
    // Unattached.
    void* parent = reinterpret_cast<void*>(1);
    nodeCall(node, 7, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    DocumentMethods, CreateEveryType,
    ::testing::Values(CreatedType{1, "el", "el", "ELEMENT"},
                      CreatedType{2, "at", "at", "ATTRIBUTE"},
                      CreatedType{3, "ignored", "#text", "TEXT"},
                      CreatedType{4, "ignored", "#cdata-section", "CDATA-SECTION"},
                      CreatedType{5, "ent", "ent", "ENTITY-REFERENCE"},
                      CreatedType{6, "ent", "ent", "ENTITY"},
                      CreatedType{7, "target", "target", "PROCESSING-INSTRUCTION"},
                      CreatedType{8, "ignored", "#comment", "COMMENT"},
                      CreatedType{10, "doc", "doc", "DOCUMENT-TYPE"},
                      CreatedType{11, "ignored", "#document-fragment", "DOCUMENT-FRAGMENT"},
                      CreatedType{12, "nota", "nota", "NOTATION"}),
    [](const ::testing::TestParamInfo<CreatedType>& info) {
        return "Type" + std::to_string(info.param.type);
    });

TEST_F(DocumentMethodsOnMixedContent, CreatedTextCDataAndCommentNodesStartEmpty) {
    for (int32_t type : {kText, kCData, kComment}) {
        void* node = createNode(document.cell, "ignored", type);
        ASSERT_NE(node, nullptr) << type;
        EXPECT_EQ(typeOf(node), type);
        EXPECT_EQ(valueOf(node), "") << type;
    }
}

TEST_F(DocumentMethodsOnMixedContent, CreatedProcessingInstructionTakesTheNameAsTarget) {
    void* pi = createNode(document.cell, "tgt", 7);
    ASSERT_NE(pi, nullptr);
    EXPECT_EQ(nameOf(pi), "tgt");
    EXPECT_EQ(valueOf(pi), "");
}

TEST_F(DocumentMethods, Method1TypeMinus1WritesANullAddressAndNoError) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = -1;
    Answer answer = docCall(document.cell, 1, {text("x"), &type}, &node);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(node, nullptr);
}

TEST_F(DocumentMethods, Method1ElementWithEmptyOrNullNameIsAnInvalidCharacter) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = 1;
    Answer answer = docCall(document.cell, 1, {text(""), &type}, &node);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
    EXPECT_EQ(docCall(document.cell, 1, {nullptr, &type}, &node).code, 6);
    type = 2;
    EXPECT_EQ(docCall(document.cell, 1, {nullptr, &type}, &node).code, 6);
}

TEST_F(DocumentMethodsOnMixedContent, CreateAttributeWithEmptyNameIsAnInvalidCharacter) {
    const char* name = "";
    int32_t type = kAttribute;
    void* cell = marker();
    Answer answer = docCall(document.cell, 1, {const_cast<char*>(name), &type}, &cell);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(cell, marker());
}

TEST_F(DocumentMethods, Method1DocumentTypeCodeIsNotSupported) {
    for (int32_t type : {9, 0, 13, -2}) {
        void* node = reinterpret_cast<void*>(1);
        Answer answer = docCall(document.cell, 1, {text("x"), &type}, &node);
        EXPECT_EQ(answer.code, -1) << type;
        EXPECT_EQ(answer.message, "Not supported");
        EXPECT_EQ(node, reinterpret_cast<void*>(1));
    }
}

TEST_F(DocumentMethods, Method1WritesNothingWhenTheHostCodeWasNotCleared) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = 1;
    void* slots[2] = {text("el"), &type};
    ErrorSlot error;
    error.code = 99;
    lumDocExecute(document.cell, 1, slots, &node, error.buffer, &error.code);
    EXPECT_EQ(error.code, 99);
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethods, Method1EntityReferenceWithABadNameIsADomError) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = 5;
    EXPECT_EQ(docCall(document.cell, 1, {text("1 bad"), &type}, &node).code, 6);
}

// ---- 4, 8, forwarded node methods ----------------------------------------------

TEST_F(DocumentMethods, Method4IsNullWithoutDocumentElement) {
    void* element = reinterpret_cast<void*>(1);
    EXPECT_EQ(docCall(document.cell, 4, {}, &element).code, 0);
    EXPECT_EQ(element, nullptr);
}

TEST_F(DocumentMethods, Method4GivesTheDocumentElementAsANode) {
    document.loadMemory("<top/>");
    void* element = documentElementOf(document.cell);
    EXPECT_EQ(element, static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(documentElement(document.cell)));
    EXPECT_EQ(nameOf(element), "top");
}

TEST_F(DocumentMethods, Method8IndexZeroOnAnEmptyDocumentIsInvalid) {
    void* child = reinterpret_cast<void*>(1);
    int32_t index = 0;
    Answer answer = docCall(document.cell, 8, {&index}, &child);
    EXPECT_EQ(answer.code, 5);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(child, nullptr);
}

TEST_F(DocumentMethodsOnMixedContent, DocumentChildIndexNegativeIsInvalidAndWritesNull) {
    int32_t index = -1;
    void* cell = marker();
    Answer answer = docCall(document.cell, 8, {&index}, &cell);
    EXPECT_EQ(answer.code, 5);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(cell, nullptr);
}

TEST_F(DocumentMethodsOnMixedContent, DocumentChildIndexZeroIsTheRoot) {
    int32_t index = 0;
    void* cell = nullptr;
    Answer answer = docCall(document.cell, 8, {&index}, &cell);
    EXPECT_EQ(answer.code, 0);
    EXPECT_EQ(cell, root);
}

TEST_F(DocumentMethods, Method8WalksTheDocumentsChildren) {
    document.loadMemory("<!--c--><top/><?pi?>");
    void* child = nullptr;
    int32_t index = 1;
    EXPECT_EQ(docCall(document.cell, 8, {&index}, &child).code, 0);
    EXPECT_EQ(nameOf(child), "top");
    index = -1;
    EXPECT_EQ(docCall(document.cell, 8, {&index}, &child).code, 5);
    index = 3;
    EXPECT_EQ(docCall(document.cell, 8, {&index}, &child).code, 5);
}

TEST_F(DocumentMethods, ForwardedMethodsActOnTheDocumentNode) {
    document.loadMemory("<!--c--><top/>");
    int32_t count = 0;
    EXPECT_EQ(docCall(document.cell, 5, {}, &count).code, 0);
    EXPECT_EQ(count, 2);
    int32_t type = 0;
    EXPECT_EQ(docCall(document.cell, 18, {}, &type).code, 0);
    EXPECT_EQ(type, 9);
    char name[32];
    int32_t limit = 32;
    EXPECT_EQ(docCall(document.cell, 21, {&limit}, name).code, 0);
    EXPECT_STREQ(name, "#document");
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 1001);
    void* parent = reinterpret_cast<void*>(1);
    EXPECT_EQ(docCall(document.cell, 7, {}, &parent).code, 0);
    EXPECT_EQ(parent, nullptr);
    char value[8] = "x";
    EXPECT_EQ(docCall(document.cell, 19, {&limit}, value).code, 0);
    EXPECT_STREQ(value, "");
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedMethodsAnswerForTheDocumentNode) {
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

TEST_F(DocumentMethods, ForwardedTreeMethodsChangeTheDocument) {
    void* element = createNode(document.cell, "made", 1);
    EXPECT_EQ(docCall(document.cell, 2, {element, nullptr}, nullptr).code, 0);
    EXPECT_EQ(documentElementOf(document.cell), element);
    void* other = createNode(document.cell, "other", 1);
    EXPECT_EQ(docCall(document.cell, 11, {other, element}, nullptr).code, 0);
    EXPECT_EQ(documentElementOf(document.cell), other);
    EXPECT_EQ(docCall(document.cell, 10, {other}, nullptr).code, 0);
    EXPECT_EQ(documentElementOf(document.cell), nullptr);
    // A second element under the document is a hierarchy error.
    docCall(document.cell, 2, {other, nullptr}, nullptr);
    Answer answer = docCall(document.cell, 2, {element, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    int32_t deep = 1;
    void* copy = nullptr;
    EXPECT_EQ(docCall(document.cell, 9, {&deep}, &copy).code, 0);
    EXPECT_EQ(typeOf(copy), 9);
    // A cloned document is a node address, not a document cell: lumDocDelete
    // cannot take it, so the test releases it through the DOM itself.
    static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(copy)->release();
}

TEST_F(DocumentMethodsOnMixedContent, DocumentRefusesASecondRootThroughForwardedInsert) {
    void* second = createNode(document.cell, "second", kElement);
    Answer answer = docCall(document.cell, 2, {second, nullptr}, nullptr);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    int32_t count = 0;
    docCall(document.cell, 5, {}, &count);
    EXPECT_EQ(count, 1);
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedRemoveAndReplaceOnTheDocument) {
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

TEST_F(DocumentMethods, ForwardedSetValueOnTheDocumentIsIgnored) {
    EXPECT_EQ(docCall(document.cell, 20, {text("v")}, nullptr).code, 0);
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedValueMethodsOnTheDocumentNode) {
    char out[8] = "keep";
    int32_t limit = 8;
    EXPECT_EQ(docCall(document.cell, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(docCall(document.cell, 20, {const_cast<char*>("v")}, nullptr).code, 0);
    EXPECT_EQ(docCall(document.cell, 19, {&limit}, out).code, 0);
    EXPECT_STREQ(out, "");
}

// ---- 22 ------------------------------------------------------------------------

TEST_F(DocumentMethods, Method22ImportsShallowAndDeep) {
    HostDocument other;
    other.loadMemory("<src a=\"1\"><kid/></src>");
    void* source = documentElementOf(other.cell);
    void* copy = nullptr;
    int32_t deep = 1;
    EXPECT_EQ(docCall(document.cell, 22, {source, &deep}, &copy).code, 0);
    EXPECT_EQ(nameOf(copy), "src");
    EXPECT_EQ(childCountOf(copy), 1);
    int64_t handle = 0;
    nodeCall(copy, 17, {}, &handle);
    EXPECT_EQ(handle, 1001);
    int32_t shallow = 0;
    EXPECT_EQ(docCall(document.cell, 22, {source, &shallow}, &copy).code, 0);
    EXPECT_EQ(childCountOf(copy), 0);
}

TEST_F(DocumentMethodsOnMixedContent, ImportNodeShallowCopiesNoChildren) {
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

TEST_F(DocumentMethods, Method22OfADocumentIsUnexpected) {
    HostDocument other;
    void* copy = reinterpret_cast<void*>(1);
    int32_t deep = 1;
    Answer answer = docCall(document.cell, 22, {documentNode(other.cell), &deep}, &copy);
    EXPECT_EQ(answer.code, 13);
    EXPECT_EQ(answer.message, "Unexpected exception");
}

// ---- 30 ------------------------------------------------------------------------

TEST_F(DocumentMethods, Method30CreatesNamespacedElementsAndAttributes) {
    void* element = nullptr;
    int32_t type = 1;
    EXPECT_EQ(docCall(document.cell, 30, {text("urn:a"), text("p:el"), &type}, &element).code, 0);
    char part[32];
    int32_t limit = 32;
    nodeCall(element, 26, {&limit}, part);
    EXPECT_STREQ(part, "urn:a");
    nodeCall(element, 28, {&limit}, part);
    EXPECT_STREQ(part, "el");
    void* attribute = nullptr;
    type = 2;
    EXPECT_EQ(docCall(document.cell, 30, {text("urn:a"), text("p:at"), &type}, &attribute).code,
              0);
    EXPECT_EQ(typeOf(attribute), 2);
}

TEST_F(DocumentMethods, Method30TypeMinus1WritesNothing) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = -1;
    EXPECT_EQ(docCall(document.cell, 30, {text("urn:a"), text("p:el"), &type}, &node).code, 0);
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethodsOnMixedContent, CreateNodeWithNamespaceRefusesOtherTypes) {
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

TEST_F(DocumentMethods, Method30NamespaceErrorReachesTheHostAsNotInitializedWithCode6) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = 1;
    Answer answer = docCall(document.cell, 30, {nullptr, text("p:el"), &type}, &node);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethodsOnMixedContent, CreateNodeWithNamespaceMakesAttributesWithPrefixAndUri) {
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

// Unlike method 1, method 30 writes the new address whatever the host's
// code holds; and a success leaves the host's buffer and code as they were.
TEST_F(DocumentMethodsOnMixedContent, CreateNodeWithNamespaceWritesEvenWhileTheHostCodeIsSet) {
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

// ---- deleting after the document's own children were juggled ----------------------

// replaceChild(type, type) on a document detaches the document type while
// the document still names it; deleting the document must free both, with
// no error.
TEST_F(DocumentMethods, DeleteAfterReplacingTheDocumentTypeByItselfSucceeds) {
    HostDocument juggled{7};
    ASSERT_EQ(juggled.loadMemory("<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>").code, 0);
    void* type = nullptr;
    int32_t first = 0;
    ASSERT_EQ(docCall(juggled.cell, 8, {&first}, &type).code, 0);
    ASSERT_EQ(typeOf(type), 10);
    void* replaced = nullptr;
    docCall(juggled.cell, 11, {type, type}, &replaced);
    ErrorSlot slot;
    lumDocDelete(juggled.cell, slot.buffer, &slot.code);
    juggled.cell = nullptr;
    EXPECT_EQ(slot.code, 0);
    EXPECT_EQ(slot.text(), "");
}

// ---- 31, 32, 33 ----------------------------------------------------------------

TEST_F(DocumentMethods, Method31ReplacesTheDocumentAndMovesTheRecord) {
    void* made = nullptr;
    Answer answer = docCall(document.cell, 31,
                            {text("urn:n"), text("n:root"), text("-//PUB//ID"), text("root.dtd")},
                            &made);
    ASSERT_EQ(answer.code, 0) << answer.message;
    ASSERT_NE(made, nullptr);
    document.cell = made;  // the old document no longer exists
    void* element = documentElementOf(made);
    EXPECT_EQ(nameOf(element), "n:root");
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(element, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 1001);
    char id[64];
    int32_t limit = 64;
    EXPECT_EQ(docCall(made, 32, {&limit}, id).code, 0);
    EXPECT_STREQ(id, "-//PUB//ID");
    EXPECT_EQ(docCall(made, 33, {&limit}, id).code, 0);
    EXPECT_STREQ(id, "root.dtd");
}

TEST_F(DocumentMethods, Method31FailureWritesNullAndKeepsTheDocument) {
    void* made = reinterpret_cast<void*>(1);
    Answer answer = docCall(document.cell, 31, {nullptr, text("n:root"), nullptr, nullptr}, &made);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(made, nullptr);
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, 17, {}, &handle).code, 0);
    EXPECT_EQ(handle, 1001);
    answer = docCall(document.cell, 31, {nullptr, text("1bad"), nullptr, nullptr}, &made);
    EXPECT_EQ(answer.code, 6);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(DocumentMethodsOnMixedContent, NewDocumentWithBadNameLeavesTheOldDocument) {
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

TEST_F(DocumentMethods, Method32WithoutDocumentTypeGivesTheEmptyString) {
    char id[16] = "x";
    int32_t limit = 0;
    Answer answer = docCall(document.cell, 32, {&limit}, id);
    EXPECT_EQ(answer.code, 0);
    EXPECT_STREQ(id, "");
}

class DocumentTypeIds : public DocumentMethods, public ::testing::WithParamInterface<int32_t> {
protected:
    void SetUp() override {
        // Both ids are 5 units long.
        document.loadMemory("<!DOCTYPE r PUBLIC \"ab-cd\" \"x.dtd\" []><r/>", 0);
    }
};

TEST_P(DocumentTypeIds, LimitOneAboveTheLengthFits) {
    char id[16] = "x";
    int32_t limit = 6;
    EXPECT_EQ(docCall(document.cell, GetParam(), {&limit}, id).code, 0);
    EXPECT_STREQ(id, GetParam() == 32 ? "ab-cd" : "x.dtd");
}

TEST_P(DocumentTypeIds, LimitEqualToTheLengthIsTooLong) {
    char id[16] = "x";
    int32_t limit = 5;
    Answer answer = docCall(document.cell, GetParam(), {&limit}, id);
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(id, "");
}

TEST_P(DocumentTypeIds, LimitOneBelowTheLengthIsTooLong) {
    char id[16] = "x";
    int32_t limit = 4;
    EXPECT_EQ(docCall(document.cell, GetParam(), {&limit}, id).code, 12);
    EXPECT_STREQ(id, "");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, DocumentTypeIds, ::testing::Values(32, 33));

TEST_F(DocumentMethods, MissingIdWithLimitZeroIsTooLong) {
    document.loadMemory("<!DOCTYPE r [<!ELEMENT r EMPTY>]><r/>");
    char id[16] = "x";
    int32_t limit = 0;
    Answer answer = docCall(document.cell, 32, {&limit}, id);
    EXPECT_EQ(answer.code, 12);
    limit = 1;
    EXPECT_EQ(docCall(document.cell, 33, {&limit}, id).code, 0);
    EXPECT_STREQ(id, "");
}

class NewDocumentWithType : public DocumentMethodsOnMixedContent {
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

}  // namespace
