#include "commands.h"

namespace host {

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", "info [--codepage NAME]",
         "Load the library, count its exports and initialise it with a code page "
         "(default UTF-8).",
         runInfo},
    };
    return table;
}

}  // namespace host
