// DOM exceptions reach hosts as fixed messages with code 6.
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "frame/dom_errors.h"
#include "frame/library_state.h"
#include "start_library.h"
#include "lumxml.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

class DomErrors : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals();
        DOMImplementation* impl = DOMImplementationRegistry::getDOMImplementation(u"Core");
        document = impl->createDocument();
    }
    void TearDown() override { document->release(); }

    std::string report(const DOMException& e) {
        char buffer[257];
        std::memset(buffer, 0, sizeof buffer);
        code = 0;
        reportDomError(e, buffer, &code);
        return buffer;
    }

    DOMDocument* document = nullptr;
    int32_t code = 0;
};

TEST_F(DomErrors, EmptyElementNameIsInvalidCharacter) {
    try {
        document->createElement(u"");
        FAIL() << "no exception";
    } catch (const DOMException& e) {
        EXPECT_EQ(report(e), "An invalid character was specified");
        EXPECT_EQ(code, LUM_ERR_DOM);
    }
}

TEST_F(DomErrors, NamespaceErrorReadsAsNotInitialisedWithCode6) {
    try {
        document->createElementNS(u"urn:not-xml", u"xml:a");
        FAIL() << "no exception";
    } catch (const DOMException& e) {
        EXPECT_EQ(e.code, DOMException::NAMESPACE_ERR);
        EXPECT_EQ(report(e), "XML Parser not initialized");
        EXPECT_EQ(code, LUM_ERR_DOM);
    }
}

TEST_F(DomErrors, EveryCodeHasItsFixedText) {
    const char* expected[] = {
        "XML Parser not initialized",
        "Index or size is negative or greater than the allowed value",
        "The specified range of text does not fit into a DOMString",
        "A node was inserted where it doesn't belong",
        "A node was used in a different document than the one the created it",
        "An invalid character was specified",
        "Node type doesn't support data",
        "An attempt was made to modify an object where modifications are not allowed",
        "An attempt was made to reference a node in a context where it does not exist",
        "Feature not supported on this node type",
        "Attribute already exists",
    };
    for (short c = 0; c <= 10; ++c) {
        DOMException e(c, 0, XMLPlatformUtils::fgMemoryManager);
        EXPECT_EQ(report(e), expected[c]) << "code " << c;
        EXPECT_EQ(code, LUM_ERR_DOM);
    }
    for (short c : {11, 12, 13, 14, 15, 17, -1}) {
        DOMException e(c, 0, XMLPlatformUtils::fgMemoryManager);
        EXPECT_EQ(report(e), "XML Parser not initialized") << "code " << c;
        EXPECT_EQ(code, LUM_ERR_DOM);
    }
}

TEST(CopyUnits, CopiesCountUnitsWithTerminator) {
    const XMLCh text[] = u"abcdef";
    XMLCh* copy = copyUnits(text, 3);
    EXPECT_EQ(std::u16string(copy), u"abc");
    delete[] copy;
    copy = copyUnits(text, 0);
    EXPECT_EQ(copy[0], 0);
    delete[] copy;
}

}  // namespace
