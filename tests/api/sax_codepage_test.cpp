// The pull reader under an ISO-8859-1 host code page: every string the host
// receives, and every string it gives, is in its code page.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::DrainOptions;
using lumtest::noLocation;
using lumtest::HostRecord;
using lumtest::drain;
using Events = std::vector<std::string>;

namespace {

class SaxLatin1Host : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce("ISO-8859-1"); }
    lumtest::TempDir dir;
};

TEST_F(SaxLatin1Host, NonAsciiTextArrivesInTheHostCodePage) {
    HostRecord record;
    // UTF-8 bytes in the document; e-acute, and a euro sign that
    // ISO-8859-1 cannot hold (ICU substitutes 0x1A).
    record.setMemory("<caf\xC3\xA9 n\xC3\xA9='\xC3\xA9t\xC3\xA9'>\xC3\xA9\xE2\x82\xAC</caf\xC3\xA9>");
    EXPECT_EQ(drain(record, noLocation()),
              (Events{
                  "StartDocument/0",
                  "StartElement/4 \"\" \"caf\xE9\" \"caf\xE9\" [1/1 {\"n\xE9\" \"n\xE9\" null "
                  "\"CDATA\" \"\xE9t\xE9\"}]",
                  // Two UTF-16 units, two bytes in the host's code page.
                  "Characters/2 \"\xE9\x1A\" 2",
                  "EndElement/3 \"\" \"caf\xE9\" \"caf\xE9\"",
                  "EndDocument/0",
                  "result 0 code 0 ",
              }));
}

TEST_F(SaxLatin1Host, FileNameInTheHostCodePageIsFound) {
    // The file's name on disk is UTF-8; the host names it in ISO-8859-1.
    dir.write("caf\xC3\xA9.xml", "<r/>");
    HostRecord record;
    record.setFile(dir.path() + "/caf\xE9.xml");
    const Events events = drain(record, noLocation());
    EXPECT_EQ(events.back(), "result 0 code 0 ");
    EXPECT_EQ(events[1], "StartElement/4 \"\" \"r\" \"r\" [0/0 no-array]");
    EXPECT_EQ(std::string(record.systemId()), dir.path() + "/caf\xE9.xml");
}

TEST_F(SaxLatin1Host, AttributeListStringsAreCopiedAsTheHostGaveThem) {
    SaxAttrList* list = nullptr;
    lumSAXInsertAttribute(&list, "p:n\xE9", "\xE9t\xE9", nullptr, nullptr);
    EXPECT_STREQ(list->entries[0].localName, "n\xE9");
    EXPECT_STREQ(list->entries[0].value, "\xE9t\xE9");
    lumSAXDeleteAttrList(list);
}

TEST_F(SaxLatin1Host, ErrorMessagesArriveInTheHostCodePage) {
    HostRecord record;
    record.setMemory("<r>\xC3\xA9</x\xC3\xA9>");
    const Events events = drain(record, noLocation());
    bool found = false;
    for (const std::string& event : events) {
        found |= event == "FatalError/1 \"expected end of tag 'r'\"";
    }
    EXPECT_TRUE(found) << ::testing::PrintToString(events);
}

}  // namespace
