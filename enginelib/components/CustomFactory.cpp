#include "components/CustomFactory.h"

#include "actions/ActionSet.h"
#include "actions/ConfigurationAction.h"
#include "actions/EnvVariableAction.h"
#include "actions/FileAction.h"
#include "actions/IniFileAction.h"
#include "actions/LinePatchAction.h"
#include "actions/RegistryAction.h"
#include "actions/TextFileAction.h"
#include "components/GenericComponent.h"
#include "os/Files.h"
#include "script/CifDefine.h"
#include "script/CifExtReq.h"
#include "script/CifFile.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "system/PathObject.h"
#include "uninstall/UninstallLog.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

const char* const kComponent = "CustomFactory";
constexpr std::uint32_t kMask = logmask::CustomFactory;

const char* const kListSuffixes[] = {"_Actions",    "_OEMActions",  "_Cleanup",
                                     "_PreInstall", "_PostInstall", "_FinishInstall",
                                     "_Uninstall",  "_OEMUninstall"};

bool IsTrue(const CStdStr& value) {
    return value.EqualsNoCase("TRUE") || value == "1";
}

std::vector<long> VersionParts(const CStdStr& version) {
    std::vector<long> parts;
    for (const CStdStr& part : Tokenizer::Split(version, '.')) {
        parts.push_back(std::strtol(part.c_str(), nullptr, 10));
    }
    return parts;
}

// Whether a component of `newVersion` may replace the installed one; `current` is the answer
// when the walk does not decide.
bool VersionAllowsInstall(const CStdStr& newVersion, const CStdStr& installedVersion,
                          bool current) {
    if (newVersion.empty() || installedVersion.empty()) {
        return true;
    }
    std::vector<long> fresh = VersionParts(newVersion);
    std::vector<long> installed = VersionParts(installedVersion);
    for (size_t i = 0;; ++i) {
        bool freshDone = i >= fresh.size();
        bool installedDone = i >= installed.size();
        if (installedDone && !freshDone) {
            return true;
        }
        if (freshDone) {
            return installedDone ? true : current;
        }
        if (fresh[i] > installed[i]) {
            return true;
        }
        if (fresh[i] < installed[i]) {
            return current;
        }
    }
}

// A CIF of an installed product counts as older when any part of the new version is greater
// than its fellow, or when the installed version has no such part. A smaller part does not end
// the walk: this is no ordering of versions, and is meant so.
bool CountsAsOlder(const CStdStr& newVersion, const CStdStr& fileVersion) {
    std::vector<long> fresh = VersionParts(newVersion);
    std::vector<long> file = VersionParts(fileVersion);
    for (size_t i = 0; i < fresh.size(); ++i) {
        if (i >= file.size() || fresh[i] > file[i]) {
            return true;
        }
    }
    return false;
}

CStdStr MainValue(IniSection* main, const char* key) {
    CStdStr value;
    main->GetValue(key, value);
    return value;
}

} // namespace

