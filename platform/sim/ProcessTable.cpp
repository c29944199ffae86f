#include "sim/ProcessTable.h"

#include "sim/IniText.h"
#include "sim/Text.h"

#include <algorithm>
#include <cstdlib>

namespace sim {

void ProcessTable::Read(const IniText& ini) {
    mProcesses.clear();
    for (const IniText::Section& section : ini.Sections()) {
        SimProcess process;
        try {
            process.processId = static_cast<std::uint32_t>(std::stoul(section.name));
        } catch (...) {
            continue; // not a process id
        }
        for (const IniText::Entry& entry : section.entries) {
            if (EqualsNoCase(entry.key, "Image")) {
                process.image = entry.value;
            } else if (EqualsNoCase(entry.key, "Parent")) {
                process.parentProcessId =
                        static_cast<std::uint32_t>(std::strtoul(entry.value.c_str(), nullptr, 10));
            } else if (EqualsNoCase(entry.key, "Window")) {
                process.windows.push_back({entry.value, true});
            } else if (EqualsNoCase(entry.key, "HiddenWindow")) {
                process.windows.push_back({entry.value, false});
            }
        }
        mNextId = std::max(mNextId, process.processId + 4);
        mProcesses.push_back(process);
    }
}

void ProcessTable::Write(IniText& ini) const {
    for (const SimProcess& process : mProcesses) {
        IniText::Section& section = ini.GetOrAddSection(std::to_string(process.processId));
        section.entries.push_back({"Image", process.image});
        if (process.parentProcessId != 0) {
            section.entries.push_back({"Parent", std::to_string(process.parentProcessId)});
        }
        for (const SimWindow& window : process.windows) {
            section.entries.push_back({window.visible ? "Window" : "HiddenWindow", window.title});
        }
    }
}

std::uint32_t ProcessTable::Add(SimProcess process) {
    process.processId = mNextId;
    mNextId += 4;
    mProcesses.push_back(process);
    return process.processId;
}

bool ProcessTable::Remove(std::uint32_t processId) {
    auto found =
            std::find_if(mProcesses.begin(), mProcesses.end(),
                         [processId](const SimProcess& p) { return p.processId == processId; });
    if (found == mProcesses.end()) {
        return false;
    }
    mProcesses.erase(found);
    return true;
}

const SimProcess* ProcessTable::Find(std::uint32_t processId) const {
    for (const SimProcess& process : mProcesses) {
        if (process.processId == processId) {
            return &process;
        }
    }
    return nullptr;
}

} // namespace sim
