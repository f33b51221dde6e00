// The writer's output side as a host drives it: opening each kind of
// output, the XML declaration, the text commands and closing.
#include <gtest/gtest.h>

#include <cstring>

#include "host_test.h"
#include "lumxml.h"
#include "wide_names.h"
#include "writer_fixtures.h"
#include "writer_host.h"

using lumtest::HostAttrs;
using lumtest::HostWriter;

namespace {

class WriterOutput : public lumtest::WriterTest {};

// ---- The XML declaration ---------------------------------------------------

TEST_F(WriterOutput, BareDeclarationWithNoVersionAndNoEncoding) {
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_PROLOG);
    EXPECT_EQ(w.memory(), "<?xml?>");
}

TEST_F(WriterOutput, DeclarationWithTheEncodingAlone) {
    HostWriter w;
    w.options.encoding = "UTF-8";
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml encoding=\"UTF-8\"?>");
}

TEST_F(WriterOutput, DeclarationWithVersionEncodingAndStandalone) {
    HostWriter w;
    w.options.version = "1.0";
    w.options.encoding = "ISO-8859-1";
    w.options.standalone = 1;
    w.options.formatted = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n");
}

TEST_F(WriterOutput, StandaloneOtherThanOneIsNo) {
    HostWriter w;
    w.options.version = "1.0";
    w.options.standalone = 7;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml version=\"1.0\" standalone=\"no\"?>");
}

TEST_F(WriterOutput, EmptyVersionAndEncodingCountAsAbsent) {
    HostWriter w;
    w.options.version = "";
    w.options.encoding = "";
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml?>");
}

TEST_F(WriterOutput, FragmentModeWritesNoDeclaration) {
    HostWriter w;
    w.options.fragment = 1;
    w.options.version = "1.0";
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "");
}

// ---- More of the declaration and output --------------------------------------------------------

TEST_F(WriterOutput, MemoryWithMarkKindWritesNoMarkForUtf8) {
    // Only UTF-16 encodings get a byte-order mark.
    w.options.standalone = 1;
    ASSERT_EQ(w.openMemory(LUM_WRITER_TO_MEMORY_WITH_BOM), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml standalone=\"yes\"?>");
}

TEST_F(WriterOutput, NegativeStandaloneIsNo) {
    w.options.standalone = -1;
    w.options.version = "1.1";
    w.options.encoding = "utf-8";
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml version=\"1.1\" encoding=\"utf-8\" standalone=\"no\"?>");
}

TEST_F(WriterOutput, MessageAddressIsPublishedEvenWhenTheOpenFails) {
    w.options.outputKind = 9;
    EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_ERR_OUTPUT_KIND);
    EXPECT_NE(w.options.message, nullptr);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

// ---- Output kinds ----------------------------------------------------------

TEST_F(WriterOutput, StreamKindCollectsTheSameBytesAsMemory) {
    HostWriter memory, stream;
    for (HostWriter* w : {&memory, &stream}) {
        w->options.version = "1.0";
        ASSERT_EQ(w == &memory ? w->openMemory() : w->openStream(), LUM_WRITER_OK);
        EXPECT_EQ(w->run(LUM_WRITER_START_ELEMENT, "r"), LUM_WRITER_OK);
        EXPECT_EQ(w->run(LUM_WRITER_CHARACTERS, "a<b"), LUM_WRITER_OK);
        EXPECT_EQ(w->run(LUM_WRITER_END_ELEMENT, "r"), LUM_WRITER_OK);
    }
    std::string fromMemory = memory.memory();
    ASSERT_EQ(memory.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    ASSERT_EQ(stream.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(fromMemory, "<?xml version=\"1.0\"?><r>a&lt;b</r>");
    EXPECT_EQ(stream.stream(), fromMemory);
}

TEST_F(WriterOutput, StreamKindWithoutCallbackIsRefusedWith3) {
    HostWriter w;
    w.options.outputKind = LUM_WRITER_TO_STREAM;
    EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_ERR_OUTPUT_KIND);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

TEST_F(WriterOutput, FileKindWithEightBitName) {
    lumtest::TempDir dir;
    std::string path = dir.file("w.xml");
    {
        HostWriter w;
        w.options.outputKind = LUM_WRITER_TO_FILE;
        w.options.fileName = path.c_str();
        w.options.fragment = 1;
        ASSERT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        EXPECT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "e"), LUM_WRITER_OK);
        EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    }
    EXPECT_EQ(lumtest::readFile(path), "<e/>");
}

