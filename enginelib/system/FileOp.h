// All file work of the engine: copies under a comparison of versions and times, with the
// handling of files in use and their replacement at the next start; deletion, with a list of
// what cannot go yet (zombie mode); folders; and the processes that hold files.
#pragma once

#include "core/CStdStringList.h"
#include "core/SortedList.h"
#include "system/PathObject.h"

#include <cstdint>

class FileOp {
public:
    // Flags of Copy, CopyOnReboot and areFilesDifferent.
    enum CopyFlags {
        CompareVersions = 1,
        CompareTimes = 2,
        SharingMeansInUse = 4,  // a sharing violation (32) is a file in use, as a lock (33) is
        CompareBeforeInUse = 8, // before replacing a file in use, compare again with flags 3
    };
    // Flags of deleteFile and Remove.
    enum DeleteFlags {
        RebootOnAnyError = 1, // errors other than "not found" also go to the reboot path
        RebootOnly = 2,       // do not try now
    };

    static bool IsDirectory(const CStdStr& path);
    static bool IsFile(const CStdStr& path);

    // A new, empty temporary file in the folder of `path` (a file path); empty on failure.
    static CStdStr GetTempFileName(const CStdStr& path);

    // Makes every missing folder of `path`, walking down from its root with
    // SetCurrentDirectory and CreateDirectory; the current folder is restored. A comma in the
    // path is refused. The folders made are added to `created` when it is given.
    static bool MakePath(const CStdStr& path, bool flag, CStdStringList* created = nullptr);
    // Makes the folders of a file's path: everything before its last backslash.
    static bool createPath(const CStdStr& path, bool allowComma = false);

    // -1, 0 or 1 as the last write time of `source` is older than, equal to or newer than that
    // of `dest`; 0 when either cannot be read.
    static int IsNewerTime(const CStdStr& source, const CStdStr& dest);
    // The FileVersion text of the file's first translation; empty without one.
    static CStdStr GetFileVersion(const CStdStr& path);
    // 1, 0 or -1 as the version of `source` is higher than, equal to or lower than that of
    // `dest`, comparing the dotted numbers from the left.
    static int IsNewerVersion(const CStdStr& source, const CStdStr& dest);
    // Whether `source` should replace `dest` under the flags. Any difference counts: an older
    // source is different too.
    static bool areFilesDifferent(const CStdStr& source, const CStdStr& dest, int flags);

    // Copies when the files differ. A destination in use is renamed out of the way, or else
    // replaced at the next start. True also when nothing needed doing.
    static bool Copy(const CStdStr& source, const CStdStr& dest, int flags);
    // Puts a copy beside `dest` now and has it replace `dest` at the next start.
    static bool CopyOnReboot(const CStdStr& source, const CStdStr& dest, int flags);
    // Moves `from` to `to` at the next start, or deletes it there when `to` is null: by
    // MoveFileEx on Windows NT, by WININIT.INI (files) or a batch file (folders) on Windows 9x.
    static bool replaceOnReboot(const CStdStr& from, const CStdStr* to);
    // Adds a del or rmdir line for `path` to the batch file that runs once at the next start.
    static bool addToRebootBatFile(const CStdStr& path);
    // Writes the lines gathered for WININIT.INI at the head of its [Rename] section.
    static bool CommitWinInitFile();

    static bool deleteFile(const CStdStr& path, int flags);
    // True in all cases: what cannot go now goes on the zombie list or to the next start.
    static bool deleteDir(const CStdStr& path);
    // deleteFile for a file, deleteDir for a folder.
    static bool Remove(const CStdStr& path, int flags);
    // Removes the folder when it holds no file; with `recursive` its empty subfolders first.
    // True when the folder is gone.
    static bool RemoveEmptyDir(const CStdStr& path, bool recursive);
    // Removes the folder and everything below it.
    static bool WipeOutDirectory(const CStdStr& path);
    // Tries once more to remove what is on the zombie list. True when the list is empty then.
    static bool RemoveZombieFiles(bool keepEnabled);

    // The id of a running program by its file name ("setup.exe"), through psapi.dll; 0 when
    // none runs.
    static std::uint32_t GetRunningProcessId(const CStdStr& name);
    static bool TerminateProcess(std::uint32_t processId);

    // In zombie mode what cannot be deleted now is remembered for a later attempt.
    static bool IsZombieModeEnabled() { return sZombieEnabled; }
    static void SetZombieMode(bool enabled) { sZombieEnabled = enabled; }
    static const SortedList<PathObject>& GetZombieList() { return sZombieList; }
    // Forgets what waits on the zombie list, without acting on it.
    static void ClearZombieList() { sZombieList.Clear(); }
    static const CStdStringList& GetWinInitLines() { return sWinInitLines; }
    // Back to what a fresh process knows: no zombie mode, nothing deferred, no restart lines.
    static void ResetRunState();

    static std::uint32_t GetLastError() { return sLastError; }

private:
    static bool makePath(const CStdStr& path, bool flag, CStdStringList* created, bool allowComma);
    // 2 when the folder holds nothing but "." and "..", 1 when it holds more, 0 on an error.
    static int isDirPrettyMuchEmpty(const CStdStr& path);

    static bool sZombieEnabled;
    static std::uint32_t sLastError;
    static SortedList<PathObject> sZombieList;
    static CStdStringList sWinInitLines;
};
