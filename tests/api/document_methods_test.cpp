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
    EXPECT_EQ(answer.code, LUM_ERR_DOC_METHOD_NUMBER);
    EXPECT_EQ(answer.message, "Invalid method number");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, DocumentMethodNumber,
                         ::testing::Values(0, 39, -1, 40, INT32_MIN, INT32_MAX));

class NotForDocuments : public DocumentMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(NotForDocuments, MethodNotValidOnXDocumentWithCodeMinus1) {
    char result[16] = "untouched";
    Answer answer = docCall(document.cell, GetParam(), {}, result);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "Method not valid on X-Document");
    EXPECT_STREQ(result, "untouched");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, NotForDocuments,
                         ::testing::Values(LUM_NODE_REMOVE, LUM_NODE_INDEX_IN_PARENT,
                                           LUM_NODE_ATTRIBUTE_NAMES, LUM_NODE_ATTRIBUTE_VALUE,
                                           LUM_NODE_SET_ATTRIBUTE, LUM_NODE_REMOVE_ATTRIBUTE,
                                           LUM_NODE_REMOVE_ATTRIBUTE_NODE, LUM_NODE_NORMALIZE,
                                           LUM_NODE_NAMESPACE_URI, LUM_NODE_PREFIX,
                                           LUM_NODE_LOCAL_NAME, LUM_NODE_SET_PREFIX,
                                           LUM_NODE_SET_ATTRIBUTE_NODE, LUM_NODE_ATTRIBUTE_NODE,
                                           LUM_NODE_WHOLE_VALUE, LUM_NODE_SET_VALUE_COUNTED,
                                           LUM_NODE_RELEASE_VALUE));

class Deprecated : public DocumentMethods, public ::testing::WithParamInterface<int32_t> {};

TEST_P(Deprecated, PointsToCreateNodeNamespaceWithCodeMinus1) {
    Answer answer = docCall(document.cell, GetParam(), {}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "This method is deprecated. Please use CREATE-NODE-NAMESPACE");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, Deprecated, ::testing::Values(24, 25));

TEST_F(DocumentMethodsOnMixedContent, DocumentMethodNumbersFarOutOfRangeUseCodeFour) {
    for (int32_t method : {-1, 40, 1000, INT32_MIN, INT32_MAX}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, LUM_ERR_DOC_METHOD_NUMBER) << method;
        EXPECT_EQ(answer.message, "Invalid method number") << method;
    }
}

TEST_F(DocumentMethodsOnMixedContent, RefusedDocumentMethodsSayNotValidOnXDocument) {
    for (int32_t method : {LUM_NODE_REMOVE, LUM_NODE_INDEX_IN_PARENT, LUM_NODE_ATTRIBUTE_NAMES,
                           LUM_NODE_ATTRIBUTE_VALUE, LUM_NODE_SET_ATTRIBUTE,
                           LUM_NODE_REMOVE_ATTRIBUTE, LUM_NODE_REMOVE_ATTRIBUTE_NODE,
                           LUM_NODE_NORMALIZE, LUM_NODE_NAMESPACE_URI, LUM_NODE_PREFIX,
                           LUM_NODE_LOCAL_NAME, LUM_NODE_SET_PREFIX, LUM_NODE_SET_ATTRIBUTE_NODE,
                           LUM_NODE_ATTRIBUTE_NODE, LUM_NODE_WHOLE_VALUE,
                           LUM_NODE_SET_VALUE_COUNTED, LUM_NODE_RELEASE_VALUE}) {
        Answer answer = docCall(document.cell, method, {}, nullptr);
        EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED) << method;
        EXPECT_EQ(answer.message, "Method not valid on X-Document") << method;
    }
}

