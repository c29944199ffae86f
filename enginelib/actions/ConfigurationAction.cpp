#include "actions/ConfigurationAction.h"

#include "actions/EnhanceFile.h"
#include "core/ProductIni.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/PathObject.h"
#include "system/Registry.h"

#include <algorithm>
#include <typeinfo>
#include <vector>

namespace {

const char* const kComponent = "CifAction";
constexpr std::uint32_t kMask = logmask::ActionSet | logmask::General;
constexpr size_t kParameterCount = 4;

const char* const kOperations[] = {"PREPSYSTEMFORCFGS", "COPYCFGSFORPACKAGE"};

// "Persist" counts as "Persistent": the texts are compared over the shorter length.
bool IsPersistent(const CStdStr& cfgType) {
    static const CStdStr kPersistent = "Persistent";
    size_t length = std::min(cfgType.size(), kPersistent.size());
    return !cfgType.empty() && cfgType.compare(0, length, kPersistent, 0, length) == 0;
}

CStdStr WithBackslash(const CStdStr& path) {
    return !path.empty() && path.back() == '\\' ? path : CStdStr(path + "\\");
}

struct CfgEntry {
    CStdStr file;
    CStdStr entry;
    CStdStr type;
    CStdStr realName;
    CStdStr name;
};

// The entries of the list's Drivers section, in order, each from the section it names.
std::vector<CfgEntry> ReadEntries(IniFile& list) {
    std::vector<CfgEntry> entries;
    IniSection* drivers = list.FindSection("Drivers");
    if (drivers == nullptr) {
        return entries;
    }
    for (const CStdStr& key : drivers->Names()) {
        CStdStr section;
        drivers->GetValue(key, section);
        entries.push_back({list.GetValue(section, "CfgFile"), list.GetValue(section, "CfgEntry"),
                           list.GetValue(section, "CfgType"), list.GetValue(section, "RealName"),
                           list.GetValue(section, "Name")});
    }
    return entries;
}

} // namespace

ConfigurationAction::ConfigurationAction(CStdStringList params) {
    params.resize(kParameterCount);
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mListFile = params[1];
    if (mOperation == CopyForPackage) {
        mTarget = params[2];
    }
    mUnits = 0;
}

bool ConfigurationAction::Perform(CStdStr /*title*/) {
    LogScope scope(kComponent, "ConfigurationAction::Perform", kMask);
    bool ok = false;
    if (mOperation == PrepSystem && BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mListFile.c_str());
        ok = true;
    } else if (mOperation == PrepSystem) {
        ok = PrepSystemForConfigurations(mListFile);
    } else if (mOperation == CopyForPackage) {
        ok = CopyConfigurationFilesForPackage(mListFile, mTarget);
    }
    scope.SetResult(ok);
    return ok;
}

CStdStr ConfigurationAction::GetCfgSourceFilePath(const CStdStr& path) {
    if (FileOp::IsFile(path)) {
        return path;
    }
    CStdStr inRoot = WithBackslash(SystemPath::GetDefine("CD_ROOT_DIR")) + PathObject(path).GetName();
    return FileOp::IsFile(inRoot) ? inRoot : CStdStr();
}

bool ConfigurationAction::EnhanceFileCopy(const CStdStr& source, const CStdStr& target) {
    LogScope scope(kComponent, "ConfigurationAction::EnhanceFileCopy", kMask);
    EnhanceFile copier(false, false);
    int result = copier.singleCopy(source, target, false);
    const char* outcome = result == EnhanceFile::Failed      ? "failed."
                          : result == EnhanceFile::NotCopied ? "success-noCopy."
                                                             : "success.";
    scope.Log(kMask, "EnhanceFileCopy: %s <%s>", target.c_str(), outcome);
    scope.SetResult(result != EnhanceFile::Failed);
    return result != EnhanceFile::Failed;
}

