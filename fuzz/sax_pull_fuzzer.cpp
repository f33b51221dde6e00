// Bytes -> lumSAXParseFirst / lumSAXParseNext to the end, with a
// ResolveEntity callback that sometimes stops the parse and sometimes
// supplies a memory source; sometimes the parse is abandoned midway and
// the record is used again.
#include <cstdint>
#include <cstring>

#include "fuzz_input.h"
#include "host_init.h"
#include "lumxml.h"

namespace {

SaxParserInstance* driven = nullptr;  // the callback takes no argument
uint8_t callbackChoice = 0;
const char kEntityText[] = "<!ENTITY e 'x'><!ELEMENT r ANY>";

int32_t resolveEntity() {
    uint8_t choice = callbackChoice++;
    if (driven == nullptr || driven->eventHead == nullptr) return 0;
    switch (choice % 3) {
    case 0: return 1;  // stop the parse
    case 1:
        driven->eventHead->arg3 = lumCreateInputSource(nullptr, kEntityText,
                                                       static_cast<int32_t>(sizeof kEntityText - 1));
        return 0;
    default: return 0;
    }
}

// Reads the event at the head the way a host does.
void handle(const SaxParserInstance& instance) {
    const SaxEvent* event = instance.eventHead;
    if (event == nullptr) return;
    volatile size_t touched = 0;
    if (event->name != nullptr) touched += std::strlen(event->name);
    if (event->kind == LUM_SAX_EVENT_START_ELEMENT) {
        const SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(const_cast<SaxEvent*>(event));
        for (int32_t i = 0; i < list->count; ++i)
            if (list->entries[i].qName != nullptr) touched += std::strlen(list->entries[i].qName);
    } else if ((event->kind == LUM_SAX_EVENT_CHARACTERS || event->kind == LUM_SAX_EVENT_ERROR ||
                event->kind == LUM_SAX_EVENT_FATAL_ERROR) &&
               event->arg1 != nullptr) {
        touched += std::strlen(static_cast<const char*>(event->arg1));
    }
    (void)touched;
}

void parse(SaxParserInstance& instance, size_t maxSteps) {
    int32_t more = lumSAXParseFirst(&instance);
    for (size_t steps = 0; more == LUM_SAX_MORE && steps < maxSteps; ++steps) {
        handle(instance);
        more = lumSAXParseNext(&instance);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::FuzzInput in(data, size);
    uint8_t options = in.byte();
    uint8_t limitChoice = in.byte();
    callbackChoice = in.byte();

    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    // Bit 2 always: default entity resolution must not reach past the input.
    instance.flags = (options & 3u) | LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION;
    instance.entityExpansionLimit = (limitChoice & 0x80) != 0 ? (limitChoice & 0x7f) * 8
                                                          : LUM_SAX_NO_ENTITY_LIMIT;
    instance.inputKind = (options & 0x40) != 0 ? LUM_SAX_INPUT_BUFFER : LUM_SAX_INPUT_MEMORY;
    instance.memoryBuffer = in.rest();
    instance.memoryLength = static_cast<uint32_t>(in.restSize());
    instance.resolveEntityCallback = (options & 0x08) != 0 ? resolveEntity : nullptr;
    driven = &instance;

    bool abandon = (options & 0x10) != 0;
    parse(instance, abandon ? (limitChoice & 0x0f) : 100000);
    if (abandon) parse(instance, 100000);  // the same record again

    lumSAXDeleteParserInstance(&instance);
    lumSAXDeleteParserInstance(&instance);  // twice is harmless
    driven = nullptr;
    return 0;
}
