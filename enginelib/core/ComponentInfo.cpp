#include "core/ComponentInfo.h"

#include "script/CifExtReq.h"
#include "script/CifFile.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

#include <cstdlib>

bool ComponentInfo::readCompStatus() {
    LogScope scope("ComponentInfo", "ComponentInfo::readCompStatus", logmask::EngineApi);
    CifFile cif(mCifPath, true);
    cif.InitDefines(nullptr, mName);
    IniSection* main = cif.FindSection(mName);
    if (main == nullptr) {
        scope.Log(0, "Could not find main section for component %s, CIF=%s", mName.c_str(),
                  mCifPath.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr value;
    if (main->GetValue("SourceLocation", value)) {
        mSourceLocation = value;
    }
    mAdminRights = main->GetValue("AdminRights", value) && value.EqualsNoCase("true");
    mDiskSpace = main->GetValue("DiskSpace", value) ? std::strtol(value.c_str(), nullptr, 10) : 0;
    if (main->GetValue("Behavior", value)) {
        mBehavior = value;
    }
    if (main->GetValue("Platform", value)) {
        mPlatform = Tokenizer::Split(value, ',', Tokenizer::Trim);
        mPlatform.Add("FUTURE_OS");
    }
    if (CifExtReq* requirements = cif.GetExtReq(mName, "_ExtReq")) {
        mRequirementsValid = requirements->IsValid();
        if (!mRequirementsValid) {
            mRequirementMessage.Format("External requirements invalid for component %s",
                                       mName.c_str());
        } else if (requirements->IsExtReqSatisfied() == 0) {
            mRequirementsSatisfied = false;
            mRequirementMessage = requirements->GetErrorText();
        }
    }
    scope.SetResult(true);
    return true;
}

void ComponentInfo::readInstalledInfo() {
    UninstallLog& installed = UninstallLog::Installed();
    mInstalled = installed.IsComponentInstalled(mName);
    mInstalledVersion = mInstalled ? installed.GetSpecial(mName, "Version") : CStdStr();
}
