// Saving as an independent host sees it: the exact bytes of trees built
// through the document and node methods, the namespace declarations a save
// adds and takes away again, and what the stream target hands the host.
// Nothing here asks for character or attribute escapes (those flags are
// sticky for the process).
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "text_files.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

const std::string kDecl = "<?xml version=\"1.0\" ?>\n";
constexpr int32_t kElement = 1;
constexpr int32_t kAttribute = 2;

class ConformanceSave : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }

    void* elementNS(const char* uri, const char* qname) {
        int32_t type = kElement;
        void* made = nullptr;
        Answer answer = docCall(document.cell, 30,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &made);
        EXPECT_EQ(answer.code, 0) << answer.message;
        return made;
    }
    void* attributeNS(const char* uri, const char* qname, const char* value) {
        int32_t type = kAttribute;
        void* made = nullptr;
        Answer answer = docCall(document.cell, 30,
                                {const_cast<char*>(uri), const_cast<char*>(qname), &type}, &made);
        EXPECT_EQ(answer.code, 0) << answer.message;
        EXPECT_EQ(nodeCall(made, 20, {const_cast<char*>(value)}, nullptr).code, 0);
        return made;
    }
    void setAttributeNode(void* element, void* attr) {
        Answer answer = nodeCall(element, 34, {attr}, nullptr);
        EXPECT_EQ(answer.code, 0) << answer.message;
    }
    static std::string attributeNames(void* element) {
        char out[256] = "";
        int32_t limit = sizeof out;
        EXPECT_EQ(nodeCall(element, 12, {&limit}, out).code, 0);
        return out;
    }
    // The document cell holds the document's own address: children are
    // added through the document method, which forwards its node interface.
    void appendToDocument(void* child) {
        Answer answer = docCall(document.cell, 2, {child, nullptr}, nullptr);
        EXPECT_EQ(answer.code, 0) << answer.message;
    }
    std::string saved() { return saveToMemory(document.cell); }
    static std::string savedNode(void* node) {
        SaveArgs args;
        args.target = 6;
        SaveAnswer answer = save(node, args);
        EXPECT_EQ(answer.code, 0) << answer.message;
        EXPECT_TRUE(answer.handedOver);
        return answer.bytes;
    }

    LibraryStarted started;  // before the first document is made
    HostDocument document;
};

// ---- namespace declarations made by the save ---------------------------------------

TEST_F(ConformanceSave, DefaultNamespaceElementGainsXmlnsAndTheTreeDoesNot) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"/>");
    EXPECT_EQ(attributeNames(r), "");
}

// A child in no namespace below a default namespace undeclares it.
TEST_F(ConformanceSave, ChildWithoutNamespaceBelowADefaultUndeclaresIt) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    appendChild(r, elementNS(nullptr, "c"));
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"><c xmlns=\"\"/></r>");
}

TEST_F(ConformanceSave, ChildInTheInheritedNamespaceAddsNothing) {
    void* r = elementNS("urn:u", "p:r");
    appendToDocument(r);
    appendChild(r, elementNS("urn:u", "p:c"));
    EXPECT_EQ(saved(), kDecl + "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(ConformanceSave, SamePrefixRedeclaredForAnotherNamespaceBelow) {
    void* r = elementNS("urn:u", "p:r");
    appendToDocument(r);
    appendChild(r, elementNS("urn:v", "p:c"));
    EXPECT_EQ(saved(), kDecl + "<p:r xmlns:p=\"urn:u\"><p:c xmlns:p=\"urn:v\"/></p:r>");
}

// Elements made without namespace support have no local name: no fix-up,
// not even below a default namespace.
TEST_F(ConformanceSave, ElementsWithoutNamespaceSupportAreLeftAlone) {
    void* r = elementNS("urn:u", "r");
    appendToDocument(r);
    appendChild(r, createNode(document.cell, "c", kElement));
    EXPECT_EQ(saved(), kDecl + "<r xmlns=\"urn:u\"><c/></r>");
}

TEST_F(ConformanceSave, ElementInNoNamespaceWithNoDefaultInScopeAddsNothing) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    appendChild(r, elementNS(nullptr, "c"));
    EXPECT_EQ(saved(), kDecl + "<r><c/></r>");
}

