// The strict writer keeps the answers of its QName check for names seen
// lately: every answer, kept or fresh, is the XML engine's own, also for
// invalid names, names past the kept length and after the oldest answer
// gave way.
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLString.hpp>

#include "frame/library_state.h"
#include "writer/writer.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

bool engineAnswer(const std::string& name) {
    XmlString units(name.c_str());
    return XMLChar1_0::isValidQName(units.get(), XMLString::stringLen(units.get()));
}

class WriterNameCache : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }
};

TEST_F(WriterNameCache, KeptAnswersAreTheEnginesOwn) {
    const std::vector<std::string> names = {
        "item", "id", "p:item", ":a", "a:", "a:b:c", "1abc", "-x", "x-1.y_z", "caf\xC3\xA9",
        "\xE4\xB8\xAD:\xE6\x96\x87", "a b", "xmlns:p", "\xC3", "r\xF0\x9F\x98\x80",
        std::string(64, 'n'), std::string(65, 'n'), std::string(100, 'q') + ":x"};
    SAXWriter writer;
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        const std::string& name = names[random() % names.size()];
        ASSERT_EQ(isValidQName(writer, name.c_str()), engineAnswer(name)) << name;
    }
}

TEST_F(WriterNameCache, FindsOnlyWhatItKept) {
    NameCache cache;
    EXPECT_EQ(cache.find("a", 1), nullptr);
    cache.remember("a", 1, true);
    cache.remember("b:c", 3, false);
    ASSERT_NE(cache.find("a", 1), nullptr);
    EXPECT_TRUE(*cache.find("a", 1));
    ASSERT_NE(cache.find("b:c", 3), nullptr);
    EXPECT_FALSE(*cache.find("b:c", 3));
    EXPECT_EQ(cache.find("b", 1), nullptr);   // a prefix of a kept name
    EXPECT_EQ(cache.find("ab", 2), nullptr);
    cache.clear();
    EXPECT_EQ(cache.find("a", 1), nullptr);
}

TEST_F(WriterNameCache, OldestAnswerGivesWay) {
    NameCache cache;
    for (size_t i = 0; i <= NameCache::kEntries; ++i) {
        std::string name = "n" + std::to_string(i);
        cache.remember(name.data(), name.size(), true);
    }
    EXPECT_EQ(cache.find("n0", 2), nullptr);
    EXPECT_NE(cache.find("n1", 2), nullptr);
    std::string last = "n" + std::to_string(NameCache::kEntries);
    EXPECT_NE(cache.find(last.data(), last.size()), nullptr);
}

TEST_F(WriterNameCache, LongNamesAreNotKept) {
    NameCache cache;
    std::string longName(NameCache::kLongestName + 1, 'x');
    cache.remember(longName.data(), longName.size(), true);
    EXPECT_EQ(cache.find(longName.data(), longName.size()), nullptr);
}

TEST_F(WriterNameCache, AnswersUnderAnotherCodePageAreNeitherKeptNorUsed) {
    SAXWriter writer;
    // Latin-1 E9 is a letter; the same byte alone is ill-formed UTF-8.
    lumtest::startInternals("ISO-8859-1");
    EXPECT_TRUE(isValidQName(writer, "caf\xE9"));
    lumtest::startInternals("UTF-8");
    EXPECT_EQ(isValidQName(writer, "caf\xE9"), engineAnswer("caf\xE9"));
    EXPECT_EQ(writer.checkedQNames.find("caf\xE9", 4) != nullptr, true);  // kept under UTF-8 only
}

}  // namespace
