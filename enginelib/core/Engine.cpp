#include "core/Engine.h"

#include "core/DriverSearch.h"
#include "core/DriversIni.h"

#include "actions/ActionSet.h"
#include "components/CustomFactory.h"
#include "components/GenericComponent.h"
#include "core/DriverSearch.h"
#include "core/DriversIni.h"
#include "core/InstallMap.h"
#include "core/InstallScript.h"
#include "core/IpcTransfer.h"
#include "core/OldScriptConverter.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Locale.h"
#include "os/Messages.h"
#include "os/Process.h"
#include "script/CifDefine.h"
#include "script/CifExtReq.h"
#include "script/CifFile.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

#include <cstdlib>
#include <map>

namespace {

const char* const kComponent = "Engine";
constexpr std::uint32_t kMask = logmask::EngineApi;

CStdStr ConfigFolder() {
    SystemPath application(SystemPath::ApplicationFolder);
    application.AppendDirectory("Config");
    return application.GetDirectory();
}

} // namespace

Engine::Engine(os::Module instance, const CStdStr& script, const CStdStr& variables,
               const CStdStr& outFile)
        : mScriptPath(script), mVariables(variables), mOutFile(outFile), mInstance(instance) {}

template <typename Phase>
void Engine::forEachGeneric(Phase phase) {
    for (auto& component : mComponents) {
        if (auto* generic = dynamic_cast<GenericComponent*>(component.get())) {
            phase(*generic);
        }
    }
}

Engine::~Engine() {
    mAltDrivers.clear();
    mDrivers.clear();
    mDevices.clear();
    mComponents.clear();
    if (RunState::GetScript() == mScript.get()) {
        RunState::SetScript(nullptr);
    }
    mScript.reset();
    DebugLogger::Instance().DisableLog();
}

