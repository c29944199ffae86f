// Files and folders group of the platform seam.
//
// Paths are Windows paths in the system's ANSI code page. Every operation returns a Windows
// error code (0 on success) and gives its data through out parameters.
#pragma once

#include "os/OsTypes.h"

#include <cstdio>
#include <vector>

namespace os {

// MoveFileEx flags.
namespace movefile {
constexpr std::uint32_t ReplaceExisting = 0x1;
constexpr std::uint32_t CopyAllowed = 0x2;
constexpr std::uint32_t DelayUntilReboot = 0x4;
} // namespace movefile

// One entry of a directory search (WIN32_FIND_DATA).
struct FindData {
    std::uint32_t attributes = 0;
    FileTime creationTime;
    FileTime lastAccessTime;
    FileTime lastWriteTime;
    std::uint64_t size = 0;
    std::string fileName;
    std::string alternateFileName;
};

struct FileTimes {
    FileTime creation;
    FileTime lastAccess;
    FileTime lastWrite;
};

// The share argument of _fsopen.
enum class Share { DenyNone, DenyWrite, DenyReadWrite };

Error GetFileAttributes(const std::string& path, std::uint32_t& attributes);
Error SetFileAttributes(const std::string& path, std::uint32_t attributes);
Error CreateDirectory(const std::string& path);
Error RemoveDirectory(const std::string& path);
Error DeleteFile(const std::string& path);
Error CopyFile(const std::string& from, const std::string& to, bool failIfExists);
Error MoveFile(const std::string& from, const std::string& to);
// An empty `to` stands for NULL: with DelayUntilReboot it deletes `from` at the next start.
Error MoveFileEx(const std::string& from, const std::string& to, std::uint32_t flags);

// FindFirstFile, FindNextFile and FindClose in one: every entry that matches the pattern, in the
// order the file system gives them. No match gives FileNotFound, a missing folder PathNotFound.
Error FindFiles(const std::string& pattern, std::vector<FindData>& found);

// CreateFile with no access and GetFileTime, or SetFileTime.
Error GetFileTime(const std::string& path, FileTimes& times);
Error SetFileTime(const std::string& path, const FileTimes& times);
Error GetFileSize(const std::string& path, std::uint64_t& size);

Error GetShortPathName(const std::string& path, std::string& shortPath);
Error GetLongPathName(const std::string& path, std::string& longPath);
Error GetFullPathName(const std::string& path, std::string& fullPath);
// GetTempFileName with a unique number of 0: a new, empty file "<prefix><hex>.tmp" in `folder`.
Error GetTempFileName(const std::string& folder, const std::string& prefix, std::string& tempFile);
Error GetDiskFreeSpaceEx(const std::string& folder, std::uint64_t& freeBytes);

// _fsopen: a C runtime stream on the file, with the mode of fopen ("rb", "wb", "ab", ...).
Error fsopen(const std::string& path, const char* mode, Share share, std::FILE*& stream);

} // namespace os
