// Maps the drives of the simulated machine onto host folders, and Windows names onto host names
// without regard to case, although the host file system is case sensitive. Each folder's names
// are indexed (by folded name and by 8.3 short name) and read again only when the folder changed.
#pragma once

#include "sim/FolderIndex.h"
#include "sim/WindowsPath.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace sim {

// A symbolic link that leads out of its drive stands in the way: ERROR_SYMLINK_CLASS_DISABLED.
constexpr os::Error kLinkLeavesDrive = 1463;
// What a host file that Windows could not hold as a file gives: ERROR_CANT_ACCESS_FILE.
constexpr os::Error kNotAFile = 1920;

struct HostLocation {
    std::string hostPath;      // the host path; existing names in their on-disk spelling
    bool exists = false;       // the whole path names an existing file or folder
    bool parentExists = false; // the folder that would hold the last name exists
    bool isDirectory = false;
    // The last name is a symbolic link of the host. A link whose target lies outside its drive's
    // folder is never followed: the machine sees it as a reparse point that it may list, rename
    // and delete (the link itself), but not open.
    bool isLink = false;
    bool linkLeavesDrive = false;
    // The last name is a named pipe, socket or device of the host: nothing a program of the
    // machine may open as a file.
    bool isSpecial = false;
    // The last name names a device (NUL, CON, COM1, ... in any folder): no host file at all.
    std::string device;

    // Whether the file may be opened for its contents.
    os::Error Openable() const {
        if (!device.empty()) {
            return device == "NUL" ? os::error::Success : os::error::FileNotFound;
        }
        if (linkLeavesDrive) {
            return kLinkLeavesDrive;
        }
        return isSpecial ? kNotAFile : os::error::Success;
    }
};

class PathMapper {
public:
    void SetDrive(char letter, const std::string& hostRoot);
    bool HasDrive(char letter) const;
    std::string DriveRoot(char letter) const;
    const std::map<char, std::string>& Drives() const { return mDrives; }
    // Short names given in folders under `hostDir` (the machine's folder) are kept in the files;
    // elsewhere (the host's own files on Z:) they are worked out at each reading.
    void KeepShortNamesUnder(const std::string& hostDir) { mKeepUnder = hostDir; }
    // Windows 9x keeps every 8.3 name in upper case (its FAT directory entries); Windows NT
    // gives a name that is 8.3 already as it is spelt.
    void UpperCaseShortNames(bool upper) { mUpperShortNames = upper; }

    // Locates a drive path on the host. An unknown drive gives PathNotFound, as Windows does.
    os::Error Locate(const WindowsPath& path, HostLocation& out) const;

    // The machine's view of a host path: under the drive whose folder holds it (the deepest
    // one); none when no drive holds it (Z: confined to a folder that does not).
    std::optional<std::string> ToMachinePath(const std::string& hostPath) const;

    // The spelling of `name` inside the host folder `hostDir`, matched without regard to case,
    // or by its short name.
    std::optional<std::string> FindChild(const std::string& hostDir, const std::string& name) const;
    // A folder's names in the one order (FolderIndex::Before), with their short names.
    std::vector<std::pair<std::string, std::string>> List(const std::string& hostDir) const;
    // The short name of an entry of `hostDir`, which it keeps from then on.
    std::string ShortNameOf(const std::string& hostDir, const std::string& name) const;

    // The machine added or removed a host file or folder: its folder's index follows.
    void Added(const std::string& hostPath) const;
    void Removed(const std::string& hostPath) const;

private:
    // The fresh index of a folder; null when the folder cannot be read.
    FolderIndex* index(const std::string& hostDir) const;
    FolderIndex* index(const std::string& hostDir, const struct stat& info) const;
    void changed(const std::string& hostPath, bool added) const;
    // Whether a host link stays inside the drive folder `driveRoot`.
    static bool LinkStaysInside(const std::string& linkPath, const std::string& driveRoot);

    std::map<char, std::string> mDrives;
    std::string mKeepUnder;
    bool mUpperShortNames = false;
    mutable std::unordered_map<std::string, FolderIndex> mFolders;
};

} // namespace sim
