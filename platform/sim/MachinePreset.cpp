#include "sim/MachinePreset.h"

#include "sim/AtomicFile.h"
#include "sim/IniText.h"
#include "sim/LocaleTable.h"
#include "sim/MachineIdentity.h"
#include "sim/ProcessTable.h"
#include "sim/RegistryStore.h"
#include "sim/ServiceTable.h"
#include "sim/SpoolerState.h"
#include "sim/Text.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

namespace sim {

namespace fs = std::filesystem;

namespace {

// How a version lays out its profiles and folders.
enum class Family { Win9x, NT4, Win2000, Vista };

struct OsPreset {
    const char* name;
    const char* productName;
    std::uint32_t major;
    std::uint32_t minor;
    std::uint32_t platformId;
    std::uint32_t productType;
    bool x64;
    Family family;
    const char* windowsDir;
    int maxServicePack;
    int minServicePack;
    const char* csd9x; // the CSD text of a 9x system
    std::uint32_t memoryMB;
    std::uint32_t cpuMHz;
    std::uint32_t freeDiskMB;
    const char* edition; // EditionID of Vista and later
};

const OsPreset kPresets[] = {
        {"win95", "Microsoft Windows 95", 4, 0, 1, 1, false, Family::Win9x, "C:\\WINDOWS", 0, 0, "",
         32, 133, 1024, ""},
        // The engine tells 98 from 98 SE by the CSD text: one that sorts after "A" is the first
        // edition, " A " is the second edition.
        {"win98", "Microsoft Windows 98", 4, 10, 1, 1, false, Family::Win9x, "C:\\WINDOWS", 0, 0,
         "B", 64, 300, 2048, ""},
        {"win98se", "Microsoft Windows 98", 4, 10, 1, 1, false, Family::Win9x, "C:\\WINDOWS", 0, 0,
         " A ", 64, 400, 4096, ""},
        {"winme", "Microsoft Windows ME", 4, 90, 1, 1, false, Family::Win9x, "C:\\WINDOWS", 0, 0,
         " ", 128, 700, 8192, ""},
        {"nt4", "Microsoft Windows NT Workstation", 4, 0, 2, 1, false, Family::NT4, "C:\\WINNT", 6,
         0, "", 128, 400, 4096, ""},
        {"win2000", "Microsoft Windows 2000", 5, 0, 2, 1, false, Family::Win2000, "C:\\WINNT", 4, 0,
         "", 256, 800, 10240, ""},
        {"xp", "Microsoft Windows XP", 5, 1, 2, 1, false, Family::Win2000, "C:\\WINDOWS", 3, 0, "",
         512, 2000, 40960, ""},
        {"xp-x64", "Microsoft Windows XP", 5, 2, 2, 1, true, Family::Win2000, "C:\\WINDOWS", 2, 0,
         "", 1024, 2400, 40960, ""},
        {"server2003", "Microsoft Windows Server 2003", 5, 2, 2, 3, false, Family::Win2000,
         "C:\\WINDOWS", 2, 0, "", 1024, 2400, 40960, ""},
        {"server2003-x64", "Microsoft Windows Server 2003", 5, 2, 2, 3, true, Family::Win2000,
         "C:\\WINDOWS", 2, 0, "", 2048, 2400, 40960, ""},
        {"vista", "Windows Vista (TM) Business", 6, 0, 2, 1, false, Family::Vista, "C:\\Windows", 2,
         0, "", 2048, 2400, 81920, "Business"},
        {"vista-x64", "Windows Vista (TM) Business", 6, 0, 2, 1, true, Family::Vista, "C:\\Windows",
         2, 0, "", 4096, 2400, 81920, "Business"},
        {"server2008", "Windows Server (R) 2008 Enterprise", 6, 0, 2, 3, false, Family::Vista,
         "C:\\Windows", 2, 1, "", 2048, 2400, 81920, "ServerEnterprise"},
        {"server2008-x64", "Windows Server (R) 2008 Enterprise", 6, 0, 2, 3, true, Family::Vista,
         "C:\\Windows", 2, 1, "", 4096, 2400, 81920, "ServerEnterprise"},
        {"win7", "Windows 7 Professional", 6, 1, 2, 1, false, Family::Vista, "C:\\Windows", 1, 0,
         "", 2048, 2800, 102400, "Professional"},
        {"win7-x64", "Windows 7 Professional", 6, 1, 2, 1, true, Family::Vista, "C:\\Windows", 1, 0,
         "", 4096, 2800, 102400, "Professional"},
        {"win8", "Windows 8 Pro", 6, 2, 2, 1, false, Family::Vista, "C:\\Windows", 0, 0, "", 4096,
         3000, 122880, "Professional"},
        {"win8-x64", "Windows 8 Pro", 6, 2, 2, 1, true, Family::Vista, "C:\\Windows", 0, 0, "",
         8192, 3000, 122880, "Professional"},
};

const OsPreset* FindPreset(const std::string& name) {
    for (const OsPreset& preset : kPresets) {
        if (EqualsNoCase(preset.name, name)) {
            return &preset;
        }
    }
    return nullptr;
}

std::uint32_t BuildNumber(const OsPreset& preset, int servicePack) {
    switch (preset.major * 100 + preset.minor) {
    case 400:
        return preset.platformId == 1 ? 950 : 1381;
    case 410:
        return preset.csd9x[0] == ' ' ? 2222 : 1998;
    case 490:
        return 3000;
    case 500:
        return 2195;
    case 501:
        return 2600;
    case 502:
        return 3790;
    case 600:
        return 6000 + static_cast<std::uint32_t>(servicePack);
    case 601:
        return 7600 + static_cast<std::uint32_t>(servicePack);
    default:
        return 9200;
    }
}

std::string UpperNoDash(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c != '-') {
            out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return out;
}

std::string Hex(std::uint32_t value, int width) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", width, value);
    return text;
}

// The folders of one machine, as machine paths.
struct Layout {
    std::string windows;
    std::string system;
    std::string programFiles;
    std::string commonFiles;
    std::string programFilesX86;
    std::string commonFilesX86;
    std::string profile;  // the user's profile folder
    std::string allUsers; // the all-users profile folder, empty where there is none
    std::string temp;
    std::map<std::string, std::string> userFolders;   // Shell Folders value -> folder
    std::map<std::string, std::string> commonFolders; // "Common ..." value -> folder
};

class PresetBuilder {
public:
    PresetBuilder(const OsPreset& preset, const MachinePreset::Options& options)
            : mPreset(preset), mOptions(options) {
        mServicePack = options.servicePack < 0 ? preset.maxServicePack : options.servicePack;
        fillIdentity();
        fillLayout();
    }

