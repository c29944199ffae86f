// Process group of the platform seam: modules, the current and well-known folders, the
// environment, the computer and user names.
#pragma once

#include "os/OsTypes.h"

namespace os {

// The module handle of the engine library itself (the instance that DllMain receives).
Module GetEngineModule();
Error GetModuleFileName(Module module, std::string& path);

Error GetCurrentDirectory(std::string& path);
Error SetCurrentDirectory(const std::string& path);
// The temporary folder, with its trailing backslash.
Error GetTempPath(std::string& path);
Error GetWindowsDirectory(std::string& path);
Error GetSystemDirectory(std::string& path);

Error GetEnvironmentVariable(const std::string& name, std::string& value);
Error SetEnvironmentVariable(const std::string& name, const std::string& value);
Error ExpandEnvironmentStrings(const std::string& text, std::string& expanded);

Error GetComputerName(std::string& name);
Error GetUserName(std::string& name);

// FormatMessage from the system's table: the text of an error code, with its line break.
Error FormatMessage(Error code, std::string& text);

std::uint32_t GetCurrentProcessId();
std::uint32_t GetCurrentThreadId();

} // namespace os
