#include "script/SystemPath.h"

#include "os/Process.h"
#include "os/Shell.h"
#include "os/Spooler.h"
#include "script/OSInfo.h"
#include "system/DebugLogger.h"
#include "system/Registry.h"

#include <mutex>

namespace {

const char* const kCurrentVersion = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
const char* const kShellFolders =
        "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
const char* const k9xShellFolders =
        ".Default\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::mutex gOverrideLock;
CStdStr gApplicationOverride;

template <typename Call>
CStdStr Fetch(Call call) {
    std::string text;
    return call(text) == os::error::Success ? CStdStr(text) : CStdStr();
}

CStdStr WindowsDir() {
    return Fetch([](std::string& text) { return os::GetWindowsDirectory(text); });
}

CStdStr Join(const CStdStr& folder, const CStdStr& tail) {
    PathObject path;
    path.SetDirectory(folder);
    path.AppendDirectory(tail);
    return path.GetDirectory();
}

CStdStr UpFolders(const CStdStr& folder, int levels) {
    PathObject path;
    path.SetDirectory(folder);
    for (int i = 0; i < levels; ++i) {
        path.GoUp();
    }
    return path.GetDirectory();
}

} // namespace

void SystemPath::SetApplicationDirectoryOverride(const CStdStr& directory) {
    std::lock_guard<std::mutex> guard(gOverrideLock);
    gApplicationOverride = directory;
}

CStdStr SystemPath::GetApplicationDirectoryOverride() {
    std::lock_guard<std::mutex> guard(gOverrideLock);
    return gApplicationOverride;
}

void SystemPath::setFolder(const CStdStr& folder) {
    SetDirectory(folder);
    mName.clear();
}

void SystemPath::fromRegistryFolder(const char* root, const char* key, const char* value) {
    Registry registry;
    setFolder(registry.ReadStringValue(root, key, value));
}

void SystemPath::SetPath(int code, bool allUsers) {
    // Only some codes depend on the system; the others need not detect it.
    auto nt = [] { return !OSInfo().Is9x(); };
    switch (code) {
    case MediumRoot:
    case MediumRootAlternative: {
        SystemPath application(ApplicationFolder);
        setFolder(UpFolders(application.GetDirectory(), 2));
        break;
    }
    case CommonFiles:
        fromRegistryFolder("HKLM", kCurrentVersion, "CommonFilesDir");
        break;
    case CurrentFolder:
        setFolder(Fetch([](std::string& text) { return os::GetCurrentDirectory(text); }));
        break;
    case Desktop:
    case StartMenuPrograms: {
        bool desktop = code == Desktop;
        if (!nt()) {
            fromRegistryFolder("HKU", k9xShellFolders, desktop ? "Desktop" : "Programs");
        } else if (allUsers) {
            fromRegistryFolder("HKLM", kShellFolders,
                               desktop ? "Common Desktop" : "Common Programs");
        } else {
            fromRegistryFolder("HKCU", kShellFolders, desktop ? "Desktop" : "Programs");
        }
        break;
    }
    case DriverCab: {
        PathObject cab;
        if (nt()) {
            cab = PathObject(SystemPath(DriverCacheX64).GetDirectory() + "\\driver.CAB");
            if (!cab.Exists()) {
                cab = PathObject(SystemPath(DriverCacheAmd64).GetDirectory() + "\\driver.CAB");
            }
            if (!cab.Exists()) {
                cab = PathObject(SystemPath(DriverCache32).GetDirectory() + "\\driver32.CAB");
            }
        } else {
            cab = PathObject(SystemPath(DriverCache).GetDirectory() + "\\driver.CAB");
        }
        SetDirectory(cab.GetDirectory());
        mName = cab.GetName();
        break;
    }
    case DriverCache:
        setFolder(Join(WindowsDir(),
                       OSInfo().Is64Bit() ? "Driver Cache\\x64" : "Driver Cache\\i386"));
        break;
    case DriverCache32:
        setFolder(Join(WindowsDir(), "Driver Cache\\i386"));
        break;
    case DriverCacheAmd64:
        setFolder(Join(WindowsDir(), "Driver Cache\\amd64"));
        break;
    case DriverCacheX64:
        setFolder(Join(WindowsDir(), "Driver Cache\\x64"));
        break;
    case Fonts:
        setFolder(Join(WindowsDir(), "Fonts"));
        break;
    case ApplicationFolder: {
        CStdStr overrideFolder = GetApplicationDirectoryOverride();
        if (!overrideFolder.empty()) {
            setFolder(overrideFolder);
            break;
        }
        PathObject program(
                Fetch([](std::string& text) { return os::GetModuleFileName(nullptr, text); }));
        setFolder(program.GetDirectory());
        break;
    }
    case PrinterDriverFolder:
        setFolder(Fetch([](std::string& text) { return os::GetPrinterDriverDirectory("", text); }));
        break;
    case VersionedDriverFolder: {
        // The driver version of the system: 3 from Windows 2000 on, 2 on NT 4, 0 on 9x.
        OSInfo os;
        const char* version = os.GetOSCode() == OSInfo::NT4 ? "2" : os.Is9x() ? "0" : "3";
        setFolder(Join(SystemPath(PrinterDriverFolder).GetDirectory(), version));
        break;
    }
    case PrintProcessorFolder:
        setFolder(
                Fetch([](std::string& text) { return os::GetPrintProcessorDirectory("", text); }));
        break;
    case ProgramFiles:
        fromRegistryFolder("HKLM", kCurrentVersion, "ProgramFilesDir");
        break;
    case SendTo:
        fromRegistryFolder("HKCU", kShellFolders, "SendTo");
        break;
    case DriverFolderUpTwo:
    case DriverFolderUpOne: {
        CStdStr drivers = SystemPath(PrinterDriverFolder).GetDirectory();
        setFolder(nt() ? UpFolders(drivers, code == DriverFolderUpTwo ? 2 : 1) : drivers);
        break;
    }
    case SystemFolder:
        setFolder(Fetch([](std::string& text) { return os::GetSystemDirectory(text); }));
        break;
    case InfFolder:
        setFolder(Join(WindowsDir(), "Inf"));
        break;
    case WindowsDrive: {
        CStdStr windows = WindowsDir();
        setFolder(windows.size() >= 2 && windows[1] == ':' ? windows.Left(2) : windows);
        break;
    }
    case TempFolder:
        setFolder(Fetch([](std::string& text) { return os::GetTempPath(text); }));
        break;
    case WindowsFolder:
        setFolder(WindowsDir());
        break;
    case Win9xDriverFolder: {
        CStdStr drivers = UpFolders(SystemPath(PrinterDriverFolder).GetDirectory(), 1);
        setFolder(Join(Join(drivers, "Win40"), "0"));
        break;
    }
    case DriverFolderVersion3:
    case DriverFolderVersion2:
        setFolder(Join(SystemPath(PrinterDriverFolder).GetDirectory(),
                       code == DriverFolderVersion3 ? "3" : "2"));
        break;
    case CommonAppData:
        fromRegistryFolder("HKLM", kShellFolders, "Common AppData");
        break;
    case MyDocuments:
        setFolder(Fetch([](std::string& text) {
            return os::SHGetSpecialFolderPath(os::csidl::Personal, text);
        }));
        break;
    case AllUsersProfile:
        setFolder(Fetch([](std::string& text) {
            return os::ExpandEnvironmentStrings("%ALLUSERSPROFILE%", text);
        }));
        break;
    case SysWow64:
        setFolder(Join(WindowsDir(), "SysWOW64"));
        break;
    default:
        ENGINE_LOG(0, "invalid path code %i", code);
        break;
    }
}
