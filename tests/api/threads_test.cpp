// Documents, pull readers and writers used at once from several threads,
// one of each per thread: every thread gets the same answers as a single
// thread does. CI also runs this test in a ThreadSanitizer build
// (tools/tsan.sh) that must report nothing.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host_test.h"
#include "hostile_documents.h"
#include "lumxml.h"
#include "memory_pull.h"
#include "writer_host.h"

using lumtest::ErrorSlot;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 15;

const std::string& richDocument() {
    static const std::string text =
        "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'entity text'>"
        "<!ATTLIST r d CDATA 'default'>]>"
        "<r xmlns='urn:r' xmlns:p='urn:p' a='1' p:b='2'><!-- c --><p:x>&e;</p:x>"
        "<y>text &amp; more<![CDATA[ raw ]]></y><?pi data?></r>";
    return text;
}

struct Outcome {
    std::string saved;
    int32_t loadCode = 0;
    size_t events = 0;
    std::string characters;
    std::string written;
    int32_t hostileCode = 0;

    bool operator==(const Outcome& other) const {
        return saved == other.saved && loadCode == other.loadCode && events == other.events &&
               characters == other.characters && written == other.written &&
               hostileCode == other.hostileCode;
    }
};

int32_t load(void*& document, const std::string& text, const int32_t* limit) {
    ErrorSlot made;
    lumInitDocument(&document, 1, made.buffer, &made.code);
    ErrorSlot error;
    char encoding[257] = {0};
    lumDocLoad(&document, LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION, LUM_LOAD_FROM_MEMORY, encoding,
               nullptr, text.data(), static_cast<uint32_t>(text.size()), nullptr, limit, 0, nullptr,
               error.buffer,
               &error.code);
    return error.code;
}

void release(void* document) {
    ErrorSlot gone;
    lumDocDelete(document, gone.buffer, &gone.code);
}

std::string save(void* document) {
    ErrorSlot e;
    void* memory = nullptr;
    uint32_t length = 0;
    lumDocSave(&document, LUM_SAVE_TO_MEMORY, 0, 0, 1, nullptr, nullptr, &memory, &length, 0,
               nullptr, e.buffer, &e.code);
    std::string out = memory != nullptr ? std::string(static_cast<const char*>(memory), length)
                                        : "save error " + e.text();
    std::free(memory);
    return out;
}

void pull(const std::string& text, Outcome& outcome) {
    SaxParserInstance instance;
    lumtest::setUpMemoryPull(instance, text, LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION, 50000);
    lumtest::pullToEnd(instance, [&](const SaxEvent& event) {
        ++outcome.events;
        if (event.kind == LUM_SAX_EVENT_CHARACTERS)
            outcome.characters += static_cast<const char*>(event.arg1);
        return true;
    });
    lumSAXDeleteParserInstance(&instance);
}

std::string write() {
    lumtest::HostWriter w;
    if (w.openStream() != 0) return "open failed";
    w.run(LUM_WRITER_START_ELEMENT, "r");
    w.run(LUM_WRITER_CHARACTERS, "a<b & \xC3\xA9");
    w.run(LUM_WRITER_END_ELEMENT, "r");
    w.run(LUM_WRITER_END_DOCUMENT);
    return w.stream();
}

Outcome oneRound() {
    Outcome outcome;
    const int32_t limit = 50000;
    void* document = nullptr;
    outcome.loadCode = load(document, richDocument(), &limit);
    outcome.saved = save(document);
    release(document);
    pull(richDocument(), outcome);
    outcome.written = write();
    // A hostile document on the way: the limits are the thread's own.
    void* hostile = nullptr;
    outcome.hostileCode = load(hostile, lumtest::quadraticBlowup(20000, 1000), &limit);
    release(hostile);
    return outcome;
}

TEST(Threads, DocumentsReadersAndWritersOnFourThreadsAtOnce) {
#if defined(_WIN32)
    // Under Wine this run passes alone but has hung inside a full parallel
    // ctest run (threads ending while another test process starts); it runs
    // on Linux and under ThreadSanitizer until that is understood.
    GTEST_SKIP() << "not run on the Windows DLL under Wine";
#endif
    lumtest::initLibraryOnce();
    const Outcome expected = oneRound();
    ASSERT_EQ(expected.loadCode, LUM_OK);
    ASSERT_EQ(expected.hostileCode, 10);
    ASSERT_NE(expected.events, 0u);

    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round)
                if (!(oneRound() == expected)) ++mismatches;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(mismatches.load(), 0);
}

}  // namespace