TEST_F(WriterOutput, FileKindPrefersTheUtf16Name) {
    lumtest::TempDir dir;
    std::string narrow = dir.file("narrow.xml");
    std::u16string wide(dir.path().begin(), dir.path().end());
    wide += u"/\u00e9l\u00e8ve.xml";
    {
        HostWriter w;
        w.options.outputKind = LUM_WRITER_TO_FILE;
        w.options.fileName = narrow.c_str();
        w.options.wideFileName = lumtest::wideUnits(wide);
        w.options.encoding = "UTF-16LE";
        w.options.fragment = 1;
        ASSERT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        EXPECT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "e"), LUM_WRITER_OK);
        EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    }
    EXPECT_EQ(lumtest::readWideNamedFile(wide), std::string("\xFF\xFE<\0e\0/\0>\0", 10));
    EXPECT_EQ(lumtest::readFile(narrow), "");
}

TEST_F(WriterOutput, FileKindNeedsTheEightBitNameEvenWithAUtf16Name) {
    std::u16string wide = u"/tmp/lumxml-never-written.xml";
    HostWriter w;
    w.options.outputKind = LUM_WRITER_TO_FILE;
    w.options.wideFileName = lumtest::wideUnits(wide);
    EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_ERR_OUTPUT_KIND);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

TEST_F(WriterOutput, FileThatCannotBeCreatedGives5AndState7) {
    HostWriter w;
    w.options.outputKind = LUM_WRITER_TO_FILE;
    w.options.fileName = "/nonexistent-lumxml-dir/out.xml";
    EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_ERR_OPEN);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    // No formatter was made; nothing runs.
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "r"), LUM_WRITER_REFUSED);
}

TEST_F(WriterOutput, UnknownEncodingGives5) {
    HostWriter w;
    w.options.encoding = "no-such-encoding";
    EXPECT_EQ(w.openMemory(), LUM_WRITER_ERR_OPEN);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

TEST_F(WriterOutput, OutputKindsOtherThan1235AreRefusedWith3) {
    for (int32_t kind : {0, 4, 6, -1, 99}) {
        HostWriter w;
        w.options.outputKind = kind;
        EXPECT_EQ(w.run(LUM_WRITER_OPEN), LUM_WRITER_ERR_OUTPUT_KIND) << kind;
        EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED) << kind;
    }
}

// ---- Encodings ---------------------------------------------------------------

TEST_F(WriterOutput, Utf16MemoryWithMarkBeginsWithTheMarkThenTheDeclaration) {
    HostWriter w;
    w.options.encoding = "utf-16";
    ASSERT_EQ(w.openMemory(LUM_WRITER_TO_MEMORY_WITH_BOM), LUM_WRITER_OK);
    const std::string expected("\xFF\xFE<\0?\0x\0m\0l\0 \0e\0n\0c\0o\0d\0i\0n\0g\0=\0\"\0"
                               "u\0t\0f\0-\0\x31\0\x36\0\"\0?\0>\0",
                               52);
    EXPECT_EQ(w.memory(), expected);
}

TEST_F(WriterOutput, Utf16MemoryWithoutMarkKind5) {
    HostWriter w;
    w.options.encoding = "UTF-16LE";
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(LUM_WRITER_TO_MEMORY), LUM_WRITER_OK);
    ASSERT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "a"), LUM_WRITER_OK);
    ASSERT_EQ(w.run(LUM_WRITER_CREATE), LUM_WRITER_OK);  // completes the tag
    EXPECT_EQ(w.memory(), std::string("<\0a\0/\0>\0", 8));
}

TEST_F(WriterOutput, Iso88591WritesCharactersOutsideItAsReferences) {
    HostWriter w;
    w.options.encoding = "ISO-8859-1";
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_CHARACTERS, "\xC3\xA9 \xE2\x82\xAC");  // e-acute, a blank, the euro sign
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<?xml encoding=\"ISO-8859-1\"?><r>\xE9 &#x20AC;</r>");
}

