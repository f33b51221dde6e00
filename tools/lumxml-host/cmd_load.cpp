// lumxml-host load: loads a document as a host does and prints what the
// library answered.
#include <cstdio>

#include "commands.h"
#include "host_load.h"

namespace host {

int runLoad(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    LoadOptions options;
    bool error = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (readOption(arguments, i, "--codepage", codePage, error) ||
            readLoadOption(arguments, i, options, error)) {
            if (error) return kExitUsage;
            continue;
        }
        if (arguments[i].rfind("--", 0) != 0 && options.file.empty()) {
            options.file = arguments[i];
            continue;
        }
        std::fprintf(stderr, "lumxml-host load: unexpected argument '%s'\n", arguments[i].c_str());
        return kExitUsage;
    }
    if (options.file.empty()) {
        std::fprintf(stderr, "lumxml-host load: no file given\n");
        return kExitUsage;
    }
    if (!initialise(library, codePage)) return kExitFailure;
    const Exports& x = library.exports();
    LoadedDocument loaded;
    bool made = loadLikeAHost(x, options, loaded);
    if (made) std::printf("encoding: %s\n", loaded.encoding.c_str());
    std::printf("code: %d\n", loaded.code);
    if (loaded.code != 0) std::printf("message: %s\n", loaded.message.c_str());
    deleteLikeAHost(x, loaded);
    return isFailingLoadCode(loaded.code) ? kExitFailure : kExitOk;
}

}  // namespace host
