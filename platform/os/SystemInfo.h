// System information group of the platform seam: version, processor, memory.
#pragma once

#include "os/OsTypes.h"

namespace os {

// OSVERSIONINFOEX. The fields after csdVersion are filled only by the extended form.
struct OsVersionInfo {
    std::uint32_t majorVersion = 0;
    std::uint32_t minorVersion = 0;
    std::uint32_t buildNumber = 0;
    std::uint32_t platformId = 0; // 1 Windows 9x, 2 NT
    std::string csdVersion;
    std::uint16_t servicePackMajor = 0;
    std::uint16_t servicePackMinor = 0;
    std::uint16_t suiteMask = 0;
    std::uint8_t productType = 0; // 1 workstation, 2 domain controller, 3 server
};

namespace versioninfo {
constexpr std::uint32_t ExtendedSize = 156; // sizeof(OSVERSIONINFOEXA)
constexpr std::uint32_t BasicSize = 148;    // sizeof(OSVERSIONINFOA)
} // namespace versioninfo

// GetVersionEx with a structure of `structSize` bytes: the extended form fails on systems that
// predate it.
Error GetVersionEx(std::uint32_t structSize, OsVersionInfo& info);

struct SystemInfo {
    std::uint16_t processorArchitecture = 0; // 0 x86, 9 AMD64
    std::uint32_t numberOfProcessors = 1;
    std::uint32_t pageSize = 4096;
};

void GetSystemInfo(SystemInfo& info);

// GlobalMemoryStatusEx: the physical memory in bytes.
Error GetPhysicalMemory(std::uint64_t& totalBytes);

} // namespace os