TEST_F(DocumentMethodsOnMixedContent, DocumentMethodTwentyFiveIsDeprecatedLikeTwentyFour) {
    Answer answer = docCall(document.cell, 25, {}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(answer.message, "This method is deprecated. Please use CREATE-NODE-NAMESPACE");
}

TEST_F(DocumentMethods, RefusedNumbersReadNoArgumentsAndNoDocument) {
    ErrorSlot error;
    lumDocExecute(nullptr, 39, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_DOC_METHOD_NUMBER);
    error.clear();
    lumDocExecute(nullptr, LUM_NODE_REMOVE, nullptr, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_SUPPORTED);
}

TEST_F(DocumentMethods, NullDocumentIsAnUnexpectedException) {
    void* element = nullptr;
    Answer answer = docCall(nullptr, LUM_DOC_DOCUMENT_ELEMENT, {}, &element);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
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
    nodeCall(node, LUM_NODE_PARENT, {}, &parent);
    EXPECT_EQ(parent, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    DocumentMethods, CreateEveryType,
    ::testing::Values(CreatedType{LUM_NODE_ELEMENT, "el", "el", "ELEMENT"},
                      CreatedType{LUM_NODE_ATTRIBUTE, "at", "at", "ATTRIBUTE"},
                      CreatedType{LUM_NODE_TEXT, "ignored", "#text", "TEXT"},
                      CreatedType{LUM_NODE_CDATA_SECTION, "ignored", "#cdata-section",
                                  "CDATA-SECTION"},
                      CreatedType{LUM_NODE_ENTITY_REFERENCE, "ent", "ent", "ENTITY-REFERENCE"},
                      CreatedType{LUM_NODE_ENTITY, "ent", "ent", "ENTITY"},
                      CreatedType{LUM_NODE_PROCESSING_INSTRUCTION, "target", "target",
                                  "PROCESSING-INSTRUCTION"},
                      CreatedType{LUM_NODE_COMMENT, "ignored", "#comment", "COMMENT"},
                      CreatedType{LUM_NODE_DOCUMENT_TYPE, "doc", "doc", "DOCUMENT-TYPE"},
                      CreatedType{LUM_NODE_DOCUMENT_FRAGMENT, "ignored", "#document-fragment",
                                  "DOCUMENT-FRAGMENT"},
                      CreatedType{LUM_NODE_NOTATION, "nota", "nota", "NOTATION"}),
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
    void* pi = createNode(document.cell, "tgt", LUM_NODE_PROCESSING_INSTRUCTION);
    ASSERT_NE(pi, nullptr);
    EXPECT_EQ(nameOf(pi), "tgt");
    EXPECT_EQ(valueOf(pi), "");
}

TEST_F(DocumentMethods, Method1TypeMinus1WritesANullAddressAndNoError) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_NONE;
    Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE, {text("x"), &type}, &node);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(node, nullptr);
}

TEST_F(DocumentMethods, Method1ElementWithEmptyOrNullNameIsAnInvalidCharacter) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_ELEMENT;
    Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE, {text(""), &type}, &node);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE, {nullptr, &type}, &node).code,
              LUM_ERR_DOM);
    type = LUM_NODE_ATTRIBUTE;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE, {nullptr, &type}, &node).code,
              LUM_ERR_DOM);
}

TEST_F(DocumentMethodsOnMixedContent, CreateAttributeWithEmptyNameIsAnInvalidCharacter) {
    const char* name = "";
    int32_t type = kAttribute;
    void* cell = marker();
    Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE, {const_cast<char*>(name), &type},
                            &cell);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(cell, marker());
}

TEST_F(DocumentMethods, Method1DocumentTypeCodeIsNotSupported) {
    for (int32_t type : {LUM_NODE_DOCUMENT, 0, 13, -2}) {
        void* node = reinterpret_cast<void*>(1);
        Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE, {text("x"), &type}, &node);
        EXPECT_EQ(answer.code, LUM_ERR_NOT_SUPPORTED) << type;
        EXPECT_EQ(answer.message, "Not supported");
        EXPECT_EQ(node, reinterpret_cast<void*>(1));
    }
}

