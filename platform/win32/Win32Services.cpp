// The service control group of the seam, forwarded to the service control manager.
#include "win32/Win32Api.h"

#include "os/Services.h"

namespace os {

namespace {

SC_HANDLE Native(ServiceHandle handle) {
    return reinterpret_cast<SC_HANDLE>(handle);
}

ServiceHandle Wrapped(SC_HANDLE handle) {
    return reinterpret_cast<ServiceHandle>(handle);
}

ServiceStatus FromNative(const SERVICE_STATUS& native) {
    ServiceStatus status;
    status.serviceType = native.dwServiceType;
    status.currentState = native.dwCurrentState;
    status.controlsAccepted = native.dwControlsAccepted;
    status.win32ExitCode = native.dwWin32ExitCode;
    status.serviceSpecificExitCode = native.dwServiceSpecificExitCode;
    status.checkPoint = native.dwCheckPoint;
    status.waitHint = native.dwWaitHint;
    return status;
}

} // namespace

Error OpenSCManager(const std::string& machineName, std::uint32_t access, ServiceHandle& manager) {
    SC_HANDLE handle =
            ::OpenSCManagerA(machineName.empty() ? nullptr : machineName.c_str(), nullptr, access);
    manager = Wrapped(handle);
    return handle != nullptr ? error::Success : ::GetLastError();
}

Error OpenService(ServiceHandle manager, const std::string& serviceName, std::uint32_t access,
                  ServiceHandle& service) {
    SC_HANDLE handle = ::OpenServiceA(Native(manager), serviceName.c_str(), access);
    service = Wrapped(handle);
    return handle != nullptr ? error::Success : ::GetLastError();
}

Error CreateService(ServiceHandle manager, const std::string& serviceName,
                    const ServiceConfig& config, std::uint32_t access, ServiceHandle& service) {
    // The dependencies as a double-null-terminated list.
    std::string dependencies;
    for (const std::string& name : config.dependencies) {
        dependencies += name;
        dependencies += '\0';
    }
    dependencies += '\0';
    SC_HANDLE handle = ::CreateServiceA(
            Native(manager), serviceName.c_str(),
            config.displayName.empty() ? nullptr : config.displayName.c_str(), access,
            config.serviceType, config.startType, config.errorControl, config.binaryPath.c_str(),
            nullptr, nullptr, config.dependencies.empty() ? nullptr : dependencies.c_str(),
            config.account.empty() ? nullptr : config.account.c_str(), nullptr);
    service = Wrapped(handle);
    return handle != nullptr ? error::Success : ::GetLastError();
}

Error ChangeServiceConfig2(ServiceHandle service, const std::string& description) {
    SERVICE_DESCRIPTIONA text;
    text.lpDescription = const_cast<char*>(description.c_str());
    return ::ChangeServiceConfig2A(Native(service), SERVICE_CONFIG_DESCRIPTION, &text)
                   ? error::Success
                   : ::GetLastError();
}

Error QueryServiceStatus(ServiceHandle service, ServiceStatus& status) {
    SERVICE_STATUS native{};
    if (!::QueryServiceStatus(Native(service), &native)) {
        status = ServiceStatus();
        return ::GetLastError();
    }
    status = FromNative(native);
    return error::Success;
}

Error StartService(ServiceHandle service) {
    return ::StartServiceA(Native(service), 0, nullptr) ? error::Success : ::GetLastError();
}

Error ControlService(ServiceHandle service, std::uint32_t control, ServiceStatus& status) {
    SERVICE_STATUS native{};
    BOOL done = ::ControlService(Native(service), control, &native);
    Error result = done ? error::Success : ::GetLastError();
    status = FromNative(native);
    return result;
}

Error EnumDependentServices(ServiceHandle service, std::uint32_t state,
                            std::vector<ServiceEntry>& services) {
    services.clear();
    DWORD needed = 0;
    DWORD count = 0;
    if (::EnumDependentServicesA(Native(service), state, nullptr, 0, &needed, &count)) {
        return error::Success; // none
    }
    DWORD failed = ::GetLastError();
    if (failed != ERROR_MORE_DATA) {
        return failed;
    }
    std::vector<BYTE> buffer(needed);
    auto* entries = reinterpret_cast<ENUM_SERVICE_STATUSA*>(buffer.data());
    if (!::EnumDependentServicesA(Native(service), state, entries, needed, &needed, &count)) {
        return ::GetLastError();
    }
    for (DWORD i = 0; i < count; ++i) {
        services.push_back({entries[i].lpServiceName != nullptr ? entries[i].lpServiceName : "",
                            entries[i].lpDisplayName != nullptr ? entries[i].lpDisplayName : "",
                            FromNative(entries[i].ServiceStatus)});
    }
    return error::Success;
}

Error DeleteService(ServiceHandle service) {
    return ::DeleteService(Native(service)) ? error::Success : ::GetLastError();
}

Error CloseServiceHandle(ServiceHandle handle) {
    return ::CloseServiceHandle(Native(handle)) ? error::Success : ::GetLastError();
}

} // namespace os
