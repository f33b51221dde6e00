#include <cstdio>

#include "commands.h"

namespace host {

bool readOption(const Arguments& arguments, size_t& i, const char* name, std::string& value,
                bool& error) {
    if (arguments[i] != name) return false;
    if (i + 1 >= arguments.size()) {
        std::fprintf(stderr, "lumxml-host: option %s needs a value\n", name);
        error = true;
        return true;
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
    char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
    int32_t errorCode = 0;
    int32_t found = x.lumInitParser(codePage.c_str(), errorBuffer, &errorCode);
    std::printf("init: code page %s %s, error code %d%s%s\n", codePage.c_str(),
                found ? "found" : "not found (UTF-8 used)", errorCode,
                errorCode != LUM_OK ? ", message: " : "", errorCode != LUM_OK ? errorBuffer : "");
    return errorCode == LUM_OK;
}

}  // namespace host
