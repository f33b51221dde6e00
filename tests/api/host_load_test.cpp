// The demo host's load subcommand prints what a host receives from a load.
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

struct HostRun {
    int status;
    std::string output;
};

std::string hostProgram() {
    return (std::filesystem::path(LUMXML_LIBRARY_PATH).parent_path() / "tools" / "lumxml-host" /
            "lumxml-host")
        .string();
}

HostRun runHost(const std::string& arguments) {
    std::string command = hostProgram() + " --library " + LUMXML_LIBRARY_PATH + " " + arguments +
                          " 2>/dev/null";
    HostRun run{-1, ""};
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char chunk[256];
    while (size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) run.output.append(chunk, got);
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

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

}  // namespace
