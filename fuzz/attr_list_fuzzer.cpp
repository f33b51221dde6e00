// A fuzz-chosen sequence of the seven attribute-list exports.
#include <cstdint>
#include <string>

#include "fuzz_input.h"
#include "host_init.h"
#include "lumxml.h"

namespace {

const char* const kNames[] = {"a", "p:a", "x:", ":y", "q:b:c", "xmlns:p", "long-name-here"};
const char* const kValues[] = {nullptr, "", "v", "caf\xC3\xA9", "1 2 3"};
const char* const kUris[] = {nullptr, "", "urn:u", "EMPTY"};
const char* const kTypes[] = {nullptr, "CDATA", "ID"};

template <class T, size_t N>
T choose(fuzz::FuzzInput& in, T (&pool)[N]) {
    return pool[in.pick(N)];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::FuzzInput in(data, size);
    SaxAttrList* lists[3] = {nullptr, nullptr, nullptr};
    for (int step = 0; step < 400 && !in.empty(); ++step) {
        SaxAttrList*& list = lists[in.pick(3)];
        SaxAttribute* entry =
            list != nullptr && list->count > 0 ? &list->entries[in.pick(list->count)] : nullptr;
        switch (in.pick(7)) {
        case 0:
            if (list == nullptr) list = lumSAXNewAttrList(static_cast<int32_t>(in.pick(6)));
            break;
        case 1:
        case 2:
            lumSAXInsertAttribute(&list, choose(in, kNames), choose(in, kValues),
                                  choose(in, kUris), choose(in, kTypes));
            break;
        case 3:
            if (entry != nullptr)
                lumSAXSetAttribute(entry, choose(in, kNames), choose(in, kValues),
                                   choose(in, kUris), choose(in, kTypes));
            break;
        case 4:
            if (entry != nullptr) lumSAXSetAttributeValue(entry, choose(in, kValues));
            break;
        case 5:
            if (entry != nullptr) {
                if (in.flag())
                    lumSAXClearAttribute(entry);
                else
                    lumSAXFixAttrMem(&entry->value, choose(in, kValues));
            }
            break;
        case 6:
            lumSAXDeleteAttrList(list);
            list = nullptr;
            break;
        }
    }
    for (SaxAttrList* list : lists) lumSAXDeleteAttrList(list);
    return 0;
}
