// The demo host's sax subcommand prints each event as a host receives it.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "run_host.h"

namespace {

using lumtest::HostRun;
using lumtest::runHost;

const std::string kExample = std::string(LUMXML_SOURCE_DIR) + "/examples/sax-events.xml";

TEST(HostSax, ExamplePrintsEveryEventWithItsArgumentsAndLocation) {
    HostRun run = runHost("sax " + kExample);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output,
        "init: code page UTF-8 found, error code 0\n"
        "1:1 StartDocument\n"
        "2:28 ProcessingInstruction target=\"catalogue-style\" data=\"compact\"\n"
        "4:36 NotationDecl name=\"png\" publicId=null systemId=\"image/png\"\n"
        "5:47 UnparsedEntityDecl name=\"cover\" publicId=null systemId=\"cover.png\" notation=\"png\"\n"
        "8:82 StartPrefixMapping prefix=\"\" uri=\"urn:example:library\"\n"
        "8:82 StartPrefixMapping prefix=\"dc\" uri=\"http://purl.org/dc/elements/1.1/\"\n"
        "8:82 StartElement uri=\"urn:example:library\" local=\"library\" qname=\"library\" attributes(0/0)\n"
        "9:3 Characters text=\"\n"
        "  \" length=3\n"
        "9:34 StartElement uri=\"urn:example:library\" local=\"book\" qname=\"book\" attributes(2/3) {local=\"id\" qname=\"id\" uri=null type=\"CDATA\" value=\"b1\"} {local=\"language\" qname=\"dc:language\" uri=\"http://purl.org/dc/elements/1.1/\" type=\"CDATA\" value=\"en\"}\n"
        "10:5 Characters text=\"\n"
        "    \" length=5\n"
        "10:15 StartElement uri=\"http://purl.org/dc/elements/1.1/\" local=\"title\" qname=\"dc:title\" attributes(0/0)\n"
        "10:19 Characters text=\"Caf\" length=3\n"
        "10:32 Characters text=\"é stories\" length=9\n"
        "10:43 EndElement uri=\"http://purl.org/dc/elements/1.1/\" local=\"title\" qname=\"dc:title\"\n"
        "11:5 Characters text=\"\n"
        "    \" length=5\n"
        "11:11 StartElement uri=\"urn:example:library\" local=\"note\" qname=\"note\" attributes(0/0)\n"
        "11:35 Characters text=\"<not markup>\" length=12\n"
        "11:42 EndElement uri=\"urn:example:library\" local=\"note\" qname=\"note\"\n"
        "12:5 Characters text=\"\n"
        "    \" length=5\n"
        "12:16 StartElement uri=\"urn:example:library\" local=\"publisher\" qname=\"publisher\" attributes(0/0)\n"
        "12:27 Characters text=\"Lumen \" length=6\n"
        "12:27 Characters text=\"& Sons\" length=6\n"
        "12:39 EndElement uri=\"urn:example:library\" local=\"publisher\" qname=\"publisher\"\n"
        "13:3 Characters text=\"\n"
        "  \" length=3\n"
        "13:10 EndElement uri=\"urn:example:library\" local=\"book\" qname=\"book\"\n"
        "14:1 Characters text=\"\n"
        "\" length=1\n"
        "14:11 EndElement uri=\"urn:example:library\" local=\"library\" qname=\"library\"\n"
        "14:11 EndPrefixMapping prefix=\"dc\"\n"
        "14:11 EndPrefixMapping prefix=\"\"\n"
        "15:9 ProcessingInstruction target=\"done\" data=\"\"\n"
        "16:1 EndDocument\n"
        "end: result 0, code 0\n");
}

TEST(HostSax, CountPrintsEventsPerKind) {
    HostRun run = runHost("sax --count " + kExample);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.output.find("\nCharacters: 11\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("\nStartElement: 5\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("\nEndDocument: 1\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("\nevents: 31 in "), std::string::npos) << run.output;
}

TEST(HostSax, NamespacesOffAndValidationShowNullLocalNamesAndErrors) {
    HostRun run = runHost("sax --no-namespaces --validate " + kExample);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.output.find("8:82 StartElement uri=\"\" local=null qname=\"library\""),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("8:9 Error message=\"no declaration found for element 'library'\""),
              std::string::npos);
}

TEST(HostSax, MissingFileEndsWithTheLibrarysMessage) {
    HostRun run = runHost("sax /nonexistent/doc.xml");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("end: result 0, code 3, message Error parsing file: unable to open "
                              "primary document entity '/nonexistent/doc.xml'"),
              std::string::npos)
        << run.output;
}

TEST(HostSax, MissingFileArgumentIsAUsageError) {
    EXPECT_EQ(runHost("sax").status, 2);
    EXPECT_EQ(runHost("sax " + kExample + " --frobnicate").status, 2);
}

TEST(HostSax, ExpansionLimitEndsAnExponentialDocument) {
    std::string pattern = (std::filesystem::temp_directory_path() / "lumxml-host-XXXXXX").string();
    const std::string dir = mkdtemp(pattern.data());
    std::string document = "<!DOCTYPE l [<!ENTITY a 'aa'>";
    for (int i = 1; i <= 20; ++i) {
        const std::string previous = i == 1 ? "a" : "a" + std::to_string(i - 1);
        document += "<!ENTITY a" + std::to_string(i) + " '&" + previous + ";&" + previous + ";'>";
    }
    document += "]><l>&a20;</l>";
    std::ofstream(dir + "/lol.xml") << document;
    HostRun run = runHost("sax --count --limit 100 " + dir + "/lol.xml");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.output.find("\nFatalError: 1\n"), std::string::npos) << run.output;
    std::filesystem::remove_all(dir);
}

}  // namespace
