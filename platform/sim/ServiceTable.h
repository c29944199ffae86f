// The services of a simulated Windows NT machine: services.ini in the machine's folder, one
// section per service. Windows 9x machines have no such file, as they have no service manager.
//
//   [Spooler]
//   DisplayName=Print Spooler
//   BinaryPath=%SystemRoot%\system32\spoolsv.exe
//   Type=0x10                 ; SERVICE_WIN32_OWN_PROCESS
//   StartType=2               ; 2 automatic, 3 on demand, 4 disabled
//   ErrorControl=1
//   Account=LocalSystem
//   Description=Loads files to memory for later printing.
//   Dependencies=RPCSS,http   ; services that must run before this one
//   State=Running             ; Stopped, Running, StartPending, StopPending
//   StartTime=1500            ; optional: milliseconds a start or a stop takes (1500)
//   WaitHint=3000             ; optional: the wait hint reported while pending (3000)
//
// A start or a stop is pending for StartTime milliseconds of the machine's clock, moving its
// check point each 500 ms; `PendingSince` records when it began, and `DeletePending=1` a service
// that DeleteService marked, which goes once it is stopped and no handle holds it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

class IniText;

struct SimService {
    std::string name;
    std::string displayName;
    std::string binaryPath;
    std::uint32_t type = 0x10;
    std::uint32_t startType = 3;
    std::uint32_t errorControl = 1;
    std::string account = "LocalSystem";
    std::string description;
    std::vector<std::string> dependencies;
    std::uint32_t state = 1; // SERVICE_STOPPED
    std::uint64_t pendingSince = 0; // the clock's elapsed milliseconds when a change began
    std::uint32_t startTime = 1500;
    std::uint32_t waitHint = 3000;
    bool deletePending = false;

    bool IsPending() const { return state == 2 || state == 3; }
};

class ServiceTable {
public:
    static constexpr const char* kHeader =
            "The services of this machine, one section per service. State is Stopped,\n"
            "Running, StartPending or StopPending; Dependencies is a comma list of services.";

    void Read(const IniText& ini);
    void Write(IniText& ini) const;

    SimService* Find(const std::string& name);
    const SimService* Find(const std::string& name) const;
    void Remove(const std::string& name);

    std::vector<SimService> services;
};

} // namespace sim
