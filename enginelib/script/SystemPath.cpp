#include "script/SystemPath.h"

#include "os/Files.h"
#include "os/Process.h"
#include "os/Shell.h"
#include "os/Spooler.h"
#include "os/SystemInfo.h"
#include "os/Time.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "system/Registry.h"

#include <cstdlib>
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

CStdStr Folder(int code, bool allUsers = true) {
    return SystemPath(code, allUsers).GetFullPath();
}

CStdStr Megabytes(std::uint64_t bytes) {
    return CStdStr::Formatted("%llu", static_cast<unsigned long long>(bytes / (1024 * 1024)));
}

// An OS language that is not known leaves the entry empty, with code page 0.
LanguageEntry OsLanguage() {
    LanguageEntry entry;
    if (!NlsFile::DescribeLanguageId(NlsFile::GetOSLanguage(), entry)) {
        entry = LanguageEntry();
    }
    return entry;
}

// The speed that Windows measured at start, in MHz; Windows 9x does not record it.
CStdStr ProcessorSpeed() {
    Registry registry;
    RegistryValue value;
    unsigned long speed = 0;
    if (registry.ReadValue("HKLM", "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "~MHz",
                           value)) {
        speed = value.type == os::regtype::Dword ? value.number
                                                 : std::strtoul(value.text.c_str(), nullptr, 10);
    }
    return CStdStr::Formatted("%lu", speed);
}

CStdStr PhysicalMemory() {
    std::uint64_t bytes = 0;
    return Megabytes(os::GetPhysicalMemory(bytes) == os::error::Success ? bytes : 0);
}

// Free space of the drive that Windows is on, where an install puts most of its files.
CStdStr FreeSpace() {
    std::uint64_t bytes = 0;
    CStdStr drive = Folder(SystemPath::WindowsDrive) + "\\";
    return Megabytes(os::GetDiskFreeSpaceEx(drive, bytes) == os::error::Success ? bytes : 0);
}

CStdStr Today() {
    os::SystemTime now;
    os::GetLocalTime(now);
    return CStdStr::Formatted("%02u%02u%04u", static_cast<unsigned>(now.month),
                              static_cast<unsigned>(now.day), static_cast<unsigned>(now.year));
}

// The medium's root: the first folder upwards from the program's that holds the product's
// configuration.
CStdStr GuessedRootDirectory() {
    SystemPath program(SystemPath::ApplicationFolder);
    PathObject folder;
    folder.SetDirectory(program.GetDirectory());
    while (!folder.GetDirectory().empty()) {
        PathObject marker;
        marker.SetDirectory(folder.GetDirectory());
        marker.AppendDirectory("install\\config");
        marker.SetName("product.ini");
        if (marker.Exists()) {
            return folder.GetDirectory();
        }
        CStdStr before = folder.GetDirectory();
        folder.GoUp();
        if (folder.GetDirectory() == before) {
            break;
        }
    }
    return program.GetDirectory();
}

struct BuiltinDefine {
    const char* name;
    CStdStr (*value)();
};

