#include "components/GenericComponent.h"

#include "core/IpcTransfer.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "script/NlsFile.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

namespace {

const char* const kComponent = "GenericComponent";
constexpr std::uint32_t kMask = logmask::General;

// The local time as the phase lines of the log show it.
CStdStr TimeOfDay() {
    return DebugLogger::FormatCurrentTime("%X");
}

// The OEM placeholder stays in texts until they are shown; then it is the OEM name in force.
CStdStr ShowCarets(CStdStr text) {
    text.Replace("^OEM_PRODUCT^", RunState::GetCurrentOem().c_str());
    return text;
}

} // namespace

GenericComponent::GenericComponent(const CStdStr& name, const CStdStr& version,
                                   const CStdStr& sourceLocation, const CStdStr& baseDir,
                                   bool oemCommon, CStdStringList& requiredNames,
                                   CStdStringList& platform, CStdStringList& subComponents,
                                   CStdStringList& groupComponents, CStdStringList& templates)
        : mName(name), mVersion(version), mSourceLocation(sourceLocation), mBaseDir(baseDir),
          mOemCommon(oemCommon) {
    mRequires.swap(requiredNames);
    mPlatform.swap(platform);
    mSubComponents.swap(subComponents);
    mGroupComponents.swap(groupComponents);
    mTemplates.swap(templates);
}

GenericComponent::~GenericComponent() {
    // Children go first, in their order, before the action lists of this component.
    for (auto& child : mChildren) {
        child.reset();
    }
}

template <typename Phase>
void GenericComponent::forEachGenericChild(Phase phase) {
    for (auto& child : mChildren) {
        if (auto* generic = dynamic_cast<GenericComponent*>(child.get())) {
            phase(*generic);
        }
    }
}

void GenericComponent::SetIpcTransfer(IpcTransfer* transfer) {
    InstallComponent::SetIpcTransfer(transfer);
    for (auto& child : mChildren) {
        child->SetIpcTransfer(transfer);
    }
}

void GenericComponent::SetPackaging(bool packaging) {
    InstallComponent::SetPackaging(packaging);
    for (auto& child : mChildren) {
        child->SetPackaging(packaging);
    }
}

std::uint32_t GenericComponent::GetInstallUnits() {
    std::uint32_t units = mInstallActions.GetUnits() + mOemInstallActions.GetUnits() +
                          mCleanupActions.GetUnits() + mPreInstallActions.GetUnits() +
                          mPostInstallActions.GetUnits() + mFinishActions.GetUnits();
    for (auto& child : mChildren) {
        units += child->GetInstallUnits();
    }
    return units;
}

std::uint32_t GenericComponent::GetUninstallUnits() {
    std::uint32_t units = 0;
    if (!mEmptyShell) {
        units = mUninstallActions.GetUnits() + mOemUninstallActions.GetUnits() +
                mPreInstallActions.GetUnits() + mPostInstallActions.GetUnits();
    }
    for (auto& child : mChildren) {
        units += child->GetUninstallUnits();
    }
    return units;
}

void GenericComponent::Add(InstallComponent* child) {
    if (child != nullptr) {
        mChildren.emplace_back(child);
    }
}

InstallComponent* GenericComponent::Find(const CStdStr& name, bool deep) {
    for (auto& child : mChildren) {
        CStdStr childName;
        child->GetName(childName);
        if (childName.EqualsNoCase(name)) {
            return child.get();
        }
        if (deep) {
            if (auto* generic = dynamic_cast<GenericComponent*>(child.get())) {
                if (InstallComponent* found = generic->Find(name, true)) {
                    return found;
                }
            }
        }
    }
    return nullptr;
}

void GenericComponent::Print() {
    ENGINE_LOG(logmask::General, "\n-Component: %s", mName.c_str());
}

void GenericComponent::CollectRequires(SortedList<CStdStr>& requiredNames) {
    for (const CStdStr& item : mRequires) {
        requiredNames.Add(item);
    }
    forEachGenericChild([&](GenericComponent& child) { child.CollectRequires(requiredNames); });
}

