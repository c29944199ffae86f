// The registry of the local machine or of another computer, with keys named by a root word
// ("HKLM", "HKCU", "HKU", "HKCR", "HKCC") and a path, values in one typed record, and a log line
// for every call. Handles are closed in the function that opened them; the roots of another
// computer stay connected for the life of the object.
#pragma once

#include "core/CStdStringList.h"
#include "os/RegistryApi.h"
#include "system/RegistryValue.h"

#include <map>

class Registry {
public:
    Registry() = default;
    explicit Registry(const CStdStr& computerName) : mComputerName(computerName) {}
    ~Registry();
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    bool CreateKey(const CStdStr& root, const CStdStr& key, bool inheritPermissions);
    bool DoesKeyExist(const CStdStr& root, const CStdStr& key);
    bool DoesValueExist(const CStdStr& root, const CStdStr& key, const CStdStr& valueName);
    // No subkeys and no values. A key that cannot be opened is not empty.
    bool IsKeyEmpty(const CStdStr& root, const CStdStr& key);

    bool ReadValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName,
                   RegistryValue& value);
    // A DWORD in decimal, binary data as its bytes stand, a multi-string as its first string.
    CStdStr ReadStringValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName);
    // A value as ReadStringValue gives it.
    static CStdStr ValueText(const RegistryValue& value);
    bool WriteValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName,
                    const RegistryValue& value);
    bool DeleteValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName);
    bool DeleteEmptyKey(const CStdStr& root, const CStdStr& key, bool traverseDown);
    bool Enumerate(const CStdStr& root, const CStdStr& key, CStdStringList& subkeys,
                   CStdStringList& values);
    bool CleanEmptyKeys(const CStdStr& root, const CStdStr& key);
    bool WipeOutKey(const CStdStr& root, const CStdStr& key);

    // The system's error code of the last call that failed on this object, for the callers'
    // messages; 0 before any failure.
    os::Error GetLastError() const { return mLastError; }

    // The handle of a root word on this object's computer; 0 for an unknown word.
    os::HKey getRootKey(const CStdStr& rootWord);
    // RegConnectRegistry of a predefined root on this object's computer; 0 on failure.
    os::HKey getRemoteKey(os::HKey root);
    // The error code of RegOpenKeyEx.
    os::Error openKey(const CStdStr& root, const CStdStr& key, std::uint32_t access,
                      os::HKey& handle);

private:
    bool cleanHelper(const CStdStr& root, const CStdStr& key, bool killAll);
    bool isRemote() const { return !mComputerName.empty(); }

    CStdStr mComputerName;
    std::map<os::HKey, os::HKey> mRemoteRoots;
    os::HKey mRemoteClasses = 0;
    os::Error mLastError = os::error::Success;
};
