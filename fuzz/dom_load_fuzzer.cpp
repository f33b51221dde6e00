// Bytes -> lumDocLoad from memory -> every node walked with the read
// methods and small limits -> lumDocSave to memory -> lumDocDelete.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_input.h"
#include "host_init.h"
#include "host_memory.h"
#include "lumxml.h"

namespace {

const char* const kEncodings[] = {nullptr, "", "UTF-8", "UTF-16", "utf-16le", "ISO-8859-1",
                                  "US-ASCII", "windows-1252"};
constexpr size_t kMaxNodes = 4000;

struct Call {
    char error[257];
    int32_t code = 0;
    Call() { error[0] = '\0'; }
};

// Every read method of a node with a limit chosen by the input.
void readNode(void* node, fuzz::FuzzInput& in) {
    static const int32_t kStringMethods[] = {
        LUM_NODE_ATTRIBUTE_VALUE, LUM_NODE_VALUE,  LUM_NODE_NAME,
        LUM_NODE_NAMESPACE_URI,   LUM_NODE_PREFIX, LUM_NODE_LOCAL_NAME};
    char result[4096];
    for (int32_t method : kStringMethods) {
        Call call;
        int32_t limit = static_cast<int32_t>(in.pick(40));
        const char* name = "id";
        void* args[3] = {&limit, nullptr, nullptr};
        if (method == LUM_NODE_ATTRIBUTE_VALUE) {
            args[0] = const_cast<char*>(name);
            args[1] = &limit;
        }
        std::memset(result, 0, sizeof result);
        lumNodeExecute(node, method, args, result, call.error, &call.code);
    }
    {
        Call call;
        int32_t limit = in.flag() ? -1 : static_cast<int32_t>(in.pick(64));
        void* args[1] = {&limit};
        std::memset(result, 0, sizeof result);
        lumNodeExecute(node, LUM_NODE_ATTRIBUTE_NAMES, args, result, call.error, &call.code);
    }
    {
        Call call;
        char* whole = nullptr;
        int32_t length = 0;
        void* args[2] = {&whole, &length};
        lumNodeExecute(node, LUM_NODE_WHOLE_VALUE, args, nullptr, call.error, &call.code);
        void* release[1] = {&whole};
        lumNodeExecute(node, LUM_NODE_RELEASE_VALUE, release, nullptr, call.error, &call.code);
    }
    for (int32_t method : {LUM_NODE_CHILD_COUNT, LUM_NODE_INDEX_IN_PARENT, LUM_NODE_PARENT,
                           LUM_NODE_OWNER_HANDLE, LUM_NODE_TYPE_CODE}) {
        Call call;
        int64_t answer = 0;
        lumNodeExecute(node, method, nullptr, &answer, call.error, &call.code);
    }
    {
        Call call;
        int32_t limit = static_cast<int32_t>(in.pick(40));
        const char* uri = "urn:x";
        const char* local = "a";
        void* args[3] = {const_cast<char*>(uri), const_cast<char*>(local), &limit};
        lumNodeExecute(node, LUM_NODE_ATTRIBUTE_NS, args, result, call.error, &call.code);
    }
}

// Children of `parent` through method 8 (index walk), depth first without recursion.
void walk(void* document, fuzz::FuzzInput& in) {
    std::vector<void*> pending;
    {
        Call call;
        int32_t count = 0;
        lumDocExecute(document, LUM_DOC_CHILD_COUNT, nullptr, &count, call.error, &call.code);
        for (int32_t i = 0; i < count && i < 64; ++i) {
            void* child = nullptr;
            void* args[1] = {&i};
            Call at;
            lumDocExecute(document, LUM_DOC_CHILD_AT, args, &child, at.error, &at.code);
            if (child != nullptr) pending.push_back(child);
        }
    }
    size_t visited = 0;
    while (!pending.empty() && visited < kMaxNodes) {
        void* node = pending.back();
        pending.pop_back();
        ++visited;
        readNode(node, in);
        Call call;
        int32_t count = 0;
        lumNodeExecute(node, LUM_NODE_CHILD_COUNT, nullptr, &count, call.error, &call.code);
        for (int32_t i = 0; i < count && pending.size() < kMaxNodes; ++i) {
            void* child = nullptr;
            void* args[1] = {&i};
            Call at;
            lumNodeExecute(node, LUM_NODE_CHILD_AT, args, &child, at.error, &at.code);
            if (child != nullptr) pending.push_back(child);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::installHostMemory();
    fuzz::FuzzInput in(data, size);
    uint32_t flags = in.byte() & 7u;
    uint8_t limitChoice = in.byte();
    int32_t limit = static_cast<int32_t>(limitChoice % 64) * 16;
    const int32_t* limitPointer = (limitChoice & 0x80) != 0 ? &limit : nullptr;
    uint8_t saveChoice = in.byte();
    // Never let a document reach the network or the file system by default
    // resolution: the input would not be the only thing under test.
    flags |= LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION;

    void* document = nullptr;
    Call made;
    lumInitDocument(&document, 42, made.error, &made.code);
    if (document == nullptr) return 0;

    Call load;
    char encoding[257] = {0};
    lumDocLoad(&document, flags, LUM_LOAD_FROM_MEMORY, encoding, nullptr, in.rest(),
               static_cast<uint32_t>(in.restSize()), nullptr, limitPointer, 0, nullptr,
               load.error, &load.code);

    walk(document, in);

    Call save;
    void* memory = nullptr;
    uint32_t length = 0;
    const char* saveEncoding = kEncodings[saveChoice % (sizeof kEncodings / sizeof *kEncodings)];
    lumDocSave(&document, LUM_SAVE_TO_MEMORY, (saveChoice >> 3) & 1, (saveChoice >> 4) & 1,
               (saveChoice >> 5) & 1, saveEncoding, nullptr, &memory, &length, 0, nullptr,
               save.error, &save.code);
    fuzz::releaseHostMemory();

    Call gone;
    lumDocDelete(document, gone.error, &gone.code);
    return 0;
}
