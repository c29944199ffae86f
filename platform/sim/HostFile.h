// File work on the host for the simulated machine: attributes, times and copies, and the
// translation of the host's errors into the codes that Windows gives.
#pragma once

#include "os/Files.h"

#include <string>

namespace sim {

class HostFile {
public:
    // What a directory listing tells of a file, asked of the host in one go.
    struct Facts {
        bool isDirectory = false;
        std::uint32_t attributes = 0;
        os::FileTimes times;
        std::uint64_t size = 0;
    };
    // False when the host has no such file.
    static bool Examine(const std::string& hostPath, Facts& facts);

    // The Windows attributes of a host file. Read-only, hidden, system and archive bits live in
    // an extended attribute of the file; without one a file is archive, and read-only when its
    // owner may not write it.
    static std::uint32_t Attributes(const std::string& hostPath, bool isDirectory);
    static bool SetAttributes(const std::string& hostPath, std::uint32_t attributes);

    static bool Times(const std::string& hostPath, os::FileTimes& times);
    static bool SetTimes(const std::string& hostPath, const os::FileTimes& times);
    static std::uint64_t Size(const std::string& hostPath);

    // Copies contents, last write time and attributes, as CopyFile does, over one open file
    // of each side.
    static os::Error Copy(const std::string& from, const std::string& to);
    // A rename, or a copy and delete across host file systems.
    static os::Error Move(const std::string& from, const std::string& to);

    static os::Error FromErrno(int error);
    static os::FileTime ToFileTime(long long seconds, long nanoseconds);
};

} // namespace sim
