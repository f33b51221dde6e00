// The pull reader's handler objects, driven directly: the notifications
// Xerces never sends (skipped entities), the first-pass rules, the location
// copy, the entity resolver's directories and its host hand-over.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "sax/sax_entity_resolver.h"
#include "sax/sax_events.h"
#include "sax/sax_handlers.h"
#include "sax/sax_parser.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

std::u16string utf16(const char* text) {
    XmlString wide(text);
    return std::u16string(wide.get());
}

class FixedLocator : public Locator {
public:
    const XMLCh* getPublicId() const override { return publicId; }
    const XMLCh* getSystemId() const override { return systemId; }
    XMLFileLoc getLineNumber() const override { return line; }
    XMLFileLoc getColumnNumber() const override { return column; }

    const XMLCh* publicId = nullptr;
    const XMLCh* systemId = nullptr;
    XMLFileLoc line = 0;
    XMLFileLoc column = 0;
};

class SaxHandlers : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        lumtest::startInternals();
    }
    void SetUp() override {
        std::memset(&instance, 0, sizeof instance);
        instance.state = sax::kStateRunning;
    }
    void TearDown() override { sax::deleteParserInstance(&instance); }

    SaxParserInstance instance;
};

TEST_F(SaxHandlers, SkippedEntityQueuesAnEmptyKindZeroEvent) {
    LumContentHandler handler(&instance);
    const std::u16string name = utf16("e");
    handler.skippedEntity(name.c_str());
    ASSERT_EQ(instance.eventCount, 1);
    const SaxEvent* event = instance.eventHead;
    EXPECT_EQ(event->kind, 0u);
    EXPECT_EQ(event->name, nullptr);
    EXPECT_EQ(event->argCount, 0u);
    EXPECT_EQ(event->arg1, nullptr);
}

TEST_F(SaxHandlers, FirstPassDropsSkippedEntitiesPIsAndDeclarations) {
    instance.state = sax::kStateFirstPass;
    LumContentHandler content(&instance);
    LumSAXDTDHandler dtd(&instance);
    const std::u16string x = utf16("x");
    content.skippedEntity(x.c_str());
    content.processingInstruction(x.c_str(), x.c_str());
    dtd.notationDecl(x.c_str(), nullptr, x.c_str());
    dtd.unparsedEntityDecl(x.c_str(), nullptr, x.c_str(), x.c_str());
    EXPECT_EQ(instance.eventCount, 0);
    EXPECT_EQ(instance.eventHead, nullptr);
}

TEST_F(SaxHandlers, ErrorEventsAreQueuedEvenInTheFirstPass) {
    instance.state = sax::kStateFirstPass;
    LumSAXErrorHandler errors(&instance);
    const std::u16string message = utf16("careful");
    errors.warning(SAXParseException(message.c_str(), nullptr, nullptr, 1, 2));
    ASSERT_EQ(instance.eventCount, 1);
    EXPECT_STREQ(instance.eventHead->name, "Warning");
    EXPECT_STREQ(static_cast<const char*>(instance.eventHead->arg1), "careful");
}

TEST_F(SaxHandlers, StartDocumentQueuesAndStopsOnlyInTheFirstPass) {
    LumContentHandler handler(&instance);
    handler.startDocument();  // running: nothing
    EXPECT_EQ(instance.eventCount, 0);

    instance.state = sax::kStateFirstPass;
    try {
        handler.startDocument();
        FAIL() << "the first pass is cut short";
    } catch (const LumSAXException& stop) {
        EXPECT_EQ(XMLString::stringLen(stop.getMessage()), 0u);
    }
    ASSERT_EQ(instance.eventCount, 1);
    EXPECT_STREQ(instance.eventHead->name, "StartDocument");
}

TEST_F(SaxHandlers, ExtraOperationQueuesAnEmptyEvent) {
    LumContentHandler handler(&instance);
    handler.queueEmptyEvent();
    ASSERT_EQ(instance.eventCount, 1);
    EXPECT_EQ(instance.eventHead->kind, 0u);
    EXPECT_EQ(instance.eventHead->name, nullptr);
}

TEST_F(SaxHandlers, EventNameTableHoldsKindsThatAreNeverProduced) {
    EXPECT_STREQ(sax::eventName(10), "SkippedEntity");
    EXPECT_STREQ(sax::eventName(11), "SetDocLocator");
    EXPECT_EQ(sax::eventName(0), nullptr);
    EXPECT_EQ(sax::eventName(18), nullptr);
}

TEST_F(SaxHandlers, LocationIdReplacedOnlyWhenTheTextDiffers) {
    FixedLocator locator;
    const std::u16string first = utf16("file:///a.xml");
    const std::u16string same = utf16("file:///a.xml");
    const std::u16string other = utf16("file:///b.xml");
    locator.systemId = first.c_str();
    locator.publicId = first.c_str();
    locator.line = 7;
    locator.column = 9;
    instance.locator = &locator;

    sax::updateLocation(instance);
    EXPECT_EQ(instance.line, 7u);
    EXPECT_EQ(instance.column, 9u);
    const char* kept = instance.systemId;
    ASSERT_STREQ(kept, "file:///a.xml");

    locator.systemId = same.c_str();
    sax::updateLocation(instance);
    EXPECT_EQ(instance.systemId, kept);  // equal text: the stored copy stays

    locator.systemId = other.c_str();
    sax::updateLocation(instance);
    EXPECT_STREQ(instance.systemId, "file:///b.xml");

    locator.publicId = nullptr;
    sax::updateLocation(instance);
    EXPECT_EQ(instance.publicId, nullptr);  // a null id clears the stored one
    instance.locator = nullptr;
}

