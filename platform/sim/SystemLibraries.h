// Which system libraries and functions each Windows version carries, for the engine's run-time
// lookups (LoadLibrary and GetProcAddress).
#pragma once

#include <string>

namespace sim {

struct MachineIdentity;

class SystemLibraries {
public:
    static bool HasLibrary(const MachineIdentity& id, const std::string& library);
    static bool HasFunction(const MachineIdentity& id, const std::string& library,
                            const std::string& function);
};

} // namespace sim
