#include <cstdio>

#include "commands.h"

namespace host {

int runInfo(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    bool error = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (readOption(arguments, i, "--codepage", codePage, error)) {
            if (error) return kExitUsage;
            continue;
        }
        std::fprintf(stderr, "lumxml-host info: unexpected argument '%s'\n",
                     arguments[i].c_str());
        return kExitUsage;
    }
    std::printf("library: %s\n", library.path().c_str());
    std::printf("exports: %d of %d found\n", library.exportsFound(),
                HostLibrary::exportsExpected());
    return initialise(library, codePage) ? kExitOk : kExitFailure;
}

}  // namespace host
