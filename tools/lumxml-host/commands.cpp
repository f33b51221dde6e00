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
        {"load", "load FILE [--codepage NAME] [--validate] [--no-namespaces] [--limit N] [--search DIRS] [--schema LOC] [--noNamespaceSchema LOC]", "Load a document as a host does; print its encoding and the message and code received.", runLoad},
        {"sax", "sax FILE [--codepage NAME] [--no-namespaces] [--validate] [--limit N] [--search DIRS] [--schema LOC] [--count]", "Read a document with the pull reader and print each event as the host receives it (or, with --count, counts per event kind and the time taken).", runSax},
        {"save", "save FILE [--encoding NAME] [--to memory|stream|file PATH] [--char-escapes] [--attr-escapes] [--no-bom] [--codepage NAME] [load options]", "Load a document and save it as a host does; memory and stream bytes go to standard output.", runSave},
    };
    return table;
}

}  // namespace host