TEST_F(DocumentMethods, Method1WritesNothingWhenTheHostCodeWasNotCleared) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_ELEMENT;
    void* slots[2] = {text("el"), &type};
    ErrorSlot error;
    error.code = 99;
    lumDocExecute(document.cell, LUM_DOC_CREATE_NODE, slots, &node, error.buffer, &error.code);
    EXPECT_EQ(error.code, 99);
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethods, Method1EntityReferenceWithABadNameIsADomError) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_ENTITY_REFERENCE;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE, {text("1 bad"), &type}, &node).code,
              LUM_ERR_DOM);
}

// ---- 4, 8, forwarded node methods ----------------------------------------------

TEST_F(DocumentMethods, Method4IsNullWithoutDocumentElement) {
    void* element = reinterpret_cast<void*>(1);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_DOCUMENT_ELEMENT, {}, &element).code, LUM_OK);
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
    Answer answer = docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child);
    EXPECT_EQ(answer.code, LUM_ERR_CHILD_INDEX);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(child, nullptr);
}

TEST_F(DocumentMethodsOnMixedContent, DocumentChildIndexNegativeIsInvalidAndWritesNull) {
    int32_t index = -1;
    void* cell = marker();
    Answer answer = docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &cell);
    EXPECT_EQ(answer.code, LUM_ERR_CHILD_INDEX);
    EXPECT_EQ(answer.message, "Invalid child index");
    EXPECT_EQ(cell, nullptr);
}

TEST_F(DocumentMethodsOnMixedContent, DocumentChildIndexZeroIsTheRoot) {
    int32_t index = 0;
    void* cell = nullptr;
    Answer answer = docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &cell);
    EXPECT_EQ(answer.code, LUM_OK);
    EXPECT_EQ(cell, root);
}

TEST_F(DocumentMethods, Method8WalksTheDocumentsChildren) {
    document.loadMemory("<!--c--><top/><?pi?>");
    void* child = nullptr;
    int32_t index = 1;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child).code, LUM_OK);
    EXPECT_EQ(nameOf(child), "top");
    index = -1;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child).code, LUM_ERR_CHILD_INDEX);
    index = 3;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &child).code, LUM_ERR_CHILD_INDEX);
}

TEST_F(DocumentMethods, ForwardedMethodsActOnTheDocumentNode) {
    document.loadMemory("<!--c--><top/>");
    int32_t count = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_COUNT, {}, &count).code, LUM_OK);
    EXPECT_EQ(count, 2);
    int32_t type = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_TYPE_CODE, {}, &type).code, LUM_OK);
    EXPECT_EQ(type, LUM_NODE_DOCUMENT);
    char name[32];
    int32_t limit = 32;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_NAME, {&limit}, name).code, LUM_OK);
    EXPECT_STREQ(name, "#document");
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 1001);
    void* parent = reinterpret_cast<void*>(1);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_PARENT, {}, &parent).code, LUM_OK);
    EXPECT_EQ(parent, nullptr);
    char value[8] = "x";
    EXPECT_EQ(docCall(document.cell, LUM_DOC_VALUE, {&limit}, value).code, LUM_OK);
    EXPECT_STREQ(value, "");
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedMethodsAnswerForTheDocumentNode) {
    int32_t count = -1;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_COUNT, {}, &count).code, LUM_OK);
    EXPECT_EQ(count, 1);
    int32_t type = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_TYPE_CODE, {}, &type).code, LUM_OK);
    EXPECT_EQ(type, LUM_NODE_DOCUMENT);
    char name[32] = "x";
    int32_t limit = sizeof name;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_NAME, {&limit}, name).code, LUM_OK);
    EXPECT_STREQ(name, "#document");
    void* parent = marker();
    EXPECT_EQ(docCall(document.cell, LUM_DOC_PARENT, {}, &parent).code, LUM_OK);
    EXPECT_EQ(parent, nullptr);
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 4242);
}

