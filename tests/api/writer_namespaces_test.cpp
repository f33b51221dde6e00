// Namespaces through the writer: how an element's prefix and URI resolve
// against the bindings in scope, the declarations written for them, and
// the prefixes of attributes.
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

class WriterNamespaces : public lumtest::FragmentWriterTest {};

// ---- Namespaces --------------------------------------------------------------

TEST_F(WriterNamespaces, PrefixedElementWithNoBindingsGetsItsDeclaration) {
    open();
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:a", "urn:u");
    w.run(LUM_WRITER_CREATE);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"/>");
}

TEST_F(WriterNamespaces, UriOnlyElementTakesTheBoundPrefixWithoutDeclaration) {
    open();
    w.run(LUM_WRITER_START_ELEMENT, "q:r", "urn:u");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a", "urn:u");
    w.run(LUM_WRITER_END_ELEMENT, "q:r", "urn:u");
    EXPECT_EQ(w.memory(), "<q:r xmlns:q=\"urn:u\"><q:a/></q:r>");
}

TEST_F(WriterNamespaces, DeclarationMatchingThePendingBindingIsWrittenOnce) {
    open();
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p"), LUM_WRITER_OK);
    w.run(LUM_WRITER_END_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterNamespaces, UriOnlyWithNoBindingsIsADefaultNamespace) {
    open();
    w.run(LUM_WRITER_START_ELEMENT, "a", "urn:d");
    w.run(LUM_WRITER_END_ELEMENT, "a", "urn:d");
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"></a>");
}

TEST_F(WriterNamespaces, KnownPrefixWithAnotherUriIsReboundInside) {
    open();
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:1");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:b", "urn:2");
    w.run(LUM_WRITER_END_ELEMENT, "p:a", "urn:1");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:1\"><p:b xmlns:p=\"urn:2\"/></p:a>");
}

// A prefix rebound by an inner element no longer stands for its old URI:
// an element given that old URI alone gets a default declaration instead
// of the hidden prefix (which would put it in the inner namespace).
TEST_F(WriterNamespaces, UriOnlyElementPassesOverAPrefixReboundInside) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "q:r", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "q:s", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "a", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "q:s", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "q:r", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<q:r xmlns:q=\"urn:a\"><q:s xmlns:q=\"urn:b\"><a xmlns=\"urn:a\"/></q:s></q:r>");
}

// An element given by its URI alone whose start tag declares another
// prefix for that URI (for an attribute): start and end tag carry the same
// prefix, and strict mode accepts the end tag.
TEST_F(WriterNamespaces, UriOnlyElementRedeclaredForAnAttributeKeepsOneName) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "q:r", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "n", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:b", "a2"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "a2:x", "v", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "n", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "q:r", "urn:b"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<q:r xmlns:q=\"urn:b\"><a2:n xmlns:a2=\"urn:b\" a2:x=\"v\"></a2:n></q:r>");
}

TEST_F(WriterNamespaces, UriOnlyDefaultElementRedeclaredForAnAttributeIsAccepted) {
    open(true);
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "e", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:a", "a1"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "a1:x", "v", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "e", "urn:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(),
              "<a1:e xmlns=\"urn:a\" xmlns:a1=\"urn:a\" a1:x=\"v\"></a1:e>");
}

TEST_F(WriterNamespaces, BindingsEndWithTheirElement) {
    open();
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:a", "urn:u");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "b", "urn:u");  // p is out of scope again: a default namespace
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r><p:a xmlns:p=\"urn:u\"/><b xmlns=\"urn:u\"/></r>");
}

TEST_F(WriterNamespaces, AttributesFromAListAndCommand10WithEscapes) {
    open();
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "id", "1<2 & \"3\"", nullptr, nullptr);
    lumSAXInsertAttribute(&list, "xmlns:p", "urn:p", nullptr, nullptr);
    lumSAXInsertAttribute(&list, "p:x", "y", "urn:p", nullptr);
    w.run(LUM_WRITER_START_ELEMENT, "r", nullptr, list);
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "z", "last");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    lumSAXDeleteAttrList(list);
    EXPECT_EQ(w.memory(),
              "<r id=\"1&lt;2 &amp; &quot;3&quot;\" xmlns:p=\"urn:p\" p:x=\"y\" z=\"last\"></r>");
}

TEST_F(WriterNamespaces, DefaultNamespaceAttributeSatisfiesThePendingDefault) {
    open();
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "xmlns", "urn:d", nullptr, nullptr);
    w.run(LUM_WRITER_EMPTY_ELEMENT, "a", "urn:d", list);
    w.run(LUM_WRITER_CREATE);
    lumSAXDeleteAttrList(list);
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"/>");
}

