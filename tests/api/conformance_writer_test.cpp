// The SAX writer as a host sees it: command results, states, codes,
// messages and the exact bytes written, including namespace resolution,
// duplicate-attribute bookkeeping and the formatted layout.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host_test.h"
#include "lumxml.h"
#include "writer_host.h"

using lumtest::HostWriter;

namespace {

class WriterConformance : public ::testing::Test {
protected:
    void SetUp() override { lumtest::initLibraryOnce(); }
    // Fragment memory output without a mark.
    void openFragment(bool strict = false, bool formatted = false) {
        w.options.fragment = 1;
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openMemory(), 0);
    }
    // A host stream keeps what was written even after a failure closed
    // the output and cleared the memory fields.
    void openStream(bool strict, bool formatted, bool fragment) {
        w.options.fragment = fragment ? 1 : 0;
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openStream(), 0);
    }
    HostWriter w;
};

// A host-built attribute list (entries beyond `count` stay zero).
struct HostAttrs {
    explicit HostAttrs(int32_t capacity) : list(lumSAXNewAttrList(capacity)) {}
    ~HostAttrs() { lumSAXDeleteAttrList(list); }
    void add(const char* qName, const char* value, const char* uri = nullptr) {
        lumSAXInsertAttribute(&list, qName, value, uri, "CDATA");
    }
    SaxAttrList* list;
};

// ---- Commands and states ------------------------------------------------------

TEST_F(WriterConformance, StateRefusedCommandStillCompletesThePendingStartTag) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    // Command 31 needs state 2; its completion has already written the tag.
    EXPECT_EQ(w.run(31, "a", "a.dtd"), 1);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), 3);
}

TEST_F(WriterConformance, UnknownCommandWritesThePendingTagAndKeepsTheState) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    EXPECT_EQ(w.run(40), 0);
    EXPECT_EQ(w.memory(), "<a>");
    EXPECT_EQ(w.state(), 3);
    EXPECT_EQ(w.run(1), 0);
    EXPECT_EQ(w.state(), 3);
}

TEST_F(WriterConformance, AttributesAndDeclarationsDoNotCompleteTheTag) {
    openFragment();
    ASSERT_EQ(w.run(23, "a"), 0);
    EXPECT_EQ(w.run(10, "x", "1"), 0);
    EXPECT_EQ(w.run(11, "urn:u", "p"), 0);
    EXPECT_EQ(w.memory(), "");
    EXPECT_EQ(w.run(24, "a"), 0);
    // Declarations and attributes keep their call order.
    EXPECT_EQ(w.memory(), "<a x=\"1\" xmlns:p=\"urn:u\"></a>");
}

TEST_F(WriterConformance, EmptyElementStateIs3AndAttributesStillJoinIt) {
    openFragment();
    ASSERT_EQ(w.run(26, "e"), 0);
    EXPECT_EQ(w.state(), 3);
    EXPECT_EQ(w.run(10, "k", "v"), 0);
    EXPECT_EQ(w.run(25, "t"), 0);
    EXPECT_EQ(w.memory(), "<e k=\"v\"/>t");
    EXPECT_EQ(w.state(), 5);
}

TEST_F(WriterConformance, FailureResultIsTheCodeBeforeTheCloseStep) {
    // The close step finds the root still open (9); the answer stays 6.
    openStream(true, false, false);
    ASSERT_EQ(w.run(23, "r"), 0);
    EXPECT_EQ(w.run(32, "1bad"), 6);
    EXPECT_EQ(w.message(), "1bad");
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.stream(), "<?xml?><r>&1bad;");
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterConformance, CodeWithoutMessageLeavesTheMessageAsItWas) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(31, "doc", "doc.dtd"), 0);
    EXPECT_EQ(w.run(23, "other"), 14);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.stream(), "<?xml?><!DOCTYPE doc SYSTEM \"doc.dtd\"><other>");
}