InstallComponent* CustomFactory::Make(const CStdStr& name, CifFile& cif) {
    LogScope scope(kComponent, "CustomFactory::Make", kMask);
    if (!cif.AreDefinesOk()) {
        scope.Log(kMask, "Invalid Script..");
        scope.SetResult("null");
        return nullptr;
    }
    CStdStr sectionName = name;
    CStdStr instanceName;
    int hash = sectionName.ReverseFind('#');
    if (hash >= 0) {
        instanceName = sectionName.Mid(hash + 1);
        sectionName = sectionName.Left(hash);
    }
    int dot = sectionName.ReverseFind('.');
    if (dot >= 0) {
        sectionName = sectionName.Mid(dot + 1);
    }
    if (instanceName.empty()) {
        instanceName = sectionName;
    }

    IniFile* script = GetScript();
    CStdStr language = script != nullptr ? script->GetValue(sectionName, "Language") : CStdStr();
    if (!language.empty() && !language.EqualsNoCase(NlsFile::GetLanguage())) {
        NlsFile::SwitchLanguage(language);
    }
    if (!cif.AreDefinesLoaded()) {
        if (!cif.Read(cif.GetFileName(), false) || !cif.InitDefines(script, sectionName)) {
            scope.Log(0, "could not initialize cif: %s", cif.GetFileName().c_str());
            scope.SetResult("null");
            return nullptr;
        }
    }
    cif.SetComponentName(sectionName);

    GenericComponent* component = createObject(name, sectionName, cif, instanceName);
    if (component == nullptr) {
        scope.Log(0, "Could not create object for component %s", name.c_str());
        scope.SetResult("null");
        return nullptr;
    }
    ActionSet* lists[] = {
            &component->GetInstallActions(),     &component->GetOemInstallActions(),
            &component->GetCleanupActions(),     &component->GetPreInstallActions(),
            &component->GetPostInstallActions(), &component->GetFinishActions(),
            &component->GetUninstallActions(),   &component->GetOemUninstallActions()};
    bool ok = true;
    for (size_t i = 0; i < std::size(lists); ++i) {
        ok = getActionList(*lists[i], sectionName, kListSuffixes[i], cif, true) && ok;
    }
    if (!ok) {
        scope.Log(0, "Fatal error making action lists for component %s", name.c_str());
        delete component;
        scope.SetResult("null");
        return nullptr;
    }
    scope.SetResult("componentobject");
    return component;
}

void CustomFactory::findOlderUninstallCifs(const CStdStr& version) {
    PathObject makerFolder;
    makerFolder.SetDirectory(SystemPath::GetDefine("PROGRAMFILES_DIR"));
    makerFolder.AppendDirectory(kMakerFolder);
    std::vector<os::FindData> entries;
    if (os::FindFiles(makerFolder.GetDirectory() + "\\*.*", entries) != os::error::Success) {
        return;
    }
    for (const os::FindData& entry : entries) {
        if ((entry.attributes & os::attr::Directory) == 0 || entry.fileName == "." ||
            entry.fileName == "..") {
            continue;
        }
        PathObject uninstallCif;
        uninstallCif.SetDirectory(makerFolder.GetDirectory());
        uninstallCif.AppendDirectory(entry.fileName + "\\Install\\Config");
        uninstallCif.SetName("Uninstall.cif");
        if (!uninstallCif.Exists()) {
            continue;
        }
        CifFile installed(uninstallCif.GetFullPath(), true);
        CStdStr installedVersion;
        if (IniSection* section = installed.FindSection("Uninstall")) {
            section->IniSection::GetValue("Version", installedVersion);
        }
        if (installedVersion.empty()) {
            installedVersion = "0";
        }
        if (CountsAsOlder(version, installedVersion)) {
            mAllUninstallCifs = mAllUninstallCifs.empty()
                                        ? uninstallCif.GetFullPath()
                                        : CStdStr::Formatted("%s|%s", mAllUninstallCifs.c_str(),
                                                             uninstallCif.GetFullPath().c_str());
        }
    }
}

CStdStringList CustomFactory::readRequires(const CStdStr& value) {
    if (value.Find('|') < 0) {
        return Tokenizer::Split(value, ',', Tokenizer::Trim);
    }
    CStdStringList kept;
    IniFile* script = GetScript();
    for (const CStdStr& name : Tokenizer::Split(value, '|', Tokenizer::Trim)) {
        if (script == nullptr) {
            continue;
        }
        if (script->GetValue("Install", name) == "1" ||
            script->GetValue("Uninstall", name) == "2") {
            kept.Add(name);
        }
    }
    return kept;
}

