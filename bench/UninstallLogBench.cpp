// The uninstall log of a machine with many products installed: read when a run starts and
// written back when it ends, against reading and replacing the same bytes.
#include "BaselineRatio.h"
#include "BenchMachine.h"

#include "uninstall/ItemType.h"
#include "uninstall/UninstallLog.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

// A log of `items` file records, in components of 1,000, each under Install.
void MakeLog(int items) {
    UninstallLog log(UninstallLog::StartEmpty);
    log.SetProduct("BenchSuite");
    log.SetManufacturer("Tovar");
    const int perComponent = 1000;
    for (int first = 0; first < items; first += perComponent) {
        CStdStr component = CStdStr::Formatted("Component%03d", first / perComponent);
        log.AddComponent(component, UninstallLog::kRoot, false);
        for (int item = first; item < first + perComponent && item < items; ++item) {
            log.AddItem(itemtype::File, component,
                        CStdStr::Formatted("C:\\Program Files\\Bench Suite\\%s\\file%06d.dat",
                                           component.c_str(), item));
        }
    }
    if (!log.Commit()) {
        throw std::runtime_error("cannot write the uninstall log");
    }
}

void UninstallLogReadAndCommit(benchmark::State& state) {
    int items = static_cast<int>(state.range(0));
    MakeLog(items);
    std::string path = UninstallLog::GetLogPath();
    std::size_t size = BenchMachine::ReadFile(path).size();
    RunAgainstBaseline(
            state,
            [&] {
                std::string bytes = BenchMachine::ReadFile(path);
                benchmark::DoNotOptimize(BenchMachine::ReplaceFile(path, bytes));
            },
            [&] {
                UninstallLog log(UninstallLog::StartEmpty);
                log.SetProduct("BenchSuite");
                log.SetManufacturer("Tovar");
                benchmark::DoNotOptimize(log.ReadAllRelevant());
                benchmark::DoNotOptimize(log.Commit());
            });
    state.counters["bytes"] = static_cast<double>(size);
}

} // namespace

BENCHMARK(UninstallLogReadAndCommit)
        ->Arg(100000)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(5);
