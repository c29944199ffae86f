// Registry group of the platform seam, for the local machine and for other computers.
//
// Key and value names and string data are in the system's ANSI code page, as the A functions of
// the registry give them; string data carries its terminators.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

// An open key (HKEY). The predefined roots are constants; other values come from the calls.
using HKey = std::uintptr_t;

namespace hkey {
constexpr HKey ClassesRoot = 0x80000000;
constexpr HKey CurrentUser = 0x80000001;
constexpr HKey LocalMachine = 0x80000002;
constexpr HKey Users = 0x80000003;
constexpr HKey CurrentConfig = 0x80000005;
} // namespace hkey

namespace regaccess {
constexpr std::uint32_t QueryValue = 0x0001;
constexpr std::uint32_t SetValue = 0x0002;
constexpr std::uint32_t CreateSubKey = 0x0004;
constexpr std::uint32_t EnumerateSubKeys = 0x0008;
constexpr std::uint32_t Delete = 0x00010000;
constexpr std::uint32_t WriteDac = 0x00040000;
constexpr std::uint32_t WriteOwner = 0x00080000;
constexpr std::uint32_t Read = 0x20019;      // KEY_READ
constexpr std::uint32_t Write = 0x20006;     // KEY_WRITE
constexpr std::uint32_t AllAccess = 0xF003F; // KEY_ALL_ACCESS
// The rights that change a key.
constexpr std::uint32_t AnyWrite = SetValue | CreateSubKey | Delete | WriteDac | WriteOwner;
} // namespace regaccess

namespace regtype {
constexpr std::uint32_t None = 0;
constexpr std::uint32_t String = 1;
constexpr std::uint32_t ExpandString = 2;
constexpr std::uint32_t Binary = 3;
constexpr std::uint32_t Dword = 4;
constexpr std::uint32_t MultiString = 7;
} // namespace regtype

struct RegKeyInfo {
    std::uint32_t subKeys = 0;
    std::uint32_t maxSubKeyLength = 0;
    std::uint32_t values = 0;
    std::uint32_t maxValueNameLength = 0;
    std::uint32_t maxValueLength = 0;
};

// A computer that is not reachable gives BadNetPath (53).
Error RegConnectRegistry(const std::string& computerName, HKey root, HKey& result);
Error RegOpenKeyEx(HKey key, const std::string& subKey, std::uint32_t access, HKey& result);
// `security` is a security descriptor in SDDL for a new key; empty gives the default one.
Error RegCreateKeyEx(HKey key, const std::string& subKey, std::uint32_t access,
                     const std::string& security, HKey& result, bool* created);
Error RegCloseKey(HKey key);

Error RegQueryValueEx(HKey key, const std::string& name, std::uint32_t& type,
                      std::vector<std::uint8_t>& data);
Error RegSetValueEx(HKey key, const std::string& name, std::uint32_t type,
                    const std::vector<std::uint8_t>& data);
Error RegDeleteValue(HKey key, const std::string& name);
Error RegDeleteKey(HKey key, const std::string& subKey);

// NoMoreItems past the last one.
Error RegEnumKeyEx(HKey key, std::uint32_t index, std::string& name);
Error RegEnumValue(HKey key, std::uint32_t index, std::string& name);
Error RegQueryInfoKey(HKey key, RegKeyInfo& info);

// The key's discretionary access list, as an SDDL security descriptor ("D:...").
Error RegGetKeySecurity(HKey key, std::string& security);
// SetEntriesInAcl and SetSecurityDescriptorDacl: a descriptor whose access list holds the
// entries of `parentSecurity`, for a key that is to keep what its parent grants.
Error BuildInheritedSecurity(const std::string& parentSecurity, std::string& security);

} // namespace os
