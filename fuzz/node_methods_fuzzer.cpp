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
    lumNodeExecute(node, 18, nullptr, &type, error, &code);
    return type;
}

// The host knows its attribute nodes: methods 16 and 34 take only those.
void* chooseAttribute(Session& s, fuzz::FuzzInput& in) {
    void* node = chooseNode(s, in);
    return node != nullptr && typeOf(node) == 2 ? node : nullptr;
}

void* chooseString(fuzz::FuzzInput& in) {
    return const_cast<char*>(kStrings[in.pick(sizeof kStrings / sizeof *kStrings)]);
}

// Forget every node: after a node is released (method 3) the host cannot
// tell which of its handles died with it, so it starts over from the root.
void restart(Session& s) {
    s.nodes.clear();
    void* root = nullptr;
    lumDocExecute(s.document, 4, nullptr, &root, s.error, &s.code);
    if (root != nullptr) s.nodes.push_back(root);
}

void callNode(Session& s, fuzz::FuzzInput& in) {
    void* node = chooseNode(s, in);
    if (node == nullptr) return;
    int32_t method = static_cast<int32_t>(in.pick(42));
    // A clone of the document node is a new document that no export can
    // release (lumDocDelete takes documents, not their nodes): a host never
    // asks for one it cannot free.
    if (method == 9 && typeOf(node) == 9) return;
    int32_t number = static_cast<int32_t>(in.pick(8)) - 1;
    int32_t limit = static_cast<int32_t>(in.pick(48)) - 2;
    char* whole = nullptr;
    int32_t length = 0;
    std::string bytes = in.text(12);
    int32_t counted = static_cast<int32_t>(in.pick(bytes.size() + 2)) - 1;
    void* args[3] = {nullptr, nullptr, nullptr};
    switch (method) {
    case 2: args[0] = chooseNode(s, in); args[1] = in.flag() ? chooseNode(s, in) : nullptr; break;
    case 8: case 9: args[0] = &number; break;
    case 10: args[0] = chooseNode(s, in); break;
    case 16: case 34:
        args[0] = chooseAttribute(s, in);
        if (args[0] == nullptr) return;
        break;
    case 11: args[0] = chooseNode(s, in); args[1] = chooseNode(s, in); break;
    case 12: case 19: case 21: case 26: case 27: case 28: args[0] = &limit; break;
    case 13: args[0] = chooseString(in); args[1] = &limit; break;
    case 14: args[0] = chooseString(in); args[1] = chooseString(in); break;
    case 15: case 20: case 29: case 35: args[0] = chooseString(in); break;
    case 36: args[0] = &whole; args[1] = &length; break;
    case 37: args[0] = bytes.data(); args[1] = &counted; break;
    case 38: args[0] = &whole; break;
    case 39: args[0] = chooseString(in); args[1] = chooseString(in); args[2] = &limit; break;
    default: break;
    }
    // Results of up to 48 units of limit; method 12's names and the
    // unbounded copies stay far below this buffer's size.
    alignas(8) char result[8192];
    std::memset(result, 0, sizeof result);
    s.code = 0;
    lumNodeExecute(node, method, args, result, s.error, &s.code);
    if (method == 36) {
        void* release[1] = {&whole};
        lumNodeExecute(node, 38, release, nullptr, s.error, &s.code);
    }
    if (s.code == 0 && (method == 7 || method == 8 || method == 9 || method == 35)) {
        void* found = nullptr;
        std::memcpy(&found, result, sizeof found);
        if (found != nullptr && s.nodes.size() < 256) s.nodes.push_back(found);
    }
    if (method == 3) restart(s);
}

void callDocument(Session& s, fuzz::FuzzInput& in) {
    int32_t method = static_cast<int32_t>(in.pick(40));
    int32_t type = static_cast<int32_t>(in.pick(14)) - 1;
    int32_t number = static_cast<int32_t>(in.pick(8)) - 1;
    int32_t limit = static_cast<int32_t>(in.pick(48));
    void* args[4] = {nullptr, nullptr, nullptr, nullptr};
    switch (method) {
    case 1: args[0] = chooseString(in); args[1] = &type; break;
    case 8: args[0] = &number; break;
    case 22: args[0] = chooseNode(s, in); args[1] = &number; break;
    case 30: args[0] = chooseString(in); args[1] = chooseString(in); args[2] = &type; break;
    case 31:
        for (void*& slot : args) slot = chooseString(in);
        break;
    case 32: case 33: args[0] = &limit; break;
    default: break;  // forwarded methods get no arguments here: they are node calls above
    }
    if (method == 2 || method == 9 || method == 10 || method == 11 || method == 19 ||
        method == 20 || method == 21)
        return;
    alignas(8) char result[8192];
    std::memset(result, 0, sizeof result);
    s.code = 0;
    lumDocExecute(s.document, method, args, result, s.error, &s.code);
    void* answer = nullptr;
    std::memcpy(&answer, result, sizeof answer);
    if (method == 31) {
        // The old document is gone; the answer replaces the host's cell.
        if (answer != nullptr) {
            s.document = answer;
            restart(s);
        }
        return;
    }
    if (s.code == 0 && answer != nullptr && s.nodes.size() < 256 &&
        (method == 1 || method == 4 || method == 8 || method == 22 || method == 30))
        s.nodes.push_back(answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::FuzzInput in(data, size);
    Session s;
    lumInitDocument(&s.document, 7, s.error, &s.code);
    char encoding[257] = {0};
    lumDocLoad(&s.document, 4, 1, encoding, nullptr, kDocument, sizeof kDocument - 1, nullptr,
               nullptr, 0, nullptr, s.error, &s.code);
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
