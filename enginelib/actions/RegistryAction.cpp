#include "actions/RegistryAction.h"

#include "actions/EnhanceRegistry.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "system/Registry.h"
#include "uninstall/ItemType.h"

#include <typeinfo>

namespace {

const char* const kComponent = "Registry";
constexpr std::uint32_t kMask = logmask::Registry;
constexpr size_t kParameterCount = 8;
const char* const kProductMacro = "^OEM_PRODUCT^";

const char* const kOperations[] = {"ADD", "DELETE", "APPEND", "WIPEOUT"};

} // namespace

RegistryAction::RegistryAction(CStdStringList params) {
    configure(std::move(params));
}

void RegistryAction::configure(CStdStringList params) {
    params.resize(kParameterCount);
    mOperation = Add;
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mKey = params[1];
    mSubKey = params[2];
    mValueName = params[3];
    mValueType = params[4];
    mValue = params[5];
    mDelimiter = params[6];
    mSpecialFlags = params[7];
    mLogItem = !mDelimiter.EqualsNoCase("FALSE");
    mUnits = 1;
}

bool RegistryAction::Perform(CStdStr title) {
    LogScope scope(kComponent, "RegistryAction::Perform", kMask);
    if (BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mSubKey.c_str());
        scope.SetResult(true);
        return true;
    }
    // The product's title is put in for this run only, so that another run with another title
    // starts from the line's own text.
    CStdStr subKey = mSubKey;
    CStdStr valueName = mValueName;
    CStdStr value = mValue;
    subKey.Replace(kProductMacro, title.c_str());
    valueName.Replace(kProductMacro, title.c_str());
    value.Replace(kProductMacro, title.c_str());

    EnhanceRegistry worker;
    bool ok = true;
    switch (mOperation) {
    case Add:
        ok = worker.addKey(mKey, subKey, valueName, value, mValueType, mSpecialFlags);
        // Recorded even when the write failed, so that an uninstall tries what might be there.
        if (mLogItem) {
            LogUninstallItem(itemtype::RegValue, CStdStr(),
                             mKey + "," + subKey + "," + valueName);
        }
        break;
    case Append:
        ok = worker.appendKey(mKey, subKey, valueName, value, mValueType, mSpecialFlags,
                              mDelimiter);
        break;
    case Delete:
        worker.deleteKey(mKey, subKey, valueName);
        break;
    case WipeOut: {
        Registry registry;
        registry.WipeOutKey(mKey, subKey);
        break;
    }
    default:
        break;
    }
    scope.SetResult(ok);
    return ok;
}

bool RegistryAction::IsSameAction(const Action* other) {
    // The environment action derives from this one and compares by its own fields.
    if (other == nullptr || typeid(*other) != typeid(*this)) {
        return false;
    }
    const auto* same = static_cast<const RegistryAction*>(other);
    return same->mOperation == mOperation && same->mKey.EqualsNoCase(mKey) &&
           same->mSubKey.EqualsNoCase(mSubKey) && same->mValueName.EqualsNoCase(mValueName) &&
           same->mValueType.EqualsNoCase(mValueType) && same->mValue.EqualsNoCase(mValue);
}