TEST_F(ConformanceSave, PrefixedAttributeGainsItsDeclarationOnItsElement) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("urn:v", "q:at", "1"));
    std::string bytes = saved();
    EXPECT_EQ(bytes, kDecl + "<r q:at=\"1\" xmlns:q=\"urn:v\"/>");
    EXPECT_EQ(attributeNames(r), "q:at");
}

TEST_F(ConformanceSave, AttributeInTheXmlNamespaceNeedsNoDeclaration) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("http://www.w3.org/XML/1998/namespace", "xml:lang", "en"));
    EXPECT_EQ(saved(), kDecl + "<r xml:lang=\"en\"/>");
}

TEST_F(ConformanceSave, AttributeDeclaredByAnAncestorAddsNothing) {
    void* r = elementNS("urn:v", "q:r");
    appendToDocument(r);
    void* c = elementNS(nullptr, "c");
    appendChild(r, c);
    setAttributeNode(c, attributeNS("urn:v", "q:at", "1"));
    EXPECT_EQ(saved(), kDecl + "<q:r xmlns:q=\"urn:v\"><c q:at=\"1\"/></q:r>");
}

TEST_F(ConformanceSave, PrefixedAttributeAgainstItsElementsOwnDeclarationIsANamespaceError) {
    void* r = elementNS(nullptr, "r");
    appendToDocument(r);
    setAttributeNode(r, attributeNS("http://www.w3.org/2000/xmlns/", "xmlns:q", "urn:one"));
    setAttributeNode(r, attributeNS("urn:two", "q:at", "1"));
    SaveArgs args;
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 13);
    EXPECT_FALSE(answer.handedOver);
    EXPECT_NE(answer.message.find("namespace"), std::string::npos) << answer.message;
    // The next save fails the same way: the tree was left as it was.
    EXPECT_EQ(save(document.cell, args).code, 13);
}

// ---- document types ------------------------------------------------------------------

class ConformanceSaveDocumentType : public ConformanceSave {
protected:
    void makeDocument(const char* publicId, const char* systemId) {
        const char* qname = "top";
        void* made = nullptr;
        Answer answer = docCall(document.cell, 31,
                                {nullptr, const_cast<char*>(qname), const_cast<char*>(publicId),
                                 const_cast<char*>(systemId)},
                                &made);
        ASSERT_EQ(answer.code, 0) << answer.message;
        document.cell = made;
    }
};

TEST_F(ConformanceSaveDocumentType, PublicAndSystemIds) {
    makeDocument("-//P//EN", "s.dtd");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top PUBLIC \"-//P//EN\" \"s.dtd\"><top/>");
}

// After a public id the system literal is written when present, even empty.
TEST_F(ConformanceSaveDocumentType, EmptySystemIdAfterAPublicIdIsStillWritten) {
    makeDocument("-//P//EN", "");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top PUBLIC \"-//P//EN\" \"\"><top/>");
}

TEST_F(ConformanceSaveDocumentType, SystemIdAlone) {
    makeDocument("", "s.dtd");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top SYSTEM \"s.dtd\"><top/>");
}

TEST_F(ConformanceSaveDocumentType, NoIdsAtAll) {
    makeDocument("", "");
    EXPECT_EQ(saved(), kDecl + "<!DOCTYPE top><top/>");
}

TEST_F(ConformanceSaveDocumentType, KindSixOnTheDocumentTypeWritesItAlone) {
    makeDocument("", "s.dtd");
    int32_t index = 0;
    void* type = nullptr;
    ASSERT_EQ(docCall(document.cell, 8, {&index}, &type).code, 0);
    EXPECT_EQ(savedNode(type), "<!DOCTYPE top SYSTEM \"s.dtd\">");
}

// ---- other node kinds as the start node -------------------------------------------------

TEST_F(ConformanceSave, KindSixOnAnEntityWritesItsDeclarationWithCrLf) {
    void* entity = createNode(document.cell, "ent", 6);
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(savedNode(entity), "<!ENTITY ent>\r\n");
}

TEST_F(ConformanceSave, KindSixOnATextNodeWritesItEscaped) {
    void* text = createNode(document.cell, "", 3);
    ASSERT_EQ(nodeCall(text, 20, {const_cast<char*>("a<b")}, nullptr).code, 0);
    EXPECT_EQ(savedNode(text), "a&lt;b");
}

