// Types and constants shared by every group of the platform seam.
//
// The seam stands for the Windows API: operations keep the names of the functions they stand for
// and report Windows error codes, but take and give C++ values instead of packed buffers.
#pragma once

#include <cstdint>
#include <string>

namespace os {

// A Windows error code as GetLastError would give it; 0 is success.
using Error = std::uint32_t;

namespace error {
constexpr Error Success = 0;
constexpr Error InvalidFunction = 1;
constexpr Error FileNotFound = 2;
constexpr Error PathNotFound = 3;
constexpr Error AccessDenied = 5;
constexpr Error InvalidHandle = 6;
constexpr Error NotEnoughMemory = 8;
constexpr Error InvalidData = 13;
constexpr Error InvalidDrive = 15;
constexpr Error NoMoreFiles = 18;
constexpr Error NotReady = 21;
constexpr Error SharingViolation = 32;
constexpr Error LockViolation = 33;
constexpr Error HandleEof = 38;
constexpr Error NotSupported = 50;
constexpr Error BadNetPath = 53;
constexpr Error FileExists = 80;
constexpr Error InvalidParameter = 87;
constexpr Error DiskFull = 112;
constexpr Error InsufficientBuffer = 122;
constexpr Error InvalidName = 123;
constexpr Error DirNotEmpty = 145;
constexpr Error AlreadyExists = 183;
constexpr Error EnvVarNotFound = 203;
constexpr Error MoreData = 234;
constexpr Error NoMoreItems = 259;
constexpr Error BadKey = 1010;
constexpr Error CantRead = 1012;
constexpr Error CantWrite = 1013;
constexpr Error KeyDeleted = 1018;
constexpr Error ChildMustBeVolatile = 1021;
constexpr Error ServiceDoesNotExist = 1060;
constexpr Error NoUnicodeTranslation = 1113;
constexpr Error InvalidComputerName = 1210;
} // namespace error

// File attribute bits, as FILE_ATTRIBUTE_*.
namespace attr {
constexpr std::uint32_t ReadOnly = 0x1;
constexpr std::uint32_t Hidden = 0x2;
constexpr std::uint32_t System = 0x4;
constexpr std::uint32_t Directory = 0x10;
constexpr std::uint32_t Archive = 0x20;
constexpr std::uint32_t Normal = 0x80;
constexpr std::uint32_t Temporary = 0x100;
constexpr std::uint32_t ReparsePoint = 0x400;
constexpr std::uint32_t Invalid = 0xFFFFFFFF;
} // namespace attr

// A FILETIME: 100-nanosecond intervals since 1601-01-01 UTC.
struct FileTime {
    std::uint64_t ticks = 0;
    friend auto operator<=>(const FileTime&, const FileTime&) = default;
};

// A SYSTEMTIME.
struct SystemTime {
    std::uint16_t year = 0;
    std::uint16_t month = 0;
    std::uint16_t dayOfWeek = 0;
    std::uint16_t day = 0;
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
    std::uint16_t second = 0;
    std::uint16_t milliseconds = 0;
};

// A module handle (HMODULE). Null names the program that runs the process.
using Module = const void*;

} // namespace os
