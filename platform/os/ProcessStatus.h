// Process status group of the platform seam: the processes that run, through the process
// status library (psapi.dll, from Windows NT 4 on), and the end of a process.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

// EnumProcesses: the ids of every process. 126 (ERROR_MOD_NOT_FOUND) on a system without
// psapi.dll.
Error EnumProcesses(std::vector<std::uint32_t>& processIds);

// OpenProcess for querying and reading, GetModuleBaseName of the process's program, and
// CloseHandle: the program's file name without its folder ("explorer.exe"). A process that
// is gone gives 87, one that may not be opened (the system's own) 5.
Error GetModuleBaseName(std::uint32_t processId, std::string& name);

// OpenProcess for PROCESS_TERMINATE, TerminateProcess with the exit code, and CloseHandle.
Error TerminateProcess(std::uint32_t processId, std::uint32_t exitCode);

} // namespace os
