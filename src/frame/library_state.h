// Library-wide state written only by lumInitParser.
#pragma once

#include <cstdint>

#include <xercesc/util/XercesDefs.hpp>

namespace lumxml {

// True once Xerces has started; never cleared.
bool isInitialised();
// "udatakey" in UTF-16: the key of the document's host record. Never released.
const XMLCh* userDataKey();

// One source of ICU's converter list, so that the alias search can be
// exercised with failing answers in tests.
class ConverterCatalog {
public:
    virtual ~ConverterCatalog() = default;
    virtual int32_t countAvailable() = 0;
    virtual const char* availableName(int32_t index) = 0;
    virtual uint16_t countAliases(const char* name, int32_t& status) = 0;
    virtual const char* alias(const char* name, uint16_t index, int32_t& status) = 0;
};

ConverterCatalog& icuCatalog();

enum class AliasSearch { Found, NotFound, Failed };

// Looks for `codePage` among the aliases of every converter, ignoring ASCII
// case. On an ICU failure writes its message and code 13 and answers Failed.
AliasSearch findConverterAlias(ConverterCatalog& catalog, const char* codePage,
                               char* errorBuffer, int32_t* errorCode);

int32_t initParser(const char* codePage, char* errorBuffer, int32_t* errorCode);

}  // namespace lumxml
