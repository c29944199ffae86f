// The system information group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/SystemInfo.h"

namespace os {

Error GetVersionEx(std::uint32_t structSize, OsVersionInfo& info) {
    OSVERSIONINFOEXA version{};
    version.dwOSVersionInfoSize = structSize;
    // GetVersionEx is deprecated but is the very call whose answer the engine classifies.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    BOOL ok = ::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version));
#pragma GCC diagnostic pop
    if (!ok) {
        return ::GetLastError();
    }
    info = OsVersionInfo();
    info.majorVersion = version.dwMajorVersion;
    info.minorVersion = version.dwMinorVersion;
    info.buildNumber = version.dwBuildNumber;
    info.platformId = version.dwPlatformId;
    info.csdVersion = version.szCSDVersion;
    if (structSize == versioninfo::ExtendedSize) {
        info.servicePackMajor = version.wServicePackMajor;
        info.servicePackMinor = version.wServicePackMinor;
        info.suiteMask = version.wSuiteMask;
        info.productType = version.wProductType;
    }
    return error::Success;
}

void GetSystemInfo(SystemInfo& info) {
    SYSTEM_INFO system;
    ::GetSystemInfo(&system);
    info.processorArchitecture = system.wProcessorArchitecture;
    info.numberOfProcessors = system.dwNumberOfProcessors;
    info.pageSize = system.dwPageSize;
}

Error GetPhysicalMemory(std::uint64_t& totalBytes) {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (!::GlobalMemoryStatusEx(&status)) {
        return ::GetLastError();
    }
    totalBytes = status.ullTotalPhys;
    return error::Success;
}

} // namespace os
