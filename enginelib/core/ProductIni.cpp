#include "core/ProductIni.h"

#include "script/CifDefine.h"
#include "script/CifFile.h"
#include "script/IniFile.h"
#include "script/OSInfo.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <memory>
#include <mutex>

namespace {

std::mutex gLock;
std::unique_ptr<IniFile> gImage;
std::map<CStdStr, CStdStr> gRequirements;

const char* const kGeneral = "GENERAL";
const char* const kVariables = "VARIABLES";

// The systems a SYSTEM_REQUIREMENT key may name after its dot; each is a token of OSInfo, so
// that "2K" holds on Server 2003 too and "VISTA" on 2008 and 7.
const char* const kRequirementSystems[] = {"9X", "NT", "2K", "2K3", "XP", "VISTA"};

bool IsRequirementSystem(const CStdStr& name) {
    for (const char* system : kRequirementSystems) {
        if (name.EqualsNoCase(system)) {
            return true;
        }
    }
    return false;
}

// Values go through the built-in defines (no component file and, at load, no script yet).
std::map<CStdStr, CStdStr> ReadRequirements(const IniFile& image) {
    std::map<CStdStr, CStdStr> table;
    IniSection* section = image.FindSection("SYSTEM_REQUIREMENT");
    if (section == nullptr) {
        return table;
    }
    CifFile defines(false);
    defines.InitDefines(nullptr, CStdStr());
    CifDefine* resolver = defines.GetDefines();
    CStdStringList running = OSInfo().Tokens();
    for (const auto& [key, raw] : section->Lines()) {
        CStdStr name = key;
        int dot = key.Find('.');
        if (dot >= 0) {
            CStdStr system = key.Mid(dot + 1);
            if (!IsRequirementSystem(system) || !running.ContainsNoCase(system)) {
                continue;
            }
            name = key.Left(dot);
        }
        CStdStr value = raw;
        if (resolver != nullptr) {
            resolver->resolveStrDefine(value, CStdStr());
        }
        table[name] = value;
    }
    return table;
}

void LogRequirements(const std::map<CStdStr, CStdStr>& table) {
    LogScope scope("ProductIni", "ProductIni::LoadProductIni", logmask::EngineApi);
    for (const auto& [name, value] : table) {
        scope.Log(logmask::Info, "System requirement %s=%s", name.c_str(), value.c_str());
    }
}

} // namespace

bool ProductIni::LoadProductIni(const CStdStr& path) {
    {
        std::lock_guard<std::mutex> guard(gLock);
        if (gImage) {
            return true;
        }
        auto image = std::make_unique<IniFile>(false);
        if (!image->Read(path, false) || image->SectionCount() == 0) {
            return false;
        }
        image->SetFileName(path);
        gImage = std::move(image);
    }
    // Resolving a value may ask this image for its keys, so the lock is not held meanwhile.
    std::map<CStdStr, CStdStr> requirements = ReadRequirements(*Image());
    LogRequirements(requirements);
    std::lock_guard<std::mutex> guard(gLock);
    gRequirements = std::move(requirements);
    return true;
}

bool ProductIni::IsLoaded() {
    std::lock_guard<std::mutex> guard(gLock);
    return gImage != nullptr;
}

void ProductIni::Unload() {
    std::lock_guard<std::mutex> guard(gLock);
    gImage.reset();
    gRequirements.clear();
}

const IniFile* ProductIni::Image() {
    std::lock_guard<std::mutex> guard(gLock);
    return gImage.get();
}

bool ProductIni::GetProductValue(const CStdStr& section, const CStdStr& key, CStdStr& value) {
    std::lock_guard<std::mutex> guard(gLock);
    if (!gImage) {
        return false;
    }
    IniSection* found = gImage->FindSection(section);
    return found != nullptr && found->GetValue(key, value);
}

CStdStr ProductIni::GetValue(const CStdStr& section, const CStdStr& key) {
    CStdStr value;
    GetProductValue(section, key, value);
    return value;
}