TEST_F(WriterOutput, Utf8KeepsEveryCharacter) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_CHARACTERS, "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(w.memory(), "\xC3\xA9\xE2\x82\xAC");
}

// ---- Text commands -----------------------------------------------------------

class TextCommands : public WriterOutput {
protected:
    void SetUp() override {
        WriterOutput::SetUp();
        w.options.fragment = 1;
        ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    }
    HostWriter w;
};

TEST_F(TextCommands, CharactersEscapeMarkup) {
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "<a & 'b' \"c\">"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "&lt;a &amp; &apos;b&apos; &quot;c&quot;&gt;");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_TEXT);
}

TEST_F(TextCommands, RawTextIsWrittenAsItIs) {
    EXPECT_EQ(w.run(LUM_WRITER_RAW_TEXT, "<x>&amp;</x>"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<x>&amp;</x>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_TEXT);
}

TEST_F(TextCommands, CommentTextIsNotExamined) {
    EXPECT_EQ(w.run(LUM_WRITER_COMMENT, "a -- b"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<!-- a -- b -->");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_PROLOG);
}

TEST_F(TextCommands, ProcessingInstructionWithAndWithoutData) {
    EXPECT_EQ(w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "app", "x<y"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "app"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?app x<y?><?app ?>");
}

TEST_F(TextCommands, EntityReference) {
    EXPECT_EQ(w.run(LUM_WRITER_ENTITY_REFERENCE, "amp"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "&amp;");
}

TEST_F(TextCommands, CdataSection) {
    EXPECT_EQ(w.run(LUM_WRITER_CDATA, "a<b&c"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<![CDATA[a<b&c]]>");
}

TEST_F(TextCommands, EmptyTextIsLikeNull) {
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, ""), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_RAW_TEXT, ""), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "");
}

TEST_F(WriterOutput, DoctypeWithOnlyASystemIdentifier) {
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "r", "r.dtd"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml?><!DOCTYPE r SYSTEM \"r.dtd\">");
}

TEST_F(WriterOutput, DoctypeWithTwoIdentifiersIsPublicFirst) {
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "r", "-//L//DTD R//EN", "r.dtd"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml?><!DOCTYPE r PUBLIC \"-//L//DTD R//EN\" \"r.dtd\">");
}

TEST_F(WriterOutput, DoctypeOutsideThePrologIsRefused) {
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "r", "r.dtd"), LUM_WRITER_REFUSED);
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<?xml?><r></r>");
}

TEST_F(WriterOutput, CdataContainingItsEndGives21WithTheFixedMessage) {
    HostWriter w;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_CDATA, "a]]>b"), LUM_WRITER_ERR_CDATA_END);
    EXPECT_EQ(w.message(), "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterOutput, CharactersAfterAStartTagStayOnItsLineInFormattedMode) {
    HostWriter w;
    w.options.formatted = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_CHARACTERS, "text");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<?xml?>\n<r>\n  <a>text</a>\n</r>\n");
}

TEST_F(WriterOutput, FormattedCommentsPisAndCdataAreIndented) {
    HostWriter w;
    w.options.formatted = 1;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_COMMENT, "c");
    w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "p", "d");
    w.run(LUM_WRITER_CDATA, "x");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <!-- c -->\n  <?p d?>\n  <![CDATA[x]]>\n</r>\n");
}

// ---- Escapes ---------------------------------------------------------------------

TEST_F(WriterOutput, AttributeValuesAndDeclaredUrisUseAttributeEscapes) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        HostWriter h;
        h.options.fragment = 1;
        h.options.encoding = encoding;
        ASSERT_EQ(h.openMemory(), LUM_WRITER_OK);
        h.run(LUM_WRITER_START_ELEMENT, "a", "urn:<&\">'");
        h.run(LUM_WRITER_ADD_ATTRIBUTE, "v", "<&\">'\t\n\r");
        h.run(LUM_WRITER_END_ELEMENT, "a", "urn:<&\">'");
        EXPECT_EQ(h.memory(),
                  "<a xmlns=\"urn:&lt;&amp;&quot;>'\" v=\"&lt;&amp;&quot;>'&#x9;&#xA;&#xD;\"></a>")
            << encoding;
    }
}

