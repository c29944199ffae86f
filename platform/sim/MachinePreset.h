// Fresh simulated machines of every Windows version from 95 to 8: identity, the standard folders
// of drive C:, the registry keys and values that programs read there, and the environment.
#pragma once

#include "sim/ProcessTable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

struct MachineIdentity;

class MachinePreset {
public:
    struct Options {
        int servicePack = -1; // -1: the newest service pack of that version
        std::uint32_t lcid = 0x0409;
        std::string computerName; // empty: derived from the preset name
        std::string userName = "User";
    };

    static const std::vector<std::string>& Names();
    static bool IsKnown(const std::string& name);
    // Highest service pack of a version (0 where there is none).
    static int MaxServicePack(const std::string& name);

    // Makes the machine in `hostDir`, which must be empty or not exist yet.
    static bool Create(const std::string& hostDir, const std::string& name, const Options& options,
                       std::string& why);
    static bool Create(const std::string& hostDir, const std::string& name, int servicePack,
                       std::string& why);

    // The programs that run on a machine of this identity that has just started.
    static ProcessTable StartupProcesses(const MachineIdentity& id);
};

} // namespace sim
