// The limits of a hardened load or pull read (an expansion limit set):
// parameter-entity expansions are counted, the characters expansions
// produce are bounded, and namespaced nesting has a depth limit. Each ends
// the parse as the expansion limit does; without a limit nothing changes.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host_test.h"
#include "hostile_documents.h"
#include "lumxml.h"
#include "limited_parse.h"

using lumtest::Loaded;
using lumtest::loadText;
using lumtest::mentions;
using lumtest::Pulled;
using lumtest::pullText;

namespace {

constexpr const char* kParameterLimit = "parameter entity expansions";
constexpr const char* kAmplificationLimit = "amplification limit";
constexpr const char* kNestingLimit = "nesting limit";
constexpr const char* kNameLimit = "distinct names and namespace URIs";
constexpr const char* kDeclarationLimit = "declares more than '256' attributes";

using lumtest::declaredAttributes;
using lumtest::wideElement;

class HostileLimits : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    const int32_t limit = 50000;
};

// Ten references to one parameter entity in the internal subset.
std::string tenParameterReferences() {
    std::string text = "<!DOCTYPE r [<!ENTITY % p \"<!--c-->\">";
    for (int i = 0; i < 10; ++i) text += "%p;";
    return text + "]><r/>";
}

TEST_F(HostileLimits, ParameterEntityBombEndsLoadAtTheLimit) {
    Loaded loaded = loadText(lumtest::parameterEntityBomb(9, "<!--l-->"), &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(loaded.message, kParameterLimit)) << loaded.message;
    EXPECT_TRUE(mentions(loaded.message, "'50000'")) << loaded.message;
}

TEST_F(HostileLimits, EmptyParameterEntityBombEndsLoadAtTheLimit) {
    Loaded loaded = loadText(lumtest::parameterEntityBomb(9, ""), &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(loaded.message, kParameterLimit)) << loaded.message;
}

