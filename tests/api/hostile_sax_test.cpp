// Hostile documents through the pull reader and the one-shot validation:
// each has a clear outcome and none crashes the host.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host_test.h"
#include "hostile_documents.h"
#include "lumxml.h"
#include "memory_pull.h"

using lumtest::TempDir;
using lumtest::billionLaughs;

namespace {

struct Pull {
    std::vector<std::string> names;
    int32_t lastResult = 0;
    int32_t errorCode = 0;
    std::string errorText;
    size_t characters = 0;
};

// Runs a memory document to its end as a host does.
Pull pull(const std::string& text, uint32_t flags = 0,
          int32_t limit = LUM_SAX_NO_ENTITY_LIMIT,
          size_t maxEvents = 5000000) {
    SaxParserInstance instance;
    lumtest::setUpMemoryPull(instance, text, flags, limit);
    Pull out;
    out.lastResult = lumtest::pullToEnd(instance, [&](const SaxEvent& event) {
        if (out.names.size() >= maxEvents) return false;
        out.names.push_back(event.name != nullptr ? event.name : "");
        if (event.kind == LUM_SAX_EVENT_CHARACTERS)
            out.characters += reinterpret_cast<uintptr_t>(event.arg2) & 0xffffffffu;
        return true;
    });
    out.errorCode = instance.errorCode;
    out.errorText = std::string(instance.errorText, strnlen(instance.errorText, 256));
    lumSAXDeleteParserInstance(&instance);
    return out;
}

size_t count(const Pull& p, const char* name) {
    size_t n = 0;
    for (const std::string& s : p.names) n += s == name;
    return n;
}

class HostileSax : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
};

TEST_F(HostileSax, BillionLaughsEndsWithAFatalErrorEvent) {
    Pull p = pull(billionLaughs(), 0, 50000);
    EXPECT_GE(count(p, "FatalError"), 1u);
    EXPECT_EQ(p.lastResult, LUM_SAX_DONE);
    EXPECT_LT(p.characters, 200000u);
}

TEST_F(HostileSax, HundredThousandLevelsWithoutNamespacesReadToTheEnd) {
    std::string text;
    for (int i = 0; i < 100000; ++i) text += "<e>";
    for (int i = 0; i < 100000; ++i) text += "</e>";
    Pull p = pull(text, LUM_SAX_NO_NAMESPACES);
    EXPECT_EQ(count(p, "StartElement"), 100000u);
    EXPECT_EQ(count(p, "EndElement"), 100000u);
    EXPECT_EQ(p.names.back(), "EndDocument");
    EXPECT_EQ(p.errorCode, LUM_OK);
}

TEST_F(HostileSax, MillionLevelsWithoutNamespacesReadToTheEnd) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "<e>";
    for (int i = 0; i < 1000000; ++i) text += "</e>";
    Pull p = pull(text, LUM_SAX_NO_NAMESPACES);
    EXPECT_EQ(count(p, "StartElement"), 1000000u);
    EXPECT_EQ(p.names.back(), "EndDocument");
}

TEST_F(HostileSax, TwoHundredThousandAttributesArriveInOneList) {
    std::string text = "<r";
    for (int i = 0; i < 200000; ++i) text += " a" + std::to_string(i) + "='v'";
    text += "/>";
    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    instance.inputKind = LUM_SAX_INPUT_MEMORY;
    instance.memoryBuffer = text.data();
    instance.memoryLength = static_cast<uint32_t>(text.size());
    instance.entityExpansionLimit = LUM_SAX_NO_ENTITY_LIMIT;
    int32_t more = lumSAXParseFirst(&instance);
    bool seen = false;
    while (more == LUM_SAX_MORE) {
        SaxEvent* event = instance.eventHead;
        if (event != nullptr && event->kind == LUM_SAX_EVENT_START_ELEMENT) {
            const SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(event);
            EXPECT_EQ(list->count, 200000);
            EXPECT_EQ(list->capacity, 300000);
            EXPECT_STREQ(list->entries[199999].qName, "a199999");
            seen = true;
        }
        more = lumSAXParseNext(&instance);
    }
    EXPECT_TRUE(seen);
    lumSAXDeleteParserInstance(&instance);
}

