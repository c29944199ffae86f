// Maps the drives of the simulated machine onto host folders, and Windows names onto host names
// without regard to case, although the host file system is case sensitive.
#pragma once

#include "sim/WindowsPath.h"

#include <map>
#include <optional>
#include <string>

namespace sim {

struct HostLocation {
    std::string hostPath;      // the host path; existing names in their on-disk spelling
    bool exists = false;       // the whole path names an existing file or folder
    bool parentExists = false; // the folder that would hold the last name exists
    bool isDirectory = false;
};

class PathMapper {
public:
    void SetDrive(char letter, const std::string& hostRoot);
    bool HasDrive(char letter) const;
    std::string DriveRoot(char letter) const;
    const std::map<char, std::string>& Drives() const { return mDrives; }

    // Locates a drive path on the host. An unknown drive gives PathNotFound, as Windows does.
    os::Error Locate(const WindowsPath& path, HostLocation& out) const;

    // The machine's view of a host path: under a mapped drive when one holds it, else on Z:.
    std::string ToMachinePath(const std::string& hostPath) const;

    // The spelling of `name` inside the host folder `hostDir`, matched without regard to case,
    // or by its generated short name.
    static std::optional<std::string> FindChild(const std::string& hostDir,
                                                const std::string& name);

private:
    std::map<char, std::string> mDrives;
};

} // namespace sim
