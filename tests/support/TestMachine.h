// A place for a test to work in. On the simulated build it is a fresh simulated machine of a
// given preset, made the machine of the process; on Windows (and under Wine) it is a scratch
// folder in the real temporary folder. Either way `Scratch()` is an empty folder, named as the
// system names it.
#pragma once

#include <cstdint>
#include <string>

class TestMachine {
public:
    explicit TestMachine(const std::string& preset = "win7-x64", int servicePack = -1);
    ~TestMachine();
    TestMachine(const TestMachine&) = delete;
    TestMachine& operator=(const TestMachine&) = delete;

    // A Windows path of an empty folder for the test's files.
    const std::string& Scratch() const { return mScratch; }
    std::string Path(const std::string& name) const { return mScratch + "\\" + name; }
    // The host folder of the simulated machine; empty on a real system.
    const std::string& HostDir() const { return mHostDir; }
    bool IsSimulated() const { return !mHostDir.empty(); }

    // Files through the seam, so that both builds write them the same way.
    static bool WriteFile(const std::string& path, const std::string& bytes);
    static std::string ReadFile(const std::string& path);
    static bool Exists(const std::string& path);
    // Writes a file of the scratch folder; its path. A failed write fails the test.
    std::string WriteScratch(const std::string& name, const std::string& bytes) const;

    // Makes another simulated machine in a host folder (sim build only); the folder is removed
    // with this object.
    std::string MakeOtherMachine(const std::string& name, const std::string& preset);

private:
    void removeTree(const std::string& path);

    std::string mHostDir;
    std::string mScratch;
};