TEST_F(ConformanceSave, KindSixOnAttributesFragmentsAndNotationsWritesNothing) {
    void* attr = createNode(document.cell, "a", kAttribute);
    EXPECT_EQ(savedNode(attr), "");
    void* fragment = createNode(document.cell, "", 11);
    appendChild(fragment, createNode(document.cell, "x", kElement));
    EXPECT_EQ(savedNode(fragment), "");
    EXPECT_EQ(savedNode(createNode(document.cell, "n", 12)), "");
}

TEST_F(ConformanceSave, ProcessingInstructionDataFollowsOneBlank) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    void* pi = createNode(document.cell, "t", 7);
    ASSERT_EQ(nodeCall(pi, 20, {const_cast<char*>("d e")}, nullptr).code, 0);
    appendChild(r, pi);
    void* comment = createNode(document.cell, "", 8);
    ASSERT_EQ(nodeCall(comment, 20, {const_cast<char*>(" c&<")}, nullptr).code, 0);
    appendChild(r, comment);
    EXPECT_EQ(saved(), kDecl + "<r><?t d e?><!-- c&<--></r>");
}

TEST_F(ConformanceSave, AttributesAreWrittenInMapOrder) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    for (const char* name : {"zeta", "alpha", "mid"})
        ASSERT_EQ(nodeCall(r, 14, {const_cast<char*>(name), const_cast<char*>(name)}, nullptr).code,
                  0);
    std::string names = attributeNames(r);
    std::string expected = "<r";
    size_t from = 0;
    while (from <= names.size()) {
        size_t comma = names.find(',', from);
        if (comma == std::string::npos) comma = names.size();
        std::string name = names.substr(from, comma - from);
        expected += " " + name + "=\"" + name + "\"";
        from = comma + 1;
    }
    EXPECT_EQ(saved(), kDecl + expected + "/>");
}

// ---- targets --------------------------------------------------------------------------------

struct StreamCall {
    int64_t handle;
    int32_t one;
    std::string bytes;
    bool scratch;
};
std::vector<StreamCall> gStreamCalls;

int32_t recordStreamCall(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                         void* scratch8) {
    gStreamCalls.push_back(
        {handle, one, std::string(static_cast<const char*>(bytes), count), scratch8 != nullptr});
    return -7;  // ignored by the library
}

TEST_F(ConformanceSave, StreamGetsTheHandleTheConstantOneAndAScratchCell) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    gStreamCalls.clear();
    // Called directly, as a host does, with cells that must stay untouched.
    void* block = reinterpret_cast<void*>(uintptr_t{0x77});
    uint32_t length = 0x77;
    ErrorSlot error;
    lumDocSave(&document.cell, 2, 0, 0, 0, nullptr, "ignored.xml", &block, &length,
               INT64_C(0x123456789ab), recordStreamCall, error.buffer, &error.code);
    EXPECT_EQ(error.code, 0) << error.text();
    EXPECT_EQ(block, reinterpret_cast<void*>(uintptr_t{0x77}));
    EXPECT_EQ(length, 0x77u);
    std::string all;
    for (const StreamCall& call : gStreamCalls) {
        EXPECT_EQ(call.handle, INT64_C(0x123456789ab));
        EXPECT_EQ(call.one, 1);
        EXPECT_TRUE(call.scratch);
        all += call.bytes;
    }
    EXPECT_EQ(all, kDecl + "<r/>");
}

TEST_F(ConformanceSave, Utf16StreamMarkIsOneCallOfTwoBytes) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    gStreamCalls.clear();
    SaveArgs args;
    args.target = 2;
    args.encoding = "UTF-16BE";
    args.streamHandle = 5;
    args.streamWrite = recordStreamCall;
    ASSERT_EQ(save(document.cell, args).code, 0);
    ASSERT_GE(gStreamCalls.size(), 2u);
    EXPECT_EQ(gStreamCalls[0].bytes, std::string("\xFE\xFF", 2));
    std::string rest;
    for (size_t i = 1; i < gStreamCalls.size(); ++i) rest += gStreamCalls[i].bytes;
    std::string expected;
    for (char c : "<?xml version=\"1.0\" encoding=\"UTF-16BE\" ?>\n<r/>") {
        if (c == 0) break;
        expected += '\0';
        expected += c;
    }
    EXPECT_EQ(rest, expected);
}