    bool Write(const std::string& hostDir, std::string& why) {
        std::error_code error;
        fs::create_directories(hostDir + "/drive_c", error);
        if (error) {
            why = "cannot create " + hostDir + ": " + error.message();
            return false;
        }
        for (const std::string& folder : folders()) {
            fs::create_directories(hostPath(hostDir, folder), error);
            if (error) {
                why = "cannot create " + folder + ": " + error.message();
                return false;
            }
        }
        writeTextFiles(hostDir);
        IniText ini;
        ini.SetHeaderComment(
                "A simulated Windows machine. Edit by hand as needed:\n"
                "[Machine] is what GetVersionEx, GetSystemInfo and the locale calls answer;\n"
                "[Drives] maps more drive letters to host folders (C: is drive_c, Z: is /);\n"
                "[Environment] is the environment block of a process on this machine;\n"
                "[Network] maps computer names to the folders of other simulated machines;\n"
                "[Shares] maps share names of this machine to its folders;\n"
                "[Clock] Mode=simulated keeps the machine's own time, which waits move at once;\n"
                "Mode=real runs on the host's clock.");
        mIdentity.Write(ini);
        ini.Set("Clock", "Mode", "simulated");
        ini.GetOrAddSection("Drives");
        for (const auto& [name, value] : environment()) {
            ini.Set("Environment", name, value);
        }
        ini.GetOrAddSection("Network");
        ini.GetOrAddSection("Shares");
        if (!ini.Save(hostDir + "/machine.ini", why)) {
            return false;
        }
        RegistryStore registry;
        fillRegistry(registry);
        if (!WriteFileAtomically(hostDir + "/registry.reg", registry.Format(), why)) {
            return false;
        }
        IniText spooler;
        spooler.SetHeaderComment(SpoolerState::kHeader);
        spoolerState().Write(spooler);
        IniText processes;
        processes.SetHeaderComment(ProcessTable::kHeader);
        processTable().Write(processes);
        if (nt()) {
            IniText services;
            services.SetHeaderComment(ServiceTable::kHeader);
            serviceTable().Write(services);
            if (!services.Save(hostDir + "/services.ini", why)) {
                return false;
            }
        }
        return spooler.Save(hostDir + "/spooler.ini", why) &&
               processes.Save(hostDir + "/processes.ini", why);
    }

private:
    bool nt() const { return mPreset.platformId == 2; }
    bool x64() const { return mPreset.x64; }
    bool vistaOrLater() const { return mPreset.family == Family::Vista; }
    bool win2000OrLater() const {
        return mPreset.family == Family::Win2000 || mPreset.family == Family::Vista;
    }

    void fillIdentity() {
        MachineIdentity& id = mIdentity;
        id.preset = mPreset.name;
        id.majorVersion = mPreset.major;
        id.minorVersion = mPreset.minor;
        id.platformId = mPreset.platformId;
        id.productType = mPreset.productType;
        id.processorArchitecture = mPreset.x64 ? 9 : 0;
        id.buildNumber = BuildNumber(mPreset, mServicePack);
        id.servicePackMajor = static_cast<std::uint16_t>(nt() ? mServicePack : 0);
        id.csdVersion =
                nt() ? (mServicePack > 0 ? "Service Pack " + std::to_string(mServicePack) : "")
                     : mPreset.csd9x;
        id.description = std::string(mPreset.productName) + (x64() ? " x64" : "") +
                         (id.csdVersion.empty() || !nt() ? "" : " " + id.csdVersion);
        id.computerName = mOptions.computerName.empty()
                                  ? ("SIM-" + UpperNoDash(mPreset.name)).substr(0, 15)
                                  : mOptions.computerName;
        id.userName = mOptions.userName;
        id.userSid = nt() ? "S-1-5-21-1715567821-926492609-725345543-1000" : "";
        id.windowsDirectory = mPreset.windowsDir;
        id.lcid = mOptions.lcid;
        const LocaleData* locale = LocaleTable::Find(mOptions.lcid);
        id.ansiCodePage = locale != nullptr ? locale->ansiCodePage : 1252;
        id.oemCodePage = locale != nullptr ? locale->oemCodePage : 437;
        id.memoryMB = mPreset.memoryMB;
        id.cpuMHz = mPreset.cpuMHz;
        id.freeDiskMB = mPreset.freeDiskMB;
    }

