// The processes, windows and run-time libraries group of the seam over the simulated machine.
#include "os/Processes.h"

#include "sim/MachineCall.h"
#include "sim/SystemLibraries.h"

namespace os {

using sim::MachineCall;

Error CreateToolhelp32Snapshot(std::vector<ProcessEntry>& processes) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasFunction(machine->Identity(), "kernel32",
                                           "CreateToolhelp32Snapshot")) {
        return 127; // ERROR_PROC_NOT_FOUND
    }
    processes.clear();
    bool fullPaths = !machine->Identity().IsNT();
    for (const sim::SimProcess& process : machine->Processes().Processes()) {
        ProcessEntry entry;
        entry.processId = process.processId;
        entry.parentProcessId = process.parentProcessId;
        std::string image = process.image;
        if (!fullPaths) {
            auto slash = image.find_last_of("\\/");
            image = slash == std::string::npos ? image : image.substr(slash + 1);
        }
        entry.exeFile = machine->ToAnsi(image);
        processes.push_back(entry);
    }
    return error::Success;
}

void EnumWindows(std::vector<WindowEntry>& windows) {
    windows.clear();
    MachineCall machine;
    if (!machine) {
        return;
    }
    std::uintptr_t handle = 0x10010;
    for (const sim::SimProcess& process : machine->Processes().Processes()) {
        for (const sim::SimWindow& window : process.windows) {
            windows.push_back(
                    {handle, process.processId, window.visible, machine->ToAnsi(window.title)});
            handle += 0x10;
        }
    }
}

bool CanLoadLibrary(const std::string& library) {
    MachineCall machine;
    return machine && sim::SystemLibraries::HasLibrary(machine->Identity(), library);
}

bool HasProcedure(const std::string& library, const std::string& function) {
    MachineCall machine;
    return machine && sim::SystemLibraries::HasFunction(machine->Identity(), library, function);
}

Error CallResolveHostName(const std::string& library, const std::string& host,
                          std::uint32_t& answer, std::string& resolved) {
    // A simulated machine runs no code of a Windows library: no helper library is loadable.
    (void)library;
    (void)host;
    answer = 0;
    resolved.clear();
    return 126; // ERROR_MOD_NOT_FOUND
}

} // namespace os
