#include "dom/methods/node_types.h"

#include <cstring>

#include "frame/platform.h"

namespace lumxml {

namespace {

const char* const kTypeNames[] = {
    "ELEMENT",                 // 1
    "ATTRIBUTE",               // 2
    "TEXT",                    // 3
    "CDATA-SECTION",           // 4
    "ENTITY-REFERENCE",        // 5
    "ENTITY",                  // 6
    "PROCESSING-INSTRUCTION",  // 7
    "COMMENT",                 // 8
    "DOCUMENT",                // 9
    "DOCUMENT-TYPE",           // 10
    "DOCUMENT-FRAGMENT",       // 11
    "NOTATION",                // 12
};
constexpr int32_t kTypeCount = 12;

}  // namespace

const char* nodeTypeName(int32_t type) {
    if (type < 1 || type > kTypeCount) return nullptr;
    return kTypeNames[type - 1];
}

void typeToChar(int32_t type, char* name) {
    if (name == nullptr) return;
    const char* text = nodeTypeName(type);
    if (text == nullptr) text = "Invalid node type";
    std::memcpy(name, text, std::strlen(text) + 1);
}

int32_t typeToInt(const char* name) {
    if (name == nullptr) return -1;
    for (int32_t type = 1; type <= kTypeCount; ++type)
        if (platform::compareIgnoringCase(name, kTypeNames[type - 1]) == 0) return type;
    return -1;
}

}  // namespace lumxml
