// Bytes decoded into a writer command stream (commands, arguments from a
// small pool, attribute lists), with strict, fragment and formatted mode
// chosen by the input and memory output whose growth sometimes fails.
#include <cstdint>
#include <cstring>

#include "fuzz_input.h"
#include "host_init.h"
#include "host_memory.h"
#include "lumxml.h"

namespace {

const char* const kNames[] = {"a", "b", "p:a", "q:b", "xmlns", "xmlns:p", "", "1bad", "x:y:z",
                              "p:", "xml-stylesheet", "r"};
const char* const kUris[] = {nullptr, "", "urn:u", "urn:v"};
const char* const kTexts[] = {nullptr, "", "text", "a]]>b", "<&>\"'", "caf\xC3\xA9", "--",
                              "\xF0\x9F\x98\x80", "  indented  "};
const char* const kEncodings[] = {nullptr, "", "UTF-8", "UTF-16", "utf-16be", "ISO-8859-1",
                                  "US-ASCII"};
const int32_t kCommands[] = {LUM_WRITER_CREATE, LUM_WRITER_GET_STATE, LUM_WRITER_RESET,
                             LUM_WRITER_STOP, LUM_WRITER_ADD_ATTRIBUTE,
                             LUM_WRITER_DECLARE_NAMESPACE, LUM_WRITER_RESTART_MEMORY,
                             LUM_WRITER_END_DOCUMENT, LUM_WRITER_START_ELEMENT,
                             LUM_WRITER_END_ELEMENT, LUM_WRITER_CHARACTERS,
                             LUM_WRITER_EMPTY_ELEMENT, LUM_WRITER_DATA_ELEMENT,
                             LUM_WRITER_COMMENT, LUM_WRITER_PROCESSING_INSTRUCTION,
                             LUM_WRITER_RAW_TEXT, LUM_WRITER_DOCTYPE,
                             LUM_WRITER_ENTITY_REFERENCE, LUM_WRITER_CDATA, 0, 40, -1};

template <class T, size_t N>
T choose(fuzz::FuzzInput& in, T (&pool)[N]) {
    return pool[in.pick(N)];
}

void* text(fuzz::FuzzInput& in) { return const_cast<char*>(choose(in, kTexts)); }
void* name(fuzz::FuzzInput& in) { return const_cast<char*>(choose(in, kNames)); }
void* uri(fuzz::FuzzInput& in) { return const_cast<char*>(choose(in, kUris)); }

SaxAttrList* attributes(fuzz::FuzzInput& in) {
    size_t count = in.pick(4);
    SaxAttrList* list = nullptr;
    for (size_t i = 0; i < count; ++i)
        lumSAXInsertAttribute(&list, choose(in, kNames), choose(in, kTexts), choose(in, kUris),
                              nullptr);
    return list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::initialiseLibrary();
    fuzz::installHostMemory();
    fuzz::FuzzInput in(data, size);

    WriterOptions options;
    std::memset(&options, 0, sizeof options);
    uint8_t mode = in.byte();
    options.strict = mode & 1;
    options.fragment = (mode >> 1) & 1;
    options.formatted = (mode >> 2) & 1;
    options.standalone = (mode >> 3) & 3;
    options.outputKind =
        (mode & 0x20) != 0 ? LUM_WRITER_TO_MEMORY : LUM_WRITER_TO_MEMORY_WITH_BOM;
    options.version = (mode & 0x40) != 0 ? "1.0" : nullptr;
    options.encoding = choose(in, kEncodings);
    fuzz::failReallocAfter(in.pick(4));

    WriterArgs args;
    std::memset(&args, 0, sizeof args);
    lumSAXWriterExecute(nullptr, LUM_WRITER_CREATE, &options, &args);
    SAXWriter* writer = static_cast<SAXWriter*>(args.arg0);
    lumSAXWriterExecute(writer, LUM_WRITER_OPEN, &options, &args);

    for (int step = 0; step < 200 && !in.empty(); ++step) {
        std::memset(&args, 0, sizeof args);
        int32_t command = choose(in, kCommands);
        SaxAttrList* list = nullptr;
        switch (command) {
        case LUM_WRITER_ADD_ATTRIBUTE:
            args.arg0 = name(in);
            args.arg1 = text(in);
            args.arg2 = uri(in);
            break;
        case LUM_WRITER_DECLARE_NAMESPACE: args.arg0 = uri(in); args.arg1 = name(in); break;
        case LUM_WRITER_START_ELEMENT:
        case LUM_WRITER_EMPTY_ELEMENT:
            args.arg0 = name(in);
            args.arg1 = uri(in);
            list = in.flag() ? attributes(in) : nullptr;
            args.arg2 = list;
            break;
        case LUM_WRITER_END_ELEMENT: args.arg0 = name(in); args.arg1 = uri(in); break;
        case LUM_WRITER_DATA_ELEMENT:
            args.arg0 = name(in);
            args.arg1 = text(in);
            args.arg2 = uri(in);
            list = in.flag() ? attributes(in) : nullptr;
            args.arg3 = list;
            break;
        case LUM_WRITER_PROCESSING_INSTRUCTION: args.arg0 = name(in); args.arg1 = text(in); break;
        case LUM_WRITER_DOCTYPE:
            args.arg0 = name(in);
            args.arg1 = text(in);
            args.arg2 = text(in);
            break;
        case LUM_WRITER_RESTART_MEMORY:
            // Restart reads the host's buffer as text: hand it one that is terminated.
            options.memoryBuffer = const_cast<char*>("<restart/>");
            break;
        default: args.arg0 = (command == LUM_WRITER_ENTITY_REFERENCE) ? name(in) : text(in); break;
        }
        if (command == LUM_WRITER_CREATE) args.arg0 = nullptr;
        lumSAXWriterExecute(writer, command, &options, &args);
        // A reset answers a fresh writer.
        if (command == LUM_WRITER_RESET) writer = static_cast<SAXWriter*>(args.arg0);
        lumSAXDeleteAttrList(list);
    }
    lumSAXWriterExecute(writer, LUM_WRITER_END_DOCUMENT, &options, &args);
    lumSAXWriterExecute(writer, LUM_WRITER_FREE, &options, &args);
    fuzz::releaseHostMemory();
    return 0;
}
