// External entities, schemas and entity-expansion limits of document loads.
#include <string>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class DocumentEntities : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }

    LoadAnswer loadWithDirectories(HostDocument& document, const std::string& path,
                                   const std::string& directories, uint32_t flags = 0) {
        const char* locations[3] = {directories.c_str(), nullptr, nullptr};
        LoadArgs args;
        args.flags = flags;
        args.fileName = path.c_str();
        args.locations = locations;
        return document.load(args);
    }

    // "  dirA , \t , dirB/": a blank middle piece, blanks around the names.
    std::string directoryList() const {
        return "  " + dir.file("dirA") + " , \t , " + dir.file("dirB") + "/";
    }

    TempDir dir;
};

const char* const kBillionLaughs =
    "<!DOCTYPE lolz [\n"
    " <!ENTITY lol \"lol\">\n"
    " <!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">\n"
    " <!ENTITY lol2 \"&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;\">\n"
    " <!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">\n"
    " <!ENTITY lol4 \"&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;\">\n"
    " <!ENTITY lol5 \"&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;\">\n"
    " <!ENTITY lol6 \"&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;\">\n"
    " <!ENTITY lol7 \"&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;\">\n"
    " <!ENTITY lol8 \"&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;\">\n"
    " <!ENTITY lol9 \"&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;\">\n"
    "]>\n"
    "<lolz>&lol9;</lolz>\n";

TEST_F(DocumentEntities, ExternalSubsetAndEntityAreFoundThroughTheDirectoryList) {
    dir.write("dirA/first.ent", "first entity text");
    dir.write("dirB/second.ent", "second entity text");
    dir.write("dirB/subset.dtd", "<!ELEMENT doc ANY>\n<!ENTITY via-subset \"from the subset\">\n");
    std::string path = dir.write("docs/doc.xml",
                                 "<!DOCTYPE doc SYSTEM \"subset.dtd\" [\n"
                                 " <!ENTITY one SYSTEM \"first.ent\">\n"
                                 " <!ENTITY two SYSTEM \"second.ent\">\n"
                                 "]>\n<doc>&one;|&two;|&via-subset;</doc>");
    HostDocument document;
    LoadAnswer answer = loadWithDirectories(document, path, directoryList());
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)),
              "first entity text|second entity text|from the subset");
}

TEST_F(DocumentEntities, EntityInNoListedDirectoryFallsBackToDefaultResolutionAndFails) {
    dir.write("dirA/first.ent", "first");
    std::string path = dir.write("docs/doc.xml",
                                 "<!DOCTYPE doc [\n"
                                 " <!ENTITY lost SYSTEM \"nowhere.ent\">\n"
                                 "]>\n<doc>&lost;</doc>");
    HostDocument document;
    LoadAnswer answer = loadWithDirectories(document, path, directoryList());
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message, "FATAL ERROR: file '" + path +
                                  "', line '4', column '12', message 'unable to open external "
                                  "entity '" + dir.file("docs/nowhere.ent") + "''");
}

TEST_F(DocumentEntities, WithoutDirectoryListEntitiesResolveBesideTheDocument) {
    dir.write("docs/near.ent", "beside");
    std::string path =
        dir.write("docs/doc.xml", "<!DOCTYPE doc [<!ENTITY n SYSTEM \"near.ent\">]><doc>&n;</doc>");
    HostDocument document;
    EXPECT_EQ(document.loadFile(path).code, LUM_OK);
    EXPECT_EQ(textOf(documentElement(document.cell)), "beside");
}

TEST_F(DocumentEntities, DefaultEntityResolutionOffLeavesAnAbsoluteEntityUnread) {
    std::string secret = dir.write("secret.txt", "SECRET-CONTENT");
    std::string xml =
        "<!DOCTYPE doc [<!ENTITY s SYSTEM \"" + secret + "\">]><doc>before&s;after</doc>";
    HostDocument reading;
    EXPECT_EQ(reading.loadMemory(xml).code, LUM_OK);
    EXPECT_EQ(textOf(documentElement(reading.cell)), "beforeSECRET-CONTENTafter");

    HostDocument guarded;
    guarded.loadMemory(xml, LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION);
    EXPECT_EQ(textOf(documentElement(guarded.cell)).find("SECRET"), std::string::npos);
}

TEST_F(DocumentEntities, DefaultEntityResolutionOffStillUsesTheDirectoryList) {
    dir.write("dirA/listed.ent", "listed");
    std::string path = dir.write("docs/doc.xml",
                                 "<!DOCTYPE doc [<!ENTITY l SYSTEM \"listed.ent\">]><doc>&l;</doc>");
    HostDocument document;
    LoadAnswer answer = loadWithDirectories(document, path, directoryList(), 4);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "listed");
}

TEST_F(DocumentEntities, ExpansionLimitZeroMakesAnyExpansionFatal) {
    int32_t limit = 0;
    LoadArgs args;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    args.memory = "<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>";
    args.entityExpansionLimit = &limit;
    HostDocument document;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(answer.message.rfind("FATAL ERROR: file 'MEMPTR'", 0), 0u) << answer.message;
}

