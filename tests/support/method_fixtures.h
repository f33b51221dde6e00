// Fixtures for node and document method tests: a started library and one
// loaded document, `root` its element, called through the exports only.
#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_test.h"

namespace lumtest {

// Node type codes as a host passes them to method 1.
constexpr int32_t kElement = LUM_NODE_ELEMENT;
constexpr int32_t kAttribute = LUM_NODE_ATTRIBUTE;
constexpr int32_t kText = LUM_NODE_TEXT;
constexpr int32_t kCData = LUM_NODE_CDATA_SECTION;
constexpr int32_t kEntity = LUM_NODE_ENTITY;
constexpr int32_t kComment = LUM_NODE_COMMENT;

class LoadedDocumentTest : public ::testing::Test {
protected:
    void load(const char* xml) {
        LoadAnswer answer = document.loadMemory(xml);
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
        root = documentElementOf(document.cell);
        ASSERT_NE(root, nullptr);
    }

    void* child(int32_t index) { return childOf(root, index); }
    void* rootNode() { return documentNode(document.cell); }

    // A fresh 64-bit result cell pre-set to a marker, to see whether a
    // method writes it.
    static void* marker() { return reinterpret_cast<void*>(uintptr_t{0x5a5a5a5a}); }

    // Method 12 on the root with room to spare.
    std::string attributeNamesOfRoot() {
        char out[64] = "";
        int32_t limit = sizeof out;
        EXPECT_EQ(nodeCall(root, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out).code, LUM_OK);
        return out;
    }

    LibraryStarted started;  // before the first document is made
    HostDocument document;
    void* root = nullptr;
};

// Every kind of node a node method reads: children 0-6 are first (with a
// text), second, third (attribute x, text), a CDATA section, a comment, a
// processing instruction and a namespaced item holding "abcde".
class NodeMethodsTree : public LoadedDocumentTest {
protected:
    void SetUp() override {
        load("<root a=\"1\" bb=\"22\">"
             "<first>one</first><second/><third x=\"y\">three</third>"
             "<![CDATA[old data]]><!--note--><?pi data?>"
             "<ns:item xmlns:ns=\"urn:ns\" ns:attr=\"nsvalue\">abcde</ns:item>"
             "</root>");
    }
};

// A small element with two attributes (a, bb) and mixed content: children
// 0-3 are the element x, the text "text", the element y and the CDATA
// section "cd".
class MixedContentTree : public LoadedDocumentTest {
protected:
    void SetUp() override { load("<r a=\"1\" bb=\"22\"><x/>text<y/><![CDATA[cd]]></r>"); }
};

}  // namespace lumtest
