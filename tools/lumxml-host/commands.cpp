#include "commands.h"

#include <cstdio>
#include <cstring>

namespace host {

namespace {

// Reads "--name VALUE" options; false (with a message) on anything else.
bool readOption(const Arguments& arguments, size_t& i, const char* name, std::string& value) {
    if (arguments[i] != name) return false;
    if (i + 1 >= arguments.size()) {
        std::fprintf(stderr, "lumxml-host: option %s needs a value\n", name);
        value.clear();
        return false;
    }
    value = arguments[++i];
    return true;
}

bool initialise(HostLibrary& library, const std::string& codePage) {
    const Exports& x = library.exports();
    if (x.lumInitParser == nullptr) {
        std::fprintf(stderr, "lumxml-host: the library has no lumInitParser\n");
        return false;
    }
    char errorBuffer[257] = {0};
    int32_t errorCode = 0;
    int32_t found = x.lumInitParser(codePage.c_str(), errorBuffer, &errorCode);
    std::printf("init: code page %s %s, error code %d%s%s\n", codePage.c_str(),
                found ? "found" : "not found (UTF-8 used)", errorCode,
                errorCode != 0 ? ", message: " : "", errorCode != 0 ? errorBuffer : "");
    return errorCode == 0;
}

int runInfo(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (readOption(arguments, i, "--codepage", codePage)) continue;
        std::fprintf(stderr, "lumxml-host info: unexpected argument '%s'\n",
                     arguments[i].c_str());
        return kExitUsage;
    }
    std::printf("library: %s\n", library.path().c_str());
    std::printf("exports: %d of %d found\n", library.exportsFound(),
                HostLibrary::exportsExpected());
    return initialise(library, codePage) ? kExitOk : kExitFailure;
}

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", "info [--codepage NAME]",
         "Load the library, count its exports and initialise it with a code page "
         "(default UTF-8).",
         runInfo},
    };
    return table;
}

}  // namespace host
