// Processes, windows and run-time libraries group of the platform seam.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

struct ProcessEntry {
    std::uint32_t processId = 0;
    std::uint32_t parentProcessId = 0;
    // The file name of the program; a full path on Windows 9x.
    std::string exeFile;
};

// CreateToolhelp32Snapshot of the processes, walked with Process32First and Process32Next.
Error CreateToolhelp32Snapshot(std::vector<ProcessEntry>& processes);

struct WindowEntry {
    std::uintptr_t handle = 0;
    std::uint32_t processId = 0;
    bool visible = false; // WS_VISIBLE, from GetWindowInfo
    std::string title;    // GetWindowTextA
};

// EnumWindows over the top-level windows, with GetWindowThreadProcessId, GetWindowInfo and
// GetWindowTextA of each.
void EnumWindows(std::vector<WindowEntry>& windows);

// LoadLibrary of a system library, and GetProcAddress of one of its functions: whether this
// system has them. Libraries and functions that only some versions of Windows carry are looked
// up this way before use.
bool CanLoadLibrary(const std::string& library);
bool HasProcedure(const std::string& library, const std::string& function);

// LoadLibrary of a host-name helper library by its path, GetProcAddress of its function
// ResolveHostName(const char* name, char* buffer, DWORD size, DWORD* needed), the call with a
// buffer of 32 characters and, when it answers 122 with a needed size above 0, once more with a
// buffer of that size plus 1; then FreeLibrary. Success means that the function was called: its
// own answer is in `answer` and its text in `resolved`. 126 (ERROR_MOD_NOT_FOUND) when the
// library cannot be loaded, 127 (ERROR_PROC_NOT_FOUND) when it has no such function.
Error CallResolveHostName(const std::string& library, const std::string& host,
                          std::uint32_t& answer, std::string& resolved);

} // namespace os
