#include "script/InfFile.h"

#include "core/ProductIni.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/PathObject.h"
#include "system/Registry.h"

#include <algorithm>
#include <cstdlib>

namespace {

CStdStr Hex4(std::uint32_t id) {
    return CStdStr::Formatted("%04x", id);
}

bool FileExists(const CStdStr& path) {
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success &&
           (attributes & os::attr::Directory) == 0;
}

CStdStr WithBackslash(const CStdStr& folder) {
    return folder.empty() || folder.back() == '\\' ? folder : CStdStr(folder + "\\");
}

// The name of a path without its folder.
CStdStr LastPart(const CStdStr& path) {
    int cut = std::max(path.ReverseFind('\\'), path.ReverseFind('/'));
    return cut < 0 ? path : path.Mid(cut + 1);
}

// A relative path that stays below the folder it is joined to: no root, no drive, no "..".
bool StaysInside(const CStdStr& relative) {
    if (relative.empty()) {
        return true;
    }
    if (relative.Find(':') >= 0 || (relative[0] == '\\' && relative.size() > 1 &&
                                    relative[1] == '\\')) {
        return false;
    }
    for (const CStdStr& part : Tokenizer::Split(relative, '\\', Tokenizer::Trim)) {
        if (part == "..") {
            return false;
        }
    }
    return relative.Find('/') < 0;
}

CStdStr TrimmedBackslashes(CStdStr text) {
    text.Trim();
    text.Trim('\\');
    return text;
}

} // namespace

InfFile::InfFile() {
    UseInfSyntax();
}

InfFile::InfFile(const CStdStr& fileName, bool redirect) {
    UseInfSyntax();
    CStdStr path = fileName;
    if (redirect) {
        ENGINE_LOG(1, "Check if registry contains info about driver source redirection.");
        checkSourceRedirection(path);
    }
    SetFileName(path);
    Read(path, false);
    LoadStrings();
}

InfFile::~InfFile() = default;

void InfFile::LoadStrings() {
    // The run's language, as the define IS_LANG gives it: a decimal language id.
    CStdStr language = CStdStr::Formatted("%u", NlsFile::GetWinCode());
    LoadStrings(static_cast<std::uint32_t>(std::strtoul(language.c_str(), nullptr, 10)));
}

void InfFile::LoadStrings(std::uint32_t languageId) {
    mLanguageId = languageId;
    mStrings.clear();
    CStdStringList names = {"Strings"};
    if (languageId != 0) {
        names.push_back("Strings." + Hex4(languageId & 0x3FF));
        names.push_back("Strings." + Hex4(languageId));
    }
    for (const CStdStr& sectionName : names) {
        IniSection* section = FindSection(sectionName);
        if (section == nullptr) {
            continue;
        }
        for (const auto& [name, value] : section->Lines()) {
            CStdStr key = name;
            mStrings[key.MakeLower()] = value;
        }
    }
    mClassName = Resolve(GetValue("Version", "Class"));
}

CStdStr InfFile::GetClass() const {
    return mClassName;
}

CStdStr InfFile::platformWord() const {
    return mOS.Is64Bit() ? "amd64" : "x86";
}

bool InfFile::decorationApplies(const CStdStr& decoration, long& rank) const {
    if (mOS.Is9x()) {
        return false; // Windows 9x reads undecorated sections only
    }
    CStdStringList parts = Tokenizer::Split(decoration, '.', Tokenizer::Trim);
    if (parts.empty() || parts[0].Left(2).CompareNoCase("NT") != 0) {
        return false;
    }
    CStdStr platform = parts[0].Mid(2);
    if (!platform.empty() && !platform.EqualsNoCase(platformWord())) {
        return false;
    }
    long major = parts.size() > 1 ? std::atol(parts[1].c_str()) : 0;
    long minor = parts.size() > 2 ? std::atol(parts[2].c_str()) : 0;
    if (major > mOS.GetMajorVersion() ||
        (major == mOS.GetMajorVersion() && minor > mOS.GetMinorVersion())) {
        return false;
    }
    // A decoration with the platform beats one without; then the higher version wins.
    rank = (platform.empty() ? 0 : 1000000) + major * 1000 + minor + 1;
    return true;
}

