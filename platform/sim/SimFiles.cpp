// The files and folders group of the seam, over the simulated machine.
#include "os/Files.h"

#include "sim/HostFile.h"
#include "sim/MachineCall.h"
#include "sim/ShortNames.h"
#include "sim/SimMachine.h"
#include "sim/Text.h"

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace os {

using sim::FileLock;
using sim::HostFile;
using sim::HostLocation;
using sim::MachineCall;
using sim::WindowsPath;

namespace {

constexpr Error kDirectoryInvalid = 267;   // ERROR_DIRECTORY
constexpr Error kNotSameDevice = 17;       // ERROR_NOT_SAME_DEVICE
constexpr Error kCallNotImplemented = 120; // ERROR_CALL_NOT_IMPLEMENTED

// A path as one call sees it: parsed, found on the host, with its lock.
struct Target {
    WindowsPath path;
    HostLocation location;
    FileLock lock = FileLock::None;

    Error Missing() const {
        return location.parentExists ? error::FileNotFound : error::PathNotFound;
    }
    bool ReadOnly() const { return (Attributes() & attr::ReadOnly) != 0; }
    std::uint32_t Attributes() const {
        if (!location.exists || location.isDirectory || location.isLink) {
            return 0;
        }
        return HostFile::Attributes(location.hostPath, false);
    }
    // Opening the file for its contents: a link out of its drive is never followed, and what
    // the host holds that is no file (a pipe, a socket, a device) is no file of the machine.
    Error Openable() const { return location.Openable(); }
};

// What a call does with its path, for the answer a device name gets: looking at it finds no
// file, changing it is refused, opening it works for NUL alone (no other device is attached).
enum class Use { Inspect, Change, Open };

Error Find(MachineCall& machine, const std::string& path, Target& target, Use use,
           bool allowWildcards = false) {
    if (!machine) {
        return error::NotReady;
    }
    Error error = machine->Locate(path, target.location, allowWildcards, &target.path);
    if (error != error::Success) {
        return error;
    }
    if (!target.location.device.empty()) {
        if (use == Use::Change) {
            return error::AccessDenied;
        }
        if (use == Use::Inspect || target.location.device != "NUL") {
            return error::FileNotFound;
        }
    }
    target.lock = machine->LockOf(target.path);
    return error::Success;
}

// What another process's hold on a file does to writing, deleting and renaming it.
Error WriteBlocked(FileLock lock) {
    switch (lock) {
    case FileLock::Lock:
        return error::LockViolation;
    case FileLock::None:
        return error::Success;
    default:
        return error::SharingViolation;
    }
}

Error DeleteBlocked(FileLock lock) {
    return lock == FileLock::Image ? error::AccessDenied : WriteBlocked(lock);
}

Error RenameBlocked(FileLock lock) {
    return lock == FileLock::Image ? error::Success : WriteBlocked(lock);
}

bool SameFile(const Target& a, const Target& b) {
    return a.location.exists && b.location.exists && a.location.hostPath == b.location.hostPath;
}

// Windows' matching of a name against a pattern with "*" and "?", without regard to case.
bool MatchPattern(const std::string& pattern, const std::string& name) {
    if (pattern == "*" || pattern == "*.*") {
        return true;
    }
    std::string p = sim::FoldName(pattern);
    std::string n = sim::FoldName(name);
    auto match = [](const std::string& pat, const std::string& text) {
        size_t pi = 0, ti = 0, star = std::string::npos, mark = 0;
        while (ti < text.size()) {
            if (pi < pat.size() && (pat[pi] == '?' || pat[pi] == text[ti])) {
                ++pi;
                ++ti;
            } else if (pi < pat.size() && pat[pi] == '*') {
                star = pi++;
                mark = ti;
            } else if (star != std::string::npos) {
                pi = star + 1;
                ti = ++mark;
            } else {
                return false;
            }
        }
        while (pi < pat.size() && pat[pi] == '*') {
            ++pi;
        }
        return pi == pat.size();
    };
    // A name without an extension also answers to "name." and "name.*".
    return match(p, n) || (n.find('.') == std::string::npos && match(p, n + "."));
}

FindData Describe(MachineCall& machine, const std::string& hostPath, const std::string& name,
                  const std::string& shortName) {
    FindData data;
    struct stat link;
    HostFile::Facts facts;
    if (::lstat(hostPath.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
        // A link is described by itself, as the reparse point Windows lists, not by its target.
        struct stat target;
        bool isDirectory = ::stat(hostPath.c_str(), &target) == 0 && S_ISDIR(target.st_mode);
        data.attributes = attr::ReparsePoint | (isDirectory ? attr::Directory : 0);
    } else if (HostFile::Examine(hostPath, facts)) {
        data.attributes = facts.attributes;
        data.creationTime = facts.times.creation;
        data.lastAccessTime = facts.times.lastAccess;
        data.lastWriteTime = facts.times.lastWrite;
        data.size = facts.size;
    } else {
        // A name that went away while the folder was listed.
        data.attributes = HostFile::Attributes(hostPath, false);
    }
    data.fileName = machine->ToAnsi(name);
    data.alternateFileName = shortName == name ? "" : machine->ToAnsi(shortName);
    return data;
}

// Appends one operation to the list that the system carries out at its next start.
void AddPendingRename(MachineCall& machine, const WindowsPath& from, const WindowsPath* to,
                      bool replace) {
    sim::RegKey* session = machine->Registry().Create(
            "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager");
    std::u16string list;
    if (const sim::RegValue* existing = session->Value("PendingFileRenameOperations")) {
        for (size_t i = 0; i + 1 < existing->data.size(); i += 2) {
            list += static_cast<char16_t>(existing->data[i] | (existing->data[i + 1] << 8));
        }
        // The list ends with one more NUL after the terminator of its last string; that closing
        // NUL is taken off here and put back after the new pair.
        if (list.size() >= 2 && list[list.size() - 1] == 0 && list[list.size() - 2] == 0) {
            list.pop_back();
        }
    }
    list += sim::Utf8ToUtf16("\\??\\" + from.ToString());
    list += char16_t(0);
    if (to != nullptr) {
        list += sim::Utf8ToUtf16((replace ? "!\\??\\" : "\\??\\") + to->ToString());
    }
    list += char16_t(0); // terminator of the second name
    list += char16_t(0); // end of the list
    sim::RegValue value;
    value.name = "PendingFileRenameOperations";
    value.type = sim::regtype::MultiString;
    for (char16_t unit : list) {
        value.data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        value.data.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    session->SetValue(value);
    machine->Registry().SetDirty(true);
}

// Unlinks a file, or a link (never what it leads to).
Error RemoveEntry(MachineCall& machine, const std::string& hostPath) {
    if (::unlink(hostPath.c_str()) != 0) {
        return HostFile::FromErrno(errno);
    }
    machine->Paths().Removed(hostPath);
    return error::Success;
}

Error Relocate(MachineCall& machine, Target& from, Target& to, std::uint32_t flags) {
    if (!from.location.exists) {
        return from.Missing();
    }
    if (!to.location.parentExists) {
        return error::PathNotFound;
    }
    if (Error blocked = RenameBlocked(from.lock)) {
        return blocked;
    }
    if (SameFile(from, to) && from.path.ToString() == to.path.ToString()) {
        return error::Success;
    }
    if (to.location.exists && !SameFile(from, to)) {
        bool replace = (flags & movefile::ReplaceExisting) != 0 && !from.location.isDirectory &&
                       !to.location.isDirectory;
        if (!replace) {
            return error::AlreadyExists;
        }
        if (to.ReadOnly()) {
            return error::AccessDenied;
        }
        if (Error blocked = DeleteBlocked(to.lock)) {
            return blocked;
        }
    }
    bool otherVolume = from.path.Root() != to.path.Root();
    if (otherVolume && (from.location.isDirectory || (flags & movefile::CopyAllowed) == 0)) {
        return kNotSameDevice;
    }
    std::string target = to.location.hostPath;
    if (to.location.exists && SameFile(from, to)) {
        // A change of case only: the host name takes the new spelling.
        target = to.location.hostPath.substr(0, to.location.hostPath.rfind('/') + 1) +
                 to.path.Name();
    }
    Error error = HostFile::Move(from.location.hostPath, target);
    if (error == error::Success) {
        machine->MoveLock(from.path, to.path);
        machine->Paths().Removed(from.location.hostPath);
        sim::ShortNames::Forget(target);
        machine->Paths().Added(target);
    }
    return error;
}

} // namespace

Error GetFileAttributes(const std::string& path, std::uint32_t& attributes) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    attributes =
            target.location.isLink
                    ? attr::ReparsePoint | (target.location.isDirectory ? attr::Directory : 0)
                    : HostFile::Attributes(target.location.hostPath, target.location.isDirectory);
    return error::Success;
}

Error SetFileAttributes(const std::string& path, std::uint32_t attributes) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Change)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    if (Error refused = target.Openable()) {
        return refused;
    }
    return HostFile::SetAttributes(target.location.hostPath, attributes) ? error::Success
                                                                         : error::AccessDenied;
}

