// Documents whose DTD gives a prefixed attribute a default: a save writes
// each qualified name once and keeps every namespace binding, so load,
// save, load, save gives the same bytes twice.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"

using lumtest::ErrorSlot;

namespace {

// Loads `text` and answers its saved bytes ("ERROR ..." when the load fails).
std::string loadAndSave(const std::string& text) {
    void* document = nullptr;
    ErrorSlot made;
    lumInitDocument(&document, 1, made.buffer, &made.code);
    ErrorSlot error;
    char encoding[257] = {0};
    lumDocLoad(&document, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, text.data(),
               static_cast<uint32_t>(text.size()), nullptr, nullptr, 0, nullptr, error.buffer,
               &error.code);
    std::string out;
    if (error.code != LUM_OK) {
        out = "ERROR " + error.text();
    } else {
        void* memory = nullptr;
        uint32_t length = 0;
        ErrorSlot saved;
        lumDocSave(&document, LUM_SAVE_TO_MEMORY, 0, 0, 1, nullptr, nullptr, &memory, &length, 0,
                   nullptr, saved.buffer, &saved.code);
        out = memory != nullptr ? std::string(static_cast<const char*>(memory), length)
                                : "SAVE ERROR " + saved.text();
        std::free(memory);
    }
    ErrorSlot gone;
    lumDocDelete(document, gone.buffer, &gone.code);
    return out;
}

// How often `name` occurs in the elements (after the internal subset).
size_t countInElements(const std::string& saved, const std::string& name) {
    size_t count = 0;
    for (size_t at = saved.find(name, saved.find("]>")); at != std::string::npos;
         at = saved.find(name, at + 1))
        ++count;
    return count;
}

class DefaultedAttributeSave : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }

    void expectStableSave(const std::string& text, const std::string& expected) {
        const std::string once = loadAndSave(text);
        EXPECT_EQ(once, expected);
        EXPECT_EQ(loadAndSave(once), once);
    }
};

TEST_F(DefaultedAttributeSave, FixedPrefixAndPrefixedDefault) {
    expectStableSave(
        "<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED \"http://example.org\" "
        "tst:att CDATA \"1\">]><doc att=\"1\"/>",
        "<?xml version=\"1.0\" ?>\n<!DOCTYPE doc[<!ATTLIST doc xmlns:tst CDATA #FIXED "
        "\"http://example.org\" tst:att CDATA \"1\">]><doc att=\"1\" tst:att=\"1\" "
        "xmlns:tst=\"http://example.org\"/>");
}

TEST_F(DefaultedAttributeSave, SecondPrefixOnTheSameNamespaceKeepsTheAuthorsAttribute) {
    expectStableSave(
        "<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED \"http://example.org\" "
        "tst:att CDATA \"1\">]><doc xmlns:other=\"http://example.org\" other:att=\"2\"/>",
        "<?xml version=\"1.0\" ?>\n<!DOCTYPE doc[<!ATTLIST doc xmlns:tst CDATA #FIXED "
        "\"http://example.org\" tst:att CDATA \"1\">]><doc other:att=\"2\" "
        "xmlns:other=\"http://example.org\" xmlns:tst=\"http://example.org\"/>");
}

TEST_F(DefaultedAttributeSave, DefaultsInTheirOwnDeclarations) {
    const std::string text =
        "<!DOCTYPE doc [\n<!ATTLIST doc a1 CDATA \"0\">\n"
        "<!ATTLIST doc xmlns:tst CDATA #FIXED \"http://example.org/test/\">\n"
        "<!ATTLIST doc tst:a2 CDATA \"1\">\n]>\n<doc tst:a2=\"2\"><e/></doc>";
    const std::string once = loadAndSave(text);
    EXPECT_EQ(once.find("ERROR"), std::string::npos) << once;
    EXPECT_EQ(countInElements(once, "tst:a2="), 1u) << once;
    EXPECT_NE(once.find("tst:a2=\"2\""), std::string::npos) << once;
    EXPECT_EQ(loadAndSave(once), once);
}

TEST_F(DefaultedAttributeSave, LinkAttributesDefaultedOnAnInnerElement) {
    const std::string text =
        "<!DOCTYPE a [<!ELEMENT a (b)><!ELEMENT b EMPTY>"
        "<!ATTLIST b xmlns:xlink CDATA #FIXED \"http://www.w3.org/1999/xlink\" "
        "xlink:type CDATA #FIXED \"simple\" xlink:href CDATA #IMPLIED>]>"
        "<a><b xlink:href=\"x\"/></a>";
    const std::string once = loadAndSave(text);
    EXPECT_EQ(once.find("ERROR"), std::string::npos) << once;
    EXPECT_EQ(countInElements(once, "xlink:type="), 1u) << once;
    EXPECT_EQ(loadAndSave(once), once);
}

}  // namespace
