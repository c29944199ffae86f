// The commands of installcli that work on simulated machines themselves: making one, showing
// its state, reading its registry, restarting it. They use the simulated machine directly, not the
// engine.
#pragma once

#include "CommandLine.h"

#include <optional>
#include <string>

class MachineCommands {
public:
    // `installcli machine ...`: the exit code.
    static int Run(const CommandLine& line);

    // The machine that install, uninstall and validate use: --machine, else ENGINE_MACHINE,
    // else the default machine (made as win7-x64 when missing). Sets ENGINE_MACHINE for the
    // engine and says which machine it is.
    static std::string SelectMachine(const CommandLine& line);
    // A host path as the machine sees it, a Windows path with its "/" turned into "\\"; none
    // when the path lies where no drive of the machine reaches (Z: confined elsewhere).
    static std::optional<std::string> ToMachinePath(const std::string& machineDir,
                                                    const std::string& argument);
    // The folder of a script (a machine path) when it holds a Config folder, as a package's
    // install folder does; empty otherwise.
    static std::string PackageFolderOf(const std::string& machineDir, const std::string& script);
    // Whether a file (a machine path) exists on the machine.
    static bool Exists(const std::string& machineDir, const std::string& path);
    // Where the engine's debug log lands when the host names none.
    static std::string DefaultLogLocation(const std::string& machineDir,
                                          const std::string& workdir);

private:
    static int create(const CommandLine& line);
    static int show(const CommandLine& line);
    static int reg(const CommandLine& line);
    static int reboot(const CommandLine& line);
    static int services(const CommandLine& line);
};
