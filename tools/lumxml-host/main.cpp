// lumxml-host: a small host runtime that loads liblumxml with dlopen and
// drives it through its exports, the way a language runtime does.
#include <cstdio>
#include <cstring>
#include <string>

#include "commands.h"
#include "host_library.h"

using namespace host;

namespace {

void printUsage(std::FILE* out) {
    std::fprintf(out,
                 "usage: lumxml-host [--library PATH] COMMAND [ARGUMENTS]\n"
                 "       lumxml-host --help\n\n"
                 "The library is PATH, else $LUMXML_LIBRARY, else the one built beside\n"
                 "this program (installed: liblumxml.so.1 from the prefix's lib folder).\n\n"
                 "commands:\n");
    for (const Command& command : commands())
        std::fprintf(out, "  %s\n      %s\n", command.synopsis, command.description);
}

const Command* findCommand(const std::string& name) {
    for (const Command& command : commands())
        if (name == command.name) return &command;
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    std::string libraryPath = defaultLibraryPath();
    int i = 1;
    for (; i < argc && argv[i][0] == '-'; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            printUsage(stdout);
            return kExitOk;
        }
        if (std::strcmp(argv[i], "--library") == 0 && i + 1 < argc) {
            libraryPath = argv[++i];
            continue;
        }
        std::fprintf(stderr, "lumxml-host: unknown option '%s'\n\n", argv[i]);
        printUsage(stderr);
        return kExitUsage;
    }
    if (i >= argc) {
        std::fprintf(stderr, "lumxml-host: no command given\n\n");
        printUsage(stderr);
        return kExitUsage;
    }
    const Command* command = findCommand(argv[i]);
    if (command == nullptr) {
        std::fprintf(stderr, "lumxml-host: unknown command '%s'\n\n", argv[i]);
        printUsage(stderr);
        return kExitUsage;
    }
    HostLibrary library;
    if (!library.open(libraryPath)) {
        std::fprintf(stderr, "lumxml-host: cannot load the library '%s': %s\n",
                     libraryPath.c_str(), library.error().c_str());
        return kExitNoLibrary;
    }
    Arguments arguments(argv + i + 1, argv + argc);
    return command->run(library, arguments);
}
