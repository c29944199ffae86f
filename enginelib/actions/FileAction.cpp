#include "actions/FileAction.h"

#include "actions/EnhanceFile.h"
#include "core/IpcTransfer.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "script/IniFile.h"
#include "script/SystemPath.h"
#include "system/DebugLogger.h"
#include "system/FileFinder.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/PathObject.h"
#include "system/Uncompress.h"

namespace {

const char* const kComponent = "FileAction";
constexpr std::uint32_t kMask = logmask::FileAction;
constexpr size_t kParameterCount = 7;

const char* const kOperations[] = {
        "COPY",      "COPYRECURSIVE", "DELETE", "DELETEDIR",   "DELETEWITHWILDCARD",
        "CREATEDIR", "MULTICOPY",     "MERGE",  "COPYORMERGE", "DELAYEDCOPY"};

CStdStr Child(const CStdStr& folder, const CStdStr& name) {
    if (folder.empty() || folder.back() == '\\') {
        return folder + name;
    }
    return folder + "\\" + name;
}

CStdStr WithBackslash(const CStdStr& path) {
    return !path.empty() && path.back() == '\\' ? path : CStdStr(path + "\\");
}

bool HasWildcard(const CStdStr& path) {
    return PathObject(path).GetName().Find('*') >= 0;
}

// The folder part of a path with a pattern, with its trailing backslash.
CStdStr FolderOf(const CStdStr& path) {
    int cut = path.ReverseFind('\\');
    return cut < 0 ? CStdStr() : path.Left(cut + 1);
}

} // namespace

FileAction::FileAction(CStdStringList params) {
    params.resize(kParameterCount);
    for (size_t i = 0; i < sizeof kOperations / sizeof kOperations[0]; ++i) {
        if (params[0].EqualsNoCase(kOperations[i])) {
            mOperation = static_cast<std::int32_t>(i);
            break;
        }
    }
    mFilePath = params[1];
    mTargetPath = params[2];
    mKeepCompressed = params[3].EqualsNoCase("TRUE");
    if (params[4].EqualsNoCase("NotLogIt")) {
        mLogIt = false;
    }
    CStdStr option = params[5];
    option.MakeUpper();
    if (option.Find("/ALLOWCOMMA:") >= 0) {
        mAllowComma = option.Find("TRUE") > 0;
    } else if (!option.empty() && option == "FALSE") {
        mDoVersionCheck = false;
    }
    if (mOperation == DeleteDir && mTargetPath.EqualsNoCase("TRUE")) {
        mWipeOutFolder = false;
    }
    if (mOperation == CreateDir) {
        // The whole path is a folder to make, also without a trailing backslash.
        mDirPath = WithBackslash(mFilePath);
    }
    mFileName = PathObject(mFilePath).GetName();
    run(false);
}

bool FileAction::Perform(CStdStr) {
    LogScope scope(kComponent, "FileAction::Perform", kMask);
    scope.Log(kMask, "operation:%d, source:%s, target:%s, bool_versionCheck:%d",
              static_cast<int>(mOperation), mFilePath.c_str(), mTargetPath.c_str(),
              mDoVersionCheck ? 1 : 0);
    mUnitsReported = false;
    mKnownFolders.clear();
    CStdStr package = RunState::GetPackageDir();
    bool ok = package.empty() ? run(true) : runForPackage(package);
    scope.SetResult(ok);
    return ok;
}

CStdStr FileAction::PackageTarget(const CStdStr& packageFolder, const CStdStr& target) {
    CStdStr relative = target;
    if (relative.rfind("\\\\", 0) == 0) {
        relative = "UNC\\" + relative.Mid(2);
    } else if (relative.size() >= 2 && relative[1] == ':') {
        relative = relative.Left(1) + relative.Mid(2);
    }
    relative.TrimLeft('\\');
    return relative.empty() ? packageFolder : CStdStr(packageFolder + "\\" + relative);
}

bool FileAction::runForPackage(const CStdStr& packageFolder) {
    LogScope scope(kComponent, "FileAction::runForPackage", kMask);
    CStdStr folder = packageFolder;
    folder.Replace("$TEMP_DIR$", SystemPath(SystemPath::TempFolder).GetDirectory().c_str());
    if (mOperation == Delete || mOperation == DeleteDir || mOperation == DeleteWithWildcard) {
        scope.Log(kMask, "Packaging: nothing of the machine is deleted (%s)", mFilePath.c_str());
        scope.SetResult(true);
        return true;
    }
    CStdStr target = mTargetPath;
    CStdStr dirPath = mDirPath;
    mTargetPath = PackageTarget(folder, target);
    mDirPath = PackageTarget(folder, dirPath);
    scope.Log(kMask, "Packaging into %s",
              mOperation == CreateDir ? mDirPath.c_str() : mTargetPath.c_str());
    bool ok = run(true);
    mTargetPath = target;
    mDirPath = dirPath;
    scope.SetResult(ok);
    return ok;
}