TEST_F(WriterConformance, AfterAFailureOnlyFreeStateResetAndStopAreTaken) {
    openStream(true, false, false);
    ASSERT_EQ(w.run(33, "x"), 13);
    for (int32_t command : {1, 10, 11, 12, 21, 22, 23, 24, 25, 28, 33})
        EXPECT_EQ(w.run(command, "a"), 1) << command;
    EXPECT_EQ(w.run(5), 0);
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.run(4), 0);
    EXPECT_EQ(w.state(), 1);
}

// ---- Element namespace resolution ---------------------------------------------

TEST_F(WriterConformance, PrefixAloneTakesTheBindingFoundForIt) {
    openFragment();
    w.run(23, "p:r", "urn:u");
    w.run(26, "p:c");
    w.run(24, "p:r", "urn:u");
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(WriterConformance, UnknownPrefixWithoutUriIsDeclaredEmpty) {
    openFragment();
    w.run(23, "r");
    w.run(10, "xmlns:q", "urn:q");
    w.run(26, "p:c");
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r xmlns:q=\"urn:q\"><p:c xmlns:p=\"\"/></r>");
}

TEST_F(WriterConformance, StrictPrefixWithoutUriGives10WithThePrefix) {
    openStream(true, false, true);
    ASSERT_EQ(w.run(26, "p:c"), 0);
    EXPECT_EQ(w.run(25, "t"), 10);
    EXPECT_EQ(w.message(), "p");
    EXPECT_EQ(w.stream(), "<p:c xmlns:p=\"\"/>t");
}

TEST_F(WriterConformance, Error10IsNotSetOverAnEarlierCode) {
    openStream(true, false, true);
    HostAttrs attrs(2);
    attrs.add("x", "1");
    attrs.add("x", "2");
    // 18 is set while the element starts; writing the tag in the failure
    // step finds the pending prefix without URI and leaves 18.
    EXPECT_EQ(w.run(23, "p:c", nullptr, attrs.list), 18);
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<p:c xmlns:p=\"\" x=\"1\" x=\"2\">");
}

TEST_F(WriterConformance, UriOnlyBoundAsAnOlderDefaultGetsANewDefault) {
    openFragment();
    w.run(23, "r", "urn:d");
    w.run(23, "q:m", "urn:q");
    // The first binding of urn:d has no prefix and is not the newest one.
    w.run(26, "c", "urn:d");
    w.run(24, "q:m", "urn:q");
    w.run(24, "r", "urn:d");
    EXPECT_EQ(w.memory(),
              "<r xmlns=\"urn:d\"><q:m xmlns:q=\"urn:q\"><c xmlns=\"urn:d\"/></q:m></r>");
}

TEST_F(WriterConformance, UriOnlyBoundAsTheNewestDefaultNeedsNoDeclaration) {
    openFragment(true);
    w.run(23, "r", "urn:d");
    w.run(26, "c", "urn:d");
    EXPECT_EQ(w.run(24, "r", "urn:d"), 0);
    EXPECT_EQ(w.memory(), "<r xmlns=\"urn:d\"><c/></r>");
}

TEST_F(WriterConformance, PrefixAndUriOfTheBindingAreReused) {
    openFragment(true);
    w.run(23, "p:r", "urn:u");
    w.run(26, "p:c", "urn:u");
    EXPECT_EQ(w.run(24, "p:r", "urn:u"), 0);
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(WriterConformance, ReboundPrefixEndsWithItsElement) {
    openFragment(true);
    w.run(23, "p:r", "urn:u");
    w.run(26, "p:c", "urn:v");
    w.run(26, "p:d", "urn:u");
    EXPECT_EQ(w.run(24, "p:r", "urn:u"), 0);
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c xmlns:p=\"urn:v\"/><p:d/></p:r>");
}

TEST_F(WriterConformance, EndTagTakesTheBindingsPrefixForAUri) {
    openFragment();
    w.run(23, "q:r", "urn:u");
    w.run(24, "r", "urn:u");
    EXPECT_EQ(w.memory(), "<q:r xmlns:q=\"urn:u\"></q:r>");
}

