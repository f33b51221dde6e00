// lumxml-hostile: runs one path of lumxml over one file under the hardened
// settings (an expansion limit, no default entity resolution) and prints
// one line: outcome, seconds, and the peak resident memory above what the
// process used just before the call, in MB.
//
//   lumxml-hostile dom|sax|resave FILE LIMIT [ENTITY-DIRECTORY]
//
// LIMIT -1 leaves the limit out (the unhardened settings). `resave` loads,
// saves to memory, loads that and saves again, and says whether both saves
// are the same bytes. Linux only (it reads /proc).

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "lumxml.h"

namespace {

constexpr uint32_t kNoDefaultResolution = 4;

// The host's allocator for saved memory: plain malloc/realloc.
void* hostAlloc(uint32_t size, const char*, int32_t) { return std::malloc(size); }
void* hostRealloc(void* block, uint32_t size, const char*, int32_t) {
    return std::realloc(block, size);
}

double residentMegabytes() {
    long pages = 0, resident = 0;
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr) return 0;
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
    return static_cast<double>(resident) * 4096.0 / 1048576.0;
}

// The peak of this program's own memory: VmHWM belongs to the address
// space exec made, while getrusage's maximum also keeps the peak of the
// process this one was forked from.
double peakMegabytes() {
    std::FILE* status = std::fopen("/proc/self/status", "r");
    if (status == nullptr) return 0;
    char line[256];
    long kilobytes = 0;
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::sscanf(line, "VmHWM: %ld kB", &kilobytes) == 1) break;
    }
    std::fclose(status);
    return static_cast<double>(kilobytes) / 1024.0;
}

std::string oneLine(const char* text) {
    std::string line(text, strnlen(text, 512));
    for (char& c : line)
        if (c == '\n' || c == '\t' || c == '\r') c = ' ';
    return line;
}

struct Loaded {
    void* document = nullptr;
    int32_t code = 0;
    std::string message;
};

Loaded load(const char* file, const void* memory, uint32_t length, const int32_t* limit,
            const char* directory) {
    Loaded loaded;
    char error[512] = "";
    lumInitDocument(&loaded.document, 0, error, &loaded.code);
    const char* locations[3] = {directory, nullptr, nullptr};
    char encoding[300] = "";
    lumDocLoad(&loaded.document, kNoDefaultResolution, memory != nullptr ? 1 : 0, encoding, file,
               memory, length, nullptr, limit, 0, locations, error, &loaded.code);
    loaded.message = oneLine(error);
    return loaded;
}

// The saved bytes of a document (empty when the save failed).
std::string save(void* document) {
    void* memory = nullptr;
    uint32_t length = 0;
    char error[512] = "";
    int32_t code = 0;
    lumDocSave(&document, 1, 0, 0, 1, nullptr, nullptr, &memory, &length, 0, nullptr, error,
               &code);
    std::string bytes;
    if (code == 0 && memory != nullptr) bytes.assign(static_cast<const char*>(memory), length);
    std::free(memory);
    return bytes;
}

void deleteDocument(void* document) {
    char error[512] = "";
    int32_t code = 0;
    lumDocDelete(document, error, &code);
}

std::string runDom(const char* file, const int32_t* limit, const char* directory) {
    Loaded loaded = load(file, nullptr, 0, limit, directory);
    std::string outcome = "code " + std::to_string(loaded.code);
    if (loaded.code != 0) outcome += ": " + loaded.message;
    deleteDocument(loaded.document);
    return outcome;
}

std::string runResave(const char* file, const int32_t* limit, const char* directory) {
    Loaded first = load(file, nullptr, 0, limit, directory);
    if (first.code != 0) return "code " + std::to_string(first.code) + ": " + first.message;
    const std::string once = save(first.document);
    deleteDocument(first.document);
    Loaded second = load(nullptr, once.data(), static_cast<uint32_t>(once.size()), limit, directory);
    if (second.code != 0) return "reload code " + std::to_string(second.code) + ": " + second.message;
    const std::string twice = save(second.document);
    deleteDocument(second.document);
    return once == twice ? "code 0, saves identical" : "code 0, saves differ";
}

std::string runSax(const char* file, int32_t limit, const char* directory) {
    SaxParserInstance instance;
    std::memset(&instance, 0, sizeof instance);
    instance.flags = kNoDefaultResolution;
    instance.inputKind = 0;
    instance.fileName = file;
    instance.searchPath = directory;
    instance.entityExpansionLimit = limit;
    long events = 0, fatal = 0;
    std::string firstFatal;
    int32_t more = lumSAXParseFirst(&instance);
    while (more == 1) {
        if (const SaxEvent* event = instance.eventHead) {
            ++events;
            if (event->kind == 17 && fatal++ == 0 && event->arg1 != nullptr)
                firstFatal = oneLine(static_cast<const char*>(event->arg1));
        }
        more = lumSAXParseNext(&instance);
    }
    std::string outcome = std::to_string(events) + " events";
    if (fatal != 0) outcome += ", FatalError: " + firstFatal;
    if (instance.errorCode != 0)
        outcome += ", code " + std::to_string(instance.errorCode) + ": " + oneLine(instance.errorText);
    lumSAXDeleteParserInstance(&instance);
    return outcome;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: lumxml-hostile dom|sax|resave FILE LIMIT [DIRECTORY]\n");
        return 2;
    }
    const std::string path = argv[1];
    const char* file = argv[2];
    const int32_t limit = static_cast<int32_t>(std::strtol(argv[3], nullptr, 10));
    const char* directory = argc > 4 ? argv[4] : nullptr;
    char error[512] = "";
    int32_t code = 0;
    lumInitParser("UTF-8", error, &code);
    lumMemioInit(nullptr, hostAlloc, hostRealloc);

    const double before = residentMegabytes();
    const auto start = std::chrono::steady_clock::now();
    std::string outcome;
    if (path == "sax")
        outcome = runSax(file, limit, directory);
    else if (path == "resave")
        outcome = runResave(file, limit >= 0 ? &limit : nullptr, directory);
    else
        outcome = runDom(file, limit >= 0 ? &limit : nullptr, directory);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%.2f\t%.0f\t%s\n", seconds, peakMegabytes() - before, outcome.c_str());
    return 0;
}