TEST_F(DocumentMethods, ForwardedTreeMethodsChangeTheDocument) {
    void* element = createNode(document.cell, "made", LUM_NODE_ELEMENT);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_INSERT_BEFORE, {element, nullptr}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(documentElementOf(document.cell), element);
    void* other = createNode(document.cell, "other", LUM_NODE_ELEMENT);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_REPLACE_CHILD, {other, element}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(documentElementOf(document.cell), other);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_REMOVE_CHILD, {other}, nullptr).code, LUM_OK);
    EXPECT_EQ(documentElementOf(document.cell), nullptr);
    // A second element under the document is a hierarchy error.
    docCall(document.cell, LUM_DOC_INSERT_BEFORE, {other, nullptr}, nullptr);
    Answer answer = docCall(document.cell, LUM_DOC_INSERT_BEFORE, {element, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    int32_t deep = 1;
    void* copy = nullptr;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CLONE, {&deep}, &copy).code, LUM_OK);
    EXPECT_EQ(typeOf(copy), LUM_NODE_DOCUMENT);
    // A cloned document is a node address, not a document cell: lumDocDelete
    // cannot take it, so the test releases it through the DOM itself.
    static_cast<XERCES_CPP_NAMESPACE::DOMNode*>(copy)->release();
}

TEST_F(DocumentMethodsOnMixedContent, DocumentRefusesASecondRootThroughForwardedInsert) {
    void* second = createNode(document.cell, "second", kElement);
    Answer answer = docCall(document.cell, LUM_DOC_INSERT_BEFORE, {second, nullptr}, nullptr);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "A node was inserted where it doesn't belong");
    int32_t count = 0;
    docCall(document.cell, LUM_DOC_CHILD_COUNT, {}, &count);
    EXPECT_EQ(count, 1);
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedRemoveAndReplaceOnTheDocument) {
    void* other = createNode(document.cell, "other", kElement);
    ASSERT_EQ(docCall(document.cell, LUM_DOC_REPLACE_CHILD, {other, root}, nullptr).code, LUM_OK);
    EXPECT_EQ(documentElementOf(document.cell), other);
    ASSERT_EQ(docCall(document.cell, LUM_DOC_REMOVE_CHILD, {other}, nullptr).code, LUM_OK);
    EXPECT_EQ(documentElementOf(document.cell), nullptr);
    int32_t index = 0;
    void* cell = marker();
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&index}, &cell).code, LUM_ERR_CHILD_INDEX);
    EXPECT_EQ(cell, nullptr);
}

TEST_F(DocumentMethods, ForwardedSetValueOnTheDocumentIsIgnored) {
    EXPECT_EQ(docCall(document.cell, LUM_DOC_SET_VALUE, {text("v")}, nullptr).code, LUM_OK);
}

TEST_F(DocumentMethodsOnMixedContent, ForwardedValueMethodsOnTheDocumentNode) {
    char out[8] = "keep";
    int32_t limit = 8;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_VALUE, {&limit}, out).code, LUM_OK);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(docCall(document.cell, LUM_DOC_SET_VALUE, {const_cast<char*>("v")}, nullptr).code,
              LUM_OK);
    EXPECT_EQ(docCall(document.cell, LUM_DOC_VALUE, {&limit}, out).code, LUM_OK);
    EXPECT_STREQ(out, "");
}

// ---- 22 ------------------------------------------------------------------------

TEST_F(DocumentMethods, Method22ImportsShallowAndDeep) {
    HostDocument other;
    other.loadMemory("<src a=\"1\"><kid/></src>");
    void* source = documentElementOf(other.cell);
    void* copy = nullptr;
    int32_t deep = 1;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_IMPORT_NODE, {source, &deep}, &copy).code, LUM_OK);
    EXPECT_EQ(nameOf(copy), "src");
    EXPECT_EQ(childCountOf(copy), 1);
    int64_t handle = 0;
    nodeCall(copy, LUM_NODE_OWNER_HANDLE, {}, &handle);
    EXPECT_EQ(handle, 1001);
    int32_t shallow = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_IMPORT_NODE, {source, &shallow}, &copy).code, LUM_OK);
    EXPECT_EQ(childCountOf(copy), 0);
}

