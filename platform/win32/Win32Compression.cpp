// The compressed files group of the seam, forwarded to setupapi.dll and lz32.dll, both loaded at
// run time.
#include "win32/Win32Api.h"

#include "os/Compression.h"
#include "win32/Win32Library.h"

namespace os {

namespace {

using InfoExFunction = BOOL(WINAPI*)(PCSTR, PSTR, DWORD, PDWORD, PDWORD, PDWORD, PUINT);
using InfoFunction = DWORD(WINAPI*)(PCSTR, PSTR*, PDWORD, PDWORD, PUINT);
using DecompressFunction = DWORD(WINAPI*)(PCSTR, PCSTR, PUINT);
using IterateFunction = BOOL(WINAPI*)(PCSTR, DWORD, PSP_FILE_CALLBACK_A, PVOID);
using ExpandedNameFunction = INT(WINAPI*)(LPSTR, LPSTR);
using OpenFunction = INT(WINAPI*)(LPSTR, LPOFSTRUCT, WORD);
using CopyFunction = LONG(WINAPI*)(INT, INT);
using CloseFunction = void(WINAPI*)(INT);

constexpr const char* kSetupApi = "setupapi.dll";
constexpr const char* kLz32 = "lz32.dll";

// What an LZERROR_* code of lz32.dll means as a Windows error.
Error FromLzError(LONG code) {
    switch (code) {
    case LZERROR_GLOBALLOC:
    case LZERROR_GLOBLOCK:
        return error::NotEnoughMemory;
    case LZERROR_WRITE:
        return 29; // ERROR_WRITE_FAULT
    case LZERROR_BADINHANDLE:
    case LZERROR_BADOUTHANDLE:
        return error::InvalidHandle;
    default:
        return error::InvalidData;
    }
}

// Collects every file of the cabinet and has setupapi.dll skip it.
UINT CALLBACK ListCabinetFile(PVOID context, UINT notification, UINT_PTR param1, UINT_PTR) {
    if (notification != SPFILENOTIFY_FILEINCABINET) {
        return NO_ERROR;
    }
    auto* files = static_cast<std::vector<CabinetFileInfo>*>(context);
    const auto* info = reinterpret_cast<const FILE_IN_CABINET_INFO_A*>(param1);
    CabinetFileInfo file;
    file.nameInCabinet = info->NameInCabinet != nullptr ? info->NameInCabinet : "";
    file.fileSize = info->FileSize;
    file.dosDate = info->DosDate;
    file.dosTime = info->DosTime;
    file.dosAttributes = info->DosAttribs;
    files->push_back(file);
    return FILEOP_SKIP;
}

} // namespace

Error SetupGetFileCompressionInfoEx(const std::string& sourceFileName, FileCompressionInfo& info) {
    auto query = win32::GetProcedure<InfoExFunction>(kSetupApi, "SetupGetFileCompressionInfoExA");
    if (query == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    DWORD required = 0;
    DWORD sourceSize = 0;
    DWORD targetSize = 0;
    UINT type = 0;
    std::string actual(MAX_PATH, '\0');
    for (int round = 0; round < 3; ++round) {
        if (query(sourceFileName.c_str(), actual.data(), static_cast<DWORD>(actual.size()),
                  &required, &sourceSize, &targetSize, &type)) {
            info.actualSourceFileName = actual.c_str();
            info.sourceFileSize = sourceSize;
            info.targetFileSize = targetSize;
            info.compressionType = type;
            return error::Success;
        }
        Error rc = ::GetLastError();
        if (rc != ERROR_INSUFFICIENT_BUFFER || required <= actual.size()) {
            return rc;
        }
        actual.assign(required, '\0');
    }
    return error::InsufficientBuffer;
}

Error SetupGetFileCompressionInfo(const std::string& sourceFileName, FileCompressionInfo& info) {
    auto query = win32::GetProcedure<InfoFunction>(kSetupApi, "SetupGetFileCompressionInfoA");
    if (query == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    PSTR actual = nullptr;
    DWORD sourceSize = 0;
    DWORD targetSize = 0;
    UINT type = 0;
    DWORD rc = query(sourceFileName.c_str(), &actual, &sourceSize, &targetSize, &type);
    if (rc != ERROR_SUCCESS) {
        return rc;
    }
    // The function allocates the name for its caller with LocalAlloc.
    info.actualSourceFileName = actual != nullptr ? actual : sourceFileName.c_str();
    if (actual != nullptr) {
        ::LocalFree(actual);
    }
    info.sourceFileSize = sourceSize;
    info.targetFileSize = targetSize;
    info.compressionType = type;
    return error::Success;
}

Error SetupDecompressOrCopyFile(const std::string& source, const std::string& target) {
    auto decompress =
            win32::GetProcedure<DecompressFunction>(kSetupApi, "SetupDecompressOrCopyFileA");
    if (decompress == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    return decompress(source.c_str(), target.c_str(), nullptr);
}

Error SetupIterateCabinet(const std::string& cabinet, std::vector<CabinetFileInfo>& files) {
    auto iterate = win32::GetProcedure<IterateFunction>(kSetupApi, "SetupIterateCabinetA");
    if (iterate == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    files.clear();
    if (!iterate(cabinet.c_str(), 0, ListCabinetFile, &files)) {
        Error rc = ::GetLastError();
        return rc != 0 ? rc : error::InvalidData;
    }
    return error::Success;
}

Error GetExpandedName(const std::string& source, std::string& expanded) {
    auto getName = win32::GetProcedure<ExpandedNameFunction>(kLz32, "GetExpandedNameA");
    if (getName == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    // The function writes a name no longer than its source.
    std::string in = source;
    std::string out(source.size() + MAX_PATH, '\0');
    ::SetLastError(0);
    INT rc = getName(in.data(), out.data());
    if (rc < 0) {
        Error last = ::GetLastError();
        return last != 0 ? last : FromLzError(rc);
    }
    expanded = out.c_str();
    return error::Success;
}

Error LZCopy(const std::string& source, const std::string& target, LzStep& failed) {
    failed = LzStep::None;
    auto open = win32::GetProcedure<OpenFunction>(kLz32, "LZOpenFileA");
    auto copy = win32::GetProcedure<CopyFunction>(kLz32, "LZCopy");
    auto close = win32::GetProcedure<CloseFunction>(kLz32, "LZClose");
    if (open == nullptr || copy == nullptr || close == nullptr) {
        failed = LzStep::OpenSource;
        return ERROR_PROC_NOT_FOUND;
    }
    std::string sourceName = source;
    std::string targetName = target;
    OFSTRUCT sourceInfo{};
    OFSTRUCT targetInfo{};
    INT from = open(sourceName.data(), &sourceInfo, OF_READ);
    if (from < 0) {
        failed = LzStep::OpenSource;
        return sourceInfo.nErrCode != 0 ? sourceInfo.nErrCode : FromLzError(from);
    }
    INT to = open(targetName.data(), &targetInfo, OF_CREATE);
    if (to < 0) {
        close(from);
        failed = LzStep::OpenTarget;
        return targetInfo.nErrCode != 0 ? targetInfo.nErrCode : FromLzError(to);
    }
    LONG copied = copy(from, to);
    close(from);
    close(to);
    if (copied < 0) {
        failed = LzStep::Copy;
        return FromLzError(copied);
    }
    return error::Success;
}

} // namespace os
