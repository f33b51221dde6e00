// The pull reader and the attribute lists in a process that never called
// lumInitParser.
#include <gtest/gtest.h>

#include "host_test.h"
#include "sax_host.h"

using lumtest::HostRecord;

namespace {

TEST(SaxNotInitialised, ParseFirstAnswersZeroWithNotInitialized) {
    HostRecord record;
    record.setMemory("<r/>");
    EXPECT_EQ(record.first(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "XML Parser not initialized");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(record.head(), nullptr);
    EXPECT_EQ(record.reader(), nullptr);
}

TEST(SaxNotInitialised, OneShotValidationDeliberatelyAnswersOne) {
    HostRecord record;
    record.setFile("/nonexistent/doc.xml");
    EXPECT_EQ(lumSAXParse(record.get()), 1);
    EXPECT_EQ(record.errorText(), "XML Parser not initialized");
    EXPECT_EQ(record.errorCode(), LUM_ERR_NOT_INITIALIZED);
}

TEST(SaxNotInitialised, ParseNextOnAnUnstartedRecordIsAnUnexpectedError) {
    HostRecord record;
    EXPECT_EQ(record.next(), LUM_SAX_DONE);
    EXPECT_EQ(record.errorText(), "Unexpected error");
    EXPECT_EQ(record.errorCode(), LUM_ERR_PARSE);
}

TEST(SaxNotInitialised, DeletingARecordIsHarmless) {
    HostRecord record;
    lumSAXDeleteParserInstance(record.get());
    lumSAXDeleteParserInstance(nullptr);
    lumSAXClearCallbackData(nullptr);
    EXPECT_EQ(record.errorCode(), LUM_OK);
}

TEST(SaxNotInitialised, AttributeListsWorkWithoutInitialisation) {
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "p:a", "1", "urn:p", "CDATA");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->capacity, 10);
    EXPECT_STREQ(list->entries[0].localName, "a");
    lumSAXSetAttributeValue(&list->entries[0], "2");
    EXPECT_STREQ(list->entries[0].value, "2");
    lumSAXFixAttrMem(&list->entries[0].type, "ID");
    EXPECT_STREQ(list->entries[0].type, "ID");
    lumSAXDeleteAttrList(list);

    SaxAttrList* made = lumSAXNewAttrList(2);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->capacity, 2);
    lumSAXDeleteAttrList(made);
}

}  // namespace
