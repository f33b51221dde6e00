// The demo host's load and dom subcommands print what a host receives.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "run_host.h"

namespace {

using lumtest::HostRun;
using lumtest::runHost;

const std::string kExample = std::string(LUMXML_SOURCE_DIR) + "/examples/catalog.xml";

class HostLoad : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "lumxml-host-XXXXXX").string();
        dir = mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(dir); }
    std::string write(const std::string& name, const std::string& content) {
        std::string path = dir + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    std::string dir;
};

TEST_F(HostLoad, ExampleCatalogLoadsWithItsEncodingAndCode0) {
    HostRun run = runHost("load " + kExample);
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output, "init: code page UTF-8 found, error code 0\nencoding: UTF-8\ncode: 0\n");
}

TEST_F(HostLoad, ExampleCatalogIsValidAgainstItsDocumentType) {
    HostRun run = runHost("load " + kExample + " --validate");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("code: 0\n"), std::string::npos);
}

TEST_F(HostLoad, FatalErrorIsPrintedAsReceivedAndFails) {
    std::string path = write("bad.xml", "<a><b></a>");
    HostRun run = runHost("load " + path);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("code: 10\nmessage: FATAL ERROR: file '" + path +
                              "', line '1', column '9', message 'expected end of tag 'b''\n"),
              std::string::npos)
        << run.output;
}

TEST_F(HostLoad, ValidationErrorFails) {
    std::string path = write("undeclared.xml", "<a/>");
    HostRun run = runHost("load " + path + " --validate");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("code: 9\nmessage: 'no declaration found for element 'a''\n"),
              std::string::npos)
        << run.output;
}

TEST_F(HostLoad, WarningIsPrintedButTheLoadSucceeds) {
    std::string path = write("warn.xml",
                             "<!DOCTYPE a [<!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a/>");
    HostRun run = runHost("load " + path);
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("code: 8\nmessage: WARNING: "), std::string::npos) << run.output;
}

TEST_F(HostLoad, ExpansionLimitZeroStopsTheExample) {
    HostRun run = runHost("load " + kExample + " --limit 0");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("code: 10\n"), std::string::npos);
}

TEST_F(HostLoad, SearchDirectoriesAndNoNamespacesArePassedOn) {
    std::string sub = dir + "/ents";
    std::filesystem::create_directories(sub);
    std::ofstream(sub + "/e.ent") << "entity";
    std::string path =
        write("doc.xml", "<!DOCTYPE p:a [<!ENTITY e SYSTEM \"e.ent\">]><p:a>&e;</p:a>");
    HostRun run = runHost("load " + path + " --no-namespaces --search ' , " + sub + "'");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("code: 0\n"), std::string::npos);
}

TEST_F(HostLoad, MissingFileArgumentIsAUsageError) {
    EXPECT_EQ(runHost("load").status, 2);
    EXPECT_EQ(runHost("load --limit").status, 2);
}

TEST_F(HostLoad, DomPrintsTheOutlineWalkedThroughTheMethods) {
    std::string path = write("small.xml",
                             "<?xml version=\"1.0\"?>\n<!--c--><a x=\"1\" y=\"two\">text<b/>"
                             "<![CDATA[cd]]><?p d?></a>");
    HostRun run = runHost("dom " + path);
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(run.output,
              "init: code page UTF-8 found, error code 0\n"
              "DOCUMENT #document\n"
              "  COMMENT #comment \"c\"\n"
              "  ELEMENT a x=\"1\" y=\"two\"\n"
              "    TEXT #text \"text\"\n"
              "    ELEMENT b\n"
              "    CDATA-SECTION #cdata-section \"cd\"\n"
              "    PROCESSING-INSTRUCTION p \"d\"\n");
}

TEST_F(HostLoad, DomCountPrintsTheNumberOfNodes) {
    std::string path = write("count.xml", "<a><b>t</b><c/></a>");
    HostRun run = runHost("dom " + path + " --count");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("nodes: 5\ntime: "), std::string::npos) << run.output;
}

TEST_F(HostLoad, DomOfTheExampleCatalogueSucceeds) {
    HostRun run = runHost("dom " + kExample);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.output.find("        CDATA-SECTION #cdata-section \"Markup & Mayhem: <tags> "
                              "explained\"\n"),
              std::string::npos)
        << run.output;
}

}  // namespace
