#include "sim/SimMachine.h"

#include "sim/AtomicFile.h"
#include "sim/IniText.h"
#include "sim/MachineLock.h"
#include "sim/MachinePreset.h"
#include "sim/SimClock.h"
#include "sim/Text.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

namespace sim {

namespace fs = std::filesystem;

namespace {

std::unique_ptr<SimMachine>& CurrentSlot() {
    static std::unique_ptr<SimMachine> current;
    return current;
}

std::string HostWorkingDirectory() {
    std::error_code error;
    fs::path cwd = fs::current_path(error);
    return error ? std::string("/") : cwd.string();
}

// The simulated process starts in the host's current folder when that lies on one of the
// machine's own drives; else at the root of C:, so that a relative path never reaches the host
// (a path reaches the host only when it names Z: itself).
std::string StartingDirectory(const std::optional<std::string>& hostCurrent) {
    if (hostCurrent && !hostCurrent->empty() && (*hostCurrent)[0] != 'Z') {
        return *hostCurrent;
    }
    return "C:\\";
}

} // namespace

std::recursive_mutex& SimMachine::Lock() {
    static std::recursive_mutex lock;
    return lock;
}

std::string SimMachine::DefaultDirectory() {
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    std::string base;
    if (dataHome != nullptr && *dataHome != '\0') {
        base = dataHome;
    } else {
        const char* home = std::getenv("HOME");
        base = std::string(home != nullptr ? home : "") + "/.local/share";
    }
    return base + "/installcli/machine";
}

std::string SimMachine::namedDirectory() {
    const char* named = std::getenv("ENGINE_MACHINE");
    return named != nullptr && *named != '\0' ? std::string(named) : std::string();
}

SimMachine* SimMachine::Refresh(std::string& why) {
    std::lock_guard<std::recursive_mutex> guard(Lock());
    auto& current = CurrentSlot();
    if (current) {
        std::string named = namedDirectory();
        std::error_code error;
        std::string wanted = named.empty() ? DefaultDirectory() : named;
        bool sameFolder = fs::equivalent(wanted, current->mDirectory, error) && !error;
        if (!sameFolder || current->stateStamp() != current->mStamp) {
            Release();
        }
    }
    return Current(why);
}

std::string SimMachine::stateStamp() const {
    std::string stamp;
    for (const char* file :
         {"machine.ini", "registry.reg", "faults.ini", "processes.ini", "spooler.ini",
          "services.ini"}) {
        stamp += StateFile::Stamp(mDirectory + "/" + file) + ";";
    }
    return stamp;
}

SimMachine* SimMachine::Current(std::string& why) {
    std::lock_guard<std::recursive_mutex> guard(Lock());
    auto& current = CurrentSlot();
    if (current) {
        return current.get();
    }
    std::string named = namedDirectory();
    std::string dir = named.empty() ? DefaultDirectory() : named;
    if (named.empty()) {
        std::error_code ignored;
        if (!fs::exists(dir, ignored) && !MachinePreset::Create(dir, "win7-x64", -1, why)) {
            why = "cannot make the default machine " + dir + ": " + why;
            return nullptr;
        }
    }
    current = Open(dir, why);
    return current.get();
}

bool SimMachine::Activate(const std::string& hostDir, std::string& why) {
    std::lock_guard<std::recursive_mutex> guard(Lock());
    // The previous machine is committed first: it may be this very folder.
    Release();
    std::unique_ptr<SimMachine> machine = Open(hostDir, why);
    if (!machine) {
        return false;
    }
    CurrentSlot() = std::move(machine);
    return true;
}

void SimMachine::Release() {
    std::lock_guard<std::recursive_mutex> guard(Lock());
    if (CurrentSlot()) {
        CurrentSlot()->Commit();
        CurrentSlot().reset();
    }
}

std::unique_ptr<SimMachine> SimMachine::Open(const std::string& hostDir, std::string& why) {
    std::unique_ptr<SimMachine> machine(new SimMachine());
    if (!machine->load(hostDir, why)) {
        why = "simulated machine " + hostDir + ": " + why;
        return nullptr;
    }
    return machine;
}

bool SimMachine::load(const std::string& hostDir, std::string& why) {
    std::error_code error;
    if (!fs::is_directory(hostDir, error)) {
        why = "the folder does not exist";
        return false;
    }
    mDirectory = fs::absolute(hostDir, error).lexically_normal().string();
    while (mDirectory.size() > 1 && mDirectory.back() == '/') {
        mDirectory.pop_back();
    }
    IniText ini;
    if (!ini.Load(mDirectory + "/machine.ini", why)) {
        why = "machine.ini is missing or unreadable";
        return false;
    }
    if (ini.FindSection("Machine") == nullptr) {
        why = "machine.ini has no [Machine] section";
        return false;
    }
    mIdentity.Read(ini);
    SimClock::Get().Configure(ini);
    if (!fs::is_directory(mDirectory + "/drive_c", error)) {
        why = "drive_c is missing";
        return false;
    }
    mPaths.SetDrive('C', mDirectory + "/drive_c");
    mPaths.KeepShortNamesUnder(mDirectory);
    mPaths.UpperCaseShortNames(!mIdentity.IsNT());
    mPaths.SetDrive('Z', "/");
    if (const IniText::Section* drives = ini.FindSection("Drives")) {
        for (const IniText::Entry& entry : drives->entries) {
            if (entry.key.size() == 1 && std::isalpha(static_cast<unsigned char>(entry.key[0]))) {
                fs::path root(entry.value);
                if (root.is_relative()) {
                    root = fs::path(mDirectory) / root;
                }
                mPaths.SetDrive(entry.key[0], root.lexically_normal().string());
            }
        }
    }
    if (const IniText::Section* environment = ini.FindSection("Environment")) {
        for (const IniText::Entry& entry : environment->entries) {
            mEnvironment.Set(entry.key, entry.value);
        }
    }
    if (const IniText::Section* network = ini.FindSection("Network")) {
        for (const IniText::Entry& entry : network->entries) {
            fs::path folder(entry.value);
            if (folder.is_relative()) {
                folder = fs::path(mDirectory) / folder;
            }
            mNetwork[FoldName(entry.key)] = folder.lexically_normal().string();
        }
    }
    if (const IniText::Section* shares = ini.FindSection("Shares")) {
        for (const IniText::Entry& entry : shares->entries) {
            mShares[FoldName(entry.key)] = entry.value;
        }
    }

    MachineLock lock(mDirectory);
    mRegistry.SetCurrentUserPath(CurrentUserKey());
    for (StateFile* file : stateFiles()) {
        if (!file->Load(mDirectory, why)) {
            return false;
        }
    }
    // The spooler answers while its service runs.
    if (const SimService* spoolerService = Services().Find("Spooler")) {
        Spooler().running = spoolerService->state == 4;
    }
    applyRegistryEnvironment();

    IniText faults;
    std::string ignored;
    if (fs::exists(mDirectory + "/faults.ini", error) &&
        faults.Load(mDirectory + "/faults.ini", ignored)) {
        mFaults.Read(faults, CurrentUserKey());
        for (const auto& [path, lock] : mFaults.LockedFiles()) {
            mLocks[path] = lock;
        }
    }
    mCurrentDirectory = StartingDirectory(HostToMachine(HostWorkingDirectory()));
    mStamp = stateStamp();
    return true;
}

std::string SimMachine::CurrentUserKey() const {
    if (!mIdentity.IsNT() || mIdentity.userSid.empty()) {
        return "HKEY_USERS\\.DEFAULT";
    }
    return "HKEY_USERS\\" + mIdentity.userSid;
}

os::Error SimMachine::ReadFile(const std::string& ansiPath, std::string& bytes) {
    HostLocation location;
    WindowsPath parsed;
    if (os::Error error = Locate(ansiPath, location, false, &parsed)) {
        return error;
    }
    if (!location.exists) {
        return location.parentExists ? os::error::FileNotFound : os::error::PathNotFound;
    }
    if (location.isDirectory) {
        return os::error::AccessDenied;
    }
    if (os::Error refused = location.Openable()) {
        return refused;
    }
    FileLock lock = LockOf(parsed);
    if (lock == FileLock::Sharing) {
        return os::error::SharingViolation;
    }
    if (lock == FileLock::Lock) {
        return os::error::LockViolation;
    }
    if (!ReadWholeFile(location.hostPath, bytes)) {
        return os::error::AccessDenied;
    }
    return os::error::Success;
}

os::Error SimMachine::Locate(const std::string& ansiPath, HostLocation& out, bool allowWildcards,
                             WindowsPath* parsed) {
    // The A functions take at most MAX_PATH characters, the terminator included, and so does
    // the full path that a relative one becomes.
    std::string utf8 = ToUtf8(ansiPath);
    if (Utf8ToUtf16(utf8).size() >= kMaxPath) {
        return kFilenameTooLong;
    }
    WindowsPath path;
    os::Error error = WindowsPath::Parse(utf8, mCurrentDirectory, allowWildcards, path);
    if (error != os::error::Success) {
        return error;
    }
    if (Utf8ToUtf16(path.ToString()).size() >= kMaxPath) {
        return os::error::PathNotFound;
    }
    if (parsed != nullptr) {
        *parsed = path;
    }
    if (!path.parts.empty() && !allowWildcards) {
        std::string device = DeviceName(path.Name());
        if (!device.empty()) {
            // A device is no file of the folder it is named in; NUL takes and gives nothing.
            out = HostLocation();
            out.device = device;
            out.parentExists = true;
            out.exists = device == "NUL";
            out.hostPath = device == "NUL" ? "/dev/null" : std::string();
            return os::error::Success;
        }
    }
    if (path.kind == WindowsPath::Kind::Unc) {
        return locateUnc(path, out);
    }
    return mPaths.Locate(path, out);
}

os::Error SimMachine::locateUnc(const WindowsPath& path, HostLocation& out) {
    os::Error error = os::error::Success;
    SimMachine* target = Remote(path.server, error);
    if (target == nullptr) {
        return error;
    }
    WindowsPath local;
    std::string share = path.share;
    if (share.size() == 2 && share[1] == '$' &&
        std::isalpha(static_cast<unsigned char>(share[0]))) {
        local.drive = static_cast<char>(std::toupper(static_cast<unsigned char>(share[0])));
    } else {
        std::string base;
        if (EqualsNoCase(share, "ADMIN$")) {
            base = target->mIdentity.windowsDirectory;
        } else {
            auto found = target->mShares.find(FoldName(share));
            if (found == target->mShares.end()) {
                return 67; // ERROR_BAD_NET_NAME
            }
            base = found->second;
        }
        if (WindowsPath::Parse(base, "C:\\", false, local) != os::error::Success) {
            return 67;
        }
    }
    for (const std::string& part : path.parts) {
        local.parts.push_back(part);
    }
    return target->mPaths.Locate(local, out);
}

SimMachine* SimMachine::Remote(const std::string& computerName, os::Error& error) {
    std::string name = computerName;
    while (name.rfind("\\", 0) == 0) {
        name.erase(0, 1);
    }
    if (name.empty() || NamesEqual(name, mIdentity.computerName) || NamesEqual(name, "localhost") ||
        name == "." || name == "127.0.0.1") {
        return this;
    }
    std::string key = FoldName(name);
    auto cached = mRemotes.find(key);
    if (cached != mRemotes.end()) {
        return cached->second.get();
    }
    auto folder = mNetwork.find(key);
    if (folder == mNetwork.end()) {
        error = os::error::BadNetPath;
        return nullptr;
    }
    std::string why;
    std::unique_ptr<SimMachine> remote = Open(folder->second, why);
    if (!remote) {
        std::cerr << "engine: " << why << "\n";
        error = os::error::BadNetPath;
        return nullptr;
    }
    SimMachine* result = remote.get();
    mRemotes[key] = std::move(remote);
    return result;
}

FileLock SimMachine::LockOf(const WindowsPath& path) const {
    if (mLocks.empty()) {
        return FileLock::None;
    }
    auto found = mLocks.find(FoldName(path.ToString()));
    return found == mLocks.end() ? FileLock::None : found->second;
}

void SimMachine::applyRegistryEnvironment() {
    // A process starts with the variables of the system, then those of the user, over the
    // block of machine.ini; the user's Path is joined behind the system's, and expandable values
    // are expanded against what stands so far, as the logon builds a new process's block.
    // Windows 9x has its block from AUTOEXEC.BAT: a Path of the registry joins it. TEMP and TMP
    // keep machine.ini's form, the one the logon gives a process.
    const RegKey* system =
            mRegistry.Store().Find("HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\"
                           "Session Manager\\Environment");
    const RegKey* user = mRegistry.Store().Find(CurrentUserKey() + "\\Environment");
    std::string path = mIdentity.IsNT() ? std::string() : mEnvironment.Get("Path").value_or("");
    for (const RegKey* key : {system, user}) {
        if (key == nullptr) {
            continue;
        }
        for (const RegValue& value : key->Values()) {
            if (value.name.empty() || (value.type != regtype::String &&
                                       value.type != regtype::ExpandString)) {
                continue;
            }
            const std::string& name = value.name;
            if ((NamesEqual(name, "TEMP") || NamesEqual(name, "TMP")) && mEnvironment.Get(name)) {
                continue;
            }
            std::string text = value.AsText();
            if (value.type == regtype::ExpandString) {
                text = mEnvironment.Expand(text);
            }
            if (NamesEqual(name, "Path")) {
                path = path.empty() ? text : text.empty() ? path : path + ";" + text;
                text = path;
            }
            mEnvironment.Set(value.name, text);
        }
    }
}

void SimMachine::MoveLock(const WindowsPath& from, const WindowsPath& to) {
    auto found = mLocks.find(FoldName(from.ToString()));
    if (found == mLocks.end()) {
        return;
    }
    FileLock lock = found->second;
    mLocks.erase(found);
    if (!to.parts.empty()) {
        mLocks[FoldName(to.ToString())] = lock;
    }
}

bool SimMachine::Commit() {
    bool ok = true;
    {
        MachineLock lock(mDirectory);
        for (StateFile* file : stateFiles()) {
            std::string why;
            if (!file->Commit(why)) {
                std::cerr << "engine: cannot save " << file->FileName() << " of " << mDirectory
                          << ": " << why << "\n";
                ok = false;
            }
        }
        mStamp = stateStamp();
    }
    // Each machine of the network under its own lock, one at a time, so that two processes never
    // wait on each other's locks.
    for (auto& [name, remote] : mRemotes) {
        ok = remote->Commit() && ok;
    }
    return ok;
}

} // namespace sim