Error CreateDirectory(const std::string& path) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Change)) {
        return error;
    }
    if (target.location.exists) {
        return error::AlreadyExists;
    }
    if (!target.location.parentExists || target.path.IsRoot()) {
        return error::PathNotFound;
    }
    // A new folder must leave room for an 8.3 name below it: MAX_PATH less 12.
    if (sim::Utf8ToUtf16(target.path.ToString()).size() >= sim::kMaxPath - 12) {
        return sim::kFilenameTooLong;
    }
    if (::mkdir(target.location.hostPath.c_str(), 0755) != 0) {
        return HostFile::FromErrno(errno);
    }
    machine->Paths().Added(target.location.hostPath);
    return error::Success;
}

Error RemoveDirectory(const std::string& path) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Change)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    if (!target.location.isDirectory) {
        return kDirectoryInvalid;
    }
    // The process keeps its current folder open, so that folder cannot go.
    WindowsPath current;
    if (WindowsPath::Parse(machine->CurrentDirectory(), "", false, current) == error::Success &&
        sim::FoldName(current.ToString()) == sim::FoldName(target.path.ToString())) {
        return error::SharingViolation;
    }
    // A link to a folder goes as the link; what it leads to stays.
    if (target.location.isLink) {
        return RemoveEntry(machine, target.location.hostPath);
    }
    if (!machine->Paths().List(target.location.hostPath).empty()) {
        return error::DirNotEmpty;
    }
    if (::rmdir(target.location.hostPath.c_str()) != 0) {
        return HostFile::FromErrno(errno);
    }
    machine->Paths().Removed(target.location.hostPath);
    return error::Success;
}

