// The process group of the seam, over the simulated machine.
#include "os/Process.h"

#include "sim/HostFile.h"
#include "sim/MachineCall.h"

#include <algorithm>
#include <climits>
#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace os {

using sim::MachineCall;

namespace {

// Its address lies inside the engine's own library, which is how the library finds its file.
const char kModuleAnchor = 0;

std::string HostModulePath(Module module) {
    if (module == nullptr) {
        char path[PATH_MAX];
        ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
        return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
    }
    Dl_info info{};
    if (::dladdr(module, &info) == 0 || info.dli_fname == nullptr) {
        return std::string();
    }
    char resolved[PATH_MAX];
    return ::realpath(info.dli_fname, resolved) != nullptr ? std::string(resolved)
                                                           : std::string(info.dli_fname);
}

std::string WithBackslash(std::string path) {
    if (path.empty() || path.back() != '\\') {
        path += '\\';
    }
    return path;
}

} // namespace

Module GetEngineModule() {
    return &kModuleAnchor;
}

Error GetModuleFileName(Module module, std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    std::string host = HostModulePath(module);
    if (host.empty()) {
        return 126; // ERROR_MOD_NOT_FOUND
    }
    // A program that no drive reaches (Z: confined to a folder that does not hold it) is
    // named as the host names it under Z:, where the machine cannot open it.
    std::string fallback = "Z:" + host;
    std::replace(fallback.begin(), fallback.end(), '/', '\\');
    path = machine->ToAnsi(machine->HostToMachine(host).value_or(fallback));
    return error::Success;
}

Error GetCurrentDirectory(std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    path = machine->ToAnsi(machine->CurrentDirectory());
    return error::Success;
}

Error SetCurrentDirectory(const std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    sim::HostLocation location;
    sim::WindowsPath parsed;
    if (Error error = machine->Locate(path, location, false, &parsed)) {
        return error;
    }
    if (!location.exists) {
        return location.parentExists ? error::FileNotFound : error::PathNotFound;
    }
    if (!location.isDirectory) {
        return 267; // ERROR_DIRECTORY
    }
    machine->SetCurrentDirectory(parsed.ToString());
    return error::Success;
}

Error GetTempPath(std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    for (const char* name : {"TMP", "TEMP", "USERPROFILE"}) {
        if (auto value = machine->Env().Get(name)) {
            path = WithBackslash(machine->ToAnsi(*value));
            return error::Success;
        }
    }
    path = WithBackslash(machine->ToAnsi(machine->Identity().windowsDirectory));
    return error::Success;
}

Error GetWindowsDirectory(std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    path = machine->ToAnsi(machine->Identity().windowsDirectory);
    return error::Success;
}

Error GetSystemDirectory(std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    path = machine->ToAnsi(machine->Identity().SystemDirectory());
    return error::Success;
}

Error GetEnvironmentVariable(const std::string& name, std::string& value) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    auto found = machine->Env().Get(machine->ToUtf8(name));
    if (!found) {
        return error::EnvVarNotFound;
    }
    value = machine->ToAnsi(*found);
    return error::Success;
}

Error SetEnvironmentVariable(const std::string& name, const std::string& value) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (name.empty() || name.find('=') != std::string::npos) {
        return error::InvalidParameter;
    }
    machine->Env().Set(machine->ToUtf8(name), machine->ToUtf8(value));
    return error::Success;
}

Error ExpandEnvironmentStrings(const std::string& text, std::string& expanded) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    expanded = machine->ToAnsi(machine->Env().Expand(machine->ToUtf8(text)));
    return error::Success;
}

Error GetComputerName(std::string& name) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    name = machine->ToAnsi(machine->Identity().computerName);
    return error::Success;
}

Error GetUserName(std::string& name) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    name = machine->ToAnsi(machine->Identity().userName);
    return error::Success;
}

std::uint32_t GetCurrentProcessId() {
    return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t GetCurrentThreadId() {
    return static_cast<std::uint32_t>(::syscall(SYS_gettid));
}

} // namespace os

namespace os {

namespace {

struct Message {
    Error code;
    const char* text;
};

// The system's own words for the codes that the engine meets, as English Windows words them.
const Message kMessages[] = {
        {0, "The operation completed successfully."},
        {1, "Incorrect function."},
        {2, "The system cannot find the file specified."},
        {3, "The system cannot find the path specified."},
        {5, "Access is denied."},
        {6, "The handle is invalid."},
        {8, "Not enough storage is available to process this command."},
        {13, "The data is invalid."},
        {15, "The system cannot find the drive specified."},
        {17, "The system cannot move the file to a different disk drive."},
        {18, "There are no more files."},
        {21, "The device is not ready."},
        {32, "The process cannot access the file because it is being used by another process."},
        {33, "The process cannot access the file because another process has locked a portion of "
             "the file."},
        {50, "The request is not supported."},
        {53, "The network path was not found."},
        {67, "The network name cannot be found."},
        {80, "The file exists."},
        {87, "The parameter is incorrect."},
        {112, "There is not enough space on the disk."},
        {120, "This function is not supported on this system."},
        {122, "The data area passed to a system call is too small."},
        {123, "The filename, directory name, or volume label syntax is incorrect."},
        {126, "The specified module could not be found."},
        {127, "The specified procedure could not be found."},
        {145, "The directory is not empty."},
        {161, "The specified path is invalid."},
        {183, "Cannot create a file when that file already exists."},
        {203, "The system could not find the environment option that was entered."},
        {234, "More data is available."},
        {259, "No more data is available."},
        {267, "The directory name is invalid."},
        {1004, "Invalid flags."},
        {1018, "Illegal operation attempted on a registry key that has been marked for deletion."},
        {1060, "The specified service does not exist as an installed service."},
        {1113, "No mapping for the Unicode character exists in the target multi-byte code page."},
};

} // namespace

Error FormatMessage(Error code, std::string& text) {
    for (const Message& message : kMessages) {
        if (message.code == code) {
            text = std::string(message.text) + "\r\n";
            return error::Success;
        }
    }
    return 317; // ERROR_MR_MID_NOT_FOUND
}

} // namespace os
