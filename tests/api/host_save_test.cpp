// The demo host's save subcommand: loads a document and saves it as a host
// does, with the bytes on standard output (memory, stream) or in a file.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "run_host.h"

namespace {

using lumtest::HostRun;
using lumtest::runHost;

// Runs the host; standard output only (the status lines go to standard error).
class HostSave : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "lumxml-host-save-XXXXXX").string();
        dir = mkdtemp(pattern.data());
        input = write("in.xml", "<r a='1'>x&amp;y<!--c--></r>");
    }
    void TearDown() override { std::filesystem::remove_all(dir); }
    std::string write(const std::string& name, const std::string& content) {
        std::string path = dir + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    static std::string read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    std::string dir;
    std::string input;
};

const std::string kSaved = "<?xml version=\"1.0\" ?>\n<r a=\"1\">x&amp;y<!--c--></r>";

TEST_F(HostSave, MemoryBytesGoToStandardOutput) {
    HostRun run = runHost("save " + input);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, kSaved);
}

TEST_F(HostSave, StreamGivesTheSameBytes) {
    HostRun run = runHost("save " + input + " --to stream");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, kSaved);
}

TEST_F(HostSave, FileTargetWritesTheFile) {
    const std::string out = dir + "/out.xml";
    HostRun run = runHost("save " + input + " --to file " + out);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(read(out), kSaved);
}

TEST_F(HostSave, Utf16KeepsItsNulBytesAndMark) {
    HostRun run = runHost("save " + input + " --encoding UTF-16LE --to stream");
    EXPECT_EQ(run.status, 0);
    ASSERT_GE(run.output.size(), 6u);
    EXPECT_EQ(run.output.substr(0, 6), std::string("\xff\xfe<\0?\0", 6));
    HostRun bare = runHost("save " + input + " --encoding UTF-16LE --no-bom");
    EXPECT_EQ(bare.output, run.output.substr(2));
}

TEST_F(HostSave, EscapeFlagsReachTheSave) {
    const std::string quoted = write("q.xml", "<r a=\"'\">'</r>");
    HostRun run = runHost("save " + quoted + " --char-escapes --attr-escapes");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "<?xml version=\"1.0\" ?>\n<r a=\"'\">'</r>");
}

TEST_F(HostSave, UnopenableFileFails) {
    HostRun run = runHost("save " + input + " --to file " + dir + "/missing/out.xml");
    EXPECT_EQ(run.status, 1);
}

TEST_F(HostSave, BadArgumentsAreUsageErrors) {
    EXPECT_EQ(runHost("save").status, 2);
    EXPECT_EQ(runHost("save " + input + " --to nowhere").status, 2);
    EXPECT_EQ(runHost("save " + input + " --frobnicate").status, 2);
}

}  // namespace