TEST_F(SaxHandlers, WithoutALocatorTheLocationStays) {
    instance.line = 3;
    instance.column = 4;
    sax::updateLocation(instance);
    EXPECT_EQ(instance.line, 3u);
    EXPECT_EQ(instance.column, 4u);
}

// ---- LumSAXEntityResolver ------------------------------------------------------

std::string directoryText(const LumSAXEntityResolver& resolver, int index) {
    const XMLCh* directory = resolver.directory(index);
    if (directory == nullptr) return "<empty>";
    HostString text(directory);
    return text.get();
}

TEST_F(SaxHandlers, SearchPathIsSplitTrimmedAndEndsInSlashes) {
    LumSAXEntityResolver resolver(nullptr, " one ,\ttwo/,, \r\n ,three\\\n,  four  ");
    EXPECT_EQ(directoryText(resolver, 0), "one/");
    EXPECT_EQ(directoryText(resolver, 1), "two/");
    EXPECT_EQ(directoryText(resolver, 2), "three\\");
    EXPECT_EQ(directoryText(resolver, 3), "four/");
    EXPECT_EQ(directoryText(resolver, 4), "<empty>");
}

TEST_F(SaxHandlers, NullOrEmptySearchPathGivesNoDirectories) {
    LumSAXEntityResolver none(nullptr, nullptr);
    LumSAXEntityResolver empty(nullptr, "");
    LumSAXEntityResolver blank(nullptr, " , ,");
    EXPECT_EQ(directoryText(none, 0), "<empty>");
    EXPECT_EQ(directoryText(empty, 0), "<empty>");
    EXPECT_EQ(directoryText(blank, 0), "<empty>");
}

TEST_F(SaxHandlers, SearchPathKeepsSixteenDirectoriesAndIgnoresTheRest) {
    std::string path;
    for (int i = 0; i < 20; ++i) path += "d" + std::to_string(i) + ",";
    LumSAXEntityResolver resolver(nullptr, path.c_str());
    EXPECT_EQ(directoryText(resolver, 15), "d15/");
    EXPECT_EQ(directoryText(resolver, 16), "<empty>");  // past the sixteen slots
    // Resolution over all sixteen slots stops after the last one.
    const std::u16string systemId = utf16("missing.dtd");
    EXPECT_EQ(resolver.resolveEntity(nullptr, systemId.c_str()), nullptr);
}

TEST_F(SaxHandlers, ResolverWithoutInstanceOnlySearchesTheDirectories) {
#if defined(_WIN32)
    GTEST_SKIP() << "expects the system id joined with the platform separator; lumxml joins with /";
#endif
    const auto base = std::filesystem::temp_directory_path() /
                      ("lumxml-unit-resolver-" + std::to_string(::getpid()));
    std::filesystem::create_directories(base / "lib");
    std::ofstream(base / "lib" / "found.dtd") << "<!ELEMENT r EMPTY>";
    const std::string path = (base / "none").string() + "," + (base / "lib").string();
    LumSAXEntityResolver resolver(nullptr, path.c_str());

    const std::u16string found = utf16("found.dtd");
    std::unique_ptr<InputSource> source(resolver.resolveEntity(nullptr, found.c_str()));
    ASSERT_NE(source, nullptr);
    HostString systemId(source->getSystemId());
    EXPECT_EQ(std::string(systemId.get()), (base / "lib" / "found.dtd").string());

    const std::u16string absolute = utf16((base / "lib" / "found.dtd").string().c_str());
    EXPECT_EQ(resolver.resolveEntity(nullptr, absolute.c_str()), nullptr);
    std::filesystem::remove_all(base);
}

int32_t answerOne() { return 1; }

TEST_F(SaxHandlers, HostAnsweringOneStopsTheParseAndTheEventIsGone) {
    LumContentHandler content(&instance);
    content.queueEmptyEvent();  // something already queued
    instance.resolveEntityCallback = &answerOne;
    LumSAXEntityResolver resolver(&instance, nullptr);
    const std::u16string systemId = utf16("x.dtd");
    EXPECT_THROW(resolver.resolveEntity(nullptr, systemId.c_str()), LumSAXException);
    EXPECT_EQ(instance.eventCount, 1);
    ASSERT_NE(instance.eventHead, nullptr);
    EXPECT_EQ(instance.eventHead->kind, 0u);
    EXPECT_EQ(instance.eventHead, instance.eventTail);
}

TEST_F(SaxHandlers, ResolveEntityEventOnAnEmptyQueueLeavesItEmpty) {
    LumSAXEntityResolver resolver(&instance, nullptr);
    const std::u16string systemId = utf16("relative.dtd");
    EXPECT_EQ(resolver.resolveEntity(nullptr, systemId.c_str()), nullptr);
    EXPECT_EQ(instance.eventCount, 0);
    EXPECT_EQ(instance.eventHead, nullptr);
    EXPECT_EQ(instance.eventTail, nullptr);
}

}  // namespace