TEST_F(WriterConformance, EndTagWithAnUnboundPrefixKeepsIt) {
    openFragment();
    w.run(23, "r");
    w.run(24, "z:r");
    EXPECT_EQ(w.memory(), "<r></z:r>");
}

TEST_F(WriterConformance, StrictEndTagWithAnotherBindingGives8) {
    openStream(true, false, true);
    w.run(23, "p:r", "urn:u");
    w.run(11, "urn:v", "q");
    EXPECT_EQ(w.run(24, "q:r"), 8);
    EXPECT_EQ(w.message(), "p:r");
    EXPECT_EQ(w.stream(), "<p:r xmlns:p=\"urn:u\" xmlns:q=\"urn:v\"></q:r>");
}

TEST_F(WriterConformance, StrictEndTagWithAnUnresolvedUriGives8) {
    openStream(true, false, true);
    w.run(23, "r");
    EXPECT_EQ(w.run(24, "r", "urn:none"), 8);
    EXPECT_EQ(w.message(), "r");
    EXPECT_EQ(w.stream(), "<r></r>");
}

// ---- Namespace declarations -------------------------------------------------------

TEST_F(WriterConformance, OtherPrefixDeclarationFollowsThePendingOne) {
    openFragment();
    w.run(23, "p:a", "urn:u");
    w.run(11, "urn:v", "x");
    w.run(24, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\" xmlns:x=\"urn:v\"></p:a>");
}

TEST_F(WriterConformance, DefaultDeclarationSatisfiesThePendingDefault) {
    openFragment(true);
    w.run(23, "a", "urn:d");
    EXPECT_EQ(w.run(11, "urn:d"), 0);
    EXPECT_EQ(w.run(24, "a", "urn:d"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"></a>");
}

TEST_F(WriterConformance, DeclarationGivesThePendingPrefixItsUri) {
    openFragment(true);
    w.run(23, "p:a");
    EXPECT_EQ(w.run(11, "urn:u", "p"), 0);
    EXPECT_EQ(w.run(24, "p:a", "urn:u"), 0);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterConformance, XmlnsAttributeSatisfiesThePendingPrefix) {
    openFragment(true);
    w.run(23, "p:a", "urn:u");
    EXPECT_EQ(w.run(10, "xmlns:p", "urn:u"), 0);
    EXPECT_EQ(w.run(24, "p:a"), 0);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterConformance, StrictDefaultDeclarationWithAnotherUriGives17WithAnEmptyMessage) {
    openStream(true, false, true);
    w.run(23, "a", "urn:d");
    EXPECT_EQ(w.run(11, "urn:e"), 17);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.stream(), "<a xmlns=\"urn:d\" xmlns=\"urn:e\">");
}

TEST_F(WriterConformance, NonStrictConflictingDeclarationIsWrittenToo) {
    openFragment();
    w.run(23, "p:a", "urn:u");
    EXPECT_EQ(w.run(11, "urn:v", "p"), 0);
    w.run(24, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\" xmlns:p=\"urn:v\"></p:a>");
}

TEST_F(WriterConformance, StrictUndeclaringThePendingPrefixGives19) {
    openStream(true, false, true);
    w.run(23, "p:a");
    EXPECT_EQ(w.run(11, nullptr, "p"), 19);
    EXPECT_EQ(w.message(), "p");
}

TEST_F(WriterConformance, ListDeclarationsBindPrefixesForTheAttributes) {
    openFragment(true);
    HostAttrs attrs(3);
    attrs.add("xmlns:q", "urn:q");
    attrs.add("q:x", "1", "urn:q");
    attrs.add("y", "2", "urn:q");
    w.run(23, "a", nullptr, attrs.list);
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:q=\"urn:q\" q:x=\"1\" q:y=\"2\"></a>");
}

TEST_F(WriterConformance, AttributeUriBoundAsDefaultIsWrittenUnprefixed) {
    openFragment();
    w.run(23, "a", "urn:d");
    w.run(10, "x", "1", "urn:d");
    w.run(24, "a", "urn:d");
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\" x=\"1\"></a>");
}

