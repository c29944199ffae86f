// The action of keyword File: copies, deletes, merges and creates files and folders, and
// records what it placed in the uninstall log. Its line is
//   File,<operation>,<source>,<target>,<keepCompressed>,<notLogIt>,<option>
// It credits its progress file by file, so its units are counted when it is built, by walking
// the same paths as the work with a flag that says "count only".
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

#include <string>
#include <unordered_set>

class FileAction : public Action {
public:
    enum Operation {
        Copy = 0,
        CopyRecursive = 1,
        Delete = 2,
        DeleteDir = 3,
        DeleteWithWildcard = 4,
        CreateDir = 5,
        MultiCopy = 6,
        Merge = 7,
        CopyOrMerge = 8,
        DelayedCopy = 9,
    };

    explicit FileAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool HasReportedUnits() override { return mUnitsReported; }
    bool IsSameAction(const Action* other) override;

    const CStdStr& GetFilePath() const { return mFilePath; }
    const CStdStr& GetTargetPath() const { return mTargetPath; }
    int GetOperation() const { return mOperation; }
    bool GetKeepCompressed() const { return mKeepCompressed; }
    bool GetDoVersionCheck() const { return mDoVersionCheck; }
    bool GetAllowComma() const { return mAllowComma; }
    bool GetWipeOutFolder() const { return mWipeOutFolder; }

    // Where a target of the machine lands in the package folder: "C:\\a\\b" becomes
    // "<package>\\C\\a\\b".
    static CStdStr PackageTarget(const CStdStr& packageFolder, const CStdStr& target);

private:
    // The work of the operation; with `flag` false only the units are counted.
    bool run(bool flag);
    // A run that builds a package: what the operation would place goes below the package
    // folder, and nothing of the machine is deleted.
    bool runForPackage(const CStdStr& packageFolder);

    // `sourceAttributes`: the source's attributes when a folder listing gave them.
    bool simpleCopy(const CStdStr& source, const CStdStr& target, bool flag,
                    std::uint32_t sourceAttributes = 0xFFFFFFFF);
    bool copyWhat(const CStdStr& source, const CStdStr& target, bool flag);
    bool copySomeOrAllFiles(const CStdStr& source, const CStdStr& target, bool flag);
    bool recursivelyCopyWhat(const CStdStr& source, const CStdStr& target, bool flag);
    bool recursivelyCopyAllFiles(const CStdStr& source, const CStdStr& target, bool flag);
    bool recursivelyCopySomeFiles(const CStdStr& source, const CStdStr& target, bool flag);
    bool multiCopyWhat(const CStdStr& source, const CStdStr& target, bool flag);
    bool deleteFile(bool flag);
    bool deleteDirectory(bool flag);
    bool deleteFilesWithWildCard(bool flag);
    bool deleteFilesMatchingWildCard(const CStdStr& path, bool flag);
    bool createDirectory(bool flag);
    bool mergeFiles(const CStdStr& source, const CStdStr& target, bool flag);
    bool copyOrMergeFiles(const CStdStr& source, const CStdStr& target, bool flag);
    bool delayedCopy(const CStdStr& source, const CStdStr& target, bool flag);

    CStdStr mFilePath;
    CStdStr mTargetPath;
    CStdStr mDirPath;
    bool mKeepCompressed = false;
    bool mDoVersionCheck = true;
    bool mWipeOutFolder = true;
    std::int32_t mOperation = Copy;
    bool mUnitsReported = false;
    bool mAllowComma = false;
    CStdStr mFileName;
    // The target folders this run of the action found or made, folded.
    std::unordered_set<std::string> mKnownFolders;
};