GenericComponent* CustomFactory::createObject(const CStdStr& name, const CStdStr& sectionName,
                                              CifFile& cif, const CStdStr& instanceName) {
    LogScope scope(kComponent, "CustomFactory::createObject", kMask);
    scope.Log(kMask, "componentName:%s", name.c_str());
    scope.Log(kMask, "ScriptName:%s", cif.GetFileName().c_str());
    IniSection* main = cif.FindSection(sectionName);
    if (main == nullptr) {
        scope.Log(0, "Could not find main section for component %s, CIF=%s", name.c_str(),
                  cif.GetFileName().c_str());
        return nullptr;
    }
    if (!mSkipRequirements && cif.FindSection(sectionName + "_ExtReq") != nullptr) {
        CifExtReq* requirements = cif.GetExtReq(sectionName, "_ExtReq");
        if (requirements != nullptr && !requirements->IsValid()) {
            scope.Log(0, "External requirements are invalid for component %s", name.c_str());
            return nullptr;
        }
        if (requirements != nullptr && requirements->IsExtReqSatisfied() == 0) {
            scope.Log(0, "External requirements not satisfied for component %s", name.c_str());
            return nullptr;
        }
    }
    CStdStr sourceLocation = MainValue(main, "SourceLocation");
    if (!sourceLocation.empty() && !PathObject(sourceLocation).Exists()) {
        scope.Log(0, "Component %s source location does not exist: %s", name.c_str(),
                  sourceLocation.c_str());
        return nullptr;
    }
    CStdStr version = MainValue(main, "Version");
    bool patch = MainValue(main, "PatchFile").EqualsNoCase("TRUE");
    if (patch) {
        mPatchVersion = version;
        mAllUninstallCifs.clear();
        findOlderUninstallCifs(version);
    }
    bool oemCommon = IsTrue(MainValue(main, "OEMCommon")) || patch;

    bool logIt = !mNoLog;
    CStdStr logValue;
    bool logPresent = main->GetValue("Log", logValue);
    if (logPresent && logValue.EqualsNoCase("FALSE")) {
        logIt = false;
    } else if (!logPresent && patch) {
        logIt = false;
    }
    if (!logIt) {
        // A component that was logged once stays logged.
        logIt = UninstallLog::Installed().IsComponentInstalled(sectionName);
    }
    bool placeHolder = MainValue(main, "PlaceHolder").EqualsNoCase("TRUE");

    CStdStringList requiredNames = readRequires(MainValue(main, "Requires"));
    CStdStr platformValue;
    bool hasPlatform = main->GetValue("Platform", platformValue);
    CStdStringList platform = Tokenizer::Split(platformValue, ',', Tokenizer::Trim);
    OSInfo os;
    if (hasPlatform && os.GetMajorVersion() >= 6) {
        platform.Add("FUTURE_OS");
    }
    if (!platform.empty()) {
        CStdStringList tokens = os.Tokens();
        bool supported = false;
        for (const CStdStr& token : platform) {
            supported = supported || tokens.ContainsNoCase(token);
        }
        if (!supported) {
            scope.Log(0, "Component %s cannot run on this platform.", name.c_str());
            return nullptr;
        }
    }
    CStdStringList subComponents =
            Tokenizer::Split(MainValue(main, "SubComponents"), ',', Tokenizer::Trim);
    CStdStringList groupComponents =
            Tokenizer::Split(MainValue(main, "GroupComponents"), ',', Tokenizer::Trim);
    CStdStringList templates = Tokenizer::Split(MainValue(main, "Templates"), ',', Tokenizer::Trim);
    // The base folder of a component is where it installs to: its INSTALL_DIR.
    CStdStr baseDir;
    if (CifDefine* defines = cif.GetDefines()) {
        defines->GetMutableDefine(sectionName, "INSTALL_DIR", baseDir);
    }

    auto* component = new GenericComponent(instanceName, version, sourceLocation, baseDir,
                                           oemCommon, requiredNames, platform, subComponents,
                                           groupComponents, templates);
    if (!instanceName.EqualsNoCase(sectionName)) {
        component->SetTemplateMold(name);
    }
    component->SetLogIt(logIt);
    component->SetPlaceHolder(placeHolder);
    component->SetUseParentName(IsTrue(MainValue(main, "UseParentName")));
    component->SetComponentDisguise(IsTrue(MainValue(main, "ComponentDisguise")));
    CStdStr installed = UninstallLog::Installed().GetSpecial(sectionName, "Version");
    component->SetVersionAllowsInstall(
            VersionAllowsInstall(version, installed, component->GetVersionAllowsInstall()));
    return component;
}