TEST_F(DocumentMethodsOnMixedContent, ImportNodeShallowCopiesNoChildren) {
    HostDocument other;
    int32_t deep = 0;
    void* copy = nullptr;
    Answer answer = docCall(other.cell, LUM_DOC_IMPORT_NODE, {root, &deep}, &copy);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(nameOf(copy), "r");
    EXPECT_EQ(childCountOf(copy), 0);
    deep = 1;
    answer = docCall(other.cell, LUM_DOC_IMPORT_NODE, {root, &deep}, &copy);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(childCountOf(copy), 4);
}

TEST_F(DocumentMethods, Method22OfADocumentIsUnexpected) {
    HostDocument other;
    void* copy = reinterpret_cast<void*>(1);
    int32_t deep = 1;
    Answer answer = docCall(document.cell, LUM_DOC_IMPORT_NODE, {documentNode(other.cell), &deep},
                            &copy);
    EXPECT_EQ(answer.code, LUM_ERR_UNEXPECTED);
    EXPECT_EQ(answer.message, "Unexpected exception");
}

// ---- 30 ------------------------------------------------------------------------

TEST_F(DocumentMethods, Method30CreatesNamespacedElementsAndAttributes) {
    void* element = nullptr;
    int32_t type = LUM_NODE_ELEMENT;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE_NS, {text("urn:a"), text("p:el"), &type},
                      &element).code, LUM_OK);
    char part[32];
    int32_t limit = 32;
    nodeCall(element, LUM_NODE_NAMESPACE_URI, {&limit}, part);
    EXPECT_STREQ(part, "urn:a");
    nodeCall(element, LUM_NODE_LOCAL_NAME, {&limit}, part);
    EXPECT_STREQ(part, "el");
    void* attribute = nullptr;
    type = LUM_NODE_ATTRIBUTE;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE_NS, {text("urn:a"), text("p:at"), &type},
                      &attribute).code,
              LUM_OK);
    EXPECT_EQ(typeOf(attribute), LUM_NODE_ATTRIBUTE);
}

TEST_F(DocumentMethods, Method30TypeMinus1WritesNothing) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_NONE;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CREATE_NODE_NS, {text("urn:a"), text("p:el"), &type},
                      &node).code, LUM_OK);
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethodsOnMixedContent, CreateNodeWithNamespaceRefusesOtherTypes) {
    const char* uri = "urn:u";
    const char* qname = "p:e";
    for (int32_t type : {0, LUM_NODE_TEXT, LUM_NODE_COMMENT, LUM_NODE_DOCUMENT}) {
        void* cell = marker();
        Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &cell);
        EXPECT_EQ(answer.code, LUM_ERR_NODE_TYPE) << type;
        EXPECT_EQ(answer.message, "Method not valid on the Node type") << type;
        EXPECT_EQ(cell, marker()) << type;
    }
}

TEST_F(DocumentMethods, Method30NamespaceErrorReachesTheHostAsNotInitializedWithCode6) {
    void* node = reinterpret_cast<void*>(1);
    int32_t type = LUM_NODE_ELEMENT;
    Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE_NS, {nullptr, text("p:el"), &type},
                            &node);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
    EXPECT_EQ(node, reinterpret_cast<void*>(1));
}

