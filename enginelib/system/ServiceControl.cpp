#include "system/ServiceControl.h"

#include "os/Time.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>

namespace {
constexpr const char* kComponent = "ServiceControl";
constexpr std::uint32_t kMask = logmask::Service;
constexpr std::uint32_t kShortestPause = 1000;
constexpr std::uint32_t kLongestPause = 10000;
} // namespace

ServiceControl::ServiceControl(const CStdStr& machine, const CStdStr& name, std::uint32_t access)
        : mMachine(machine), mServiceName(name) {
    LogScope scope(kComponent, "ServiceControl::ServiceControl", kMask);
    if (os::Error failed = os::OpenSCManager(machine, os::svc::ManagerAllAccess, mScm)) {
        scope.Log(0, "OpenSCManager failed with code %d", static_cast<int>(failed));
        return;
    }
    os::Error failed = os::OpenService(mScm, name, access, mService);
    if (failed == os::error::ServiceDoesNotExist) {
        scope.Log(0, "Service %s does not exist", name.c_str());
    } else if (failed != os::error::Success) {
        scope.Log(0, "OpenService of %s failed with code %d", name.c_str(),
                  static_cast<int>(failed));
    }
    mExists = failed == os::error::Success;
}

ServiceControl::~ServiceControl() {
    closeService();
    if (mScm != 0) {
        os::CloseServiceHandle(mScm);
    }
}

void ServiceControl::closeService() {
    if (mService != 0) {
        os::CloseServiceHandle(mService);
        mService = 0;
    }
}

bool ServiceControl::Create(const CStdStr& displayName, const CStdStr& binaryPath,
                            std::uint32_t access, std::uint32_t type, std::uint32_t startType,
                            std::uint32_t errorControl, const CStdStr& account) {
    LogScope scope(kComponent, "ServiceControl::Create", kMask);
    if (mExists) {
        scope.Log(0, "tried to create a service that already exists!");
        scope.SetResult(false);
        return false;
    }
    os::ServiceConfig config;
    config.displayName = displayName;
    config.binaryPath = binaryPath;
    config.serviceType = type;
    config.startType = startType;
    config.errorControl = errorControl;
    config.account = account;
    os::Error failed = mScm == 0 ? os::error::InvalidHandle
                                 : os::CreateService(mScm, mServiceName, config, access, mService);
    if (failed != os::error::Success) {
        scope.Log(0, "could not create service %s (Error %d)", mServiceName.c_str(),
                  static_cast<int>(failed));
        scope.SetResult(false);
        return false;
    }
    mExists = true;
    scope.SetResult(true);
    return true;
}

bool ServiceControl::SetDescription(const CStdStr& text) {
    LogScope scope(kComponent, "ServiceControl::SetDescription", kMask);
    os::Error failed = os::ChangeServiceConfig2(mService, text);
    if (failed != os::error::Success) {
        scope.Log(0, "ChangeServiceConfig2() failed with error code %d", static_cast<int>(failed));
    }
    scope.SetResult(failed == os::error::Success);
    return failed == os::error::Success;
}

bool ServiceControl::IsRunning() {
    LogScope scope(kComponent, "ServiceControl::IsRunning", kMask);
    os::ServiceStatus status;
    if (os::Error failed = os::QueryServiceStatus(mService, status)) {
        scope.Log(0, "QueryServiceStatus of %s failed with code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        scope.SetResult(false);
        return false;
    }
    bool running = status.currentState == os::svc::Running;
    scope.SetResult(running);
    return running;
}

std::uint32_t ServiceControl::waitOnService(std::uint32_t targetState) {
    LogScope scope(kComponent, "ServiceControl::waitOnService", kMask);
    os::ServiceStatus status;
    if (os::Error failed = os::QueryServiceStatus(mService, status)) {
        scope.Log(0, "QueryServiceStatus of %s failed with code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        return status.currentState;
    }
    std::uint32_t start = os::GetTickCount();
    std::uint32_t checkPoint = status.checkPoint;
    while (status.currentState != targetState) {
        std::uint32_t pause = std::clamp(status.waitHint / 10, kShortestPause, kLongestPause);
        os::Sleep(pause);
        if (os::QueryServiceStatus(mService, status) != os::error::Success ||
            status.currentState == targetState) {
            break;
        }
        if (status.checkPoint > checkPoint) {
            start = os::GetTickCount();
            checkPoint = status.checkPoint;
        } else if (os::GetTickCount() - start > pause) {
            break; // no progress since the last pause
        }
    }
    scope.SetResult(static_cast<int>(status.currentState));
    return status.currentState;
}

bool ServiceControl::Start() {
    LogScope scope(kComponent, "ServiceControl::Start", kMask);
    if (os::Error failed = os::StartService(mService)) {
        scope.Log(0, "StartService of %s returned %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        scope.SetResult(false);
        return false;
    }
    waitOnService(os::svc::Running);
    os::ServiceStatus status;
    if (os::Error failed = os::QueryServiceStatus(mService, status)) {
        scope.Log(0, "QueryServiceStatus of %s returned %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        scope.SetResult(false);
        return false;
    }
    bool running = status.currentState == os::svc::Running;
    if (running) {
        startStoppedDeps();
    }
    scope.SetResult(running);
    return running;
}

bool ServiceControl::Stop(bool withDependents) {
    LogScope scope(kComponent, "ServiceControl::Stop", kMask);
    if (withDependents) {
        stopDependents();
    }
    os::ServiceStatus status;
    if (os::Error failed = os::ControlService(mService, os::svc::ControlStop, status)) {
        scope.Log(0, "Failed to stop service %s. Returned error code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
    }
    waitOnService(os::svc::Stopped);
    if (os::Error failed = os::QueryServiceStatus(mService, status)) {
        scope.Log(0, "QueryServiceStatus of service %s failed with code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        scope.SetResult(false);
        return false;
    }
    bool stopped = status.currentState == os::svc::Stopped;
    scope.SetResult(stopped);
    return stopped;
}

void ServiceControl::stopDependents() {
    LogScope scope(kComponent, "ServiceControl::stopDependents", kMask);
    std::vector<os::ServiceEntry> active;
    if (os::Error failed = os::EnumDependentServices(mService, os::svc::StateActive, active)) {
        scope.Log(0, "EnumDependentServices of %s failed with code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
        return;
    }
    for (const os::ServiceEntry& entry : active) {
        ServiceControl dependent(mMachine, entry.serviceName, kControlAccess);
        if (dependent.Exists()) {
            dependent.Stop(false);
            mDependents.insert(entry.serviceName);
        }
    }
}

void ServiceControl::startStoppedDeps() {
    LogScope scope(kComponent, "ServiceControl::startStoppedDeps", kMask);
    for (const CStdStr& name : mDependents) {
        ServiceControl dependent(mMachine, name, kControlAccess);
        if (dependent.Exists()) {
            dependent.Start();
        }
    }
}

bool ServiceControl::Delete() {
    LogScope scope(kComponent, "ServiceControl::Delete", kMask);
    if (IsRunning()) {
        scope.Log(0, "this service is running, first we will stop it.");
        Stop(true);
        if (IsRunning()) {
            scope.Log(0, "not deleting service %s because it is still running",
                      mServiceName.c_str());
            scope.SetResult(false);
            return false;
        }
    }
    os::Error failed = os::DeleteService(mService);
    closeService();
    if (failed != os::error::Success) {
        scope.Log(0, "DeleteService of %s failed with code %d", mServiceName.c_str(),
                  static_cast<int>(failed));
    }
    scope.SetResult(failed == os::error::Success);
    return failed == os::error::Success;
}