bool ProductIni::GetDriverDir(CStdStr& value, const OSInfo& os) {
    const char* key = "DriverDir2K";
    if (os.Is9x()) {
        key = "DriverDir9X";
    } else if (os.GetOSCode() == OSInfo::Generic64 || os.Is64Bit()) {
        key = "DriverDirX64";
    } else if (os.GetOSCode() == OSInfo::NT4) {
        key = "DriverDirNT";
    } else if (os.GetOSCode() == OSInfo::WinXP && GetProductValue(kGeneral, "DriverDirXP", value)) {
        return true;
    }
    return GetProductValue(kGeneral, key, value);
}

bool ProductIni::GetDriverDir(CStdStr& value) {
    return GetDriverDir(value, OSInfo());
}

bool ProductIni::IsPlatformSupported() {
    CStdStr platform;
    if (!GetProductValue(kGeneral, "Platform", platform)) {
        return true;
    }
    CStdStringList supported = Platforms();
    CStdStringList running = OSInfo().Tokens();
    for (const CStdStr& token : supported) {
        if (running.ContainsNoCase(token)) {
            return true;
        }
    }
    return false;
}

CStdStr ProductIni::LogName() {
    CStdStr name;
    return GetProductValue(kGeneral, "LogName", name) ? name : CStdStr("install.log");
}

bool ProductIni::LogLevel(std::uint32_t& bits) {
    CStdStr level;
    if (!GetProductValue(kGeneral, "LogLevel", level)) {
        return false;
    }
    bits = static_cast<std::uint32_t>(std::strtoul(level.c_str(), nullptr, 0));
    return true;
}

bool ProductIni::UseDriversIni() {
    return GetValue(kGeneral, "UseDriversIni") == "1";
}

bool ProductIni::ConvertOldLog() {
    return GetValue(kGeneral, "ConvertOldLog") != "0";
}

CStdStr ProductIni::ProductKey() {
    return GetValue(kGeneral, "ProductKey");
}

CStdStr ProductIni::OemDisplay() {
    return GetValue(kGeneral, "OEMDisplay");
}

CStdStr ProductIni::UninstallCif() {
    return GetValue(kGeneral, "UninstCIF");
}

CStdStringList ProductIni::Platforms() {
    CStdStringList supported =
            Tokenizer::Split(GetValue(kGeneral, "Platform"), ',', Tokenizer::Trim);
    supported.Add("FUTURE_OS");
    return supported;
}

CStdStr ProductIni::DisplayName() {
    return GetValue(kGeneral, "DisplayName");
}

CStdStringList ProductIni::ProgramList(const CStdStr& key) {
    return Tokenizer::Split(GetValue(kGeneral, key), ',', Tokenizer::Trim);
}

CStdStr ProductIni::DefaultPrintInf() {
    return GetValue(kVariables, "DEFAULT_PRINT_INF");
}

CStdStr ProductIni::DynamicNaming() {
    return GetValue(kVariables, "DynamicNaming");
}

CStdStr ProductIni::PrinterFamily() {
    return GetValue(kVariables, "PRINTER_FAMILY");
}

CStdStringList ProductIni::LocalScanPaths() {
    return Tokenizer::Split(GetValue(kVariables, "LocalScanPath"), ',', Tokenizer::Trim);
}

bool ProductIni::DeviceInf(const CStdStr& device, CStdStr& infName, CStdStr& pnpId) {
    CStdStr line;
    if (!GetProductValue("DEVICES", device, line)) {
        return false;
    }
    CStdStringList fields = Tokenizer::Split(line, ',', Tokenizer::Trim);
    infName = fields.empty() ? CStdStr() : fields[0];
    pnpId = fields.size() < 2 ? CStdStr() : fields[1];
    return true;
}

std::vector<std::pair<CStdStr, CStdStr>> ProductIni::ArpInformation() {
    std::lock_guard<std::mutex> guard(gLock);
    IniSection* section = gImage ? gImage->FindSection("ARP_INFORMATION") : nullptr;
    if (section == nullptr) {
        return {};
    }
    return section->Lines();
}

std::map<CStdStr, CStdStr> ProductIni::SystemRequirements() {
    std::lock_guard<std::mutex> guard(gLock);
    return gRequirements;
}