CStdStr InfFile::FindModelSection(const CStdStr& manufacturerValue) const {
    CStdStringList items =
            Tokenizer::Split(manufacturerValue, ',', Tokenizer::Quotes | Tokenizer::Trim);
    if (items.empty() || items[0].empty()) {
        return CStdStr();
    }
    const CStdStr& base = items[0];
    long bestRank = 0;
    CStdStr best;
    for (size_t i = 1; i < items.size(); ++i) {
        long rank = 0;
        CStdStr candidate = base + "." + items[i];
        if (decorationApplies(items[i], rank) && rank > bestRank &&
            FindSection(candidate) != nullptr) {
            bestRank = rank;
            best = candidate;
        }
    }
    if (!best.empty()) {
        return FindSection(best)->GetName();
    }
    IniSection* plain = FindSection(base);
    return plain == nullptr ? CStdStr() : plain->GetName();
}

CStdStr InfFile::FindInstallSection(const CStdStr& section) const {
    CStdStringList names;
    if (!mOS.Is9x()) {
        names.push_back(CStdStr::Formatted("%s.%s", section.c_str(),
                                           CStdStr::Formatted("NT%s", platformWord().c_str()).c_str()));
        names.push_back(section + ".NT");
    }
    names.push_back(section);
    for (const CStdStr& name : names) {
        if (IniSection* found = FindSection(name)) {
            return found->GetName();
        }
    }
    return CStdStr();
}

bool InfFile::GetDriversList(std::vector<InfDriver>& list, bool allModels) {
    IniSection* manufacturers = FindSection("Manufacturer");
    if (manufacturers == nullptr) {
        ENGINE_LOG(1, "No Manufacturer section in inf <%s>", GetFileName().c_str());
        return false;
    }
    size_t before = list.size();
    for (const auto& [key, value] : manufacturers->Lines()) {
        // "%Mfg%=Section,NTamd64" or a line of only a section name.
        CStdStr line = value.empty() ? key : value;
        CStdStringList sectionNames;
        if (allModels) {
            CStdStringList items = Tokenizer::Split(line, ',', Tokenizer::Quotes | Tokenizer::Trim);
            if (!items.empty()) {
                sectionNames.push_back(items[0]);
                for (size_t i = 1; i < items.size(); ++i) {
                    sectionNames.push_back(items[0] + "." + items[i]);
                }
            }
        } else {
            sectionNames.push_back(FindModelSection(line));
        }
        for (const CStdStr& sectionName : sectionNames) {
            IniSection* models = sectionName.empty() ? nullptr : FindSection(sectionName);
            if (models == nullptr) {
                ENGINE_LOG(1, "Model section of <%s> not found in inf <%s>", line.c_str(),
                           GetFileName().c_str());
                continue;
            }
            for (const auto& [model, install] : models->Lines()) {
                CStdStringList items =
                        Tokenizer::Split(install, ',', Tokenizer::Quotes | Tokenizer::Trim);
                InfDriver driver;
                driver.name = Resolve(model);
                driver.installSection = items.empty() ? CStdStr() : items[0];
                driver.hardwareId = items.size() > 1 ? items[1] : CStdStr();
                for (size_t i = 2; i < items.size(); ++i) {
                    driver.compatibleIds.push_back(items[i]);
                }
                driver.manufacturer = Resolve(value.empty() ? CStdStr() : key);
                driver.modelSection = models->GetName();
                if (allModels && std::any_of(list.begin() + static_cast<long>(before), list.end(),
                                             [&](const InfDriver& known) {
                                                 return known.name.EqualsNoCase(driver.name) &&
                                                        known.hardwareId.EqualsNoCase(
                                                                driver.hardwareId);
                                             })) {
                    continue;
                }
                ENGINE_LOG(1, "Driver data from inf <%s>", driver.name.c_str());
                list.push_back(driver);
            }
        }
    }
    return list.size() > before;
}

