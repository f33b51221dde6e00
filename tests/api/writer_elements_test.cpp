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
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_FAILED);
    EXPECT_EQ(w.options.memoryBuffer, nullptr);
    EXPECT_EQ(w.options.memoryLength, nullptr);
}

TEST_F(WriterElements, Strict6InvalidElementName) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "a b"), LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), "a b");
    expectFailed(w);
}

TEST_F(WriterElements, Strict6InvalidAttributeName) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "1x", "v"), LUM_WRITER_ERR_INVALID_NAME);
    EXPECT_EQ(w.message(), "1x");
    expectFailed(w);
}

TEST_F(WriterElements, Strict6ProcessingInstructionTargetsXmlAndXmlStylesheet) {
    for (const char* target : {"XmL", "xml-stylesheet", "1pi"}) {
        HostWriter h;
        h.options.strict = 1;
        h.options.fragment = 1;
        ASSERT_EQ(h.openMemory(), LUM_WRITER_OK);
        EXPECT_EQ(h.run(LUM_WRITER_PROCESSING_INSTRUCTION, target, "d"),
                  LUM_WRITER_ERR_INVALID_NAME) << target;
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
        h.options.outputKind = LUM_WRITER_TO_FILE;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        EXPECT_EQ(h.run(LUM_WRITER_PROCESSING_INSTRUCTION, "xml-stylesheet", "href=\"s.css\""),
                  LUM_WRITER_ERR_INVALID_NAME);
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
        h.options.outputKind = LUM_WRITER_TO_FILE;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        EXPECT_EQ(h.run(LUM_WRITER_ENTITY_REFERENCE, "a b"), LUM_WRITER_ERR_INVALID_NAME);
        EXPECT_EQ(h.message(), "a b");
    }
    EXPECT_EQ(lumtest::readFile(path), "&a b;");
}

TEST_F(WriterElements, Strict7SecondTopLevelElement) {
    w.options.fragment = 0;
    open(true);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a");
    EXPECT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "b"), LUM_WRITER_ERR_SECOND_ROOT);
    expectFailed(w);
}

TEST_F(WriterElements, FragmentAllowsSeveralTopLevelElements) {
    open(true);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "b");
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a/><b/>");
}

TEST_F(WriterElements, Strict8EndTagMismatch) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "b"), LUM_WRITER_ERR_END_TAG_MISMATCH);
    EXPECT_EQ(w.message(), "p:a");
    expectFailed(w);
}

TEST_F(WriterElements, Strict8EndTagWithNoOpenElementHasAnEmptyMessage) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_ERR_END_TAG_MISMATCH);
    EXPECT_EQ(w.message(), "");
    expectFailed(w);
}

TEST_F(WriterElements, Strict10PendingPrefixWithoutUri) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "r", "urn:r");
    // The tag is written by the next command.
    EXPECT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "p:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_CREATE), LUM_WRITER_ERR_PREFIX_WITHOUT_URI);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, Strict11AttributesResolvingToTheSameNamespace) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:u");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1", "urn:u");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:r", "urn:u"), LUM_WRITER_ERR_DUPLICATE_NS_ATTRIBUTE);
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
        h.options.outputKind = LUM_WRITER_TO_FILE;
        h.options.fileName = path.c_str();
        ASSERT_EQ(h.run(LUM_WRITER_OPEN), LUM_WRITER_OK);
        h.run(LUM_WRITER_START_ELEMENT, "r");
        h.run(LUM_WRITER_ADD_ATTRIBUTE, "q:x", "1");
        h.run(LUM_WRITER_ADD_ATTRIBUTE, "y", "2");
        EXPECT_EQ(h.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_ERR_UNBOUND);
        EXPECT_EQ(h.message(), "q");
    }
    // The command's own work goes on after the check: its text follows.
    EXPECT_EQ(lumtest::readFile(path), "<r q:x=\"1\">t");
}

TEST_F(WriterElements, Strict13CharactersOutsideTheRoot) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT);
    expectFailed(w);
}

TEST_F(WriterElements, Strict13CdataOutsideTheRoot) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_CDATA, "t"), LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT);
    expectFailed(w);
}

TEST_F(WriterElements, Strict14RootNameDiffersFromTheDoctype) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "doc", "doc.dtd"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "other"), LUM_WRITER_ERR_ROOT_NOT_DOCTYPE);
    expectFailed(w);
}

TEST_F(WriterElements, StrictRootMatchingTheDoctypeIsAccepted) {
    w.options.fragment = 0;
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "doc", "doc.dtd"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "doc"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "doc"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<?xml?><!DOCTYPE doc SYSTEM \"doc.dtd\"><doc></doc>");
}

TEST_F(WriterElements, Strict15DoctypeInFragmentMode) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "doc", "doc.dtd"), LUM_WRITER_ERR_DOCTYPE_IN_FRAGMENT);
    expectFailed(w);
}