TEST_F(WriterNamespaces, DataElementWritesStartTextAndEnd) {
    open(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_DATA_ELEMENT, "a", "x&y"), LUM_WRITER_OK);
    EXPECT_EQ(w.state(), LUM_WRITER_STATE_AFTER_END_TAG);
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>x&amp;y</a>\n</r>\n");
}

TEST_F(WriterNamespaces, FormattedIndentationOfNestedElements) {
    open(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "b");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "c");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>\n    <b/>\n  </a>\n  <c/>\n</r>\n");
}

TEST_F(WriterNamespaces, TextThenEndTagIsNotIndented) {
    open(false, true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_CHARACTERS, "t");
    w.run(LUM_WRITER_END_ELEMENT, "a");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r>\n  <a>t</a>\n</r>\n");
}

// ---- Element namespace resolution ---------------------------------------------

TEST_F(WriterNamespaces, PrefixAloneTakesTheBindingFoundForIt) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:u");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:c");
    w.run(LUM_WRITER_END_ELEMENT, "p:r", "urn:u");
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(WriterNamespaces, UnknownPrefixWithoutUriIsDeclaredEmpty) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "xmlns:q", "urn:q");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:c");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    EXPECT_EQ(w.memory(), "<r xmlns:q=\"urn:q\"><p:c xmlns:p=\"\"/></r>");
}

TEST_F(WriterNamespaces, StrictPrefixWithoutUriGives10WithThePrefix) {
    openStream(true, false, true);
    ASSERT_EQ(w.run(LUM_WRITER_EMPTY_ELEMENT, "p:c"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_ERR_PREFIX_WITHOUT_URI);
    EXPECT_EQ(w.message(), "p");
    EXPECT_EQ(w.stream(), "<p:c xmlns:p=\"\"/>t");
}

TEST_F(WriterNamespaces, Error10IsNotSetOverAnEarlierCode) {
    openStream(true, false, true);
    HostAttrs attrs(2);
    attrs.add("x", "1");
    attrs.add("x", "2");
    // 18 is set while the element starts; writing the tag in the failure
    // step finds the pending prefix without URI and leaves 18.
    EXPECT_EQ(w.run(LUM_WRITER_START_ELEMENT, "p:c", nullptr, attrs.list),
              LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE);
    EXPECT_EQ(w.message(), "x");
    EXPECT_EQ(w.stream(), "<p:c xmlns:p=\"\" x=\"1\" x=\"2\">");
}

TEST_F(WriterNamespaces, UriOnlyBoundAsAnOlderDefaultGetsANewDefault) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "r", "urn:d");
    w.run(LUM_WRITER_START_ELEMENT, "q:m", "urn:q");
    // The first binding of urn:d has no prefix and is not the newest one.
    w.run(LUM_WRITER_EMPTY_ELEMENT, "c", "urn:d");
    w.run(LUM_WRITER_END_ELEMENT, "q:m", "urn:q");
    w.run(LUM_WRITER_END_ELEMENT, "r", "urn:d");
    EXPECT_EQ(w.memory(),
              "<r xmlns=\"urn:d\"><q:m xmlns:q=\"urn:q\"><c xmlns=\"urn:d\"/></q:m></r>");
}

TEST_F(WriterNamespaces, UriOnlyBoundAsTheNewestDefaultNeedsNoDeclaration) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "r", "urn:d");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "c", "urn:d");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "r", "urn:d"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<r xmlns=\"urn:d\"><c/></r>");
}

TEST_F(WriterNamespaces, PrefixAndUriOfTheBindingAreReused) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:u");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:c", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:r", "urn:u"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c/></p:r>");
}

TEST_F(WriterNamespaces, ReboundPrefixEndsWithItsElement) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:u");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:c", "urn:v");
    w.run(LUM_WRITER_EMPTY_ELEMENT, "p:d", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:r", "urn:u"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<p:r xmlns:p=\"urn:u\"><p:c xmlns:p=\"urn:v\"/><p:d/></p:r>");
}

TEST_F(WriterNamespaces, EndTagTakesTheBindingsPrefixForAUri) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "q:r", "urn:u");
    w.run(LUM_WRITER_END_ELEMENT, "r", "urn:u");
    EXPECT_EQ(w.memory(), "<q:r xmlns:q=\"urn:u\"></q:r>");
}

TEST_F(WriterNamespaces, EndTagWithAnUnboundPrefixKeepsIt) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_END_ELEMENT, "z:r");
    EXPECT_EQ(w.memory(), "<r></z:r>");
}

