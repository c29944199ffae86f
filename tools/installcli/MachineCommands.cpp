#include "MachineCommands.h"

#include "sim/IniText.h"
#include "sim/MachinePreset.h"
#include "sim/MachineRestart.h"
#include "sim/SimMachine.h"
#include "sim/Text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace {

int Usage(const char* message) {
    std::fprintf(stderr, "installcli machine: %s\n", message);
    return 2;
}

std::string Absolute(const std::string& path) {
    std::error_code error;
    return fs::absolute(path, error).lexically_normal().string();
}

bool LooksLikeWindowsPath(const std::string& text) {
    return (text.size() >= 2 && std::isalpha(static_cast<unsigned char>(text[0])) &&
            text[1] == ':') ||
           text.rfind("\\\\", 0) == 0;
}

const char* ServiceStateName(std::uint32_t state) {
    switch (state) {
    case 2:
        return "start pending";
    case 3:
        return "stop pending";
    case 4:
        return "running";
    default:
        return "stopped";
    }
}

const char* StartTypeName(std::uint32_t startType) {
    switch (startType) {
    case 0:
        return "boot";
    case 1:
        return "system";
    case 2:
        return "automatic";
    case 3:
        return "on demand";
    case 4:
        return "disabled";
    default:
        return "unknown";
    }
}

std::string TypeName(std::uint32_t type) {
    switch (type) {
    case sim::regtype::String:
        return "REG_SZ";
    case sim::regtype::ExpandString:
        return "REG_EXPAND_SZ";
    case sim::regtype::Binary:
        return "REG_BINARY";
    case sim::regtype::Dword:
        return "REG_DWORD";
    case sim::regtype::MultiString:
        return "REG_MULTI_SZ";
    case sim::regtype::Qword:
        return "REG_QWORD";
    case sim::regtype::None:
        return "REG_NONE";
    default:
        return "REG_" + std::to_string(type);
    }
}

std::string DataText(const sim::RegValue& value) {
    char buffer[32];
    switch (value.type) {
    case sim::regtype::String:
    case sim::regtype::ExpandString:
        return value.AsText();
    case sim::regtype::Dword: {
        std::uint32_t number = 0;
        for (size_t i = 0; i < 4 && i < value.data.size(); ++i) {
            number |= static_cast<std::uint32_t>(value.data[i]) << (8 * i);
        }
        std::snprintf(buffer, sizeof buffer, "0x%x", number);
        return buffer;
    }
    case sim::regtype::MultiString: {
        std::string joined;
        for (const std::string& item : value.AsMulti()) {
            joined += (joined.empty() ? "" : "\\0") + item;
        }
        return joined;
    }
    default: {
        std::string hex;
        for (std::uint8_t byte : value.data) {
            std::snprintf(buffer, sizeof buffer, "%02X", byte);
            hex += buffer;
        }
        return hex;
    }
    }
}