TEST_F(DocumentMethodsOnMixedContent, CreateNodeWithNamespaceMakesAttributesWithPrefixAndUri) {
    const char* uri = "urn:u";
    const char* qname = "p:at";
    int32_t type = kAttribute;
    void* attr = nullptr;
    Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                            {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &attr);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    ASSERT_NE(attr, nullptr);
    EXPECT_EQ(typeOf(attr), kAttribute);
    char text[64] = "";
    int32_t limit = sizeof text;
    nodeCall(attr, LUM_NODE_NAMESPACE_URI, {&limit}, text);
    EXPECT_STREQ(text, "urn:u");
    nodeCall(attr, LUM_NODE_PREFIX, {&limit}, text);
    EXPECT_STREQ(text, "p");
    nodeCall(attr, LUM_NODE_LOCAL_NAME, {&limit}, text);
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
    lumDocExecute(document.cell, LUM_DOC_CREATE_NODE_NS, args, &cell, slot.buffer, &slot.code);
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
    ASSERT_EQ(juggled.loadMemory("<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>").code, LUM_OK);
    void* type = nullptr;
    int32_t first = 0;
    ASSERT_EQ(docCall(juggled.cell, LUM_DOC_CHILD_AT, {&first}, &type).code, LUM_OK);
    ASSERT_EQ(typeOf(type), LUM_NODE_DOCUMENT_TYPE);
    void* replaced = nullptr;
    docCall(juggled.cell, LUM_DOC_REPLACE_CHILD, {type, type}, &replaced);
    ErrorSlot slot;
    lumDocDelete(juggled.cell, slot.buffer, &slot.code);
    juggled.cell = nullptr;
    EXPECT_EQ(slot.code, LUM_OK);
    EXPECT_EQ(slot.text(), "");
}

// ---- 31, 32, 33 ----------------------------------------------------------------

TEST_F(DocumentMethods, Method31ReplacesTheDocumentAndMovesTheRecord) {
    void* made = nullptr;
    Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                            {text("urn:n"), text("n:root"), text("-//PUB//ID"), text("root.dtd")},
                            &made);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    ASSERT_NE(made, nullptr);
    document.cell = made;  // the old document no longer exists
    void* element = documentElementOf(made);
    EXPECT_EQ(nameOf(element), "n:root");
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(element, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 1001);
    char id[64];
    int32_t limit = 64;
    EXPECT_EQ(docCall(made, LUM_DOC_DOCTYPE_PUBLIC_ID, {&limit}, id).code, LUM_OK);
    EXPECT_STREQ(id, "-//PUB//ID");
    EXPECT_EQ(docCall(made, LUM_DOC_DOCTYPE_SYSTEM_ID, {&limit}, id).code, LUM_OK);
    EXPECT_STREQ(id, "root.dtd");
}

TEST_F(DocumentMethods, Method31FailureWritesNullAndKeepsTheDocument) {
    void* made = reinterpret_cast<void*>(1);
    Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                            {nullptr, text("n:root"), nullptr, nullptr}, &made);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(made, nullptr);
    int64_t handle = 0;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 1001);
    answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                     {nullptr, text("1bad"), nullptr, nullptr}, &made);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "An invalid character was specified");
}

TEST_F(DocumentMethodsOnMixedContent, NewDocumentWithBadNameLeavesTheOldDocument) {
    const char* qname = "1bad";
    void* made = marker();
    Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                            {nullptr, const_cast<char*>(qname), nullptr, nullptr}, &made);
    EXPECT_EQ(answer.code, LUM_ERR_DOM);
    EXPECT_EQ(answer.message, "An invalid character was specified");
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(documentElementOf(document.cell), root);
    int64_t handle = 0;
    EXPECT_EQ(nodeCall(root, LUM_NODE_OWNER_HANDLE, {}, &handle).code, LUM_OK);
    EXPECT_EQ(handle, 4242);
}

