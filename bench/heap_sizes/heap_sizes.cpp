// How Xerces' DOM heap sizes and lumxml's text gathering change the load of
// text dense with references. One process per measurement, because the
// first XMLPlatformUtils::Initialize of a process fixes the heap sizes:
//
//   lumxml_heap_sizes INITIAL MAX SUBALLOCATION WORDS [MEGABYTES] [--gather]
//
// INITIAL MAX SUBALLOCATION: the three sizes of Initialize (0 0 0: the
// plain Initialize() and its defaults). WORDS: words per paragraph, 8% of
// them references. --gather: lumxml's load parser instead of the stock one.
// Prints the load time and the peak resident memory.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <sys/resource.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "documents.h"
#include "dom/load/text_gathering_parser.h"

XERCES_CPP_NAMESPACE_USE

namespace {

long peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr,
                     "usage: lumxml_heap_sizes INITIAL MAX SUBALLOCATION WORDS [MEGABYTES] "
                     "[--gather]\n");
        return 2;
    }
    const size_t initial = std::strtoul(argv[1], nullptr, 0);
    const size_t maximum = std::strtoul(argv[2], nullptr, 0);
    const size_t subAllocation = std::strtoul(argv[3], nullptr, 0);
    const int words = std::atoi(argv[4]);
    const size_t megabytes = argc > 5 && argv[5][0] != '-' ? std::strtoul(argv[5], nullptr, 0) : 20;
    const bool gather = std::strcmp(argv[argc - 1], "--gather") == 0;
    if (initial == 0)
        XMLPlatformUtils::Initialize();
    else
        XMLPlatformUtils::Initialize(initial, maximum, subAllocation);
    const std::string text = bench::referenceDense(megabytes << 20, words);
    const long before = peakMegabytes();
    const auto start = std::chrono::steady_clock::now();
    {
        MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                 "memory");
        source.setCopyBufToStream(false);
        if (gather) {
            lumxml::TextGatheringParser parser;
            parser.setDoNamespaces(true);
            parser.parseGathering(source);
        } else {
            XercesDOMParser parser;
            parser.setDoNamespaces(true);
            parser.parse(source);
        }
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("sizes %#zx %#zx %#zx, %d words, %s: %.3f s, peak %ld MB (%ld MB before)\n",
                initial, maximum, subAllocation, words, gather ? "gathering" : "stock", seconds,
                peakMegabytes(), before);
    XMLPlatformUtils::Terminate();
    return 0;
}
