// Who the simulated machine is: the [Machine] section of machine.ini.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

class IniText;

struct MachineIdentity {
    std::string preset;
    std::string description;
    std::uint32_t majorVersion = 6;
    std::uint32_t minorVersion = 1;
    std::uint32_t buildNumber = 7601;
    std::uint32_t platformId = 2;  // 1 Windows 9x, 2 NT
    std::uint32_t productType = 1; // 1 workstation, 2 domain controller, 3 server
    std::uint16_t servicePackMajor = 0;
    std::uint16_t servicePackMinor = 0;
    std::string csdVersion;
    std::uint16_t processorArchitecture = 9; // 0 x86, 9 AMD64
    std::string computerName = "SIMPC";
    std::string userName = "User";
    std::string userSid;
    std::string windowsDirectory = "C:\\Windows";
    std::uint32_t lcid = 0x0409;
    std::uint32_t ansiCodePage = 1252;
    std::uint32_t oemCodePage = 437;
    std::uint64_t memoryMB = 2048;
    std::uint64_t cpuMHz = 2400;
    std::uint64_t freeDiskMB = 40960;
    std::string ipAddresses = "192.168.0.10"; // comma list, in the resolver's order

    bool IsNT() const { return platformId == 2; }
    bool Is64Bit() const { return processorArchitecture == 9; }
    // System32 on NT, SYSTEM on Windows 9x.
    std::string SystemDirectory() const;

    void Read(const IniText& ini);
    void Write(IniText& ini) const;
};

} // namespace sim
