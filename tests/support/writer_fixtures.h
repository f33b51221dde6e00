// Fixtures of the writer tests: a started library and one host writer, with
// the ways the tests open it, and a host-built attribute list.
#pragma once

#include <cstdint>

#include <gtest/gtest.h>

#include "host_test.h"
#include "lumxml.h"
#include "writer_host.h"

namespace lumtest {

class WriterTest : public ::testing::Test {
protected:
    void SetUp() override { initLibraryOnce(); }
    // Fragment memory output without a mark.
    void openFragment(bool strict = false, bool formatted = false) {
        w.options.fragment = 1;
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    }
    // A host stream keeps what was written even after a failure closed
    // the output and cleared the memory fields.
    void openStream(bool strict, bool formatted, bool fragment) {
        w.options.fragment = fragment ? 1 : 0;
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openStream(), LUM_WRITER_OK);
    }
    HostWriter w;
};

// A writer whose output will be a fragment: open() picks strict and
// formatted and opens memory output.
class FragmentWriterTest : public WriterTest {
protected:
    void SetUp() override {
        WriterTest::SetUp();
        w.options.fragment = 1;
    }
    void open(bool strict = false, bool formatted = false) {
        w.options.strict = strict ? 1 : 0;
        w.options.formatted = formatted ? 1 : 0;
        ASSERT_EQ(w.openMemory(), LUM_WRITER_OK);
    }
};

// A host-built attribute list (entries beyond `count` stay zero).
struct HostAttrs {
    explicit HostAttrs(int32_t capacity) : list(lumSAXNewAttrList(capacity)) {}
    ~HostAttrs() { lumSAXDeleteAttrList(list); }
    HostAttrs(const HostAttrs&) = delete;
    HostAttrs& operator=(const HostAttrs&) = delete;
    void add(const char* qName, const char* value, const char* uri = nullptr) {
        lumSAXInsertAttribute(&list, qName, value, uri, "CDATA");
    }
    SaxAttrList* list;
};

}  // namespace lumtest