TEST_F(WriterOutput, CharactersUseStandardEscapesInEveryEncoding) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        HostWriter h;
        h.options.fragment = 1;
        h.options.encoding = encoding;
        ASSERT_EQ(h.openMemory(), LUM_WRITER_OK);
        h.run(LUM_WRITER_CHARACTERS, "<&\">'\t\n\r");
        EXPECT_EQ(h.memory(), "&lt;&amp;&quot;&gt;&apos;\t\n\r") << encoding;
    }
}

// ---- Formatted layout -------------------------------------------------------------

TEST_F(WriterOutput, FormattedDocumentBytes) {
    w.options.version = "1.0";
    w.options.formatted = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "root");
    w.run(LUM_WRITER_COMMENT, "c");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "e");
    w.run(LUM_WRITER_START_ELEMENT, "b");
    w.run(LUM_WRITER_START_ELEMENT, "d");
    w.run(LUM_WRITER_CHARACTERS, "t");
    w.run(LUM_WRITER_END_ELEMENT, "d");
    w.run(LUM_WRITER_END_ELEMENT, "b");
    w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "t", "d");
    w.run(LUM_WRITER_CDATA, "x");
    w.run(LUM_WRITER_ENTITY_REFERENCE, "amp");
    w.run(LUM_WRITER_END_ELEMENT, "root");
    EXPECT_EQ(w.memory(),
              "<?xml version=\"1.0\"?>\n"
              "<root>\n"
              "  <!-- c -->\n"
              "  <e/>\n"
              "  <b>\n"
              "    <d>t</d>\n"
              "  </b>\n"
              "  <?t d?>\n"
              "  <![CDATA[x]]>\n"
              "&amp;</root>\n");
}

TEST_F(WriterOutput, FormattedRawTextAfterAStartTagStartsOnTheNextLine) {
    openFragment(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_START_ELEMENT, "b");
    w.run(LUM_WRITER_RAW_TEXT, "raw");
    w.run(LUM_WRITER_END_ELEMENT, "b");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <b>\nraw</b>\n</a>\n");
}

TEST_F(WriterOutput, FormattedEndTagAfterTextIsNotIndentedButAfterACommentIs) {
    openFragment(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_START_ELEMENT, "b");
    w.run(LUM_WRITER_COMMENT, "c");
    w.run(LUM_WRITER_END_ELEMENT, "b");
    w.run(LUM_WRITER_CHARACTERS, "t");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <b>\n    <!-- c -->\n  </b>\nt</a>\n");
}

TEST_F(WriterOutput, FormattedFailedProcessingInstructionLeavesOnlyItsIndentation) {
    openStream(true, true, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    EXPECT_EQ(w.run(LUM_WRITER_PROCESSING_INSTRUCTION, "xml-stylesheet", "href=\"s\""),
              LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), "xml-stylesheet");
    EXPECT_EQ(w.stream(), "<a>\n  ");
}

TEST_F(WriterOutput, FormattedCdataWithItsEndLeavesOnlyItsIndentation) {
    openStream(false, true, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    EXPECT_EQ(w.run(LUM_WRITER_CDATA, "a]]>b"), LUM_WRITER_ERR_CDATA_END);
    EXPECT_EQ(w.message(), "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(w.stream(), "<a>\n  ");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
}

TEST_F(WriterOutput, FormattedDoctypeIsFollowedByALineAndTheRootIsNotIndented) {
    w.options.formatted = 1;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_DOCTYPE, "r", "-//P//EN", "r.dtd");
    w.run(LUM_WRITER_COMMENT, "c");
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "e");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "r"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<?xml?>\n"
              "<!DOCTYPE r PUBLIC \"-//P//EN\" \"r.dtd\">\n"
              "<!-- c -->\n"
              "<r>\n"
              "  <e/>\n"
              "</r>\n");
}

TEST_F(WriterOutput, FormattedEmptyElementAlwaysEndsItsLine) {
    openFragment(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "e");
    w.run(LUM_WRITER_CHARACTERS, "t");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <e/>\nt</a>\n");
}

// ---- Ending the document -------------------------------------------------------

