// lumxml-host dom: loads a document and prints its outline, walked only
// through lumDocExecute and lumNodeExecute as a host program walks it:
// child count, then each child by index.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"
#include "host_load.h"

namespace host {

namespace {

class Walker {
public:
    Walker(const Exports& x, void* document) : x_(x), document_(document) {}

    int32_t failures() const { return failures_; }

    int32_t documentChildCount() {
        int32_t count = 0;
        call(x_.lumDocExecute, document_, LUM_DOC_CHILD_COUNT, {}, &count);
        return count;
    }
    void* documentChild(int32_t index) {
        void* child = nullptr;
        call(x_.lumDocExecute, document_, LUM_DOC_CHILD_AT, {&index}, &child);
        return child;
    }
    int32_t childCount(void* node) {
        int32_t count = 0;
        call(x_.lumNodeExecute, node, LUM_NODE_CHILD_COUNT, {}, &count);
        return count;
    }
    void* child(void* node, int32_t index) {
        void* found = nullptr;
        call(x_.lumNodeExecute, node, LUM_NODE_CHILD_AT, {&index}, &found);
        return found;
    }

    std::string describe(void* node) {
        int32_t type = 0;
        call(x_.lumNodeExecute, node, LUM_NODE_TYPE_CODE, {}, &type);
        char typeName[LUM_TYPE_NAME_SIZE];
        x_.lumTypeToChar(type, typeName);
        std::string line = std::string(typeName) + " " + text(node, LUM_NODE_NAME);
        if (type == LUM_NODE_ELEMENT) return line + attributes(node);
        std::string value = wholeValue(node);
        return value.empty() ? line : line + " \"" + escaped(value) + "\"";
    }

private:
    using Execute = void (*)(void*, int32_t, void**, void*, char*, int32_t*);

    void call(Execute execute, void* target, int32_t method, std::vector<void*> args,
              void* result) {
        args.resize(4, nullptr);
        char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
        int32_t errorCode = 0;
        execute(target, method, args.data(), result, errorBuffer, &errorCode);
        if (errorCode != LUM_OK) {
            ++failures_;
            std::fprintf(stderr, "method %d: code %d, message: %s\n", method, errorCode,
                         errorBuffer);
        }
    }

    std::string text(void* node, int32_t method) {
        char buffer[4096];
        buffer[0] = '\0';
        int32_t limit = sizeof buffer;
        call(x_.lumNodeExecute, node, method, {&limit}, buffer);
        return buffer;
    }

    // The whole value, with no limit; the library's copy is given back.
    std::string wholeValue(void* node) {
        char* value = nullptr;
        int32_t length = 0;
        call(x_.lumNodeExecute, node, LUM_NODE_WHOLE_VALUE, {&value, &length}, nullptr);
        if (value == nullptr) return "";
        std::string copy(value, static_cast<size_t>(length));
        call(x_.lumNodeExecute, node, LUM_NODE_RELEASE_VALUE, {&value}, nullptr);
        return copy;
    }

    std::string attributes(void* node) {
        std::string names = text(node, LUM_NODE_ATTRIBUTE_NAMES);
        std::string out;
        size_t start = 0;
        while (start < names.size()) {
            size_t comma = names.find(',', start);
            if (comma == std::string::npos) comma = names.size();
            std::string name = names.substr(start, comma - start);
            char value[4096];
            value[0] = '\0';
            int32_t limit = sizeof value;
            call(x_.lumNodeExecute, node, LUM_NODE_ATTRIBUTE_VALUE,
                 {const_cast<char*>(name.c_str()), &limit}, value);
            out += " " + name + "=\"" + escaped(value) + "\"";
            start = comma + 1;
        }
        return out;
    }

    static std::string escaped(const std::string& value) {
        std::string out;
        for (char c : value) {
            if (c == '\n') out += "\\n";
            else if (c == '\t') out += "\\t";
            else if (c == '\r') out += "\\r";
            else if (c == '"') out += "\\\"";
            else out += c;
        }
        return out;
    }

    const Exports& x_;
    void* document_;
    int32_t failures_ = 0;
};

// A place in the walk: the node, its depth, its child count and the next
// child to visit. An explicit stack, so deep documents do not exhaust ours.
struct Place {
    void* node;
    int depth;
    int32_t count;
    int32_t next;
};

int64_t walk(Walker& walker, bool print) {
    int64_t nodes = 1;  // the document
    if (print) std::printf("DOCUMENT #document\n");
    std::vector<Place> stack;
    int32_t top = walker.documentChildCount();
    for (int32_t i = 0; i < top; ++i) {
        stack.push_back({walker.documentChild(i), 1, -1, 0});
        while (!stack.empty()) {
            Place& place = stack.back();
            if (place.count < 0) {
                ++nodes;
                if (print)
                    std::printf("%*s%s\n", place.depth * 2, "", walker.describe(place.node).c_str());
                place.count = walker.childCount(place.node);
            }
            if (place.next >= place.count) {
                stack.pop_back();
                continue;
            }
            void* child = walker.child(place.node, place.next++);
            stack.push_back({child, place.depth + 1, -1, 0});
        }
    }
    return nodes;
}

}  // namespace

int runDom(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    LoadOptions options;
    bool countOnly = false;
    auto count = [&countOnly](const Arguments& args, size_t& i, bool&) {
        if (args[i] != "--count") return false;
        countOnly = true;
        return true;
    };
    if (!readLoadArguments("dom", arguments, codePage, options, count)) return kExitUsage;
    if (!initialise(library, codePage)) return kExitFailure;
    const Exports& x = library.exports();
    LoadedDocument loaded;
    loadLikeAHost(x, options, loaded);
    if (loaded.code != LUM_OK)
        std::printf("load: code %d, message: %s\n", loaded.code, loaded.message.c_str());
    if (isFailingLoadCode(loaded.code) && loaded.cell == nullptr) return kExitFailure;
    Walker walker(x, loaded.cell);
    auto started = std::chrono::steady_clock::now();
    int64_t nodes = walk(walker, !countOnly);
    auto took = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started);
    if (countOnly) {
        std::printf("nodes: %lld\n", static_cast<long long>(nodes));
        std::printf("time: %.1f ms\n", took.count());
    }
    deleteLikeAHost(x, loaded);
    return isFailingLoadCode(loaded.code) || walker.failures() != 0 ? kExitFailure : kExitOk;
}

}  // namespace host