bool CustomFactory::getActionList(ActionSet& list, const CStdStr& componentName,
                                  const CStdStr& section, CifFile& cif, bool isSuffix) {
    LogScope scope(kComponent, "CustomFactory::getActionList", kMask);
    scope.Log(kMask, "cif: %s", cif.GetFileName().c_str());
    scope.Log(kMask, "CompName: %s, Section:%s", componentName.c_str(), section.c_str());
    CStdStringList lines;
    if (!cif.GetActions(componentName, section, lines, !isSuffix)) {
        scope.SetResult(false);
        return false;
    }
    CStdStr cifName = PathObject(cif.GetFileName()).GetName();
    for (const CStdStr& line : lines) {
        CStdStringList tokens = Tokenizer::Split(line, ',', Tokenizer::Quotes | Tokenizer::Trim);
        if (tokens.empty()) {
            continue;
        }
        CStdStr keyword = tokens.front();
        CStdStringList parameters(tokens.begin() + 1, tokens.end());
        if (keyword.EqualsNoCase("GoToSection")) {
            getActionList(list, componentName, parameters.empty() ? CStdStr() : parameters[0], cif,
                          false);
            continue;
        }
        Action* action = getAction(keyword, parameters);
        if (action == nullptr) {
            scope.Log(0, "Invalid action name %s, Component=%s, Section=%s, CIF=%s",
                      keyword.c_str(), componentName.c_str(), section.c_str(),
                      cif.GetFileName().c_str());
            scope.SetResult(false);
            return false;
        }
        action->SetActionDesc("<ActionDesc><Script>" + cifName + "</Script><Comp>" + componentName +
                              "</Comp><Sec>" + section + "</Sec><Action>" + line +
                              "</Action></ActionDesc>");
        list.Add(action);
    }
    scope.SetResult(true);
    return true;
}

Action* CustomFactory::makeLinePatchAction(CStdStringList parameters) const {
    // The system's uninstall files are those the last patch component counts newer than.
    if (!parameters.empty() && parameters[0] == "SYSTEM_ALL_UNST_CIF") {
        if (mAllUninstallCifs.empty()) {
            return nullptr;
        }
        parameters[0] = mAllUninstallCifs;
    }
    return new LinePatchAction(parameters);
}

Action* CustomFactory::getAction(const CStdStr& keyword, const CStdStringList& parameters) {
    LogScope scope(kComponent, "CustomFactory::getAction", kMask);
    Action* action = nullptr;
    if (keyword.EqualsNoCase("File")) {
        CStdStringList list = parameters;
        if (mNoLog) {
            if (list.size() < 5) {
                list.resize(5);
            }
            list[4] = "NotLogIt";
        }
        action = new FileAction(list);
    } else if (keyword.EqualsNoCase("EnvVariable")) {
        action = new EnvVariableAction(parameters);
    } else if (keyword.EqualsNoCase("IniFile")) {
        action = new IniFileAction(parameters);
    } else if (keyword.EqualsNoCase("RegistryEntry")) {
        action = new RegistryAction(parameters);
    } else if (keyword.EqualsNoCase("TextFile")) {
        action = new TextFileAction(parameters);
    } else if (keyword.EqualsNoCase("Configuration")) {
        action = new ConfigurationAction(parameters);
    } else if (keyword.EqualsNoCase("LinePatch")) {
        action = makeLinePatchAction(parameters);
    }
    scope.SetResult(action != nullptr ? keyword : CStdStr("NULL"));
    return action;
}
