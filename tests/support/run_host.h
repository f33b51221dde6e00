// Runs the demo host built beside the library, the way a shell would, and
// collects its standard output and exit status (POSIX only: these tests are
// not built for Windows, where the smoke runs cover the host).
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace lumtest {

struct HostRun {
    int status;
    std::string output;
};

inline std::string hostProgram() {
    return (std::filesystem::path(LUMXML_LIBRARY_PATH).parent_path() / "tools" / "lumxml-host" /
            "lumxml-host")
        .string();
}

// `arguments` after the library option; standard error is dropped.
inline HostRun runHost(const std::string& arguments) {
    std::string command = hostProgram() + " --library " + LUMXML_LIBRARY_PATH + " " + arguments +
                          " 2>/dev/null";
    HostRun run{-1, ""};
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char chunk[256];
    while (size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) run.output.append(chunk, got);
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace lumtest
