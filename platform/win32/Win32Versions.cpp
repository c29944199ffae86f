// The file versions group of the seam, forwarded to version.dll.
#include "win32/Win32Api.h"

#include "os/Versions.h"
#include "win32/Win32Library.h"

#include <cstring>

namespace os {

namespace {

using SizeFunction = DWORD(WINAPI*)(LPCSTR, LPDWORD);
using InfoFunction = BOOL(WINAPI*)(LPCSTR, DWORD, DWORD, LPVOID);
using QueryFunction = BOOL(WINAPI*)(LPCVOID, LPCSTR, LPVOID*, PUINT);

constexpr const char* kLibrary = "version.dll";

// VerQueryValueA: the value's address and length in the block. The A function converts the
// block's wide texts into the spare room that GetFileVersionInfoSizeA asked for, so the block
// is written to; it is only ever the caller's own copy.
Error Query(const VersionBlock& block, const std::string& subBlock, void*& value, UINT& length) {
    auto query = win32::GetProcedure<QueryFunction>(kLibrary, "VerQueryValueA");
    if (query == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    if (block.data.empty()) {
        return error::ResourceNameNotFound;
    }
    value = nullptr;
    length = 0;
    if (!query(block.data.data(), subBlock.c_str(), &value, &length) || value == nullptr) {
        return error::ResourceNameNotFound;
    }
    return error::Success;
}

} // namespace

Error GetFileVersionInfoSize(const std::string& path, std::uint32_t& size) {
    auto getSize = win32::GetProcedure<SizeFunction>(kLibrary, "GetFileVersionInfoSizeA");
    if (getSize == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    DWORD handle = 0;
    ::SetLastError(0);
    size = getSize(path.c_str(), &handle);
    if (size == 0) {
        Error rc = ::GetLastError();
        return rc != 0 ? rc : error::ResourceTypeNotFound;
    }
    return error::Success;
}

Error GetFileVersionInfo(const std::string& path, VersionBlock& block) {
    block.data.clear();
    auto getInfo = win32::GetProcedure<InfoFunction>(kLibrary, "GetFileVersionInfoA");
    if (getInfo == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    std::uint32_t size = 0;
    if (Error rc = GetFileVersionInfoSize(path, size)) {
        return rc;
    }
    std::vector<std::uint8_t> data(size, 0);
    if (!getInfo(path.c_str(), 0, size, data.data())) {
        Error rc = ::GetLastError();
        return rc != 0 ? rc : error::ResourceTypeNotFound;
    }
    block.data = std::move(data);
    return error::Success;
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, std::string& text) {
    void* value = nullptr;
    UINT length = 0;
    if (Error rc = Query(block, subBlock, value, length)) {
        return rc;
    }
    // The length counts the terminator; a value may also end early.
    const char* chars = static_cast<const char*>(value);
    text.assign(chars, ::strnlen(chars, length));
    return error::Success;
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock,
                    std::vector<VersionTranslation>& translations) {
    void* value = nullptr;
    UINT length = 0;
    if (Error rc = Query(block, subBlock, value, length)) {
        return rc;
    }
    translations.clear();
    const auto* words = static_cast<const WORD*>(value);
    for (UINT i = 0; i + 1 < length / 2; i += 2) {
        translations.push_back({words[i], words[i + 1]});
    }
    return error::Success;
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, FixedFileInfo& fixed) {
    void* value = nullptr;
    UINT length = 0;
    if (Error rc = Query(block, subBlock, value, length)) {
        return rc;
    }
    if (length < sizeof(VS_FIXEDFILEINFO)) {
        return error::ResourceNameNotFound;
    }
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(value);
    fixed.fileVersionMS = info->dwFileVersionMS;
    fixed.fileVersionLS = info->dwFileVersionLS;
    fixed.productVersionMS = info->dwProductVersionMS;
    fixed.productVersionLS = info->dwProductVersionLS;
    fixed.fileFlags = info->dwFileFlags;
    fixed.fileOS = info->dwFileOS;
    fixed.fileType = info->dwFileType;
    fixed.fileSubtype = info->dwFileSubtype;
    return error::Success;
}

} // namespace os