bool ConfigurationAction::PrepSystemForConfigurations(const CStdStr& listFile) {
    LogScope scope(kComponent, "ConfigurationAction::PrepSystemForConfigurations", kMask);
    IniFile list;
    if (!FileOp::IsFile(listFile) || !list.Read(listFile)) {
        scope.SetResult(false);
        return false;
    }
    for (const CfgEntry& entry : ReadEntries(list)) {
        if (entry.file.empty() || entry.entry.empty() || entry.type.empty() ||
            entry.realName.empty() || entry.name.empty()) {
            continue;
        }
        if (!PrepConfigurationForDriver(entry.file, entry.entry, entry.realName, entry.name,
                                        entry.type)) {
            scope.Log(0, "ERROR unable to prep system print object %s with configuration %s",
                      entry.realName.c_str(), entry.entry.c_str());
        }
    }
    scope.SetResult(false);
    return false;
}

bool ConfigurationAction::PrepConfigurationForDriver(const CStdStr& cfgFile,
                                                     const CStdStr& cfgEntry,
                                                     const CStdStr& realName,
                                                     const CStdStr& name,
                                                     const CStdStr& cfgType) {
    LogScope scope(kComponent, "ConfigurationAction::PrepConfigurationForDriver", kMask);
    CStdStr source = GetCfgSourceFilePath(cfgFile);
    CStdStr cfgKey = NlsFile::GetText("OEM_CFG_KEY");
    if (source.empty() || cfgKey.empty() || cfgEntry.empty()) {
        scope.SetResult(false);
        return false;
    }
    CStdStr file = source;
    if (IsPersistent(cfgType)) {
        file = CopyCfgFile(source, realName, cfgType);
        if (file.empty()) {
            scope.SetResult(false);
            return false;
        }
    }
    CStdStr key = CStdStr::Formatted("SOFTWARE\\%s\\DrvCfg\\%s\\%s", cfgKey.c_str(),
                                     realName.c_str(), cfgEntry.c_str());
    Registry registry;
    bool ok = registry.CreateKey("HKLM", key, true) &&
              registry.WriteValue("HKLM", key, "DCDConfigFile", RegistryValue::String(file)) &&
              registry.WriteValue("HKLM", key, "DCDShortDesc", RegistryValue::String(name));
    scope.SetResult(ok);
    return ok;
}

CStdStr ConfigurationAction::CopyCfgFile(const CStdStr& source, const CStdStr& realName,
                                         const CStdStr& cfgType) {
    LogScope scope(kComponent, "ConfigurationAction::CopyCfgFile", kMask);
    CStdStr target;
    if (IsPersistent(cfgType)) {
        target = CStdStr::Formatted("%s\\%s\\Schemas\\%s\\persistent.ldc",
                                    SystemPath::GetDefine("PROGRAMFILES_DIR").c_str(),
                                    ProductIni::ProductKey().c_str(), realName.c_str());
    } else {
        target = WithBackslash(SystemPath::GetDefine("TEMP_DIR")) + PathObject(source).GetName();
    }
    if (!EnhanceFileCopy(source, target)) {
        scope.SetResult("");
        return CStdStr();
    }
    CStdStr shortPath = PathObject(target).GetFullPathWithShortName();
    scope.SetResult(shortPath);
    return shortPath;
}

bool ConfigurationAction::CopyConfigurationFilesForPackage(const CStdStr& listFile,
                                                           const CStdStr& target) {
    LogScope scope(kComponent, "ConfigurationAction::CopyConfigurationFilesForPackage", kMask);
    IniFile list;
    if (!FileOp::IsFile(listFile) || !list.Read(listFile)) {
        scope.SetResult(false);
        return false;
    }
    CStdStr folder = WithBackslash(target);
    bool ok = true;
    for (const CfgEntry& entry : ReadEntries(list)) {
        if (!entry.file.empty() && FileOp::IsFile(entry.file)) {
            ok = EnhanceFileCopy(entry.file, folder + PathObject(entry.file).GetName()) && ok;
        }
    }
    scope.SetResult(ok);
    return ok;
}

bool ConfigurationAction::IsSameAction(const Action* other) {
    if (other == nullptr || typeid(*other) != typeid(*this)) {
        return false;
    }
    const auto* same = static_cast<const ConfigurationAction*>(other);
    return same->mOperation == mOperation && same->mListFile.EqualsNoCase(mListFile) &&
           same->mTarget.EqualsNoCase(mTarget);
}
