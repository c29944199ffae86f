// The process group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/Process.h"

namespace os {

namespace {

const char kModuleAnchor = 0;

template <typename Call>
Error FetchText(std::string& out, Call call) {
    DWORD size = MAX_PATH;
    for (int round = 0; round < 6; ++round) {
        std::string buffer(size, '\0');
        DWORD length = call(buffer.data(), size);
        if (length == 0) {
            DWORD error = ::GetLastError();
            return error != 0 ? error : error::FileNotFound;
        }
        if (length < size) {
            buffer.resize(length);
            out = buffer;
            return error::Success;
        }
        size = length + 1;
    }
    return error::InsufficientBuffer;
}

} // namespace

Module GetEngineModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                 GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         &kModuleAnchor, &module);
    return module;
}

Error GetModuleFileName(Module module, std::string& path) {
    auto handle = static_cast<HMODULE>(const_cast<void*>(module));
    std::string buffer(32768, '\0');
    DWORD length = ::GetModuleFileNameA(handle, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) {
        return ::GetLastError();
    }
    buffer.resize(length);
    path = buffer;
    return error::Success;
}

Error GetCurrentDirectory(std::string& path) {
    return FetchText(path,
                     [](char* buffer, DWORD size) { return ::GetCurrentDirectoryA(size, buffer); });
}

Error SetCurrentDirectory(const std::string& path) {
    return ::SetCurrentDirectoryA(path.c_str()) ? error::Success : ::GetLastError();
}

Error GetTempPath(std::string& path) {
    return FetchText(path, [](char* buffer, DWORD size) { return ::GetTempPathA(size, buffer); });
}

Error GetWindowsDirectory(std::string& path) {
    return FetchText(path,
                     [](char* buffer, DWORD size) { return ::GetWindowsDirectoryA(buffer, size); });
}

Error GetSystemDirectory(std::string& path) {
    return FetchText(path,
                     [](char* buffer, DWORD size) { return ::GetSystemDirectoryA(buffer, size); });
}

Error GetEnvironmentVariable(const std::string& name, std::string& value) {
    ::SetLastError(0);
    DWORD size = ::GetEnvironmentVariableA(name.c_str(), nullptr, 0);
    if (size == 0) {
        DWORD error = ::GetLastError();
        return error != 0 ? error : error::EnvVarNotFound;
    }
    std::string buffer(size, '\0');
    DWORD length = ::GetEnvironmentVariableA(name.c_str(), buffer.data(), size);
    buffer.resize(length);
    value = buffer;
    return error::Success;
}

Error SetEnvironmentVariable(const std::string& name, const std::string& value) {
    const char* text = value.empty() ? nullptr : value.c_str();
    return ::SetEnvironmentVariableA(name.c_str(), text) ? error::Success : ::GetLastError();
}

Error ExpandEnvironmentStrings(const std::string& text, std::string& expanded) {
    DWORD size = ::ExpandEnvironmentStringsA(text.c_str(), nullptr, 0);
    if (size == 0) {
        return ::GetLastError();
    }
    std::string buffer(size, '\0');
    DWORD length = ::ExpandEnvironmentStringsA(text.c_str(), buffer.data(), size);
    if (length == 0) {
        return ::GetLastError();
    }
    buffer.resize(length - 1);
    expanded = buffer;
    return error::Success;
}

Error GetComputerName(std::string& name) {
    char buffer[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD size = sizeof buffer;
    if (!::GetComputerNameA(buffer, &size)) {
        return ::GetLastError();
    }
    name.assign(buffer, size);
    return error::Success;
}

Error GetUserName(std::string& name) {
    char buffer[257];
    DWORD size = sizeof buffer;
    if (!::GetUserNameA(buffer, &size)) {
        return ::GetLastError();
    }
    name.assign(buffer, size > 0 ? size - 1 : 0);
    return error::Success;
}

std::uint32_t GetCurrentProcessId() {
    return ::GetCurrentProcessId();
}

std::uint32_t GetCurrentThreadId() {
    return ::GetCurrentThreadId();
}

} // namespace os

namespace os {

Error FormatMessage(Error code, std::string& text) {
    char* buffer = nullptr;
    DWORD length =
            ::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                                     FORMAT_MESSAGE_FROM_SYSTEM,
                             nullptr, code, 0x400, reinterpret_cast<char*>(&buffer), 0, nullptr);
    if (length == 0) {
        return ::GetLastError();
    }
    text.assign(buffer, length);
    ::LocalFree(buffer);
    return error::Success;
}

} // namespace os
