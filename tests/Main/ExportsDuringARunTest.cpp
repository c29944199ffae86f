// A host polls the progress exports from its own thread while DoInstall runs on another, as a
// setup program does: the answers move during the run and end at the run's last title; the
// current units of a second run in the process go on from the first's.
#include "EngineExports.h"
#include "support/TestMachine.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>

namespace {

// The host path of the example package as the simulated machine sees it: drive Z: is "/".
std::string MachinePath(std::string host) {
    for (char& c : host) {
        c = c == '/' ? '\\' : c;
    }
    return "Z:" + host;
}

struct Sample {
    std::uint32_t total = 0;
    std::uint32_t current = 0;
    std::string title;
};

Sample Poll() {
    Sample sample;
    GetTotalUnits(&sample.total);
    GetCurrentUnits(&sample.current);
    char title[1000] = "";
    GetCurrentTitle(title);
    sample.title = title;
    return sample;
}

TEST(ExportsDuringARun, ProgressAnswersWhileTheInstallIsUnderWay) {
    TestMachine machine("xp");
    ::setenv("ENGINE_MACHINE", machine.HostDir().c_str(), 1);
    std::string application = MachinePath(EXAMPLE_PACKAGE "/install");
    SetWorkingDirA(application.c_str());
    std::string script = application + "\\setup.isf";

    // Current units only ever grow in a process: this run counts from what earlier ones left.
    const std::uint32_t before = Poll().current;
    std::atomic<bool> done{false};
    bool installed = false;
    std::thread worker([&] {
        installed = DoInstallA(script.c_str(), "", machine.Path("run.log").c_str());
        done = true;
    });
    std::set<std::string> titles;
    bool sawMidRun = false;
    while (!done) {
        Sample sample = Poll();
        titles.insert(sample.title);
        std::uint32_t counted = sample.current - before;
        sawMidRun = sawMidRun || (sample.total > 0 && counted > 0 && counted < sample.total);
        std::this_thread::yield();
    }
    worker.join();
    ASSERT_TRUE(installed) << TestMachine::ReadFile(machine.Path("run.log"));

    Sample last = Poll();
    EXPECT_GT(last.total, 0u);
    EXPECT_EQ(last.total, last.current - before) << "every unit of the run was reported";
    EXPECT_EQ("Installation complete", last.title);
    EXPECT_TRUE(sawMidRun) << "the units were seen between the start and the end";
    EXPECT_GE(titles.size(), 3u) << "the titles change as the run goes";
    SetWorkingDirA("");
}

} // namespace
