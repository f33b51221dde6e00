#include "limited_parse.h"

#include "host_test.h"
#include "lumxml.h"
#include "memory_pull.h"

namespace lumtest {

Loaded loadText(const std::string& text, const int32_t* limit, uint32_t flags) {
    void* document = nullptr;
    ErrorSlot made;
    lumInitDocument(&document, 1, made.buffer, &made.code);
    ErrorSlot error;
    char encoding[257] = {0};
    lumDocLoad(&document, flags, LUM_LOAD_FROM_MEMORY, encoding, nullptr, text.data(),
               static_cast<uint32_t>(text.size()), nullptr, limit, 0, nullptr, error.buffer,
               &error.code);
    Loaded loaded{error.code, error.text()};
    ErrorSlot gone;
    lumDocDelete(document, gone.buffer, &gone.code);
    return loaded;
}

Pulled pullText(const std::string& text, int32_t limit, uint32_t flags) {
    SaxParserInstance instance;
    setUpMemoryPull(instance, text, flags, limit);
    Pulled out;
    out.lastResult = pullToEnd(instance, [&](const SaxEvent& event) {
        ++out.events;
        if (event.kind == LUM_SAX_EVENT_FATAL_ERROR)
            out.fatalErrors.push_back(static_cast<const char*>(event.arg1));
        return true;
    });
    out.errorCode = instance.errorCode;
    lumSAXDeleteParserInstance(&instance);
    return out;
}

}  // namespace lumtest
