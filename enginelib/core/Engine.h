// The object that carries one run: DoInstall, DoUninstall and the query exports make one on the
// stack, use it and destroy it.
#pragma once

#include "core/CStdStringList.h"
#include "os/OsTypes.h"

#include <memory>
#include <vector>

class GenericComponent;
class IniFile;
class IniSection;
class InstallComponent;
class InstallFactory;
class InstallMap;
class IpcTransfer;

class Engine {
public:
    static constexpr const char* kVersion = "14.0.12.0";
    static constexpr const char* kVersionBanner = "14.0.12.0 (Rev 3599)";

    // Copies its arguments and reads nothing.
    Engine(os::Module instance, const CStdStr& script, const CStdStr& variables,
           const CStdStr& outFile);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Brings the engine from nothing to a loaded script, an open log and a set language.
    bool Initialize(bool uninstall);
    bool IsScriptValid(const CStdStr& script, bool uninstall);
    static bool InitializeNLS(const CStdStr& language);

    bool Install();
    bool Uninstall();

    // Whether a component can be installed here; the reason stands in the status text.
    bool IsComponentInstallable(const CStdStr& component);
    // The models of a package, and the drivers, level and data of one model.
    bool GetAllModels(const CStdStr& script, CStdStringList& models);
    bool GetModelStats(const CStdStr& model, const class OSInfo& os, int& nwLevel,
                       CStdStringList& drivers, CStdStr& info);

    void SetIpcTransfer(IpcTransfer* transfer) { mIpcTransfer = transfer; }
    const CStdStr& GetComponentStatusText() const { return mComponentStatusText; }
    IniFile* GetScript() const { return mScript.get(); }

    // Compares dotted versions part by part as numbers; a version that runs out first is lower.
    static int CompareVersions(const CStdStr& left, const CStdStr& right);

    // The components of the run, roots first, in the order of the script.
    const std::vector<std::unique_ptr<InstallComponent>>& GetComponents() const {
        return mComponents;
    }
    InstallMap* GetInstallMap() const { return mInstallMap.get(); }
    bool IsPackaging() const { return !mPackageDir.empty(); }

    void makeInstallMap(bool uninstall);
    // Makes the objects of a run from the Install or Uninstall section, in its order.
    void getInstallObjects(IniSection* section, bool uninstall, bool remote);
    // One component with its required, sub, template and group components; null when it
    // cannot be made.
    InstallComponent* makeCustomComponent(CStdStr name, InstallFactory* factory, unsigned selection,
                                          bool uninstall, InstallComponent* parent,
                                          CStdStr parentName);
    // Whether a component may be removed: no component that stays needs it.
    bool dependenciesOK(int componentIndex);
    // One walk through all phases of an install.
    void doAllInstall(bool firstPass);
    // Records of old components taken over by the components that replaced them.
    void doLegacyComponentSetting();

private:
    // Forgets what the previous run of the process learnt.
    static void startRun();
    bool checkTempFolder();
    bool driverFolderExists();
    bool isRemovedInThisRun(const CStdStr& name);
    void removeTemporaryDriverFiles();
    CStdStr nlsTitle(const char* key) const;
    template <typename Phase>
    void forEachGeneric(Phase phase);
    void chooseLogFile();
    void dumpScript(class LogScope& scope);
    void applyVariables();

    std::unique_ptr<InstallMap> mInstallMap;
    std::unique_ptr<IniFile> mScript;
    CStdStr mScriptPath;
    CStdStr mVariables;
    CStdStr mOutFile;
    IpcTransfer* mIpcTransfer = nullptr;
    os::Module mInstance;
    std::vector<std::unique_ptr<InstallComponent>> mComponents;
    // The names along the chain of makeCustomComponent calls under way.
    CStdStringList mBeingMade;
    std::vector<std::unique_ptr<InstallComponent>> mDrivers;
    std::vector<std::unique_ptr<InstallComponent>> mDevices;
    std::vector<std::unique_ptr<InstallComponent>> mAltDrivers;
    CStdStr mPackageDir;
    CStdStr mOemName;
    CStdStr mOemUninstaller;
    CStdStr mComponentStatusText;
};
