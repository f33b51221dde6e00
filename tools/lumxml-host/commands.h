// Subcommands of the demo host. Each takes the arguments after its name and
// answers the process exit status. A new subcommand lives in its own
// cmd_<name>.cpp and is registered with one line in commands.cpp.
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

// Shared by the subcommands.
// Reads "--name VALUE" at arguments[i]; true (and i moved on) when it was
// that option. A missing value sets `error`.
bool readOption(const Arguments& arguments, size_t& i, const char* name, std::string& value,
                bool& error);
// Calls lumInitParser as a host does and prints what it answered; false
// when the library reported an error.
bool initialise(HostLibrary& library, const std::string& codePage);

// The subcommands.
int runInfo(HostLibrary& library, const Arguments& arguments);
int runWrite(HostLibrary& library, const Arguments& arguments);
int runLoad(HostLibrary& library, const Arguments& arguments);
int runSax(HostLibrary& library, const Arguments& arguments);
int runSave(HostLibrary& library, const Arguments& arguments);

}  // namespace host