TEST_F(WriterConformance, StrictUnboundAttributeUriGives12WithTheUri) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(10, "x", "1", "urn:none");
    w.run(10, "y", "2");
    EXPECT_EQ(w.run(25, "t"), 12);
    EXPECT_EQ(w.message(), "urn:none");
    // The characters that triggered the tag are still written.
    EXPECT_EQ(w.stream(), "<a x=\"1\">t");
}

// ---- Duplicate attributes -------------------------------------------------------

TEST_F(WriterConformance, StrictDuplicatePrefixedAttributeGives18WithTheQualifiedName) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "p:x", "1");
    EXPECT_EQ(w.run(10, "p:x", "2"), 18);
    EXPECT_EQ(w.message(), "p:x");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:p\" p:x=\"1\" p:x=\"2\">");
}

TEST_F(WriterConformance, DifferentPrefixesForOneUriAreNeverCompared) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:u", "p");
    w.run(11, "urn:u", "q");
    w.run(10, "p:x", "1");
    EXPECT_EQ(w.run(10, "q:x", "2"), 0);
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:u\" xmlns:q=\"urn:u\" p:x=\"1\" q:x=\"2\"></a>");
}

TEST_F(WriterConformance, UnprefixedUriAttributeAndPrefixedOneOfTheSameNamespaceGive11) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(11, "urn:u", "p");
    w.run(10, "x", "1", "urn:u");
    EXPECT_EQ(w.run(10, "p:x", "2", "urn:u"), 0);
    EXPECT_EQ(w.run(25, "t"), 11);
    // The earlier attribute's own name: it had no prefix.
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:u\" p:x=\"1\" p:x=\"2\">t");
}

TEST_F(WriterConformance, DefaultNamespacedAttributeAndPlainOneGive11) {
    openStream(true, false, true);
    w.run(23, "a", "urn:d");
    w.run(10, "x", "1", "urn:d");
    w.run(10, "x", "2");
    EXPECT_EQ(w.run(24, "a", "urn:d"), 11);
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<a xmlns=\"urn:d\" x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterConformance, PrefixedAttributeAndPlainOneAreDistinct) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "p:x", "1");
    w.run(10, "x", "2");
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" p:x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterConformance, PlainAttributeThenPrefixedOneAreNotLinked) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "x", "1");
    w.run(10, "p:x", "2");
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" x=\"1\" p:x=\"2\"></a>");
}

TEST_F(WriterConformance, ALaterLinkReplacesAnEarlierOne) {
    // x (urn:u, written q:x) is linked to q:x, then the link moves to the
    // third x (urn:w, written r:x): the first two are never compared.
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:u", "q");
    w.run(11, "urn:w", "r");
    w.run(10, "x", "1", "urn:u");
    w.run(10, "q:x", "2", "urn:u");
    w.run(10, "x", "3", "urn:w");
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(),
              "<a xmlns:q=\"urn:u\" xmlns:r=\"urn:w\" q:x=\"1\" q:x=\"2\" r:x=\"3\"></a>");
}

TEST_F(WriterConformance, NonStrictDuplicatesAreWrittenWithoutCodes) {
    openFragment();
    w.run(23, "a");
    w.run(10, "x", "1");
    EXPECT_EQ(w.run(10, "x", "2"), 0);
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a x=\"1\" x=\"2\"></a>");
}

// ---- Escapes ---------------------------------------------------------------------

TEST_F(WriterConformance, AttributeValuesAndDeclaredUrisUseAttributeEscapes) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        HostWriter h;
        h.options.fragment = 1;
        h.options.encoding = encoding;
        ASSERT_EQ(h.openMemory(), 0);
        h.run(23, "a", "urn:<&\">'");
        h.run(10, "v", "<&\">'\t\n\r");
        h.run(24, "a", "urn:<&\">'");
        EXPECT_EQ(h.memory(),
                  "<a xmlns=\"urn:&lt;&amp;&quot;>'\" v=\"&lt;&amp;&quot;>'&#x9;&#xA;&#xD;\"></a>")
            << encoding;
    }
}