TEST_F(WriterNamespaces, StrictEndTagWithAnotherBindingGives8) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "p:r", "urn:u");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:v", "q");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "q:r"), LUM_WRITER_ERR_END_TAG_MISMATCH);
    EXPECT_EQ(w.message(), "p:r");
    EXPECT_EQ(w.stream(), "<p:r xmlns:p=\"urn:u\" xmlns:q=\"urn:v\"></q:r>");
}

TEST_F(WriterNamespaces, StrictEndTagWithAnUnresolvedUriGives8) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "r");
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "r", "urn:none"), LUM_WRITER_ERR_END_TAG_MISMATCH);
    EXPECT_EQ(w.message(), "r");
    EXPECT_EQ(w.stream(), "<r></r>");
}

// ---- Namespace declarations -------------------------------------------------------

TEST_F(WriterNamespaces, OtherPrefixDeclarationFollowsThePendingOne) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:u");
    w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:v", "x");
    w.run(LUM_WRITER_END_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\" xmlns:x=\"urn:v\"></p:a>");
}

TEST_F(WriterNamespaces, DefaultDeclarationSatisfiesThePendingDefault) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "a", "urn:d");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:d"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a", "urn:d"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\"></a>");
}

TEST_F(WriterNamespaces, DeclarationGivesThePendingPrefixItsUri) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:a");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:u", "p"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:a", "urn:u"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterNamespaces, XmlnsAttributeSatisfiesThePendingPrefix) {
    openFragment(true);
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_ADD_ATTRIBUTE, "xmlns:p", "urn:u"), LUM_WRITER_OK);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "p:a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\"></p:a>");
}

TEST_F(WriterNamespaces, StrictDefaultDeclarationWithAnotherUriGives17WithAnEmptyMessage) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a", "urn:d");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:e"), LUM_WRITER_ERR_PREFIX_REBOUND);
    EXPECT_EQ(w.message(), "");
    EXPECT_EQ(w.stream(), "<a xmlns=\"urn:d\" xmlns=\"urn:e\">");
}

TEST_F(WriterNamespaces, NonStrictConflictingDeclarationIsWrittenToo) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, "urn:v", "p"), LUM_WRITER_OK);
    w.run(LUM_WRITER_END_ELEMENT, "p:a", "urn:u");
    EXPECT_EQ(w.memory(), "<p:a xmlns:p=\"urn:u\" xmlns:p=\"urn:v\"></p:a>");
}

TEST_F(WriterNamespaces, StrictUndeclaringThePendingPrefixGives19) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "p:a");
    EXPECT_EQ(w.run(LUM_WRITER_DECLARE_NAMESPACE, nullptr, "p"), LUM_WRITER_ERR_UNDECLARED_PREFIX);
    EXPECT_EQ(w.message(), "p");
}

TEST_F(WriterNamespaces, ListDeclarationsBindPrefixesForTheAttributes) {
    openFragment(true);
    HostAttrs attrs(3);
    attrs.add("xmlns:q", "urn:q");
    attrs.add("q:x", "1", "urn:q");
    attrs.add("y", "2", "urn:q");
    w.run(LUM_WRITER_START_ELEMENT, "a", nullptr, attrs.list);
    EXPECT_EQ(w.run(LUM_WRITER_END_ELEMENT, "a"), LUM_WRITER_OK);
    EXPECT_EQ(w.memory(), "<a xmlns:q=\"urn:q\" q:x=\"1\" q:y=\"2\"></a>");
}

TEST_F(WriterNamespaces, AttributeUriBoundAsDefaultIsWrittenUnprefixed) {
    openFragment();
    w.run(LUM_WRITER_START_ELEMENT, "a", "urn:d");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1", "urn:d");
    w.run(LUM_WRITER_END_ELEMENT, "a", "urn:d");
    EXPECT_EQ(w.memory(), "<a xmlns=\"urn:d\" x=\"1\"></a>");
}

TEST_F(WriterNamespaces, StrictUnboundAttributeUriGives12WithTheUri) {
    openStream(true, false, true);
    w.run(LUM_WRITER_START_ELEMENT, "a");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "x", "1", "urn:none");
    w.run(LUM_WRITER_ADD_ATTRIBUTE, "y", "2");
    EXPECT_EQ(w.run(LUM_WRITER_CHARACTERS, "t"), LUM_WRITER_ERR_UNBOUND);
    EXPECT_EQ(w.message(), "urn:none");
    // The characters that triggered the tag are still written.
    EXPECT_EQ(w.stream(), "<a x=\"1\">t");
}

}  // namespace
