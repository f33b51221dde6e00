#include "frame/library_state.h"

#include <string>
#include <vector>

#include <unicode/ucnv.h>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "frame/error_report.h"
#include "frame/guarded_trans_service.h"
#include "frame/host_codec.h"
#include "frame/platform.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

bool initialised = false;
XMLCh* key = nullptr;
// Keys replaced by a repeated start. They are never released (documents made
// earlier may still carry records under them); keeping them here only makes
// that visible to leak checkers as intended rather than lost.
std::vector<XMLCh*>& retiredKeys() {
    static auto* keys = new std::vector<XMLCh*>;  // never destroyed, like the keys
    return *keys;
}

// DOM heap sizes: the default sub-allocation limit makes loading text dense
// with references quadratic (text buffers outgrow it again and again).
constexpr XMLSize_t kInitialDomHeap = 0x4000;
constexpr XMLSize_t kMaxDomHeap = 0x80000;
constexpr XMLSize_t kMaxDomSubAllocation = 4096;

class IcuCatalog final : public ConverterCatalog {
public:
    int32_t countAvailable() override { return ucnv_countAvailable(); }
    const char* availableName(int32_t index) override { return ucnv_getAvailableName(index); }
    uint16_t countAliases(const char* name, int32_t& status) override {
        UErrorCode code = U_ZERO_ERROR;
        uint16_t count = ucnv_countAliases(name, &code);
        status = code;
        return count;
    }
    const char* alias(const char* name, uint16_t index, int32_t& status) override {
        UErrorCode code = U_ZERO_ERROR;
        const char* answer = ucnv_getAlias(name, index, &code);
        status = code;
        return answer;
    }
};

std::string messageOf(const XMLException& e) {
    std::string text;
    const XMLCh* message = e.getMessage();
    if (message != nullptr) codec::appendHost(text, message, XMLString::stringLen(message));
    return text;
}

void startXerces(bool found, const char* codePage) {
    const char* name = found ? codePage : "UTF-8";
    ucnv_setDefaultName(name);
    // ucnv_setDefaultName does nothing where ICU is built for UTF-8 only,
    // so the host codec opens its own converter on the same name.
    codec::select(name);
    XMLPlatformUtils::Initialize(kInitialDomHeap, kMaxDomHeap, kMaxDomSubAllocation,
                                 XMLUni::fgXercescDefaultLocale);
    guardTranscodingService();
    initialised = true;
}

}  // namespace

bool isInitialised() { return initialised; }

const XMLCh* userDataKey() { return key; }

ConverterCatalog& icuCatalog() {
    static IcuCatalog catalog;
    return catalog;
}

AliasSearch findConverterAlias(ConverterCatalog& catalog, const char* codePage,
                               char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    int32_t converters = catalog.countAvailable();
    for (int32_t i = 0; i < converters; ++i) {
        const char* name = catalog.availableName(i);
        int32_t status = 0;
        uint16_t aliases = catalog.countAliases(name, status);
        if (status > 0) {
            report.formatted(LUM_ERR_UNEXPECTED, "ucnv_countAliases(%s) returned error code %d", {name, status});
            return AliasSearch::Failed;
        }
        for (uint16_t j = 0; j < aliases; ++j) {
            status = 0;
            const char* alias = catalog.alias(name, j, status);
            if (status > 0) {
                report.formatted(LUM_ERR_UNEXPECTED, "ucnv_getAlias(%s,%d) returned error code %d",
                                 {name, static_cast<int>(j), status});
                return AliasSearch::Failed;
            }
            if (alias != nullptr && codePage != nullptr &&
                platform::compareIgnoringCase(alias, codePage) == 0)
                return AliasSearch::Found;
        }
    }
    return AliasSearch::NotFound;
}

int32_t initParser(const char* codePage, char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    AliasSearch search = findConverterAlias(icuCatalog(), codePage, errorBuffer, errorCode);
    if (search == AliasSearch::Failed) return LUM_INIT_CODE_PAGE_NOT_FOUND;
    bool found = search == AliasSearch::Found;
    try {
        try {
            startXerces(found, codePage);
        } catch (const XMLException& e) {
            // Appended to whatever the buffer holds: nothing goes in front.
            report.appended(messageOf(e).c_str(), LUM_ERR_ENGINE_START);
        }
        if (report.code() == 0) {
            // A repeated start makes a new key; the old one is kept alive on
            // purpose, since documents made earlier still carry records under it.
            if (key != nullptr) retiredKeys().push_back(key);
            key = codec::toXml("udatakey");
        }
    } catch (...) {
        report.formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
    }
    return found ? LUM_INIT_CODE_PAGE_FOUND : LUM_INIT_CODE_PAGE_NOT_FOUND;
}

}  // namespace lumxml
