// lumxml saving a loaded document to host memory through lumDocSave, on
// the same catalogues as the Xerces-C (DOMLSSerializer) and libxml2
// (xmlDocDumpMemory) save baselines.
#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>

#include "documents.h"
#include "lumxml.h"

namespace {

void LumxmlSave(benchmark::State& state) {
    char errorBuffer[257] = {0};
    int32_t errorCode = 0;
    lumInitParser("UTF-8", errorBuffer, &errorCode);
    const std::string text = bench::catalogue(static_cast<size_t>(state.range(0)) << 20);
    void* cell = nullptr;
    lumInitDocument(&cell, 1, errorBuffer, &errorCode);
    char encoding[300] = {0};
    lumDocLoad(&cell, 0, 1, encoding, nullptr, text.data(), static_cast<uint32_t>(text.size()),
               nullptr, nullptr, 0, nullptr, errorBuffer, &errorCode);
    if (errorCode != 0) {
        state.SkipWithError(errorBuffer);
        return;
    }
    uint64_t written = 0;
    for (auto _ : state) {
        void* block = nullptr;
        uint32_t length = 0;
        lumDocSave(&cell, 1, 0, 0, 0, "UTF-8", nullptr, &block, &length, 0, nullptr, errorBuffer,
                   &errorCode);
        written += length;
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
    if (errorCode != 0) state.SkipWithError(errorBuffer);
    lumDocDelete(cell, errorBuffer, &errorCode);
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.counters["output_bytes"] = static_cast<double>(written) / state.iterations();
}

}  // namespace

BENCHMARK(LumxmlSave)->Arg(1)->Arg(16)->Arg(50)->Unit(benchmark::kMillisecond);
