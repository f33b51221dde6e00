// lumSAXParse with an expansion limit has the limits of the pull reader:
// each hostile document ends the validation with the limit's fatal error
// (code 10, the message in the record's error text) in bounded time.
// Without a limit nothing changes.
#include <cstring>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host_test.h"
#include "hostile_documents.h"
#include "lumxml.h"

namespace {

struct Validated {
    int32_t result = 0;
    int32_t code = 0;
    std::string text;
};

Validated validateText(const std::string& text, int32_t limit, uint32_t flags = 0) {
    lumtest::TempDir dir;
    const std::string file = dir.write("hostile.xml", text);
    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    instance.inputKind = LUM_SAX_INPUT_FILE;
    instance.fileName = file.c_str();
    instance.flags = flags;
    instance.entityExpansionLimit = limit;
    Validated out;
    out.result = lumSAXParse(&instance);
    out.code = instance.errorCode;
    out.text = instance.errorText;
    lumSAXDeleteParserInstance(&instance);
    return out;
}

using lumtest::declaredAttributes;

struct HostileCase {
    const char* name;
    std::string (*make)();
    const char* limitText;
};

void PrintTo(const HostileCase& kind, std::ostream* out) { *out << kind.name; }

const HostileCase kCases[] = {
    {"ParameterEntityBomb", [] { return lumtest::parameterEntityBomb(9, "<!--l-->"); },
     "more than '50000' parameter entity expansions in the document"},
    {"QuadraticBlowup", [] { return lumtest::quadraticBlowup(50000, 20000); },
     "this is the amplification limit imposed by the application"},
    {"NamespacedNesting", [] { return lumtest::nestedNamespacedElements(10001); },
     "nested more than '10000' deep"},
    {"ElementNames", [] { return lumtest::distinctElementNames(20000); },
     "more than '20000' distinct names and namespace URIs"},
    {"AttributeDeclarations", [] { return declaredAttributes(257); },
     "declares more than '256' attributes"},
    {"LongAttributeValue",
     [] { return "<r a=\"" + std::string(2 * 16777216 + 1, 'v') + "\"/>"; },
     "an item in the document is longer than '16777216' characters"},
};

class HostileOneShotValidation : public ::testing::TestWithParam<HostileCase> {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
};

TEST_P(HostileOneShotValidation, EndsWithTheLimitsFatalError) {
    const Validated validated = validateText(GetParam().make(), 50000);
    EXPECT_EQ(validated.result, 1);
    EXPECT_EQ(validated.code, LUM_ERR_PARSE_FATAL);
    EXPECT_NE(validated.text.find(GetParam().limitText), std::string::npos) << validated.text;
}

INSTANTIATE_TEST_SUITE_P(Documents, HostileOneShotValidation, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<HostileCase>& info) {
                             return std::string(info.param.name);
                         });

TEST(HostileOneShotValidationLimit, NothingIsLimitedWithoutALimit) {
    lumtest::initLibraryOnce();
    EXPECT_EQ(validateText(lumtest::parameterEntityBomb(3, "<!--l-->"), -1).code, LUM_OK);
    EXPECT_EQ(validateText(lumtest::distinctElementNames(20000), -1).code, LUM_OK);
    EXPECT_EQ(validateText(declaredAttributes(300), -1).code, LUM_OK);
}

TEST(HostileOneShotValidationLimit, ValidationStillReportsItsOwnErrors) {
    lumtest::initLibraryOnce();
    // A limit changes nothing for a document within it: the first error of
    // a DTD-invalid document is still the one reported.
    const std::string invalid = "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><x/></r>";
    const Validated limited = validateText(invalid, 50000, LUM_SAX_VALIDATE);
    const Validated unlimited = validateText(invalid, -1, LUM_SAX_VALIDATE);
    EXPECT_NE(limited.code, LUM_OK);
    EXPECT_EQ(limited.code, unlimited.code);
    EXPECT_EQ(limited.text, unlimited.text);
}

}  // namespace