    void fillLayout() {
        Layout& l = mLayout;
        l.windows = mPreset.windowsDir;
        l.system = mIdentity.SystemDirectory();
        l.programFiles = "C:\\Program Files";
        l.commonFiles = l.programFiles + "\\Common Files";
        if (x64()) {
            l.programFilesX86 = "C:\\Program Files (x86)";
            l.commonFilesX86 = l.programFilesX86 + "\\Common Files";
        }
        const std::string& user = mIdentity.userName;
        switch (mPreset.family) {
        case Family::Win9x:
            l.profile = l.windows;
            l.temp = l.windows + "\\TEMP";
            l.userFolders = {{"Desktop", l.windows + "\\Desktop"},
                             {"Programs", l.windows + "\\Start Menu\\Programs"},
                             {"Start Menu", l.windows + "\\Start Menu"},
                             {"Startup", l.windows + "\\Start Menu\\Programs\\StartUp"},
                             {"SendTo", l.windows + "\\SendTo"},
                             {"Personal", "C:\\My Documents"},
                             {"AppData", l.windows + "\\Application Data"},
                             {"Fonts", l.windows + "\\FONTS"},
                             {"Templates", l.windows + "\\ShellNew"},
                             {"Recent", l.windows + "\\Recent"},
                             {"Favorites", l.windows + "\\Favorites"}};
            if (mPreset.minor > 0) {
                l.allUsers = l.windows + "\\All Users";
            }
            break;
        case Family::NT4:
            l.profile = l.windows + "\\Profiles\\" + user;
            l.allUsers = l.windows + "\\Profiles\\All Users";
            l.temp = "C:\\TEMP";
            l.userFolders = {{"Desktop", l.profile + "\\Desktop"},
                             {"Programs", l.profile + "\\Start Menu\\Programs"},
                             {"Start Menu", l.profile + "\\Start Menu"},
                             {"Startup", l.profile + "\\Start Menu\\Programs\\Startup"},
                             {"SendTo", l.profile + "\\SendTo"},
                             {"Personal", l.profile + "\\Personal"},
                             {"AppData", l.profile + "\\Application Data"},
                             {"Fonts", l.windows + "\\Fonts"},
                             {"Templates", l.profile + "\\Templates"},
                             {"Recent", l.profile + "\\Recent"},
                             {"Favorites", l.profile + "\\Favorites"},
                             {"NetHood", l.profile + "\\NetHood"}};
            break;
        case Family::Win2000: {
            l.profile = "C:\\Documents and Settings\\" + user;
            l.allUsers = "C:\\Documents and Settings\\All Users";
            std::string local = l.profile + "\\Local Settings";
            l.temp = local + "\\Temp";
            l.userFolders = {{"Desktop", l.profile + "\\Desktop"},
                             {"Programs", l.profile + "\\Start Menu\\Programs"},
                             {"Start Menu", l.profile + "\\Start Menu"},
                             {"Startup", l.profile + "\\Start Menu\\Programs\\Startup"},
                             {"SendTo", l.profile + "\\SendTo"},
                             {"Personal", l.profile + "\\My Documents"},
                             {"AppData", l.profile + "\\Application Data"},
                             {"Local AppData", local + "\\Application Data"},
                             {"Local Settings", local},
                             {"Cache", local + "\\Temporary Internet Files"},
                             {"History", local + "\\History"},
                             {"Fonts", l.windows + "\\Fonts"},
                             {"Templates", l.profile + "\\Templates"},
                             {"Recent", l.profile + "\\Recent"},
                             {"Favorites", l.profile + "\\Favorites"},
                             {"Cookies", l.profile + "\\Cookies"},
                             {"NetHood", l.profile + "\\NetHood"},
                             {"PrintHood", l.profile + "\\PrintHood"}};
            break;
        }
        case Family::Vista: {
            l.profile = "C:\\Users\\" + user;
            l.allUsers = "C:\\ProgramData";
            std::string roaming = l.profile + "\\AppData\\Roaming";
            std::string local = l.profile + "\\AppData\\Local";
            std::string shell = roaming + "\\Microsoft\\Windows";
            l.temp = local + "\\Temp";
            l.userFolders = {{"Desktop", l.profile + "\\Desktop"},
                             {"Programs", shell + "\\Start Menu\\Programs"},
                             {"Start Menu", shell + "\\Start Menu"},
                             {"Startup", shell + "\\Start Menu\\Programs\\Startup"},
                             {"SendTo", shell + "\\SendTo"},
                             {"Personal", l.profile + "\\Documents"},
                             {"AppData", roaming},
                             {"Local AppData", local},
                             {"Cache", local + "\\Microsoft\\Windows\\Temporary Internet Files"},
                             {"History", local + "\\Microsoft\\Windows\\History"},
                             {"Fonts", l.windows + "\\Fonts"},
                             {"Templates", shell + "\\Templates"},
                             {"Recent", shell + "\\Recent"},
                             {"Favorites", l.profile + "\\Favorites"},
                             {"Cookies", shell + "\\Cookies"},
                             {"NetHood", shell + "\\Network Shortcuts"},
                             {"PrintHood", shell + "\\Printer Shortcuts"}};
            break;
        }
        }
        if (mPreset.family == Family::Vista) {
            std::string shell = l.allUsers + "\\Microsoft\\Windows";
            l.commonFolders = {{"Common Desktop", "C:\\Users\\Public\\Desktop"},
                               {"Common Programs", shell + "\\Start Menu\\Programs"},
                               {"Common Start Menu", shell + "\\Start Menu"},
                               {"Common Startup", shell + "\\Start Menu\\Programs\\Startup"},
                               {"Common AppData", l.allUsers},
                               {"Common Documents", "C:\\Users\\Public\\Documents"},
                               {"Common Templates", shell + "\\Templates"}};
        } else if (!l.allUsers.empty()) {
            l.commonFolders = {{"Common Desktop", l.allUsers + "\\Desktop"},
                               {"Common Programs", l.allUsers + "\\Start Menu\\Programs"},
                               {"Common Start Menu", l.allUsers + "\\Start Menu"},
                               {"Common Startup", l.allUsers + "\\Start Menu\\Programs\\Startup"}};
            if (win2000OrLater()) {
                l.commonFolders["Common AppData"] = l.allUsers + "\\Application Data";
                l.commonFolders["Common Documents"] = l.allUsers + "\\Documents";
                l.commonFolders["Common Templates"] = l.allUsers + "\\Templates";
            }
        }
    }