InfFile* InfFile::GetInclude(const CStdStr& name) {
    CStdStr fileName = LastPart(name);
    auto known = mIncludes.find(fileName);
    if (known != mIncludes.end()) {
        return known->second.get();
    }
    std::unique_ptr<InfFile> include;
    for (const CStdStr& folder :
         {GetDirectory(), SystemPath(SystemPath::InfFolder).GetFullPath()}) {
        CStdStr candidate = WithBackslash(folder) + fileName;
        if (!folder.empty() && FileExists(candidate)) {
            include = std::make_unique<InfFile>();
            include->SetOS(mOS);
            include->SetFileName(candidate);
            include->Read(candidate, false);
            include->LoadStrings(mLanguageId);
            break;
        }
    }
    if (!include) {
        ENGINE_LOG(1, "Included inf <%s> of <%s> not found", fileName.c_str(),
                   GetFileName().c_str());
    }
    InfFile* result = include.get();
    mIncludes[fileName] = std::move(include);
    return result;
}

IniSection* InfFile::findNeeded(const CStdStr& name, const CStdStringList& includes,
                                InfFile*& owner) {
    if (IniSection* own = FindSection(name)) {
        owner = this;
        return own;
    }
    for (const CStdStr& includeName : includes) {
        InfFile* include = GetInclude(includeName);
        if (include == nullptr) {
            continue;
        }
        CStdStr found = include->FindInstallSection(name);
        if (!found.empty()) {
            owner = include;
            return include->FindSection(found);
        }
    }
    return nullptr;
}

bool InfFile::GetNeededSections(const CStdStr& installSection,
                                std::vector<std::pair<InfFile*, CStdStr>>& sections) {
    CStdStr installName = FindInstallSection(installSection);
    IniSection* install = installName.empty() ? nullptr : FindSection(installName);
    if (install == nullptr) {
        ENGINE_LOG(1, "Install section <%s> not found in inf <%s>", installSection.c_str(),
                   GetFileName().c_str());
        return false;
    }
    sections.emplace_back(this, install->GetName());
    CStdStringList includes;
    for (const auto& [key, value] : install->Lines()) {
        if (key.EqualsNoCase("Include")) {
            for (const CStdStr& name : Tokenizer::Split(Resolve(value), ',', Tokenizer::Trim)) {
                if (!name.empty()) {
                    includes.push_back(name);
                }
            }
        }
    }
    for (const auto& [key, value] : install->Lines()) {
        if (!key.EqualsNoCase("Needs")) {
            continue;
        }
        for (const CStdStr& needed : Tokenizer::Split(Resolve(value), ',', Tokenizer::Trim)) {
            InfFile* neededOwner = nullptr;
            IniSection* section =
                    needed.empty() ? nullptr : findNeeded(needed, includes, neededOwner);
            if (section == nullptr) {
                ENGINE_LOG(1, "Needed section <%s> not found for <%s> in inf <%s>",
                           needed.c_str(), installSection.c_str(), GetFileName().c_str());
                continue;
            }
            sections.emplace_back(neededOwner, section->GetName());
        }
    }
    return true;
}

CStdStringList InfFile::GetInstallValues(const CStdStr& installSection, const CStdStr& key) {
    CStdStringList values;
    std::vector<std::pair<InfFile*, CStdStr>> sections;
    GetNeededSections(installSection, sections);
    for (const auto& [owner, name] : sections) {
        for (const auto& [lineKey, value] : owner->FindSection(name)->Lines()) {
            if (!lineKey.EqualsNoCase(key)) {
                continue;
            }
            for (const CStdStr& item :
                 Tokenizer::Split(owner->Resolve(value), ',', Tokenizer::Quotes | Tokenizer::Trim)) {
                if (!item.empty()) {
                    values.push_back(item);
                }
            }
        }
    }
    return values;
}

