// The named constants of lumxml.h, used as a host uses them: each answer the
// library gives is the constant that names it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "host_test.h"
#include "lumxml.h"

using lumtest::ErrorSlot;

namespace {

class NamedConstants : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::initLibraryOnce();
        lumInitDocument(&document_, 7, error_.buffer, &error_.code);
        ASSERT_EQ(error_.code, LUM_OK) << error_.text();
    }
    void TearDown() override { lumDocDelete(document_, error_.buffer, &error_.code); }

    void* document_ = nullptr;
    ErrorSlot error_;
};

}  // namespace

TEST_F(NamedConstants, MethodNumbersPastTheLastAreRefusedWithTheirCodes) {
    lumDocExecute(document_, LUM_DOC_METHOD_LAST + 1, nullptr, nullptr, error_.buffer,
                  &error_.code);
    EXPECT_EQ(error_.code, LUM_ERR_DOC_METHOD_NUMBER);
    error_.clear();
    void* root = nullptr;
    int32_t type = LUM_NODE_ELEMENT;
    void* args[2] = {const_cast<char*>("r"), &type};
    lumDocExecute(document_, LUM_DOC_CREATE_NODE, args, &root, error_.buffer, &error_.code);
    ASSERT_EQ(error_.code, LUM_OK) << error_.text();
    lumNodeExecute(root, LUM_NODE_METHOD_LAST + 1, nullptr, nullptr, error_.buffer, &error_.code);
    EXPECT_EQ(error_.code, LUM_ERR_NODE_METHOD_NUMBER);
    EXPECT_EQ(error_.text(), "Invalid method number");
}

TEST_F(NamedConstants, ChildIndexPastTheEndIsInvalid) {
    int32_t index = 0;
    void* child = &index;
    void* args[1] = {&index};
    lumDocExecute(document_, LUM_DOC_CHILD_AT, args, &child, error_.buffer, &error_.code);
    EXPECT_EQ(error_.code, LUM_ERR_CHILD_INDEX);
    EXPECT_EQ(child, nullptr);
}

TEST_F(NamedConstants, NodeTypesAndTheirNamesRoundTrip) {
    char name[LUM_TYPE_NAME_SIZE];
    for (int32_t type = LUM_NODE_ELEMENT; type <= LUM_NODE_NOTATION; ++type) {
        lumTypeToChar(type, name);
        EXPECT_EQ(lumTypeToInt(name), type) << name;
    }
    lumTypeToChar(LUM_NODE_PROCESSING_INSTRUCTION, name);
    EXPECT_STREQ(name, "PROCESSING-INSTRUCTION");
    EXPECT_EQ(lumTypeToInt("no such type"), LUM_NODE_NONE);
}

TEST_F(NamedConstants, CreatingTypeNoneMakesNothing) {
    void* made = &made;
    int32_t type = LUM_NODE_NONE;
    void* args[2] = {const_cast<char*>("x"), &type};
    lumDocExecute(document_, LUM_DOC_CREATE_NODE, args, &made, error_.buffer, &error_.code);
    EXPECT_EQ(error_.code, LUM_OK);
    EXPECT_EQ(made, nullptr);
}

