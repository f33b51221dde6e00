// The DOM's limit on distinct names under the hardened settings counts
// everything Xerces' DOM pools or maps by name: element and attribute
// names, namespace URIs, declared entities and notations. The pull reader
// counts element names only, of which its scanner keeps declarations.
#include <string>

#include <gtest/gtest.h>

#include "host_test.h"
#include "hostile_documents.h"
#include "lumxml.h"
#include "limited_parse.h"

namespace {

constexpr const char* kNamesMessage =
    "the document uses more than '20000' distinct names and namespace URIs; this is the limit "
    "imposed by the application";

int32_t loadCode(const std::string& text, const int32_t* limit, std::string* message = nullptr) {
    const lumtest::Loaded loaded = lumtest::loadText(text, limit);
    if (message != nullptr) *message = loaded.message;
    return loaded.code;
}

bool pullsWithoutFatalError(const std::string& text, int32_t limit) {
    return lumtest::pullText(text, limit).fatalErrors.empty();
}

// `count` sibling elements <a>, each in a namespace of its own.
std::string distinctUris(int count) {
    std::string text = "<r>";
    for (int i = 0; i < count; ++i) text += "<a xmlns=\"urn:" + std::to_string(i) + "\"/>";
    return text + "</r>";
}

// `count` attributes in namespaces of their own, on one element.
std::string distinctAttributeUris(int count) {
    std::string text = "<r";
    for (int i = 0; i < count; ++i) {
        const std::string n = std::to_string(i);
        text += " xmlns:p" + n + "=\"urn:" + n + "\" p" + n + ":a=\"v\"";
    }
    return text + "/>";
}

std::string declaredEntities(int count) {
    std::string text = "<!DOCTYPE r [";
    for (int i = 0; i < count; ++i) text += "<!ENTITY e" + std::to_string(i) + " \"x\">";
    return text + "]><r/>";
}

std::string declaredNotations(int count) {
    std::string text = "<!DOCTYPE r [";
    for (int i = 0; i < count; ++i) text += "<!NOTATION n" + std::to_string(i) + " SYSTEM \"x\">";
    return text + "]><r/>";
}

class HostileDomNames : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    const int32_t limit = 50000;

    void expectLimited(const std::string& within, const std::string& over) {
        EXPECT_EQ(loadCode(within, &limit), LUM_OK);
        std::string message;
        EXPECT_EQ(loadCode(over, &limit, &message), LUM_ERR_PARSE_FATAL);
        EXPECT_NE(message.find(kNamesMessage), std::string::npos) << message;
        EXPECT_TRUE(pullsWithoutFatalError(over, limit));
        EXPECT_EQ(loadCode(over, nullptr), LUM_OK);
    }
};

TEST_F(HostileDomNames, NamespaceUrisOfElementsCount) {
    // The names r, a and xmlns and 19997 URIs make 20000.
    expectLimited(distinctUris(19997), distinctUris(19998));
}

TEST_F(HostileDomNames, NamespaceUrisOfAttributesCount) {
    // Per attribute pair: the xmlns:pN name, the pN:a name and the URI;
    // plus r and the xmlns namespace itself.
    expectLimited(distinctAttributeUris(6666), distinctAttributeUris(6667));
}

TEST_F(HostileDomNames, DeclaredEntitiesCount) {
    // With the element's name r: 20000.
    expectLimited(declaredEntities(19999), declaredEntities(20000));
}

TEST_F(HostileDomNames, DeclaredNotationsCount) {
    expectLimited(declaredNotations(19999), declaredNotations(20000));
}

TEST_F(HostileDomNames, PullReaderCountsElementNames) {
    // With r: 20000 names; the 20001st ends the read.
    const auto siblings = lumtest::distinctElementNames;
    EXPECT_TRUE(pullsWithoutFatalError(siblings(19999), limit));
    EXPECT_FALSE(pullsWithoutFatalError(siblings(20000), limit));
    EXPECT_TRUE(pullsWithoutFatalError(siblings(20000), -1));
}

TEST_F(HostileDomNames, NoNamespaceIsNotAName) {
    // Elements without a namespace add nothing for their URI.
    EXPECT_EQ(loadCode(lumtest::distinctElementNames(19999), &limit), LUM_OK);
}

}  // namespace
