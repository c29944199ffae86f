// The benchmarks of the engine's in-process work, on a simulated machine of their own.
#include "BenchMachine.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    try {
        BenchMachine machine;
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "engine_bench: %s\n", error.what());
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}
