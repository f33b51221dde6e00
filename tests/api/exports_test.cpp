// The shared library exports exactly the lum* functions it implements.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

std::set<std::string> definedFunctions() {
    std::string command = "nm -D --defined-only '" LUMXML_LIBRARY_PATH "'";
    std::set<std::string> names;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return names;
    char line[1024];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        char address[64], kind[8], name[900];
        if (std::sscanf(line, "%63s %7s %899s", address, kind, name) != 3) continue;
        if (std::string(kind) == "T" || std::string(kind) == "W" || std::string(kind) == "i")
            names.insert(name);
    }
    pclose(pipe);
    return names;
}

std::set<std::string> implementedExports() {
    std::ifstream in(LUMXML_SOURCE_DIR "/tests/api/implemented_exports.txt");
    std::set<std::string> names;
    std::string name;
    while (in >> name) names.insert(name);
    return names;
}

TEST(Exports, OnlyTheImplementedLumFunctionsAreExported) {
    std::set<std::string> expected = implementedExports();
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(definedFunctions(), expected);
}

TEST(Exports, EveryExportIsALumFunction) {
    for (const std::string& name : definedFunctions())
        EXPECT_EQ(name.rfind("lum", 0), 0u) << name;
}

}  // namespace
