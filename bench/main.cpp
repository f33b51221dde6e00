// The suite's entry point: registers every path in a fixed order, runs them
// with Google Benchmark's own flags, then prints one table of time ratios.
//
//   lumxml_bench [--lumxml_megabytes=N] [--lumxml_elements=N]
//                [--lumxml_children=A,B,C] [--lumxml_rss_megabytes=N]
//                [benchmark flags...]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "suite.h"

namespace bench {

namespace {

Sizes theSizes;

struct Entry {
    std::string path;
    std::string implementation;
    double goal = 0;
};

std::vector<Entry>& entries() {
    static std::vector<Entry> all;
    return all;
}

bool takeNumber(const char* argument, const char* flag, int64_t& value) {
    size_t length = std::strlen(flag);
    if (std::strncmp(argument, flag, length) != 0 || argument[length] != '=') return false;
    value = std::strtoll(argument + length + 1, nullptr, 10);
    return true;
}

bool takeChildren(const char* argument) {
    const char* flag = "--lumxml_children=";
    if (std::strncmp(argument, flag, std::strlen(flag)) != 0) return false;
    const char* cursor = argument + std::strlen(flag);
    for (int64_t& children : theSizes.walkChildren) {
        char* end = nullptr;
        children = std::strtoll(cursor, &end, 10);
        cursor = *end == ',' ? end + 1 : end;
    }
    return true;
}

// Takes the suite's own flags out of argv, leaving Google Benchmark's.
void takeSizes(int& argc, char** argv) {
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        bool ours = takeNumber(argument, "--lumxml_megabytes", theSizes.megabytes) ||
                    takeNumber(argument, "--lumxml_elements", theSizes.writerElements) ||
                    takeNumber(argument, "--lumxml_rss_megabytes", theSizes.pullRssMegabytes) ||
                    takeChildren(argument);
        if (!ours) argv[kept++] = argv[i];
    }
    argc = kept;
}

struct Result {
    double cpuSeconds = 0;  // per iteration
    double bytesPerSecond = 0;
    double itemsPerSecond = 0;
    bool failed = false;
    std::map<std::string, double> memory;  // counters in MB (names ending in "_mb")
};

bool endsWith(const std::string& text, const char* tail) {
    size_t length = std::strlen(tail);
    return text.size() >= length && text.compare(text.size() - length, length, tail) == 0;
}

// A run's name without the "/iterations:N" and "/repeats:N" that fixed
// counts add to it, so that it pairs with the runs of the same path.
std::string pairingName(std::string name) {
    for (const char* part : {"/iterations:", "/repeats:"}) {
        size_t at = name.find(part);
        if (at == std::string::npos) continue;
        size_t end = name.find('/', at + 1);
        name.erase(at, end == std::string::npos ? std::string::npos : end - at);
    }
    return name;
}

// Shows every run as the console reporter does and keeps it for the table.
// With --benchmark_repetitions the median of the repetitions is kept.
class CollectingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool median =
                run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type != Run::RT_Iteration && !median) continue;
            const std::string name = pairingName(run.run_name.str());
            if (!median && medians.count(name) != 0) continue;
            if (median) medians.insert(name);
            Result result;
            result.failed = run.error_occurred;
            if (run.iterations > 0)
                result.cpuSeconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
            auto counter = [&](const char* name) {
                auto found = run.counters.find(name);
                return found == run.counters.end() ? 0.0 : static_cast<double>(found->second);
            };
            result.bytesPerSecond = counter("bytes_per_second");
            result.itemsPerSecond = counter("items_per_second");
            for (const auto& [counterName, value] : run.counters)
                if (endsWith(counterName, "_mb"))
                    result.memory[counterName] = static_cast<double>(value);
            results[name] = result;
        }
    }
    std::map<std::string, Result> results;
    std::set<std::string> medians;
};

std::string rate(const Result& result) {
    char text[64];
    if (result.bytesPerSecond > 0)
        std::snprintf(text, sizeof text, "%.0f MB/s", result.bytesPerSecond / 1e6);
    else if (result.itemsPerSecond > 0)
        std::snprintf(text, sizeof text, "%.2f M/s", result.itemsPerSecond / 1e6);
    else
        std::snprintf(text, sizeof text, "-");
    return text;
}

// "<path>/<implementation>/<args...>": the args part of a run's name.
std::string argsOf(const std::string& name, const Entry& entry) {
    std::string prefix = entry.path + "/" + entry.implementation;
    if (name.compare(0, prefix.size(), prefix) != 0) return {};
    if (name.size() == prefix.size()) return "";
    if (name[prefix.size()] != '/') return {};
    return name.substr(prefix.size());
}

void printTable(const std::map<std::string, Result>& results) {
    std::printf("\n| Path | Size | lumxml | Reference | Reference speed | Time ratio | Goal |\n");
    std::printf("|---|---|---|---|---|---|---|\n");
    for (const Entry& lumxml : entries()) {
        if (lumxml.implementation != "lumxml") continue;
        for (const auto& [name, ours] : results) {
            std::string args = argsOf(name, lumxml);
            if (args.empty() && name != lumxml.path + "/lumxml") continue;
            for (const Entry& reference : entries()) {
                if (reference.path != lumxml.path || reference.implementation == "lumxml")
                    continue;
                auto theirs =
                    results.find(reference.path + "/" + reference.implementation + args);
                if (theirs == results.end()) continue;
                std::string ratio = "-";
                std::string verdict = "-";
                if (!ours.failed && !theirs->second.failed && theirs->second.cpuSeconds > 0) {
                    double value = ours.cpuSeconds / theirs->second.cpuSeconds;
                    char text[32];
                    std::snprintf(text, sizeof text, "%.2f", value);
                    ratio = text;
                    if (reference.goal > 0) {
                        std::snprintf(text, sizeof text, "%s %.2f",
                                      value <= reference.goal ? "met, <=" : "MISSED, <=",
                                      reference.goal);
                        verdict = text;
                    }
                }
                std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", lumxml.path.c_str(),
                            args.empty() ? "-" : args.c_str() + 1, rate(ours).c_str(),
                            reference.implementation.c_str(), rate(theirs->second).c_str(),
                            ratio.c_str(), verdict.c_str());
            }
        }
    }
    std::printf("\n| Run | Memory counter | MB |\n|---|---|---|\n");
    for (const auto& [name, result] : results)
        for (const auto& [counterName, value] : result.memory)
            std::printf("| %s | %s | %.2f |\n", name.c_str(), counterName.c_str(), value);
}

}  // namespace

const Sizes& sizes() { return theSizes; }

benchmark::internal::Benchmark* add(const char* path, const char* implementation,
                                    void (*body)(benchmark::State&), double goal) {
    entries().push_back({path, implementation, goal});
    std::string name = std::string(path) + "/" + implementation;
    return benchmark::RegisterBenchmark(name.c_str(), body);
}

}  // namespace bench

int main(int argc, char** argv) {
    bench::takeSizes(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::registerLoad();
    bench::registerWalk();
    bench::registerSave();
    bench::registerPull();
    bench::registerWriter();
    bench::CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bench::printTable(reporter.results);
    benchmark::Shutdown();
    return 0;
}
