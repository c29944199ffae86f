// A Windows path taken apart: its root (a drive letter, or the "\\server\share" head of a UNC
// path) and the names below it, with "." and ".." applied and the rules of Win32 path
// normalisation kept (trailing dots and blanks of a name go, "/" is a separator).
#pragma once

#include "os/OsTypes.h"

#include <string>
#include <string_view>
#include <vector>

namespace sim {

struct WindowsPath {
    enum class Kind { Drive, Unc };
    Kind kind = Kind::Drive;
    char drive = 'C';
    std::string server;
    std::string share;
    std::vector<std::string> parts;

    bool IsRoot() const { return parts.empty(); }
    std::string Root() const;
    std::string ToString() const;
    WindowsPath Parent() const;
    const std::string& Name() const { return parts.back(); }

    // Parses `path` (UTF-8) against the absolute `currentDir`. Names with characters that
    // Windows refuses give InvalidName; wildcards are allowed in the last name only when asked.
    static os::Error Parse(std::string_view path, std::string_view currentDir, bool allowWildcards,
                           WindowsPath& out);
};

bool HasWildcard(std::string_view name);

// The names of devices, in any folder and with any extension ("nul.txt"): CON, PRN, AUX, NUL,
// COM1 to COM9, LPT1 to LPT9. Empty when `name` names no device, else the device in upper case.
std::string DeviceName(std::string_view name);

} // namespace sim
