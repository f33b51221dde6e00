// The entity nesting limit of a hardened load or pull read (an expansion
// limit set): entity references may nest 64 deep, in content, in attribute
// values and in the document type declaration; the 65th level ends the
// parse as the expansion limit does. Without a limit nothing changes.
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"
#include "limited_parse.h"

using lumtest::loadText;
using lumtest::Loaded;
using lumtest::pullText;

namespace {

constexpr const char* kNestingMessage =
    "entity references in the document are nested more than '64' deep; this is the entity "
    "nesting limit imposed by the application";

// Entities e0 .. e(levels-1), each referring to the one before; `use`
// wraps the reference to the last one into the document.
std::string entityChain(int levels, const std::string& before, const std::string& after) {
    std::string text = "<!DOCTYPE r [<!ENTITY e0 \"x\">";
    for (int i = 1; i < levels; ++i)
        text += "<!ENTITY e" + std::to_string(i) + " \"&e" + std::to_string(i - 1) + ";\">";
    return text + "]>" + before + "&e" + std::to_string(levels - 1) + ";" + after;
}

std::string contentChain(int levels) { return entityChain(levels, "<r>", "</r>"); }
std::string attributeChain(int levels) { return entityChain(levels, "<r a=\"", "\"/>"); }

std::string parameterChain(int levels) {
    std::string text = "<!DOCTYPE r [<!ENTITY % p0 \"<!--x-->\">";
    for (int i = 1; i < levels; ++i)
        text += "<!ENTITY % p" + std::to_string(i) + " \"&#37;p" + std::to_string(i - 1) + ";\">";
    return text + "%p" + std::to_string(levels - 1) + ";]><r/>";
}

std::vector<std::string> pullFatalErrors(const std::string& text, int32_t limit) {
    const lumtest::Pulled pulled = pullText(text, limit);
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
    return pulled.fatalErrors;
}

struct ChainKind {
    const char* name;
    std::string (*make)(int levels);
};

void PrintTo(const ChainKind& kind, std::ostream* out) { *out << kind.name; }

const ChainKind kChains[] = {
    {"Content", contentChain}, {"AttributeValue", attributeChain}, {"Parameter", parameterChain}};

class HostileEntityNesting : public ::testing::TestWithParam<ChainKind> {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    const int32_t limit = 50000;
};

TEST_P(HostileEntityNesting, SixtyFourLevelsLoadAndPull) {
    const std::string text = GetParam().make(64);
    Loaded loaded = loadText(text, &limit);
    EXPECT_EQ(loaded.code, LUM_OK) << loaded.message;
    EXPECT_TRUE(pullFatalErrors(text, limit).empty());
}

TEST_P(HostileEntityNesting, SixtyFifthLevelEndsLoadWithAFatalError) {
    Loaded loaded = loadText(GetParam().make(65), &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(loaded.message.find(kNestingMessage), std::string::npos) << loaded.message;
}

TEST_P(HostileEntityNesting, SixtyFifthLevelEndsPullWithAFatalErrorEvent) {
    const std::vector<std::string> errors = pullFatalErrors(GetParam().make(65), limit);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], kNestingMessage);
}

TEST_P(HostileEntityNesting, LongChainEndsQuicklyAtTheLimit) {
    // Without the limit, ten thousand levels hold ten thousand readers open
    // (and a DOM builds its entity nodes in more than quadratic time).
    const std::string text = GetParam().make(10000);
    EXPECT_EQ(loadText(text, &limit).code, LUM_ERR_PARSE_FATAL);
    EXPECT_EQ(pullFatalErrors(text, limit).size(), 1u);
}

TEST_P(HostileEntityNesting, NestingIsNotLimitedWithoutALimit) {
    const std::string text = GetParam().make(200);
    EXPECT_EQ(loadText(text, nullptr).code, LUM_OK);
    EXPECT_TRUE(pullFatalErrors(text, -1).empty());
}

TEST_P(HostileEntityNesting, OneShotValidationStopsAtTheLimit) {
    lumtest::TempDir dir;
    const std::string file = dir.write("chain.xml", GetParam().make(10000));
    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    instance.inputKind = LUM_SAX_INPUT_FILE;
    instance.fileName = file.c_str();
    instance.entityExpansionLimit = limit;
    EXPECT_EQ(lumSAXParse(&instance), 1);
    EXPECT_EQ(instance.errorCode, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(std::string(instance.errorText).find(kNestingMessage), std::string::npos)
        << instance.errorText;
    lumSAXDeleteParserInstance(&instance);
}

INSTANTIATE_TEST_SUITE_P(Chains, HostileEntityNesting, ::testing::ValuesIn(kChains),
                         [](const ::testing::TestParamInfo<ChainKind>& info) {
                             return std::string(info.param.name);
                         });

}  // namespace