Error DeleteFile(const std::string& path) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Change)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    if (target.location.isDirectory || target.ReadOnly()) {
        return error::AccessDenied;
    }
    if (Error blocked = DeleteBlocked(target.lock)) {
        return blocked;
    }
    return RemoveEntry(machine, target.location.hostPath);
}

Error CopyFile(const std::string& from, const std::string& to, bool failIfExists) {
    MachineCall machine;
    Target source;
    Target destination;
    if (Error error = Find(machine, from, source, Use::Inspect)) {
        return error;
    }
    if (!source.location.exists) {
        return source.Missing();
    }
    if (source.location.isDirectory) {
        return error::AccessDenied;
    }
    if (Error refused = source.Openable()) {
        return refused;
    }
    if (source.lock == FileLock::Sharing || source.lock == FileLock::Lock) {
        return WriteBlocked(source.lock);
    }
    if (Error error = Find(machine, to, destination, Use::Open)) {
        return error;
    }
    if (!destination.location.parentExists) {
        return error::PathNotFound;
    }
    if (!destination.location.device.empty()) {
        return error::Success; // NUL takes the copy and keeps nothing
    }
    if (destination.location.exists) {
        if (SameFile(source, destination)) {
            return error::SharingViolation;
        }
        if (failIfExists) {
            return error::FileExists;
        }
        if (Error refused = destination.Openable()) {
            return refused;
        }
        // The copy is made with the source's attributes, and a file that is hidden or system
        // cannot be written over by one that lacks them.
        std::uint32_t kept = destination.Attributes() & (attr::Hidden | attr::System);
        if (destination.location.isDirectory || destination.ReadOnly() ||
            (kept & ~source.Attributes()) != 0) {
            return error::AccessDenied;
        }
        if (Error blocked = WriteBlocked(destination.lock)) {
            return blocked;
        }
    }
    Error error = HostFile::Copy(source.location.hostPath, destination.location.hostPath);
    if (error == error::Success && !destination.location.exists) {
        machine->Paths().Added(destination.location.hostPath);
    }
    return error;
}

Error MoveFile(const std::string& from, const std::string& to) {
    return MoveFileEx(from, to, movefile::CopyAllowed);
}