    std::string spoolArch() const { return x64() ? "x64" : "W32X86"; }

    std::vector<std::string> folders() const {
        const Layout& l = mLayout;
        std::vector<std::string> list = {l.windows,
                                         l.system,
                                         l.windows + (nt() ? "\\Fonts" : "\\FONTS"),
                                         l.windows + (nt() ? "\\inf" : "\\INF"),
                                         l.programFiles,
                                         l.commonFiles,
                                         l.temp};
        if (!nt()) {
            list.push_back(l.windows + "\\COMMAND");
            list.push_back(l.system + "\\COLOR");
        } else {
            std::string spool = l.system + "\\spool";
            list.push_back(spool + "\\drivers\\W32X86");
            list.push_back(spool + "\\drivers\\color");
            list.push_back(spool + "\\prtprocs\\W32X86");
            list.push_back(spool + "\\PRINTERS");
            if (x64()) {
                list.push_back(spool + "\\drivers\\x64");
                list.push_back(spool + "\\prtprocs\\x64");
            }
            list.push_back(l.windows + "\\TEMP");
        }
        if (x64()) {
            list.push_back(l.programFilesX86);
            list.push_back(l.commonFilesX86);
            list.push_back(l.windows + "\\SysWOW64");
        }
        if (mPreset.family == Family::Win2000) {
            list.push_back(l.windows + (x64() ? "\\Driver Cache\\amd64" : "\\Driver Cache\\i386"));
        }
        if (vistaOrLater()) {
            list.push_back(l.system + "\\DriverStore\\FileRepository");
            list.push_back("C:\\Users\\Public");
        }
        for (const auto& entry : l.userFolders) {
            list.push_back(entry.second);
        }
        for (const auto& entry : l.commonFolders) {
            list.push_back(entry.second);
        }
        return list;
    }

    std::string hostPath(const std::string& hostDir, const std::string& machinePath) const {
        std::string rest = machinePath.substr(2);
        std::replace(rest.begin(), rest.end(), '\\', '/');
        return hostDir + "/drive_c" + rest;
    }

    void writeTextFiles(const std::string& hostDir) const {
        std::string why;
        const char* winIni = "; for 16-bit app support\r\n[fonts]\r\n[extensions]\r\n"
                             "[mci extensions]\r\n[files]\r\n[Mail]\r\nMAPI=1\r\n";
        const char* systemIni = "; for 16-bit app support\r\n[386Enh]\r\nwoafont=dosapp.fon\r\n"
                                "[drivers]\r\nwave=mmdrv.dll\r\ntimer=timer.drv\r\n";
        WriteFileAtomically(hostPath(hostDir, mLayout.windows + "\\win.ini"), winIni, why);
        WriteFileAtomically(hostPath(hostDir, mLayout.windows + "\\system.ini"), systemIni, why);
        if (!nt()) {
            WriteFileAtomically(hostPath(hostDir, "C:\\AUTOEXEC.BAT"), "", why);
            WriteFileAtomically(hostPath(hostDir, "C:\\CONFIG.SYS"), "", why);
        }
    }

