// The ordinary component: a named unit described by one CIF, with eight action lists (the four
// of every component and cleanup, pre-install, post-install and finish lists), its children, and
// what the uninstall log records of it.
#pragma once

#include "components/InstallComponent.h"
#include "core/CStdStringList.h"
#include "core/SortedList.h"

#include <memory>
#include <vector>

class GenericComponent : public InstallComponent {
public:
    // The five lists are taken over: the caller's lists are left empty.
    GenericComponent(const CStdStr& name, const CStdStr& version, const CStdStr& sourceLocation,
                     const CStdStr& baseDir, bool oemCommon, CStdStringList& requiredNames,
                     CStdStringList& platform, CStdStringList& subComponents,
                     CStdStringList& groupComponents, CStdStringList& templates);
    ~GenericComponent() override;

    void SetIpcTransfer(IpcTransfer* transfer) override;
    void SetPackaging(bool packaging) override;
    std::uint32_t GetInstallUnits() override;
    std::uint32_t GetUninstallUnits() override;
    bool Install() override;
    bool Uninstall() override;
    bool Prepare() override { return true; }
    bool RemoveOEMSharedByContent() override;
    void Add(InstallComponent* child) override;
    InstallComponent* Find(const CStdStr& name, bool deep) override;
    void GetName(CStdStr& name) override { name = mName; }
    void GetSourceLocation(CStdStr& location) override { location = mSourceLocation; }
    void Print() override;

    virtual void CollectRequires(SortedList<CStdStr>& requiredNames);
    virtual void GetParentName(CStdStr& name) { name = mParentName; }
    virtual void GetDisguiseName(CStdStr& name) { name = mDisguiseName; }

    // The phases of a run; each recurses into the children that are generic components.
    bool RunCleanup();
    bool RunPreInstall();
    bool RunPostInstall();
    bool RunFinishInstall();
    bool RunPreUninstall();
    bool RunPostUninstall();
    // Pre- and post-install actions that equal one already met run once for the whole tree.
    void MergeSharedActions(ActionSet& pre, ActionSet& post);

    const CStdStr& Name() const { return mName; }
    const CStdStr& GetVersion() const { return mVersion; }
    const CStdStringList& GetRequires() const { return mRequires; }
    const CStdStringList& GetPlatform() const { return mPlatform; }
    const CStdStringList& GetSubComponents() const { return mSubComponents; }
    const CStdStringList& GetGroupComponents() const { return mGroupComponents; }
    const CStdStringList& GetTemplates() const { return mTemplates; }
    size_t ChildCount() const { return mChildren.size(); }
    InstallComponent* GetChild(size_t index) const { return mChildren[index].get(); }

    ActionSet& GetCleanupActions() { return mCleanupActions; }
    ActionSet& GetPreInstallActions() { return mPreInstallActions; }
    ActionSet& GetPostInstallActions() { return mPostInstallActions; }
    ActionSet& GetFinishActions() { return mFinishActions; }

    void SetEmptyShell(bool emptyShell) { mEmptyShell = emptyShell; }
    bool IsEmptyShell() const { return mEmptyShell; }
    void SetTemplateMold(const CStdStr& mold) { mTemplateMold = mold; }
    const CStdStr& GetTemplateMold() const { return mTemplateMold; }
    void SetVersionAllowsInstall(bool allows) { mVersionAllowsInstall = allows; }
    bool GetVersionAllowsInstall() const { return mVersionAllowsInstall; }
    void SetLogIt(bool logIt) { mLogIt = logIt; }
    bool GetLogIt() const { return mLogIt; }
    void SetPlaceHolder(bool placeHolder) { mPlaceHolder = placeHolder; }
    void SetOemNames(const CStdStr& names) { mOemNames = names; }
    const CStdStr& GetOemNames() const { return mOemNames; }
    void SetParentName(const CStdStr& name) { mParentName = name; }
    void SetUseParentName(bool use) { mUseParentName = use; }
    void SetDisguiseName(const CStdStr& name) { mDisguiseName = name; }
    void SetComponentDisguise(bool disguise) { mComponentDisguise = disguise; }
    bool GetComponentDisguise() const { return mComponentDisguise; }
    bool IsOemCommon() const { return mOemCommon; }
    const CStdStr& GetBaseDir() const { return mBaseDir; }

    // The text that stands for this component in titles.
    CStdStr DisplayTitle() const;

protected:
    // Starts, or resumes, one list: once per OEM name for the OEM lists, once otherwise.
    // False only for a fatal end.
    bool runActionList(ActionSet& list, const CStdStr& title, bool announce, bool uninstalling,
                       bool useOemNames);

private:
    template <typename Phase>
    void forEachGenericChild(Phase phase);

    ActionSet mCleanupActions;
    ActionSet mPreInstallActions;
    ActionSet mPostInstallActions;
    ActionSet mFinishActions;
    CStdStr mName;
    CStdStr mVersion;
    CStdStr mSourceLocation;
    CStdStr mBaseDir;
    bool mOemCommon;
    bool mEmptyShell = false;
    CStdStr mTemplateMold;
    bool mVersionAllowsInstall = false;
    bool mLogIt = true;
    bool mPlaceHolder = false;
    CStdStr mOemNames;
    CStdStr mParentName;
    bool mUseParentName = false;
    CStdStr mDisguiseName;
    bool mComponentDisguise = false;
    CStdStringList mRequires;
    CStdStringList mPlatform;
    CStdStringList mSubComponents;
    CStdStringList mGroupComponents;
    CStdStringList mTemplates;
    std::vector<std::unique_ptr<InstallComponent>> mChildren;
};