TEST_F(DocumentMethods, Method32WithoutDocumentTypeGivesTheEmptyString) {
    char id[16] = "x";
    int32_t limit = 0;
    Answer answer = docCall(document.cell, LUM_DOC_DOCTYPE_PUBLIC_ID, {&limit}, id);
    EXPECT_EQ(answer.code, LUM_OK);
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
    EXPECT_EQ(docCall(document.cell, GetParam(), {&limit}, id).code, LUM_OK);
    EXPECT_STREQ(id, GetParam() == LUM_DOC_DOCTYPE_PUBLIC_ID ? "ab-cd" : "x.dtd");
}

TEST_P(DocumentTypeIds, LimitEqualToTheLengthIsTooLong) {
    char id[16] = "x";
    int32_t limit = 5;
    Answer answer = docCall(document.cell, GetParam(), {&limit}, id);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(id, "");
}

TEST_P(DocumentTypeIds, LimitOneBelowTheLengthIsTooLong) {
    char id[16] = "x";
    int32_t limit = 4;
    EXPECT_EQ(docCall(document.cell, GetParam(), {&limit}, id).code, LUM_ERR_STRING_LENGTH);
    EXPECT_STREQ(id, "");
}

INSTANTIATE_TEST_SUITE_P(DocumentMethods, DocumentTypeIds,
                         ::testing::Values(LUM_DOC_DOCTYPE_PUBLIC_ID, LUM_DOC_DOCTYPE_SYSTEM_ID));

TEST_F(DocumentMethods, MissingIdWithLimitZeroIsTooLong) {
    document.loadMemory("<!DOCTYPE r [<!ELEMENT r EMPTY>]><r/>");
    char id[16] = "x";
    int32_t limit = 0;
    Answer answer = docCall(document.cell, LUM_DOC_DOCTYPE_PUBLIC_ID, {&limit}, id);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    limit = 1;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_DOCTYPE_SYSTEM_ID, {&limit}, id).code, LUM_OK);
    EXPECT_STREQ(id, "");
}

class NewDocumentWithType : public DocumentMethodsOnMixedContent {
protected:
    void makeDocument(const char* publicId, const char* systemId) {
        const char* uri = "urn:u";
        const char* qname = "top";
        void* made = marker();
        Answer answer = docCall(document.cell, LUM_DOC_NEW_WITH_DOCTYPE,
                                {const_cast<char*>(uri), const_cast<char*>(qname),
                                 const_cast<char*>(publicId), const_cast<char*>(systemId)},
                                &made);
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
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
    EXPECT_EQ(id(LUM_DOC_DOCTYPE_PUBLIC_ID, 16, out).code, LUM_OK);
    EXPECT_STREQ(out, "pub");
    EXPECT_EQ(id(LUM_DOC_DOCTYPE_SYSTEM_ID, 16, out).code, LUM_OK);
    EXPECT_STREQ(out, "sys");
    EXPECT_EQ(nameOf(documentElementOf(document.cell)), "top");
}

// The limit is the buffer's capacity with its NUL: three units need four.
TEST_F(NewDocumentWithType, DocumentTypeIdAsLongAsTheLimitIsTooLong) {
    makeDocument("pub", "sys");
    char out[16] = "junk";
    Answer answer = id(LUM_DOC_DOCTYPE_PUBLIC_ID, 3, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    EXPECT_EQ(id(LUM_DOC_DOCTYPE_SYSTEM_ID, 4, out).code, LUM_OK);
    EXPECT_STREQ(out, "sys");
}

TEST_F(NewDocumentWithType, MissingIdWithLimitZeroIsTooLong) {
    makeDocument(nullptr, nullptr);
    char out[4] = "xy";
    Answer answer = id(LUM_DOC_DOCTYPE_PUBLIC_ID, 0, out);
    EXPECT_EQ(answer.code, LUM_ERR_STRING_LENGTH);
    EXPECT_EQ(answer.message, "String length too long");
    EXPECT_STREQ(out, "");
    EXPECT_EQ(id(LUM_DOC_DOCTYPE_SYSTEM_ID, 1, out).code, LUM_OK);
    EXPECT_STREQ(out, "");
}

}  // namespace
