// The error convention helpers: the safe formatter and the budget rule.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "frame/error_report.h"
#include "frame/safe_format.h"
#include "lumxml.h"

using namespace lumxml;

namespace {

std::string format(const char* text, FormatArgs args = {}) {
    std::string out;
    safeFormat(out, text, args);
    return out;
}

struct Buffer {
    char bytes[512];
    Buffer() { std::memset(bytes, 0x7f, sizeof bytes); bytes[0] = '\0'; }
    std::string text() const { return bytes; }
};

TEST(SafeFormat, DoublePercentBecomesOnePercent) {
    EXPECT_EQ(format("100%% sure"), "100% sure");
}

TEST(SafeFormat, ConversionsWithoutArgumentsAreCopiedLiterally) {
    EXPECT_EQ(format("a %s b %d c %ld d %n e %x f %"), "a %s b %d c %ld d %n e %x f %");
}

TEST(SafeFormat, SuppliedArgumentsAreTakenInOrder) {
    EXPECT_EQ(format("file '%s', line '%ld', column '%d'", {"a.xml", 12L, 7}),
              "file 'a.xml', line '12', column '7'");
}

TEST(SafeFormat, ArgumentOfTheWrongKindLeavesTheConversion) {
    EXPECT_EQ(format("%d and %s", {"text"}), "%d and text");
}

TEST(SafeFormat, XercesStyleMessageIsHarmless) {
    // A message holding %%, %s and %n with nothing to format it against.
    EXPECT_EQ(format("bad %% value %s at %n%n%n"), "bad % value %s at %n%n%n");
}

TEST(FormatError, WritesAndCounts) {
    Buffer buffer;
    EXPECT_EQ(formatError(buffer.bytes, "ucnv_getAlias(%s,%d) returned error code %d",
                          {"UTF-8", 3, 7}),
              44);
    EXPECT_EQ(buffer.text(), "ucnv_getAlias(UTF-8,3) returned error code 7");
}

std::string budgeted(const std::string& prefix, const std::string& text) {
    Buffer buffer;
    std::strcpy(buffer.bytes, prefix.c_str());
    appendBudgeted(buffer.bytes, text.c_str());
    return buffer.text();
}

TEST(BudgetRule, TextOf255FitsWhole) {
    std::string text(255, 'a');
    EXPECT_EQ(budgeted("", text), text);
}

TEST(BudgetRule, TextOf256FitsWhole) {
    std::string text(256, 'a');
    EXPECT_EQ(budgeted("", text), text);
}

TEST(BudgetRule, TextOf257EndsInDotsAtCharacter256) {
    std::string result = budgeted("", std::string(257, 'a'));
    EXPECT_EQ(result, std::string(253, 'a') + "...");
}

TEST(BudgetRule, TextOf300EndsInDotsAtCharacter256) {
    std::string result = budgeted("", std::string(300, 'b'));
    EXPECT_EQ(result.size(), 256u);
    EXPECT_EQ(result, std::string(253, 'b') + "...");
}

TEST(BudgetRule, PrefixInTheBufferShrinksTheRoom) {
    std::string prefix = "Error parsing file: ";  // 20 characters: room 236
    std::string result = budgeted(prefix, std::string(300, 'c'));
    EXPECT_EQ(result.size(), 256u);
    EXPECT_EQ(result, prefix + std::string(233, 'c') + "...");
    EXPECT_EQ(budgeted(prefix, std::string(236, 'd')), prefix + std::string(236, 'd'));
}

TEST(BudgetRule, AppendedTextServesAsFormat) {
    // Deliberate: a message with a percent sign is formatted, not copied.
    EXPECT_EQ(budgeted("x: ", "50%% of %s"), "x: 50% of %s");
}

TEST(BudgetRule, FullBufferTakesNothing) {
    std::string prefix(256, 'p');
    EXPECT_EQ(budgeted(prefix, "more"), prefix);
}

TEST(ErrorReport, FixedWritesMessageThenCode) {
    Buffer buffer;
    int32_t code = 0;
    ErrorReport report(buffer.bytes, &code);
    report.fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(buffer.text(), "XML Parser not initialized");
    EXPECT_EQ(code, LUM_ERR_NOT_INITIALIZED);
}

TEST(ErrorReport, PrefixedCutsTheTextToTheBudget) {
    Buffer buffer;
    int32_t code = 0;
    ErrorReport report(buffer.bytes, &code);
    report.prefixed("Error parsing MEMPTR: ", std::string(400, 'e').c_str(), LUM_ERR_PARSE);
    EXPECT_EQ(std::strlen(buffer.bytes), 256u);
    EXPECT_EQ(buffer.text().substr(253), "...");
    EXPECT_EQ(code, LUM_ERR_PARSE);
}

}  // namespace

namespace {

TEST(BudgetRule, CutNeverSplitsAUtf8Character) {
    // 252 ASCII characters then two-byte characters: byte 253 would split one.
    std::string text = std::string(252, 'a');
    for (int i = 0; i < 40; ++i) text += "\xC3\xA9";
    char buffer[512] = {0};
    appendBudgeted(buffer, text.c_str());
    EXPECT_EQ(std::string(buffer), std::string(252, 'a') + "...");
}

TEST(BudgetRule, CutKeepsWholeCharactersAfterAPrefix) {
    std::string prefix = "Error parsing file: ";
    std::string text;
    for (int i = 0; i < 200; ++i) text += "\xE2\x82\xAC";  // three-byte euro signs
    char buffer[512] = {0};
    std::strcpy(buffer, prefix.c_str());
    appendBudgeted(buffer, text.c_str());
    std::string result = buffer;
    // room 236, keep at most 233 bytes = 77 whole euro signs (231 bytes)
    std::string expected = prefix;
    for (int i = 0; i < 77; ++i) expected += "\xE2\x82\xAC";
    EXPECT_EQ(result, expected + "...");
    EXPECT_LE(result.size(), 256u);
}

}  // namespace