bool InfFile::DirIdFolder(long dirId, CStdStr& folder) {
    auto path = [](int code) { return SystemPath(code).GetFullPath(); };
    CStdStr windows = path(SystemPath::WindowsFolder);
    CStdStr system = path(SystemPath::SystemFolder);
    switch (dirId) {
    case 10:
    case 25:
        folder = windows;
        return true;
    case 11:
    case 66002:
        folder = system;
        return true;
    case 12:
        folder = system + "\\drivers";
        return true;
    case 17:
        folder = path(SystemPath::InfFolder);
        return true;
    case 18:
        folder = windows + "\\help";
        return true;
    case 20:
        folder = path(SystemPath::Fonts);
        return true;
    case 23:
    case 66003:
        folder = system + "\\spool\\drivers\\color";
        return true;
    case 24:
        folder = path(SystemPath::WindowsDrive);
        return true;
    case 50:
        folder = windows + "\\system";
        return true;
    case 51:
        folder = system + "\\spool";
        return true;
    case 52:
        folder = system + "\\spool\\drivers";
        return true;
    case 55:
    case 66001:
        folder = path(SystemPath::PrintProcessorFolder);
        return true;
    case 66000:
        folder = path(SystemPath::PrinterDriverFolder);
        return true;
    case 16422:
        folder = path(SystemPath::ProgramFiles);
        return true;
    case 16427:
        folder = path(SystemPath::CommonFiles);
        return true;
    default:
        return false;
    }
}

bool InfFile::GetDestinationFolder(const CStdStr& fileListSection, CStdStr& folder) const {
    IniSection* dirs = FindSection("DestinationDirs");
    CStdStr entry;
    if (dirs == nullptr ||
        (!dirs->GetValue(fileListSection, entry) && !dirs->GetValue("DefaultDestDir", entry))) {
        ENGINE_LOG(1, "No destination for <%s> in inf <%s>", fileListSection.c_str(),
                   GetFileName().c_str());
        return false;
    }
    CStdStringList items = Tokenizer::Split(Resolve(entry), ',', Tokenizer::Quotes | Tokenizer::Trim);
    CStdStr idText = items.empty() ? CStdStr() : items[0];
    char* end = nullptr;
    long dirId = std::strtol(idText.c_str(), &end, 10);
    if (idText.empty() || *end != '\0' || !DirIdFolder(dirId, folder)) {
        ENGINE_LOG(1, "Unknown destination dirid <%s> for <%s> in inf <%s>", idText.c_str(),
                   fileListSection.c_str(), GetFileName().c_str());
        return false;
    }
    if (items.size() > 1 && !items[1].empty()) {
        CStdStr subFolder = TrimmedBackslashes(items[1]);
        if (!StaysInside(subFolder)) {
            ENGINE_LOG(1, "Destination <%s> leaves its folder in inf <%s>", items[1].c_str(),
                       GetFileName().c_str());
            return false;
        }
        folder = WithBackslash(folder) + subFolder;
    }
    return true;
}

CStdStr InfFile::sectionForPlatform(const CStdStr& base) const {
    if (!mOS.Is9x()) {
        CStdStr decorated = base + "." + platformWord();
        if (FindSection(decorated) != nullptr) {
            return decorated;
        }
    }
    return base;
}

