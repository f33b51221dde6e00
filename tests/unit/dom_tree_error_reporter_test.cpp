// The document parser's error handler keeps the first problem as one line
// within the host's 256-character budget.
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "dom/load/dom_tree_error_reporter.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "start_library.h"
#include "lumxml.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

class Reporter : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }

    static SAXParseException problem(const std::string& message,
                                     const std::string& systemId = "doc.xml",
                                     XMLFileLoc line = 3, XMLFileLoc column = 7) {
        XmlString text(message.c_str());
        XmlString id(systemId.c_str());
        return SAXParseException(text.get(), nullptr, id.get(), line, column);
    }

    static std::string warningPrefix(const std::string& systemId, int line, int column) {
        return "WARNING: file '" + systemId + "', line '" + std::to_string(line) +
               "', column '" + std::to_string(column) + "', message ";
    }

    DOMTreeErrorReporter reporter;
};

TEST_F(Reporter, StartsWithNothingRecorded) {
    EXPECT_FALSE(reporter.sawErrors());
    EXPECT_STREQ(reporter.message(), "");
    EXPECT_EQ(reporter.code(), LUM_OK);
}

TEST_F(Reporter, WarningRecordsLocationAndQuotedMessageWithCode8) {
    reporter.warning(problem("something odd"));
    EXPECT_TRUE(reporter.sawErrors());
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_WARNING);
    EXPECT_STREQ(reporter.message(),
                 "WARNING: file 'doc.xml', line '3', column '7', message 'something odd'");
}

TEST_F(Reporter, FatalErrorRecordsLocationAndQuotedMessageWithCode10) {
    reporter.fatalError(problem("expected end of tag 'a'", "/tmp/x.xml", 12, 40));
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_FATAL);
    EXPECT_STREQ(reporter.message(), "FATAL ERROR: file '/tmp/x.xml', line '12', column '40', "
                                     "message 'expected end of tag 'a''");
}

TEST_F(Reporter, ErrorRecordsOnlyTheQuotedMessageWithoutErrorPrefix) {
    ::testing::internal::CaptureStdout();
    reporter.error(problem("element 'b' is not allowed"));
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_ERROR);
    EXPECT_STREQ(reporter.message(), "'element 'b' is not allowed'");
    // A fresh reporter's text is empty, and it is the format of the line.
    EXPECT_EQ(printed, "");
}

TEST_F(Reporter, ErrorAfterResetPrintsTheHeldTextAsItsFormatAndAppends) {
    reporter.warning(problem("first", "a%sb.xml", 1, 2));
    std::string held = reporter.message();
    reporter.resetErrors();
    ::testing::internal::CaptureStdout();
    reporter.error(problem("second"));
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "WARNING: file 'aERROR: file '%s', line '%d', column '%d', message "
                       "b.xml', line '1', column '2', message 'first'");
    EXPECT_EQ(std::string(reporter.message()), held + "'second'");
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_ERROR);
}

TEST_F(Reporter, OnlyTheFirstProblemIsKept) {
    reporter.warning(problem("first"));
    reporter.fatalError(problem("second"));
    reporter.error(problem("third"));
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_WARNING);
    EXPECT_STREQ(reporter.message(),
                 "WARNING: file 'doc.xml', line '3', column '7', message 'first'");
}

TEST_F(Reporter, ResetClearsOnlyTheSeenFlag) {
    reporter.fatalError(problem("broken"));
    std::string held = reporter.message();
    reporter.resetErrors();
    EXPECT_FALSE(reporter.sawErrors());
    EXPECT_EQ(reporter.message(), held);
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_FATAL);
    reporter.warning(problem("later"));
    EXPECT_EQ(reporter.code(), LUM_ERR_PARSE_WARNING);
    EXPECT_STREQ(reporter.message(),
                 "WARNING: file 'doc.xml', line '3', column '7', message 'later'");
}

TEST_F(Reporter, LongMessageAfterSixtyCharacterPrefixEndsAtCharacter256WithDotsAndQuote) {
    std::string systemId(12, 's');
    std::string prefix = warningPrefix(systemId, 3, 7);
    ASSERT_EQ(prefix.size(), 60u);
    std::string message(400, 'm');
    reporter.warning(problem(message, systemId));
    std::string text = reporter.message();
    ASSERT_EQ(text.size(), 256u);
    EXPECT_EQ(text, prefix + "'" + std::string(256 - 60 - 5, 'm') + "...'");
}

TEST_F(Reporter, MessageThatJustFitsIsKeptWhole) {
    std::string systemId(12, 's');
    std::string message(256 - 60 - 2, 'm');
    reporter.warning(problem(message, systemId));
    EXPECT_EQ(std::string(reporter.message()), warningPrefix(systemId, 3, 7) + "'" + message + "'");
    EXPECT_EQ(std::strlen(reporter.message()), 256u);
}

TEST_F(Reporter, MessageOneTooLongForTheQuotesIsCutWithinTheBudget) {
    std::string systemId(12, 's');
    std::string message(256 - 60 - 1, 'm');
    reporter.warning(problem(message, systemId));
    std::string text = reporter.message();
    EXPECT_EQ(text.size(), 256u);
    EXPECT_EQ(text.substr(text.size() - 4), "...'");
}

TEST_F(Reporter, ErrorMessageOf300CharactersIsCutToTheBudget) {
    ::testing::internal::CaptureStdout();
    reporter.error(problem(std::string(300, 'e')));
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::string(reporter.message()), "'" + std::string(251, 'e') + "...'");
}

TEST_F(Reporter, PrefixLongerThanTheBudgetNeverOverflowsTheText) {
    std::string systemId(300, 'p');
    reporter.fatalError(problem("message", systemId));
    std::string text = reporter.message();
    EXPECT_EQ(text.size(), 256u);
    EXPECT_EQ(text.rfind("FATAL ERROR: file 'ppp", 0), 0u);
    EXPECT_EQ(text.substr(text.size() - 8), "...'...'");
}

TEST_F(Reporter, PercentSignsInTheMessageAreKeptVerbatim) {
    reporter.warning(problem("100%% sure %s"));
    EXPECT_STREQ(reporter.message(),
                 "WARNING: file 'doc.xml', line '3', column '7', message '100%% sure %s'");
}

TEST_F(Reporter, ReportToCopiesTextAndCode) {
    reporter.fatalError(problem("bad"));
    char buffer[257];
    std::memset(buffer, 'x', sizeof buffer);
    int32_t code = 0;
    ErrorReport report(buffer, &code);
    reporter.reportTo(report);
    EXPECT_STREQ(buffer, reporter.message());
    EXPECT_EQ(code, LUM_ERR_PARSE_FATAL);
}

}  // namespace
