// Elements, attributes and namespaces through the writer, and every strict
// check with its code and message.
#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"
#include "writer_host.h"

using lumtest::HostWriter;

namespace {

class WriterElements : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::initLibraryOnce();
        w.options.fragment = 1;
    }
    void open(bool strict = false, bool formatted = false) {
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openMemory(), 0);
    }
    HostWriter w;
};

// ---- Namespaces --------------------------------------------------------------

TEST_F(WriterElements, PrefixedElementWithNoBindingsGetsItsDeclaration) {
    open();
    w.run(26, "p:a", "urn:u");
    w.run(1);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"/>");
}

TEST_F(WriterElements, UriOnlyElementTakesTheBoundPrefixWithoutDeclaration) {
    open();
    w.run(23, "q:r", "urn:u");
    w.run(26, "a", "urn:u");
    w.run(24, "q:r", "urn:u");
    EXPECT_EQ(w.memory(), "<q:r xmlns:q=\"urn:u\"><q:a/></q:r>");
}

TEST_F(WriterElements, DeclarationMatchingThePendingBindingIsWrittenOnce) {
    open();
    w.run(23, "p:a", "urn:u");
    EXPECT_EQ(w.run(11, "urn:u", "p"), 0);
    w.run(24, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterElements, UriOnlyWithNoBindingsIsADefaultNamespace) {
    open();
    w.run(23, "a", "urn:d");
    w.run(24, "a", "urn:d");
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"></a>");
}

TEST_F(WriterElements, KnownPrefixWithAnotherUriIsReboundInside) {
    open();
    w.run(23, "p:a", "urn:1");
    w.run(26, "p:b", "urn:2");
    w.run(24, "p:a", "urn:1");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:1\"><p:b xmlns:p=\"urn:2\"/></p:a>");
}

// A prefix rebound by an inner element no longer stands for its old URI:
// an element given that old URI alone gets a default declaration instead
// of the hidden prefix (which would put it in the inner namespace).
TEST_F(WriterElements, UriOnlyElementPassesOverAPrefixReboundInside) {
    open(true);
    EXPECT_EQ(w.run(23, "q:r", "urn:a"), 0);
    EXPECT_EQ(w.run(23, "q:s", "urn:b"), 0);
    EXPECT_EQ(w.run(26, "a", "urn:a"), 0);
    EXPECT_EQ(w.run(24, "q:s", "urn:b"), 0);
    EXPECT_EQ(w.run(24, "q:r", "urn:a"), 0);
    EXPECT_EQ(w.memory(),
              "<q:r xmlns:q=\"urn:a\"><q:s xmlns:q=\"urn:b\"><a xmlns=\"urn:a\"/></q:s></q:r>");
}

// An element given by its URI alone whose start tag declares another
// prefix for that URI (for an attribute): start and end tag carry the same
// prefix, and strict mode accepts the end tag.
TEST_F(WriterElements, UriOnlyElementRedeclaredForAnAttributeKeepsOneName) {
    open(true);
    EXPECT_EQ(w.run(23, "q:r", "urn:b"), 0);
    EXPECT_EQ(w.run(23, "n", "urn:b"), 0);
    EXPECT_EQ(w.run(11, "urn:b", "a2"), 0);
    EXPECT_EQ(w.run(10, "a2:x", "v", "urn:b"), 0);
    EXPECT_EQ(w.run(24, "n", "urn:b"), 0);
    EXPECT_EQ(w.run(24, "q:r", "urn:b"), 0);
    EXPECT_EQ(w.memory(),
              "<q:r xmlns:q=\"urn:b\"><a2:n xmlns:a2=\"urn:b\" a2:x=\"v\"></a2:n></q:r>");
}

TEST_F(WriterElements, UriOnlyDefaultElementRedeclaredForAnAttributeIsAccepted) {
    open(true);
    EXPECT_EQ(w.run(23, "e", "urn:a"), 0);
    EXPECT_EQ(w.run(11, "urn:a", "a1"), 0);
    EXPECT_EQ(w.run(10, "a1:x", "v", "urn:a"), 0);
    EXPECT_EQ(w.run(24, "e", "urn:a"), 0);
    EXPECT_EQ(w.memory(),
              "<a1:e xmlns=\"urn:a\" xmlns:a1=\"urn:a\" a1:x=\"v\"></a1:e>");
}

TEST_F(WriterElements, BindingsEndWithTheirElement) {
    open();
    w.run(23, "r");
    w.run(26, "p:a", "urn:u");
    w.run(26, "b", "urn:u");  // p is out of scope again: a default namespace
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r><p:a xmlns:p=\"urn:u\"/><b xmlns=\"urn:u\"/></r>");
}

