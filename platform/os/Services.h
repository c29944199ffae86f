// Service control group of the platform seam (the service control manager of advapi32). Handles
// are plain numbers, 0 for none; every handle that an Open or Create gives is closed with
// CloseServiceHandle. A machine name of "" or "\\NAME" as Windows takes it.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

using ServiceHandle = std::uintptr_t;

namespace svc {
// dwCurrentState
constexpr std::uint32_t Stopped = 1;
constexpr std::uint32_t StartPending = 2;
constexpr std::uint32_t StopPending = 3;
constexpr std::uint32_t Running = 4;
// ControlService
constexpr std::uint32_t ControlStop = 1;
// dwControlsAccepted
constexpr std::uint32_t AcceptStop = 1;
// EnumDependentServices
constexpr std::uint32_t StateActive = 1;
constexpr std::uint32_t StateInactive = 2;
constexpr std::uint32_t StateAll = 3;
// dwServiceType
constexpr std::uint32_t KernelDriver = 0x1;
constexpr std::uint32_t Win32OwnProcess = 0x10;
constexpr std::uint32_t Win32ShareProcess = 0x20;
// dwStartType
constexpr std::uint32_t AutoStart = 2;
constexpr std::uint32_t DemandStart = 3;
constexpr std::uint32_t Disabled = 4;
// dwErrorControl
constexpr std::uint32_t ErrorNormal = 1;
// Access rights of the manager and of a service.
constexpr std::uint32_t ManagerConnect = 0x1;
constexpr std::uint32_t ManagerCreateService = 0x2;
constexpr std::uint32_t ManagerEnumerate = 0x4;
constexpr std::uint32_t ManagerAllAccess = 0xF003F;
constexpr std::uint32_t QueryConfig = 0x1;
constexpr std::uint32_t ChangeConfig = 0x2;
constexpr std::uint32_t QueryStatus = 0x4;
constexpr std::uint32_t EnumerateDependents = 0x8;
constexpr std::uint32_t Start = 0x10;
constexpr std::uint32_t Stop = 0x20;
constexpr std::uint32_t Delete = 0x10000;
constexpr std::uint32_t AllAccess = 0xF01FF;
} // namespace svc

namespace error {
constexpr Error CallNotImplemented = 120;
constexpr Error DependentServicesRunning = 1051;
constexpr Error InvalidServiceControl = 1052;
constexpr Error ServiceRequestTimeout = 1053;
constexpr Error ServiceAlreadyRunning = 1056;
constexpr Error ServiceDisabled = 1058;
constexpr Error ServiceNotActive = 1062;
constexpr Error ServiceDependencyFail = 1068;
constexpr Error ServiceMarkedForDelete = 1072;
constexpr Error ServiceExists = 1073;
constexpr Error DuplicateServiceName = 1078;
constexpr Error RpcServerUnavailable = 1722;
} // namespace error

// SERVICE_STATUS.
struct ServiceStatus {
    std::uint32_t serviceType = 0;
    std::uint32_t currentState = 0;
    std::uint32_t controlsAccepted = 0;
    std::uint32_t win32ExitCode = 0;
    std::uint32_t serviceSpecificExitCode = 0;
    std::uint32_t checkPoint = 0;
    std::uint32_t waitHint = 0;
};

// What CreateService takes beyond the name.
struct ServiceConfig {
    std::string displayName;
    std::string binaryPath;
    std::uint32_t serviceType = svc::Win32OwnProcess;
    std::uint32_t startType = svc::DemandStart;
    std::uint32_t errorControl = svc::ErrorNormal;
    std::string account; // empty: LocalSystem
    std::vector<std::string> dependencies;
};

// ENUM_SERVICE_STATUS.
struct ServiceEntry {
    std::string serviceName;
    std::string displayName;
    ServiceStatus status;
};

Error OpenSCManager(const std::string& machineName, std::uint32_t access, ServiceHandle& manager);
Error OpenService(ServiceHandle manager, const std::string& serviceName, std::uint32_t access,
                  ServiceHandle& service);
Error CreateService(ServiceHandle manager, const std::string& serviceName,
                    const ServiceConfig& config, std::uint32_t access, ServiceHandle& service);
// ChangeServiceConfig2 with SERVICE_CONFIG_DESCRIPTION.
Error ChangeServiceConfig2(ServiceHandle service, const std::string& description);
Error QueryServiceStatus(ServiceHandle service, ServiceStatus& status);
// StartService without arguments.
Error StartService(ServiceHandle service);
Error ControlService(ServiceHandle service, std::uint32_t control, ServiceStatus& status);
// The services that depend on this one, directly or not, in the order to stop them.
Error EnumDependentServices(ServiceHandle service, std::uint32_t state,
                            std::vector<ServiceEntry>& services);
Error DeleteService(ServiceHandle service);
Error CloseServiceHandle(ServiceHandle handle);

} // namespace os