CStdStr GenericComponent::DisplayTitle() const {
    CStdStr key;
    if (mTemplateMold.empty() && mUseParentName && !mParentName.empty()) {
        key = "Components." + mParentName;
    } else if (mComponentDisguise) {
        key = mDisguiseName.empty() ? CStdStr() : CStdStr("Components." + mDisguiseName);
    } else {
        key = "Components." + mName;
    }
    if (key.empty()) {
        return CStdStr();
    }
    // A component without a text of its own has no title: its name is not meant for users.
    return ShowCarets(NlsFile::GetText(key));
}

bool GenericComponent::runActionList(ActionSet& list, const CStdStr& title, bool announce,
                                     bool uninstalling, bool useOemNames) {
    int state = list.GetState();
    if (state == ActionSet::Finished) {
        return true;
    }
    if (state == ActionSet::Failed) {
        return false;
    }
    bool thawing = state == ActionSet::Frozen;
    if (announce) {
        ENGINE_LOG(logmask::General,
                   thawing ? "\n[--Un-freezing %s : %s --]" : "\n[--Installing %s : %s --]",
                   mName.c_str(), TimeOfDay().c_str());
    }
    if (!title.empty()) {
        // A run without language texts shows the keys in their place.
        CStdStr text = NlsFile::GetText(title);
        if (text.empty()) {
            text = title;
        }
        text.Replace("%s", DisplayTitle().c_str());
        if (mIpcTransfer != nullptr) {
            mIpcTransfer->SetCurrentTitle(text);
        }
    }
    CStdStr names = mOemNames.empty() ? ActionSet::DefaultTitle() : mOemNames;
    if (!useOemNames) {
        names.clear();
    }
    CStdStringList oemNames = Tokenizer::Split(names, ',');
    if (oemNames.empty()) {
        oemNames.Add(names);
    } else if (oemNames.size() == 1) {
        oemNames[0] = names;
    }
    bool result = true;
    for (CStdStr oemName : oemNames) {
        // Without language texts the default brand expands to blanks, which name no brand to
        // record: the list runs as an ordinary one.
        if (CStdStr(oemName).Trim().empty()) {
            oemName.clear();
        }
        if (list.Run(mName, thawing, oemName, uninstalling) == ActionSet::Failed) {
            result = false;
        }
    }
    return result;
}

bool GenericComponent::RunCleanup() {
    runActionList(mCleanupActions, "", false, false, false);
    forEachGenericChild([](GenericComponent& child) { child.RunCleanup(); });
    return true;
}

bool GenericComponent::RunPreInstall() {
    LogScope scope(kComponent, "GenericComponent::RunPreInstall", kMask);
    if (!mPackaging) {
        UninstallLog& log = UninstallLog::Global();
        log.AddComponent(mName, RunState::GetCurrentComponent(), mOemCommon);
        log.SetSpecial(mName, "BaseDir", mBaseDir);
        if (!mVersion.empty()) {
            log.SetSpecial(mName, "Version", mVersion);
        }
        if (!mTemplateMold.empty()) {
            log.SetSpecial(mName, "TemplateMold", mTemplateMold);
        }
        for (const CStdStr& item : mRequires) {
            log.AddRequiredBy(item, mName);
        }
    }
    runActionList(mPreInstallActions, "", false, false, false);
    forEachGenericChild([this](GenericComponent& child) {
        RunState::SetCurrentComponent(mName);
        child.RunPreInstall();
    });
    return true;
}

bool GenericComponent::RunPostInstall() {
    runActionList(mPostInstallActions, "", false, false, false);
    forEachGenericChild([](GenericComponent& child) { child.RunPostInstall(); });
    // A component of a host medium hands its records to the products that the medium serves.
    CStdStr productKey = ProductIni::ProductKey();
    if (productKey.GetLength() > 5 && productKey.Find("HostCD") > 0 && mOemCommon && !mPackaging) {
        UninstallLog::Global().Commit();
        UninstallLog::Global().MergeHostComponent(mName);
    }
    return true;
}

bool GenericComponent::RunFinishInstall() {
    runActionList(mFinishActions, "", false, false, false);
    forEachGenericChild([](GenericComponent& child) { child.RunFinishInstall(); });
    return true;
}