TEST_F(HostileSax, MalformedBytesGiveFatalErrorEventsNotCrashes) {
    const std::string inputs[] = {
        std::string("<r>\xC3\x28</r>"),
        std::string("<r>\xC0\xAF</r>"),
        std::string("<r>&#xD800;</r>"),
        std::string("<r>a\0b</r>", 10),
        std::string("\x3C\x00\x72\x00\x2F\x00\x3E\x00", 8),
        std::string("\xFE\xFF\x00", 3),
    };
    for (const std::string& input : inputs) {
        Pull p = pull(input);
        EXPECT_EQ(p.lastResult, LUM_SAX_DONE);
        EXPECT_LE(p.errorText.size(), 255u);
    }
}

// The reader goes on after the fatal error about the name, and the name
// then reached ICU, whose converter lookup overflowed a stack buffer with
// names of many non-ASCII characters. Such names are now unsupported.
TEST_F(HostileSax, LongNonAsciiEncodingNameIsAnErrorNotACrash) {
    std::u16string declaration = u"<?xml version=\"1.0\" encoding=\"UTF";
    declaration.append(50, u'\uEEEE');
    declaration += u"\"?><r>x</r>";
    std::string bytes("\xFF\xFE", 2);
    for (char16_t unit : declaration) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    Pull p = pull(bytes);
    EXPECT_GE(count(p, "FatalError"), 1u);
    EXPECT_EQ(p.lastResult, LUM_SAX_DONE);
}

TEST_F(HostileSax, EveryPrefixOfARichDocumentEndsCleanly) {
    const std::string rich =
        "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE r [<!ENTITY e 'ent'>"
        "<!ATTLIST r id ID #IMPLIED>]><r xmlns='urn:d' xmlns:p='urn:p' id='x' p:a='1'>"
        "<p:c>t &e; &amp; caf\xC3\xA9</p:c><!--c--><?pi d?><![CDATA[<c>]]><e/></r>";
    for (size_t length = 0; length <= rich.size(); ++length) {
        Pull p = pull(rich.substr(0, length));
        EXPECT_EQ(p.lastResult, LUM_SAX_DONE) << length;
        if (length == rich.size()) {
            EXPECT_EQ(p.names.back(), "EndDocument");
            EXPECT_EQ(count(p, "FatalError"), 0u);
        }
    }
}

TEST_F(HostileSax, NoDefaultResolutionReadsNoFile) {
    TempDir dir;
    std::string secret = dir.write("secret.txt", "SECRET");
    std::string dtd = dir.write("ext.dtd", "<!ENTITY leak 'SECRET-DTD'>");
    const std::string documents[] = {
        "<!DOCTYPE r [<!ENTITY s SYSTEM 'file://" + secret + "'>]><r>&s;</r>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM 'file://" + dtd + "'>%p;]><r>&leak;</r>",
        "<!DOCTYPE r SYSTEM 'file://" + dtd + "'><r>&leak;</r>",
    };
    for (const std::string& text : documents) {
        SaxParserInstance instance;
        lumtest::setUpMemoryPull(instance, text, LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION,
                                 LUM_SAX_NO_ENTITY_LIMIT);
        lumtest::pullToEnd(instance, [](const SaxEvent& event) {
            if (event.kind == LUM_SAX_EVENT_CHARACTERS && event.arg1 != nullptr) {
                EXPECT_EQ(std::string(static_cast<const char*>(event.arg1)).find("SECRET"),
                          std::string::npos);
            }
            return true;
        });
        lumSAXDeleteParserInstance(&instance);
    }
}

TEST_F(HostileSax, OneShotValidationOfBillionLaughsStopsAtTheLimit) {
    TempDir dir;
    std::string file = dir.write("laughs.xml", billionLaughs());
    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    instance.inputKind = LUM_SAX_INPUT_FILE;
    instance.fileName = file.c_str();
    instance.entityExpansionLimit = 50000;
    EXPECT_EQ(lumSAXParse(&instance), 1);
    EXPECT_EQ(instance.errorCode, LUM_ERR_PARSE_FATAL);
    lumSAXDeleteParserInstance(&instance);
}

}  // namespace
