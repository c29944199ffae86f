// Faults that a packager injects into a simulated machine, from faults.ini in its folder:
//
//   [Registry]
//   DenyWrite=HKLM\SOFTWARE\Policies      ; opening this key (or one below it) for writing gives 5
//   [Files]
//   C:\Windows\system32\x.dll=sharing     ; in use: 32 (sharing) or 33 (lock) on write or delete;
//                                         ; "image" is a running program: it can be renamed only
//   [Services]
//   Spooler=hang      ; a start or stop stays pending, its check point never moves
//   Fax=nostart       ; StartService fails with 1053
//   Tapisrv=nostop    ; the service does not accept a stop: 1052
#pragma once

#include <string>
#include <vector>

namespace sim {

class IniText;

enum class FileLock { None, Sharing, Lock, Image };
enum class ServiceFault { None, Hang, NoStart, NoStop };

class FaultList {
public:
    // `currentUserKey` is where HKCU lives, so that a fault may name it either way.
    void Read(const IniText& ini, const std::string& currentUserKey);

    // Full store paths ("HKEY_LOCAL_MACHINE\\..."), compared without regard to case.
    bool DeniesRegistryWrite(const std::string& keyPath) const;
    // Locked files by their folded, normalised machine path.
    const std::vector<std::pair<std::string, FileLock>>& LockedFiles() const {
        return mLockedFiles;
    }

    ServiceFault FaultOfService(const std::string& name) const;

private:
    std::vector<std::pair<std::string, ServiceFault>> mServiceFaults; // lower-case name
    std::vector<std::string> mDeniedKeys;
    std::vector<std::pair<std::string, FileLock>> mLockedFiles;
};

} // namespace sim
