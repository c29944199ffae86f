#include "core/Engine.h"

#include "core/IpcTransfer.h"
#include "core/OldScriptConverter.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Locale.h"
#include "os/Process.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"

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

Engine::~Engine() {
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
        CStdStr name;
        if (!ProductIni::GetProductValue("GENERAL", "LogName", name)) {
            name = "install.log";
        }
        log.SetDirectory(SystemPath(SystemPath::TempFolder).GetDirectory());
        log.SetName(name);
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

bool Engine::Initialize(bool uninstall) {
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

    CStdStr level;
    if (ProductIni::GetProductValue("GENERAL", "LogLevel", level)) {
        auto bits = static_cast<std::uint32_t>(std::strtoul(level.c_str(), nullptr, 0));
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

    CStdStr scriptVersion = mScript->GetValue("Version", "ScriptVersion");
    if (scriptVersion.empty() || CompareVersions(scriptVersion, kVersion) < 0) {
        OldScriptConverter::Convert(*mScript);
    }

    CStdStr language = mScript->GetValue("Install", "Language");
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

    if (!ProductIni::IsPlatformSupported()) {
        scope.Log(0, "OS not supported. Halting Engine.");
        return false;
    }
    if (uninstall) {
        FileOp::SetZombieMode(true);
    }
    if (!mVariables.empty()) {
        applyVariables();
    }
    return true;
}

bool Engine::Install() {
    LogScope scope(kComponent, "Engine::Install", kMask);
    if (mScript->FindSection("Package") != nullptr) {
        mPackageDir = "$TEMP_DIR$\\CustomPackage";
    }
    mOemName = mScript->GetValue("OEMProduct", "Name");
    if (mScript->FindSection("Install") == nullptr) {
        scope.Log(0, "Script file is missing %s section", "Install");
        return false;
    }
    DebugLog::Instance().WriteFinishBanner("Installation Engine");
    return true;
}

bool Engine::Uninstall() {
    LogScope scope(kComponent, "Engine::Uninstall", kMask);
    mOemName = mScript->GetValue("OEMProduct", "Name");
    mOemUninstaller = mScript->GetValue("OEMProduct", "Uninstaller");
    if (mScript->FindSection("Uninstall") == nullptr) {
        scope.Log(0, "Script file is missing %s section", "Uninstall");
        return false;
    }
    DebugLog::Instance().WriteFinishBanner("Installation Engine");
    return true;
}

bool Engine::IsComponentInstallable(const CStdStr& component) {
    LogScope scope(kComponent, "Engine::IsComponentInstallable", kMask);
    mComponentStatusText.clear();
    if (component.EqualsNoCase("Drivers")) {
        PathObject product;
        product.SetDirectory(ConfigFolder());
        product.SetName("product.ini");
        CStdStr folders;
        if (!ProductIni::LoadProductIni(product.GetFullPath()) ||
            !ProductIni::GetDriverDir(folders)) {
            scope.SetResult(false);
            return false;
        }
        CStdStr application = SystemPath(SystemPath::ApplicationFolder).GetDirectory();
        for (const CStdStr& folder : Tokenizer::Split(folders, ',', Tokenizer::Trim)) {
            PathObject candidate;
            candidate.SetDirectory(application);
            candidate.AppendDirectory(folder);
            if (FileOp::IsDirectory(candidate.GetDirectory())) {
                scope.SetResult(true);
                return true;
            }
        }
        scope.SetResult(false);
        return false;
    }
    // Components are described by install.map, which this engine does not read yet.
    scope.Log(0, "Invalid install map.");
    scope.SetResult(false);
    return false;
}

bool Engine::GetAllModels(const CStdStr& script, CStdStringList& models) {
    LogScope scope(kComponent, "Engine::GetAllModels", kMask);
    scope.Log(kMask, "script:%s", script.c_str());
    // Model data (drivers.ini and the INF search) are not read by this engine yet: no model
    // is known.
    models.clear();
    scope.SetResult(false);
    return false;
}

bool Engine::GetModelStats(const CStdStr& model, const OSInfo&, int& nwLevel,
                           CStdStringList& drivers, CStdStr& info) {
    LogScope scope(kComponent, "Engine::GetModelStats", kMask);
    scope.Log(kMask, "model:%s", model.c_str());
    nwLevel = 0;
    drivers.clear();
    info.clear();
    scope.SetResult(false);
    return false;
}
