// Saving documents nested a hundred thousand levels deep with namespaces in
// scope, as a host does: every level is written (the walk keeps its own
// stack) and every namespace lookup answers from the declarations in scope,
// whatever the depth. Byte for byte against the expected text.
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_save.h"
#include "host_test.h"

using namespace lumtest;

namespace {

const char kDecl[] = "<?xml version=\"1.0\" ?>\n";
constexpr int kDepth = 100000;

class SaveDeepNamespaces : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }

    std::string loadAndSave(const std::string& xml) {
        HostDocument document;
        LoadAnswer loaded = document.loadMemory(xml);
        EXPECT_EQ(loaded.code, 0) << loaded.message;
        return saveToMemory(document.cell);
    }
};

// `open` once, then `inner` down to the given depth, the innermost empty.
std::string nested(const std::string& outer, const std::string& inner, const std::string& name) {
    std::string xml;
    xml.reserve(static_cast<size_t>(kDepth) * (inner.size() + name.size() + 3));
    xml += outer;
    for (int i = 1; i < kDepth - 1; ++i) xml += inner;
    xml += inner.substr(0, inner.size() - 1) + "/>";
    for (int i = 1; i < kDepth; ++i) xml += "</" + name + ">";
    return xml;
}

TEST_F(SaveDeepNamespaces, DefaultNamespaceDeclaredOnceAtTheTop) {
    const std::string xml = nested("<e xmlns=\"urn:x\">", "<e>", "e");
    const std::string bytes = loadAndSave(xml);
    EXPECT_EQ(bytes.size(), xml.size() + sizeof kDecl - 1);
    EXPECT_TRUE(bytes == kDecl + xml);
}

TEST_F(SaveDeepNamespaces, PrefixedElementsAndAttributesUnderOneDeclaration) {
    const std::string xml =
        nested("<p:e xmlns:p=\"urn:p\">", "<p:e a=\"1\" p:b=\"2\">", "p:e");
    const std::string bytes = loadAndSave(xml);
    EXPECT_EQ(bytes.size(), xml.size() + sizeof kDecl - 1);
    EXPECT_TRUE(bytes == kDecl + xml);
}

TEST_F(SaveDeepNamespaces, EveryLevelDeclaringItsOwnNamespace) {
    const std::string xml = nested("<e xmlns=\"urn:x\">", "<e xmlns=\"urn:x\">", "e");
    const std::string bytes = loadAndSave(xml);
    EXPECT_EQ(bytes.size(), xml.size() + sizeof kDecl - 1);
    EXPECT_TRUE(bytes == kDecl + xml);
}

}  // namespace