bool GenericComponent::RunPreUninstall() {
    if (!mEmptyShell) {
        runActionList(mPreInstallActions, "", false, true, false);
    }
    forEachGenericChild([](GenericComponent& child) { child.RunPreUninstall(); });
    return true;
}

bool GenericComponent::RunPostUninstall() {
    if (!mEmptyShell) {
        runActionList(mPostInstallActions, "", false, true, false);
    }
    forEachGenericChild([](GenericComponent& child) { child.RunPostUninstall(); });
    return true;
}

void GenericComponent::MergeSharedActions(ActionSet& pre, ActionSet& post) {
    mPreInstallActions.RemoveDuplicates(pre);
    mPostInstallActions.RemoveDuplicates(post);
    forEachGenericChild([&](GenericComponent& child) { child.MergeSharedActions(pre, post); });
}

bool GenericComponent::Install() {
    LogScope scope(kComponent, "GenericComponent::Install", kMask);
    if (mVersionAllowsInstall) {
        runActionList(mInstallActions, mPackaging ? "PACKAGING" : "INSTALLING", true, false, false);
        runActionList(mOemInstallActions, "", false, false, true);
    } else {
        scope.Log(kMask,
                  "%s Install: An newer version of the component already exists on the disk.",
                  mName.c_str());
    }
    for (auto& child : mChildren) {
        child->Install();
    }
    UninstallLog& log = UninstallLog::Global();
    if (!mLogIt) {
        scope.Log(kMask, "Install: not logging component %s", mName.c_str());
        log.RemoveComponent(mName, false);
    }
    if (mPlaceHolder && mChildren.empty()) {
        scope.Log(kMask, "Not logging component %s. It has no subcomponents.", mName.c_str());
        CStdStringList dependents;
        log.GetDependents(mName, dependents, false);
        if (dependents.empty()) {
            log.RemoveComponent(mName, false);
        }
    }
    scope.SetResult(true);
    return true;
}

bool GenericComponent::RemoveOEMSharedByContent() {
    LogScope scope(kComponent, "GenericComponent::RemoveOEMSharedByContent", kMask);
    scope.Log(kMask, "-Removing OEMShared Items: %s", mName.c_str());
    if (!runActionList(mOemUninstallActions, "", false, true, true)) {
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool GenericComponent::Uninstall() {
    LogScope scope(kComponent, "GenericComponent::Uninstall", kMask);
    bool result = true;
    for (auto& child : mChildren) {
        if (!child->Uninstall()) {
            result = false;
        }
    }
    if (!result || mEmptyShell) {
        scope.SetResult(result);
        return result;
    }
    scope.Log(kMask, "\n[--Uninstalling: %s--]", mName.c_str());
    UninstallLog& log = UninstallLog::Global();
    bool remove = true;
    if (log.IsOEMShared(mName, CStdStr())) {
        scope.Log(kMask, "GenericComponent::Uninstall: Not removing OEM shared component %s",
                  mName.c_str());
        remove = false;
    }
    if (!mName.EqualsNoCase("Uninstaller")) {
        RemoveOEMSharedByContent();
    }
    if (!log.GetOemProduct().empty()) {
        RunState::SetCurrentOem(CStdStr());
    }
    if (log.IsShared(mName, true)) {
        if (!remove) {
            return result;
        }
        if (log.IsInstalledByOther(mName)) {
            scope.Log(kMask, "GenericComponent::Uninstall: Not removing shared component %s",
                      mName.c_str());
            log.RemoveComponent(mName, true);
            return result;
        }
        scope.Log(kMask, "GenericComponent::Uninstall: Removing shared component %s",
                  mName.c_str());
    }
    if (!remove) {
        return result;
    }
    if (!runActionList(mUninstallActions, "UNINSTALLING", false, true, false)) {
        scope.Log(0, "%s: Failed to uninstall component!", mName.c_str());
        scope.SetResult(false);
        return false;
    }
    log.RemoveComponent(mName, false);
    scope.SetResult(result);
    return result;
}
