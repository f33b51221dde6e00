// The benchmark suite: every path lumxml offers (load, host walk, save, pull
// reader, writer), each beside the references it is measured against, run in
// one fixed order and summarised in one table of time ratios.
//
// A benchmark is named "<path>/<implementation>/<size>". The report compares
// the "lumxml" entry of a path with every other entry of the same path and
// size: ratio = lumxml's CPU time / the reference's CPU time (below 1 means
// lumxml is faster).
#pragma once

#include <cstdint>

#include <benchmark/benchmark.h>

namespace bench {

// The sizes of one run, set from the command line (see main.cpp).
struct Sizes {
    int64_t megabytes = 20;         // generated documents for load, save, pull reader
    int64_t writerElements = 1000000;  // elements the writers write
    int64_t walkChildren[3] = {10000, 100000, 1000000};  // children under one parent
    int64_t pullRssMegabytes = 100;  // the pull reader's peak-memory document
};

const Sizes& sizes();

// Registers `body` as "<path>/<implementation>". `goal` is the largest time
// ratio lumxml may have against this reference (0: reported only); it is
// printed beside the measured ratio, never asserted.
benchmark::internal::Benchmark* add(const char* path, const char* implementation,
                                    void (*body)(benchmark::State&), double goal = 0);

// One registration function per path, called by main in this order. The
// default-started Xerces load runs first: Xerces' DOM heap sizes are fixed
// by the first start in a process, and lumxml starts it with its own.
void registerLoad();
void registerWalk();
// Called by registerWalk: the walks over a nested document.
void registerNestedWalk();
void registerSave();
void registerPull();
void registerWriter();

}  // namespace bench