// A key as `reg query` names it, and where it lives in the machine's store.
bool StorePathOf(const sim::SimMachine& machine, const std::string& key, std::string& store,
                 std::string& shown) {
    auto cut = key.find('\\');
    std::string root = key.substr(0, cut);
    std::string rest = cut == std::string::npos ? "" : key.substr(cut);
    struct Root {
        const char* shortName;
        const char* longName;
        std::string base;
    };
    const Root roots[] = {
            {"HKLM", "HKEY_LOCAL_MACHINE", "HKEY_LOCAL_MACHINE"},
            {"HKU", "HKEY_USERS", "HKEY_USERS"},
            {"HKCU", "HKEY_CURRENT_USER", machine.CurrentUserKey()},
            {"HKCR", "HKEY_CLASSES_ROOT", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes"},
            {"HKCC", "HKEY_CURRENT_CONFIG",
             "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current"},
    };
    for (const Root& candidate : roots) {
        if (sim::EqualsNoCase(root, candidate.shortName) ||
            sim::EqualsNoCase(root, candidate.longName)) {
            while (!rest.empty() && rest.back() == '\\') {
                rest.pop_back();
            }
            store = candidate.base + rest;
            shown = std::string(candidate.longName) + rest;
            return true;
        }
    }
    return false;
}

void PrintKey(const sim::RegKey& key, const std::string& shown, bool recursive) {
    std::printf("\n%s\n", shown.c_str());
    for (const sim::RegValue& value : key.Values()) {
        std::printf("    %s    %s    %s\n", value.name.empty() ? "(Default)" : value.name.c_str(),
                    TypeName(value.type).c_str(), DataText(value).c_str());
    }
    if (recursive) {
        for (const sim::RegKey* child : key.Children()) {
            PrintKey(*child, shown + "\\" + child->Name(), true);
        }
        return;
    }
    if (!key.Children().empty()) {
        std::printf("\n");
    }
    for (const sim::RegKey* child : key.Children()) {
        std::printf("%s\\%s\n", shown.c_str(), child->Name().c_str());
    }
}

void CountRegistry(const sim::RegKey& key, size_t& keys, size_t& values) {
    ++keys;
    values += key.Values().size();
    for (const sim::RegKey* child : key.Children()) {
        CountRegistry(*child, keys, values);
    }
}

// --- the uninstall log, as `show` lists it ---

struct LogKind {
    const char* suffix;
    const char* first;  // the name of a record with value 1 (or of any record)
    const char* second; // the name of a record with value 2
};

const LogKind kLogKinds[] = {
        {"_Files", "file", "folder"},         {"_Reg", "reg value", "reg key"},
        {"_Start", "shortcut", "start menu"}, {"_Service", "service", "service"},
        {"_Special", "special", "special"},
};

// The log's text in UTF-8: it is written in the machine's ANSI code page, or in UTF-16.
std::string LogText(const sim::SimMachine& machine, const std::string& bytes) {
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        std::u16string units;
        for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
            units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                           (static_cast<unsigned char>(bytes[i + 1]) << 8));
        }
        return sim::Utf16ToUtf8(units);
    }
    return machine.ToUtf8(bytes);
}

class LogPrinter {
public:
    explicit LogPrinter(const sim::IniText& log) : mLog(log) {}

    // The components below `section`, each with its records, depth first.
    void PrintTree(const std::string& section, int depth) {
        const sim::IniText::Section* tree = mLog.FindSection(section);
        if (tree == nullptr || !mShown.insert(sim::LowerAscii(section)).second) {
            return;
        }
        for (const sim::IniText::Entry& entry : tree->entries) {
            auto comma = entry.key.find(',');
            if (comma == std::string::npos || entry.value != "1") {
                continue; // a port, listed with its component's records
            }
            std::string name = entry.key.substr(0, comma);
            std::string scope = entry.key.substr(comma + 1);
            bool shared = mLog.GetOr(name + "_Special," + scope, "Shared", "") == "1";
            std::printf("%*s%s (%s)%s\n", depth * 2, "", name.c_str(), scope.c_str(),
                        shared ? ", shared" : "");
            printRecords(name, scope, depth + 1);
            PrintTree(entry.key, depth + 1);
        }
    }

    // Sections that no component of the tree reaches.
    void PrintRest() {
        std::string rest;
        for (const sim::IniText::Section& section : mLog.Sections()) {
            if (mShown.count(sim::LowerAscii(section.name)) == 0) {
                rest += (rest.empty() ? "" : ", ") + section.name;
            }
        }
        if (!rest.empty()) {
            std::printf("  not below Install: %s\n", rest.c_str());
        }
    }

private:
    void printRecords(const std::string& name, const std::string& scope, int depth) {
        if (const sim::IniText::Section* own = mLog.FindSection(name + "," + scope)) {
            for (const sim::IniText::Entry& entry : own->entries) {
                if (entry.key.find(',') == std::string::npos || entry.value != "1") {
                    std::printf("%*sport       %s%s%s\n", depth * 2, "", entry.key.c_str(),
                                entry.value.empty() ? "" : " = ", entry.value.c_str());
                }
            }
        }
        for (const LogKind& kind : kLogKinds) {
            // The component's own section, then those of the OEM brands it ran for.
            std::string base = sim::LowerAscii(name + kind.suffix + "," + scope);
            for (const sim::IniText::Section& section : mLog.Sections()) {
                std::string folded = sim::LowerAscii(section.name);
                if (folded != base && folded.rfind(base + ",", 0) != 0) {
                    continue;
                }
                mShown.insert(folded);
                std::string brand =
                        folded == base ? "" : "[" + section.name.substr(base.size() + 1) + "] ";
                for (const sim::IniText::Entry& entry : section.entries) {
                    bool special = std::string(kind.suffix) == "_Special";
                    const char* what = entry.value == "2" ? kind.second : kind.first;
                    std::printf("%*s%s%-10s %s%s%s\n", depth * 2, "", brand.c_str(), what,
                                entry.key.c_str(), special ? " = " : "",
                                special ? entry.value.c_str() : "");
                }
            }
        }
    }

