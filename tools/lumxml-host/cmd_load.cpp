// lumxml-host load: loads a document as a host does and prints what the
// library answered.
#include <cstdio>

#include "commands.h"
#include "host_load.h"

namespace host {

int runLoad(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    LoadOptions options;
    if (!readLoadArguments("load", arguments, codePage, options)) return kExitUsage;
    if (!initialise(library, codePage)) return kExitFailure;
    const Exports& x = library.exports();
    LoadedDocument loaded;
    bool made = loadLikeAHost(x, options, loaded);
    if (made) std::printf("encoding: %s\n", loaded.encoding.c_str());
    std::printf("code: %d\n", loaded.code);
    if (loaded.code != LUM_OK) std::printf("message: %s\n", loaded.message.c_str());
    deleteLikeAHost(x, loaded);
    return isFailingLoadCode(loaded.code) ? kExitFailure : kExitOk;
}

}  // namespace host
