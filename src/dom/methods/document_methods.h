// The host's document objects (X-DOCUMENT): one numbered method on one
// document. Eleven methods are node methods performed on the document node.
#pragma once

#include <cstdint>

#include <xercesc/dom/DOMDocument.hpp>

#include "frame/error_report.h"
#include "lumxml.h"

namespace lumxml {

constexpr int32_t kHighestDocumentMethod = LUM_DOC_METHOD_LAST;

// lumDocExecute: the not-initialised check, the method number check, then
// the method. No argument slot is read before the number is checked.
void documentExecute(XERCES_CPP_NAMESPACE::DOMDocument* document, int32_t method, void** args,
                     void* result, ErrorReport& report);

}  // namespace lumxml