    const sim::IniText& mLog;
    std::set<std::string> mShown;
};

void ShowUninstallLog(sim::SimMachine& machine) {
    std::string path = machine.Identity().SystemDirectory() + "\\QorFiles.ulf";
    sim::HostLocation location;
    if (machine.Locate(machine.ToAnsi(path), location) != 0 || !location.exists ||
        location.isDirectory) {
        std::printf("Uninstall log: none (%s)\n", path.c_str());
        return;
    }
    std::ifstream in(location.hostPath, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (!in) {
        std::printf("Uninstall log: %s cannot be read\n", path.c_str());
        return;
    }
    sim::IniText log;
    log.Parse(LogText(machine, bytes.str()));
    std::printf("Uninstall log: %s\n", path.c_str());
    LogPrinter printer(log);
    printer.PrintTree("Install", 1);
    printer.PrintRest();
}
} // namespace

std::string MachineCommands::SelectMachine(const CommandLine& line) {
    std::string dir;
    if (line.machine) {
        dir = Absolute(*line.machine);
    } else if (const char* named = std::getenv("ENGINE_MACHINE");
               named != nullptr && *named != '\0') {
        dir = Absolute(named);
    } else {
        dir = sim::SimMachine::DefaultDirectory();
        std::error_code error;
        if (!fs::exists(dir, error)) {
            std::string why;
            if (sim::MachinePreset::Create(dir, "win7-x64", -1, why)) {
                std::printf("Made the default machine (win7-x64) in %s\n", dir.c_str());
            }
        }
    }
    ::setenv("ENGINE_MACHINE", dir.c_str(), 1);
    std::string why;
    auto machine = sim::SimMachine::Open(dir, why);
    if (machine) {
        std::printf("Machine: %s (%s)\n", dir.c_str(), machine->Identity().description.c_str());
    } else {
        std::printf("Machine: %s\n", dir.c_str());
    }
    std::fflush(stdout);
    return dir;
}

std::optional<std::string> MachineCommands::ToMachinePath(const std::string& machineDir,
                                                          const std::string& argument) {
    if (argument.empty()) {
        return argument;
    }
    if (LooksLikeWindowsPath(argument)) {
        std::string path = argument;
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    }
    std::string why;
    auto machine = sim::SimMachine::Open(machineDir, why);
    if (!machine) {
        return argument;
    }
    auto path = machine->HostToMachine(Absolute(argument));
    if (!path) {
        return std::nullopt;
    }
    return machine->ToAnsi(*path);
}

std::string MachineCommands::PackageFolderOf(const std::string& machineDir,
                                             const std::string& script) {
    auto slash = script.rfind('\\');
    if (slash == std::string::npos) {
        return std::string();
    }
    std::string folder = script.substr(0, slash);
    sim::HostLocation config;
    std::string why;
    auto machine = sim::SimMachine::Open(machineDir, why);
    if (!machine || machine->Locate(folder + "\\Config", config) != 0 || !config.isDirectory) {
        return std::string();
    }
    return folder;
}

bool MachineCommands::Exists(const std::string& machineDir, const std::string& path) {
    std::string why;
    auto machine = sim::SimMachine::Open(machineDir, why);
    sim::HostLocation location;
    return machine && machine->Locate(path, location) == 0 && location.exists;
}

std::string MachineCommands::DefaultLogLocation(const std::string& machineDir,
                                                const std::string& workdir) {
    std::string why;
    auto machine = sim::SimMachine::Open(machineDir, why);
    if (!machine) {
        return std::string();
    }
    std::string name = "install.log";
    sim::HostLocation product;
    if (!workdir.empty() && machine->Locate(workdir + "\\Config\\product.ini", product) == 0 &&
        product.exists) {
        sim::IniText ini;
        std::string ignored;
        if (ini.Load(product.hostPath, ignored)) {
            name = ini.GetOr("GENERAL", "LogName", name);
        }
    }
    auto temp = machine->Env().Get("TMP");
    if (!temp) {
        temp = machine->Env().Get("TEMP");
    }
    return (temp ? *temp : machine->Identity().windowsDirectory) + "\\" + name;
}

