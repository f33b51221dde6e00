// lumxml-host sax: reads a document with the pull reader as a host does and
// prints each event as the host receives it (name, arguments, line and
// column), or with --count only the number of events of each kind.
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "commands.h"

namespace host {

namespace {

struct SaxOptions {
    std::string file;
    std::string codePage = "UTF-8";
    uint32_t flags = 0;
    int32_t limit = 50000;  // Xerces' own default; LUM_SAX_NO_ENTITY_LIMIT for none
    std::string searchPath;
    std::string schema;
    bool countOnly = false;
};

// The record the resolve-entity callback reports on: the callback gets no
// argument, so the host keeps a note of the instance it drives.
SaxParserInstance* driving = nullptr;
bool printing = true;

std::string quoted(const char* text) {
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

std::string arg(const SaxEvent& event, int index) {
    void* const slots[] = {event.arg1, event.arg2, event.arg3, event.arg4};
    return quoted(static_cast<const char*>(slots[index - 1]));
}

std::string describeAttributes(const SaxEvent& event) {
    const SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(&event);
    std::string out = "attributes(" + std::to_string(list->count) + "/" +
                      std::to_string(list->capacity) + ")";
    for (int32_t i = 0; list->entries != nullptr && i < list->count; ++i) {
        const SaxAttribute& a = list->entries[i];
        out += " {local=" + quoted(a.localName) + " qname=" + quoted(a.qName) +
               " uri=" + quoted(a.uri) + " type=" + quoted(a.type) + " value=" + quoted(a.value) +
               "}";
    }
    return out;
}

std::string describeArguments(const SaxEvent& event) {
    switch (event.kind) {
        case LUM_SAX_EVENT_START_PREFIX_MAPPING: return "prefix=" + arg(event, 1) + " uri=" + arg(event, 2);
        case LUM_SAX_EVENT_END_PREFIX_MAPPING: return "prefix=" + arg(event, 1);
        case LUM_SAX_EVENT_START_ELEMENT:
            return "uri=" + arg(event, 1) + " local=" + arg(event, 2) + " qname=" + arg(event, 3) +
                   " " + describeAttributes(event);
        case LUM_SAX_EVENT_END_ELEMENT: return "uri=" + arg(event, 1) + " local=" + arg(event, 2) + " qname=" + arg(event, 3);
        case LUM_SAX_EVENT_CHARACTERS:
        case LUM_SAX_EVENT_IGNORABLE_WHITESPACE:
            return "text=" + arg(event, 1) + " length=" +
                   std::to_string(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(event.arg2)));
        case LUM_SAX_EVENT_PROCESSING_INSTRUCTION: return "target=" + arg(event, 1) + " data=" + arg(event, 2);
        case LUM_SAX_EVENT_UNPARSED_ENTITY_DECL:
            return "name=" + arg(event, 1) + " publicId=" + arg(event, 2) + " systemId=" +
                   arg(event, 3) + " notation=" + arg(event, 4);
        case LUM_SAX_EVENT_NOTATION_DECL:
            return "name=" + arg(event, 1) + " publicId=" + arg(event, 2) + " systemId=" +
                   arg(event, 3);
        case LUM_SAX_EVENT_RESOLVE_ENTITY: return "publicId=" + arg(event, 1) + " systemId=" + arg(event, 2);
        case LUM_SAX_EVENT_WARNING:
        case LUM_SAX_EVENT_ERROR:
        case LUM_SAX_EVENT_FATAL_ERROR: return "message=" + arg(event, 1);
        default: return "";
    }
}

void printEvent(const SaxParserInstance& record, const SaxEvent& event) {
    const std::string arguments = describeArguments(event);
    std::printf("%" PRIu32 ":%" PRIu32 " %s%s%s\n", record.line, record.column,
                event.name != nullptr ? event.name : "(no name)", arguments.empty() ? "" : " ",
                arguments.c_str());
}

// Called by the library, synchronously, for each external entity.
int32_t onResolveEntity() {
    if (printing && driving != nullptr && driving->eventHead != nullptr) {
        std::printf("callback: ");
        printEvent(*driving, *driving->eventHead);
    }
    return 0;  // not LUM_SAX_RESOLVE_STOP: the library searches the directories
}

bool parseArguments(const Arguments& arguments, SaxOptions& options) {
    bool error = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string limit;
        if (readOption(arguments, i, "--codepage", options.codePage, error) ||
            readOption(arguments, i, "--search", options.searchPath, error) ||
            readOption(arguments, i, "--schema", options.schema, error)) {
            if (error) return false;
            continue;
        }
        if (readOption(arguments, i, "--limit", limit, error)) {
            if (error) return false;
            options.limit = static_cast<int32_t>(std::strtol(limit.c_str(), nullptr, 10));
            continue;
        }
        if (arguments[i] == "--no-namespaces") {
            options.flags |= LUM_SAX_NO_NAMESPACES;
        } else if (arguments[i] == "--validate") {
            options.flags |= LUM_SAX_VALIDATE;
        } else if (arguments[i] == "--count") {
            options.countOnly = true;
        } else if (arguments[i].rfind("--", 0) != 0 && options.file.empty()) {
            options.file = arguments[i];
        } else {
            std::fprintf(stderr, "lumxml-host sax: unexpected argument '%s'\n",
                         arguments[i].c_str());
            return false;
        }
    }
    if (options.file.empty()) {
        std::fprintf(stderr, "lumxml-host sax: no file given\n");
        return false;
    }
    return true;
}

// The host's record: allocated and zero-filled by the host, then filled in.
void fillRecord(SaxParserInstance& record, const SaxOptions& options) {
    std::memset(&record, 0, sizeof record);
    record.inputKind = LUM_SAX_INPUT_FILE;
    record.fileName = options.file.c_str();
    record.flags = options.flags;
    record.entityExpansionLimit = options.limit;
    if (!options.searchPath.empty()) record.searchPath = options.searchPath.c_str();
    // "namespace location" pairs go to the schema location, a lone
    // location to the no-namespace schema location.
    if (options.schema.find(' ') != std::string::npos) {
        record.schemaLocation = options.schema.c_str();
    } else if (!options.schema.empty()) {
        record.noNamespaceSchemaLocation = options.schema.c_str();
    }
    record.resolveEntityCallback = &onResolveEntity;
}

}  // namespace