TEST_F(WriterElements, Strict17PendingPrefixDeclaredWithAnotherUri) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:1");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:2", "p"), LUM_WRITER_ERR_PREFIX_REBOUND);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, Strict18TwoPlainAttributesOfOneName) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2"), LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE);
    EXPECT_EQ(w.message(), "x");
    expectFailed(w);
}

TEST_F(WriterElements, Strict18SamePrefixAndLocalName) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "r", nullptr);
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1", "urn:p");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "2", "urn:p"),
              LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE);
    EXPECT_EQ(w.message(), "p:x");
}

TEST_F(WriterElements, Strict19PrefixDeclaredWithoutUri) {
    open(true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, nullptr, "p"), LUM_WRITER_ERR_UNDECLARED_PREFIX);
    EXPECT_EQ(w.message(), "p");
    expectFailed(w);
}

TEST_F(WriterElements, NonStrictWritesWhatItIsGiven) {
    open(false);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2");
    w.run(LUM_WRITER_END_ELEMENT, "other");
    EXPECT_EQ(w.memory(), "<r x=\"1\" x=\"2\"></other>");
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_END_TAG);
}

TEST_F(WriterElements, StrictCharactersOutsideTheRootAreWrittenAllTheSame) {
    openStream(true, false, false);
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "a<b"), LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT);
    EXPECT_EQ(w.stream(), "<?xml?>a&lt;b");
}

TEST_F(WriterElements, StrictDoctypeInFragmentIsWrittenThenGives15) {
    openStream(true, false, true);
    EXPECT_EQ(w.run(LUM_WRITER_DOCTYPE, "r", "r.dtd"), LUM_WRITER_ERR_DOCTYPE_IN_FRAGMENT);
    EXPECT_EQ(w.stream(), "<!DOCTYPE r SYSTEM \"r.dtd\">");
}

TEST_F(WriterElements, StrictRootAfterDoctypeMustMatchExactly) {
    openStream(true, false, false);
    w.run(LUM_WRITER_DOCTYPE, "p:r", "r.dtd");
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:p"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:r", "urn:p"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_DOCUMENT), LUM_WRITER_OK);
    EXPECT_EQ(w.stream(),
              "<?xml?><!DOCTYPE p:r SYSTEM \"r.dtd\"><p:r xmlns:p=\"urn:p\"></p:r>");
}

TEST_F(WriterElements, StrictAttributePrefixBoundToAnotherUriGives12WithThePrefix) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1", "urn:v");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "y", "2");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_ERR_UNBOUND);
    EXPECT_EQ(w.message(), "p");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:u\" p:x=\"1\"></a>");
}

// ---- Duplicate attributes -------------------------------------------------------

TEST_F(WriterElements, StrictDuplicatePrefixedAttributeGives18WithTheQualifiedName) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "2"), LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE);
    EXPECT_EQ(w.message(), "p:x");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:p\" p:x=\"1\" p:x=\"2\">");
}

TEST_F(WriterElements, DifferentPrefixesForOneUriAreNeverCompared) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "q");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "q:x", "2"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:u\" xmlns:q=\"urn:u\" p:x=\"1\" q:x=\"2\"></a>");
}

TEST_F(WriterElements, UnprefixedUriAttributeAndPrefixedOneOfTheSameNamespaceGive11) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "2", "urn:u"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_ERR_DUPLICATE_NS_ATTRIBUTE);
    // The earlier attribute's own name: it had no prefix.
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<a xmlns:p=\"urn:u\" p:x=\"1\" p:x=\"2\">t");
}

TEST_F(WriterElements, DefaultNamespacedAttributeAndPlainOneGive11) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a", "urn:d");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1", "urn:d");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a", "urn:d"), LUM_WRITER_ERR_DUPLICATE_NS_ATTRIBUTE);
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<a xmlns=\"urn:d\" x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterElements, PrefixedAttributeAndPlainOneAreDistinct) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "1");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" p:x=\"1\" x=\"2\"></a>");
}

TEST_F(WriterElements, PlainAttributeThenPrefixedOneAreNotLinked) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:p", "p");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "p:x", "2");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a xmlns:p=\"urn:p\" x=\"1\" p:x=\"2\"></a>");
}

TEST_F(WriterElements, ALaterLinkReplacesAnEarlierOne) {
    // x (urn:u, written q:x) is linked to q:x, then the link moves to the
    // third x (urn:w, written r:x): the first two are never compared.
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "q");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:w", "r");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1", "urn:u");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "q:x", "2", "urn:u");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "3", "urn:w");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<a xmlns:q=\"urn:u\" xmlns:r=\"urn:w\" q:x=\"1\" q:x=\"2\" r:x=\"3\"></a>");
}

TEST_F(WriterElements, NonStrictDuplicatesAreWrittenWithoutCodes) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "2"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a x=\"1\" x=\"2\"></a>");
}

}  // namespace