TEST_F(WriterConformance, CharactersUseStandardEscapesInEveryEncoding) {
    for (const char* encoding : {"UTF-8", "ISO-8859-1"}) {
        HostWriter h;
        h.options.fragment = 1;
        h.options.encoding = encoding;
        ASSERT_EQ(h.openMemory(), 0);
        h.run(25, "<&\">'\t\n\r");
        EXPECT_EQ(h.memory(), "&lt;&amp;&quot;&gt;&apos;\t\n\r") << encoding;
    }
}

// ---- Formatted layout -------------------------------------------------------------

TEST_F(WriterConformance, FormattedDocumentBytes) {
    w.options.version = "1.0";
    w.options.formatted = 1;
    ASSERT_EQ(w.openMemory(), 0);
    w.run(23, "root");
    w.run(28, "c");
    w.run(26, "e");
    w.run(23, "b");
    w.run(23, "d");
    w.run(25, "t");
    w.run(24, "d");
    w.run(24, "b");
    w.run(29, "t", "d");
    w.run(33, "x");
    w.run(32, "amp");
    w.run(24, "root");
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

TEST_F(WriterConformance, FormattedRawTextAfterAStartTagStartsOnTheNextLine) {
    openFragment(false, true);
    w.run(23, "a");
    w.run(23, "b");
    w.run(30, "raw");
    w.run(24, "b");
    w.run(24, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <b>\nraw</b>\n</a>\n");
}

TEST_F(WriterConformance, FormattedEndTagAfterTextIsNotIndentedButAfterACommentIs) {
    openFragment(false, true);
    w.run(23, "a");
    w.run(23, "b");
    w.run(28, "c");
    w.run(24, "b");
    w.run(25, "t");
    w.run(24, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <b>\n    <!-- c -->\n  </b>\nt</a>\n");
}

TEST_F(WriterConformance, FormattedFailedProcessingInstructionLeavesOnlyItsIndentation) {
    openStream(true, true, true);
    w.run(23, "a");
    EXPECT_EQ(w.run(29, "xml-stylesheet", "href=\"s\""), 6);
    EXPECT_EQ(w.message(), "xml-stylesheet");
    EXPECT_EQ(w.stream(), "<a>\n  ");
}

TEST_F(WriterConformance, FormattedCdataWithItsEndLeavesOnlyItsIndentation) {
    openStream(false, true, true);
    w.run(23, "a");
    EXPECT_EQ(w.run(33, "a]]>b"), 21);
    EXPECT_EQ(w.message(), "The sequence ']]>' is not allowed in character data");
    EXPECT_EQ(w.stream(), "<a>\n  ");
    EXPECT_EQ(w.state(), 7);
}

TEST_F(WriterConformance, FormattedDoctypeIsFollowedByALineAndTheRootIsNotIndented) {
    w.options.formatted = 1;
    w.options.strict = 1;
    ASSERT_EQ(w.openMemory(), 0);
    w.run(31, "r", "-//P//EN", "r.dtd");
    w.run(28, "c");
    w.run(23, "r");
    w.run(26, "e");
    EXPECT_EQ(w.run(24, "r"), 0);
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.memory(),
              "<?xml?>\n"
              "<!DOCTYPE r PUBLIC \"-//P//EN\" \"r.dtd\">\n"
              "<!-- c -->\n"
              "<r>\n"
              "  <e/>\n"
              "</r>\n");
}

// ---- Output and declaration --------------------------------------------------------

TEST_F(WriterConformance, MemoryWithMarkKindWritesNoMarkForUtf8) {
    // Only UTF-16 encodings get a byte-order mark.
    w.options.standalone = 1;
    ASSERT_EQ(w.openMemory(2), 0);
    EXPECT_EQ(w.memory(), "<?xml standalone=\"yes\"?>");
}

TEST_F(WriterConformance, NegativeStandaloneIsNo) {
    w.options.standalone = -1;
    w.options.version = "1.1";
    w.options.encoding = "utf-8";
    ASSERT_EQ(w.openMemory(), 0);
    EXPECT_EQ(w.memory(), "<?xml version=\"1.1\" encoding=\"utf-8\" standalone=\"no\"?>");
}

TEST_F(WriterConformance, MessageAddressIsPublishedEvenWhenTheOpenFails) {
    w.options.outputKind = 9;
    EXPECT_EQ(w.run(21), 3);
    EXPECT_NE(w.options.message, nullptr);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.state(), 7);
}

TEST_F(WriterConformance, StrictCharactersOutsideTheRootAreWrittenAllTheSame) {
    openStream(true, false, false);
    EXPECT_EQ(w.run(25, "a<b"), 13);
    EXPECT_EQ(w.stream(), "<?xml?>a&lt;b");
}

TEST_F(WriterConformance, StrictDoctypeInFragmentIsWrittenThenGives15) {
    openStream(true, false, true);
    EXPECT_EQ(w.run(31, "r", "r.dtd"), 15);
    EXPECT_EQ(w.stream(), "<!DOCTYPE r SYSTEM \"r.dtd\">");
}

TEST_F(WriterConformance, StrictRootAfterDoctypeMustMatchExactly) {
    openStream(true, false, false);
    w.run(31, "p:r", "r.dtd");
    EXPECT_EQ(w.run(23, "p:r", "urn:p"), 0);
    EXPECT_EQ(w.run(24, "p:r", "urn:p"), 0);
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.stream(),
              "<?xml?><!DOCTYPE p:r SYSTEM \"r.dtd\"><p:r xmlns:p=\"urn:p\"></p:r>");
}