    std::vector<std::pair<std::string, std::string>> environment() const {
        const Layout& l = mLayout;
        const MachineIdentity& id = mIdentity;
        std::vector<std::pair<std::string, std::string>> env;
        if (!nt()) {
            env = {{"COMSPEC", l.windows + "\\COMMAND.COM"},
                   {"PATH", l.windows + ";" + l.windows + "\\COMMAND"},
                   {"PROMPT", "$p$g"},
                   {"TEMP", l.temp},
                   {"TMP", l.temp},
                   {"winbootdir", l.windows},
                   {"windir", l.windows}};
            return env;
        }
        std::string arch = x64() ? "AMD64" : "x86";
        std::string identifier = x64() ? "Intel64 Family 6 Model 23 Stepping 10, GenuineIntel"
                                       : "x86 Family 6 Model 23 Stepping 10, GenuineIntel";
        if (win2000OrLater()) {
            env.emplace_back("ALLUSERSPROFILE", l.allUsers);
            env.emplace_back("APPDATA", l.userFolders.at("AppData"));
            env.emplace_back("CommonProgramFiles", l.commonFiles);
            if (x64()) {
                env.emplace_back("CommonProgramFiles(x86)", l.commonFilesX86);
            }
            if (x64() && mPreset.minor >= 1 && vistaOrLater()) {
                env.emplace_back("CommonProgramW6432", l.commonFiles);
            }
        }
        env.emplace_back("COMPUTERNAME", id.computerName);
        env.emplace_back("ComSpec", l.system + "\\cmd.exe");
        env.emplace_back("HOMEDRIVE", "C:");
        env.emplace_back("HOMEPATH", l.profile.substr(2));
        if (vistaOrLater()) {
            env.emplace_back("LOCALAPPDATA", l.userFolders.at("Local AppData"));
        }
        env.emplace_back("LOGONSERVER", "\\\\" + id.computerName);
        env.emplace_back("NUMBER_OF_PROCESSORS", "1");
        env.emplace_back("OS", "Windows_NT");
        env.emplace_back("Path", l.system + ";" + l.windows + ";" + l.system + "\\Wbem");
        if (win2000OrLater()) {
            env.emplace_back("PATHEXT", ".COM;.EXE;.BAT;.CMD;.VBS;.VBE;.JS;.JSE;.WSF;.WSH");
        }
        env.emplace_back("PROCESSOR_ARCHITECTURE", arch);
        env.emplace_back("PROCESSOR_IDENTIFIER", identifier);
        if (vistaOrLater()) {
            env.emplace_back("ProgramData", l.allUsers);
        }
        if (win2000OrLater()) {
            env.emplace_back("ProgramFiles", l.programFiles);
        }
        if (x64()) {
            env.emplace_back("ProgramFiles(x86)", l.programFilesX86);
            if (vistaOrLater() && mPreset.minor >= 1) {
                env.emplace_back("ProgramW6432", l.programFiles);
            }
        }
        if (vistaOrLater()) {
            env.emplace_back("PUBLIC", "C:\\Users\\Public");
        }
        env.emplace_back("SystemDrive", "C:");
        env.emplace_back("SystemRoot", l.windows);
        env.emplace_back("TEMP", l.temp);
        env.emplace_back("TMP", l.temp);
        env.emplace_back("USERDOMAIN", id.computerName);
        env.emplace_back("USERNAME", id.userName);
        env.emplace_back("USERPROFILE", l.profile);
        env.emplace_back("windir", l.windows);
        return env;
    }

