// Subcommands of the demo host. Each takes the arguments after its name and
// answers the process exit status.
#pragma once

#include <string>
#include <vector>

#include "host_library.h"

namespace host {

using Arguments = std::vector<std::string>;

struct Command {
    const char* name;
    const char* synopsis;
    const char* description;
    int (*run)(HostLibrary& library, const Arguments& arguments);
};

const std::vector<Command>& commands();

// Exit statuses.
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;   // the library reported a failure
constexpr int kExitUsage = 2;     // bad arguments
constexpr int kExitNoLibrary = 3; // the library could not be loaded

}  // namespace host
