// The size limit of a hardened load or pull read (an expansion limit set):
// no item the parser builds whole (a name, an attribute value, a comment, a
// processing instruction, a CDATA section, an entity value) may grow past
// 16 Mi characters. Lumxml checks when the parser's buffer for the item
// grows, so an item of up to twice the limit may pass; longer ones are
// always refused. Text content comes in pieces and is not limited; without
// an expansion limit nothing is.
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"
#include "limited_parse.h"

using lumtest::Loaded;
using lumtest::loadText;
using lumtest::mentions;
using lumtest::Pulled;
using lumtest::pullText;

namespace {

constexpr size_t kLimit = 16u * 1024u * 1024u;
// Always refused: longer than the largest buffer a shorter item can grow.
constexpr size_t kAlwaysRefused = 2 * kLimit + 1;
constexpr const char* kSizeMessage =
    "an item in the document is longer than '16777216' characters; this is the size limit "
    "imposed by the application";

struct ItemKind {
    const char* name;
    std::string (*make)(size_t length);
};

std::string longName(size_t n) { return "<r" + std::string(n, 'n') + "/>"; }
std::string longAttributeValue(size_t n) { return "<r a=\"" + std::string(n, 'v') + "\"/>"; }
std::string longAttributeName(size_t n) { return "<r " + std::string(n, 'a') + "=\"1\"/>"; }
std::string longComment(size_t n) { return "<r><!--" + std::string(n, 'c') + "--></r>"; }
std::string longInstruction(size_t n) { return "<r><?p " + std::string(n, 'd') + "?></r>"; }
std::string longCdata(size_t n) { return "<r><![CDATA[" + std::string(n, 'd') + "]]></r>"; }
std::string longEntityValue(size_t n) {
    return "<!DOCTYPE r [<!ENTITY e \"" + std::string(n, 'e') + "\">]><r/>";
}
std::string longText(size_t n) { return "<r>" + std::string(n, 't') + "</r>"; }

const ItemKind kItems[] = {
    {"ElementName", longName},          {"AttributeValue", longAttributeValue},
    {"AttributeName", longAttributeName}, {"Comment", longComment},
    {"ProcessingInstruction", longInstruction}, {"CdataSection", longCdata},
    {"EntityValue", longEntityValue},
};

void PrintTo(const ItemKind& kind, std::ostream* out) { *out << kind.name; }

class HostileItemSize : public ::testing::TestWithParam<ItemKind> {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    const int32_t limit = 50000;
};

TEST_P(HostileItemSize, ItemPastTheSizeLimitEndsLoadWithAFatalError) {
    Loaded loaded = loadText(GetParam().make(kAlwaysRefused), &limit);
    EXPECT_EQ(loaded.code, LUM_ERR_PARSE_FATAL);
    EXPECT_TRUE(mentions(loaded.message, "line '1', column '")) << loaded.message;
    EXPECT_TRUE(mentions(loaded.message, kSizeMessage)) << loaded.message;
    // Nothing is left behind: the next load works.
    EXPECT_EQ(loadText(GetParam().make(10), &limit).code, LUM_OK);
}

TEST_P(HostileItemSize, ItemPastTheSizeLimitEndsPullWithAFatalErrorEvent) {
    Pulled pulled = pullText(GetParam().make(kAlwaysRefused), limit);
    ASSERT_EQ(pulled.fatalErrors.size(), 1u);
    EXPECT_EQ(pulled.fatalErrors[0], kSizeMessage);
    EXPECT_EQ(pulled.lastResult, LUM_SAX_DONE);
    EXPECT_TRUE(pullText(GetParam().make(10), limit).fatalErrors.empty());
}

INSTANTIATE_TEST_SUITE_P(Items, HostileItemSize, ::testing::ValuesIn(kItems),
                         [](const ::testing::TestParamInfo<ItemKind>& info) {
                             return std::string(info.param.name);
                         });

class HostileItemSizeLimit : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    const int32_t limit = 50000;
};

TEST_F(HostileItemSizeLimit, ItemsOfTheLimitLoadAndPull) {
    const std::string text = longComment(kLimit);
    EXPECT_EQ(loadText(text, &limit).code, LUM_OK);
    EXPECT_TRUE(pullText(text, limit).fatalErrors.empty());
}

TEST_F(HostileItemSizeLimit, LongTextContentIsNotLimited) {
    // A DOM gathers the pieces into one text node of twice the limit.
    const std::string text = longText(kAlwaysRefused);
    EXPECT_EQ(loadText(text, &limit).code, LUM_OK);
    EXPECT_TRUE(pullText(text, limit).fatalErrors.empty());
}

TEST_F(HostileItemSizeLimit, ItemsAreNotLimitedWithoutALimit) {
    const std::string text = longComment(kAlwaysRefused);
    EXPECT_EQ(loadText(text, nullptr).code, LUM_OK);
    EXPECT_TRUE(pullText(text, -1).fatalErrors.empty());
}

}  // namespace
