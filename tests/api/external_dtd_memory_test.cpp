// Documents whose DOCTYPE names an external DTD, loaded again and again on
// every path that reads one. Xerces itself leaves a block behind on each
// such parse; lumxml frees it with the parse's heap, so the leak check of
// the sanitizer build finds nothing here.
#include <gtest/gtest.h>

#include <string>

#include "host_documents.h"
#include "host_test.h"
#include "sax_host.h"

using lumtest::HostDocument;
using lumtest::HostRecord;
using lumtest::TempDir;

namespace {

constexpr int kRounds = 20;

class ExternalDtdMemory : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::initLibraryOnce();
        dtd = dir.write("doc.dtd", "<!ELEMENT doc (#PCDATA)>\n<!ENTITY e 'expanded'>\n");
        file = dir.write("doc.xml", document);
    }

    TempDir dir;
    std::string dtd;
    std::string file;
    const std::string document = "<!DOCTYPE doc SYSTEM 'doc.dtd'><doc>&e;</doc>";
};

TEST_F(ExternalDtdMemory, DocumentLoadsFromAFileLeaveNothingBehind) {
    HostDocument doc;
    for (int i = 0; i < kRounds; ++i) {
        lumtest::LoadAnswer answer = doc.loadFile(file);
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    }
}

TEST_F(ExternalDtdMemory, DocumentLoadsFromMemoryLeaveNothingBehind) {
    HostDocument doc;
    for (int i = 0; i < kRounds; ++i) {
        lumtest::LoadAnswer answer = doc.loadMemory(document, 0, file.c_str());
        ASSERT_EQ(answer.code, LUM_OK) << answer.message;
    }
}

TEST_F(ExternalDtdMemory, DocumentLoadsWithoutACellLeaveNothingBehind) {
    for (int i = 0; i < kRounds; ++i) {
        char buffer[257] = "";
        int32_t code = 0;
        lumDocLoad(nullptr, 0, LUM_LOAD_FROM_FILE, nullptr, file.c_str(), nullptr, 0, nullptr,
                   nullptr, 0, nullptr, buffer, &code);
        ASSERT_EQ(code, LUM_OK) << buffer;
    }
}

TEST_F(ExternalDtdMemory, PullReadsToTheEndLeaveNothingBehind) {
    for (int i = 0; i < kRounds; ++i) {
        HostRecord record;
        record.setFile(file);
        record.setLimit(-1);  // no limit: the entity is expanded
        std::vector<std::string> events = lumtest::drain(record);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(record.errorCode(), LUM_OK) << record.errorText();
    }
}

TEST_F(ExternalDtdMemory, PullReadsAbandonedHalfWayLeaveNothingBehind) {
    for (int i = 0; i < kRounds; ++i) {
        HostRecord record;
        record.setFile(file);
        record.setLimit(-1);  // no limit: the entity is expanded
        ASSERT_EQ(record.first(), LUM_SAX_MORE);
        ASSERT_EQ(record.next(), LUM_SAX_MORE);
    }
}

TEST_F(ExternalDtdMemory, OneShotValidationsLeaveNothingBehind) {
    for (int i = 0; i < kRounds; ++i) {
        HostRecord record;
        record.setFile(file);
        record.setLimit(-1);  // no limit: the entity is expanded
        record.setFlags(LUM_SAX_VALIDATE);
        EXPECT_EQ(lumSAXParse(record.get()), 1);
        EXPECT_EQ(record.errorCode(), LUM_OK) << record.errorText();
    }
}

}  // namespace
