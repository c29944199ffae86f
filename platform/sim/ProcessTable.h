// The programs that run on a simulated machine, with their top-level windows: processes.ini in
// the machine's folder, one section per process id.
//
//   [1204]
//   Image=C:\Windows\explorer.exe
//   Parent=4
//   Window=Program Manager          ; a visible top-level window
//   HiddenWindow=DDE Server Window  ; one that is not visible
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

class IniText;

struct SimWindow {
    std::string title; // UTF-8
    bool visible = true;
};

struct SimProcess {
    std::uint32_t processId = 0;
    std::uint32_t parentProcessId = 0;
    std::string image; // the machine path of the program, UTF-8
    std::vector<SimWindow> windows;
};

class ProcessTable {
public:
    static constexpr const char* kHeader =
            "The programs that run on this machine, one section per process id.\nImage is the "
            "program, Window a visible top-level window, HiddenWindow one that is not.";

    void Read(const IniText& ini);
    void Write(IniText& ini) const;

    const std::vector<SimProcess>& Processes() const { return mProcesses; }
    std::uint32_t Add(SimProcess process);
    bool Remove(std::uint32_t processId);
    const SimProcess* Find(std::uint32_t processId) const;

private:
    std::vector<SimProcess> mProcesses;
    std::uint32_t mNextId = 2000;
};

} // namespace sim
