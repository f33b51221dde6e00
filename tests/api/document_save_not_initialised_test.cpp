// Saving in a process that never calls lumInitParser: the answer is "XML
// Parser not initialized", but a file target is made before that check, so
// the file is created (or truncated) all the same.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"
#include "wide_names.h"

using namespace lumtest;

namespace {

TEST(DocumentSaveNotInitialised, FileIsCreatedBeforeTheAnswer) {
    TempDir dir;
    const std::string path = dir.write("out.xml", "old content");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.fileName = path.c_str();
    SaveAnswer answer = save(reinterpret_cast<void*>(0x1234), args);
    EXPECT_EQ(answer.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(answer.message, "XML Parser not initialized");
    EXPECT_EQ(readFile(path), "");
}

TEST(DocumentSaveNotInitialised, Utf16FileGetsItsMarkBeforeTheAnswer) {
    TempDir dir;
    const std::string path = dir.file("out16.xml");
    SaveArgs args;
    args.target = LUM_SAVE_TO_FILE;
    args.encoding = "UTF-16";
    args.fileName = path.c_str();
    EXPECT_EQ(save(nullptr, args).code, LUM_ERR_NOT_INITIALIZED);
    // Only the mark: which order it takes before Xerces has started is
    // the output target's business (Xerces fills in its XMLCh byte-order
    // flag when it starts).
    const std::string bytes = readFile(path);
    EXPECT_TRUE(bytes == "\xff\xfe" || bytes == "\xfe\xff") << bytes.size();
}

TEST(DocumentSaveNotInitialised, WideFileIsCreatedBeforeTheAnswer) {
    TempDir dir;
    std::u16string wide;
    for (char c : dir.file("\x01")) wide += static_cast<char16_t>(static_cast<unsigned char>(c));
    wide.back() = u'\u00e9';
    ErrorSlot error;
    void* cell = nullptr;
    lumDocSaveW(&cell, LUM_SAVE_TO_FILE, 0, 0, 0, nullptr, lumtest::wideUnits(wide), nullptr,
                nullptr, 0, nullptr, error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_INITIALIZED);
    EXPECT_EQ(error.text(), "XML Parser not initialized");
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(wide)));
}

TEST(DocumentSaveNotInitialised, MemoryAndUnknownKindsAnswerNotInitializedFirst) {
    for (int32_t target : {LUM_SAVE_TO_MEMORY, LUM_SAVE_TO_STREAM, LUM_SAVE_NODE_TO_MEMORY, 3,
                           99}) {
        SaveArgs args;
        args.target = target;
        SaveAnswer answer = save(nullptr, args);
        EXPECT_EQ(answer.code, LUM_ERR_NOT_INITIALIZED) << target;
        EXPECT_EQ(answer.message, "XML Parser not initialized") << target;
        EXPECT_FALSE(answer.handedOver) << target;
    }
}

}  // namespace
