// The synchronisation group of the seam, forwarded to kernel32.
#include "win32/Win32Api.h"

#include "os/Sync.h"

namespace os {

Error CreateMutex(const std::string& name, MutexHandle& handle) {
    HANDLE mutex = ::CreateMutexA(nullptr, FALSE, name.c_str());
    if (mutex == nullptr) {
        return ::GetLastError();
    }
    handle.value = reinterpret_cast<std::uintptr_t>(mutex);
    return error::Success;
}

std::uint32_t WaitForSingleObject(MutexHandle handle, std::uint32_t milliseconds) {
    return ::WaitForSingleObject(reinterpret_cast<HANDLE>(handle.value), milliseconds);
}

Error ReleaseMutex(MutexHandle handle) {
    return ::ReleaseMutex(reinterpret_cast<HANDLE>(handle.value)) ? error::Success
                                                                   : ::GetLastError();
}

Error CloseHandle(MutexHandle handle) {
    return ::CloseHandle(reinterpret_cast<HANDLE>(handle.value)) ? error::Success
                                                                 : ::GetLastError();
}

} // namespace os
