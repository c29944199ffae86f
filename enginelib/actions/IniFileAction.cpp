#include "actions/IniFileAction.h"

#include "actions/EnhanceIniFile.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <typeinfo>

namespace {

const char* const kComponent = "CifAction";
constexpr std::uint32_t kMask = logmask::General;
constexpr size_t kParameterCount = 6;

const char* const kOperations[] = {"APPEND", "UPDATE", "DELETESECTION"};

} // namespace

IniFileAction::IniFileAction(CStdStringList params) {
    params.resize(kParameterCount);
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mFile = params[1];
    mSection = params[2];
    mKey = params[3];
    mValue = params[4];
    mDelimiter = params[5].empty() ? CStdStr(",") : params[5];
    mUnits = 0;
}

bool IniFileAction::Perform(CStdStr /*title*/) {
    LogScope scope(kComponent, "IniFileAction::Perform", kMask);
    if (BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mFile.c_str());
        scope.SetResult(true);
        return true;
    }
    bool ok = false;
    switch (mOperation) {
    case Append:
        ok = appendIniFile();
        break;
    case Update:
        ok = updateIniFile();
        break;
    case DeleteSection:
        ok = deleteSectionIniFile();
        break;
    default:
        scope.Log(0, "unknown operation of the file %s.", mFile.c_str());
        break;
    }
    scope.SetResult(ok);
    return ok;
}

bool IniFileAction::appendIniFile() {
    if (EnhanceIniFile::AppendOrUpdateValue(mFile, mSection, mKey, mValue, "Append",
                                            mDelimiter)) {
        return true;
    }
    ENGINE_LOG(0, "could not append file %s.", mFile.c_str());
    return false;
}

bool IniFileAction::updateIniFile() {
    if (EnhanceIniFile::AppendOrUpdateValue(mFile, mSection, mKey, mValue, "Update",
                                            mDelimiter)) {
        return true;
    }
    ENGINE_LOG(0, "could not update file %s.", mFile.c_str());
    return false;
}

bool IniFileAction::deleteSectionIniFile() {
    if (EnhanceIniFile::EraseSection(mFile, mSection)) {
        return true;
    }
    ENGINE_LOG(0, "could not delete section in the file %s.", mFile.c_str());
    return false;
}

bool IniFileAction::IsSameAction(const Action* other) {
    if (other == nullptr || typeid(*other) != typeid(*this)) {
        return false;
    }
    const auto* same = static_cast<const IniFileAction*>(other);
    return same->mFile.EqualsNoCase(mFile) && same->mSection.EqualsNoCase(mSection) &&
           same->mKey.EqualsNoCase(mKey) && same->mValue.EqualsNoCase(mValue);
}
