#include "host_load.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "commands.h"

namespace host {

namespace {


const char* itemOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

}  // namespace

bool readLoadOption(const std::vector<std::string>& arguments, size_t& i, LoadOptions& options,
                    bool& error) {
    if (arguments[i] == "--validate") {
        options.validate = true;
        return true;
    }
    if (arguments[i] == "--no-namespaces") {
        options.noNamespaces = true;
        return true;
    }
    std::string limit;
    if (readOption(arguments, i, "--limit", limit, error)) {
        char* end = nullptr;
        long value = std::strtol(limit.c_str(), &end, 10);
        if (error || end == limit.c_str() || *end != '\0') {
            std::fprintf(stderr, "lumxml-host: --limit needs a number\n");
            error = true;
        }
        options.hasLimit = true;
        options.limit = static_cast<int32_t>(value);
        return true;
    }
    return readOption(arguments, i, "--search", options.searchDirectories, error) ||
           readOption(arguments, i, "--schema", options.schemaLocation, error) ||
           readOption(arguments, i, "--noNamespaceSchema", options.noNamespaceSchemaLocation,
                      error);
}

bool loadLikeAHost(const Exports& x, const LoadOptions& options, LoadedDocument& loaded) {
    char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
    int32_t errorCode = 0;
    x.lumInitDocument(&loaded.cell, 1, errorBuffer, &errorCode);
    if (errorCode != LUM_OK) {
        loaded.code = errorCode;
        loaded.message = errorBuffer;
        return false;
    }
    uint32_t flags = (options.validate ? LUM_LOAD_VALIDATE : 0) |
                     (options.noNamespaces ? LUM_LOAD_NO_NAMESPACES : 0);
    const char* locations[3] = {itemOrNull(options.searchDirectories),
                                itemOrNull(options.schemaLocation),
                                itemOrNull(options.noNamespaceSchemaLocation)};
    char encoding[LUM_ENCODING_BUFFER_SIZE] = {0};
    x.lumDocLoad(&loaded.cell, flags, LUM_LOAD_FROM_FILE, encoding, options.file.c_str(), nullptr, 0, nullptr,
                 options.hasLimit ? &options.limit : nullptr, 0, locations, errorBuffer,
                 &errorCode);
    loaded.code = errorCode;
    loaded.message = errorBuffer;
    loaded.encoding = encoding;
    return true;
}

void deleteLikeAHost(const Exports& x, LoadedDocument& loaded) {
    if (loaded.cell == nullptr) return;
    char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
    int32_t errorCode = 0;
    x.lumDocDelete(loaded.cell, errorBuffer, &errorCode);
    if (errorCode != LUM_OK) std::printf("delete: code %d, message: %s\n", errorCode, errorBuffer);
    loaded.cell = nullptr;
}

bool isFailingLoadCode(int32_t code) { return code != LUM_OK && code != LUM_ERR_PARSE_WARNING; }

bool readLoadArguments(const char* command, const std::vector<std::string>& arguments,
                       std::string& codePage, LoadOptions& options, const ExtraArgument& extra) {
    bool error = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (readOption(arguments, i, "--codepage", codePage, error) ||
            readLoadOption(arguments, i, options, error) ||
            (extra && extra(arguments, i, error))) {
            if (error) return false;
            continue;
        }
        if (arguments[i].rfind("--", 0) != 0 && options.file.empty()) {
            options.file = arguments[i];
            continue;
        }
        std::fprintf(stderr, "lumxml-host %s: unexpected argument '%s'\n", command,
                     arguments[i].c_str());
        return false;
    }
    if (options.file.empty()) {
        std::fprintf(stderr, "lumxml-host %s: no file given\n", command);
        return false;
    }
    return true;
}

}  // namespace host
