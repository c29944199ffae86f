// The service control group of the seam over the simulated machine's services.ini. Starts and
// stops are pending for a while on the machine's clock, as on Windows, so that a caller's wait
// loop sees check points and wait hints; faults.ini makes a service hang, refuse to start or
// refuse to stop.
#include "os/Services.h"

#include "sim/MachineCall.h"
#include "sim/SimClock.h"
#include "sim/Text.h"

#include <map>

namespace os {

namespace {

constexpr std::uint32_t kCheckPointStep = 500; // ms of pending state per check point

struct ServiceHandleEntry {
    std::string computer; // "" for this machine
    std::string service;  // "" for a handle of the manager
    std::uint32_t access = 0;
};

std::map<ServiceHandle, ServiceHandleEntry>& Handles() {
    static std::map<ServiceHandle, ServiceHandleEntry> handles;
    return handles;
}

ServiceHandle NewHandle(const ServiceHandleEntry& entry) {
    static ServiceHandle next = 0x5C0000;
    next += 4;
    Handles()[next] = entry;
    return next;
}

// The machine of a handle's computer; null when it cannot be reached any more.
sim::SimMachine* MachineOf(sim::SimMachine& local, const std::string& computer) {
    if (computer.empty()) {
        return &local;
    }
    Error ignored = error::Success;
    return local.Remote(computer, ignored);
}

std::uint64_t Now() {
    return sim::SimClock::Get().Elapsed();
}

bool IsSpooler(const sim::SimService& service) {
    return sim::EqualsNoCase(service.name, "Spooler");
}

void SpoolerFollows(sim::SimMachine& machine, const sim::SimService& service) {
    if (IsSpooler(service)) {
        bool answers = service.state == svc::Running;
        if (machine.Spooler().running != answers) {
            machine.Spooler().running = answers;
            machine.SpoolerChanged();
        }
    }
}

bool HeldByHandle(const std::string& computer, const std::string& name) {
    for (const auto& [handle, entry] : Handles()) {
        if (sim::EqualsNoCase(entry.service, name) && sim::EqualsNoCase(entry.computer, computer)) {
            return true;
        }
    }
    return false;
}

// A service marked for deletion goes once it is stopped and no handle holds it.
void RemoveIfDeleted(sim::SimMachine& machine, const std::string& computer,
                     const std::string& name) {
    sim::SimService* service = machine.Services().Find(name);
    if (service != nullptr && service->deletePending && service->state == svc::Stopped &&
        !HeldByHandle(computer, name)) {
        machine.Services().Remove(name);
        machine.ServicesChanged();
    }
}

// Brings a pending service to where the clock says it is. A change that began in another
// process (a later point of another clock) is over.
void Advance(sim::SimMachine& machine, sim::SimService& service) {
    if (!service.IsPending() ||
        machine.Faults().FaultOfService(service.name) == sim::ServiceFault::Hang) {
        return;
    }
    std::uint64_t now = Now();
    if (service.pendingSince <= now && now - service.pendingSince < service.startTime) {
        return;
    }
    service.state = service.state == svc::StartPending ? svc::Running : svc::Stopped;
    service.pendingSince = 0;
    machine.ServicesChanged();
    SpoolerFollows(machine, service);
}

void FillStatus(sim::SimMachine& machine, const sim::SimService& service, ServiceStatus& status) {
    status = ServiceStatus();
    status.serviceType = service.type;
    status.currentState = service.state;
    bool stoppable =
            machine.Faults().FaultOfService(service.name) != sim::ServiceFault::NoStop;
    status.controlsAccepted = service.state == svc::Running && stoppable ? svc::AcceptStop : 0;
    if (service.IsPending()) {
        bool hung = machine.Faults().FaultOfService(service.name) == sim::ServiceFault::Hang;
        std::uint64_t elapsed = Now() - service.pendingSince;
        status.checkPoint =
                hung ? 1 : 1 + static_cast<std::uint32_t>(elapsed / kCheckPointStep);
        status.waitHint = service.waitHint;
    }
}

// The service of a handle, with the right asked for. `machine` receives its machine.
Error Resolve(sim::MachineCall& call, ServiceHandle handle, std::uint32_t right,
              sim::SimMachine*& machine, sim::SimService*& service) {
    auto found = Handles().find(handle);
    if (!call || found == Handles().end() || found->second.service.empty()) {
        return error::InvalidHandle;
    }
    machine = MachineOf(*call, found->second.computer);
    service = machine == nullptr ? nullptr : machine->Services().Find(found->second.service);
    if (service == nullptr) {
        return error::InvalidHandle;
    }
    if ((found->second.access & right) != right) {
        return error::AccessDenied;
    }
    Advance(*machine, *service);
    return error::Success;
}

bool DependsOn(const sim::SimService& service, const std::string& name) {
    for (const std::string& dependency : service.dependencies) {
        if (sim::EqualsNoCase(dependency, name)) {
            return true;
        }
    }
    return false;
}

// Dependents of `name`, each after its own dependents: the order in which to stop them.
void CollectDependents(sim::SimMachine& machine, const std::string& name,
                       std::vector<sim::SimService*>& out, int depth = 0) {
    if (depth > 32) {
        return; // a cycle written by hand
    }
    for (sim::SimService& service : machine.Services().services) {
        if (!DependsOn(service, name)) {
            continue;
        }
        CollectDependents(machine, service.name, out, depth + 1);
        bool known = false;
        for (sim::SimService* listed : out) {
            known = known || listed == &service;
        }
        if (!known) {
            out.push_back(&service);
        }
    }
}

// Starts what a service needs first, at once: the manager waits for them before it answers.
Error StartDependencies(sim::SimMachine& machine, sim::SimService& service, int depth = 0) {
    for (const std::string& name : service.dependencies) {
        sim::SimService* dependency = machine.Services().Find(name);
        if (dependency == nullptr || depth > 32) {
            return error::ServiceDependencyFail;
        }
        Advance(machine, *dependency);
        if (dependency->state == svc::Running) {
            continue;
        }
        if (dependency->startType == svc::Disabled || dependency->deletePending ||
            machine.Faults().FaultOfService(dependency->name) != sim::ServiceFault::None ||
            StartDependencies(machine, *dependency, depth + 1) != error::Success) {
            return error::ServiceDependencyFail;
        }
        dependency->state = svc::Running;
        machine.ServicesChanged();
        SpoolerFollows(machine, *dependency);
    }
    return error::Success;
}

} // namespace

Error OpenSCManager(const std::string& machineName, std::uint32_t access, ServiceHandle& manager) {
    manager = 0;
    sim::MachineCall call;
    if (!call) {
        return error::RpcServerUnavailable;
    }
    std::string computer = machineName;
    while (!computer.empty() && computer[0] == '\\') {
        computer.erase(0, 1);
    }
    Error reach = error::Success;
    sim::SimMachine* target = computer.empty() ? &*call : call->Remote(computer, reach);
    if (target == nullptr) {
        return error::RpcServerUnavailable;
    }
    if (!target->Identity().IsNT()) {
        return error::CallNotImplemented;
    }
    manager = NewHandle({target == &*call ? std::string() : computer, std::string(), access});
    return error::Success;
}

Error OpenService(ServiceHandle manager, const std::string& serviceName, std::uint32_t access,
                  ServiceHandle& service) {
    service = 0;
    sim::MachineCall call;
    auto found = Handles().find(manager);
    if (!call || found == Handles().end() || !found->second.service.empty()) {
        return error::InvalidHandle;
    }
    if (serviceName.empty()) {
        return error::InvalidName;
    }
    sim::SimMachine* machine = MachineOf(*call, found->second.computer);
    const sim::SimService* known =
            machine == nullptr ? nullptr : machine->Services().Find(call->ToUtf8(serviceName));
    if (known == nullptr) {
        return error::ServiceDoesNotExist;
    }
    service = NewHandle({found->second.computer, known->name, access});
    return error::Success;
}

Error CreateService(ServiceHandle manager, const std::string& serviceName,
                    const ServiceConfig& config, std::uint32_t access, ServiceHandle& service) {
    service = 0;
    sim::MachineCall call;
    auto found = Handles().find(manager);
    if (!call || found == Handles().end() || !found->second.service.empty()) {
        return error::InvalidHandle;
    }
    if ((found->second.access & svc::ManagerCreateService) == 0) {
        return error::AccessDenied;
    }
    if (serviceName.empty() || serviceName.size() > 256 ||
        serviceName.find_first_of("/\\") != std::string::npos) {
        return error::InvalidName;
    }
    if (config.binaryPath.empty()) {
        return error::InvalidParameter;
    }
    sim::SimMachine* machine = MachineOf(*call, found->second.computer);
    if (machine == nullptr) {
        return error::RpcServerUnavailable;
    }
    std::string name = call->ToUtf8(serviceName);
    if (const sim::SimService* existing = machine->Services().Find(name)) {
        return existing->deletePending ? error::ServiceMarkedForDelete : error::ServiceExists;
    }
    sim::SimService created;
    created.name = name;
    created.displayName = config.displayName.empty() ? name : call->ToUtf8(config.displayName);
    // No name may be another service's display name, and no display name another's name.
    for (const sim::SimService& other : machine->Services().services) {
        if (sim::EqualsNoCase(other.displayName, created.displayName) ||
            sim::EqualsNoCase(other.name, created.displayName) ||
            sim::EqualsNoCase(other.displayName, name)) {
            return error::DuplicateServiceName;
        }
    }
    created.binaryPath = call->ToUtf8(config.binaryPath);
    created.type = config.serviceType;
    created.startType = config.startType;
    created.errorControl = config.errorControl;
    created.account = config.account.empty() ? "LocalSystem" : call->ToUtf8(config.account);
    for (const std::string& dependency : config.dependencies) {
        created.dependencies.push_back(call->ToUtf8(dependency));
    }
    machine->Services().services.push_back(created);
    machine->ServicesChanged();
    service = NewHandle({found->second.computer, name, access});
    return error::Success;
}

Error ChangeServiceConfig2(ServiceHandle handle, const std::string& description) {
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (Error failed = Resolve(call, handle, svc::ChangeConfig, machine, service)) {
        return failed;
    }
    if (service->deletePending) {
        return error::ServiceMarkedForDelete;
    }
    service->description = call->ToUtf8(description);
    machine->ServicesChanged();
    return error::Success;
}

Error QueryServiceStatus(ServiceHandle handle, ServiceStatus& status) {
    status = ServiceStatus();
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (Error failed = Resolve(call, handle, svc::QueryStatus, machine, service)) {
        return failed;
    }
    FillStatus(*machine, *service, status);
    return error::Success;
}

Error StartService(ServiceHandle handle) {
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (Error failed = Resolve(call, handle, svc::Start, machine, service)) {
        return failed;
    }
    if (service->deletePending) {
        return error::ServiceMarkedForDelete;
    }
    if (service->startType == svc::Disabled) {
        return error::ServiceDisabled;
    }
    if (service->state != svc::Stopped) {
        return error::ServiceAlreadyRunning;
    }
    if (Error failed = StartDependencies(*machine, *service)) {
        return failed;
    }
    if (machine->Faults().FaultOfService(service->name) == sim::ServiceFault::NoStart) {
        return error::ServiceRequestTimeout;
    }
    service->state = svc::StartPending;
    service->pendingSince = Now();
    machine->ServicesChanged();
    Advance(*machine, *service);
    return error::Success;
}

Error ControlService(ServiceHandle handle, std::uint32_t control, ServiceStatus& status) {
    status = ServiceStatus();
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (control != svc::ControlStop) {
        return error::InvalidServiceControl; // the engine sends no other control
    }
    if (Error failed = Resolve(call, handle, svc::Stop, machine, service)) {
        return failed;
    }
    if (service->state == svc::Stopped) {
        return error::ServiceNotActive;
    }
    if (service->IsPending()) {
        FillStatus(*machine, *service, status);
        return 1061; // ERROR_SERVICE_CANNOT_ACCEPT_CTRL
    }
    if (machine->Faults().FaultOfService(service->name) == sim::ServiceFault::NoStop) {
        FillStatus(*machine, *service, status);
        return error::InvalidServiceControl;
    }
    std::vector<sim::SimService*> dependents;
    CollectDependents(*machine, service->name, dependents);
    for (sim::SimService* dependent : dependents) {
        Advance(*machine, *dependent);
        if (dependent->state != svc::Stopped) {
            FillStatus(*machine, *service, status);
            return error::DependentServicesRunning;
        }
    }
    service->state = svc::StopPending;
    service->pendingSince = Now();
    machine->ServicesChanged();
    SpoolerFollows(*machine, *service);
    Advance(*machine, *service);
    FillStatus(*machine, *service, status);
    return error::Success;
}

Error EnumDependentServices(ServiceHandle handle, std::uint32_t state,
                            std::vector<ServiceEntry>& services) {
    services.clear();
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (Error failed = Resolve(call, handle, svc::EnumerateDependents, machine, service)) {
        return failed;
    }
    if (state == 0 || state > svc::StateAll) {
        return error::InvalidParameter;
    }
    std::vector<sim::SimService*> dependents;
    CollectDependents(*machine, service->name, dependents);
    for (sim::SimService* dependent : dependents) {
        Advance(*machine, *dependent);
        bool active = dependent->state != svc::Stopped;
        if ((active && (state & svc::StateActive) == 0) ||
            (!active && (state & svc::StateInactive) == 0)) {
            continue;
        }
        ServiceEntry entry;
        entry.serviceName = call->ToAnsi(dependent->name);
        entry.displayName = call->ToAnsi(dependent->displayName);
        FillStatus(*machine, *dependent, entry.status);
        services.push_back(entry);
    }
    return error::Success;
}

Error DeleteService(ServiceHandle handle) {
    sim::MachineCall call;
    sim::SimMachine* machine = nullptr;
    sim::SimService* service = nullptr;
    if (Error failed = Resolve(call, handle, svc::Delete, machine, service)) {
        return failed;
    }
    if (service->deletePending) {
        return error::ServiceMarkedForDelete;
    }
    service->deletePending = true;
    machine->ServicesChanged();
    return error::Success;
}

Error CloseServiceHandle(ServiceHandle handle) {
    sim::MachineCall call;
    auto found = Handles().find(handle);
    if (found == Handles().end()) {
        return error::InvalidHandle;
    }
    ServiceHandleEntry entry = found->second;
    Handles().erase(found);
    if (call && !entry.service.empty()) {
        if (sim::SimMachine* machine = MachineOf(*call, entry.computer)) {
            if (sim::SimService* service = machine->Services().Find(entry.service)) {
                Advance(*machine, *service);
            }
            RemoveIfDeleted(*machine, entry.computer, entry.service);
        }
    }
    return error::Success;
}

} // namespace os
