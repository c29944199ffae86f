// The system information group of the seam: the machine's identity from machine.ini.
#include "os/SystemInfo.h"

#include "sim/MachineCall.h"

namespace os {

using sim::MachineCall;

Error GetVersionEx(std::uint32_t structSize, OsVersionInfo& info) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    const sim::MachineIdentity& id = machine->Identity();
    if (structSize != versioninfo::ExtendedSize && structSize != versioninfo::BasicSize) {
        return error::InsufficientBuffer;
    }
    // The extended structure came with NT 4 Service Pack 6; Windows 9x never knew it.
    bool extendedKnown = id.IsNT() && (id.majorVersion > 4 || id.servicePackMajor >= 6);
    if (structSize == versioninfo::ExtendedSize && !extendedKnown) {
        return error::InvalidParameter;
    }
    info = OsVersionInfo();
    info.majorVersion = id.majorVersion;
    info.minorVersion = id.minorVersion;
    // Windows 9x keeps the version in the high word of the build number.
    info.buildNumber = id.IsNT()
                               ? id.buildNumber
                               : (id.majorVersion << 24) | (id.minorVersion << 16) | id.buildNumber;
    info.platformId = id.platformId;
    info.csdVersion = machine->ToAnsi(id.csdVersion);
    if (structSize == versioninfo::ExtendedSize) {
        info.servicePackMajor = id.servicePackMajor;
        info.servicePackMinor = id.servicePackMinor;
        info.productType = static_cast<std::uint8_t>(id.productType);
        info.suiteMask = 0x100; // VER_SUITE_SINGLEUSERTS
    }
    return error::Success;
}

void GetSystemInfo(SystemInfo& info) {
    MachineCall machine;
    info = SystemInfo();
    if (machine) {
        info.processorArchitecture = machine->Identity().processorArchitecture;
    }
}

Error GetPhysicalMemory(std::uint64_t& totalBytes) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    totalBytes = machine->Identity().memoryMB * 1024ULL * 1024ULL;
    return error::Success;
}

} // namespace os
