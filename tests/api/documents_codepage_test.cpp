// Host strings in ISO-8859-1 reach the file system as the names they mean.
#include <string>

#include <gtest/gtest.h>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

class Latin1Host : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce("ISO-8859-1"); }
    TempDir dir;
};

// "café.xml" with the é as the host writes it (one byte E9) and as the file
// system stores it (UTF-8).
const char* const kLatin1Name = "caf\xE9.xml";
const char* const kUtf8Name = "caf\xC3\xA9.xml";

TEST_F(Latin1Host, FileNameWithAccentReachesTheFileSystem) {
    dir.write(kUtf8Name, "<caf\xC3\xA9/>");
    std::string hostName = dir.path() + "/" + kLatin1Name;
    HostDocument document;
    ErrorSlot error;
    char encoding[300];
    lumDocLoad(&document.cell, 0, LUM_LOAD_FROM_FILE, encoding, hostName.c_str(), nullptr, 0,
               nullptr, nullptr, 0, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_OK) << error.text();
    EXPECT_EQ(nameOf(documentElement(document.cell)), "caf\xC3\xA9");
}

TEST_F(Latin1Host, SystemIdWithAccentResolvesRelativeEntities) {
    dir.write("r\xC3\xA9p/entity.txt", "found");
    std::string systemId = dir.path() + "/r\xE9p/doc.xml";
    HostDocument document;
    LoadAnswer answer = document.loadMemory(
        "<!DOCTYPE a [<!ENTITY e SYSTEM \"entity.txt\">]><a>&e;</a>", 0, systemId.c_str());
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "found");
}

TEST_F(Latin1Host, EntityDirectoryWithAccentIsSearched) {
    dir.write("d\xC3\xA9p\xC3\xB4t/listed.ent", "listed");
    std::string path = dir.write(
        "docs/doc.xml", "<!DOCTYPE a [<!ENTITY l SYSTEM \"listed.ent\">]><a>&l;</a>");
    std::string list = dir.path() + "/d\xE9p\xF4t";
    const char* locations[3] = {list.c_str(), nullptr, nullptr};
    LoadArgs args;
    args.fileName = path.c_str();
    args.locations = locations;
    HostDocument document;
    LoadAnswer answer = document.load(args);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(textOf(documentElement(document.cell)), "listed");
}

TEST_F(Latin1Host, ReporterTextIsInTheHostCodePage) {
    std::string hostName = dir.path() + "/" + kLatin1Name;
    HostDocument document;
    LoadAnswer answer = document.loadFile(hostName);
    EXPECT_EQ(answer.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(answer.message.find(hostName), std::string::npos) << answer.message;
}

}  // namespace
