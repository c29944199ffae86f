// Times a piece of work against a baseline in every iteration, one right after the other, so
// that both see the same machine. The benchmark's time is the work's wall time; the counters
// give both times of both and their ratios. On a machine shared with other work the ratio of
// processor times ("ratio") is the steady one; "wall_ratio" also counts waiting for the disk.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>

template <class Baseline, class Work>
void RunAgainstBaseline(benchmark::State& state, Baseline&& baseline, Work&& work) {
    using Clock = std::chrono::steady_clock;
    double baselineWall = 0;
    double workWall = 0;
    double baselineCpu = 0;
    double workCpu = 0;
    for (auto _ : state) {
        Clock::time_point start = Clock::now();
        std::clock_t startCpu = std::clock();
        baseline();
        Clock::time_point middle = Clock::now();
        std::clock_t middleCpu = std::clock();
        work();
        Clock::time_point end = Clock::now();
        std::clock_t endCpu = std::clock();
        double spent = std::chrono::duration<double>(end - middle).count();
        baselineWall += std::chrono::duration<double>(middle - start).count();
        workWall += spent;
        baselineCpu += static_cast<double>(middleCpu - startCpu) / CLOCKS_PER_SEC;
        workCpu += static_cast<double>(endCpu - middleCpu) / CLOCKS_PER_SEC;
        state.SetIterationTime(spent);
    }
    double perIteration = 1000.0 / static_cast<double>(state.iterations());
    state.counters["baseline_ms"] = benchmark::Counter(baselineWall * perIteration);
    state.counters["baseline_cpu_ms"] = benchmark::Counter(baselineCpu * perIteration);
    state.counters["work_cpu_ms"] = benchmark::Counter(workCpu * perIteration);
    state.counters["wall_ratio"] = benchmark::Counter(baselineWall > 0 ? workWall / baselineWall : 0);
    state.counters["ratio"] = benchmark::Counter(baselineCpu > 0 ? workCpu / baselineCpu : 0);
}