TEST_F(WriterOutput, EndOfDocumentLeavesTheHostALengthToRead) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "e");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_ENDED);
    // The target is gone; the length cell the host reads is the writer's.
    ASSERT_NE(w.options.memoryLength, nullptr);
    EXPECT_EQ(*w.options.memoryLength, 4u);
    EXPECT_EQ(w.memory(), "<e/>");
}

TEST_F(WriterOutput, TextCommandsAfterTheEndAreRefusedAndWriteNothing) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "e");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    for (int32_t command : {LUM_WRITER_START_ELEMENT, LUM_WRITER_END_ELEMENT,
                            LUM_WRITER_CHARACTERS, LUM_WRITER_EMPTY_ELEMENT,
                            LUM_WRITER_DATA_ELEMENT, LUM_WRITER_COMMENT,
                            LUM_WRITER_PROCESSING_INSTRUCTION, LUM_WRITER_RAW_TEXT,
                            LUM_WRITER_ENTITY_REFERENCE, LUM_WRITER_CDATA})
        EXPECT_EQ(w.run(command, "x", "y"), LUM_WRITER_REFUSED) << command;
    EXPECT_EQ(w.memory(), "<e/>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_ENDED);
}

TEST_F(WriterOutput, ReopeningAfterTheEndStartsAFreshDocument) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a/>");
    w.freeBlock();
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "b");
    ASSERT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<b/>");
}

TEST_F(WriterOutput, EndOfDocumentPublishesTheFinalLength) {
    openFragment();
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a");
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_ENDED);
    ASSERT_NE(w.options.memoryLength, nullptr);
    EXPECT_EQ(*w.options.memoryLength, 4u);
    EXPECT_EQ(w.memory(), "<a/>");
}

// ---- Restarting memory output ----------------------------------------------------

TEST_F(WriterOutput, RestartCarriesTheOldTextIntoANewBlock) {
    HostWriter w;
    w.options.fragment = 1;
    ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_CHARACTERS, "one");
    // The host terminates its copy of the text and keeps the old block.
    std::string before = w.memory();
    void* oldBlock = w.options.memoryBuffer;
    static_cast<char*>(oldBlock)[*w.options.memoryLength] = '\0';
    ASSERT_EQ(w.run(LUM_WRITER_RESTART_MEMORY), LUM_WRITER_OK);
    EXPECT_NE(w.options.memoryBuffer, oldBlock);
    std::free(oldBlock);
    EXPECT_EQ(w.memory(), "<r>one");
    EXPECT_EQ(before, "<r>one");
    w.run(LUM_WRITER_CHARACTERS, " & two");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r>one &amp; two</r>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_END_TAG);
}

TEST_F(WriterOutput, RestartWritesTheMarkUnlessKind5AndNoDeclaration) {
    HostWriter w;
    w.options.encoding = "UTF-16LE";
    ASSERT_EQ(w.openMemory(LUM_WRITER_TO_MEMORY_WITH_BOM), LUM_WRITER_OK);
    void* oldBlock = w.options.memoryBuffer;
    w.options.memoryLength = nullptr;  // no earlier text to carry over
    ASSERT_EQ(w.run(LUM_WRITER_RESTART_MEMORY), LUM_WRITER_OK);
    std::free(oldBlock);
    EXPECT_EQ(w.memory(), "\xFF\xFE");
}

TEST_F(WriterOutput, RestartKeepsTheStateAndDoesNotCompleteTheStartTag) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "a");
    void* oldBlock = w.options.memoryBuffer;
    w.options.memoryLength = nullptr;
    EXPECT_EQ(w.run(LUM_WRITER_RESTART_MEMORY), LUM_WRITER_OK);
    std::free(oldBlock);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_START_TAG_OPEN);
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    EXPECT_EQ(w.memory(), "<a x=\"1\"></a>");
}

TEST_F(WriterOutput, RestartWithAnEmptyEncodingNameIsPassedOnAndFailsWith99) {
    // Unlike opening, restarting does not turn an empty name into UTF-8.
    w.options.encoding = "";
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "a");
    void* oldBlock = w.options.memoryBuffer;
    w.options.memoryLength = nullptr;
    EXPECT_EQ(w.run(LUM_WRITER_RESTART_MEMORY), LUM_WRITER_ERR_UNEXPECTED);
    std::free(oldBlock);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
}

}  // namespace
