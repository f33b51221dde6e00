#include "frame/dom_errors.h"

#include <algorithm>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

const char* domErrorMessage(int code) {
    switch (code) {
    case 1: return "Index or size is negative or greater than the allowed value";
    case 2: return "The specified range of text does not fit into a DOMString";
    case 3: return "A node was inserted where it doesn't belong";
    // The wording "the one the created it" is what hosts match on.
    case 4: return "A node was used in a different document than the one the created it";
    case 5: return "An invalid character was specified";
    case 6: return "Node type doesn't support data";
    case 7: return "An attempt was made to modify an object where modifications are not allowed";
    case 8: return "An attempt was made to reference a node in a context where it does not exist";
    case 9: return "Feature not supported on this node type";
    case 10: return "Attribute already exists";
    // Every other code (namespace, syntax, invalid state, ...) reaches hosts
    // with this text and code 6, which tells it apart from the real
    // not-initialised answer (code 2). Hosts rely on it.
    default: return "XML Parser not initialized";
    }
}

void reportDomError(const DOMException& e, ErrorReport& report) {
    report.fixed(domErrorMessage(static_cast<int>(e.code)), LUM_ERR_DOM);
}

void reportDomError(const DOMException& e, char* errorBuffer, int32_t* errorCode) {
    ErrorReport report(errorBuffer, errorCode);
    reportDomError(e, report);
}

XMLCh* copyUnits(const XMLCh* text, size_t count) {
    XMLCh* copy = new XMLCh[count + 1];
    if (text != nullptr) std::copy(text, text + count, copy);
    copy[count] = 0;
    return copy;
}

}  // namespace lumxml
