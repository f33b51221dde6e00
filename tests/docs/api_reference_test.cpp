// Keeps docs/api.md and include/lumxml.h in step: every named constant of
// the header is listed in the reference with its number, every constant the
// reference lists is in the header with the same number, every export is
// described, and the version macros agree with each other and the build.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "lumxml.h"

namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

const std::string& header() {
    static const std::string text = readFile(LUMXML_SOURCE_DIR "/include/lumxml.h");
    return text;
}
const std::string& reference() {
    static const std::string text = readFile(LUMXML_SOURCE_DIR "/docs/api.md");
    return text;
}

// Calls `use` with every match of `pattern` in `text`.
template <class Use>
void forEachMatch(const std::string& text, const char* pattern, Use use) {
    const std::regex expression(pattern);
    for (std::sregex_iterator i(text.begin(), text.end(), expression), end; i != end; ++i) use(*i);
}

// "#define LUM_NAME 12" and "#define LUM_NAME (-1)" in the header.
std::map<std::string, long> headerConstants() {
    std::map<std::string, long> found;
    forEachMatch(header(), R"(\n#define (LUM_[A-Z0-9_]+) +\(?(-?[0-9]+)\)?(?=[ \n]))",
                 [&](const std::smatch& m) { found.emplace(m[1], std::stol(m[2])); });
    return found;
}

// Table rows "| 12 | `LUM_NAME` | ..." of the reference: name and number.
std::multimap<std::string, long> referenceRows() {
    std::multimap<std::string, long> rows;
    forEachMatch(reference(), R"(\n\| (-?[0-9]+) \| `(LUM_[A-Z0-9_]+)` \|)",
                 [&](const std::smatch& m) { rows.emplace(m[2], std::stol(m[1])); });
    return rows;
}

// Every `LUM...` name the reference writes in code spans or examples.
std::set<std::string> referenceNames() {
    std::set<std::string> names;
    forEachMatch(reference(), R"(\bLUM(?:XML)?_[A-Z0-9_]*[A-Z0-9]\b)",
                 [&](const std::smatch& m) { names.insert(m[0]); });
    return names;
}

bool headerDefines(const std::string& name) {
    return std::regex_search(header(), std::regex("#\\s*define " + name + R"(\b)"));
}

}  // namespace

TEST(ApiReference, HeaderConstantsAreFoundAtAll) {
    // Guards the parsing below: a change of the header's layout that hides
    // constants from it fails here rather than passing vacuously.
    const auto constants = headerConstants();
    EXPECT_GT(constants.size(), 180u);
    EXPECT_EQ(constants.at("LUM_NODE_CHILD_AT"), LUM_NODE_CHILD_AT);
    EXPECT_EQ(constants.at("LUM_ERR_NOT_SUPPORTED"), LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(constants.at("LUM_WRITER_ERR_UNEXPECTED"), LUM_WRITER_ERR_UNEXPECTED);
    EXPECT_EQ(constants.at("LUM_SAX_EVENT_FATAL_ERROR"), LUM_SAX_EVENT_FATAL_ERROR);
    EXPECT_EQ(constants.at("LUM_MEMIO_LINE_TRIM"), LUM_MEMIO_LINE_TRIM);
    EXPECT_EQ(constants.at("LUM_NODE_NONE"), LUM_NODE_NONE);
}

TEST(ApiReference, EveryHeaderConstantIsListedWithItsNumber) {
    const auto rows = referenceRows();
    for (const auto& [name, value] : headerConstants()) {
        auto [first, last] = rows.equal_range(name);
        EXPECT_NE(first, last) << name << " (" << value << ") is not listed in docs/api.md";
        for (auto row = first; row != last; ++row)
            EXPECT_EQ(row->second, value) << "docs/api.md lists " << name << " as " << row->second;
    }
}

TEST(ApiReference, EveryListedConstantIsInTheHeaderWithTheSameNumber) {
    const auto constants = headerConstants();
    for (const auto& [name, value] : referenceRows()) {
        auto found = constants.find(name);
        ASSERT_NE(found, constants.end()) << "docs/api.md lists " << name
                                          << ", which lumxml.h does not define";
        EXPECT_EQ(found->second, value) << name;
    }
}

TEST(ApiReference, EveryNameItMentionsExists) {
    for (const std::string& name : referenceNames())
        EXPECT_TRUE(headerDefines(name)) << "docs/api.md mentions " << name
                                         << ", which lumxml.h does not define";
}

TEST(ApiReference, EveryExportIsDescribed) {
    int exports = 0;
    forEachMatch(header(), R"(LUM_API [^;(]*\b(lum[A-Za-z]+)\()", [&](const std::smatch& m) {
        ++exports;
        EXPECT_NE(reference().find(m[1].str() + "("), std::string::npos)
            << m[1] << " has no prototype in docs/api.md";
    });
    EXPECT_EQ(exports, 26);
}

TEST(ApiReference, VersionMacrosAgree) {
    const std::string joined = std::to_string(LUMXML_VERSION_MAJOR) + "." +
                               std::to_string(LUMXML_VERSION_MINOR) + "." +
                               std::to_string(LUMXML_VERSION_PATCH);
    EXPECT_EQ(joined, LUMXML_VERSION_STRING);
    EXPECT_EQ(joined, LUMXML_PROJECT_VERSION);
    EXPECT_EQ(LUMXML_VERSION,
              LUMXML_VERSION_MAJOR * 10000 + LUMXML_VERSION_MINOR * 100 + LUMXML_VERSION_PATCH);
    EXPECT_NE(reference().find("`\"" + joined + "\"`"), std::string::npos)
        << "docs/api.md does not show the version string " << joined;
}
