// The process status group of the seam, forwarded to psapi.dll (loaded at run time) and
// kernel32.dll.
#include "win32/Win32Api.h"

#include "os/ProcessStatus.h"
#include "win32/Win32Library.h"

namespace os {

namespace {

using EnumFunction = BOOL(WINAPI*)(DWORD*, DWORD, DWORD*);
using BaseNameFunction = DWORD(WINAPI*)(HANDLE, HMODULE, LPSTR, DWORD);

constexpr const char* kPsapi = "psapi.dll";

} // namespace

Error EnumProcesses(std::vector<std::uint32_t>& processIds) {
    if (win32::LoadSystemLibrary(kPsapi) == nullptr) {
        return ERROR_MOD_NOT_FOUND;
    }
    auto enumerate = win32::GetProcedure<EnumFunction>(kPsapi, "EnumProcesses");
    if (enumerate == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    // The function does not say how many ids there are: a full buffer may have been too small.
    std::vector<DWORD> ids(1024);
    for (int round = 0; round < 8; ++round) {
        DWORD bytes = 0;
        if (!enumerate(ids.data(), static_cast<DWORD>(ids.size() * sizeof(DWORD)), &bytes)) {
            return ::GetLastError();
        }
        size_t count = bytes / sizeof(DWORD);
        if (count < ids.size()) {
            processIds.assign(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(count));
            return error::Success;
        }
        ids.resize(ids.size() * 2);
    }
    return error::InsufficientBuffer;
}

Error GetModuleBaseName(std::uint32_t processId, std::string& name) {
    if (win32::LoadSystemLibrary(kPsapi) == nullptr) {
        return ERROR_MOD_NOT_FOUND;
    }
    auto baseName = win32::GetProcedure<BaseNameFunction>(kPsapi, "GetModuleBaseNameA");
    if (baseName == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    HANDLE process = ::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId);
    if (process == nullptr) {
        return ::GetLastError();
    }
    char buffer[MAX_PATH] = {};
    DWORD length = baseName(process, nullptr, buffer, sizeof buffer);
    Error rc = length == 0 ? ::GetLastError() : error::Success;
    ::CloseHandle(process);
    if (rc == error::Success) {
        name.assign(buffer, length);
    }
    return rc;
}

Error TerminateProcess(std::uint32_t processId, std::uint32_t exitCode) {
    HANDLE process = ::OpenProcess(PROCESS_TERMINATE, FALSE, processId);
    if (process == nullptr) {
        return ::GetLastError();
    }
    Error rc = ::TerminateProcess(process, exitCode) ? error::Success : ::GetLastError();
    ::CloseHandle(process);
    return rc;
}

} // namespace os