Error MoveFileEx(const std::string& from, const std::string& to, std::uint32_t flags) {
    MachineCall machine;
    Target source;
    if (Error error = Find(machine, from, source, Use::Change)) {
        return error;
    }
    if ((flags & movefile::DelayUntilReboot) != 0) {
        if (!machine->Identity().IsNT()) {
            return kCallNotImplemented;
        }
        if (to.empty()) {
            AddPendingRename(machine, source.path, nullptr, false);
            return error::Success;
        }
        Target destination;
        if (Error error = Find(machine, to, destination, Use::Change)) {
            return error;
        }
        AddPendingRename(machine, source.path, &destination.path,
                         (flags & movefile::ReplaceExisting) != 0);
        return error::Success;
    }
    if (to.empty()) {
        return error::InvalidParameter;
    }
    Target destination;
    if (Error error = Find(machine, to, destination, Use::Change)) {
        return error;
    }
    return Relocate(machine, source, destination, flags);
}

Error FindFiles(const std::string& pattern, std::vector<FindData>& found) {
    found.clear();
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, pattern, target, Use::Inspect, true)) {
        return error;
    }
    if (target.path.IsRoot()) {
        return error::FileNotFound;
    }
    const std::string& last = target.path.Name();
    if (!sim::HasWildcard(last)) {
        if (!target.location.exists) {
            return target.Missing();
        }
        std::string hostDir =
                target.location.hostPath.substr(0, target.location.hostPath.rfind('/'));
        std::string name = target.location.hostPath.substr(target.location.hostPath.rfind('/') + 1);
        found.push_back(
                Describe(machine, target.location.hostPath, name,
                         machine->Paths().ShortNameOf(hostDir.empty() ? "/" : hostDir, name)));
        return error::Success;
    }
    if (!target.location.parentExists) {
        return error::PathNotFound;
    }
    std::string hostDir = target.location.hostPath.substr(0, target.location.hostPath.rfind('/'));
    if (hostDir.empty()) {
        hostDir = "/";
    }
    if (!target.path.Parent().IsRoot()) {
        for (const char* dot : {".", ".."}) {
            if (MatchPattern(last, dot)) {
                FindData data = Describe(machine, hostDir, dot, dot);
                data.fileName = dot;
                found.push_back(data);
            }
        }
    }
    for (const auto& [name, shortName] : machine->Paths().List(hostDir)) {
        if (MatchPattern(last, name) || MatchPattern(last, shortName)) {
            std::string hostPath = hostDir == "/" ? "/" + name : hostDir + "/" + name;
            found.push_back(Describe(machine, hostPath, name, shortName));
        }
    }
    return found.empty() ? error::FileNotFound : error::Success;
}

Error GetFileTime(const std::string& path, FileTimes& times) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    return HostFile::Times(target.location.hostPath, times) ? error::Success : error::AccessDenied;
}

Error SetFileTime(const std::string& path, const FileTimes& times) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Change)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    if (Error refused = target.Openable()) {
        return refused;
    }
    if (Error blocked = WriteBlocked(target.lock)) {
        return blocked;
    }
    return HostFile::SetTimes(target.location.hostPath, times) ? error::Success
                                                               : HostFile::FromErrno(errno);
}

Error GetFileSize(const std::string& path, std::uint64_t& size) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    size = target.location.isLink ? 0 : HostFile::Size(target.location.hostPath);
    return error::Success;
}

Error GetShortPathName(const std::string& path, std::string& shortPath) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    WindowsPath walk = target.path;
    walk.parts.clear();
    sim::HostLocation folder;
    machine->Paths().Locate(walk, folder);
    std::string text = walk.ToString();
    std::string hostDir = folder.hostPath;
    const sim::PathMapper& paths = machine->Paths();
    for (const std::string& part : target.path.parts) {
        std::string name = paths.FindChild(hostDir, part).value_or(part);
        if (text.back() != '\\') {
            text += '\\';
        }
        text += paths.ShortNameOf(hostDir, name);
        hostDir += (hostDir.back() == '/' ? "" : "/") + name;
    }
    shortPath = machine->ToAnsi(text);
    return error::Success;
}

