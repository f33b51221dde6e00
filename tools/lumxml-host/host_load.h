// Loading a document the way a host runtime does: make an X-DOCUMENT with
// lumInitDocument, fill it with lumDocLoad, and keep what the library
// answered (message, code, encoding) exactly as it was received.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host_library.h"

namespace host {

struct LoadOptions {
    std::string file;
    bool validate = false;
    bool noNamespaces = false;
    bool hasLimit = false;
    int32_t limit = 0;
    std::string searchDirectories;
    std::string schemaLocation;
    std::string noNamespaceSchemaLocation;
};

struct LoadedDocument {
    void* cell = nullptr;
    int32_t code = 0;
    std::string message;
    std::string encoding;
};

// Reads the load options at arguments[i] ("--validate", "--limit N", ...);
// true (and i moved on) when it was one. A bad value sets `error`.
bool readLoadOption(const std::vector<std::string>& arguments, size_t& i, LoadOptions& options,
                    bool& error);

// The arguments of a subcommand that loads a file: FILE, --codepage and
// the load options. `extra`, when given, is offered every other argument
// first (with the index, which it may move on); it answers whether it took
// it and sets `error` for a bad value. False (after a message naming
// `command`) on a usage error.
using ExtraArgument =
    std::function<bool(const std::vector<std::string>& arguments, size_t& i, bool& error)>;
bool readLoadArguments(const char* command, const std::vector<std::string>& arguments,
                       std::string& codePage, LoadOptions& options,
                       const ExtraArgument& extra = nullptr);

// False when lumInitDocument failed (the document cell is then null).
bool loadLikeAHost(const Exports& x, const LoadOptions& options, LoadedDocument& loaded);
void deleteLikeAHost(const Exports& x, LoadedDocument& loaded);

// Codes after which a host gives up on the load (a warning, 8, is kept).
bool isFailingLoadCode(int32_t code);

}  // namespace host
