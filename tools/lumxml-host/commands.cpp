#include "commands.h"

namespace host {

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", "info [--codepage NAME]",
         "Load the library, count its exports and initialise it with a code page "
         "(default UTF-8).",
         runInfo},
        {"write", "write [--formatted] [--strict] [--fragment] [--encoding E] [--out PATH|-]",
         "Write a sample order document through the SAX writer commands.", runWrite},
    };
    return table;
}

}  // namespace host