Error GetLongPathName(const std::string& path, std::string& longPath) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return target.Missing();
    }
    WindowsPath walk = target.path;
    walk.parts.clear();
    sim::HostLocation folder;
    machine->Paths().Locate(walk, folder);
    std::string hostDir = folder.hostPath;
    for (const std::string& part : target.path.parts) {
        std::string name = machine->Paths().FindChild(hostDir, part).value_or(part);
        walk.parts.push_back(name);
        hostDir += (hostDir.back() == '/' ? "" : "/") + name;
    }
    longPath = machine->ToAnsi(walk.ToString());
    return error::Success;
}

Error GetFullPathName(const std::string& path, std::string& fullPath) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    WindowsPath parsed;
    if (Error error = WindowsPath::Parse(machine->ToUtf8(path), machine->CurrentDirectory(), true,
                                         parsed)) {
        return error;
    }
    fullPath = machine->ToAnsi(parsed.ToString());
    bool trailing = !path.empty() && (path.back() == '\\' || path.back() == '/');
    if (trailing && fullPath.back() != '\\') {
        fullPath += '\\';
    }
    return error::Success;
}

Error GetTempFileName(const std::string& folder, const std::string& prefix, std::string& tempFile) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, folder, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists || !target.location.isDirectory) {
        return kDirectoryInvalid;
    }
    static unsigned counter = 0;
    unsigned start = (static_cast<unsigned>(::getpid()) + counter) % 0xFFFF;
    for (unsigned attempt = 0; attempt < 0xFFFF; ++attempt) {
        unsigned unique = (start + attempt) % 0xFFFF + 1;
        char name[64];
        std::snprintf(name, sizeof name, "%.3s%X.tmp", prefix.c_str(), unique);
        std::string hostPath = target.location.hostPath + "/" + name;
        if (machine->Paths().FindChild(target.location.hostPath, name)) {
            continue;
        }
        int fd = ::open(hostPath.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (fd < 0) {
            return HostFile::FromErrno(errno);
        }
        ::close(fd);
        machine->Paths().Added(hostPath);
        counter = attempt + 1;
        WindowsPath result = target.path;
        result.parts.push_back(name);
        tempFile = machine->ToAnsi(result.ToString());
        return error::Success;
    }
    return 80; // every number is taken
}

Error GetDiskFreeSpaceEx(const std::string& folder, std::uint64_t& freeBytes) {
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, folder, target, Use::Inspect)) {
        return error;
    }
    if (!target.location.exists) {
        return error::PathNotFound;
    }
    if (target.path.kind == WindowsPath::Kind::Drive && target.path.drive == 'C') {
        freeBytes = machine->Identity().freeDiskMB * 1024ULL * 1024ULL;
        return error::Success;
    }
    struct statvfs info;
    if (::statvfs(target.location.hostPath.c_str(), &info) != 0) {
        return HostFile::FromErrno(errno);
    }
    freeBytes = static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
    return error::Success;
}

Error fsopen(const std::string& path, const char* mode, Share, std::FILE*& stream) {
    stream = nullptr;
    MachineCall machine;
    Target target;
    if (Error error = Find(machine, path, target, Use::Open)) {
        return error;
    }
    bool reading = mode != nullptr && mode[0] == 'r' && std::strchr(mode, '+') == nullptr;
    if (reading) {
        if (!target.location.exists) {
            return target.Missing();
        }
        if (target.lock == FileLock::Sharing || target.lock == FileLock::Lock) {
            return WriteBlocked(target.lock);
        }
    } else {
        if (!target.location.parentExists) {
            return error::PathNotFound;
        }
        if (target.location.exists && target.ReadOnly()) {
            return error::AccessDenied;
        }
        if (Error blocked = WriteBlocked(target.lock)) {
            return blocked;
        }
    }
    if (target.location.isDirectory) {
        return error::AccessDenied;
    }
    if (Error refused = target.Openable()) {
        return refused;
    }
    // Writing anew (CREATE_ALWAYS) over a hidden or system file is refused, as the C runtime
    // asks for a normal file.
    bool truncating = mode != nullptr && mode[0] == 'w';
    if (truncating && (target.Attributes() & (attr::Hidden | attr::System)) != 0) {
        return error::AccessDenied;
    }
    stream = std::fopen(target.location.hostPath.c_str(), mode);
    if (stream == nullptr) {
        return HostFile::FromErrno(errno);
    }
    if (!target.location.exists) {
        machine->Paths().Added(target.location.hostPath);
    }
    return error::Success;
}

} // namespace os