bool InfFile::GetSourcePath(const CStdStr& fileName, CStdStr& path) {
    CStdStr folder = WithBackslash(GetDirectory());
    path = folder + fileName;
    CStdStr fileLine;
    IniSection* files = FindSection(sectionForPlatform("SourceDisksFiles"));
    if (files == nullptr || !files->GetValue(fileName, fileLine)) {
        files = FindSection("SourceDisksFiles");
        if (files == nullptr || !files->GetValue(fileName, fileLine)) {
            ENGINE_LOG(1, "File <%s> is named by no source in inf <%s>", fileName.c_str(),
                       GetFileName().c_str());
            return false;
        }
    }
    CStdStringList fileItems = Tokenizer::Split(fileLine, ',', Tokenizer::Quotes | Tokenizer::Trim);
    CStdStr disk = fileItems.empty() ? CStdStr() : fileItems[0];
    CStdStr subFolder = fileItems.size() > 1 ? TrimmedBackslashes(Resolve(fileItems[1])) : CStdStr();
    CStdStr diskLine;
    IniSection* disks = FindSection(sectionForPlatform("SourceDisksNames"));
    if (disks == nullptr || !disks->GetValue(disk, diskLine)) {
        disks = FindSection("SourceDisksNames");
        if (disks == nullptr || !disks->GetValue(disk, diskLine)) {
            ENGINE_LOG(1, "Disk <%s> of <%s> is not in SourceDisksNames of inf <%s>",
                       disk.c_str(), fileName.c_str(), GetFileName().c_str());
            return false;
        }
    }
    CStdStringList diskItems = Tokenizer::Split(diskLine, ',', Tokenizer::Quotes | Tokenizer::Trim);
    CStdStr diskFolder = diskItems.size() > 3 ? TrimmedBackslashes(Resolve(diskItems[3])) : CStdStr();
    if (!StaysInside(diskFolder) || !StaysInside(subFolder)) {
        ENGINE_LOG(1, "Source of <%s> leaves the folder of inf <%s>", fileName.c_str(),
                   GetFileName().c_str());
        return false;
    }
    CStdStr result = folder;
    for (const CStdStr& part : {diskFolder, subFolder}) {
        if (!part.empty()) {
            result += part + "\\";
        }
    }
    path = result + fileName;
    return true;
}

void InfFile::addCopyFile(InfFile& owner, const CStdStr& destinationFolder, const CStdStr& line,
                          std::vector<InfCopyFile>& files) {
    CStdStringList items = Tokenizer::Split(owner.Resolve(line), ',', Tokenizer::Quotes | Tokenizer::Trim);
    if (items.empty() || items[0].empty()) {
        return;
    }
    InfCopyFile file;
    file.name = LastPart(items[0]);
    file.sourceName = items.size() > 1 && !items[1].empty() ? LastPart(items[1]) : file.name;
    file.destination = destinationFolder;
    file.namedBySource = owner.GetSourcePath(file.sourceName, file.sourcePath);
    files.push_back(file);
}

bool InfFile::addFileList(InfFile& owner, const CStdStr& item, std::vector<InfCopyFile>& files) {
    if (item.empty()) {
        return true;
    }
    if (item[0] == '@') {
        CStdStr folder;
        bool known = owner.GetDestinationFolder("DefaultDestDir", folder);
        addCopyFile(owner, known ? folder : CStdStr(), item.Mid(1), files);
        return known;
    }
    IniSection* list = owner.FindSection(item);
    if (list == nullptr) {
        ENGINE_LOG(1, "CopyFiles section <%s> not found in inf <%s>", item.c_str(),
                   owner.GetFileName().c_str());
        return false;
    }
    CStdStr folder;
    bool known = owner.GetDestinationFolder(list->GetName(), folder);
    for (const auto& [name, value] : list->Lines()) {
        // A file line has no '=': its text is the name; "dest,source,,flags" is one name.
        addCopyFile(owner, known ? folder : CStdStr(), value.empty() ? name : CStdStr(name + "=" + value),
                    files);
    }
    return known;
}

bool InfFile::GetCopyFiles(const CStdStr& installSection, std::vector<InfCopyFile>& files) {
    std::vector<std::pair<InfFile*, CStdStr>> sections;
    if (!GetNeededSections(installSection, sections)) {
        return false;
    }
    bool complete = true;
    for (const auto& [owner, name] : sections) {
        for (const auto& [key, value] : owner->FindSection(name)->Lines()) {
            if (!key.EqualsNoCase("CopyFiles")) {
                continue;
            }
            for (const CStdStr& item :
                 Tokenizer::Split(owner->Resolve(value), ',', Tokenizer::Quotes | Tokenizer::Trim)) {
                complete = addFileList(*owner, item, files) && complete;
            }
        }
    }
    return complete;
}

