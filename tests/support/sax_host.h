// A host of the pull reader: a zero-filled 448-byte SaxParserInstance
// record that the host owns, filled and read at its documented byte
// offsets, and a driver that describes every event as the host receives it.
// Header-only so that only the tests that drive the reader link it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "host_records.h"
#include "lumxml.h"

namespace lumtest {

// Byte offsets of the SaxParserInstance record.
namespace rec {
constexpr size_t kReader = 0, kFlags = 8, kScanToken = 16, kLocator = 24, kInputSource = 32,
                 kSearchPath = 40, kSchemaLocation = 48, kNoNamespaceSchemaLocation = 56,
                 kInputKind = 64, kFileName = 72, kMemoryBuffer = 88, kMemoryLength = 96,
                 kErrorText = 116, kErrorCode = 376, kEventCount = 380, kState = 384,
                 kEntityExpansionLimit = 388, kColumn = 392, kLine = 396, kPublicId = 400,
                 kSystemId = 408, kEventHead = 416, kEventTail = 424, kReserved432 = 432,
                 kCallback = 440, kSize = 448;
}  // namespace rec

// Byte offsets of the SaxEvent record.
namespace evt {
constexpr size_t kKind = 0, kName = 8, kArgCount = 16, kArg1 = 24, kArg2 = 32, kArg3 = 40,
                 kArg4 = 48, kArg5 = 56, kNext = 64, kSize = 72;
}  // namespace evt

class HostRecord {
public:
    HostRecord() { std::memset(bytes_, 0, sizeof bytes_); }
    ~HostRecord() { lumSAXDeleteParserInstance(get()); }
    HostRecord(const HostRecord&) = delete;
    HostRecord& operator=(const HostRecord&) = delete;

    SaxParserInstance* get() { return reinterpret_cast<SaxParserInstance*>(bytes_); }
    unsigned char* bytes() { return bytes_; }

    // ---- host fields ----
    void setFlags(uint32_t flags) { writeAt<uint32_t>(bytes_, rec::kFlags, flags); }
    void setInputKind(int32_t kind) { writeAt<int32_t>(bytes_, rec::kInputKind, kind); }
    void setFile(const std::string& name) {
        fileName_ = name;
        setInputKind(LUM_SAX_INPUT_FILE);
        writeAt<const char*>(bytes_, rec::kFileName, fileName_.c_str());
    }
    void setNoFile() { writeAt<const char*>(bytes_, rec::kFileName, nullptr); }
    void setMemory(const std::string& document, int32_t kind = LUM_SAX_INPUT_MEMORY) {
        memory_ = document;
        setInputKind(kind);
        writeAt<const void*>(bytes_, rec::kMemoryBuffer, memory_.data());
        writeAt<uint32_t>(bytes_, rec::kMemoryLength, static_cast<uint32_t>(memory_.size()));
    }
    void setSearchPath(const std::string& path) {
        searchPath_ = path;
        writeAt<const char*>(bytes_, rec::kSearchPath, searchPath_.c_str());
    }
    void setSchemaLocation(const std::string& pairs) {
        schemaLocation_ = pairs;
        writeAt<const char*>(bytes_, rec::kSchemaLocation, schemaLocation_.c_str());
    }
    void setNoNamespaceSchemaLocation(const std::string& location) {
        noNamespaceSchemaLocation_ = location;
        writeAt<const char*>(bytes_, rec::kNoNamespaceSchemaLocation,
                             noNamespaceSchemaLocation_.c_str());
    }
    void setLimit(int32_t limit) { writeAt<int32_t>(bytes_, rec::kEntityExpansionLimit, limit); }
    void setCallback(ResolveEntityFn callback) {
        writeAt<ResolveEntityFn>(bytes_, rec::kCallback, callback);
    }

    // ---- fields the library writes ----
    std::string errorText() const {
        return std::string(reinterpret_cast<const char*>(bytes_ + rec::kErrorText));
    }
    int32_t errorCode() const { return readAt<int32_t>(bytes_, rec::kErrorCode); }
    int32_t eventCount() const { return readAt<int32_t>(bytes_, rec::kEventCount); }
    int32_t state() const { return readAt<int32_t>(bytes_, rec::kState); }
    uint32_t line() const { return readAt<uint32_t>(bytes_, rec::kLine); }
    uint32_t column() const { return readAt<uint32_t>(bytes_, rec::kColumn); }
    const char* publicId() const { return stringAt(bytes_, rec::kPublicId); }
    const char* systemId() const { return stringAt(bytes_, rec::kSystemId); }
    void* reader() const { return readAt<void*>(bytes_, rec::kReader); }
    void* scanToken() const { return readAt<void*>(bytes_, rec::kScanToken); }
    const unsigned char* head() const {
        return readAt<const unsigned char*>(bytes_, rec::kEventHead);
    }