TEST_F(DocumentEntities, ExpansionWithoutLimitPointerIsNotLimited) {
    LoadArgs args;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    args.memory = "<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;&e;</a>";
    HostDocument document;
    EXPECT_EQ(document.load(args).code, LUM_OK);
    EXPECT_EQ(textOf(documentElement(document.cell)), "xx");
}

TEST_F(DocumentEntities, BillionLaughsStopsAtTheLimitWithCode10) {
    int32_t limit = 50000;
    LoadArgs args;
    args.sourceKind = LUM_LOAD_FROM_MEMORY;
    args.memory = kBillionLaughs;
    args.entityExpansionLimit = &limit;
    HostDocument document;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(answer.message.find("50000"), std::string::npos) << answer.message;
}

// ---- schemas ---------------------------------------------------------------

const char* const kNoNamespaceSchema =
    "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n"
    " <xs:element name=\"order\">\n"
    "  <xs:complexType><xs:sequence>\n"
    "   <xs:element name=\"qty\" type=\"xs:int\"/>\n"
    "  </xs:sequence></xs:complexType>\n"
    " </xs:element>\n"
    "</xs:schema>\n";

class Schemas : public DocumentEntities {
protected:
    LoadAnswer loadValidated(HostDocument& document, const std::string& xml,
                             const char* schemaLocation, const char* noNamespaceLocation,
                             std::string& printed) {
        const char* locations[3] = {nullptr, schemaLocation, noNamespaceLocation};
        std::string path = dir.write("doc.xml", xml);
        LoadArgs args;
        args.flags = LUM_LOAD_VALIDATE;
        args.fileName = path.c_str();
        args.locations = locations;
        ::testing::internal::CaptureStdout();
        LoadAnswer answer = document.load(args);
        printed = ::testing::internal::GetCapturedStdout();
        return answer;
    }
};

TEST_F(Schemas, ValidDocumentAgainstExternalNoNamespaceSchemaGivesNoError) {
    std::string schema = dir.write("order.xsd", kNoNamespaceSchema);
    HostDocument document;
    std::string printed;
    LoadAnswer answer = loadValidated(document, "<order><qty>3</qty></order>", nullptr,
                                      schema.c_str(), printed);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(printed, "");
}

TEST_F(Schemas, InvalidDocumentGivesCode9AndOnlyTheQuotedMessage) {
    std::string schema = dir.write("order.xsd", kNoNamespaceSchema);
    HostDocument document;
    std::string printed;
    LoadAnswer answer = loadValidated(document, "<order><qty>three</qty></order>", nullptr,
                                      schema.c_str(), printed);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_ERROR);
    EXPECT_EQ(answer.message, "'value 'three' does not match regular expression facet "
                              "'[+\\-]?[0-9]+''");
    // The reporter's text was empty when the error came: it printed nothing.
    EXPECT_EQ(printed, "");
    // The document is still the host's.
    EXPECT_EQ(nameOf(documentElement(document.cell)), "order");
}

// A schema type that collapses whitespace leaves the element an empty text
// node (Xerces hands over character data of length 0), which a save writes
// as an open and a close tag.
TEST_F(Schemas, WhitespaceCollapsedToNothingKeepsAnEmptyTextNode) {
    std::string schema = dir.write(
        "token.xsd",
        "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
        "<xs:element name=\"e\" type=\"xs:token\"/></xs:schema>");
    HostDocument document;
    std::string printed;
    LoadAnswer answer = loadValidated(document, "<e> </e>", nullptr, schema.c_str(), printed);
    ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(childCountOf(documentElement(document.cell)), 1);
    EXPECT_EQ(saveToMemory(document.cell),
              "<?xml version=\"1.0\" ?>\n<e></e>");
}

TEST_F(Schemas, NamespacedDocumentValidatesAgainstExternalSchemaLocation) {
    std::string schema = dir.write(
        "ns.xsd",
        "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" targetNamespace=\"urn:shop\" "
        "elementFormDefault=\"qualified\">\n"
        " <xs:element name=\"item\" type=\"xs:string\"/>\n"
        "</xs:schema>\n");
    std::string pair = "urn:shop " + schema;
    HostDocument good;
    std::string printed;
    LoadAnswer answer = loadValidated(good, "<item xmlns=\"urn:shop\">pen</item>", pair.c_str(),
                                      nullptr, printed);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    HostDocument bad;
    answer = loadValidated(bad, "<other xmlns=\"urn:shop\"/>", pair.c_str(), nullptr, printed);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_ERROR);
    EXPECT_EQ(answer.message.find("ERROR:"), std::string::npos);
}

TEST_F(Schemas, EmptyLocationStringsCountAsNotGiven) {
    HostDocument document;
    const char* locations[3] = {"", "", ""};
    ErrorSlot error;
    char encoding[300];
    lumDocLoad(&document.cell, 0, LUM_LOAD_FROM_MEMORY, encoding, nullptr, "<a/>", 4, nullptr,
               nullptr, 0, locations, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK) << error.text();
    EXPECT_EQ(nameOf(documentElement(document.cell)), "a");
}

}  // namespace