int MachineCommands::Run(const CommandLine& line) {
    if (line.positional.empty()) {
        return Usage("which one: create, show, reg, services or reboot?");
    }
    const std::string& verb = line.positional[0];
    if (verb == "create") {
        return create(line);
    }
    if (verb == "show") {
        return show(line);
    }
    if (verb == "reg") {
        return reg(line);
    }
    if (verb == "reboot") {
        return reboot(line);
    }
    if (verb == "services") {
        return services(line);
    }
    return Usage(("unknown machine command " + verb).c_str());
}

int MachineCommands::create(const CommandLine& line) {
    if (line.positional.size() != 2) {
        return Usage("create takes one folder: installcli machine create DIR --os NAME");
    }
    auto os = line.options.find("--os");
    if (os == line.options.end()) {
        std::string names;
        for (const std::string& name : sim::MachinePreset::Names()) {
            names += " " + name;
        }
        return Usage(("--os NAME is needed, one of:" + names).c_str());
    }
    sim::MachinePreset::Options options;
    auto number = [&](const char* option, long long& value) {
        auto found = line.options.find(option);
        if (found == line.options.end()) {
            return true;
        }
        char* end = nullptr;
        value = std::strtoll(found->second.c_str(), &end, 0);
        return end != nullptr && *end == '\0' && !found->second.empty();
    };
    long long servicePack = -1;
    long long locale = 0x0409;
    if (!number("--sp", servicePack) || !number("--locale", locale)) {
        return Usage("--sp and --locale take numbers");
    }
    options.servicePack = static_cast<int>(servicePack);
    options.lcid = static_cast<std::uint32_t>(locale);
    if (auto computer = line.options.find("--computer"); computer != line.options.end()) {
        options.computerName = computer->second;
    }
    if (auto user = line.options.find("--user"); user != line.options.end()) {
        options.userName = user->second;
    }
    std::string why;
    std::string dir = Absolute(line.positional[1]);
    if (!sim::MachinePreset::Create(dir, os->second, options, why)) {
        std::fprintf(stderr, "installcli machine create: %s\n", why.c_str());
        return 1;
    }
    std::printf("Made a %s machine in %s\n", os->second.c_str(), dir.c_str());
    return 0;
}

int MachineCommands::show(const CommandLine& line) {
    if (line.positional.size() != 2) {
        return Usage("show takes one folder: installcli machine show DIR");
    }
    std::string why;
    auto machine = sim::SimMachine::Open(Absolute(line.positional[1]), why);
    if (!machine) {
        std::fprintf(stderr, "installcli machine show: %s\n", why.c_str());
        return 1;
    }
    const sim::MachineIdentity& id = machine->Identity();
    std::printf("Machine:    %s\n", machine->Directory().c_str());
    std::printf("Windows:    %s (%u.%u.%u, platform %u, product type %u, preset %s)\n",
                id.description.c_str(), id.majorVersion, id.minorVersion, id.buildNumber,
                id.platformId, id.productType, id.preset.c_str());
    std::printf("Service:    %s\n", id.csdVersion.empty() ? "(none)" : id.csdVersion.c_str());
    std::printf("Processor:  %s, %llu MHz; memory %llu MB; free disk %llu MB\n",
                id.Is64Bit() ? "x64" : "x86", static_cast<unsigned long long>(id.cpuMHz),
                static_cast<unsigned long long>(id.memoryMB),
                static_cast<unsigned long long>(id.freeDiskMB));
    std::printf("Computer:   %s, user %s\n", id.computerName.c_str(), id.userName.c_str());
    std::printf("Locale:     0x%04X, ANSI code page %u, OEM code page %u\n", id.lcid,
                id.ansiCodePage, id.oemCodePage);
    std::printf("Windows at: %s\n", id.windowsDirectory.c_str());
    for (const auto& [letter, root] : machine->Paths().Drives()) {
        std::printf("Drive %c:   %s\n", letter, root.c_str());
    }
    size_t keys = 0;
    size_t values = 0;
    for (const char* hive : {"HKEY_LOCAL_MACHINE", "HKEY_USERS"}) {
        CountRegistry(*machine->Registry().Hive(hive), keys, values);
    }
    std::printf("Registry:   %zu keys, %zu values\n", keys, values);
    const sim::SpoolerState& spooler = machine->Spooler();
    std::printf("Spooler:    %s; %zu printers, %zu drivers, %zu ports, %zu monitors\n",
                spooler.running ? "running" : "stopped", spooler.printers.size(),
                spooler.drivers.size(), spooler.ports.size(), spooler.monitors.size());
    for (const sim::SpoolPrinter& printer : spooler.printers) {
        std::printf("  printer   %s on %s (%s)\n", printer.name.c_str(), printer.port.c_str(),
                    printer.driver.c_str());
    }
    if (machine->Identity().IsNT()) {
        size_t running = 0;
        for (const sim::SimService& service : machine->Services().services) {
            running += service.state == 4 ? 1 : 0;
        }
        std::printf("Services:   %zu, %zu running\n", machine->Services().services.size(), running);
    }
    std::printf("Processes:  %zu\n", machine->Processes().Processes().size());
    const sim::RegKey* session = machine->Registry().Find(
            "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager");
    const sim::RegValue* pending =
            session == nullptr ? nullptr : session->Value("PendingFileRenameOperations");
    size_t operations = 0;
    if (pending != nullptr) {
        size_t strings = 0;
        for (size_t i = 0; i + 1 < pending->data.size(); i += 2) {
            strings += pending->data[i] == 0 && pending->data[i + 1] == 0 ? 1 : 0;
        }
        operations = strings / 2;
    }
    std::printf("At restart: %zu pending file operations\n", operations);
    ShowUninstallLog(*machine);
    return 0;
}

