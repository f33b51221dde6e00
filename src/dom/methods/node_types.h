// Node type codes and the host's names for them.
#pragma once

#include <cstdint>

namespace lumxml {

// The host's name of a DOM node type code, or null for an unknown code.
const char* nodeTypeName(int32_t type);
// Writes the name (or "Invalid node type") into `name` (23 bytes suffice).
void typeToChar(int32_t type, char* name);
// The code of a name, compared ignoring ASCII case; -1 when unknown.
int32_t typeToInt(const char* name);

}  // namespace lumxml
