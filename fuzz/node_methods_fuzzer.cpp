// A fixed rich document, then a fuzz-chosen sequence of node and document
// methods with well-formed argument blocks: nodes taken from earlier
// results, integers and strings from the input.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "host_init.h"
#include "lumxml.h"

namespace {

const char kDocument[] =
    "<?xml version='1.0' encoding='UTF-8'?>\n"
    "<!DOCTYPE r [<!ENTITY e 'entity text'><!ATTLIST r id ID #IMPLIED>]>\n"
    "<r xmlns='urn:d' xmlns:p='urn:p' id='root' p:a='1' b='two'>"
    "<p:c>text &e; more</p:c><!-- comment --><?pi data?>"
    "<d><![CDATA[cdata <here>]]></d><e x='1' y='2' z='3'/>tail</r>";

const char* const kStrings[] = {"", "a", "p:a", "id", "urn:p", "urn:d", "xmlns", "x]]>y",
                                "caf\xC3\xA9", "new value", "1bad", "xml"};

struct Session {
    void* document = nullptr;
    std::vector<void*> nodes;  // nodes the host has seen and not released
    char error[257] = {0};
    int32_t code = 0;
};

void* chooseNode(Session& s, fuzz::FuzzInput& in) {
    if (s.nodes.empty()) return nullptr;
    return s.nodes[in.pick(s.nodes.size())];
}

int32_t typeOf(void* node) {
    int32_t type = 0;
    char error[257];
    int32_t code = 0;
    lumNodeExecute(node, LUM_NODE_TYPE_CODE, nullptr, &type, error, &code);
    return type;
}

// The host knows its attribute nodes: LUM_NODE_REMOVE_ATTRIBUTE_NODE and
// LUM_NODE_SET_ATTRIBUTE_NODE take only those.
void* chooseAttribute(Session& s, fuzz::FuzzInput& in) {
    void* node = chooseNode(s, in);
    return node != nullptr && typeOf(node) == LUM_NODE_ATTRIBUTE ? node : nullptr;
}

void* chooseString(fuzz::FuzzInput& in) {
    return const_cast<char*>(kStrings[in.pick(sizeof kStrings / sizeof *kStrings)]);
}

// Forget every node: after a node is released (LUM_NODE_REMOVE) the host cannot
// tell which of its handles died with it, so it starts over from the root.
void restart(Session& s) {
    s.nodes.clear();
    void* root = nullptr;
    lumDocExecute(s.document, LUM_DOC_DOCUMENT_ELEMENT, nullptr, &root, s.error, &s.code);
    if (root != nullptr) s.nodes.push_back(root);
}

void callNode(Session& s, fuzz::FuzzInput& in) {
    void* node = chooseNode(s, in);
    if (node == nullptr) return;
    int32_t method = static_cast<int32_t>(in.pick(42));
    // A clone of the document node is a new document that no export can
    // release (lumDocDelete takes documents, not their nodes): a host never
    // asks for one it cannot free.
    if (method == LUM_NODE_CLONE && typeOf(node) == LUM_NODE_DOCUMENT) return;
    int32_t number = static_cast<int32_t>(in.pick(8)) - 1;
    int32_t limit = static_cast<int32_t>(in.pick(48)) - 2;
    char* whole = nullptr;
    int32_t length = 0;
    std::string bytes = in.text(12);
    int32_t counted = static_cast<int32_t>(in.pick(bytes.size() + 2)) - 1;
    void* args[3] = {nullptr, nullptr, nullptr};
    switch (method) {
    case LUM_NODE_INSERT_BEFORE:
        args[0] = chooseNode(s, in);
        args[1] = in.flag() ? chooseNode(s, in) : nullptr;
        break;
    case LUM_NODE_CHILD_AT: case LUM_NODE_CLONE: args[0] = &number; break;
    case LUM_NODE_REMOVE_CHILD: args[0] = chooseNode(s, in); break;
    case LUM_NODE_REMOVE_ATTRIBUTE_NODE: case LUM_NODE_SET_ATTRIBUTE_NODE:
        args[0] = chooseAttribute(s, in);
        if (args[0] == nullptr) return;
        break;
    case LUM_NODE_REPLACE_CHILD: args[0] = chooseNode(s, in); args[1] = chooseNode(s, in); break;
    case LUM_NODE_ATTRIBUTE_NAMES:
    case LUM_NODE_VALUE:
    case LUM_NODE_NAME:
    case LUM_NODE_NAMESPACE_URI:
    case LUM_NODE_PREFIX:
    case LUM_NODE_LOCAL_NAME:
        args[0] = &limit;
        break;
    case LUM_NODE_ATTRIBUTE_VALUE: args[0] = chooseString(in); args[1] = &limit; break;
    case LUM_NODE_SET_ATTRIBUTE: args[0] = chooseString(in); args[1] = chooseString(in); break;
    case LUM_NODE_REMOVE_ATTRIBUTE:
    case LUM_NODE_SET_VALUE:
    case LUM_NODE_SET_PREFIX:
    case LUM_NODE_ATTRIBUTE_NODE:
        args[0] = chooseString(in);
        break;
    case LUM_NODE_WHOLE_VALUE: args[0] = &whole; args[1] = &length; break;
    case LUM_NODE_SET_VALUE_COUNTED: args[0] = bytes.data(); args[1] = &counted; break;
    case LUM_NODE_RELEASE_VALUE: args[0] = &whole; break;
    case LUM_NODE_ATTRIBUTE_NS:
        args[0] = chooseString(in);
        args[1] = chooseString(in);
        args[2] = &limit;
        break;
    default: break;
    }
    // Results of up to 48 units of limit; method 12's names and the
    // unbounded copies stay far below this buffer's size.
    alignas(8) char result[8192];
    std::memset(result, 0, sizeof result);
    s.code = 0;
    lumNodeExecute(node, method, args, result, s.error, &s.code);
    if (method == LUM_NODE_WHOLE_VALUE) {
        void* release[1] = {&whole};
        lumNodeExecute(node, LUM_NODE_RELEASE_VALUE, release, nullptr, s.error, &s.code);
    }
    if (s.code == LUM_OK && (method == LUM_NODE_PARENT || method == LUM_NODE_CHILD_AT ||
                             method == LUM_NODE_CLONE || method == LUM_NODE_ATTRIBUTE_NODE)) {
        void* found = nullptr;
        std::memcpy(&found, result, sizeof found);
        if (found != nullptr && s.nodes.size() < 256) s.nodes.push_back(found);
    }
    if (method == LUM_NODE_REMOVE) restart(s);
}

void callDocument(Session& s, fuzz::FuzzInput& in) {
    int32_t method = static_cast<int32_t>(in.pick(40));
    int32_t type = static_cast<int32_t>(in.pick(14)) - 1;
    int32_t number = static_cast<int32_t>(in.pick(8)) - 1;
    int32_t limit = static_cast<int32_t>(in.pick(48));
    void* args[4] = {nullptr, nullptr, nullptr, nullptr};
    switch (method) {
    case LUM_DOC_CREATE_NODE: args[0] = chooseString(in); args[1] = &type; break;
    case LUM_DOC_CHILD_AT: args[0] = &number; break;
    case LUM_DOC_IMPORT_NODE: args[0] = chooseNode(s, in); args[1] = &number; break;
    case LUM_DOC_CREATE_NODE_NS:
        args[0] = chooseString(in);
        args[1] = chooseString(in);
        args[2] = &type;
        break;
    case LUM_DOC_NEW_WITH_DOCTYPE:
        for (void*& slot : args) slot = chooseString(in);
        break;
    case LUM_DOC_DOCTYPE_PUBLIC_ID: case LUM_DOC_DOCTYPE_SYSTEM_ID: args[0] = &limit; break;
    default: break;  // forwarded methods get no arguments here: they are node calls above
    }
    if (method == LUM_DOC_INSERT_BEFORE || method == LUM_DOC_CLONE ||
        method == LUM_DOC_REMOVE_CHILD || method == LUM_DOC_REPLACE_CHILD ||
        method == LUM_DOC_VALUE || method == LUM_DOC_SET_VALUE || method == LUM_DOC_NAME)
        return;
    alignas(8) char result[8192];
    std::memset(result, 0, sizeof result);
    s.code = 0;
    lumDocExecute(s.document, method, args, result, s.error, &s.code);
    void* answer = nullptr;
    std::memcpy(&answer, result, sizeof answer);
    if (method == LUM_DOC_NEW_WITH_DOCTYPE) {
        // The old document is gone; the answer replaces the host's cell.
        if (answer != nullptr) {
            s.document = answer;
            restart(s);
        }
        return;
    }
    if (s.code == LUM_OK && answer != nullptr && s.nodes.size() < 256 &&
        (method == LUM_DOC_CREATE_NODE || method == LUM_DOC_DOCUMENT_ELEMENT ||
         method == LUM_DOC_CHILD_AT || method == LUM_DOC_IMPORT_NODE ||
         method == LUM_DOC_CREATE_NODE_NS))
        s.nodes.push_back(answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::FuzzInput in(data, size);
    Session s;
    lumInitDocument(&s.document, 7, s.error, &s.code);
    char encoding[257] = {0};
    lumDocLoad(&s.document, LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION, LUM_LOAD_FROM_MEMORY, encoding,
               nullptr, kDocument, sizeof kDocument - 1, nullptr, nullptr, 0, nullptr, s.error,
               &s.code);
    restart(s);
    for (int step = 0; step < 300 && !in.empty(); ++step) {
        if (in.pick(4) == 0)
            callDocument(s, in);
        else
            callNode(s, in);
    }
    lumDocDelete(s.document, s.error, &s.code);
    return 0;
}
