#include "actions/TextFileAction.h"

#include "os/Files.h"
#include "script/TextFile.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/PathObject.h"

#include <typeinfo>

namespace {

const char* const kComponent = "CifAction";
constexpr std::uint32_t kMask = logmask::General;
constexpr size_t kParameterCount = 4;

const char* const kOperations[] = {"APPEND", "DELETE", "REPLACE"};

} // namespace

TextFileAction::TextFileAction(CStdStringList params) {
    params.resize(kParameterCount);
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mFile = params[1];
    mText = params[2];
    mReplacement = params[3];
    mUnits = 1;
}

bool TextFileAction::Perform(CStdStr /*title*/) {
    LogScope scope(kComponent, "TextFileAction::Perform", kMask);
    if (BuildsPackage()) {
        scope.Log(kMask, "Building a package: %s is left to the install.", mFile.c_str());
        scope.SetResult(true);
        return true;
    }
    bool ok = false;
    if (mOperation == Append) {
        ok = appendToFile();
    } else if (mOperation == Delete || mOperation == Replace) {
        ok = operate();
    } else {
        scope.Log(0, "unknown operation of the file %s.", mFile.c_str());
    }
    scope.SetResult(ok);
    return ok;
}

bool TextFileAction::appendToFile() {
    PathObject path(mFile);
    if (!FileOp::IsDirectory(path.GetDirectory()) && !FileOp::createPath(mFile)) {
        ENGINE_LOG(0, "path %s could not be created.", path.GetDirectory().c_str());
        return false;
    }
    TextFile file;
    if (!file.Open(mFile, TextFile::Append, TextFile::Detect)) {
        ENGINE_LOG(0, "could not open file %s.", mFile.c_str());
        return false;
    }
    if (!file.WriteString("\n" + mText + "\n")) {
        ENGINE_LOG(0, "could not append text to the file %s.", mFile.c_str());
        return false;
    }
    return true;
}

bool TextFileAction::operate() {
    PathObject path(mFile);
    CStdStr folder = path.GetDirectory();
    if (!folder.empty() && folder.back() != '\\') {
        folder += '\\';
    }
    CStdStr work = folder + "temp" + path.GetName();
    TextFile in;
    if (!in.Open(mFile, TextFile::Read, TextFile::Detect)) {
        ENGINE_LOG(0, "could not open file %s.", mFile.c_str());
        return false;
    }
    TextFile out;
    if (!out.Open(work, TextFile::Write, in.GetEncoding())) {
        ENGINE_LOG(0, "could not open file %s.", work.c_str());
        return false;
    }
    bool written = true;
    CStdStr line;
    while (written && in.ReadString(line)) {
        if (line.find(mText) == std::string::npos || mText.empty()) {
            written = out.WriteString(line + "\n");
        } else if (mOperation == Replace) {
            written = out.WriteString(mReplacement + "\n");
        }
    }
    in.Close();
    out.Close();
    if (!written ||
        os::MoveFileEx(work, mFile, os::movefile::ReplaceExisting) != os::error::Success) {
        ENGINE_LOG(0, "could not write file %s.", mFile.c_str());
        os::DeleteFile(work);
        return false;
    }
    return true;
}

bool TextFileAction::IsSameAction(const Action* other) {
    if (other == nullptr || typeid(*other) != typeid(*this)) {
        return false;
    }
    const auto* same = static_cast<const TextFileAction*>(other);
    return same->mOperation == mOperation && same->mFile.EqualsNoCase(mFile) &&
           same->mText == mText;
}