    void fillRegistry(RegistryStore& store) const {
        const Layout& l = mLayout;
        const MachineIdentity& id = mIdentity;
        auto key = [&](const std::string& path) { return store.Create(path); };
        auto text = [](RegKey* k, const std::string& name, const std::string& value) {
            k->SetValue(RegValue::Text(name, value));
        };
        auto expand = [](RegKey* k, const std::string& name, const std::string& value) {
            k->SetValue(RegValue::Text(name, value, regtype::ExpandString));
        };
        auto dword = [](RegKey* k, const std::string& name, std::uint32_t value) {
            k->SetValue(RegValue::Number(name, value));
        };
        const std::string hklm = "HKEY_LOCAL_MACHINE\\";
        const std::string software = hklm + "SOFTWARE\\";
        const std::string control = hklm + "SYSTEM\\CurrentControlSet\\Control\\";
        const std::string userKey = nt() ? "HKEY_USERS\\" + id.userSid : "HKEY_USERS\\.DEFAULT";
        const std::string windowsKey = "Software\\Microsoft\\Windows\\CurrentVersion";

        key(software + "Classes");
        key(software + "Microsoft\\Windows\\CurrentVersion\\App Paths");
        key(software + "Microsoft\\Windows\\CurrentVersion\\Run");
        key(software + "Microsoft\\Windows\\CurrentVersion\\RunOnce");
        key(software + "Microsoft\\Windows\\CurrentVersion\\Uninstall");
        key(software + "Microsoft\\Windows\\CurrentVersion\\SharedDLLs");

        RegKey* current = key(software + "Microsoft\\Windows\\CurrentVersion");
        text(current, "ProgramFilesDir", l.programFiles);
        text(current, "CommonFilesDir", l.commonFiles);
        if (x64()) {
            text(current, "ProgramFilesDir (x86)", l.programFilesX86);
            text(current, "CommonFilesDir (x86)", l.commonFilesX86);
            if (vistaOrLater() && mPreset.minor >= 1) {
                text(current, "ProgramW6432Dir", l.programFiles);
                text(current, "CommonW6432Dir", l.commonFiles);
            }
        }
        if (nt()) {
            expand(current, "DevicePath", "%SystemRoot%\\inf");
        } else {
            text(current, "DevicePath", l.windows + "\\INF");
            text(current, "ProductName", mPreset.productName);
            text(current, "Version", std::string(mPreset.productName).substr(10));
            text(current, "VersionNumber",
                 std::to_string(id.majorVersion) + "." + std::to_string(id.minorVersion) + "." +
                         std::to_string(id.buildNumber));
            text(current, "SubVersionNumber", id.csdVersion);
            text(current, "SystemRoot", l.windows);
            text(current, "RegisteredOwner", id.userName);
        }

        if (!l.commonFolders.empty()) {
            RegKey* shell =
                    key(software + "Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders");
            for (const auto& [name, folder] : l.commonFolders) {
                text(shell, name, folder);
            }
        }

        if (nt()) {
            RegKey* ntCurrent = key(software + "Microsoft\\Windows NT\\CurrentVersion");
            text(ntCurrent, "ProductName", mPreset.productName);
            text(ntCurrent, "CurrentVersion",
                 std::to_string(id.majorVersion) + "." + std::to_string(id.minorVersion));
            text(ntCurrent, "CurrentBuildNumber", std::to_string(id.buildNumber));
            text(ntCurrent, "CurrentBuild", std::to_string(id.buildNumber));
            text(ntCurrent, "CurrentType", "Multiprocessor Free");
            text(ntCurrent, "SystemRoot", l.windows);
            text(ntCurrent, "PathName", l.windows);
            text(ntCurrent, "RegisteredOwner", id.userName);
            text(ntCurrent, "RegisteredOrganization", "");
            text(ntCurrent, "SoftwareType", "System");
            if (!id.csdVersion.empty()) {
                text(ntCurrent, "CSDVersion", id.csdVersion);
            }
            if (vistaOrLater()) {
                text(ntCurrent, "EditionID", mPreset.edition);
                text(ntCurrent, "InstallationType", id.productType == 1 ? "Client" : "Server");
            }
            key(software + "Microsoft\\Windows NT\\CurrentVersion\\Fonts");
            key(software + "Microsoft\\Windows NT\\CurrentVersion\\Print\\Printers");

            RegKey* cpu = key(hklm + "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
            dword(cpu, "~MHz", static_cast<std::uint32_t>(id.cpuMHz));
            text(cpu, "Identifier",
                 x64() ? "Intel64 Family 6 Model 23 Stepping 10"
                       : "x86 Family 6 Model 23 Stepping 10");
            text(cpu, "VendorIdentifier", "GenuineIntel");
            text(cpu, "ProcessorNameString", "Intel(R) Core(TM)2 Duo CPU");

            RegKey* environment = key(control + "Session Manager\\Environment");
            expand(environment, "ComSpec", "%SystemRoot%\\system32\\cmd.exe");
            expand(environment, "Path",
                   "%SystemRoot%\\system32;%SystemRoot%;%SystemRoot%\\System32\\Wbem");
            expand(environment, "windir", "%SystemRoot%");
            text(environment, "OS", "Windows_NT");
            text(environment, "PROCESSOR_ARCHITECTURE", x64() ? "AMD64" : "x86");
            text(environment, "NUMBER_OF_PROCESSORS", "1");
            expand(environment, "TEMP", "%SystemRoot%\\TEMP");
            expand(environment, "TMP", "%SystemRoot%\\TEMP");

            RegKey* options = key(control + "ProductOptions");
            text(options, "ProductType", id.productType == 1 ? "WinNT" : "ServerNT");
            RegKey* windows = key(control + "Windows");
            dword(windows, "CSDVersion", static_cast<std::uint32_t>(id.servicePackMajor) << 8);
        } else {
            key(software + "Microsoft\\Windows\\CurrentVersion\\Fonts");
        }

        RegKey* computer = key(control + "ComputerName\\ComputerName");
        text(computer, "ComputerName", id.computerName);
        RegKey* codePage = key(control + "Nls\\CodePage");
        text(codePage, "ACP", std::to_string(id.ansiCodePage));
        text(codePage, "OEMCP", std::to_string(id.oemCodePage));
        RegKey* language = key(control + "Nls\\Language");
        text(language, "Default", Hex(id.lcid, 4));
        text(language, "InstallLanguage", Hex(id.lcid, 4));
        key(control + "Session Manager");
        key(hklm + "SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current");
        key(hklm + "SYSTEM\\CurrentControlSet\\Services");

        fillPrintKeys(store, control);

        // The current user's hive.
        RegKey* userShell = key(userKey + "\\" + windowsKey + "\\Explorer\\Shell Folders");
        for (const auto& [name, folder] : l.userFolders) {
            text(userShell, name, folder);
        }
        if (win2000OrLater()) {
            RegKey* userShellExpand =
                    key(userKey + "\\" + windowsKey + "\\Explorer\\User Shell Folders");
            for (const auto& [name, folder] : l.userFolders) {
                std::string value = folder;
                if (value.rfind(l.profile, 0) == 0) {
                    value = "%USERPROFILE%" + value.substr(l.profile.size());
                }
                expand(userShellExpand, name, value);
            }
            key(userKey + "\\Software\\Classes");
        }
        if (nt()) {
            RegKey* userEnvironment = key(userKey + "\\Environment");
            std::string temp = l.temp;
            if (temp.rfind(l.profile, 0) == 0) {
                temp = "%USERPROFILE%" + temp.substr(l.profile.size());
            }
            expand(userEnvironment, "TEMP", temp);
            expand(userEnvironment, "TMP", temp);
        }
        key(userKey + "\\" + windowsKey + "\\Run");
        for (const std::string& hive : {userKey, std::string("HKEY_USERS\\.DEFAULT")}) {
            RegKey* international = key(hive + "\\Control Panel\\International");
            text(international, "Locale", Hex(id.lcid, 8));
            const LocaleData* locale = LocaleTable::Find(id.lcid);
            text(international, "sLanguage", locale != nullptr ? locale->abbreviation : "ENU");
        }
    }

    // A fresh spooler: its monitors, the ports of the machine, and the print processor.
    SpoolerState spoolerState() const {
        SpoolerState spooler;
        spooler.monitors.push_back({"Local Port", nt() ? "localspl.dll" : "spool32.exe"});
        if (win2000OrLater()) {
            spooler.monitors.push_back({"Standard TCP/IP Port", "tcpmon.dll"});
            spooler.monitors.push_back({"USB Monitor", "usbmon.dll"});
        }
        if (vistaOrLater()) {
            spooler.monitors.push_back({"WSD Port", "WSDMon.dll"});
        }
        for (const char* port :
             {"LPT1:", "LPT2:", "LPT3:", "COM1:", "COM2:", "COM3:", "COM4:", "FILE:"}) {
            spooler.ports.push_back({port, "Local Port"});
        }
        std::string environment = !nt() ? "Windows 4.0" : x64() ? "Windows x64" : "Windows NT x86";
        spooler.processors.push_back(
                {environment, "winprint", nt() ? "winprint.dll" : "spool32.exe"});
        return spooler;
    }

    ProcessTable processTable() const { return MachinePreset::StartupProcesses(mIdentity); }

    // The services of this Windows version that the engine touches: the spooler, what it needs
    // and what needs it, with their dependencies as the version has them.
    ServiceTable serviceTable() const {
        ServiceTable table;
        auto add = [&](const char* name, const char* display, const std::string& binary,
                       std::uint32_t type, std::uint32_t startType, bool running,
                       std::vector<std::string> dependencies, const char* description) {
            SimService service;
            service.name = name;
            service.displayName = display;
            service.binaryPath = binary;
            service.type = type;
            service.startType = startType;
            service.state = running ? 4 : 1;
            service.dependencies = std::move(dependencies);
            service.description = description;
            table.services.push_back(service);
        };
        const std::string system = "%SystemRoot%\\system32\\";
        bool xp = mPreset.family == Family::Win2000 &&
                  (mPreset.major > 5 || mPreset.minor >= 1);
        bool win7 = vistaOrLater() && (mPreset.major > 6 || mPreset.minor >= 1);
        std::vector<std::string> rpcDependencies;
        if (xp && mServicePack >= 2) {
            add("DcomLaunch", "DCOM Server Process Launcher", system + "svchost -k DcomLaunch",
                0x20, 2, true, {}, "Provides launch functionality for DCOM services.");
        }
        if (vistaOrLater()) {
            add("DcomLaunch", "DCOM Server Process Launcher", system + "svchost.exe -k DcomLaunch",
                0x20, 2, true, {}, "The DCOMLAUNCH service launches COM and DCOM servers.");
            rpcDependencies.push_back("DcomLaunch");
            if (win7) {
                add("RpcEptMapper", "RPC Endpoint Mapper", system + "svchost.exe -k RPCSS", 0x20,
                    2, true, {}, "Resolves RPC interfaces identifiers to transport endpoints.");
                rpcDependencies.insert(rpcDependencies.begin(), "RpcEptMapper");
            }
        }
        add("RpcSs", "Remote Procedure Call (RPC)",
            mPreset.family == Family::NT4 ? system + "RpcSs.exe" : system + "svchost -k rpcss",
            0x20, 2, true, rpcDependencies,
            "Serves as the endpoint mapper and COM Service Control Manager.");
        if (mPreset.family != Family::NT4) {
            add("PlugPlay", "Plug and Play", system + "services.exe", 0x20, 2, true, {},
                "Enables a computer to recognize and adapt to hardware changes.");
        }
        std::vector<std::string> spoolerDependencies;
        if (mPreset.family != Family::NT4) {
            spoolerDependencies.push_back("RPCSS");
        }
        if (vistaOrLater()) {
            add("HTTP", "HTTP", "system32\\DRIVERS\\HTTP.sys", 0x1, 3, true, {},
                "This service implements the hypertext transfer protocol (HTTP).");
            spoolerDependencies.push_back("http");
        }
        add("Spooler", "Print Spooler", system + "spoolsv.exe", 0x110, 2, true,
            spoolerDependencies,
            "Loads files to memory for later printing.");
        if (xp || vistaOrLater()) {
            add("TapiSrv", "Telephony", system + "svchost.exe -k tapisrv", 0x20, 3, false,
                {"PlugPlay", "RpcSs"}, "Provides Telephony API (TAPI) support.");
            add("Fax", "Fax", system + "fxssvc.exe", 0x10, 3, false,
                vistaOrLater() ? std::vector<std::string>{"RpcSs", "Spooler", "TapiSrv"}
                               : std::vector<std::string>{"PlugPlay", "Spooler", "TapiSrv"},
                "Enables you to send and receive faxes.");
        }
        return table;
    }

    void fillPrintKeys(RegistryStore& store, const std::string& control) const {
        auto text = [](RegKey* k, const std::string& name, const std::string& value) {
            k->SetValue(RegValue::Text(name, value));
        };
        std::string print = control + "Print\\";
        store.Create(print + "Printers");
        RegKey* localPort = store.Create(print + "Monitors\\Local Port");
        text(localPort, "Driver", nt() ? "localspl.dll" : "");
        if (win2000OrLater()) {
            text(store.Create(print + "Monitors\\Standard TCP/IP Port"), "Driver", "tcpmon.dll");
        }
        if (!nt()) {
            return;
        }
        struct Environment {
            const char* name;
            const char* directory;
        };
        std::vector<Environment> environments = {{"Windows NT x86", "w32x86"},
                                                 {"Windows 4.0", "win40"}};
        if (x64()) {
            environments.push_back({"Windows x64", "x64"});
        }
        for (const Environment& environment : environments) {
            std::string base = print + "Environments\\" + environment.name;
            text(store.Create(base), "Directory", environment.directory);
            store.Create(base + "\\Drivers");
            RegKey* winprint = store.Create(base + "\\Print Processors\\winprint");
            text(winprint, "Driver", "winprint.dll");
        }
    }

    const OsPreset& mPreset;
    MachinePreset::Options mOptions;
    int mServicePack = 0;
    MachineIdentity mIdentity;
    Layout mLayout;
};

} // namespace

const std::vector<std::string>& MachinePreset::Names() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        for (const OsPreset& preset : kPresets) {
            list.emplace_back(preset.name);
        }
        return list;
    }();
    return names;
}