TEST_F(NamedConstants, UnknownLoadSourceIsNotSupported) {
    char encoding[LUM_ENCODING_BUFFER_SIZE] = "";
    lumDocLoad(&document_, 0, LUM_LOAD_FROM_MEMORY + 1, encoding, nullptr, nullptr, 0, nullptr,
               nullptr, 0, nullptr, error_.buffer, &error_.code);
    EXPECT_EQ(error_.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(error_.text(), "Not supported");
}

TEST_F(NamedConstants, SavedNodeOwnerHandleAndTargetsAgree) {
    void* root = nullptr;
    int32_t type = LUM_NODE_ELEMENT;
    void* args[2] = {const_cast<char*>("r"), &type};
    lumDocExecute(document_, LUM_DOC_CREATE_NODE, args, &root, error_.buffer, &error_.code);
    void* insert[2] = {root, nullptr};
    lumDocExecute(document_, LUM_DOC_INSERT_BEFORE, insert, nullptr, error_.buffer, &error_.code);
    int64_t handle = 0;
    lumNodeExecute(root, LUM_NODE_OWNER_HANDLE, nullptr, &handle, error_.buffer, &error_.code);
    EXPECT_EQ(handle, 7);
    void* block = nullptr;
    uint32_t length = 0;
    lumDocSave(&document_, LUM_SAVE_TO_MEMORY, 0, 0, 0, nullptr, nullptr, &block, &length, 0,
               nullptr, error_.buffer, &error_.code);
    ASSERT_EQ(error_.code, LUM_OK) << error_.text();
    EXPECT_EQ(std::string(static_cast<char*>(block), length), "<?xml version=\"1.0\" ?>\n<r/>");
    std::free(block);
}

TEST(NamedConstantsReader, EventsArriveWithTheirKindsAndTheEndIsDone) {
    lumtest::initLibraryOnce();
    static const char kDocument[] = "<a><?p d?>t</a>";
    auto* record = static_cast<SaxParserInstance*>(std::calloc(1, sizeof(SaxParserInstance)));
    ASSERT_NE(record, nullptr);
    record->inputKind = LUM_SAX_INPUT_BUFFER;
    record->memoryBuffer = kDocument;
    record->memoryLength = static_cast<uint32_t>(std::strlen(kDocument));
    record->entityExpansionLimit = LUM_SAX_NO_ENTITY_LIMIT;
    std::string kinds;
    int32_t result = lumSAXParseFirst(record);
    EXPECT_EQ(record->state, LUM_SAX_STATE_FIRST_PASS);
    for (; result == LUM_SAX_MORE; result = lumSAXParseNext(record))
        if (record->eventHead != nullptr) kinds += std::to_string(record->eventHead->kind) + " ";
    const std::string expected =
        std::to_string(LUM_SAX_EVENT_START_DOCUMENT) + " " +
        std::to_string(LUM_SAX_EVENT_START_ELEMENT) + " " +
        std::to_string(LUM_SAX_EVENT_PROCESSING_INSTRUCTION) + " " +
        std::to_string(LUM_SAX_EVENT_CHARACTERS) + " " + std::to_string(LUM_SAX_EVENT_END_ELEMENT) +
        " " + std::to_string(LUM_SAX_EVENT_END_DOCUMENT) + " ";
    EXPECT_EQ(kinds, expected);
    EXPECT_EQ(result, LUM_SAX_DONE);
    EXPECT_EQ(record->errorCode, LUM_OK);
    EXPECT_EQ(record->state, LUM_SAX_STATE_ENDED);
    lumSAXDeleteParserInstance(record);
    std::free(record);
}

TEST(NamedConstantsWriter, StrictSecondRootFailsAndTheWriterStops) {
    lumtest::initLibraryOnce();
    WriterOptions options{};
    WriterArgs args{};
    ASSERT_EQ(lumSAXWriterExecute(nullptr, LUM_WRITER_CREATE, &options, &args), LUM_WRITER_OK);
    auto* writer = static_cast<SAXWriter*>(args.arg0);
    options.strict = 1;
    options.outputKind = LUM_WRITER_TO_MEMORY;
    options.standalone = LUM_WRITER_STANDALONE_NO;
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_OPEN, &options, &args), LUM_WRITER_OK);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_GET_STATE, &options, &args),
              LUM_WRITER_STATE_PROLOG);
    args.arg0 = const_cast<char*>("a");
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_EMPTY_ELEMENT, &options, &args),
              LUM_WRITER_OK);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_EMPTY_ELEMENT, &options, &args),
              LUM_WRITER_ERR_SECOND_ROOT);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_GET_STATE, &options, &args),
              LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_COMMENT, &options, &args),
              LUM_WRITER_REFUSED);
    EXPECT_EQ(lumSAXWriterExecute(writer, LUM_WRITER_FREE, &options, &args), LUM_WRITER_OK);
}
