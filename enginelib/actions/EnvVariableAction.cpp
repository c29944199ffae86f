#include "actions/EnvVariableAction.h"

#include "os/Messages.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

namespace {

const char* const kComponent = "Registry";
constexpr std::uint32_t kMask = logmask::Registry;
constexpr size_t kParameterCount = 5;
constexpr std::uint32_t kBroadcastTimeoutMs = 100;

const char* const kOperations[] = {"APPEND", "UPDATE", "CLEAR"};

// Where Windows keeps the variables of a scope; false for an unknown scope.
bool EnvironmentKey(const CStdStr& scope, CStdStr& root, CStdStr& key) {
    if (scope.EqualsNoCase("AllUsers")) {
        root = "HKLM";
        key = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
        return true;
    }
    if (scope.EqualsNoCase("CurrentUser")) {
        root = "HKCU";
        key = "Environment";
        return true;
    }
    return false;
}

} // namespace

EnvVariableAction::EnvVariableAction(CStdStringList params) {
    params.resize(kParameterCount);
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mEnvOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mName = params[1];
    mEnvValue = params[2];
    mScope = params[3];
    mEnvSpecialFlags = params[4];
    mUnits = 1;
}

bool EnvVariableAction::Perform(CStdStr title) {
    LogScope scope(kComponent, "EnvVariableAction::Perform", kMask);
    if (BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mName.c_str());
        scope.SetResult(true);
        return true;
    }
    CStdStr root;
    CStdStr key;
    if (!EnvironmentKey(mScope, root, key)) {
        scope.Log(0, "Unknown scope %s of the variable %s.", mScope.c_str(), mName.c_str());
        scope.SetResult(false);
        return false;
    }
    bool ok = false;
    switch (mEnvOperation) {
    case EnvAppend:
        configure({"append", root, key, mName, "STRX", mEnvValue, ";", mEnvSpecialFlags});
        ok = RegistryAction::Perform(title);
        if (!ok) {
            scope.Log(0, "Could not append %s to the variable %s.", mEnvValue.c_str(),
                      mName.c_str());
        }
        break;
    case EnvUpdate:
        configure({"add", root, key, mName, "STRX", mEnvValue, ";", mEnvSpecialFlags});
        ok = RegistryAction::Perform(title);
        if (!ok) {
            scope.Log(0, "Could not set %s as the variable %s.", mEnvValue.c_str(),
                      mName.c_str());
        }
        break;
    case EnvClear:
        configure({"delete", root, key, mName});
        ok = RegistryAction::Perform(title);
        if (!ok) {
            scope.Log(0, " Could not clear the variable %s.", mName.c_str());
        }
        break;
    default:
        scope.Log(0, "Unknown operation of the variable %s.", mName.c_str());
        break;
    }
    if (ok) {
        os::SendMessageTimeoutText(os::HwndBroadcast, os::wm::SettingChange, 0, "Environment",
                                   os::smto::AbortIfHung, kBroadcastTimeoutMs);
    }
    scope.SetResult(ok);
    return ok;
}

bool EnvVariableAction::IsSameAction(const Action* other) {
    const auto* same = dynamic_cast<const EnvVariableAction*>(other);
    return same != nullptr && same->mEnvOperation == mEnvOperation &&
           same->mName.EqualsNoCase(mName) && same->mEnvValue.EqualsNoCase(mEnvValue) &&
           same->mScope.EqualsNoCase(mScope);
}
