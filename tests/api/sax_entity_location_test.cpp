// The location the record holds while the pull reader moves in and out of
// external entities: the ids are those of the entity an event comes from
// (an internal entity reports the entity that holds it), they are copied
// again only when they change, and a record used for another document
// takes that document's ids.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_test.h"
#include "sax_host.h"

using lumtest::HostRecord;

namespace {

struct Seen {
    std::string event;
    std::string systemId;
    const char* systemIdCopy;
    uint32_t line;
};

std::vector<Seen> pull(HostRecord& record) {
    std::vector<Seen> seen;
    int32_t result = record.first();
    while (result == LUM_SAX_MORE) {
        if (record.head() != nullptr) {
            const char* id = record.systemId();
            seen.push_back({lumtest::describeEvent(record.head()), id != nullptr ? id : "(null)",
                            id, record.line()});
        }
        result = record.next();
    }
    EXPECT_EQ(record.errorCode(), LUM_OK) << record.errorText();
    return seen;
}

const Seen& find(const std::vector<Seen>& seen, const std::string& prefix) {
    for (const Seen& one : seen) {
        if (one.event.compare(0, prefix.size(), prefix) == 0) return one;
    }
    std::string all;
    for (const Seen& one : seen) all += one.event + " | " + one.systemId + "\n";
    ADD_FAILURE() << "no event " << prefix << " in\n" << all;
    return seen.front();
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class SaxEntityLocation : public ::testing::Test {
protected:
    static void SetUpTestSuite() { lumtest::initLibraryOnce(); }
};

TEST_F(SaxEntityLocation, EventsOfAnExternalEntityCarryItsSystemIdAndLines) {
    lumtest::TempDir dir;
    dir.write("part.xml", "<p>\n<q/>\n</p>");
    const std::string main = dir.write(
        "main.xml",
        "<!DOCTYPE r [<!ENTITY part SYSTEM 'part.xml'><!ENTITY inner 'in<i/>ner'>]>\n"
        "<r>&part;<after/>\n\n&inner;<last/></r>");
    HostRecord record;
    record.setFile(main);
    record.setLimit(1000);
    const std::vector<Seen> seen = pull(record);
    ASSERT_FALSE(seen.empty());

    const Seen& root = find(seen, "StartElement/4 \"\" \"r\"");
    EXPECT_EQ(root.systemId, main);
    EXPECT_EQ(root.line, 2u);

    const Seen& p = find(seen, "StartElement/4 \"\" \"p\"");
    const Seen& q = find(seen, "StartElement/4 \"\" \"q\"");
    const Seen& pEnd = find(seen, "EndElement/3 \"\" \"p\"");
    EXPECT_TRUE(endsWith(p.systemId, "/part.xml")) << p.systemId;
    EXPECT_EQ(q.systemId, p.systemId);
    EXPECT_EQ(pEnd.systemId, p.systemId);
    EXPECT_EQ(p.line, 1u);
    EXPECT_EQ(q.line, 2u);
    EXPECT_EQ(pEnd.line, 3u);
    // Unchanged ids inside one entity: the record keeps the same copy.
    EXPECT_EQ(q.systemIdCopy, p.systemIdCopy);

    const Seen& after = find(seen, "StartElement/4 \"\" \"after\"");
    EXPECT_EQ(after.systemId, main);
    EXPECT_EQ(after.line, 2u);

    // An internal entity reports the entity that holds it, with its lines.
    const Seen& inner = find(seen, "StartElement/4 \"\" \"i\"");
    EXPECT_EQ(inner.systemId, main);
    EXPECT_EQ(inner.line, 4u);
    const Seen& last = find(seen, "StartElement/4 \"\" \"last\"");
    EXPECT_EQ(last.systemId, main);
    EXPECT_EQ(last.line, 4u);
}

TEST_F(SaxEntityLocation, ARecordUsedAgainTakesTheNewDocumentsIds) {
    lumtest::TempDir dir;
    const std::string file = dir.write("one.xml", "<r><a/></r>");
    HostRecord record;
    record.setFile(file);
    const std::vector<Seen> fromFile = pull(record);
    ASSERT_FALSE(fromFile.empty());
    EXPECT_EQ(find(fromFile, "StartElement/4 \"\" \"a\"").systemId, file);

    record.setMemory("<r>\n<b/></r>");
    const std::vector<Seen> fromMemory = pull(record);
    ASSERT_FALSE(fromMemory.empty());
    const Seen& b = find(fromMemory, "StartElement/4 \"\" \"b\"");
    EXPECT_EQ(b.systemId, "MEMPTR");
    EXPECT_EQ(b.line, 2u);

    record.setFile(file);
    const std::vector<Seen> again = pull(record);
    EXPECT_EQ(find(again, "StartElement/4 \"\" \"a\"").systemId, file);
}

}  // namespace