    int32_t first() { return lumSAXParseFirst(get()); }
    int32_t next() { return lumSAXParseNext(get()); }

private:
    alignas(8) unsigned char bytes_[rec::kSize];
    std::string fileName_, memory_, searchPath_, schemaLocation_, noNamespaceSchemaLocation_;
};

inline std::string quoted(const char* text) {
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

inline uint32_t eventKind(const unsigned char* event) { return readAt<uint32_t>(event, evt::kKind); }
inline std::string eventName(const unsigned char* event) {
    const char* name = stringAt(event, evt::kName);
    return name ? name : "(none)";
}
inline const char* eventArg(const unsigned char* event, int index) {
    return stringAt(event, evt::kArg1 + 8 * static_cast<size_t>(index - 1));
}

// The attribute list lying in arg4/arg5 of "StartElement".
inline std::string describeAttributes(const unsigned char* event) {
    const int32_t capacity = readAt<int32_t>(event, evt::kArg4);
    const int32_t count = readAt<int32_t>(event, evt::kArg4 + 4);
    const auto* entries = readAt<const unsigned char*>(event, evt::kArg5);
    std::string out = "[" + std::to_string(count) + "/" + std::to_string(capacity);
    for (int32_t i = 0; entries != nullptr && i < count; ++i) {
        const unsigned char* entry = entries + 40 * i;
        out += " {" + quoted(stringAt(entry, 0)) + " " + quoted(stringAt(entry, 8)) + " " +
               quoted(stringAt(entry, 16)) + " " + quoted(stringAt(entry, 24)) + " " +
               quoted(stringAt(entry, 32)) + "}";
    }
    if (entries == nullptr) out += " no-array";
    return out + "]";
}

// "Name args..." for the event, as the host would print it.
inline std::string describeEvent(const unsigned char* event) {
    if (event == nullptr) return "(no event)";
    const uint32_t kind = eventKind(event);
    const uint32_t argCount = readAt<uint32_t>(event, evt::kArgCount);
    std::string out = eventName(event) + "/" + std::to_string(argCount);
    switch (kind) {
        case LUM_SAX_EVENT_START_PREFIX_MAPPING:
        case LUM_SAX_EVENT_PROCESSING_INSTRUCTION:
        case LUM_SAX_EVENT_RESOLVE_ENTITY:
            out += " " + quoted(eventArg(event, 1)) + " " + quoted(eventArg(event, 2));
            break;
        case LUM_SAX_EVENT_END_PREFIX_MAPPING:
        case LUM_SAX_EVENT_WARNING:
        case LUM_SAX_EVENT_ERROR:
        case LUM_SAX_EVENT_FATAL_ERROR:
            out += " " + quoted(eventArg(event, 1));
            break;
        case LUM_SAX_EVENT_START_ELEMENT:
            out += " " + quoted(eventArg(event, 1)) + " " + quoted(eventArg(event, 2)) + " " +
                   quoted(eventArg(event, 3)) + " " + describeAttributes(event);
            break;
        case LUM_SAX_EVENT_END_ELEMENT:
        case LUM_SAX_EVENT_NOTATION_DECL:
            out += " " + quoted(eventArg(event, 1)) + " " + quoted(eventArg(event, 2)) + " " +
                   quoted(eventArg(event, 3));
            break;
        case LUM_SAX_EVENT_CHARACTERS:
        case LUM_SAX_EVENT_IGNORABLE_WHITESPACE:
            out += " " + quoted(eventArg(event, 1)) + " " +
                   std::to_string(readAt<uint32_t>(event, evt::kArg2));
            break;
        case LUM_SAX_EVENT_UNPARSED_ENTITY_DECL:
            out += " " + quoted(eventArg(event, 1)) + " " + quoted(eventArg(event, 2)) + " " +
                   quoted(eventArg(event, 3)) + " " + quoted(eventArg(event, 4));
            break;
        default:
            break;
    }
    return out;
}

inline std::string describeWithLocation(HostRecord& record) {
    return describeEvent(record.head()) + " @" + std::to_string(record.line()) + ":" +
           std::to_string(record.column());
}

struct DrainOptions {
    bool withLocation = true;
    size_t maxEvents = 1000000;
};

// The record's flag bits.
constexpr uint32_t kNoNamespaces = LUM_SAX_NO_NAMESPACES;
constexpr uint32_t kValidate = LUM_SAX_VALIDATE;
constexpr uint32_t kNoDefaultResolution = LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION;

// Events described without their line and column.
inline DrainOptions noLocation(size_t maxEvents = 1000000) {
    DrainOptions options;
    options.withLocation = false;
    options.maxEvents = maxEvents;
    return options;
}

// Goes on with a parse whose last call answered `result`, the way a host
// does, and describes every event seen at eventHead. The last entry is
// "result 0 code N text" of the final call.
inline std::vector<std::string> collect(HostRecord& record, int32_t result,
                                        DrainOptions options = {}) {
    std::vector<std::string> seen;
    while (result == LUM_SAX_MORE && seen.size() < options.maxEvents) {
        if (record.head() != nullptr) {
            seen.push_back(options.withLocation ? describeWithLocation(record)
                                                : describeEvent(record.head()));
        } else {
            seen.push_back("(no event)");
        }
        result = record.next();
    }
    seen.push_back("result " + std::to_string(result) + " code " +
                   std::to_string(record.errorCode()) + " " + record.errorText());
    return seen;
}

// A whole parse from lumSAXParseFirst on.
inline std::vector<std::string> drain(HostRecord& record, DrainOptions options = {}) {
    return collect(record, record.first(), options);
}

// The rest of a parse whose "StartDocument" is at eventHead, from the event
// after it on, described without line and column.
inline std::vector<std::string> restWithoutLocation(HostRecord& record,
                                                    size_t maxEvents = 1000000) {
    return collect(record, record.next(), noLocation(maxEvents));
}

// The queue links of the host's record: an event's next, and eventTail.
inline const unsigned char* nextOf(const unsigned char* event) {
    return readAt<const unsigned char*>(event, evt::kNext);
}
inline const unsigned char* tailOf(HostRecord& record) {
    return readAt<const unsigned char*>(record.bytes(), rec::kEventTail);
}

}  // namespace lumtest