TEST_F(HostileLimits, ParameterEntityBombEndsPullWithAFatalErrorEvent) {
    Pulled pulled = pullText(lumtest::parameterEntityBomb(9, "<!--l-->"), limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_TRUE(mentions(pulled.fatalErrors[0], kParameterLimit)) << pulled.fatalErrors[0];
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
    EXPECT_EQ(pulled.errorCode, LUM_OK);
}

TEST_F(HostileLimits, ParameterExpansionsUpToTheLimitLoad) {
    const int32_t ten = 10, nine = 9;
    EXPECT_EQ(loadText(tenParameterReferences(), &ten).code, LUM_OK);
    Loaded over = loadText(tenParameterReferences(), &nine);
    EXPECT_EQ(over.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(over.message, "'9' parameter entity expansions")) << over.message;
    EXPECT_TRUE(pullText(tenParameterReferences(), 10).fatalErrors.empty());
    EXPECT_EQ(pullText(tenParameterReferences(), 9).fatalErrors.size(), 1u);
}

TEST_F(HostileLimits, ParameterExpansionsAreNotCountedWithoutALimit) {
    EXPECT_EQ(loadText(lumtest::parameterEntityBomb(3, "<!--l-->"), nullptr).code, LUM_OK);
    EXPECT_TRUE(pullText(lumtest::parameterEntityBomb(3, "<!--l-->"), LUM_SAX_NO_ENTITY_LIMIT)
                    .fatalErrors.empty());
}

TEST_F(HostileLimits, QuadraticBlowupEndsAtTheAmplificationLimit) {
    const std::string text = lumtest::quadraticBlowup(50000, 20000);
    Loaded loaded = loadText(text, &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(loaded.message, kAmplificationLimit)) << loaded.message;
    EXPECT_TRUE(mentions(loaded.message, "'8388608' characters")) << loaded.message;
    Pulled pulled = pullText(text, limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_TRUE(mentions(pulled.fatalErrors[0], kAmplificationLimit));
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
}

TEST_F(HostileLimits, AttributeBlowupEndsAtTheAmplificationLimit) {
    const std::string text = lumtest::attributeBlowup(9, 4000);
    Loaded loaded = loadText(text, &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(loaded.message, kAmplificationLimit)) << loaded.message;
    Pulled pulled = pullText(text, limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_TRUE(mentions(pulled.fatalErrors[0], kAmplificationLimit));
}

TEST_F(HostileLimits, ExpansionsBelowTheThresholdLoad) {
    // 8 * 10^6 characters, just below 8 MiB.
    const std::string text = lumtest::quadraticBlowup(8000, 1000);
    EXPECT_EQ(loadText(text, &limit).code, LUM_OK);
    Pulled pulled = pullText(text, limit);
    EXPECT_TRUE(pulled.fatalErrors.empty());
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
}

TEST_F(HostileLimits, AmplificationIsNotLimitedWithoutALimit) {
    const std::string text = lumtest::quadraticBlowup(10000, 1000);
    EXPECT_EQ(loadText(text, nullptr).code, LUM_OK);
    EXPECT_TRUE(pullText(text, LUM_SAX_NO_ENTITY_LIMIT).fatalErrors.empty());
}

TEST_F(HostileLimits, NamespacedNestingIsLimitedToTenThousandLevels) {
    EXPECT_EQ(loadText(lumtest::nestedNamespacedElements(10000), &limit).code, LUM_OK);
    Loaded deeper = loadText(lumtest::nestedNamespacedElements(10001), &limit);
    EXPECT_EQ(deeper.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(deeper.message, kNestingLimit)) << deeper.message;
    EXPECT_TRUE(mentions(deeper.message, "'10000' deep")) << deeper.message;

    EXPECT_TRUE(pullText(lumtest::nestedNamespacedElements(10000), limit).fatalErrors.empty());
    Pulled pulled = pullText(lumtest::nestedNamespacedElements(10001), limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_TRUE(mentions(pulled.fatalErrors[0], kNestingLimit));
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
}

TEST_F(HostileLimits, NestingIsNotLimitedWithNamespacesOffOrWithoutALimit) {
    const std::string deep = lumtest::nestedElements(20000);
    EXPECT_EQ(loadText(deep, &limit, LUM_LOAD_NO_NAMESPACES).code, LUM_OK);
    EXPECT_TRUE(pullText(deep, limit, LUM_SAX_NO_NAMESPACES).fatalErrors.empty());
    EXPECT_EQ(loadText(lumtest::nestedNamespacedElements(20000), nullptr).code, LUM_OK);
    EXPECT_TRUE(pullText(lumtest::nestedNamespacedElements(20000), LUM_SAX_NO_ENTITY_LIMIT)
                    .fatalErrors.empty());
}

TEST_F(HostileLimits, DistinctNamesInADomAreLimited) {
    EXPECT_EQ(loadText(wideElement(19999), &limit).code, LUM_OK);  // with the element's name: 20000
    Loaded over = loadText(wideElement(20000), &limit);
    EXPECT_EQ(over.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(over.message, kNameLimit)) << over.message;
    // The pull reader counts element names only; without a limit nothing is
    // counted.
    EXPECT_TRUE(pullText(wideElement(20000), limit).fatalErrors.empty());
    EXPECT_EQ(loadText(wideElement(20000), nullptr).code, LUM_OK);
}

TEST_F(HostileLimits, AttributeDeclarationsOfOneElementTypeAreLimited) {
    EXPECT_EQ(loadText(declaredAttributes(256), &limit).code, LUM_OK);
    Loaded over = loadText(declaredAttributes(257), &limit);
    EXPECT_EQ(over.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(over.message, kDeclarationLimit)) << over.message;
    EXPECT_TRUE(pullText(declaredAttributes(256), limit).fatalErrors.empty());
    Pulled pulled = pullText(declaredAttributes(257), limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_TRUE(mentions(pulled.fatalErrors[0], kDeclarationLimit));
    EXPECT_EQ(loadText(declaredAttributes(300), nullptr).code, LUM_OK);
}

}  // namespace