bool MachinePreset::IsKnown(const std::string& name) {
    return FindPreset(name) != nullptr;
}

int MachinePreset::MaxServicePack(const std::string& name) {
    const OsPreset* preset = FindPreset(name);
    return preset == nullptr ? 0 : preset->maxServicePack;
}

ProcessTable MachinePreset::StartupProcesses(const MachineIdentity& id) {
    ProcessTable table;
    std::string system = id.SystemDirectory();
    const std::string& windows = id.windowsDirectory;
    auto add = [&table](std::string image, std::vector<SimWindow> windowsOfProgram = {}) {
        SimProcess process;
        process.image = std::move(image);
        process.windows = std::move(windowsOfProgram);
        table.Add(process);
    };
    if (!id.IsNT()) {
        add(system + "\\KERNEL32.DLL");
        add(system + "\\MSGSRV32.EXE");
        add(system + "\\SPOOL32.EXE");
        add(windows + "\\EXPLORER.EXE", {{"Program Manager", true}});
        return table;
    }
    add("System");
    add(system + "\\winlogon.exe");
    add(system + "\\services.exe");
    add(system + (id.majorVersion < 5 ? "\\spoolss.exe" : "\\spoolsv.exe"));
    add(windows + "\\explorer.exe", {{"Program Manager", true}});
    return table;
}

bool MachinePreset::Create(const std::string& hostDir, const std::string& name, int servicePack,
                           std::string& why) {
    Options options;
    options.servicePack = servicePack;
    return Create(hostDir, name, options, why);
}

bool MachinePreset::Create(const std::string& hostDir, const std::string& name,
                           const Options& options, std::string& why) {
    const OsPreset* preset = FindPreset(name);
    if (preset == nullptr) {
        why = "unknown Windows version '" + name + "'";
        return false;
    }
    if (options.servicePack > preset->maxServicePack ||
        (options.servicePack >= 0 && options.servicePack < preset->minServicePack)) {
        why = std::string(preset->name) + " has service packs " +
              std::to_string(preset->minServicePack) + " to " +
              std::to_string(preset->maxServicePack);
        return false;
    }
    if (LocaleTable::Find(options.lcid) == nullptr) {
        why = "unknown locale " + Hex(options.lcid, 4);
        return false;
    }
    std::error_code error;
    if (fs::exists(hostDir, error) && !fs::is_empty(hostDir, error)) {
        why = hostDir + " is not empty";
        return false;
    }
    PresetBuilder builder(*preset, options);
    return builder.Write(hostDir, why);
}

} // namespace sim
