#include "sim/HostFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/sendfile.h>
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

bool ParseAttributes(const char* text, ssize_t length, std::uint32_t& bits) {
    if (length <= 0) {
        return false;
    }
    bits = static_cast<std::uint32_t>(std::strtoul(text, nullptr, 16)) & kStoredBits;
    return true;
}

bool StoredAttributes(const std::string& hostPath, std::uint32_t& bits) {
    char text[16] = {};
    return ParseAttributes(text, ::getxattr(hostPath.c_str(), kAttributeName, text, sizeof text - 1),
                           bits);
}

bool StoredAttributes(int descriptor, std::uint32_t& bits) {
    char text[16] = {};
    return ParseAttributes(text, ::fgetxattr(descriptor, kAttributeName, text, sizeof text - 1),
                           bits);
}

// The Windows attributes of a file whose stored bits are known or missing, and whose mode and
// kind are known.
std::uint32_t AttributesFrom(bool stored, std::uint32_t bits, mode_t mode, bool isDirectory) {
    if (!stored) {
        bits = isDirectory ? 0 : os::attr::Archive;
        if (!isDirectory && (mode & S_IWUSR) == 0) {
            bits |= os::attr::ReadOnly;
        }
    }
    if (isDirectory) {
        bits = (bits & ~os::attr::Temporary) | os::attr::Directory;
    }
    return bits == 0 ? os::attr::Normal : bits;
}

std::string AttributeText(std::uint32_t attributes) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", attributes & kStoredBits);
    return text;
}

mode_t ModeFor(mode_t mode, std::uint32_t attributes) {
    mode &= 07777;
    return (attributes & os::attr::ReadOnly) != 0 ? (mode & ~static_cast<mode_t>(0222))
                                                  : (mode | S_IWUSR);
}

os::FileTime FromStatx(const statx_timestamp& stamp) {
    return HostFile::ToFileTime(stamp.tv_sec, stamp.tv_nsec);
}

// Closes a descriptor when it goes out of scope.
struct Descriptor {
    int fd = -1;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
};

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
    if (StoredAttributes(hostPath, bits)) {
        return AttributesFrom(true, bits, 0, isDirectory);
    }
    struct stat info;
    mode_t mode = isDirectory || ::stat(hostPath.c_str(), &info) != 0 ? S_IWUSR : info.st_mode;
    return AttributesFrom(false, 0, mode, isDirectory);
}

bool HostFile::Examine(const std::string& hostPath, Facts& facts) {
    struct statx info;
    if (::statx(AT_FDCWD, hostPath.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
        return false;
    }
    facts.isDirectory = S_ISDIR(info.stx_mode);
    std::uint32_t bits = 0;
    bool stored = StoredAttributes(hostPath, bits);
    facts.attributes = AttributesFrom(stored, bits, info.stx_mode, facts.isDirectory);
    facts.times.lastWrite = FromStatx(info.stx_mtime);
    facts.times.lastAccess = FromStatx(info.stx_atime);
    facts.times.creation = (info.stx_mask & STATX_BTIME) != 0 ? FromStatx(info.stx_btime)
                                                              : facts.times.lastWrite;
    facts.size = facts.isDirectory ? 0 : static_cast<std::uint64_t>(info.stx_size);
    return true;
}

bool HostFile::SetAttributes(const std::string& hostPath, std::uint32_t attributes) {
    std::string text = AttributeText(attributes);
    // A file system without extended attributes keeps the read-only bit alone.
    ::setxattr(hostPath.c_str(), kAttributeName, text.data(), text.size(), 0);
    struct stat info;
    if (::stat(hostPath.c_str(), &info) != 0) {
        return false;
    }
    return ::chmod(hostPath.c_str(), ModeFor(info.st_mode, attributes)) == 0;
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
    Descriptor source;
    source.fd = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    struct statx info;
    if (source.fd < 0 ||
        ::statx(source.fd, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
        return FromErrno(errno);
    }
    if (S_ISDIR(info.stx_mode)) {
        return FromErrno(EISDIR);
    }
    std::uint32_t bits = 0;
    bool stored = StoredAttributes(source.fd, bits);
    std::uint32_t attributes = AttributesFrom(stored, bits, info.stx_mode, false);
    attributes = attributes == os::attr::Normal ? os::attr::Archive
                                                : attributes | os::attr::Archive;

    Descriptor target;
    target.fd = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (target.fd < 0 && errno == EACCES) {
        // A read-only file is replaced all the same, as the simulated CopyFile decided that it
        // may be.
        struct stat existing;
        if (::stat(to.c_str(), &existing) == 0 && (existing.st_mode & S_IWUSR) == 0 &&
            ::chmod(to.c_str(), existing.st_mode | S_IWUSR) == 0) {
            target.fd = ::open(to.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        }
    }
    if (target.fd < 0) {
        return FromErrno(errno);
    }
    std::uint64_t copied = 0;
    while (copied < info.stx_size) {
        ssize_t sent = ::sendfile(target.fd, source.fd, nullptr, info.stx_size - copied);
        if (sent < 0 && errno == EINTR) {
            continue;
        }
        if (sent < 0) {
            return FromErrno(errno);
        }
        if (sent == 0) {
            break; // the file became shorter while it was copied
        }
        copied += static_cast<std::uint64_t>(sent);
    }
    timespec stamps[2] = {timespec{0, UTIME_OMIT},
                          timespec{static_cast<time_t>(info.stx_mtime.tv_sec),
                                   static_cast<long>(info.stx_mtime.tv_nsec)}};
    ::futimens(target.fd, stamps);
    std::string text = AttributeText(attributes);
    ::fsetxattr(target.fd, kAttributeName, text.data(), text.size(), 0);
    ::fchmod(target.fd, ModeFor(static_cast<mode_t>(info.stx_mode), attributes));
    if (::close(target.fd) != 0) {
        target.fd = -1;
        return FromErrno(errno);
    }
    target.fd = -1;
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
