// The crash dump group of the seam: the unhandled exception filter and DBGHELP's dump writer.
#include "win32/Win32Api.h"

#include "os/Crash.h"

namespace os {

namespace {

CrashFilter gFilter = nullptr;

LONG WINAPI Forward(EXCEPTION_POINTERS* pointers) {
    return gFilter != nullptr ? gFilter(pointers) : EXCEPTION_CONTINUE_SEARCH;
}

// After a stack overflow the filter runs on what is left of the thread's stack: a guarantee
// keeps enough of it back for the dump to be written. The call exists from Windows Server 2003
// SP1 and Vista on, and is looked up so that the library still loads on older systems.
void GuaranteeStackForTheFilter() {
    using Guarantee = BOOL(WINAPI*)(PULONG);
    HMODULE kernel = ::GetModuleHandleA("kernel32.dll");
    auto guarantee = kernel == nullptr
                             ? nullptr
                             : reinterpret_cast<Guarantee>(reinterpret_cast<void*>(
                                       ::GetProcAddress(kernel, "SetThreadStackGuarantee")));
    if (guarantee != nullptr) {
        ULONG size = 64 * 1024;
        guarantee(&size);
    }
}

} // namespace

void SetUnhandledExceptionFilter(CrashFilter filter) {
    gFilter = filter;
    GuaranteeStackForTheFilter();
    ::SetUnhandledExceptionFilter(Forward);
}

Error MiniDumpWriteDump(const std::string& path, void* exceptionPointers, DumpStep& failedStep) {
    HANDLE file = ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE || file == nullptr) {
        failedStep = DumpStep::CreateFile;
        return ::GetLastError();
    }
    Error result = error::Success;
    HMODULE dbghelp = ::LoadLibraryA("DBGHELP.DLL");
    if (dbghelp == nullptr) {
        failedStep = DumpStep::LoadLibrary;
        result = ::GetLastError();
    } else {
        using WriteDumpFn =
                BOOL(WINAPI*)(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE, PMINIDUMP_EXCEPTION_INFORMATION,
                              PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION);
        auto write = reinterpret_cast<WriteDumpFn>(
                reinterpret_cast<void*>(::GetProcAddress(dbghelp, "MiniDumpWriteDump")));
        if (write == nullptr) {
            failedStep = DumpStep::GetProcAddress;
            result = ::GetLastError();
        } else {
            MINIDUMP_EXCEPTION_INFORMATION exception{};
            exception.ThreadId = ::GetCurrentThreadId();
            exception.ExceptionPointers = static_cast<EXCEPTION_POINTERS*>(exceptionPointers);
            exception.ClientPointers = FALSE;
            if (!write(::GetCurrentProcess(), ::GetCurrentProcessId(), file, MiniDumpNormal,
                       &exception, nullptr, nullptr)) {
                failedStep = DumpStep::WriteDump;
                result = ::GetLastError();
            }
        }
        ::FreeLibrary(dbghelp);
    }
    ::CloseHandle(file);
    return result;
}

} // namespace os
