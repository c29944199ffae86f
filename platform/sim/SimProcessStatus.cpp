// The process status group of the seam over the simulated machine: its processes are those of
// processes.ini.
#include "os/ProcessStatus.h"

#include "sim/MachineCall.h"
#include "sim/SystemLibraries.h"

namespace os {

using sim::MachineCall;

namespace {

constexpr Error kModNotFound = 126;

// The process as OpenProcess would give it: gone (87), or the system's own, which a program
// may not open (5).
Error OpenProcess(MachineCall& machine, std::uint32_t processId, const sim::SimProcess*& process) {
    process = machine->Processes().Find(processId);
    if (process == nullptr) {
        return error::InvalidParameter;
    }
    if (process->image.find_first_of("\\/") == std::string::npos) {
        return error::AccessDenied; // "System" and the idle process have no program file
    }
    return error::Success;
}

} // namespace

Error EnumProcesses(std::vector<std::uint32_t>& processIds) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasLibrary(machine->Identity(), "psapi.dll")) {
        return kModNotFound;
    }
    processIds.clear();
    for (const sim::SimProcess& process : machine->Processes().Processes()) {
        processIds.push_back(process.processId);
    }
    return error::Success;
}

Error GetModuleBaseName(std::uint32_t processId, std::string& name) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasLibrary(machine->Identity(), "psapi.dll")) {
        return kModNotFound;
    }
    const sim::SimProcess* process = nullptr;
    if (Error error = OpenProcess(machine, processId, process)) {
        return error;
    }
    std::string image = process->image;
    name = machine->ToAnsi(image.substr(image.find_last_of("\\/") + 1));
    return error::Success;
}

Error TerminateProcess(std::uint32_t processId, std::uint32_t) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    const sim::SimProcess* process = nullptr;
    if (Error error = OpenProcess(machine, processId, process)) {
        return error;
    }
    machine->Processes().Remove(processId);
    machine->ProcessesChanged();
    return error::Success;
}

} // namespace os