// The memory block is trimmed to the length plus one spare byte.
TEST_F(ConformanceSave, MemoryLengthCountsTheBytesWithoutTerminator) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    SaveArgs args;
    args.encoding = "UTF-8";
    SaveAnswer answer = save(document.cell, args);
    ASSERT_EQ(answer.code, 0);
    const std::string expected = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<r/>";
    EXPECT_EQ(answer.length, expected.size());
    EXPECT_EQ(answer.bytes, expected);
}

TEST_F(ConformanceSave, Utf16LeNameInMixedCaseGetsTheMark) {
    void* r = createNode(document.cell, "r", kElement);
    appendToDocument(r);
    SaveArgs args;
    args.encoding = "Utf-16Le";
    SaveAnswer answer = save(document.cell, args);
    ASSERT_EQ(answer.code, 0) << answer.message;
    ASSERT_GE(answer.bytes.size(), 4u);
    EXPECT_EQ(answer.bytes.substr(0, 4), std::string("\xFF\xFE<\0", 4));
}

// An explicit undeclaration on the parent does not end the walk upwards: the
// grandparent's non-empty default is found, so the child repeats xmlns="".
TEST_F(ConformanceSave, UndeclaredDefaultOnTheParentStillLooksFurtherUp) {
    ASSERT_EQ(document.loadMemory("<A xmlns='urn:u'><B xmlns=''><C/></B></A>").code, 0);
    EXPECT_EQ(saved(), kDecl + "<A xmlns=\"urn:u\"><B xmlns=\"\"><C xmlns=\"\"/></B></A>");
}

// What was written before a failure stays with the target: a stream has
// already been handed it, a file keeps it.
TEST_F(ConformanceSave, OutputBeforeANamespaceErrorStaysInStreamAndFile) {
    ASSERT_EQ(document.loadMemory("<r><p:c xmlns:p='urn:one'/></r>").code, 0);
    void* c = childOf(documentElementOf(document.cell), 0);
    void* attr = nullptr;
    ASSERT_EQ(nodeCall(c, 35, {const_cast<char*>("xmlns:p")}, &attr).code, 0);
    ASSERT_EQ(nodeCall(attr, 20, {const_cast<char*>("urn:two")}, nullptr).code, 0);
    const std::string written = kDecl + "<r><p:c";

    gStreamCalls.clear();
    SaveArgs stream;
    stream.target = 2;
    stream.streamWrite = recordStreamCall;
    SaveAnswer answer = save(document.cell, stream);
    EXPECT_EQ(answer.code, 13);
    std::string all;
    for (const StreamCall& call : gStreamCalls) all += call.bytes;
    EXPECT_EQ(all, written);

    TempDir dir;
    const std::string path = dir.file("partial.xml");
    SaveArgs file;
    file.target = 0;
    file.fileName = path.c_str();
    answer = save(document.cell, file);
    EXPECT_EQ(answer.code, 13);
    // A file without a byte-order mark is written in text mode ("\r\n" on Windows).
    EXPECT_EQ(readFile(path), lumtest::textModeBytes(written));
}

// The Xerces text goes through the budget rule, which formats it: "%%"
// arrives as "%", and a conversion with no argument is copied as it is.
TEST_F(ConformanceSave, XmlExceptionTextIsFormattedByTheBudgetRule) {
    appendToDocument(createNode(document.cell, "r", kElement));
    SaveArgs args;
    args.encoding = "x%%y%s";
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
    EXPECT_FALSE(answer.handedOver);
    EXPECT_EQ(answer.message,
              "XML Parser Exception: unable to create converter for 'x%y%s' encoding");
}

// The prefix starts the buffer afresh: what the host left there is gone,
// unlike the DOM errors, which are appended behind it.
TEST_F(ConformanceSave, XmlExceptionTextReplacesWhatTheBufferHeld) {
    appendToDocument(createNode(document.cell, "r", kElement));
    const std::string name(40, 'e');
    SaveArgs args;
    args.encoding = name.c_str();
    args.bufferBefore = std::string(250, 'p');
    SaveAnswer answer = save(document.cell, args);
    EXPECT_EQ(answer.code, 11);
    const std::string whole = "XML Parser Exception: unable to create converter for '" + name +
                              "' encoding";
    ASSERT_LE(whole.size(), 256u);
    EXPECT_EQ(answer.message, whole);
}

}  // namespace