TEST_F(WriterElements, AttributesFromAListAndCommand10WithEscapes) {
    open();
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "id", "1<2 & \"3\"", nullptr, nullptr);
    lumSAXInsertAttribute(&list, "xmlns:p", "urn:p", nullptr, nullptr);
    lumSAXInsertAttribute(&list, "p:x", "y", "urn:p", nullptr);
    w.run(23, "r", nullptr, list);
    w.run(10, "z", "last");
    w.run(24, "r");
    lumSAXDeleteAttrList(list);
    EXPECT_EQ(w.memory(),
              "<r id=\"1&lt;2 &amp; &quot;3&quot;\" xmlns:p=\"urn:p\" p:x=\"y\" z=\"last\"></r>");
}

TEST_F(WriterElements, DefaultNamespaceAttributeSatisfiesThePendingDefault) {
    open();
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "xmlns", "urn:d", nullptr, nullptr);
    w.run(26, "a", "urn:d", list);
    w.run(1);
    lumSAXDeleteAttrList(list);
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"/>");
}

TEST_F(WriterElements, DataElementWritesStartTextAndEnd) {
    open(false, true);
    w.run(23, "r");
    EXPECT_EQ(w.run(27, "a", "x&y"), 0);
    EXPECT_EQ(w.state(), 4);
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>x&amp;y</a>\n</r>\n");
}

TEST_F(WriterElements, FormattedIndentationOfNestedElements) {
    open(false, true);
    w.run(23, "r");
    w.run(23, "a");
    w.run(26, "b");
    w.run(24, "a");
    w.run(26, "c");
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>\n    <b/>\n  </a>\n  <c/>\n</r>\n");
}

TEST_F(WriterElements, TextThenEndTagIsNotIndented) {
    open(false, true);
    w.run(23, "r");
    w.run(23, "a");
    w.run(25, "t");
    w.run(24, "a");
    w.run(24, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>t</a>\n</r>\n");
}

// ---- Strict checks ---------------------------------------------------------------

// Every strict failure closes the output and clears the host's fields.
void expectFailed(HostWriter& w) {
    EXPECT_EQ(w.state(), 7);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterElements, Strict6InvalidElementName) {
    open(true);
    EXPECT_EQ(w.run(23, "a b"), 6);
    EXPECT_EQ(w.message(), "a b");
    expectFailed(w);
}

TEST_F(WriterElements, Strict6InvalidAttributeName) {
    open(true);
    w.run(23, "r");
    EXPECT_EQ(w.run(10, "1x", "v"), 6);
    EXPECT_EQ(w.message(), "1x");
    expectFailed(w);
}

TEST_F(WriterElements, Strict6ProcessingInstructionTargetsXmlAndXmlStylesheet) {
    for (const char* target : {"XmL", "xml-stylesheet", "1pi"}) {
        HostWriter h;
        h.options.strict = 1;
        h.options.fragment = 1;
        ASSERT_EQ(h.openMemory(), 0);
        EXPECT_EQ(h.run(29, target, "d"), 6) << target;
        EXPECT_EQ(h.message(), target);
        expectFailed(h);
    }
}

TEST_F(WriterElements, Strict6ProcessingInstructionWritesNothingOfIt) {
    lumtest::TempDir dir;
    std::string path = dir.file("pi.xml");
    {
        HostWriter h;
        h.options.strict = 1;
        h.options.fragment = 1;
        h.options.outputKind = 1;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(21), 0);
        EXPECT_EQ(h.run(29, "xml-stylesheet", "href=\"s.css\""), 6);
    }
    EXPECT_EQ(lumtest::readFile(path), "");
}

TEST_F(WriterElements, Strict6EntityNameIsWrittenAllTheSame) {
    lumtest::TempDir dir;
    std::string path = dir.file("e.xml");
    {
        HostWriter h;
        h.options.strict = 1;
        h.options.fragment = 1;
        h.options.outputKind = 1;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(21), 0);
        EXPECT_EQ(h.run(32, "a b"), 6);
        EXPECT_EQ(h.message(), "a b");
    }
    EXPECT_EQ(lumtest::readFile(path), "&a b;");
}

TEST_F(WriterElements, Strict7SecondTopLevelElement) {
    w.options.fragment = 0;
    open(true);
    w.run(26, "a");
    EXPECT_EQ(w.run(26, "b"), 7);
    expectFailed(w);
}

TEST_F(WriterElements, FragmentAllowsSeveralTopLevelElements) {
    open(true);
    w.run(26, "a");
    w.run(26, "b");
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.memory(), "<a/><b/>");
}

