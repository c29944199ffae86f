// The files and folders group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/Files.h"

namespace os {

namespace {

Error LastError() {
    return ::GetLastError();
}

FileTime FromFiletime(const FILETIME& time) {
    FileTime out;
    out.ticks = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return out;
}

FILETIME ToFiletime(FileTime time) {
    FILETIME out;
    out.dwLowDateTime = static_cast<DWORD>(time.ticks & 0xFFFFFFFF);
    out.dwHighDateTime = static_cast<DWORD>(time.ticks >> 32);
    return out;
}

// Runs a call that takes a buffer and its size, growing the buffer until the text fits.
template <typename Call>
Error FetchText(std::string& out, Call call) {
    DWORD size = MAX_PATH;
    for (int round = 0; round < 4; ++round) {
        std::string buffer(size, '\0');
        DWORD length = call(buffer.data(), size);
        if (length == 0) {
            return LastError();
        }
        if (length < size) {
            buffer.resize(length);
            out = buffer;
            return error::Success;
        }
        size = length + 1;
    }
    return error::InsufficientBuffer;
}

} // namespace

Error GetFileAttributes(const std::string& path, std::uint32_t& attributes) {
    DWORD value = ::GetFileAttributesA(path.c_str());
    if (value == INVALID_FILE_ATTRIBUTES) {
        return LastError();
    }
    attributes = value;
    return error::Success;
}

Error SetFileAttributes(const std::string& path, std::uint32_t attributes) {
    return ::SetFileAttributesA(path.c_str(), attributes) ? error::Success : LastError();
}

Error CreateDirectory(const std::string& path) {
    return ::CreateDirectoryA(path.c_str(), nullptr) ? error::Success : LastError();
}

Error RemoveDirectory(const std::string& path) {
    return ::RemoveDirectoryA(path.c_str()) ? error::Success : LastError();
}

Error DeleteFile(const std::string& path) {
    return ::DeleteFileA(path.c_str()) ? error::Success : LastError();
}

Error CopyFile(const std::string& from, const std::string& to, bool failIfExists) {
    return ::CopyFileA(from.c_str(), to.c_str(), failIfExists ? TRUE : FALSE) ? error::Success
                                                                              : LastError();
}

Error MoveFile(const std::string& from, const std::string& to) {
    return ::MoveFileA(from.c_str(), to.c_str()) ? error::Success : LastError();
}

Error MoveFileEx(const std::string& from, const std::string& to, std::uint32_t flags) {
    const char* target = to.empty() ? nullptr : to.c_str();
    return ::MoveFileExA(from.c_str(), target, flags) ? error::Success : LastError();
}

Error FindFiles(const std::string& pattern, std::vector<FindData>& found) {
    found.clear();
    WIN32_FIND_DATAA data;
    HANDLE search = ::FindFirstFileA(pattern.c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    do {
        FindData entry;
        entry.attributes = data.dwFileAttributes;
        entry.creationTime = FromFiletime(data.ftCreationTime);
        entry.lastAccessTime = FromFiletime(data.ftLastAccessTime);
        entry.lastWriteTime = FromFiletime(data.ftLastWriteTime);
        entry.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
        entry.fileName = data.cFileName;
        entry.alternateFileName = data.cAlternateFileName;
        found.push_back(entry);
    } while (::FindNextFileA(search, &data));
    Error error = LastError();
    ::FindClose(search);
    return error == ERROR_NO_MORE_FILES ? error::Success : error;
}

Error GetFileTime(const std::string& path, FileTimes& times) {
    HANDLE file = ::CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    FILETIME creation, access, write;
    Error error = ::GetFileTime(file, &creation, &access, &write) ? error::Success : LastError();
    ::CloseHandle(file);
    if (error == error::Success) {
        times.creation = FromFiletime(creation);
        times.lastAccess = FromFiletime(access);
        times.lastWrite = FromFiletime(write);
    }
    return error;
}

Error SetFileTime(const std::string& path, const FileTimes& times) {
    HANDLE file = ::CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    FILETIME creation = ToFiletime(times.creation);
    FILETIME access = ToFiletime(times.lastAccess);
    FILETIME write = ToFiletime(times.lastWrite);
    Error error = ::SetFileTime(file, times.creation.ticks ? &creation : nullptr,
                                times.lastAccess.ticks ? &access : nullptr,
                                times.lastWrite.ticks ? &write : nullptr)
                          ? error::Success
                          : LastError();
    ::CloseHandle(file);
    return error;
}

Error GetFileSize(const std::string& path, std::uint64_t& size) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) {
        return LastError();
    }
    size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    return error::Success;
}

Error GetShortPathName(const std::string& path, std::string& shortPath) {
    return FetchText(shortPath, [&](char* buffer, DWORD size) {
        return ::GetShortPathNameA(path.c_str(), buffer, size);
    });
}

Error GetLongPathName(const std::string& path, std::string& longPath) {
    return FetchText(longPath, [&](char* buffer, DWORD size) {
        return ::GetLongPathNameA(path.c_str(), buffer, size);
    });
}

Error GetFullPathName(const std::string& path, std::string& fullPath) {
    return FetchText(fullPath, [&](char* buffer, DWORD size) {
        return ::GetFullPathNameA(path.c_str(), size, buffer, nullptr);
    });
}

Error GetTempFileName(const std::string& folder, const std::string& prefix, std::string& tempFile) {
    char buffer[MAX_PATH + 1];
    if (::GetTempFileNameA(folder.c_str(), prefix.c_str(), 0, buffer) == 0) {
        return LastError();
    }
    tempFile = buffer;
    return error::Success;
}

Error GetDiskFreeSpaceEx(const std::string& folder, std::uint64_t& freeBytes) {
    ULARGE_INTEGER available;
    if (!::GetDiskFreeSpaceExA(folder.c_str(), &available, nullptr, nullptr)) {
        return LastError();
    }
    freeBytes = available.QuadPart;
    return error::Success;
}

Error fsopen(const std::string& path, const char* mode, Share share, std::FILE*& stream) {
    int flag = share == Share::DenyNone    ? _SH_DENYNO
               : share == Share::DenyWrite ? _SH_DENYWR
                                           : _SH_DENYRW;
    ::SetLastError(0);
    stream = ::_fsopen(path.c_str(), mode, flag);
    if (stream != nullptr) {
        return error::Success;
    }
    Error error = LastError();
    return error != 0 ? error : error::AccessDenied;
}

} // namespace os
