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
const int32_t kCommands[] = {1, 3, 4, 5, 10, 11, 12, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33,
                             0, 40, -1};

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
    options.outputKind = (mode & 0x20) != 0 ? 5 : 2;
    options.version = (mode & 0x40) != 0 ? "1.0" : nullptr;
    options.encoding = choose(in, kEncodings);
    fuzz::failReallocAfter(in.pick(4));

    WriterArgs args;
    std::memset(&args, 0, sizeof args);
    lumSAXWriterExecute(nullptr, 1, &options, &args);
    SAXWriter* writer = static_cast<SAXWriter*>(args.arg0);
    lumSAXWriterExecute(writer, 21, &options, &args);

    for (int step = 0; step < 200 && !in.empty(); ++step) {
        std::memset(&args, 0, sizeof args);
        int32_t command = choose(in, kCommands);
        SaxAttrList* list = nullptr;
        switch (command) {
        case 10: args.arg0 = name(in); args.arg1 = text(in); args.arg2 = uri(in); break;
        case 11: args.arg0 = uri(in); args.arg1 = name(in); break;
        case 23:
        case 26:
            args.arg0 = name(in);
            args.arg1 = uri(in);
            list = in.flag() ? attributes(in) : nullptr;
            args.arg2 = list;
            break;
        case 24: args.arg0 = name(in); args.arg1 = uri(in); break;
        case 27:
            args.arg0 = name(in);
            args.arg1 = text(in);
            args.arg2 = uri(in);
            list = in.flag() ? attributes(in) : nullptr;
            args.arg3 = list;
            break;
        case 29: args.arg0 = name(in); args.arg1 = text(in); break;
        case 31: args.arg0 = name(in); args.arg1 = text(in); args.arg2 = text(in); break;
        case 12:
            // Restart reads the host's buffer as text: hand it one that is terminated.
            options.memoryBuffer = const_cast<char*>("<restart/>");
            break;
        default: args.arg0 = (command == 32) ? name(in) : text(in); break;
        }
        if (command == 1) args.arg0 = nullptr;
        lumSAXWriterExecute(writer, command, &options, &args);
        if (command == 4) writer = static_cast<SAXWriter*>(args.arg0);  // a fresh writer
        lumSAXDeleteAttrList(list);
    }
    lumSAXWriterExecute(writer, 22, &options, &args);
    lumSAXWriterExecute(writer, 2, &options, &args);
    fuzz::releaseHostMemory();
    return 0;
}
