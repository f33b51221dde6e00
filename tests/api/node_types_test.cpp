// lumTypeToChar and lumTypeToInt, called as a host does (no initialisation).
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "lumxml.h"

namespace {

std::string typeName(int32_t type) {
    char name[64];
    std::memset(name, 'x', sizeof name);
    lumTypeToChar(type, name);
    return name;
}

TEST(NodeTypes, NamesAreFoundIgnoringCase) {
    EXPECT_EQ(lumTypeToInt("element"), 1);
    EXPECT_EQ(lumTypeToInt("Element"), 1);
    EXPECT_EQ(lumTypeToInt("ELEMENT"), 1);
    EXPECT_EQ(lumTypeToInt("processing-instruction"), 7);
}

TEST(NodeTypes, NamesMatchWholeNotByPrefix) {
    EXPECT_EQ(lumTypeToInt("DOCUMENT"), 9);
    EXPECT_EQ(lumTypeToInt("DOCUMENT-TYPE"), 10);
    EXPECT_EQ(lumTypeToInt("DOCUMENT-FRAGMENT"), 11);
    EXPECT_EQ(lumTypeToInt("DOC"), -1);
}

TEST(NodeTypes, EmptyOrBlankPaddedNameIsUnknown) {
    EXPECT_EQ(lumTypeToInt(""), -1);
    EXPECT_EQ(lumTypeToInt(" TEXT"), -1);
    EXPECT_EQ(lumTypeToInt("TEXT "), -1);
    EXPECT_EQ(lumTypeToInt("NODE"), -1);
}

TEST(NodeTypes, LongestNameFitsTwentyThreeBytes) {
    char name[23];
    lumTypeToChar(7, name);
    EXPECT_EQ(std::string(name), "PROCESSING-INSTRUCTION");
    char refusal[18];
    lumTypeToChar(99, refusal);
    EXPECT_EQ(std::string(refusal), "Invalid node type");
}

TEST(NodeTypes, EveryNameRoundTripsToUpperCase) {
    const char* names[] = {"ELEMENT", "ATTRIBUTE", "TEXT", "CDATA-SECTION",
                           "ENTITY-REFERENCE", "ENTITY", "PROCESSING-INSTRUCTION",
                           "COMMENT", "DOCUMENT", "DOCUMENT-TYPE", "DOCUMENT-FRAGMENT",
                           "NOTATION"};
    for (int32_t code = 1; code <= 12; ++code) {
        std::string lower = names[code - 1];
        for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        int32_t found = lumTypeToInt(lower.c_str());
        EXPECT_EQ(found, code) << lower;
        EXPECT_EQ(typeName(found), names[code - 1]);
    }
}

TEST(NodeTypes, TypeNamesAreTheTwelveOfTheTable) {
    const char* names[] = {"ELEMENT", "ATTRIBUTE", "TEXT", "CDATA-SECTION", "ENTITY-REFERENCE",
                           "ENTITY", "PROCESSING-INSTRUCTION", "COMMENT", "DOCUMENT",
                           "DOCUMENT-TYPE", "DOCUMENT-FRAGMENT", "NOTATION"};
    for (int32_t code = 1; code <= 12; ++code) {
        char name[23];
        std::memset(name, 'Z', sizeof name);
        lumTypeToChar(code, name);
        EXPECT_STREQ(name, names[code - 1]);
        EXPECT_EQ(lumTypeToInt(names[code - 1]), code);
    }
}

TEST(NodeTypes, TypeNameMatchIsAsciiCaseFoldingOnly) {
    EXPECT_EQ(lumTypeToInt("processing-instruction"), 7);
    EXPECT_EQ(lumTypeToInt("Cdata-Section"), 4);
    EXPECT_EQ(lumTypeToInt("TEXT "), -1);
    EXPECT_EQ(lumTypeToInt("ELEMENTS"), -1);
    EXPECT_EQ(lumTypeToInt("ELEMEN"), -1);
    EXPECT_EQ(lumTypeToInt("CDATA_SECTION"), -1);
}

TEST(NodeTypes, UnknownTypeCodesWriteTheRefusalText) {
    for (int32_t code : {0, 13, -1, 100, INT32_MIN, INT32_MAX}) {
        char name[23];
        std::memset(name, 'Z', sizeof name);
        lumTypeToChar(code, name);
        EXPECT_STREQ(name, "Invalid node type");
    }
}

}  // namespace
