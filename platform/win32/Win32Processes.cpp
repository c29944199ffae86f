// The processes, windows and run-time libraries group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/Processes.h"

namespace os {

namespace {

BOOL CALLBACK CollectWindow(HWND window, LPARAM context) {
    auto* windows = reinterpret_cast<std::vector<WindowEntry>*>(context);
    WindowEntry entry;
    entry.handle = reinterpret_cast<std::uintptr_t>(window);
    DWORD processId = 0;
    ::GetWindowThreadProcessId(window, &processId);
    entry.processId = processId;
    WINDOWINFO info{};
    info.cbSize = sizeof info;
    entry.visible = ::GetWindowInfo(window, &info) && (info.dwStyle & WS_VISIBLE) != 0;
    char title[1024] = {};
    ::GetWindowTextA(window, title, sizeof title);
    entry.title = title;
    windows->push_back(entry);
    return TRUE;
}

} // namespace

Error CreateToolhelp32Snapshot(std::vector<ProcessEntry>& processes) {
    processes.clear();
    HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return ::GetLastError();
    }
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = ::Process32First(snapshot, &entry); more;
         more = ::Process32Next(snapshot, &entry)) {
        processes.push_back({entry.th32ProcessID, entry.th32ParentProcessID, entry.szExeFile});
    }
    ::CloseHandle(snapshot);
    return error::Success;
}

void EnumWindows(std::vector<WindowEntry>& windows) {
    windows.clear();
    ::EnumWindows(CollectWindow, reinterpret_cast<LPARAM>(&windows));
}

bool CanLoadLibrary(const std::string& library) {
    HMODULE module = ::LoadLibraryA(library.c_str());
    if (module == nullptr) {
        return false;
    }
    ::FreeLibrary(module);
    return true;
}

bool HasProcedure(const std::string& library, const std::string& function) {
    HMODULE module = ::LoadLibraryA(library.c_str());
    if (module == nullptr) {
        return false;
    }
    bool found = ::GetProcAddress(module, function.c_str()) != nullptr;
    ::FreeLibrary(module);
    return found;
}

Error CallResolveHostName(const std::string& library, const std::string& host,
                          std::uint32_t& answer, std::string& resolved) {
    using ResolveFunction = DWORD(WINAPI*)(const char*, char*, DWORD, DWORD*);
    resolved.clear();
    HMODULE module = ::LoadLibraryA(library.c_str());
    if (module == nullptr) {
        return ERROR_MOD_NOT_FOUND;
    }
    auto resolve = reinterpret_cast<ResolveFunction>(
            reinterpret_cast<void*>(::GetProcAddress(module, "ResolveHostName")));
    if (resolve == nullptr) {
        ::FreeLibrary(module);
        return ERROR_PROC_NOT_FOUND;
    }
    std::string buffer(32, '\0');
    DWORD needed = 0;
    answer = resolve(host.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()), &needed);
    if (answer == ERROR_INSUFFICIENT_BUFFER && needed > 0) {
        buffer.assign(needed + 1, '\0');
        needed = 0;
        answer = resolve(host.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()), &needed);
    }
    if (answer == ERROR_SUCCESS) {
        resolved = buffer.c_str();
    }
    ::FreeLibrary(module);
    return error::Success;
}

} // namespace os
