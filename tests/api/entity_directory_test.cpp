// With default entity resolution off (load flag 4, reader bit 2), an id
// looked up in an entity directory stays inside that directory once ".",
// ".." and symbolic links are resolved; one that leaves it is not found.
#include <cstring>
#include <string>

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"
#include "memory_pull.h"

using lumtest::ErrorSlot;
using lumtest::TempDir;

namespace {

constexpr uint32_t kNoDefaultResolution = 4;

// Loads `text` with one entity directory and answers the saved document
// (or the error text after "ERROR ").
std::string loadThrough(const std::string& directory, const std::string& text) {
    void* document = nullptr;
    ErrorSlot made;
    lumInitDocument(&document, 1, made.buffer, &made.code);
    const char* locations[3] = {directory.c_str(), nullptr, nullptr};
    ErrorSlot error;
    char encoding[257] = {0};
    lumDocLoad(&document, kNoDefaultResolution, LUM_LOAD_FROM_MEMORY, encoding, nullptr,
               text.data(), static_cast<uint32_t>(text.size()), nullptr, nullptr, 0, locations,
               error.buffer, &error.code);
    std::string out = error.code != LUM_OK ? "ERROR " + error.text() : "";
    void* memory = nullptr;
    uint32_t length = 0;
    ErrorSlot saved;
    lumDocSave(&document, LUM_SAVE_TO_MEMORY, 0, 0, 1, nullptr, nullptr, &memory, &length, 0,
               nullptr, saved.buffer, &saved.code);
    if (memory != nullptr) out.append(static_cast<const char*>(memory), length);
    std::free(memory);
    ErrorSlot gone;
    lumDocDelete(document, gone.buffer, &gone.code);
    return out;
}

// Reads `text` with the pull reader and answers every character event's text.
std::string pullThrough(const std::string& directory, const std::string& text) {
    SaxParserInstance instance;
    lumtest::setUpMemoryPull(instance, text, kNoDefaultResolution, LUM_SAX_NO_ENTITY_LIMIT);
    instance.searchPath = directory.c_str();
    std::string characters;
    lumtest::pullToEnd(instance, [&](const SaxEvent& event) {
        if (event.kind == LUM_SAX_EVENT_CHARACTERS)
            characters += static_cast<const char*>(event.arg1);
        return true;
    });
    lumSAXDeleteParserInstance(&instance);
    return characters;
}

std::string referencing(const std::string& id) {
    return "<!DOCTYPE r [<!ENTITY o SYSTEM '" + id + "'>]><r>&o;</r>";
}

class EntityDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::initLibraryOnce();
        dir.write("outside.ent", "OUTSIDE");
        dir.write("inside/in.ent", "INSIDE");
        dir.write("inside/sub/keep.txt", "");
        directory = dir.file("inside");
    }
    TempDir dir;
    std::string directory;
};

TEST_F(EntityDirectory, ParentReferenceOutOfTheDirectoryIsNotFound) {
    const std::string loaded = loadThrough(directory, referencing("../outside.ent"));
    EXPECT_EQ(loaded.find("OUTSIDE"), std::string::npos) << loaded;
    EXPECT_EQ(pullThrough(directory, referencing("../outside.ent")).find("OUTSIDE"),
              std::string::npos);
}

TEST_F(EntityDirectory, DotSegmentsThatStayInsideAreFound) {
    EXPECT_NE(loadThrough(directory, referencing("sub/../in.ent")).find("INSIDE"),
              std::string::npos);
    EXPECT_NE(loadThrough(directory, referencing("./in.ent")).find("INSIDE"), std::string::npos);
    EXPECT_EQ(pullThrough(directory, referencing("sub/../in.ent")), "INSIDE");
}

#if !defined(_WIN32)
TEST_F(EntityDirectory, SymbolicLinkOutOfTheDirectoryIsNotFound) {
    ASSERT_EQ(symlink(dir.file("outside.ent").c_str(), dir.file("inside/link.ent").c_str()), 0);
    EXPECT_EQ(loadThrough(directory, referencing("link.ent")).find("OUTSIDE"), std::string::npos);
    EXPECT_EQ(pullThrough(directory, referencing("link.ent")).find("OUTSIDE"), std::string::npos);
}

TEST_F(EntityDirectory, SymbolicLinkInsideTheDirectoryIsFound) {
    ASSERT_EQ(symlink(dir.file("inside/in.ent").c_str(), dir.file("inside/sub/link.ent").c_str()),
              0);
    EXPECT_NE(loadThrough(directory, referencing("sub/link.ent")).find("INSIDE"),
              std::string::npos);
    EXPECT_EQ(pullThrough(directory, referencing("sub/link.ent")), "INSIDE");
}
#endif

}  // namespace