int Engine::CompareVersions(const CStdStr& left, const CStdStr& right) {
    CStdStringList leftParts = Tokenizer::Split(left, '.');
    CStdStringList rightParts = Tokenizer::Split(right, '.');
    size_t common = std::min(leftParts.size(), rightParts.size());
    for (size_t i = 0; i < common; ++i) {
        int a = std::atoi(leftParts[i].c_str());
        int b = std::atoi(rightParts[i].c_str());
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
    if (leftParts.size() == rightParts.size()) {
        return 0;
    }
    return leftParts.size() < rightParts.size() ? -1 : 1;
}

bool Engine::IsScriptValid(const CStdStr& script, bool uninstall) {
    LogScope scope(kComponent, "Engine::IsScriptValid", kMask);
    scope.Log(kMask, "Script: %s - uninstall:%d", script.c_str(), uninstall ? 1 : 0);
    bool valid = false;
    if (PathObject(script).Exists()) {
        IniFile file(script, false);
        IniSection* section = file.FindSection(uninstall ? "Uninstall" : "Install");
        valid = section != nullptr && section->ValueCount() > 0;
    }
    scope.SetResult(valid ? "yes" : "no");
    return valid;
}

bool Engine::InitializeNLS(const CStdStr& language) {
    LogScope scope(kComponent, "Engine::InitializeNLS", kMask);
    os::SetUserLocale();
    CStdStr::RefreshCaseTables();
    PathObject folder;
    folder.SetDirectory(ConfigFolder());
    folder.AppendDirectory("nls");
    bool loaded = NlsFile::InitializeFromFiles(folder.GetDirectory(), language);
    scope.SetResult(loaded);
    return loaded;
}

bool Engine::checkTempFolder() {
    SystemPath temp(SystemPath::TempFolder);
    const CStdStr& folder = temp.GetDirectory();
    return !folder.empty() && (FileOp::IsDirectory(folder) || FileOp::MakePath(folder, false));
}

void Engine::chooseLogFile() {
    PathObject log;
    if (mOutFile.empty()) {
        log.SetDirectory(SystemPath(SystemPath::TempFolder).GetDirectory());
        log.SetName(ProductIni::LogName());
    } else {
        log = PathObject(mOutFile);
        if (log.GetDirectory().empty()) {
            log.SetDirectory(SystemPath(SystemPath::CurrentFolder).GetDirectory());
        }
    }
    DebugLog::Instance().SetFile(log.GetFullPath());
}

void Engine::dumpScript(LogScope& scope) {
    const CStdStr rule(64, '=');
    scope.Log(logmask::Info, "%s", rule.c_str());
    scope.Log(logmask::Info, "|  ISF : %s", PathObject(mScriptPath).GetName().c_str());
    scope.Log(logmask::Info, "%s", rule.c_str());
    for (int index = 0; index < mScript->SectionCount(); ++index) {
        IniSection* section = mScript->GetSection(index);
        scope.Log(logmask::Info, "[%s]", section->GetName().c_str());
        for (const auto& [name, value] : section->Lines()) {
            scope.Log(logmask::Info, "%s=%s", name.c_str(), value.c_str());
        }
    }
    scope.Log(logmask::Info, "%s", rule.c_str());
}

void Engine::applyVariables() {
    std::map<CStdStr, CStdStr> table;
    for (const CStdStr& line : Tokenizer::Split(mVariables, '\n')) {
        CStdStringList parts = Tokenizer::Split(line, '=');
        if (parts.size() == 2) {
            table["$" + parts[0] + "$"] = parts[1];
        }
    }
    mScript->ReplaceInAll(table, false);
}

// A run learns its component, brand, package folder, spooler state and deferred files as it
// goes; none of that may leak into the next run of the same process. What survives on purpose
// (the uninstall log, product.ini's image, the language table, the log settings, the reboot
// flag) is kept.
void Engine::startRun() {
    RunState::Reset();
    FileOp::ResetRunState();
    UninstallLog::Global().SetCurrentTitle(CStdStr());
}

bool Engine::Initialize(bool uninstall) {
    startRun();
    DebugLogger& logger = DebugLogger::Instance();
    PathObject preliminary;
    preliminary.SetDirectory(SystemPath(SystemPath::TempFolder).GetDirectory());
    preliminary.SetName("install.log");
    DebugLog::Instance().SetFile(preliminary.GetFullPath());
    logger.EnableLog();

    if (!checkTempFolder()) {
        ENGINE_LOG(0, "User system does not have a %%TEMP%% folder defined.");
        return false;
    }

    PathObject product;
    product.SetDirectory(ConfigFolder());
    product.SetName("product.ini");
    if (!ProductIni::LoadProductIni(product.GetFullPath())) {
        ENGINE_LOG(0, "invalid product.ini.\t(path: %s)", product.GetFullPath().c_str());
        return false;
    }

    chooseLogFile();

    std::uint32_t bits = 0;
    bool levelSet = ProductIni::LogLevel(bits);
    if (levelSet) {
        logger.SetLogBits(logger.GetLogBits() | bits);
        if (logger.GetEnableCount() > 0) {
            logger.SetCurrentMask(logger.GetCurrentMask() | bits);
        }
    }

    LogScope scope(kComponent, "Engine::Initialize", kMask);
    if (mScriptPath.empty() || !IsScriptValid(mScriptPath, uninstall)) {
        scope.Log(0, "Engine::Initialize: Script file is invalid, File = %s", mScriptPath.c_str());
        return false;
    }
    mScript = std::make_unique<IniFile>(mScriptPath, false);
    RunState::SetScript(mScript.get());
    RunState::SetScriptPath(mScriptPath);

    CStdStr scriptVersion = InstallScript(*mScript, uninstall).ScriptVersion();
    if (scriptVersion.empty() || CompareVersions(scriptVersion, kVersion) < 0) {
        OldScriptConverter::Convert(*mScript);
    }

    CStdStr language = InstallScript(*mScript, uninstall).Language();
    if (!language.empty()) {
        InitializeNLS(language);
    }
    if (!NlsFile::IsLoaded()) {
        InitializeNLS(NlsFile::GetDefaultLocaleName());
    }

    std::string installPath;
    os::GetModuleFileName(mInstance, installPath);
    DebugLog::Instance().WriteBanner(
            installPath, kVersionBanner, "", "", "", "Installation Engine",
            uninstall ? "Do the actual uninstall of all software and printers."
                      : "Do the actual install of all software and printers.");
    dumpScript(scope);
    if (levelSet) {
        scope.Log(logmask::Info, "LogLevel 0x%X of product.ini added to the log mask", bits);
    }

    CStdStr platforms = ProductIni::Platforms().Join(",");
    if (!ProductIni::IsPlatformSupported()) {
        scope.Log(0, "OS not supported. Halting Engine.");
        return false;
    }
    scope.Log(logmask::Info, "This system (%s) is one of the product's platforms (%s)",
              OSInfo().Tokens().Join(",").c_str(), platforms.c_str());
    if (uninstall) {
        FileOp::SetZombieMode(true);
    }
    makeInstallMap(uninstall);
    if (!mInstallMap) {
        scope.Log(0, "Invalid install map.");
        return false;
    }
    if (!mVariables.empty()) {
        applyVariables();
    }
    UninstallLog& log = UninstallLog::Global();
    if (CStdStr product = ProductIni::ProductKey(); !product.empty()) {
        log.SetProduct(product);
    }
    if (CStdStr display = ProductIni::OemDisplay(); !display.empty()) {
        log.SetOemProduct(display);
    }
    log.SetManufacturer(CustomFactory::kMakerFolder);
    bool convert = ProductIni::ConvertOldLog();
    log.ReadAllRelevant(convert, convert);
    return true;
}

bool Engine::Uninstall() {
    LogScope scope(kComponent, "Engine::Uninstall", kMask);
    InstallScript script(*mScript, true);
    mOemName = script.OemName();
    mOemUninstaller = script.WantsOemUninstaller() ? "2" : "";
    if (script.RunSection() == nullptr) {
        scope.Log(0, "Script file is missing %s section", "Uninstall");
        return false;
    }
    DebugLog::Instance().WriteFinishBanner("Installation Engine");
    return true;
}

bool Engine::GetAllModels(const CStdStr& script, CStdStringList& models) {
    LogScope scope(kComponent, "Engine::GetAllModels", kMask);
    scope.Log(kMask, "script:%s", script.c_str());
    models.clear();
    DriversIni::Reset();
    DriversIni::Initialize(CStdStr(), false);
    OSInfo os;
    // The INF files beside the script, and what the product's DriverUnst.ini adds to them.
    CStdStr folder = PathObject(script).GetDirectory();
    DriverSearch::ParseFolders({folder}, folder, os);
    PathObject unst;
    unst.SetDirectory(ConfigFolder());
    unst.SetName("DriverUnst.ini");
    if (unst.Exists()) {
        DriversIni::Table().Read(unst.GetFullPath(), true);
    }
    DriversIni::GetModels(models, os);
    scope.SetResult(true);
    return true;
}

bool Engine::GetModelStats(const CStdStr& model, const OSInfo& os, int& nwLevel,
                           CStdStringList& drivers, CStdStr& info) {
    LogScope scope(kComponent, "Engine::GetModelStats", kMask);
    scope.Log(kMask, "model:%s", model.c_str());
    drivers.clear();
    info.clear();
    CStdStr inf;
    if (!DriversIni::GetStreams(model, drivers, os) ||
        !DriversIni::GetInfName(model, CStdStr(), inf, os)) {
        scope.SetResult(false);
        return false;
    }
    info = PathObject(inf).GetDirectory();
    nwLevel = std::atoi(DriversIni::GetModelValue(model, "NWLevel", os).c_str());
    scope.SetResult(true);
    return true;
}

// ---- component selection ----

void Engine::makeInstallMap(bool uninstall) {
    if (mInstallMap) {
        return;
    }
    LogScope scope(kComponent, "Engine::makeInstallMap", kMask);
    PathObject config;
    config.SetDirectory(ConfigFolder());
    if (uninstall) {
        scope.Log(kMask, "Case Uninstall...");
        PathObject cif = config;
        cif.SetName("Uninstall.cif");
        if (!cif.Exists()) {
            if (CStdStr name = ProductIni::UninstallCif(); !name.empty()) {
                cif.SetName(name);
            }
        }
        if (!cif.Exists()) {
            scope.Log(0, "Uninstall CIF does not exist: File = %s", cif.GetFullPath().c_str());
            return;
        }
        mInstallMap = std::make_unique<InstallMap>();
        auto* defaultCif = new CifFile(true);
        defaultCif->SetFileName(cif.GetFullPath());
        mInstallMap->SetDefaultCif(defaultCif);
        return;
    }
    scope.Log(kMask, "Case install...");
    PathObject mapFile = config;
    mapFile.SetName("install.map");
    if (!mapFile.Exists()) {
        scope.Log(0, "Map file does not exist: File = %s", mapFile.GetFullPath().c_str());
        return;
    }
    mInstallMap = std::make_unique<InstallMap>();
    if (!mInstallMap->Read(mapFile, config)) {
        scope.Log(0, "mInstallMap->Read failed");
        mInstallMap.reset();
    }
}

void Engine::getInstallObjects(IniSection* section, bool uninstall, bool remote) {
    LogScope scope(kComponent, "Engine::getInstallObjects", kMask);
    if (section == nullptr) {
        scope.Log(kMask, "section is NULL");
        return;
    }
    CustomFactory factory(mScript.get());
    factory.SetSkipRequirements(remote || IsPackaging());
    factory.SetNoLog(IsPackaging());
    InstallScript script(*mScript, uninstall);
    std::vector<std::pair<CStdStr, CStdStr>> entries(section->Lines().begin(),
                                                     section->Lines().end());
    for (const auto& [key, value] : entries) {
        int number = std::atoi(value.c_str());
        if (script.IsScriptKey(key)) {
            // Drivers, devices, scanners and printers come from INF files and the spooler; this
            // engine does not make those objects yet.
            bool hardware = key.EqualsNoCase("Drivers") || key.EqualsNoCase("Devices") ||
                            key.EqualsNoCase("Scanners") || key.EqualsNoCase("Printers");
            if (hardware && number > 0) {
                scope.Log(0, "%s are not installed by this engine", key.c_str());
            }
            continue;
        }
        if (uninstall && !key.EqualsNoCase("Scanner") &&
            !UninstallLog::Global().IsComponentInstalled(key)) {
            scope.Log(0, "component %s is not installed", key.c_str());
            continue;
        }
        if (number > 0 && mInstallMap && mInstallMap->Find(key) != nullptr) {
            makeCustomComponent(key, &factory, static_cast<unsigned>(number), uninstall, nullptr,
                                "");
        }
    }
    if (!IsPackaging()) {
        makeCustomComponent("Uninstaller", &factory, 1, uninstall, nullptr, "");
    }
}

InstallComponent* Engine::makeCustomComponent(CStdStr name, InstallFactory* factory,
                                              unsigned selection, bool uninstall,
                                              InstallComponent* parent, CStdStr parentName) {
    LogScope scope(kComponent, "Engine::makeCustomComponent", kMask);
    scope.Log(kMask, "name:%s, selection:%u", name.c_str(), selection);
    if (uninstall) {
        CStdStr mold = UninstallLog::Global().GetSpecial(name, "TemplateMold");
        if (!mold.empty()) {
            name = mold;
        }
    }
    CStdStr shortName = name;
    int dot = name.ReverseFind('.');
    if (dot >= 0) {
        if (parent == nullptr) {
            parent = makeCustomComponent(name.Left(dot), factory, 1, uninstall, nullptr, "");
        }
        shortName = name.Mid(dot + 1);
    }
    if (parent == nullptr) {
        for (auto& component : mComponents) {
            CStdStr existing;
            component->GetName(existing);
            if (existing.EqualsNoCase(shortName)) {
                return component.get();
            }
        }
    } else if (InstallComponent* existing = parent->Find(shortName, false)) {
        return existing;
    }
    CStdStr baseName = shortName;
    int hash = shortName.ReverseFind('#');
    if (hash > 0) {
        baseName = shortName.Left(hash);
    }
    CifFile* cif = mInstallMap ? mInstallMap->Find(baseName) : nullptr;
    if (cif == nullptr || cif->GetFileName().empty() || !PathObject(cif->GetFileName()).Exists()) {
        scope.Log(0, "cif does not exist for component %s", name.c_str());
        return nullptr;
    }
    // Scripts can name cycles (a sub component of itself, two components that require each
    // other); each name is made once along one chain.
    if (mBeingMade.ContainsNoCase(name)) {
        scope.Log(0, "Component %s is already being made: the cycle of components ends here",
                  name.c_str());
        return nullptr;
    }
    mBeingMade.Add(name);
    struct Made {
        CStdStringList& names;
        ~Made() { names.pop_back(); }
    } beingMade{mBeingMade};
    InstallComponent* made = factory->Make(name, *cif);
    auto* component = dynamic_cast<GenericComponent*>(made);
    if (component == nullptr) {
        delete made;
        return nullptr;
    }
    if (!uninstall) {
        SortedList<CStdStr> requiredNames;
        component->CollectRequires(requiredNames);
        for (const CStdStr& required : requiredNames) {
            if (mBeingMade.ContainsNoCase(required)) {
                // It requires this one in turn: this one comes first, the other follows.
                scope.Log(0, "Component %s requires %s, which is being made already", name.c_str(),
                          required.c_str());
                continue;
            }
            if (makeCustomComponent(required, factory, 1, false, nullptr, name) == nullptr) {
                scope.Log(0, "Unable to create required component %s for component %s",
                          required.c_str(), name.c_str());
                scope.Log(0, "Failed to create component %s", name.c_str());
                delete component;
                return nullptr;
            }
        }
    }
    component->SetOemNames(mOemName);
    if (!parentName.empty()) {
        component->SetParentName(parentName);
    }
    IniSection* scriptSection = mScript ? mScript->FindSection(shortName) : nullptr;
    const CStdStringList& subComponents = component->GetSubComponents();
    if (uninstall && selection == 1 && !subComponents.empty()) {
        component->SetEmptyShell(true);
    }
    for (const CStdStr& sub : subComponents) {
        if (uninstall && !UninstallLog::Global().IsComponentInstalled(sub)) {
            continue;
        }
        unsigned childSelection = 2;
        if (selection != 2) {
            if (scriptSection == nullptr) {
                continue;
            }
            CStdStr value;
            scriptSection->GetValue(sub, value);
            int number = std::atoi(value.c_str());
            if (number < 1) {
                continue;
            }
            childSelection = static_cast<unsigned>(number);
        }
        makeCustomComponent(shortName + "." + sub, factory, childSelection, uninstall, component,
                            "");
    }
    for (const CStdStr& mold : component->GetTemplates()) {
        if (scriptSection == nullptr) {
            break;
        }
        for (const auto& [key, value] : scriptSection->Lines()) {
            if (key.EqualsNoCase(mold)) {
                makeCustomComponent(shortName + "." + mold + "#" + value, factory, 0, uninstall,
                                    component, "");
            }
        }
    }
    if (parent != nullptr) {
        parent->Add(component);
    } else {
        mComponents.emplace_back(component);
    }
    for (const CStdStr& group : component->GetGroupComponents()) {
        if (scriptSection == nullptr) {
            break;
        }
        CStdStr value;
        scriptSection->GetValue(group, value);
        int number = std::atoi(value.c_str());
        if (number > 0) {
            makeCustomComponent(group, factory, static_cast<unsigned>(number), uninstall, nullptr,
                                "");
        }
    }
    return component;
}

bool Engine::IsComponentInstallable(const CStdStr& component) {
    LogScope scope(kComponent, "Engine::IsComponentInstallable", kMask);
    mComponentStatusText.clear();
    if (component.EqualsNoCase("Drivers")) {
        bool found = driverFolderExists();
        scope.SetResult(found);
        return found;
    }
    makeInstallMap(false);
    if (!mInstallMap) {
        scope.Log(0, "Invalid install map.");
        scope.SetResult(false);
        return false;
    }
    if (!NlsFile::IsLoaded()) {
        InitializeNLS(NlsFile::GetDefaultLocaleName());
    }
    CifFile* cif = mInstallMap->Find(component);
    if (cif == nullptr || cif->GetFileName().empty() || !PathObject(cif->GetFileName()).Exists()) {
        scope.Log(0, "CIF does not exist for component %s", component.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr sectionName = component;
    int dot = component.ReverseFind('.');
    if (dot >= 0) {
        sectionName = component.Mid(dot + 1);
    }
    if (!cif->AreDefinesLoaded() &&
        (!cif->Read(cif->GetFileName(), false) || !cif->InitDefines(mScript.get(), sectionName))) {
        scope.Log(0, "could not initialize cif: %s", cif->GetFileName().c_str());
        scope.SetResult(false);
        return false;
    }
    IniSection* main = cif->FindSection(sectionName);
    if (main == nullptr) {
        scope.Log(0, "Could not find main section for component %s, CIF=%s", component.c_str(),
                  cif->GetFileName().c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr source;
    if (main->GetValue("SourceLocation", source) && !source.empty() &&
        !FileOp::IsDirectory(source)) {
        scope.SetResult(false);
        return false;
    }
    CStdStr platform;
    if (main->GetValue("Platform", platform)) {
        CStdStringList tokens = OSInfo().Tokens();
        bool supported = false;
        for (const CStdStr& token : Tokenizer::Split(platform, ',', Tokenizer::Trim)) {
            supported = supported || tokens.ContainsNoCase(token);
        }
        if (!supported) {
            mComponentStatusText = NlsFile::GetText("MSG_INVALID_OS");
            scope.SetResult(false);
            return false;
        }
    }
    if (CifExtReq* requirements = cif->GetExtReq(sectionName, "_ExtReq")) {
        if (!requirements->IsValid()) {
            scope.Log(0, "External requirements invalid for component %s", component.c_str());
            scope.SetResult(false);
            return false;
        }
        if (requirements->IsExtReqSatisfied() == 0) {
            mComponentStatusText = requirements->GetErrorText();
            scope.Log(0, "External requirements not satisfied for component %s", component.c_str());
            scope.SetResult(false);
            return false;
        }
    }
    scope.SetResult(true);
    return true;
}

bool Engine::dependenciesOK(int componentIndex) {
    LogScope scope(kComponent, "Engine::dependenciesOK", kMask);
    auto* component =
            dynamic_cast<GenericComponent*>(mComponents[static_cast<size_t>(componentIndex)].get());
    if (component == nullptr) {
        return true;
    }
    UninstallLog& log = UninstallLog::Global();
    CStdStringList users;
    log.GetRequiredBy(component->Name(), users);
    bool result = true;
    for (const CStdStr& user : users) {
        if (!result) {
            break;
        }
        component->SetParentName(user);
        if (!log.IsComponentInstalled(user)) {
            continue;
        }
        if (!isRemovedInThisRun(user)) {
            scope.Log(logmask::General, "Not uninstalling component %s (Required by: %s)",
                      component->Name().c_str(), user.c_str());
            result = false;
        } else if (!log.IsInstalledByOther(component->Name())) {
            log.RemoveFromList(component->Name(), "RequiredBy", user);
        }
    }
    scope.SetResult(result);
    return result;
}

bool Engine::isRemovedInThisRun(const CStdStr& name) {
    for (auto& component : mComponents) {
        CStdStr existing;
        component->GetName(existing);
        if (existing.EqualsNoCase(name) || component->Find(name, true) != nullptr) {
            return true;
        }
    }
    return false;
}

// ---- the install run ----

bool Engine::Install() {
    LogScope scope(kComponent, "Engine::Install", kMask);
    InstallScript script(*mScript, false);
    if (script.IsPackage()) {
        mPackageDir = "$TEMP_DIR$\\CustomPackage";
    }
    RunState::SetPackageDir(mPackageDir);
    mOemName = script.OemName();
    IniSection* install = script.RunSection();
    if (install == nullptr) {
        scope.Log(0, "Script file is missing %s section", "Install");
        return false;
    }
    // Other computers to install on come from the section Computer, which this engine does not
    // serve yet: the install is local.
    bool remote = false;
    getInstallObjects(install, false, remote);

    std::uint32_t total = 0;
    for (auto* list : {&mComponents, &mDevices, &mDrivers, &mAltDrivers}) {
        for (auto& object : *list) {
            object->SetIpcTransfer(mIpcTransfer);
            total += object->GetInstallUnits();
        }
    }
    if (mIpcTransfer != nullptr) {
        mIpcTransfer->SetTotalUnits(total);
        mIpcTransfer->SetCurrentTitle(nlsTitle("READY_TO_INSTALL"));
    }

    scope.Log(logmask::Info, "[---------------Cleanup----------------]");
    bool zombies = FileOp::IsZombieModeEnabled();
    FileOp::SetZombieMode(true);
    forEachGeneric([](GenericComponent& component) { component.RunCleanup(); });
    FileOp::ClearZombieList();
    FileOp::SetZombieMode(zombies);

    ActionSet pre;
    ActionSet post;
    CStdStr lastName;
    forEachGeneric([&](GenericComponent& component) {
        component.MergeSharedActions(pre, post);
        component.SetDisguiseName(lastName);
        CStdStr parentName;
        component.GetParentName(parentName);
        if (parentName.empty() && !component.GetComponentDisguise()) {
            lastName = component.Name();
        }
    });

    doAllInstall(true);
    if (RunState::IsSpoolerStopped()) {
        // The spooler was stopped during the walk: a second walk, with it running again, thaws
        // what froze and finishes what is left.
        doAllInstall(false);
    }
    removeTemporaryDriverFiles();
    if (!mAltDrivers.empty()) {
        scope.Log(logmask::Info, "[---------------Alternate Driver Install ---------------]");
        for (auto& driver : mAltDrivers) {
            driver->Install();
        }
    }
    removeTemporaryDriverFiles();
    doLegacyComponentSetting();

    CStdStr remoteTemp = InstallScript(*mScript, false).RemoteTempDir();
    if (!remoteTemp.empty()) {
        CStdStr folder = PathObject(remoteTemp).GetDirectory();
        if (folder.Find("instdir.tmp") < 0) {
            scope.Log(logmask::General,
                      "Engine::Install(): Warning: we were told to remove this directory: %s\tBut "
                      "that does "
                      "not seem correct, so we are leaving it.",
                      folder.c_str());
        } else {
            FileOp::WipeOutDirectory(folder);
        }
    }
    os::SendMessageTimeout(os::HwndBroadcast, os::wm::SettingChange, 0, 0, os::smto::Normal, 500);
    if (OSInfo().Is9x()) {
        scope.Log(logmask::General, " -- Writing out wininit.ini... --");
        FileOp::CommitWinInitFile();
        scope.Log(logmask::General, " -- done -- ");
    }
    if (mIpcTransfer != nullptr) {
        mIpcTransfer->SetCurrentTitle(nlsTitle("INSTALL_DONE"));
    }
    DebugLog::Instance().WriteFinishBanner("Installation Engine");
    return true;
}

void Engine::doAllInstall(bool firstPass) {
    LogScope scope(kComponent, "Engine::doAllInstall", kMask);
    // A second pass leaves the source position of the log as it stands, so that its phase lines
    // carry the one before them.
    auto phase = [&](const char* format, bool locate) {
        CStdStr now = DebugLogger::FormatCurrentTime("%X");
        if (locate) {
            DebugLogger::Instance().SetLocation(__LINE__, __FILE__, __PRETTY_FUNCTION__);
        }
        DebugLogger::Instance().Log(logmask::General, format, now.c_str());
    };
    phase("\n[--PreInstall : %s --]", firstPass);
    forEachGeneric([this](GenericComponent& component) {
        RunState::SetCurrentComponent(UninstallLog::kRoot);
        if (IsPackaging()) {
            component.SetPackaging(true);
        }
        component.RunPreInstall();
    });
    for (auto& component : mComponents) {
        component->Install();
    }
    phase("\n[--PostInstall : %s --]", firstPass);
    forEachGeneric([this](GenericComponent& component) {
        if (IsPackaging()) {
            component.SetPackaging(true);
        }
        component.RunPostInstall();
    });
    if (mIpcTransfer != nullptr) {
        mIpcTransfer->SetCurrentTitle(
                nlsTitle(IsPackaging() ? "PACKAGING_FINISHING" : "INSTALL_FINISHING"));
    }
    if (!mDevices.empty()) {
        phase("\n[--Device Install : %s --]", true);
        for (auto& device : mDevices) {
            if (!device->Install()) {
                scope.Log(0, "There was a problem with device installation. ");
            }
        }
    }
    if (!mDrivers.empty()) {
        phase("\n[--Driver Install : %s --]", true);
        for (auto& driver : mDrivers) {
            CStdStr name;
            driver->GetName(name);
            if (driver->Install()) {
                UninstallLog::Global().SetSpecial("DriverListNew", name, "1");
            }
        }
    }
    phase("\n[--Finish Install : %s --]", true);
    forEachGeneric([](GenericComponent& component) { component.RunFinishInstall(); });
}

// ---- helpers of the run ----

CStdStr Engine::nlsTitle(const char* key) const {
    // Without language texts the key stands in their place.
    CStdStr text = NlsFile::GetText(key);
    return text.empty() ? CStdStr(key) : text;
}

bool Engine::driverFolderExists() {
    PathObject product;
    product.SetDirectory(ConfigFolder());
    product.SetName("product.ini");
    CStdStr folders;
    if (!ProductIni::LoadProductIni(product.GetFullPath()) || !ProductIni::GetDriverDir(folders)) {
        return false;
    }
    CifFile defines(false);
    defines.InitDefines(mScript.get(), CStdStr());
    if (CifDefine* resolver = defines.GetDefines()) {
        resolver->resolveStrDefine(folders, CStdStr());
    }
    CStdStr application = SystemPath(SystemPath::ApplicationFolder).GetDirectory();
    for (const CStdStr& folder : Tokenizer::Split(folders, ',', Tokenizer::Trim)) {
        PathObject candidate;
        candidate.SetDirectory(application);
        candidate.AppendDirectory(folder);
        if (FileOp::IsDirectory(candidate.GetDirectory())) {
            return true;
        }
    }
    return false;
}

void Engine::removeTemporaryDriverFiles() {
    for (const CStdStr& file : RunState::TakeTemporaryFiles()) {
        FileOp::Remove(file, 0);
    }
}

void Engine::doLegacyComponentSetting() {
    if (IsPackaging()) {
        return;
    }
    LogScope scope(kComponent, "Engine::doLegacyComponentSetting", kMask);
    PathObject path;
    path.SetDirectory(ConfigFolder());
    path.SetName("legacy.ls");
    if (!path.Exists()) {
        return;
    }
    CifFile legacy(path.GetFullPath(), false);
    legacy.InitDefines(mScript.get(), CStdStr());
    IniSection* components = legacy.FindSection("Component");
    if (components == nullptr) {
        return;
    }
    UninstallLog& log = UninstallLog::Global();
    CStdStr oem = NlsFile::GetText("OEM");
    CStdStr name;
    CStdStr ignored;
    components->Reset();
    while (components->GetCurrentValue(name, ignored)) {
        components->Next();
        for (const char* suffix : {"_Files", "_Reg"}) {
            CStdStr source = name + suffix + "," + oem;
            IniSection* sourceSection = log.FindSection(source);
            if (sourceSection == nullptr) {
                scope.Log(logmask::General, "[%s] doesn't exist in ULF.  Skip...", source.c_str());
                continue;
            }
            IniSection* own = legacy.FindSection(name);
            if (own == nullptr) {
                continue;
            }
            CStdStr key;
            CStdStr legacyName;
            own->GetValue("Key", key);
            own->GetValue("Legacy", legacyName);
            CStdStr target = key.empty() ? legacyName + suffix : legacyName + suffix + "," + key;
            if (IniSection* existing = log.FindSection(target)) {
                scope.Log(kMask, "[%s] exists in ULF.  Merging it to existing [%s] in ULF...",
                          source.c_str(), target.c_str());
                existing->Merge(*sourceSection, true);
            } else {
                IniSection* added = log.GetOrCreateSection(target);
                added->Merge(*sourceSection, true);
                scope.Log(kMask, "[%s] exists in ULF.  Adding [%s] to ULF...", source.c_str(),
                          target.c_str());
            }
        }
    }
}
