#include "actions/LinePatchAction.h"

#include "actions/EnhanceIniFile.h"
#include "script/IniFile.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"

#include <typeinfo>

namespace {

const char* const kComponent = "CifAction";
constexpr std::uint32_t kMask = logmask::General;
constexpr size_t kParameterCount = 5;
// Splits the text of ADD into section, key and value; the value keeps any further ones.
constexpr char kAddSeparator = '|';

const char* const kOperations[] = {"ADD", "DELETE", "APPEND_FRONT", "APPEND_END"};

} // namespace

LinePatchAction::LinePatchAction(CStdStringList params) {
    params.resize(kParameterCount);
    mFiles = params[0];
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[1].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mCondition = params[2];
    mText = params[3];
    mValue = params[4];
    mUnits = 0;
}

bool LinePatchAction::Perform(CStdStr /*title*/) {
    LogScope scope(kComponent, "LinePatchAction::Perform", kMask);
    if (BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mFiles.c_str());
        scope.SetResult(true);
        return true;
    }
    if (mOperation == Unknown) {
        scope.Log(0, "unknown operation of the files %s.", mFiles.c_str());
        scope.SetResult(false);
        return false;
    }
    // Every file is patched; one that fails fails the action.
    bool ok = true;
    for (const CStdStr& file : Tokenizer::Split(mFiles, '|', Tokenizer::Trim)) {
        if (!file.empty()) {
            ok = patchFile(file) && ok;
        }
    }
    scope.SetResult(ok);
    return ok;
}

bool LinePatchAction::patchFile(const CStdStr& file) {
    LogScope scope(kComponent, "LinePatchAction::patchFile", kMask);
    scope.Log(kMask, "file:%s", file.c_str());
    bool ok = false;
    if (mOperation == Add) {
        ok = addLine(file);
    } else if (mCondition.empty()) {
        scope.Log(0, mOperation == Delete ? "Delete Failed: Missing line condition on parameter."
                                          : "Append Failed: Missing line condition on parameter.");
    } else {
        CStdStr key;
        bool found = findLine(file, mText, key);
        if (mOperation == Delete) {
            ok = found && deleteLine(file, mText, key);
            if (ok) {
                scope.Log(kMask, "Delete Success: [%s]%s", mText.c_str(), key.c_str());
            } else {
                scope.Log(0, "Delete Failed: %s", mCondition.c_str());
            }
        } else {
            ok = found && appendString(file, mText, key);
            if (ok) {
                scope.Log(kMask, "Append Success: [%s]%s", mText.c_str(), key.c_str());
            } else {
                scope.Log(0, "Append Failed: %s", mCondition.c_str());
            }
        }
    }
    scope.SetResult(ok);
    return ok;
}

bool LinePatchAction::findLine(const CStdStr& file, const CStdStr& section, CStdStr& key) {
    IniFile ini;
    if (!FileOp::IsFile(file) || !ini.Read(file)) {
        ENGINE_LOG(0, "file %s does not exist.", file.c_str());
        return false;
    }
    if (ini.FindSection(section) == nullptr) {
        ENGINE_LOG(0, "section [%s] doesn't exist.", section.c_str());
        return false;
    }
    if (!EnhanceIniFile::FindKeyByCondition(ini, section, mCondition, key)) {
        ENGINE_LOG(0, "line not found in condition (%s)", mCondition.c_str());
        return false;
    }
    return true;
}

bool LinePatchAction::appendString(const CStdStr& file, const CStdStr& section,
                                   const CStdStr& key) {
    IniFile ini;
    ini.Read(file);
    CStdStr old = ini.GetValue(section, key);
    CStdStr text;
    if (mOperation == AppendFront) {
        text.Format("%s%s", mValue.c_str(), old.c_str());
    } else {
        text.Format("%s%s", old.c_str(), mValue.c_str());
    }
    return EnhanceIniFile::AppendOrUpdateValue(file, section, key, text, "Update", CStdStr());
}

bool LinePatchAction::addLine(const CStdStr& file) {
    LogScope scope(kComponent, "LinePatchAction::addLine", kMask);
    CStdStr section;
    CStdStr key;
    CStdStr value;
    int first = mText.Find(kAddSeparator);
    int second = first < 0 ? -1 : mText.Find(kAddSeparator, first + 1);
    if (second > 0) {
        section = mText.Left(first);
        key = mText.Mid(first + 1, second - first - 1);
        value = mText.Mid(second + 1);
        section.Trim();
        key.Trim();
    }
    bool ok = !section.empty() && !key.empty() &&
              EnhanceIniFile::AppendOrUpdateValue(file, section, key, value, "Update", CStdStr());
    if (ok) {
        scope.Log(logmask::General, "Add/Update Success: [%s] %s=%s", section.c_str(),
                  key.c_str(), value.c_str());
    } else {
        scope.Log(0, "Add line Failed: [%s]%s=%s", section.c_str(), key.c_str(), value.c_str());
    }
    scope.SetResult(ok);
    return ok;
}

bool LinePatchAction::deleteLine(const CStdStr& file, const CStdStr& section,
                                 const CStdStr& key) {
    return EnhanceIniFile::AppendOrUpdateValue(file, section, key, CStdStr(), "Delete",
                                               CStdStr());
}

bool LinePatchAction::IsSameAction(const Action* other) {
    if (other == nullptr || typeid(*other) != typeid(*this)) {
        return false;
    }
    const auto* same = static_cast<const LinePatchAction*>(other);
    return same->mOperation == mOperation && same->mFiles.EqualsNoCase(mFiles) &&
           same->mCondition.EqualsNoCase(mCondition) && same->mText.EqualsNoCase(mText) &&
           same->mValue.EqualsNoCase(mValue);
}
