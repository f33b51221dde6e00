// lumInitParser's start-up rules that a host cannot observe directly.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/library_state.h"
#include "lumxml.h"

using namespace lumxml;

namespace {

// Runs first in this program: nothing has started yet.
TEST(LibraryStart, HostCodeAlreadySetStartsXercesButMakesNoKey) {
    ASSERT_FALSE(isInitialised());
    char buffer[257] = {0};
    int32_t code = 5;
    EXPECT_EQ(initParser("UTF-8", buffer, &code), LUM_INIT_CODE_PAGE_FOUND);
    EXPECT_TRUE(isInitialised());
    EXPECT_EQ(userDataKey(), nullptr);
    EXPECT_EQ(code, LUM_ERR_CHILD_INDEX);

    code = 0;
    EXPECT_EQ(initParser("UTF-8", buffer, &code), LUM_INIT_CODE_PAGE_FOUND);
    ASSERT_NE(userDataKey(), nullptr);
    EXPECT_EQ(std::u16string(userDataKey()), u"udatakey");
}

TEST(LibraryStart, UnknownCodePageStillInitialises) {
    char buffer[257] = {0};
    int32_t code = 0;
    EXPECT_EQ(initParser("x-unknown-page", buffer, &code), LUM_INIT_CODE_PAGE_NOT_FOUND);
    EXPECT_EQ(code, LUM_OK);
    EXPECT_TRUE(isInitialised());
}

class FakeCatalog : public ConverterCatalog {
public:
    int32_t failCountAt = -1;
    int32_t failAliasAt = -1;
    std::vector<std::vector<std::string>> converters = {{"alpha", "a1"}, {"beta", "B2", "b3"}};

    int32_t countAvailable() override { return static_cast<int32_t>(converters.size()); }
    const char* availableName(int32_t index) override { return converters[index][0].c_str(); }
    uint16_t countAliases(const char*, int32_t& status) override {
        ++countCalls;
        if (countCalls - 1 == failCountAt) {
            status = 4;  // U_FILE_ACCESS_ERROR
            return 0;
        }
        return static_cast<uint16_t>(converters[countCalls - 1].size());
    }
    const char* alias(const char*, uint16_t index, int32_t& status) override {
        if (static_cast<int32_t>(index) == failAliasAt && countCalls - 1 == 1) {
            status = 8;  // U_INDEX_OUTOFBOUNDS_ERROR
            return nullptr;
        }
        return converters[countCalls - 1][index].c_str();
    }

private:
    int32_t countCalls = 0;
};

TEST(LibraryStart, AliasComparisonIgnoresCase) {
    FakeCatalog catalog;
    char buffer[257] = {0};
    int32_t code = 0;
    EXPECT_EQ(findConverterAlias(catalog, "b2", buffer, &code), AliasSearch::Found);
    EXPECT_EQ(code, LUM_OK);
}

TEST(LibraryStart, CountAliasesFailureIsReportedWithCode13) {
    FakeCatalog catalog;
    catalog.failCountAt = 1;
    char buffer[257] = {0};
    int32_t code = 0;
    EXPECT_EQ(findConverterAlias(catalog, "nothing", buffer, &code), AliasSearch::Failed);
    EXPECT_STREQ(buffer, "ucnv_countAliases(beta) returned error code 4");
    EXPECT_EQ(code, LUM_ERR_UNEXPECTED);
}

TEST(LibraryStart, GetAliasFailureIsReportedWithIndex) {
    FakeCatalog catalog;
    catalog.failAliasAt = 2;
    char buffer[257] = {0};
    int32_t code = 0;
    EXPECT_EQ(findConverterAlias(catalog, "nothing", buffer, &code), AliasSearch::Failed);
    EXPECT_STREQ(buffer, "ucnv_getAlias(beta,2) returned error code 8");
    EXPECT_EQ(code, LUM_ERR_UNEXPECTED);
}

TEST(LibraryStart, SearchStopsAtTheFirstMatch) {
    FakeCatalog catalog;
    catalog.failAliasAt = 2;  // would fail on beta's third alias
    char buffer[257] = {0};
    int32_t code = 0;
    EXPECT_EQ(findConverterAlias(catalog, "B2", buffer, &code), AliasSearch::Found);
    EXPECT_EQ(code, LUM_OK);
}

TEST(LibraryStart, IcuListsManyConverters) {
    EXPECT_GT(icuCatalog().countAvailable(), 100);
}

}  // namespace