int runSax(HostLibrary& library, const Arguments& arguments) {
    SaxOptions options;
    if (!parseArguments(arguments, options)) return kExitUsage;
    if (!initialise(library, options.codePage)) return kExitFailure;
    const Exports& x = library.exports();

    auto* record = static_cast<SaxParserInstance*>(std::calloc(1, sizeof(SaxParserInstance)));
    if (record == nullptr) return kExitFailure;
    fillRecord(*record, options);
    driving = record;
    printing = !options.countOnly;

    std::map<std::string, long> counts;
    long events = 0;
    const auto started = std::chrono::steady_clock::now();
    int32_t result = x.lumSAXParseFirst(record);
    while (result == LUM_SAX_MORE) {
        if (const SaxEvent* event = record->eventHead) {
            ++events;
            if (options.countOnly) {
                ++counts[event->name != nullptr ? event->name : "(no name)"];
            } else {
                printEvent(*record, *event);
            }
        }
        result = x.lumSAXParseNext(record);
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    if (options.countOnly) {
        for (const auto& [name, count] : counts) std::printf("%s: %ld\n", name.c_str(), count);
        std::printf("events: %ld in %.3f s\n", events, seconds);
    }
    const int32_t code = record->errorCode;
    std::printf("end: result %d, code %d%s%s\n", result, code, code != LUM_OK ? ", message " : "",
                code != LUM_OK ? record->errorText : "");
    x.lumSAXDeleteParserInstance(record);
    driving = nullptr;
    std::free(record);
    return code == LUM_OK ? kExitOk : kExitFailure;
}

}  // namespace host
