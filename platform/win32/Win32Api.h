// The Win32 API for the win32 backend. windows.h maps each generic name to its A or W form by a
// macro; the seam declares functions under the generic names, so those macros go here, before
// any seam header is read.
#pragma once

// winsock2.h must come before windows.h.
#include <windows.h>
#include <winsock2.h>

#include <aclapi.h>
#include <dbghelp.h>
#include <lzexpand.h>
#include <psapi.h>
#include <sddl.h>
#include <setupapi.h>
#include <share.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <winspool.h>
#include <winver.h>

#undef CopyFile
#undef CreateMutex
#undef CreateDirectory
#undef DeleteFile
#undef ExpandEnvironmentStrings
#undef GetComputerName
#undef GetCurrentDirectory
#undef GetDiskFreeSpaceEx
#undef GetEnvironmentVariable
#undef GetFileAttributes
#undef GetFullPathName
#undef GetLocaleInfo
#undef GetLongPathName
#undef GetModuleFileName
#undef GetShortPathName
#undef GetSystemDirectory
#undef GetTempFileName
#undef GetTempPath
#undef GetUserName
#undef GetWindowsDirectory
#undef MoveFile
#undef MoveFileEx
#undef RemoveDirectory
#undef SetCurrentDirectory
#undef SetEnvironmentVariable
#undef SetFileAttributes
#undef RegConnectRegistry
#undef RegCreateKeyEx
#undef RegDeleteKey
#undef RegDeleteValue
#undef RegEnumKeyEx
#undef RegEnumValue
#undef RegOpenKeyEx
#undef RegQueryInfoKey
#undef RegQueryValueEx
#undef RegSetValueEx
#undef FormatMessage
#undef GetVersionEx
#undef EnumPrinterDrivers
#undef EnumPrinters
#undef GetPrinterDriverDirectory
#undef GetPrintProcessorDirectory
#undef SHGetSpecialFolderPath
#undef CreateToolhelp32Snapshot
#undef EnumWindows
#undef SendMessageTimeout
#undef GetFileVersionInfoSize
#undef GetFileVersionInfo
#undef VerQueryValue
#undef GetExpandedName
#undef LZOpenFile
#undef SetupGetFileCompressionInfo
#undef SetupGetFileCompressionInfoEx
#undef SetupDecompressOrCopyFile
#undef SetupIterateCabinet
#undef EnumProcesses
#undef GetModuleBaseName
