// lumInitParser as a host calls it.
#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"

using lumtest::ErrorSlot;

namespace {

TEST(InitParser, CodePageInOtherCaseIsFound) {
    ErrorSlot error;
    EXPECT_EQ(lumInitParser("utf-8", error.buffer, &error.code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(error.code, LUM_OK);
    EXPECT_EQ(error.text(), "");
}

TEST(InitParser, UnknownCodePageAnswersZeroWithoutError) {
    ErrorSlot error;
    EXPECT_EQ(lumInitParser("no-such-code-page", error.buffer, &error.code),
              LUM_INIT_CODE_PAGE_NOT_FOUND);
    EXPECT_EQ(error.code, LUM_OK);
    EXPECT_EQ(error.text(), "");
}

TEST(InitParser, CanonicalConverterNameCountsAsAlias) {
    ErrorSlot error;
    // ICU lists each converter's canonical name among its aliases.
    EXPECT_EQ(lumInitParser("ibm-5348_P100-1997", error.buffer, &error.code),
              LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(lumInitParser("windows-1252", error.buffer, &error.code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(lumInitParser("ISO-8859-1", error.buffer, &error.code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(error.code, LUM_OK);
}

TEST(InitParser, RepeatedInitialisationSucceedsEachTime) {
    for (int i = 0; i < 3; ++i) {
        ErrorSlot error;
        EXPECT_EQ(lumInitParser("UTF-8", error.buffer, &error.code), LUM_INIT_CODE_PAGE_FOUND);
        EXPECT_EQ(error.code, LUM_OK);
    }
}

TEST(InitParser, ErrorBufferIsUntouchedOnSuccess) {
    ErrorSlot error;
    std::strcpy(error.buffer, "left by the host");
    EXPECT_EQ(lumInitParser("UTF-8", error.buffer, &error.code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_EQ(error.text(), "left by the host");
    EXPECT_EQ(error.code, LUM_OK);
}

}  // namespace
