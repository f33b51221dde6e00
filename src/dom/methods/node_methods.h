// The host's node objects (X-NODEREF): one numbered method on one node.
#pragma once

#include <cstdint>

#include <xercesc/dom/DOMNode.hpp>

#include "frame/error_report.h"
#include "lumxml.h"

namespace lumxml {

constexpr int32_t kHighestNodeMethod = LUM_NODE_METHOD_LAST;

// lumNodeExecute: the not-initialised check, the method number check, then
// the method. No argument slot is read before the number is checked.
void nodeExecute(XERCES_CPP_NAMESPACE::DOMNode* node, int32_t method, void** args, void* result,
                 ErrorReport& report);

}  // namespace lumxml