TEST_F(WriterElements, Strict8EndTagMismatch) {
    open(true);
    w.run(23, "p:a", "urn:u");
    EXPECT_EQ(w.run(24, "b"), 8);
    EXPECT_EQ(w.message(), "p:a");
    expectFailed(w);
}

TEST_F(WriterElements, Strict8EndTagWithNoOpenElementHasAnEmptyMessage) {
    open(true);
    EXPECT_EQ(w.run(24, "a"), 8);
    EXPECT_EQ(w.message(), "");
    expectFailed(w);
}

TEST_F(WriterElements, Strict10PendingPrefixWithoutUri) {
    open(true);
    w.run(23, "r", "urn:r");
    EXPECT_EQ(w.run(26, "p:a"), 0);  // the tag is written by the next command
    EXPECT_EQ(w.run(1), 10);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, Strict11AttributesResolvingToTheSameNamespace) {
    open(true);
    w.run(23, "p:r", "urn:u");
    w.run(10, "p:x", "1", "urn:u");
    w.run(10, "x", "2", "urn:u");
    EXPECT_EQ(w.run(24, "p:r", "urn:u"), 11);
    EXPECT_EQ(w.message(), "p:x");
    expectFailed(w);
}

TEST_F(WriterElements, Strict12UnboundAttributePrefixStopsTheAttributes) {
    lumtest::TempDir dir;
    std::string path = dir.file("u.xml");
    {
        HostWriter h;
        h.options.strict = 1;
        h.options.fragment = 1;
        h.options.outputKind = 1;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(21), 0);
        h.run(23, "r");
        h.run(10, "q:x", "1");
        h.run(10, "y", "2");
        EXPECT_EQ(h.run(25, "t"), 12);
        EXPECT_EQ(h.message(), "q");
    }
    // The command's own work goes on after the check: its text follows.
    EXPECT_EQ(lumtest::readFile(path), "<r q:x=\"1\">t");
}

TEST_F(WriterElements, Strict13CharactersOutsideTheRoot) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(25, "t"), 13);
    expectFailed(w);
}

TEST_F(WriterElements, Strict13CdataOutsideTheRoot) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(33, "t"), 13);
    expectFailed(w);
}

TEST_F(WriterElements, Strict14RootNameDiffersFromTheDoctype) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(31, "doc", "doc.dtd"), 0);
    EXPECT_EQ(w.run(23, "other"), 14);
    expectFailed(w);
}

TEST_F(WriterElements, StrictRootMatchingTheDoctypeIsAccepted) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(31, "doc", "doc.dtd"), 0);
    EXPECT_EQ(w.run(23, "doc"), 0);
    EXPECT_EQ(w.run(24, "doc"), 0);
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.memory(), "<?xml?><!DOCTYPE doc SYSTEM \"doc.dtd\"><doc></doc>");
}

TEST_F(WriterElements, Strict15DoctypeInFragmentMode) {
    open(true);
    EXPECT_EQ(w.run(31, "doc", "doc.dtd"), 15);
    expectFailed(w);
}

TEST_F(WriterElements, Strict17PendingPrefixDeclaredWithAnotherUri) {
    open(true);
    w.run(23, "p:a", "urn:1");
    EXPECT_EQ(w.run(11, "urn:2", "p"), 17);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, Strict18TwoPlainAttributesOfOneName) {
    open(true);
    w.run(23, "r");
    w.run(10, "x", "1");
    EXPECT_EQ(w.run(10, "x", "2"), 18);
    EXPECT_EQ(w.message(), "x");
    expectFailed(w);
}

TEST_F(WriterElements, Strict18SamePrefixAndLocalName) {
    open(true);
    w.run(23, "r", nullptr);
    w.run(11, "urn:p", "p");
    w.run(10, "p:x", "1", "urn:p");
    EXPECT_EQ(w.run(10, "p:x", "2", "urn:p"), 18);
    EXPECT_EQ(w.message(), "p:x");
}

TEST_F(WriterElements, Strict19PrefixDeclaredWithoutUri) {
    open(true);
    w.run(23, "r");
    EXPECT_EQ(w.run(11, nullptr, "p"), 19);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, NonStrictWritesWhatItIsGiven) {
    open(false);
    w.run(23, "r");
    w.run(10, "x", "1");
    w.run(10, "x", "2");
    w.run(24, "other");
    EXPECT_EQ(w.memory(), "<r x=\"1\" x=\"2\"></other>");
    EXPECT_EQ(w.state(), 4);
}

}  // namespace