int MachineCommands::services(const CommandLine& line) {
    if (line.positional.size() != 2) {
        return Usage("services takes one folder: installcli machine services DIR");
    }
    std::string why;
    auto machine = sim::SimMachine::Open(Absolute(line.positional[1]), why);
    if (!machine) {
        std::fprintf(stderr, "installcli machine services: %s\n", why.c_str());
        return 1;
    }
    if (!machine->Identity().IsNT()) {
        std::printf("%s has no service control manager.\n",
                    machine->Identity().description.c_str());
        return 0;
    }
    for (const sim::SimService& service : machine->Services().services) {
        std::printf("%s\n", service.name.c_str());
        std::printf("  display name  %s\n", service.displayName.c_str());
        std::printf("  state         %s%s\n", ServiceStateName(service.state),
                    service.deletePending ? ", marked for deletion" : "");
        std::printf("  start         %s\n", StartTypeName(service.startType));
        std::printf("  binary        %s\n", service.binaryPath.c_str());
        std::printf("  account       %s\n", service.account.c_str());
        std::string needs;
        for (const std::string& name : service.dependencies) {
            needs += (needs.empty() ? "" : ", ") + name;
        }
        std::printf("  depends on    %s\n", needs.empty() ? "(nothing)" : needs.c_str());
        if (!service.description.empty()) {
            std::printf("  description   %s\n", service.description.c_str());
        }
    }
    return 0;
}

int MachineCommands::reg(const CommandLine& line) {
    if (line.positional.size() < 3) {
        return Usage("reg takes a folder and a key: installcli machine reg DIR KEY [/s]");
    }
    std::string why;
    auto machine = sim::SimMachine::Open(Absolute(line.positional[1]), why);
    if (!machine) {
        std::fprintf(stderr, "installcli machine reg: %s\n", why.c_str());
        return 1;
    }
    bool recursive = line.positional.size() > 3 && sim::EqualsNoCase(line.positional[3], "/s");
    std::string store;
    std::string shown;
    if (!StorePathOf(*machine, line.positional[2], store, shown)) {
        std::fprintf(stderr, "ERROR: Invalid key name.\n");
        return 1;
    }
    const sim::RegKey* key = machine->Registry().Find(store);
    if (key == nullptr) {
        std::fprintf(stderr,
                     "ERROR: The system was unable to find the specified registry key or value.\n");
        return 1;
    }
    PrintKey(*key, shown, recursive);
    return 0;
}

int MachineCommands::reboot(const CommandLine& line) {
    if (line.positional.size() != 2) {
        return Usage("reboot takes one folder: installcli machine reboot DIR");
    }
    std::string why;
    auto machine = sim::SimMachine::Open(Absolute(line.positional[1]), why);
    if (!machine) {
        std::fprintf(stderr, "installcli machine reboot: %s\n", why.c_str());
        return 1;
    }
    std::vector<std::string> report;
    bool ok = sim::MachineRestart::Run(*machine, report, why);
    for (const std::string& entry : report) {
        std::printf("%s\n", entry.c_str());
    }
    if (!ok) {
        std::fprintf(stderr, "installcli machine reboot: %s\n", why.c_str());
        return 1;
    }
    std::printf("Restarted %s\n", machine->Directory().c_str());
    return 0;
}
