#include "sim/HostFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace sim {

namespace fs = std::filesystem;

namespace {

const char* const kAttributeName = "user.windows.attributes";
constexpr std::uint32_t kStoredBits = os::attr::ReadOnly | os::attr::Hidden | os::attr::System |
                                      os::attr::Archive | os::attr::Temporary;
constexpr long long kEpochDifference = 11644473600LL; // seconds from 1601 to 1970

bool StoredAttributes(const std::string& hostPath, std::uint32_t& bits) {
    char text[16] = {};
    ssize_t length = ::getxattr(hostPath.c_str(), kAttributeName, text, sizeof text - 1);
    if (length <= 0) {
        return false;
    }
    bits = static_cast<std::uint32_t>(std::strtoul(text, nullptr, 16)) & kStoredBits;
    return true;
}

timespec ToTimespec(os::FileTime time) {
    long long ticks = static_cast<long long>(time.ticks);
    timespec stamp{};
    stamp.tv_sec = static_cast<time_t>(ticks / 10000000 - kEpochDifference);
    stamp.tv_nsec = static_cast<long>((ticks % 10000000) * 100);
    return stamp;
}

} // namespace

os::FileTime HostFile::ToFileTime(long long seconds, long nanoseconds) {
    os::FileTime time;
    time.ticks = static_cast<std::uint64_t>((seconds + kEpochDifference) * 10000000LL +
                                            nanoseconds / 100);
    return time;
}

os::Error HostFile::FromErrno(int error) {
    switch (error) {
    case 0:
        return os::error::Success;
    case ENOENT:
        return os::error::FileNotFound;
    case ENOTDIR:
        return os::error::PathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
        return os::error::AccessDenied;
    case EEXIST:
        return os::error::AlreadyExists;
    case ENOTEMPTY:
        return os::error::DirNotEmpty;
    case ENOSPC:
    case EDQUOT:
        return os::error::DiskFull;
    case EROFS:
        return 19; // ERROR_WRITE_PROTECT
    case ENAMETOOLONG:
        return 206; // ERROR_FILENAME_EXCED_RANGE
    case EBUSY:
        return os::error::SharingViolation;
    default:
        return 31; // ERROR_GEN_FAILURE
    }
}

std::uint32_t HostFile::Attributes(const std::string& hostPath, bool isDirectory) {
    std::uint32_t bits = 0;
    if (!StoredAttributes(hostPath, bits)) {
        struct stat info;
        bits = isDirectory ? 0 : os::attr::Archive;
        if (!isDirectory && ::stat(hostPath.c_str(), &info) == 0 && (info.st_mode & S_IWUSR) == 0) {
            bits |= os::attr::ReadOnly;
        }
    }
    if (isDirectory) {
        bits = (bits & ~os::attr::Temporary) | os::attr::Directory;
    }
    return bits == 0 ? os::attr::Normal : bits;
}

bool HostFile::SetAttributes(const std::string& hostPath, std::uint32_t attributes) {
    std::uint32_t bits = attributes & kStoredBits;
    char text[16];
    std::snprintf(text, sizeof text, "%X", bits);
    // A file system without extended attributes keeps the read-only bit alone.
    ::setxattr(hostPath.c_str(), kAttributeName, text, std::strlen(text), 0);
    struct stat info;
    if (::stat(hostPath.c_str(), &info) != 0) {
        return false;
    }
    mode_t mode = info.st_mode & 07777;
    mode = (bits & os::attr::ReadOnly) != 0 ? (mode & ~static_cast<mode_t>(0222))
                                            : (mode | S_IWUSR);
    return ::chmod(hostPath.c_str(), mode) == 0;
}

bool HostFile::Times(const std::string& hostPath, os::FileTimes& times) {
    struct stat info;
    if (::stat(hostPath.c_str(), &info) != 0) {
        return false;
    }
    times.lastWrite = ToFileTime(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
    times.lastAccess = ToFileTime(info.st_atim.tv_sec, info.st_atim.tv_nsec);
    times.creation = times.lastWrite;
    struct statx extended;
    if (::statx(AT_FDCWD, hostPath.c_str(), 0, STATX_BTIME, &extended) == 0 &&
        (extended.stx_mask & STATX_BTIME) != 0) {
        times.creation = ToFileTime(extended.stx_btime.tv_sec, extended.stx_btime.tv_nsec);
    }
    return true;
}

bool HostFile::SetTimes(const std::string& hostPath, const os::FileTimes& times) {
    timespec stamps[2];
    stamps[0] =
            times.lastAccess.ticks == 0 ? timespec{0, UTIME_OMIT} : ToTimespec(times.lastAccess);
    stamps[1] = times.lastWrite.ticks == 0 ? timespec{0, UTIME_OMIT} : ToTimespec(times.lastWrite);
    return ::utimensat(AT_FDCWD, hostPath.c_str(), stamps, 0) == 0;
}

std::uint64_t HostFile::Size(const std::string& hostPath) {
    struct stat info;
    return ::stat(hostPath.c_str(), &info) == 0 ? static_cast<std::uint64_t>(info.st_size) : 0;
}

os::Error HostFile::Copy(const std::string& from, const std::string& to) {
    std::uint32_t attributes = Attributes(from, false);
    struct stat info;
    if (::stat(to.c_str(), &info) == 0 && (info.st_mode & S_IWUSR) == 0) {
        ::chmod(to.c_str(), info.st_mode | S_IWUSR);
    }
    std::error_code error;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    if (error) {
        return FromErrno(error.value());
    }
    os::FileTimes times;
    if (Times(from, times)) {
        times.lastAccess = os::FileTime();
        SetTimes(to, times);
    }
    SetAttributes(to, attributes == os::attr::Normal ? os::attr::Archive
                                                     : attributes | os::attr::Archive);
    return os::error::Success;
}

os::Error HostFile::Move(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) == 0) {
        return os::error::Success;
    }
    if (errno != EXDEV) {
        return FromErrno(errno);
    }
    std::error_code error;
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) {
        return FromErrno(error.value());
    }
    fs::remove_all(from, error);
    return os::error::Success;
}

} // namespace sim
