// A restart of a simulated machine: what Windows does between shutting down and the desktop.
//
//   1. The file operations waiting in PendingFileRenameOperations (Windows NT) are carried out
//      in their order: a rename, a replacement ("!" before the target) or a deletion (no
//      target); the value goes.
//   2. On Windows 9x, the [Rename] section of WININIT.INI is carried out ("NUL=file" deletes,
//      "target=source" replaces) and the file becomes WININIT.BAK.
//   3. The RunOnce entries of HKLM that run a batch file (directly, or through command.com or
//      cmd.exe) are run as far as their del, erase, rmdir and rd lines go; other lines are
//      reported and left. Those entries go; entries that run programs stay, reported.
//   4. The programs of the machine end: the file locks of faults.ini go, and processes.ini
//      holds the programs of a fresh start.
#pragma once

#include <string>
#include <vector>

namespace sim {

class SimMachine;

class MachineRestart {
public:
    // Restarts the machine in memory and writes its state files. `report` receives one line
    // for each thing done or left undone. False, with the reason, when a state file cannot be
    // written.
    static bool Run(SimMachine& machine, std::vector<std::string>& report, std::string& why);
};

} // namespace sim