bool FileAction::IsSameAction(const Action* other) {
    const auto* file = dynamic_cast<const FileAction*>(other);
    return file != nullptr && file->mOperation == mOperation &&
           file->mFilePath.EqualsNoCase(mFilePath) && file->mTargetPath.EqualsNoCase(mTargetPath);
}

bool FileAction::run(bool flag) {
    switch (mOperation) {
    case CopyRecursive:
        return recursivelyCopyWhat(mFilePath, mTargetPath, flag);
    case Delete:
        return deleteFile(flag);
    case DeleteDir:
        return deleteDirectory(flag);
    case DeleteWithWildcard:
        return deleteFilesWithWildCard(flag);
    case CreateDir:
        return createDirectory(flag);
    case MultiCopy:
        return multiCopyWhat(mFilePath, mTargetPath, flag);
    case Merge:
        return mergeFiles(mFilePath, mTargetPath, flag);
    case CopyOrMerge:
        return copyOrMergeFiles(mFilePath, mTargetPath, flag);
    case DelayedCopy:
        return delayedCopy(mFilePath, mTargetPath, flag);
    default:
        return copyWhat(mFilePath, mTargetPath, flag);
    }
}

bool FileAction::simpleCopy(const CStdStr& source, const CStdStr& target, bool flag,
                            std::uint32_t sourceAttributes) {
    if (!flag) {
        ++mUnits;
        return true;
    }
    LogScope scope(kComponent, "FileAction::simpleCopy", kMask);
    // The unit is spent before the copy is tried, so that a failed file moves the bar too.
    mUnitsReported = true;
    if (IpcTransfer* reporter = RunState::GetReporter()) {
        reporter->AddCurrentUnits(1);
    }
    EnhanceFile worker(mKeepCompressed, mDoVersionCheck);
    worker.SetKnownFolders(&mKnownFolders);
    worker.SetSourceAttributes(sourceAttributes);
    int rc = worker.singleCopy(source, target, mAllowComma);
    scope.Log(kMask, "%s <%s>", target.c_str(),
              rc == EnhanceFile::Failed      ? "failed."
              : rc == EnhanceFile::NotCopied ? "success-noCopy."
                                             : "success.");
    if (rc == EnhanceFile::Failed) {
        scope.SetResult(false);
        return false;
    }
    // A file left in place because it is newer belongs to the component all the same.
    LogUninstallItem(1, CStdStr(), worker.GetLastTarget());
    scope.SetResult(true);
    return true;
}

bool FileAction::copyWhat(const CStdStr& source, const CStdStr& target, bool flag) {
    bool ok = HasWildcard(source) ? copySomeOrAllFiles(source, target, flag)
                                  : simpleCopy(source, target, flag);
    return flag ? ok : true;
}

