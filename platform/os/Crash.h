// Crash dump group of the platform seam: the unhandled exception filter and the dump writer.
#pragma once

#include "os/OsTypes.h"

namespace os {

// The filter receives the system's exception record (EXCEPTION_POINTERS on Windows) and returns
// 0 to let the crash go on to the system.
using CrashFilter = long (*)(void* exceptionPointers);

void SetUnhandledExceptionFilter(CrashFilter filter);

enum class DumpStep { CreateFile, LoadLibrary, GetProcAddress, WriteDump };

// CreateFile of `path`, DBGHELP.DLL loaded at run time, and MiniDumpWriteDump of the current
// process with MiniDumpNormal. On failure `failedStep` says which step failed.
Error MiniDumpWriteDump(const std::string& path, void* exceptionPointers, DumpStep& failedStep);

} // namespace os
