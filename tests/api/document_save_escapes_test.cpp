// The escapes of saved text and attribute values, character by character,
// for every way a save encodes (UTF-8 named or not, another 8-bit encoding,
// UTF-16), as an independent host sees them. The escape flags are sticky
// for the process, so the one test here runs the whole sequence in order.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;

namespace {

// The value of both the text and the attribute: control characters a
// parser would have normalised, and every character some escape list holds.
const char kValue[] = "a\r\t\nb&<>\"'";

std::string declaration(const char* encoding) {
    std::string decl = "<?xml version=\"1.0\"";
    if (encoding != nullptr) decl += std::string(" encoding=\"") + encoding + "\"";
    return decl + " ?>\n";
}

std::string utf16le(const std::string& ascii) {
    std::string out = "\xFF\xFE";
    for (char c : ascii) {
        out += c;
        out += '\0';
    }
    return out;
}

// The same tree in every encoding: the 8-bit ones directly, UTF-16 as the
// little-endian form of the same characters behind its mark.
void expectEverywhere(void* cell, const std::string& element, const char* step) {
    for (const char* encoding : {static_cast<const char*>(nullptr), "UTF-8", "utf8", "ISO-8859-1",
                                 "US-ASCII"}) {
        SaveArgs args;
        args.encoding = encoding;
        SaveAnswer answer = save(cell, args);
        EXPECT_EQ(answer.code, LUM_OK) << answer.message;
        EXPECT_EQ(answer.bytes, declaration(encoding) + element)
            << step << " / " << (encoding ? encoding : "none");
    }
    SaveArgs wide;
    wide.encoding = "UTF-16LE";
    EXPECT_EQ(save(cell, wide).bytes, utf16le(declaration("UTF-16LE") + element)) << step;
}

TEST(DocumentSaveEscapes, EscapeListsPerFlagInEveryEncoding) {
    initLibraryOnce();
    HostDocument document;
    ASSERT_EQ(document.loadMemory("<r>x</r>").code, LUM_OK);
    void* root = documentElementOf(document.cell);
    ASSERT_EQ(nodeCall(childOf(root, 0), LUM_NODE_SET_VALUE, {const_cast<char*>(kValue)},
                       nullptr).code, LUM_OK);
    ASSERT_EQ(nodeCall(root, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>("v"),
                                                      const_cast<char*>(kValue)}, nullptr).code,
              LUM_OK);

    const std::string stdText = "a\r\t\nb&amp;&lt;&gt;&quot;&apos;";
    const std::string charText = "a&#xD;\t\nb&amp;&lt;&gt;\"'";
    const std::string attrValue = "a&#xD;&#x9;&#xA;b&amp;&lt;>&quot;'";

    // Standard escapes for both: control characters stay as they are.
    expectEverywhere(document.cell, "<r v=\"" + stdText + "\">" + stdText + "</r>", "standard");

    // A refused save still sets the flag it asks for: the flags are taken
    // before the target kind is looked at.
    ErrorSlot error;
    lumDocSave(&document.cell, 5, 0, 1, 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
               error.buffer, &error.code);
    ASSERT_EQ(error.code, LUM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(error.text(), "Operation not supported");
    expectEverywhere(document.cell, "<r v=\"" + attrValue + "\">" + stdText + "</r>",
                     "attribute escapes");

    SaveArgs charEscapes;
    charEscapes.charEscapes = 1;
    ASSERT_EQ(save(document.cell, charEscapes).code, LUM_OK);
    expectEverywhere(document.cell, "<r v=\"" + attrValue + "\">" + charText + "</r>",
                     "both escapes");
}

}  // namespace