bool FileAction::copySomeOrAllFiles(const CStdStr& source, const CStdStr& target, bool flag) {
    LogScope scope(kComponent, "FileAction::copySomeOrAllFiles", kMask);
    // A folder given with its backslash stands for all of its files.
    CStdStr pattern = !source.empty() && source.back() == '\\' ? CStdStr(source + "*") : source;
    FileFinder finder(pattern);
    if (finder.IsEnd()) {
        scope.Log(kMask, "Source path is invalid: %s", pattern.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr folder = FolderOf(pattern);
    for (; !finder.IsEnd(); finder.Next()) {
        if (finder.IsDots() || finder.IsDirectory() || target.empty()) {
            continue;
        }
        simpleCopy(folder + finder.GetCurrent(), Child(target, finder.GetCurrent()), flag,
                   finder.GetAttributes());
    }
    scope.SetResult(true);
    return true;
}

bool FileAction::recursivelyCopyWhat(const CStdStr& source, const CStdStr& target, bool flag) {
    bool ok = HasWildcard(source) ? recursivelyCopySomeFiles(source, target, flag)
                                  : recursivelyCopyAllFiles(source, target, flag);
    return flag ? ok : true;
}

bool FileAction::recursivelyCopyAllFiles(const CStdStr& source, const CStdStr& target, bool flag) {
    LogScope scope(kComponent, "FileAction::recursivelyCopyAllFiles", kMask);
    CStdStr pattern = WithBackslash(source) + "*";
    FileFinder finder(pattern);
    if (finder.IsEnd()) {
        scope.Log(kMask, "Source path is invalid: %s", pattern.c_str());
        scope.SetResult(false);
        return false;
    }
    for (; !finder.IsEnd(); finder.Next()) {
        if (finder.IsDots()) {
            continue;
        }
        CStdStr from = Child(source, finder.GetCurrent());
        CStdStr to = Child(target, finder.GetCurrent());
        if (finder.IsDirectory()) {
            recursivelyCopyAllFiles(from, to, flag);
        } else {
            simpleCopy(from, to, flag, finder.GetAttributes());
        }
    }
    scope.SetResult(true);
    return true;
}

bool FileAction::recursivelyCopySomeFiles(const CStdStr& source, const CStdStr& target, bool flag) {
    LogScope scope(kComponent, "FileAction::recursivelyCopySomeFiles", kMask);
    CStdStr folder = FolderOf(source);
    CStdStr pattern = PathObject(source).GetName();
    FileFinder subfolders(folder + "*");
    if (subfolders.IsEnd()) {
        scope.Log(kMask, "Source path is invalid: %s", source.c_str());
        scope.SetResult(false);
        return false;
    }
    // No match in this folder is no failure: the matches may lie deeper.
    copySomeOrAllFiles(source, target, flag);
    for (; !subfolders.IsEnd(); subfolders.Next()) {
        if (subfolders.IsDots() || !subfolders.IsDirectory()) {
            continue;
        }
        scope.Log(kMask, "Goto next directory");
        recursivelyCopySomeFiles(folder + subfolders.GetCurrent() + "\\" + pattern,
                                 Child(target, subfolders.GetCurrent()), flag);
    }
    scope.SetResult(true);
    return true;
}

bool FileAction::multiCopyWhat(const CStdStr& source, const CStdStr& target, bool flag) {
    LogScope scope(kComponent, "FileAction::multiCopyWhat", kMask);
    // A source with a pattern keeps it; a folder gives all of its files.
    CStdStr from = HasWildcard(source) ? source : WithBackslash(source);
    CStdStr to = WithBackslash(target);
    bool ok = true;
    for (FileFinder finder(to + "*"); ok && !finder.IsEnd(); finder.Next()) {
        if (finder.IsDots() || !finder.IsDirectory()) {
            continue;
        }
        ok = copySomeOrAllFiles(from, to + finder.GetCurrent() + "\\", flag);
    }
    scope.SetResult(ok);
    return ok;
}

bool FileAction::deleteFile(bool flag) {
    if (!flag) {
        mUnits = 1;
        return true;
    }
    LogScope scope(kComponent, "FileAction::deleteFile", kMask);
    bool ok = FileOp::Remove(mFilePath, 0);
    if (!ok) {
        scope.Log(kMask, "failed to delete file %s.", mFileName.c_str());
    }
    scope.SetResult(ok);
    return ok;
}

bool FileAction::deleteDirectory(bool flag) {
    LogScope scope(kComponent, "FileAction::deleteDirectory", kMask);
    if (!flag) {
        scope.Log(kMask, "flag=false, return true");
        mUnits = 1;
        return true;
    }
    EnhanceFile worker(mKeepCompressed, mDoVersionCheck);
    worker.SetWipeOutFolder(mWipeOutFolder);
    bool ok = worker.deleteDirectory(mFilePath);
    scope.SetResult(ok);
    return ok;
}

bool FileAction::deleteFilesWithWildCard(bool flag) {
    LogScope scope(kComponent, "FileAction::deleteFilesWithWildCard", kMask);
    if (!HasWildcard(mFilePath)) {
        scope.Log(kMask, "Can't find a wildcard(*) in path: %s", mFilePath.c_str());
        scope.SetResult(false);
        return false;
    }
    FileFinder finder(mFilePath);
    if (finder.IsEnd()) {
        scope.Log(kMask, "Source path is invalid: %s", mFilePath.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr folder = FolderOf(mFilePath);
    for (; !finder.IsEnd(); finder.Next()) {
        if (!finder.IsDots()) {
            deleteFilesMatchingWildCard(folder + finder.GetCurrent(), flag);
        }
    }
    scope.SetResult(true);
    return true;
}

bool FileAction::deleteFilesMatchingWildCard(const CStdStr& path, bool flag) {
    if (!flag) {
        ++mUnits;
        ENGINE_LOG(kMask, "Do nothing mUnits Inc to =%d", static_cast<int>(mUnits));
        return true;
    }
    if (!FileOp::Remove(path, 0)) {
        ENGINE_LOG(kMask, "failed to delete file: %s", path.c_str());
        return false;
    }
    return true;
}

bool FileAction::createDirectory(bool flag) {
    if (!flag) {
        return true;
    }
    return FileOp::createPath(mDirPath, false);
}

bool FileAction::mergeFiles(const CStdStr& source, const CStdStr& target, bool flag) {
    if (!flag) {
        return true;
    }
    LogScope scope(kComponent, "FileAction::mergeFiles", kMask);
    IniFile ini;
    if (!ini.Read(target) || !ini.Read(source, true)) {
        scope.Log(kMask, "Could not merge files.. %s with %s", source.c_str(), target.c_str());
        scope.SetResult(false);
        return false;
    }
    scope.Log(kMask, "iniFile.Merge(filePath) SUCCESS");
    scope.Log(kMask, "Merged file.. %s with %s", source.c_str(), target.c_str());
    bool ok = ini.Write(target);
    if (ok) {
        scope.Log(kMask, "Writing merged file to disk.. %s", target.c_str());
    } else {
        scope.Log(kMask, "Error writing %s to disk.", target.c_str());
    }
    scope.SetResult(ok);
    return ok;
}

bool FileAction::copyOrMergeFiles(const CStdStr& source, const CStdStr& target, bool flag) {
    if (!flag) {
        return true;
    }
    LogScope scope(kComponent, "FileAction::copyOrMergeFiles", kMask);
    bool ok = false;
    if (FileOp::IsFile(target)) {
        scope.Log(kMask, "Destination Exists");
        ok = mergeFiles(source, target, true);
        if (!ok) {
            scope.Log(kMask, "Failed to call mergeFiles() with.. %s and %s", source.c_str(),
                      target.c_str());
        }
    } else {
        scope.Log(kMask, "Destination does not exists");
        ok = simpleCopy(source, target, true);
        if (!ok) {
            scope.Log(kMask, "Failed to call simpleCopy() with.. %s and %s", source.c_str(),
                      target.c_str());
        }
    }
    scope.SetResult(ok);
    return ok;
}

bool FileAction::delayedCopy(const CStdStr& source, const CStdStr& target, bool flag) {
    if (!flag) {
        return true;
    }
    LogScope scope(kComponent, "FileAction::delayedCopy", kMask);
    CStdStr from = source;
    CStdStr tempFolder;
    if (Uncompress::IsFileCompressed(source)) {
        scope.Log(kMask, "Uncompress::IsFileCompressed(source) rc = true");
        CStdStr base = SystemPath(SystemPath::TempFolder).GetFullPath();
        tempFolder = FileOp::GetTempFileName(WithBackslash(base));
        CStdStr expanded;
        bool ok = !tempFolder.empty() && os::DeleteFile(tempFolder) == os::error::Success &&
                  FileOp::createPath(WithBackslash(tempFolder), false) &&
                  Uncompress::UncompressFile(source, WithBackslash(tempFolder), expanded, false);
        if (!ok) {
            scope.Log(kMask, "failed to uncompress file %s to temp; error: %d", source.c_str(),
                      static_cast<int>(FileOp::GetLastError()));
            if (!tempFolder.empty()) {
                FileOp::WipeOutDirectory(tempFolder);
            }
            scope.SetResult(false);
            return false;
        }
        scope.Log(kMask, "Uncompress::UncompressFile() rc = true");
        from = expanded;
    }
    CStdStr to = target;
    FileOp::createPath(to, mAllowComma);
    if (PathObject(to).GetName().empty()) {
        to = Child(to, PathObject(from).GetName());
    }
    scope.Log(kMask, "Copy  \"%s\" to \"%s\" with COPY_CheckVersion | COPY_CheckTime", from.c_str(),
              to.c_str());
    bool ok = FileOp::CopyOnReboot(from, to, FileOp::CompareVersions | FileOp::CompareTimes);
    scope.Log(kMask, "FileOp::CopyOnReboot rc = %d", ok ? 1 : 0);
    if (!tempFolder.empty()) {
        FileOp::WipeOutDirectory(tempFolder);
    }
    if (ok) {
        scope.Log(kMask, "Log UninstallLog::File");
        LogUninstallItem(1, CStdStr(), to);
    }
    scope.SetResult(ok);
    return ok;
}
