#include "sim/MachineIdentity.h"

#include "sim/IniText.h"

#include <cstdio>

namespace sim {

namespace {
const char* const kSection = "Machine";

std::string Hex4(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}
} // namespace

std::string MachineIdentity::SystemDirectory() const {
    return windowsDirectory + (IsNT() ? "\\system32" : "\\SYSTEM");
}

void MachineIdentity::Read(const IniText& ini) {
    auto text = [&](const char* key, const std::string& fallback) {
        return ini.GetOr(kSection, key, fallback);
    };
    auto number = [&](const char* key, long long fallback) {
        return ini.GetNumber(kSection, key, fallback);
    };
    preset = text("Preset", preset);
    description = text("Description", description);
    majorVersion = static_cast<std::uint32_t>(number("MajorVersion", majorVersion));
    minorVersion = static_cast<std::uint32_t>(number("MinorVersion", minorVersion));
    buildNumber = static_cast<std::uint32_t>(number("BuildNumber", buildNumber));
    platformId = static_cast<std::uint32_t>(number("PlatformId", platformId));
    productType = static_cast<std::uint32_t>(number("ProductType", productType));
    servicePackMajor = static_cast<std::uint16_t>(number("ServicePackMajor", servicePackMajor));
    servicePackMinor = static_cast<std::uint16_t>(number("ServicePackMinor", servicePackMinor));
    csdVersion = text("CSDVersion", csdVersion);
    processorArchitecture =
            static_cast<std::uint16_t>(number("ProcessorArchitecture", processorArchitecture));
    computerName = text("ComputerName", computerName);
    userName = text("UserName", userName);
    userSid = text("UserSid", userSid);
    windowsDirectory = text("WindowsDirectory", windowsDirectory);
    lcid = static_cast<std::uint32_t>(number("Locale", lcid));
    ansiCodePage = static_cast<std::uint32_t>(number("AnsiCodePage", ansiCodePage));
    oemCodePage = static_cast<std::uint32_t>(number("OemCodePage", oemCodePage));
    memoryMB = static_cast<std::uint64_t>(number("MemoryMB", static_cast<long long>(memoryMB)));
    cpuMHz = static_cast<std::uint64_t>(number("CpuMHz", static_cast<long long>(cpuMHz)));
    freeDiskMB =
            static_cast<std::uint64_t>(number("FreeDiskMB", static_cast<long long>(freeDiskMB)));
    ipAddresses = text("IpAddresses", ipAddresses);
}

void MachineIdentity::Write(IniText& ini) const {
    auto set = [&](const char* key, const std::string& value) { ini.Set(kSection, key, value); };
    set("Preset", preset);
    set("Description", description);
    set("MajorVersion", std::to_string(majorVersion));
    set("MinorVersion", std::to_string(minorVersion));
    set("BuildNumber", std::to_string(buildNumber));
    set("PlatformId", std::to_string(platformId));
    set("ProductType", std::to_string(productType));
    set("ServicePackMajor", std::to_string(servicePackMajor));
    set("ServicePackMinor", std::to_string(servicePackMinor));
    set("CSDVersion", csdVersion);
    set("ProcessorArchitecture", std::to_string(processorArchitecture));
    set("ComputerName", computerName);
    set("UserName", userName);
    set("UserSid", userSid);
    set("WindowsDirectory", windowsDirectory);
    set("Locale", Hex4(lcid));
    set("AnsiCodePage", std::to_string(ansiCodePage));
    set("OemCodePage", std::to_string(oemCodePage));
    set("MemoryMB", std::to_string(memoryMB));
    set("CpuMHz", std::to_string(cpuMHz));
    set("FreeDiskMB", std::to_string(freeDiskMB));
    set("IpAddresses", ipAddresses);
}

} // namespace sim
