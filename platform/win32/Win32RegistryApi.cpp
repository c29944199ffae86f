// The registry group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/RegistryApi.h"

#include <sddl.h>

namespace os {

namespace {

HKEY Handle(HKey key) {
    return reinterpret_cast<HKEY>(key);
}

HKey FromHandle(HKEY key) {
    return reinterpret_cast<HKey>(key);
}

// Converts an SDDL text to a security descriptor that the caller frees with LocalFree.
PSECURITY_DESCRIPTOR Descriptor(const std::string& sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1,
                                                                &descriptor, nullptr)) {
        return nullptr;
    }
    return descriptor;
}

} // namespace

Error RegConnectRegistry(const std::string& computerName, HKey root, HKey& result) {
    HKEY connected = nullptr;
    LONG rc = ::RegConnectRegistryA(computerName.empty() ? nullptr : computerName.c_str(),
                                    Handle(root), &connected);
    if (rc == ERROR_SUCCESS) {
        result = FromHandle(connected);
    }
    return static_cast<Error>(rc);
}

Error RegOpenKeyEx(HKey key, const std::string& subKey, std::uint32_t access, HKey& result) {
    HKEY opened = nullptr;
    LONG rc = ::RegOpenKeyExA(Handle(key), subKey.c_str(), 0, access, &opened);
    if (rc == ERROR_SUCCESS) {
        result = FromHandle(opened);
    }
    return static_cast<Error>(rc);
}

Error RegCreateKeyEx(HKey key, const std::string& subKey, std::uint32_t access,
                     const std::string& security, HKey& result, bool* created) {
    SECURITY_ATTRIBUTES attributes{};
    PSECURITY_DESCRIPTOR descriptor = security.empty() ? nullptr : Descriptor(security);
    if (!security.empty() && descriptor == nullptr) {
        return ::GetLastError();
    }
    attributes.nLength = sizeof attributes;
    attributes.lpSecurityDescriptor = descriptor;
    HKEY opened = nullptr;
    DWORD disposition = 0;
    LONG rc = ::RegCreateKeyExA(Handle(key), subKey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                access, descriptor ? &attributes : nullptr, &opened, &disposition);
    if (descriptor != nullptr) {
        ::LocalFree(descriptor);
    }
    if (rc == ERROR_SUCCESS) {
        result = FromHandle(opened);
        if (created != nullptr) {
            *created = disposition == REG_CREATED_NEW_KEY;
        }
    }
    return static_cast<Error>(rc);
}

Error RegCloseKey(HKey key) {
    return static_cast<Error>(::RegCloseKey(Handle(key)));
}

Error RegQueryValueEx(HKey key, const std::string& name, std::uint32_t& type,
                      std::vector<std::uint8_t>& data) {
    DWORD size = 0;
    DWORD kind = 0;
    LONG rc = ::RegQueryValueExA(Handle(key), name.c_str(), nullptr, &kind, nullptr, &size);
    for (int round = 0; rc == ERROR_SUCCESS || rc == ERROR_MORE_DATA; ++round) {
        data.assign(size, 0);
        rc = ::RegQueryValueExA(Handle(key), name.c_str(), nullptr, &kind, data.data(), &size);
        if (rc == ERROR_SUCCESS) {
            data.resize(size);
            type = kind;
            return error::Success;
        }
        if (round == 3) {
            break;
        }
    }
    return static_cast<Error>(rc);
}

Error RegSetValueEx(HKey key, const std::string& name, std::uint32_t type,
                    const std::vector<std::uint8_t>& data) {
    return static_cast<Error>(::RegSetValueExA(Handle(key), name.c_str(), 0, type, data.data(),
                                               static_cast<DWORD>(data.size())));
}

Error RegDeleteValue(HKey key, const std::string& name) {
    return static_cast<Error>(::RegDeleteValueA(Handle(key), name.c_str()));
}

Error RegDeleteKey(HKey key, const std::string& subKey) {
    return static_cast<Error>(::RegDeleteKeyA(Handle(key), subKey.c_str()));
}

