// What a package says about one component, and what the machine's log says of it: a read-only
// view for questions asked before any component is made.
#pragma once

#include "core/CStdStringList.h"

class ComponentInfo {
public:
    ComponentInfo(const CStdStr& name, const CStdStr& cifPath) : mName(name), mCifPath(cifPath) {}

    // Reads the component's main section and tests its requirements.
    bool readCompStatus();
    // Asks the uninstall log whether, and in which version, the component is installed.
    void readInstalledInfo();

    const CStdStr& GetName() const { return mName; }
    const CStdStr& GetCifPath() const { return mCifPath; }
    const CStdStr& GetSourceLocation() const { return mSourceLocation; }
    bool NeedsAdminRights() const { return mAdminRights; }
    long GetDiskSpace() const { return mDiskSpace; }
    const CStdStr& GetBehavior() const { return mBehavior; }
    const CStdStringList& GetPlatform() const { return mPlatform; }
    bool RequirementsValid() const { return mRequirementsValid; }
    bool RequirementsSatisfied() const { return mRequirementsSatisfied; }
    const CStdStr& GetRequirementMessage() const { return mRequirementMessage; }
    bool IsInstalled() const { return mInstalled; }
    const CStdStr& GetInstalledVersion() const { return mInstalledVersion; }

private:
    CStdStr mName;
    CStdStr mCifPath;
    CStdStr mSourceLocation;
    bool mAdminRights = false;
    long mDiskSpace = 0;
    CStdStr mBehavior;
    CStdStringList mPlatform;
    bool mRequirementsValid = true;
    bool mRequirementsSatisfied = true;
    CStdStr mRequirementMessage;
    bool mInstalled = false;
    CStdStr mInstalledVersion;
};
