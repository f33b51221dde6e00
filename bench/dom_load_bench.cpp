// Loading documents through lumDocLoad, as a host does, on the same
// catalogues as the Xerces-C and libxml2 baselines.
#include <cstdlib>
#include <cstring>
#include <string>

#include <benchmark/benchmark.h>

#include "documents.h"
#include "lumxml.h"

namespace {

struct Call {
    char error[257] = {0};
    int32_t code = 0;
};

void* load(const std::string& text) {
    Call call;
    void* document = nullptr;
    lumInitDocument(&document, 1, call.error, &call.code);
    char encoding[257];
    lumDocLoad(&document, 0, 1, encoding, nullptr, text.data(),
               static_cast<uint32_t>(text.size()), nullptr, nullptr, 0, nullptr, call.error,
               &call.code);
    return document;
}

void LumxmlDomLoad(benchmark::State& state) {
    bench::startLibrary();
    const std::string& text = bench::cachedCatalogue(state.range(0));
    for (auto _ : state) {
        void* document = load(text);
        Call call;
        lumDocDelete(document, call.error, &call.code);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

}  // namespace

BENCHMARK(LumxmlDomLoad)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond);
