// lumxml-host save: loads a document and saves it as a host does, through
// host memory (its own allocator registered with lumMemioInit), a host
// stream callback, or a file. Memory and stream bytes go to standard
// output exactly as received (UTF-16 output holds NUL bytes: the byte
// count is used, never the text length); the code and message, when the
// save fails, go to standard error.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "commands.h"
#include "host_load.h"

namespace host {

namespace {

enum class SaveTo { Memory, File, Stream };

struct SaveOptions {
    SaveTo to = SaveTo::Memory;
    std::string path;
    std::string encoding;
    bool hasEncoding = false;
    bool charEscapes = false;
    bool attrEscapes = false;
    bool noByteOrderMark = false;
};

// The host's allocator: plain malloc/realloc, so the block is freed with free.
void* hostAlloc(uint32_t size, const char*, int32_t) { return std::malloc(size); }
void* hostRealloc(void* block, uint32_t size, const char*, int32_t) {
    return std::realloc(block, size);
}

// The host stream: the handle is the FILE* to write to.
int32_t writeToFile(int64_t handle, int32_t, const void* bytes, uint32_t count, void*) {
    std::fwrite(bytes, 1, count, reinterpret_cast<std::FILE*>(handle));
    return 0;
}

// "--to memory", "--to stream" or "--to file PATH".
bool readTarget(const Arguments& arguments, size_t& i, SaveOptions& options, bool& error) {
    if (arguments[i] != "--to") return false;
    const std::string kind = i + 1 < arguments.size() ? arguments[i + 1] : "";
    if (kind == "memory") {
        options.to = SaveTo::Memory;
        i += 1;
    } else if (kind == "stream") {
        options.to = SaveTo::Stream;
        i += 1;
    } else if (kind == "file" && i + 2 < arguments.size()) {
        options.to = SaveTo::File;
        options.path = arguments[i + 2];
        i += 2;
    } else {
        std::fprintf(stderr, "lumxml-host save: --to takes memory, stream or file PATH\n");
        error = true;
    }
    return true;
}

// lumInitParser as `initialise` calls it, with the answer on standard
// error: standard output carries the saved bytes alone.
bool initialiseQuietly(const Exports& x, const std::string& codePage) {
    if (x.lumInitParser == nullptr || x.lumDocSave == nullptr) {
        std::fprintf(stderr, "lumxml-host save: the library has no lumInitParser/lumDocSave\n");
        return false;
    }
    char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
    int32_t errorCode = 0;
    int32_t found = x.lumInitParser(codePage.c_str(), errorBuffer, &errorCode);
    std::fprintf(stderr, "init: code page %s %s, error code %d\n", codePage.c_str(),
                 found ? "found" : "not found (UTF-8 used)", errorCode);
    if (errorCode != LUM_OK) std::fprintf(stderr, "init message: %s\n", errorBuffer);
    return errorCode == LUM_OK;
}

bool readFlag(const std::string& argument, const char* name, bool& flag) {
    if (argument != name) return false;
    flag = true;
    return true;
}

}  // namespace

int runSave(HostLibrary& library, const Arguments& arguments) {
    std::string codePage = "UTF-8";
    LoadOptions load;
    SaveOptions save;
    auto saveOption = [&save](const Arguments& args, size_t& i, bool& error) {
        if (readTarget(args, i, save, error)) return true;
        if (readOption(args, i, "--encoding", save.encoding, error)) {
            save.hasEncoding = true;
            return true;
        }
        return readFlag(args[i], "--char-escapes", save.charEscapes) ||
               readFlag(args[i], "--attr-escapes", save.attrEscapes) ||
               readFlag(args[i], "--no-bom", save.noByteOrderMark);
    };
    if (!readLoadArguments("save", arguments, codePage, load, saveOption)) return kExitUsage;
    const Exports& x = library.exports();
    if (!initialiseQuietly(x, codePage)) return kExitFailure;
    x.lumMemioInit(nullptr, hostAlloc, hostRealloc);

    LoadedDocument loaded;
    const bool made = loadLikeAHost(x, load, loaded);
    if (!made || isFailingLoadCode(loaded.code)) {
        std::fprintf(stderr, "load code: %d\nload message: %s\n", loaded.code,
                     loaded.message.c_str());
        deleteLikeAHost(x, loaded);
        return kExitFailure;
    }

    char errorBuffer[LUM_ERROR_BUFFER_SIZE] = {0};
    int32_t errorCode = 0;
    void* block = nullptr;
    uint32_t length = 0;
    const int32_t target = save.to == SaveTo::File     ? LUM_SAVE_TO_FILE
                           : save.to == SaveTo::Stream ? LUM_SAVE_TO_STREAM
                                                       : LUM_SAVE_TO_MEMORY;
    std::fflush(stdout);
    x.lumDocSave(&loaded.cell, target, save.charEscapes ? 1 : 0, save.attrEscapes ? 1 : 0,
                 save.noByteOrderMark ? 1 : 0, save.hasEncoding ? save.encoding.c_str() : nullptr,
                 save.to == SaveTo::File ? save.path.c_str() : nullptr, &block, &length,
                 reinterpret_cast<int64_t>(stdout), writeToFile, errorBuffer, &errorCode);
    if (block != nullptr) {
        std::fwrite(block, 1, length, stdout);
        std::free(block);
    }
    std::fflush(stdout);
    deleteLikeAHost(x, loaded);
    if (errorCode != LUM_OK) {
        std::fprintf(stderr, "code: %d\nmessage: %s\n", errorCode, errorBuffer);
        return kExitFailure;
    }
    if (save.to == SaveTo::File) std::fprintf(stderr, "saved to %s\n", save.path.c_str());
    return kExitOk;
}

}  // namespace host
