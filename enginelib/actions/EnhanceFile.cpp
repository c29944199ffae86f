#include "actions/EnhanceFile.h"

#include "os/Files.h"
#include "script/SystemPath.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/PathObject.h"
#include "system/ProtectedFolder.h"
#include "system/Uncompress.h"

namespace {

const char* const kComponent = "FileAction";
constexpr std::uint32_t kMask = logmask::FileAction;

// Removes a temporary copy and the folder made for it.
void RemoveTemporary(const CStdStr& path) {
    if (path.empty()) {
        return;
    }
    PathObject file(path);
    os::SetFileAttributes(path, os::attr::Normal);
    os::DeleteFile(path);
    os::RemoveDirectory(file.GetDirectory());
}

} // namespace

CStdStr EnhanceFile::copyToTemporaryFolder(const CStdStr& source) {
    CStdStr base = SystemPath(SystemPath::TempFolder).GetFullPath();
    if (!base.empty() && base.back() != '\\') {
        base += "\\";
    }
    // A fresh temporary name ("LZ<n>.tmp") becomes a folder of that name.
    CStdStr folder = FileOp::GetTempFileName(base);
    if (folder.empty()) {
        return CStdStr();
    }
    os::DeleteFile(folder);
    if (os::CreateDirectory(folder) != os::error::Success) {
        return CStdStr();
    }
    CStdStr copy = folder + "\\" + PathObject(source).GetName();
    if (!FileOp::Copy(source, copy, 0)) {
        RemoveTemporary(copy);
        return CStdStr();
    }
    return copy;
}

int EnhanceFile::singleCopy(const CStdStr& source, const CStdStr& target, bool allowComma) {
    LogScope scope(kComponent, "EnhanceFile::singleCopy", kMask);
    scope.Log(kMask, "source:%s, target:%s", source.c_str(), target.c_str());
    PathObject targetPath(target);
    if (targetPath.GetName().empty()) {
        targetPath.SetName(PathObject(source).GetName());
    }
    mLastTarget = targetPath.GetFullPath();
    auto finish = [&scope](int result) {
        scope.SetResult(result);
        return result;
    };

    CStdStr folder = PathObject(mLastTarget).GetDirectory();
    std::string folderKey = CStdStr(folder).MakeLower();
    bool folderKnown = mKnownFolders != nullptr && mKnownFolders->count(folderKey) != 0;
    if (!folderKnown && !FileOp::createPath(mLastTarget, allowComma)) {
        scope.Log(kMask, "Failed to create path");
        return finish(Failed);
    }
    if (mKnownFolders != nullptr && !folder.empty()) {
        mKnownFolders->insert(folderKey);
    }

    if (!mKeepCompressed && Uncompress::IsFileCompressed(source)) {
        CStdStr expanded;
        if (Uncompress::UncompressFile(source, mLastTarget, expanded, mDoVersionCheck)) {
            mLastTarget = expanded;
            return finish(Copied);
        }
        scope.Log(kMask, "Try again with temp file..");
        CStdStr temp = copyToTemporaryFolder(source);
        scope.Log(kMask, "Attempting uncompress on temporary file %s", temp.c_str());
        bool ok = !temp.empty() &&
                  Uncompress::UncompressFile(temp, mLastTarget, expanded, mDoVersionCheck);
        RemoveTemporary(temp);
        if (!ok) {
            scope.Log(0, "could not copy file %s", source.c_str());
            return finish(Failed);
        }
        mLastTarget = expanded;
        return finish(Copied);
    }

    if (mDoVersionCheck && PathObject(mLastTarget).Exists()) {
        scope.Log(kMask, "dest exists");
        int rc = FileOp::IsNewerVersion(source, mLastTarget);
        scope.Log(kMask, "FileOp::IsNewerVersion(source, dest) rc=%d", rc);
        if (rc < 0) {
            return finish(NotCopied);
        }
        if (rc == 0) {
            rc = FileOp::IsNewerTime(source, mLastTarget);
            scope.Log(kMask, "FileOp::IsNewerTime(source, dest) rc=%d", rc);
            if (rc < 0) {
                return finish(NotCopied);
            }
        }
    }

    const int copyFlags = FileOp::SharingMeansInUse | FileOp::CompareBeforeInUse;
    bool copied = FileOp::Copy(source, mLastTarget, copyFlags);
    if (!copied && folderKnown && !FileOp::IsDirectory(folder)) {
        // The folder went away since this action last saw it: it is made again.
        mKnownFolders->erase(folderKey);
        copied = FileOp::createPath(mLastTarget, allowComma) &&
                 FileOp::Copy(source, mLastTarget, copyFlags);
    }
    if (!copied) {
        scope.Log(kMask, "could not copy file %s", source.c_str());
        return finish(Failed);
    }
    // The copy has the source's attributes: a source known to be writable leaves nothing to
    // clear.
    bool sourceWritable = mSourceAttributes != os::attr::Invalid &&
                          (mSourceAttributes & os::attr::ReadOnly) == 0;
    std::uint32_t attributes = 0;
    if (!sourceWritable && os::GetFileAttributes(mLastTarget, attributes) == os::error::Success &&
        (attributes & os::attr::ReadOnly) != 0) {
        std::uint32_t cleared = attributes & ~os::attr::ReadOnly;
        os::SetFileAttributes(mLastTarget, cleared == 0 ? os::attr::Normal : cleared);
    }
    return finish(Copied);
}

bool EnhanceFile::deleteDirectory(const CStdStr& path) {
    LogScope scope(kComponent, "EnhanceFile::deleteDirectory", kMask);
    auto finish = [&scope](bool result) {
        scope.SetResult(result);
        return result;
    };
    // A doubled backslash is what an empty define leaves in the middle of a path.
    if (path.Find("\\\\") >= 0) {
        scope.Log(kMask, "Attempt to delete invalid directory failed. Aborting! %s", path.c_str());
        return finish(false);
    }
    // Judged by what Windows makes of the text: "C:" alone lists as "C:\*", the whole drive.
    CStdStr why = ProtectedFolder::WhyProtected(path);
    if (!why.empty()) {
        scope.Log(kMask, "Attempt to delete root directory failed. Aborting! %s", path.c_str());
        scope.Log(kMask, "'%s' is %s.", path.c_str(), why.c_str());
        return finish(false);
    }
    if (!mWipeOutFolder) {
        if (FileOp::RemoveEmptyDir(path, true)) {
            scope.Log(kMask, "Delete '%s'.", path.c_str());
        } else {
            scope.Log(kMask, "Skip delete dir since '%s' isn't empty.", path.c_str());
        }
        return finish(true);
    }
    if (!FileOp::WipeOutDirectory(path)) {
        scope.Log(kMask, "failed to delete directory %s", path.c_str());
        return finish(false);
    }
    return finish(true);
}
