// The fixture of the save tests: a started library, a document to build
// or load, and the helpers that build namespaced trees and save them.
#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"

namespace lumtest {

// What every save without an encoding name starts with.
const std::string kDecl = "<?xml version=\"1.0\" ?>\n";
// The DOM text of a save that ends in a namespace error.
const char kNamespaceErrorText[] =
    "attempt is made to create or change an object in a way which is incorrect with respect "
    "to namespaces";

class DocumentSave : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }

    // Loads `xml` into `target` and expects success.
    void load(HostDocument& target, const std::string& xml) {
        LoadAnswer answer = target.loadMemory(xml);
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    }

    std::string loadAndSave(const std::string& xml, const char* encoding = nullptr) {
        HostDocument loaded;
        load(loaded, xml);
        return saveToMemory(loaded.cell, encoding);
    }

    static std::string utf16le(const std::string& ascii) {
        std::string out;
        for (char c : ascii) {
            out += c;
            out += '\0';
        }
        return out;
    }
    static std::string utf16be(const std::string& ascii) {
        std::string out;
        for (char c : ascii) {
            out += '\0';
            out += c;
        }
        return out;
    }


    void* elementNS(const char* uri, const char* qname) {
        int32_t type = LUM_NODE_ELEMENT;
        void* made = nullptr;
        Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &made);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
        return made;
    }
    void* attributeNS(const char* uri, const char* qname, const char* value) {
        int32_t type = LUM_NODE_ATTRIBUTE;
        void* made = nullptr;
        Answer answer = docCall(document.cell, LUM_DOC_CREATE_NODE_NS,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &made);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
        EXPECT_EQ(nodeCall(made, LUM_NODE_SET_VALUE, {const_cast<char*>(value)}, nullptr).code,
                  LUM_OK);
        return made;
    }
    void setAttributeNode(void* element, void* attr) {
        Answer answer = nodeCall(element, LUM_NODE_SET_ATTRIBUTE_NODE, {attr}, nullptr);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    }
    static std::string attributeNames(void* element) {
        char out[256] = "";
        int32_t limit = sizeof out;
        EXPECT_EQ(nodeCall(element, LUM_NODE_ATTRIBUTE_NAMES, {&limit}, out).code, LUM_OK);
        return out;
    }
    // The document cell holds the document's own address: children are
    // added through the document method, which forwards its node interface.
    void appendToDocument(void* child) {
        Answer answer = docCall(document.cell, LUM_DOC_INSERT_BEFORE, {child, nullptr}, nullptr);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    }
    std::string saved() { return saveToMemory(document.cell); }
    static std::string savedNode(void* node) {
        SaveArgs args;
        args.target = LUM_SAVE_NODE_TO_MEMORY;
        SaveAnswer answer = save(node, args);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
        EXPECT_TRUE(answer.handedOver);
        return answer.bytes;
    }

    LibraryStarted started;  // before the first document is made
    HostDocument document;
};

}  // namespace lumtest