TEST_F(WriterConformance, RestartKeepsTheStateAndDoesNotCompleteTheStartTag) {
    openFragment();
    w.run(23, "a");
    void* oldBlock = w.options.memoryBuffer;
    w.options.memoryLength = nullptr;
    EXPECT_EQ(w.run(12), 0);
    std::free(oldBlock);
    EXPECT_EQ(w.state(), 3);
    w.run(10, "x", "1");
    w.run(24, "a");
    EXPECT_EQ(w.memory(), "<a x=\"1\"></a>");
}

TEST_F(WriterConformance, EndOfDocumentPublishesTheFinalLength) {
    openFragment();
    w.run(26, "a");
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.state(), 6);
    ASSERT_NE(w.options.memoryLength, nullptr);
    EXPECT_EQ(*w.options.memoryLength, 4u);
    EXPECT_EQ(w.memory(), "<a/>");
}

}  // namespace

namespace {

TEST_F(WriterConformance, StrictAttributePrefixBoundToAnotherUriGives12WithThePrefix) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(11, "urn:u", "p");
    w.run(10, "p:x", "1", "urn:v");
    w.run(10, "y", "2");
    EXPECT_EQ(w.run(24, "a"), 12);
    EXPECT_EQ(w.message(), "p");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:u\" p:x=\"1\"></a>");
}

TEST_F(WriterConformance, FormattedEmptyElementAlwaysEndsItsLine) {
    openFragment(false, true);
    w.run(23, "a");
    w.run(26, "e");
    w.run(25, "t");
    w.run(24, "a");
    EXPECT_EQ(w.memory(), "<a>\n  <e/>\nt</a>\n");
}

TEST_F(WriterConformance, RestartWithAnEmptyEncodingNameIsPassedOnAndFailsWith99) {
    // Unlike opening, restarting does not turn an empty name into UTF-8.
    w.options.encoding = "";
    openFragment();
    w.run(23, "a");
    void* oldBlock = w.options.memoryBuffer;
    w.options.memoryLength = nullptr;
    EXPECT_EQ(w.run(12), 99);
    std::free(oldBlock);
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
}

}  // namespace
