// Translation of Xerces DOM exceptions into lumxml's fixed messages.
#pragma once

#include <cstddef>

#include <xercesc/dom/DOMException.hpp>

#include "frame/error_report.h"

namespace lumxml {

// The fixed English text for a DOM exception code (never the Xerces text).
const char* domErrorMessage(int code);

// Writes the message for the exception's code and sets error code 6.
void reportDomError(const XERCES_CPP_NAMESPACE::DOMException& e, char* errorBuffer,
                    int32_t* errorCode);
void reportDomError(const XERCES_CPP_NAMESPACE::DOMException& e, ErrorReport& report);

// New NUL-terminated copy (array new) of the first `count` units of `text`.
XMLCh* copyUnits(const XMLCh* text, size_t count);

}  // namespace lumxml
