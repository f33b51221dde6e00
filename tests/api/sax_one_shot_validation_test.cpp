// The one-shot validation of a file (lumSAXValidate...) as a host calls it:
// its answer, its error record, its flags and the inputs it refuses.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host_test.h"
#include "hostile_documents.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::noLocation;
using lumtest::kNoNamespaces;
using lumtest::kValidate;
using lumtest::HostRecord;
using lumtest::TempDir;
using lumtest::billionLaughs;
using lumtest::drain;
using Events = std::vector<std::string>;

namespace {

class SaxParse : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
    TempDir dir;
};

// ---- one-shot validation ------------------------------------------------------

TEST_F(SaxParse, OneShotValidationOfAValidFileAnswersOneWithoutError) {
    HostRecord record;
    record.setFile(dir.write("v.xml", "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r/>"));
    record.setFlags(kValidate);
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_OK);
    EXPECT_EQ(record.errorText(), "");
    EXPECT_EQ(record.head(), nullptr);  // no events
}

TEST_F(SaxParse, OneShotValidationReportsAFatalError) {
    const std::string path = dir.write("bad.xml", "<r><a></r>");
    HostRecord record;
    record.setFile(path);
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(record.errorText(), "FATAL ERROR: file '" + path +
                                      "', line '1', column '9', message 'expected end of tag 'a''");
}

TEST_F(SaxParse, OneShotValidationReportsTheFirstValidityError) {
    HostRecord record;
    record.setFile(dir.write("inv.xml", "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><x/><y/></r>"));
    record.setFlags(kValidate);
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE_ERROR);
    EXPECT_EQ(record.errorText(), "'no declaration found for element 'x''");
}

TEST_F(SaxParse, OneShotValidationRefusesMemoryInput) {
    HostRecord record;
    record.setMemory("<r/>");
    EXPECT_EQ(lumSAXParse(record.get()), 0);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_SUPPORTED);
}

TEST_F(SaxParse, OneShotValidationFindsTheDtdInTheSearchDirectories) {
    dir.write("dtds/r.dtd", "<!ELEMENT r EMPTY>");
    const std::string path = dir.write("docs/doc.xml", "<!DOCTYPE r SYSTEM 'r.dtd'><r/>");
    HostRecord record;
    record.setFile(path);
    record.setFlags(kValidate);
    record.setSearchPath(" " + dir.file("nothing") + " , " + dir.file("dtds"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_OK) << record.errorText();

    HostRecord without;
    without.setFile(path);
    without.setFlags(kValidate);
    EXPECT_EQ(lumSAXParse(without.get()), 1);
    EXPECT_EQ(without.errorCode(), LUM_ERR_PARSE_FATAL);
    EXPECT_NE(without.errorText().find("unable to open DTD document"), std::string::npos);
}

TEST_F(SaxParse, OneShotValidationStopsAtTheExpansionLimit) {
    HostRecord record;
    record.setFile(dir.write("lol.xml", billionLaughs()));
    record.setLimit(1000);
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE_FATAL);
    EXPECT_NE(record.errorText().find("more than '1000' entity expansions"), std::string::npos);
}

TEST_F(SaxParse, OneShotValidationOfAMissingFileReportsIt) {
    HostRecord record;
    record.setFile(dir.file("none.xml"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE_FATAL);
    EXPECT_NE(record.errorText().find("unable to open primary document entity"),
              std::string::npos);
}

// ---- one-shot validation ------------------------------------------------------------

TEST_F(SaxParse, OneShotValidationWithoutTheValidateFlagIgnoresTheDtdRules) {
    HostRecord record;
    record.setFile(dir.write("inv.xml", "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><x/></r>"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorCode(), LUM_OK) << record.errorText();
    EXPECT_EQ(record.errorText(), "");
}

TEST_F(SaxParse, OneShotValidationProcessesNamespacesUnlessFlagBitZero) {
    const std::string path = dir.write("unbound.xml", "<p:r/>");
    HostRecord withNamespaces;
    withNamespaces.setFile(path);
    EXPECT_EQ(lumSAXParse(withNamespaces.get()), 1);
    EXPECT_NE(withNamespaces.errorCode(), LUM_OK);
    EXPECT_NE(withNamespaces.errorText().find("p"), std::string::npos);

    HostRecord without;
    without.setFile(path);
    without.setFlags(kNoNamespaces);
    EXPECT_EQ(lumSAXParse(without.get()), 1);
    EXPECT_EQ(without.errorCode(), LUM_OK) << without.errorText();
}

TEST_F(SaxParse, OneShotValidationRefusesMemoryKindFive) {
    HostRecord record;
    record.setMemory("<r/>", LUM_SAX_INPUT_BUFFER);
    EXPECT_EQ(lumSAXParse(record.get()), 0);
    EXPECT_EQ(record.errorText(), "Not supported");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_SUPPORTED);
}

TEST_F(SaxParse, OneShotValidationRaisesNoEvents) {
    HostRecord record;
    record.setFile(dir.write("ok.xml", "<r a='1'><?pi?>text</r>"));
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.eventCount(), 0);
    EXPECT_EQ(record.reader(), nullptr);
}

}  // namespace