bool InfFile::stripRelativePath(const CStdStr& fileName, CStdStr& foundPath) {
    CStdStr name = LastPart(fileName);
    CStdStr local = WithBackslash(GetDirectory()) + name;
    if (FileExists(local)) {
        foundPath = local;
        return true;
    }
    Registry registry;
    CStdStr devicePath = registry.ReadStringValue(
            "HKLM", "Software\\Microsoft\\Windows\\CurrentVersion", "DevicePath");
    for (const CStdStr& folder : Tokenizer::Split(devicePath, ';', Tokenizer::Trim)) {
        if (folder.empty()) {
            continue;
        }
        CStdStr candidate = WithBackslash(folder) + name;
        if (FileExists(candidate)) {
            foundPath = candidate;
            return true;
        }
    }
    ENGINE_LOG(1, "Driver files were not found at the installer location <%s>", local.c_str());
    return false;
}

CStdStr InfFile::GetLocalDriverDir(const CStdStr& type) {
    if (type.EqualsNoCase("Image")) {
        return ProductIni::GetValue("VARIABLES", "LocalScanPath");
    }
    OSInfo os;
    const char* key = os.Is64Bit()                           ? "DriverDirX64"
                      : (!os.Is9x() && os.GetOSCode() != OSInfo::NT4 &&
                         os.GetOSCode() != OSInfo::Win2000) ? "DriverDirXP"
                                                             : "DriverDir2K";
    return ProductIni::GetValue("GENERAL", key);
}

void InfFile::checkSourceRedirection(CStdStr& path) {
    ENGINE_LOG(1, "Start with <%s>.", path.c_str());
    PathObject inf(path);
    CStdStr folder = inf.GetDirectory();
    CStdStr upper = folder;
    upper.MakeUpper();
    CStdStr kind = upper.Find("\\PRINTER") >= 0    ? "Printer"
                   : upper.Find("\\SCANNERS") >= 0 ? "Image"
                                                   : "Fax4";
    CStdStr subKey;
    for (const CStdStr& entry :
         Tokenizer::Split(ProductIni::GetValue("Variables", "DownloadableWebComponents"), '|',
                          Tokenizer::Trim)) {
        CStdStringList pair = Tokenizer::Split(entry, ':', Tokenizer::Trim);
        if (pair.size() >= 2 && pair[0].EqualsNoCase(kind)) {
            subKey = pair[1];
        }
    }
    CStdStr base = ProductIni::GetValue("WEB_UPDATE", "ComponentsRegistry");
    if (subKey.empty() || base.empty()) {
        ENGINE_LOG(1, "No redirection info available in the registry <%s>. Use default <%s> path.",
                   base.c_str(), path.c_str());
        return;
    }
    CStdStr key = WithBackslash(base) + subKey;
    ENGINE_LOG(1, "Check registry for <%s> info.", key.c_str());
    Registry registry;
    CStdStr newFolder = registry.ReadStringValue("HKLM", key, "Path");
    if (newFolder.empty()) {
        ENGINE_LOG(1, "No redirection info available in the registry <%s>. Use default <%s> path.",
                   key.c_str(), path.c_str());
        return;
    }
    CStdStr moved = WithBackslash(newFolder) + inf.GetName();
    if (!FileExists(moved)) {
        return;
    }
    ENGINE_LOG(1, "Found device inf in new location: <%s>", moved.c_str());
    path = moved;
    ENGINE_LOG(1, "Inf path corrected with registry information <%s>", path.c_str());
    registry.WriteValue("HKLM", key, "Installed", RegistryValue::String("1"));
}