Error RegEnumKeyEx(HKey key, std::uint32_t index, std::string& name) {
    char buffer[256];
    DWORD size = sizeof buffer;
    LONG rc =
            ::RegEnumKeyExA(Handle(key), index, buffer, &size, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_SUCCESS) {
        name.assign(buffer, size);
    }
    return static_cast<Error>(rc);
}

Error RegEnumValue(HKey key, std::uint32_t index, std::string& name) {
    std::string buffer(16384, '\0');
    DWORD size = static_cast<DWORD>(buffer.size());
    LONG rc = ::RegEnumValueA(Handle(key), index, buffer.data(), &size, nullptr, nullptr, nullptr,
                              nullptr);
    if (rc == ERROR_SUCCESS) {
        name.assign(buffer.data(), size);
    }
    return static_cast<Error>(rc);
}

Error RegQueryInfoKey(HKey key, RegKeyInfo& info) {
    DWORD subKeys = 0, maxSubKey = 0, values = 0, maxValueName = 0, maxValue = 0;
    LONG rc = ::RegQueryInfoKeyA(Handle(key), nullptr, nullptr, nullptr, &subKeys, &maxSubKey,
                                 nullptr, &values, &maxValueName, &maxValue, nullptr, nullptr);
    if (rc == ERROR_SUCCESS) {
        info.subKeys = subKeys;
        info.maxSubKeyLength = maxSubKey;
        info.values = values;
        info.maxValueNameLength = maxValueName;
        info.maxValueLength = maxValue;
    }
    return static_cast<Error>(rc);
}

Error RegGetKeySecurity(HKey key, std::string& security) {
    DWORD size = 0;
    LONG rc = ::RegGetKeySecurity(Handle(key), DACL_SECURITY_INFORMATION, nullptr, &size);
    if (rc != ERROR_INSUFFICIENT_BUFFER) {
        return static_cast<Error>(rc);
    }
    std::vector<std::uint8_t> buffer(size);
    rc = ::RegGetKeySecurity(Handle(key), DACL_SECURITY_INFORMATION, buffer.data(), &size);
    if (rc != ERROR_SUCCESS) {
        return static_cast<Error>(rc);
    }
    char* text = nullptr;
    if (!::ConvertSecurityDescriptorToStringSecurityDescriptorA(
                buffer.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr)) {
        return ::GetLastError();
    }
    security = text;
    ::LocalFree(text);
    return error::Success;
}

Error BuildInheritedSecurity(const std::string& parentSecurity, std::string& security) {
    PSECURITY_DESCRIPTOR parent = Descriptor(parentSecurity);
    if (parent == nullptr) {
        return ::GetLastError();
    }
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL parentDacl = nullptr;
    ::GetSecurityDescriptorDacl(parent, &present, &parentDacl, &defaulted);
    // advapi32 is loaded at run time, as on systems that may lack the function.
    using SetEntriesInAclFn = DWORD(WINAPI*)(ULONG, PEXPLICIT_ACCESS_A, PACL, PACL*);
    HMODULE advapi = ::LoadLibraryA("ADVAPI32.DLL");
    auto setEntries = advapi == nullptr
                              ? nullptr
                              : reinterpret_cast<SetEntriesInAclFn>(reinterpret_cast<void*>(
                                        ::GetProcAddress(advapi, "SetEntriesInAclA")));
    Error result = error::Success;
    PACL dacl = nullptr;
    if (setEntries == nullptr) {
        result = 127; // ERROR_PROC_NOT_FOUND
    } else if (DWORD rc = setEntries(0, nullptr, present ? parentDacl : nullptr, &dacl)) {
        result = rc;
    } else {
        SECURITY_DESCRIPTOR descriptor;
        ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
        ::SetSecurityDescriptorDacl(&descriptor, TRUE, dacl, FALSE);
        char* text = nullptr;
        if (::ConvertSecurityDescriptorToStringSecurityDescriptorA(
                    &descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr)) {
            security = text;
            ::LocalFree(text);
        } else {
            result = ::GetLastError();
        }
        ::LocalFree(dacl);
    }
    if (advapi != nullptr) {
        ::FreeLibrary(advapi);
    }
    ::LocalFree(parent);
    return result;
}

} // namespace os
