// The two escape flags of a save are process-wide and sticky: a save that
// asks for character or attribute escapes sets its flag, and nothing ever
// clears it. This file has its own process; its one test runs the whole
// sequence so that it does not depend on the order of tests.
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

TEST(DocumentSaveStickyEscapes, FlagsOnceSetStaySetForEveryLaterSave) {
    initLibraryOnce();
    HostDocument document;
    ASSERT_EQ(document.loadMemory("<r a=\"&quot;'&gt;\">\"'&gt;</r>").code, LUM_OK);
    const std::string decl = "<?xml version=\"1.0\" ?>\n";
    const std::string std = decl + "<r a=\"&quot;&apos;&gt;\">&quot;&apos;&gt;</r>";
    const std::string charOnly = decl + "<r a=\"&quot;&apos;&gt;\">\"'&gt;</r>";
    const std::string both = decl + "<r a=\"&quot;'>\">\"'&gt;</r>";

    SaveArgs plain;
    EXPECT_EQ(save(document.cell, plain).bytes, std);

    SaveArgs charEscapes;
    charEscapes.charEscapes = 1;
    EXPECT_EQ(save(document.cell, charEscapes).bytes, charOnly);
    // A later save with the flag clear still uses CharEscapes for text;
    // the attribute flag was not touched.
    EXPECT_EQ(save(document.cell, plain).bytes, charOnly);

    SaveArgs attrEscapes;
    attrEscapes.attributeEscapes = 1;
    EXPECT_EQ(save(document.cell, attrEscapes).bytes, both);
    EXPECT_EQ(save(document.cell, plain).bytes, both);

    // A failing save sets the flags too (they are set before the kind is
    // looked at); here they were set already, so nothing changes.
    ErrorSlot error;
    lumDocSave(&document.cell, 3, 1, 1, 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
               error.buffer, &error.code);
    EXPECT_EQ(error.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(save(document.cell, plain).bytes, both);
}

}  // namespace
