// A simulated Windows machine: a folder that holds the machine's identity (machine.ini), its
// drive C: (drive_c/), its registry (registry.reg) and the other state that the platform seam
// reads and changes. The Linux build of the engine runs against one such machine.
#pragma once

#include "sim/CodePage.h"
#include "sim/Environment.h"
#include "sim/FaultList.h"
#include "sim/IniStateFile.h"
#include "sim/MachineIdentity.h"
#include "sim/PathMapper.h"
#include "sim/ProcessTable.h"
#include "sim/RegistryFile.h"
#include "sim/ServiceTable.h"
#include "sim/SpoolerState.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace sim {

class SimMachine;

// MAX_PATH, and what a longer path gives in the A functions (ERROR_FILENAME_EXCED_RANGE).
constexpr size_t kMaxPath = 260;
constexpr os::Error kFilenameTooLong = 206;

// A key opened through the registry group of the seam: which machine, which view of its
// registry (the predefined root), the path below that root, and the rights it was opened with.
struct OpenRegKey {
    SimMachine* machine = nullptr;
    std::uintptr_t root = 0;
    std::string subPath; // UTF-8, no leading or trailing backslash
    std::uint32_t access = 0;
};

class SimMachine {
public:
    // The machine of this process, taken at first use from ENGINE_MACHINE, or else the default
    // machine (made as win7-x64 when it does not exist yet). Null, with the reason, when it
    // cannot be loaded.
    static SimMachine* Current(std::string& why);
    // The start of an export call: when ENGINE_MACHINE now names another folder, or a state
    // file of the machine was changed from outside since it was read, the machine is read anew.
    // Null, with the reason, when it cannot be loaded.
    static SimMachine* Refresh(std::string& why);
    // Makes the machine in `hostDir` the one of this process, after committing the previous one.
    static bool Activate(const std::string& hostDir, std::string& why);
    // Commits and forgets the current machine; the next use loads it again.
    static void Release();
    // $XDG_DATA_HOME/installcli/machine, or ~/.local/share/installcli/machine.
    static std::string DefaultDirectory();
    static std::unique_ptr<SimMachine> Open(const std::string& hostDir, std::string& why);

    // One lock serialises the seam's calls into all simulated machines of the process.
    static std::recursive_mutex& Lock();

    const std::string& Directory() const { return mDirectory; }
    const MachineIdentity& Identity() const { return mIdentity; }
    const CodePage& Ansi() const { return CodePage::Get(mIdentity.ansiCodePage); }
    const CodePage& Oem() const { return CodePage::Get(mIdentity.oemCodePage); }
    Environment& Env() { return mEnvironment; }
    RegistryStore& Registry() { return mRegistry.Store(); }
    const FaultList& Faults() const { return mFaults; }
    // Its index of folders changes as the machine reads and writes them.
    const PathMapper& Paths() const { return mPaths; }
    // The running programs and the spooler; call the Changed functions after a change, so that
    // the next commit writes their files.
    ProcessTable& Processes() { return mProcesses.Get(); }
    SpoolerState& Spooler() { return mSpooler.Get(); }
    void ProcessesChanged() { mProcesses.Changed(); }
    void SpoolerChanged() { mSpooler.Changed(); }
    // The services (services.ini); empty on Windows 9x, which has no service manager.
    ServiceTable& Services() { return mServices.Get(); }
    void ServicesChanged() { mServices.Changed(); }

    // The current folder of the process, as a UTF-8 machine path.
    const std::string& CurrentDirectory() const { return mCurrentDirectory; }
    void SetCurrentDirectory(const std::string& utf8Path) { mCurrentDirectory = utf8Path; }
    // Where HKEY_CURRENT_USER lives in HKEY_USERS: the user's SID, or .DEFAULT on Windows 9x.
    std::string CurrentUserKey() const;

    std::string ToUtf8(const std::string& ansi) const { return Ansi().ToUtf8(ansi); }
    std::string ToAnsi(const std::string& utf8) const { return Ansi().FromUtf8(utf8); }

    // Parses an ANSI path against the current folder, and finds it on the host. UNC paths
    // reach the machines of the [Network] section. `parsed` receives the normalised path.
    os::Error Locate(const std::string& ansiPath, HostLocation& out, bool allowWildcards = false,
                     WindowsPath* parsed = nullptr);
    // Reads the whole of an existing file as a reader that shares it would: a missing file, a
    // folder, or a file another process holds against reading gives the error Windows gives.
    os::Error ReadFile(const std::string& ansiPath, std::string& bytes);
    // The machine's own view of a host path (UTF-8); none when no drive reaches it.
    std::optional<std::string> HostToMachine(const std::string& hostPath) const {
        return mPaths.ToMachinePath(hostPath);
    }

    // Another machine of the network by its computer name; this machine for its own name.
    // BadNetPath when no machine of that name is known.
    SimMachine* Remote(const std::string& computerName, os::Error& error);

    // Files held open by other processes (from faults.ini). A lock follows its file when the
    // file is renamed, and a deleted file takes its lock with it.
    FileLock LockOf(const WindowsPath& path) const;
    void MoveLock(const WindowsPath& from, const WindowsPath& to);

    // Keys opened through the seam, by handle. Handles of other machines' keys live here too.
    std::map<std::uintptr_t, OpenRegKey>& OpenKeys() { return mOpenKeys; }

    // Writes what this process changed in the state files (registry, spooler, programs), under
    // the machine's lock, merged onto what other processes wrote meanwhile (see StateFile);
    // called at the end of every export. False, with the reason on standard error, when a file
    // could not be written; it stays to be written at the next commit.
    bool Commit();

private:
    SimMachine() = default;
    bool load(const std::string& hostDir, std::string& why);
    // The environment variables that the registry keeps, over those of machine.ini.
    void applyRegistryEnvironment();
    static std::string namedDirectory();
    // Size and modification time of the state files, to see changes made from outside.
    std::string stateStamp() const;
    os::Error locateUnc(const WindowsPath& path, HostLocation& out);

    // The state files, in the order they are read and committed.
    std::vector<StateFile*> stateFiles() {
        return {&mRegistry, &mSpooler, &mProcesses, &mServices};
    }

    std::string mDirectory;
    MachineIdentity mIdentity;
    Environment mEnvironment;
    RegistryFile mRegistry;
    FaultList mFaults;
    PathMapper mPaths;
    std::string mCurrentDirectory;
    std::map<std::string, std::string> mNetwork; // folded computer name -> host folder
    std::map<std::string, std::string> mShares;  // folded share name -> machine path
    std::map<std::string, std::unique_ptr<SimMachine>> mRemotes;
    std::map<std::string, FileLock> mLocks; // folded machine path -> lock
    std::map<std::uintptr_t, OpenRegKey> mOpenKeys;
    IniStateFile<ProcessTable> mProcesses{"processes.ini", ProcessTable::kHeader};
    IniStateFile<SpoolerState> mSpooler{"spooler.ini", SpoolerState::kHeader};
    IniStateFile<ServiceTable> mServices{"services.ini", ServiceTable::kHeader};
    std::string mStamp;
};

} // namespace sim
