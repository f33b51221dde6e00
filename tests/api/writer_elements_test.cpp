// Elements and attributes through the writer (namespaces:
// writer_namespaces_test.cpp), duplicate attributes, and every strict check
// with its code and message.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host_test.h"
#include "lumxml.h"
#include "writer_fixtures.h"
#include "writer_host.h"

using lumtest::HostAttrs;
using lumtest::HostWriter;

namespace {

class WriterElements : public lumtest::FragmentWriterTest {};

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

TEST_F(WriterElements, StrictCharactersOutsideTheRootAreWrittenAllTheSame) {
    openStream(true, false, false);
    EXPECT_EQ(w.run(25, "a<b"), 13);
    EXPECT_EQ(w.stream(), "<?xml?>a&lt;b");
}

TEST_F(WriterElements, StrictDoctypeInFragmentIsWrittenThenGives15) {
    openStream(true, false, true);
    EXPECT_EQ(w.run(31, "r", "r.dtd"), 15);
    EXPECT_EQ(w.stream(), "<!DOCTYPE r SYSTEM \"r.dtd\">");
}

TEST_F(WriterElements, StrictRootAfterDoctypeMustMatchExactly) {
    openStream(true, false, false);
    w.run(31, "p:r", "r.dtd");
    EXPECT_EQ(w.run(23, "p:r", "urn:p"), 0);
    EXPECT_EQ(w.run(24, "p:r", "urn:p"), 0);
    EXPECT_EQ(w.run(22), 0);
    EXPECT_EQ(w.stream(),
              "<?xml?><!DOCTYPE p:r SYSTEM \"r.dtd\"><p:r xmlns:p=\"urn:p\"></p:r>");
}

TEST_F(WriterElements, StrictAttributePrefixBoundToAnotherUriGives12WithThePrefix) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(11, "urn:u", "p");
    w.run(10, "p:x", "1", "urn:v");
    w.run(10, "y", "2");
    EXPECT_EQ(w.run(24, "a"), 12);
    EXPECT_EQ(w.message(), "p");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:u\" p:x=\"1\"></a>");
}

// ---- Duplicate attributes -------------------------------------------------------

TEST_F(WriterElements, StrictDuplicatePrefixedAttributeGives18WithTheQualifiedName) {
    openStream(true, false, true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "p:x", "1");
    EXPECT_EQ(w.run(10, "p:x", "2"), 18);
    EXPECT_EQ(w.message(), "p:x");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:p\" p:x=\"1\" p:x=\"2\">");
}

TEST_F(WriterElements, DifferentPrefixesForOneUriAreNeverCompared) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:u", "p");
    w.run(11, "urn:u", "q");
    w.run(10, "p:x", "1");
    EXPECT_EQ(w.run(10, "q:x", "2"), 0);
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:u\" xmlns:q=\"urn:u\" p:x=\"1\" q:x=\"2\"></a>");
}

TEST_F(WriterElements, UnprefixedUriAttributeAndPrefixedOneOfTheSameNamespaceGive11) {
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

TEST_F(WriterElements, DefaultNamespacedAttributeAndPlainOneGive11) {
    openStream(true, false, true);
    w.run(23, "a", "urn:d");
    w.run(10, "x", "1", "urn:d");
    w.run(10, "x", "2");
    EXPECT_EQ(w.run(24, "a", "urn:d"), 11);
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<a xmlns=\"urn:d\" x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterElements, PrefixedAttributeAndPlainOneAreDistinct) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "p:x", "1");
    w.run(10, "x", "2");
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" p:x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterElements, PlainAttributeThenPrefixedOneAreNotLinked) {
    openFragment(true);
    w.run(23, "a");
    w.run(11, "urn:p", "p");
    w.run(10, "x", "1");
    w.run(10, "p:x", "2");
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" x=\"1\" p:x=\"2\"></a>");
}

TEST_F(WriterElements, ALaterLinkReplacesAnEarlierOne) {
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

TEST_F(WriterElements, NonStrictDuplicatesAreWrittenWithoutCodes) {
    openFragment();
    w.run(23, "a");
    w.run(10, "x", "1");
    EXPECT_EQ(w.run(10, "x", "2"), 0);
    EXPECT_EQ(w.run(24, "a"), 0);
    EXPECT_EQ(w.memory(), "<a x=\"1\" x=\"2\"></a>");
}

}  // namespace