// In the order in which a name is tested.
const BuiltinDefine kBuiltinDefines[] = {
        {"WINDOWS_DRIVE", [] { return Folder(SystemPath::WindowsDrive); }},
        {"WINDOWS_DIR", [] { return Folder(SystemPath::WindowsFolder); }},
        {"SYSTEM_DIR", [] { return Folder(SystemPath::SystemFolder); }},
        {"PROGRAMFILES_DIR", [] { return Folder(SystemPath::ProgramFiles); }},
        {"ALLUSERS_PROFILE_DIR", [] { return Folder(SystemPath::AllUsersProfile); }},
        {"CURRENTUSER_DOCUMENTS_DIR", [] { return Folder(SystemPath::MyDocuments); }},
        {"SYSTEMFONTS_DIR", [] { return Folder(SystemPath::Fonts); }},
        {"TEMP_DIR", [] { return Folder(SystemPath::TempFolder); }},
        {"CD_ROOT_DIR", [] { return Folder(SystemPath::MediumRoot); }},
        {"CURRENT_DIR", [] { return Folder(SystemPath::CurrentFolder); }},
        {"SENDTO_DIR", [] { return Folder(SystemPath::SendTo); }},
        {"CURRENTUSER_DESKTOP_DIR", [] { return Folder(SystemPath::Desktop, false); }},
        {"ALLUSERS_DESKTOP_DIR", [] { return Folder(SystemPath::Desktop, true); }},
        {"DRIVER_DIR", [] { return Folder(SystemPath::PrinterDriverFolder); }},
        {"DRIVER_MULTI_OS_DIR", [] { return Folder(SystemPath::VersionedDriverFolder); }},
        {"COMMONFILES_DIR", [] { return Folder(SystemPath::CommonFiles); }},
        {"LANGUAGE", [] { return NlsFile::GetLanguage(); }},
        {"CODEPAGE", [] { return CStdStr::Formatted("%d", NlsFile::GetCodePage()); }},
        {"OS_LANG", [] { return OsLanguage().language; }},
        // Only NT 4 counts: the define tells NT 4 from the systems that followed it.
        {"IS_OS_NT",
         [] { return CStdStr(OSInfo().GetOSCode() == OSInfo::NT4 ? "TRUE" : "FALSE"); }},
        {"OS_CODEPAGE", [] { return CStdStr::Formatted("%d", OsLanguage().codePage); }},
        {"OS_ISOLANG", [] { return OsLanguage().isoCode; }},
        {"OS_ARCH", [] { return CStdStr(OSInfo().Is64Bit() ? "x64" : "x86"); }},
        {"COMPUTER_NAME",
         [] { return Fetch([](std::string& text) { return os::GetComputerName(text); }); }},
        {"HEX_LANG", [] { return CStdStr::Formatted("0x%x", NlsFile::GetWinCode()); }},
        {"QOR_LANG_CODE",
         [] { return CStdStr::Formatted("%d", static_cast<int>(NlsFile::GetWinCode())); }},
        {"COMMONAPPDATA_DIR", [] { return Folder(SystemPath::CommonAppData); }},
        {"USERNAME", [] { return Fetch([](std::string& text) { return os::GetUserName(text); }); }},
        {"SYSTEM_CPU", ProcessorSpeed},
        {"SYSTEM_MEMORY", PhysicalMemory},
        {"SYSTEM_SPACE", FreeSpace},
        {"DRIVER_CAB", [] { return Folder(SystemPath::DriverCab); }},
        {"CURRENT_DATE", Today},
        {"GUESSED_ROOT_DIR", GuessedRootDirectory},
        // The placeholder stays in the text; the code that shows it puts the product's title
        // in its place.
        {"OEM_PRODUCT", [] { return CStdStr::Formatted("^%s^", "OEM_PRODUCT"); }},
};

} // namespace

CStdStr SystemPath::GetDefine(const CStdStr& name) {
    LogScope scope("SystemPath", "SystemPath::GetDefine", logmask::General);
    for (const BuiltinDefine& define : kBuiltinDefines) {
        if (!name.EqualsNoCase(define.name)) {
            continue;
        }
        CStdStr value = define.value();
        scope.Log(logmask::General, "%s=%s", define.name, value.c_str());
        return value;
    }
    return CStdStr();
}

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

CStdStr SystemPath::checkSourceFromRegistry(const CStdStr& product) {
    Registry registry;
    CStdStr key = CStdStr(kCurrentVersion) + "\\Uninstall\\" + product;
    CStdStr source = registry.ReadStringValue("HKLM", key, "InstallSource");
    if (source.empty()) {
        return source;
    }
    std::string expanded;
    os::Error error = os::ExpandEnvironmentStrings(source, expanded);
    if (error != os::error::Success) {
        ENGINE_LOG(0, "ExpandEnvironmentStrings failed and returned %d", static_cast<int>(error));
        return CStdStr();
    }
    return expanded;
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
