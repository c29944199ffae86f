// One Windows service through the service control manager: made, described, started and stopped
// with a wait for its state to settle, and deleted. A stop may take the services that depend on
// it along; a later start of the same object brings them back.
#pragma once

#include "core/CStdStr.h"
#include "os/Services.h"

#include <set>

class ServiceControl {
public:
    // Opens the manager of `machine` ("" for this one) and the service with `access`. A service
    // that does not exist leaves the object usable for Create.
    ServiceControl(const CStdStr& machine, const CStdStr& name, std::uint32_t access);
    virtual ~ServiceControl();
    ServiceControl(const ServiceControl&) = delete;
    ServiceControl& operator=(const ServiceControl&) = delete;

    bool Exists() const { return mExists; }
    const CStdStr& GetName() const { return mServiceName; }

    bool Create(const CStdStr& displayName, const CStdStr& binaryPath, std::uint32_t access,
                std::uint32_t type, std::uint32_t startType, std::uint32_t errorControl,
                const CStdStr& account);
    bool SetDescription(const CStdStr& text);
    bool IsRunning();
    bool Start();
    bool Stop(bool withDependents);
    bool Delete();

    // The access with which dependents are opened, and every object of the spooler.
    static constexpr std::uint32_t kControlAccess = 52;

protected:
    // Polls the state until it is `targetState` or the service stops making progress; the
    // state last seen.
    std::uint32_t waitOnService(std::uint32_t targetState);

private:
    void stopDependents();
    void startStoppedDeps();
    void closeService();

    CStdStr mMachine;
    CStdStr mServiceName;
    os::ServiceHandle mScm = 0;
    os::ServiceHandle mService = 0;
    std::set<CStdStr> mDependents; // stopped by this object, to be started again
    bool mExists = false;
};
