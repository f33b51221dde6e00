// Reading a document from memory with the pull reader as a host does:
// shared by the tests that only need the events one after another.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "lumxml.h"

namespace lumtest {

// A zero-filled record that reads `text` (kept alive by the caller) from
// memory with `flags` and an expansion limit (-1 for none).
inline void setUpMemoryPull(SaxParserInstance& instance, const std::string& text,
                            uint32_t flags, int32_t limit) {
    std::memset(&instance, 0, sizeof instance);
    instance.flags = flags;
    instance.inputKind = LUM_SAX_INPUT_MEMORY;
    instance.memoryBuffer = text.data();
    instance.memoryLength = static_cast<uint32_t>(text.size());
    instance.entityExpansionLimit = limit;
}

// Steps to the end (or until `onEvent` answers false), handing each event at
// eventHead to `onEvent`; answers the last result of a step.
template <class OnEvent>
int32_t pullToEnd(SaxParserInstance& instance, OnEvent onEvent) {
    int32_t more = lumSAXParseFirst(&instance);
    while (more == LUM_SAX_MORE) {
        if (instance.eventHead != nullptr && !onEvent(*instance.eventHead)) break;
        more = lumSAXParseNext(&instance);
    }
    return more;
}

}  // namespace lumtest
