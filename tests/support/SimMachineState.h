// Test access to the state of the simulated machine that the seam does not show: file locks
// injected through faults.ini, the operations waiting for the next start, and the machine's
// own folder. For the tests of the simulated build only.
#pragma once

#include "sim/MachineCall.h"
#include "sim/Text.h"
#include "support/TestMachine.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace simstate {

// Holds `path` ("sharing", "lock" or "image") as another program would, from now on.
inline void LockFile(const TestMachine& machine, const std::string& path, const std::string& kind) {
    std::string text;
    {
        std::ifstream in(machine.HostDir() + "/faults.ini");
        text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    if (text.find("[Files]") == std::string::npos) {
        text += "[Files]\n";
    }
    text += path + "=" + kind + "\n";
    std::ofstream(machine.HostDir() + "/faults.ini") << text;
    std::string why;
    sim::SimMachine::Activate(machine.HostDir(), why);
}

// Ends every hold of faults.ini, as when the programs that held the files have ended.
inline void UnlockAll(const TestMachine& machine) {
    std::ofstream(machine.HostDir() + "/faults.ini") << "";
    std::string why;
    sim::SimMachine::Activate(machine.HostDir(), why);
}

// The strings of PendingFileRenameOperations, in pairs of source and target (empty for a
// deletion), without the "\??\" in front.
inline std::vector<std::string> PendingOperations() {
    sim::MachineCall machine;
    std::vector<std::string> strings;
    const sim::RegKey* session = machine->Registry().Find(
            "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager");
    const sim::RegValue* value =
            session == nullptr ? nullptr : session->Value("PendingFileRenameOperations");
    if (value == nullptr) {
        return strings;
    }
    std::u16string current;
    for (size_t i = 0; i + 1 < value->data.size(); i += 2) {
        char16_t unit = static_cast<char16_t>(value->data[i] | (value->data[i + 1] << 8));
        if (unit != 0) {
            current += unit;
            continue;
        }
        std::string text = sim::Utf16ToUtf8(current);
        for (const char* prefix : {"\\??\\", "!\\??\\"}) {
            if (text.rfind(prefix, 0) == 0) {
                text = (prefix[0] == '!' ? "!" : "") + text.substr(std::string(prefix).size());
            }
        }
        strings.push_back(text);
        current.clear();
    }
    // The list closes with one more empty string.
    if (!strings.empty() && strings.back().empty() && strings.size() % 2 == 1) {
        strings.pop_back();
    }
    return strings;
}

} // namespace simstate
