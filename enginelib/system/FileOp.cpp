#include "system/FileOp.h"

#include "core/RebootAlert.h"
#include "os/Files.h"
#include "os/Process.h"
#include "os/ProcessStatus.h"
#include "os/Processes.h"
#include "os/Versions.h"
#include "script/SystemPath.h"
#include "script/TextFile.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/FileFinder.h"
#include "system/LogScope.h"
#include "system/Registry.h"

#include <cstdlib>

bool FileOp::sZombieEnabled = false;
std::uint32_t FileOp::sLastError = 0;
SortedList<PathObject> FileOp::sZombieList;
CStdStringList FileOp::sWinInitLines;

namespace {

const char* const kComponent = "FileOp";
constexpr std::uint32_t kMask = 0x1101;
// The prefix of the engine's temporary files.
const char* const kTempPrefix = "LZ";
const char* const kBatchFileName = "unsttmp0.bat";
const char* const kRunOnceKey = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
const char* const kRunOnceValue = "unsttmp0";

// The root of a path, kept as it is by MakePath: "C:\", "\\server\share\", or "\".
size_t RootLength(const CStdStr& path) {
    if (path.size() >= 2 && path[1] == ':') {
        return path.size() >= 3 && path[2] == '\\' ? 3 : 2;
    }
    if (path.rfind("\\\\", 0) == 0) {
        int server = path.Find('\\', 2);
        int share = server < 0 ? -1 : path.Find('\\', server + 1);
        return share < 0 ? path.size() : static_cast<size_t>(share) + 1;
    }
    return path.rfind("\\", 0) == 0 ? 1 : 0;
}

CStdStr WithoutTrailingBackslash(const CStdStr& path) {
    CStdStr text = path;
    while (text.size() > 3 && text.back() == '\\') {
        text.pop_back();
    }
    return text;
}

CStdStr Child(const CStdStr& folder, const CStdStr& name) {
    if (!folder.empty() && folder.back() == '\\') {
        return folder + name;
    }
    return folder + "\\" + name;
}

// The short form of a path for the files that Windows 9x reads at its start; the path as it
// is when it has none.
CStdStr ShortName(const CStdStr& path) {
    std::string shortPath;
    if (os::GetShortPathName(path, shortPath) == os::error::Success && shortPath.size() < 250) {
        return shortPath;
    }
    // A file that does not exist yet: the short form of its folder and its own name.
    PathObject object(path);
    if (object.IsFile() &&
        os::GetShortPathName(object.GetDirectory(), shortPath) == os::error::Success) {
        return Child(shortPath, object.GetName());
    }
    return path;
}

bool ReadLines(const CStdStr& path, CStdStringList& lines) {
    lines.clear();
    TextFile file;
    if (!file.Open(path, TextFile::Read, TextFile::Detect)) {
        return false;
    }
    CStdStr line;
    while (file.ReadString(line)) {
        lines.Add(line);
    }
    return true;
}

bool WriteLines(const CStdStr& path, const CStdStringList& lines) {
    TextFile file;
    if (!file.Open(path, TextFile::Write, TextFile::SingleByte)) {
        return false;
    }
    bool ok = true;
    for (const CStdStr& line : lines) {
        ok = file.WriteString(line + "\n") && ok;
    }
    file.Close();
    return ok;
}

} // namespace

bool FileOp::IsDirectory(const CStdStr& path) {
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success &&
           (attributes & os::attr::Directory) != 0;
}

bool FileOp::IsFile(const CStdStr& path) {
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success &&
           (attributes & os::attr::Directory) == 0;
}

CStdStr FileOp::GetTempFileName(const CStdStr& path) {
    CStdStr folder = PathObject(path).GetDirectory();
    std::string temp;
    os::Error rc = os::GetTempFileName(folder.empty() ? CStdStr(".") : folder, kTempPrefix, temp);
    if (rc != os::error::Success) {
        sLastError = rc;
        ENGINE_LOG(0, "GetTempFileName in directory %s failed errCode:%d", folder.c_str(),
                   static_cast<int>(rc));
        return CStdStr();
    }
    return temp;
}

bool FileOp::MakePath(const CStdStr& path, bool flag, CStdStringList* created) {
    return makePath(path, flag, created, false);
}

bool FileOp::makePath(const CStdStr& path, bool flag, CStdStringList* created, bool allowComma) {
    LogScope scope(kComponent, "FileOp::MakePath", kMask);
    scope.Log(kMask, "path:%s, flag:%d", path.c_str(), flag ? 1 : 0);
    if (!allowComma && path.Find(',') >= 0) {
        scope.Log(0, "Invalid MakePath request with comma(,)in path %s", path.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr text = path;
    text.Replace('/', '\\');
    std::string saved;
    os::GetCurrentDirectory(saved);
    size_t position = RootLength(text);
    bool ok = true;
    while (ok && position < text.size()) {
        size_t next = text.find('\\', position);
        size_t end = next == std::string::npos ? text.size() : next;
        CStdStr level = text.Left(static_cast<int>(end));
        position = end + 1;
        if (end == 0 || text[end - 1] == '\\') {
            continue; // an empty name between two backslashes
        }
        if (os::SetCurrentDirectory(level) == os::error::Success) {
            continue;
        }
        os::Error rc = os::CreateDirectory(level);
        if (rc != os::error::Success) {
            sLastError = rc;
            scope.Log(0, "CreateDirectory(%s) failed- ErrCode:%d", level.c_str(),
                      static_cast<int>(rc));
            ok = false;
            break;
        }
        if (created != nullptr && flag) {
            created->Add(level);
        }
        rc = os::SetCurrentDirectory(level);
        if (rc != os::error::Success) {
            sLastError = rc;
            scope.Log(0, "SetCurrentDirectory(%s) failed- ErrCode:%d", level.c_str(),
                      static_cast<int>(rc));
            ok = false;
        }
    }
    if (!saved.empty()) {
        os::SetCurrentDirectory(saved);
    }
    scope.SetResult(ok);
    return ok;
}

bool FileOp::createPath(const CStdStr& path, bool allowComma) {
    CStdStr folder = PathObject(path).GetDirectory();
    if (folder.empty() || IsDirectory(folder)) {
        return true;
    }
    if (!makePath(folder, false, nullptr, allowComma)) {
        ENGINE_LOG(0, "could not create path %s.", path.c_str());
        return false;
    }
    return true;
}

int FileOp::IsNewerTime(const CStdStr& source, const CStdStr& dest) {
    LogScope scope(kComponent, "FileOp::IsNewerTime", kMask);
    auto lastWrite = [&scope](const CStdStr& path, os::FileTime& time) {
        os::FileTimes times;
        os::Error rc = os::GetFileTime(path, times);
        if (rc != os::error::Success) {
            sLastError = rc;
            scope.Log(0, "could not get file time for %s", path.c_str());
            return false;
        }
        time = times.lastWrite;
        return true;
    };
    os::FileTime sourceTime;
    os::FileTime destTime;
    if (!lastWrite(source, sourceTime) || !lastWrite(dest, destTime)) {
        scope.SetResult(0);
        return 0;
    }
    int result = sourceTime < destTime ? -1 : destTime < sourceTime ? 1 : 0;
    scope.SetResult(result);
    return result;
}

CStdStr FileOp::GetFileVersion(const CStdStr& path) {
    LogScope scope(kComponent, "FileOp::GetFileVersion", kMask);
    std::uint32_t size = 0;
    os::Error rc = os::GetFileVersionInfoSize(path, size);
    if (rc != os::error::Success || size == 0) {
        sLastError = rc;
        scope.Log(kMask, "GetFileVersionInfoSize is zero ");
        return CStdStr();
    }
    os::VersionBlock block;
    rc = os::GetFileVersionInfo(path, block);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "FAILED TO GetFileVersionInfo from File: %s", path.c_str());
        return CStdStr();
    }
    std::vector<os::VersionTranslation> translations;
    rc = os::VerQueryValue(block, "\\VarFileInfo\\Translation", translations);
    if (rc != os::error::Success || translations.empty()) {
        sLastError = rc;
        scope.Log(0, "FAILED TO VerQueryValue from File: %s", path.c_str());
        return CStdStr();
    }
    // The translation is stored language first; the table's name puts the language in front.
    unsigned long table =
            (static_cast<unsigned long>(translations[0].language) << 16) | translations[0].codePage;
    CStdStr section;
    section.Format("\\StringFileInfo\\%08lx\\FileVersion", table);
    std::string version;
    rc = os::VerQueryValue(block, section, version);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "FAILED TO READ VERSION from Secion: %s %s", section.c_str(), path.c_str());
        return CStdStr();
    }
    scope.SetResult(CStdStr(version));
    return version;
}

int FileOp::IsNewerVersion(const CStdStr& source, const CStdStr& dest) {
    LogScope scope(kComponent, "FileOp::IsNewerVersion", kMask);
    CStdStringList sourceItems = Tokenizer::Split(GetFileVersion(source), '.');
    CStdStringList destItems = Tokenizer::Split(GetFileVersion(dest), '.');
    int result = 0;
    for (size_t i = 0;; ++i) {
        if (i >= sourceItems.size()) {
            result = i < destItems.size() ? -1 : 0;
            break;
        }
        if (i >= destItems.size()) {
            result = 1;
            break;
        }
        long sourceNumber = std::strtol(sourceItems[i].c_str(), nullptr, 10);
        long destNumber = std::strtol(destItems[i].c_str(), nullptr, 10);
        if (sourceNumber != destNumber) {
            result = sourceNumber > destNumber ? 1 : -1;
            break;
        }
    }
    scope.Log(kMask, result > 0   ? "Source version> Dest Version"
                     : result < 0 ? "Source version< Dest Version"
                                  : "Source version==Dest Version");
    scope.SetResult(result);
    return result;
}

bool FileOp::areFilesDifferent(const CStdStr& source, const CStdStr& dest, int flags) {
    LogScope scope(kComponent, "FileOp::areFilesDifferent", kMask);
    scope.Log(kMask, "source:%s, dest:%s, flags:%d", source.c_str(), dest.c_str(), flags);
    bool different = false;
    if ((flags & (CompareVersions | CompareTimes)) == 0) {
        different = true;
    } else if (!PathObject(dest).Exists()) {
        different = true;
    } else if ((flags & CompareVersions) != 0 && IsNewerVersion(source, dest) != 0) {
        different = true;
    } else if ((flags & CompareTimes) != 0 && IsNewerTime(source, dest) != 0) {
        different = true;
    }
    scope.SetResult(different);
    return different;
}

bool FileOp::Copy(const CStdStr& source, const CStdStr& dest, int flags) {
    LogScope scope("FileAction", "FileOp::Copy", kMask);
    scope.Log(kMask, "source:%s, dest:%s, flags:%d", source.c_str(), dest.c_str(), flags);
    auto finish = [&scope](bool result) {
        scope.SetResult(result);
        return result;
    };
    if (!areFilesDifferent(source, dest, flags)) {
        return finish(true);
    }
    os::Error rc = os::CopyFile(source, dest, false);
    if (rc == os::error::Success) {
        return finish(true);
    }
    sLastError = rc;
    bool inUse = rc == os::error::LockViolation ||
                 (rc == os::error::SharingViolation && (flags & SharingMeansInUse) != 0);
    if (!inUse) {
        scope.Log(0, "CopyFile failed-ErrCode:%d", static_cast<int>(rc));
        return finish(false);
    }
    if ((flags & CompareBeforeInUse) != 0 &&
        !areFilesDifferent(source, dest, CompareVersions | CompareTimes)) {
        return finish(false);
    }
    scope.Log(kMask, "Destination file %s is in use.  Trying to rename it...", dest.c_str());
    CStdStr temp = GetTempFileName(dest);
    if (!temp.empty()) {
        os::DeleteFile(temp);
    }
    rc = temp.empty() ? os::error::InvalidParameter : os::MoveFile(dest, temp);
    if (rc == os::error::Success) {
        rc = os::CopyFile(source, dest, false);
        if (rc == os::error::Success) {
            // The renamed file may still be held: then it goes at the next start.
            deleteFile(temp, 0);
            return finish(true);
        }
        sLastError = rc;
        scope.Log(0, "second CopyFile try failed with code %d", static_cast<int>(rc));
        // The old file goes back under its name rather than stay hidden as a temporary file.
        os::MoveFile(temp, dest);
        return finish(false);
    }
    sLastError = rc;
    scope.Log(kMask, "Replacing %s with %s after reboot.", dest.c_str(), source.c_str());
    rc = temp.empty() ? os::error::InvalidParameter : os::CopyFile(source, temp, false);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "Third CopyFile failed-ErrCode:%d", static_cast<int>(rc));
        return finish(false);
    }
    replaceOnReboot(temp, &dest);
    scope.Log(1, "Reboot Required: To replace locked file.");
    RebootAlert::Set();
    return finish(true);
}

bool FileOp::CopyOnReboot(const CStdStr& source, const CStdStr& dest, int flags) {
    LogScope scope(kComponent, "FileOp::CopyOnReboot", kMask);
    if (!areFilesDifferent(source, dest, flags)) {
        scope.SetResult(true);
        return true;
    }
    CStdStr temp = GetTempFileName(dest);
    if (!temp.empty()) {
        os::DeleteFile(temp);
    }
    os::Error rc = temp.empty() ? os::error::InvalidParameter : os::CopyFile(source, temp, false);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "CopyFile (%s) Failed-ErrCode:%d", source.c_str(), static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    bool ok = replaceOnReboot(temp, &dest);
    scope.SetResult(ok);
    return ok;
}

bool FileOp::replaceOnReboot(const CStdStr& from, const CStdStr* to) {
    LogScope scope(kComponent, "FileOp::replaceOnReboot", kMask);
    scope.Log(kMask, "Attempting to move %s to %s on reboot.", from.c_str(),
              to != nullptr ? to->c_str() : "NULL");
    // Without "replace existing" the system would not move onto a file that is there at its
    // start, and a file in use is always there.
    std::uint32_t moveFlags =
            os::movefile::DelayUntilReboot | (to != nullptr ? os::movefile::ReplaceExisting : 0);
    os::Error rc = os::MoveFileEx(from, to != nullptr ? *to : CStdStr(), moveFlags);
    if (rc == os::error::Success) {
        scope.Log(kMask, "Reboot Required: To replace locked file. (MoveFileEx call)");
        RebootAlert::Set();
        scope.SetResult(true);
        return true;
    }
    // Windows 9x cannot move at the next start: WININIT.INI does it for files, a batch file
    // run once for folders.
    sLastError = rc;
    if (IsDirectory(from)) {
        bool ok = addToRebootBatFile(from);
        if (ok) {
            RebootAlert::Set();
        }
        scope.SetResult(ok);
        return ok;
    }
    CStdStr line;
    line.Format("%s=%s", to != nullptr ? ShortName(*to).c_str() : "NUL", ShortName(from).c_str());
    sWinInitLines.Add(line);
    scope.Log(kMask, "Reboot Required: To replace file on reboot. (wininit.ini change)");
    RebootAlert::Set();
    scope.SetResult(true);
    return true;
}

bool FileOp::addToRebootBatFile(const CStdStr& path) {
    LogScope scope(kComponent, "FileOp::addToRebootBatFile", kMask);
    CStdStr batch = Child(SystemPath(SystemPath::TempFolder).GetFullPath(), kBatchFileName);
    CStdStringList lines;
    ReadLines(batch, lines);
    while (!lines.empty() && CStdStr(lines.back()).Trim().empty()) {
        lines.pop_back();
    }
    CStdStr target = WithoutTrailingBackslash(path);
    CStdStr line;
    line.Format(IsDirectory(target) ? "rmdir \"%s\"" : "del \"%s\"", target.c_str());
    // The batch file deletes itself in its last line; what is added goes before that.
    CStdStr last = lines.empty() ? CStdStr() : CStdStr(lines.back()).Trim();
    if (!lines.empty() && last.Left(3).EqualsNoCase("del") && last.Find(kBatchFileName) >= 0) {
        lines.insert(lines.end() - 1, line);
    } else {
        lines.Add(line);
        lines.Add(CStdStr::Formatted("del \"%s\"", batch.c_str()));
    }
    if (!WriteLines(batch, lines)) {
        scope.Log(0, "file %s could not be saved.", batch.c_str());
        scope.SetResult(false);
        return false;
    }
    std::string windows;
    os::GetWindowsDirectory(windows);
    Registry registry;
    bool ok = registry.WriteValue(
            "HKLM", kRunOnceKey, kRunOnceValue,
            RegistryValue::String(Child(windows, "command.com") + " " + ShortName(batch)));
    scope.SetResult(ok);
    return ok;
}

bool FileOp::CommitWinInitFile() {
    LogScope scope(kComponent, "FileOp::CommitWinInitFile", kMask);
    if (sWinInitLines.empty()) {
        scope.SetResult(true);
        return true;
    }
    std::string windows;
    os::GetWindowsDirectory(windows);
    CStdStr path = Child(windows, "WinInit.INI");
    CStdStringList lines;
    ReadLines(path, lines);
    CStdStringList result;
    bool inserted = false;
    for (const CStdStr& line : lines) {
        result.Add(line);
        if (!inserted && CStdStr(line).Trim().EqualsNoCase("[Rename]")) {
            result.insert(result.end(), sWinInitLines.begin(), sWinInitLines.end());
            inserted = true;
        }
    }
    if (!inserted) {
        result.Add("[Rename]");
        result.insert(result.end(), sWinInitLines.begin(), sWinInitLines.end());
    }
    sWinInitLines.clear();
    if (!WriteLines(path, result)) {
        scope.Log(0, "could not open %s for writing.", path.c_str());
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool FileOp::deleteFile(const CStdStr& path, int flags) {
    LogScope scope(kComponent, "FileOp::deleteFile", 0x201101);
    scope.Log(0x201101, "path:%s, flags:%d", path.c_str(), flags);
    std::uint32_t attributes = 0;
    if (os::GetFileAttributes(path, attributes) == os::error::Success &&
        (attributes & os::attr::ReadOnly) != 0) {
        std::uint32_t cleared = attributes & ~os::attr::ReadOnly;
        os::SetFileAttributes(path, cleared == 0 ? os::attr::Normal : cleared);
    }
    if ((flags & RebootOnly) == 0) {
        os::Error rc = os::DeleteFile(path);
        if (rc == os::error::Success) {
            scope.SetResult(true);
            return true;
        }
        sLastError = rc;
        bool missing = rc == os::error::FileNotFound || rc == os::error::PathNotFound;
        if (missing && (flags & RebootOnAnyError) == 0) {
            scope.SetResult(true);
            return true;
        }
    }
    bool ok = true;
    if (sZombieEnabled) {
        scope.Log(0x201101, "Adding %s to zombi list", path.c_str());
        sZombieList.Add(PathObject(path));
    } else {
        ok = replaceOnReboot(path, nullptr);
    }
    scope.SetResult(ok);
    return ok;
}

int FileOp::isDirPrettyMuchEmpty(const CStdStr& path) {
    FileFinder finder(Child(path, "*"));
    if (finder.IsEnd() && finder.GetError() != os::error::FileNotFound) {
        return 0;
    }
    for (; !finder.IsEnd(); finder.Next()) {
        if (!finder.IsDots()) {
            return 1;
        }
    }
    return 2;
}

bool FileOp::deleteDir(const CStdStr& path) {
    LogScope scope(kComponent, "FileOp::deleteDir", kMask);
    CStdStr folder = WithoutTrailingBackslash(path);
    if (sZombieEnabled) {
        switch (isDirPrettyMuchEmpty(folder)) {
        case 1:
            scope.Log(kMask, "FileOp::deleteDir(): adding %s to zombi list (it's not empty)",
                      folder.c_str());
            sZombieList.Add(PathObject(folder));
            break;
        case 2: {
            os::Error rc = os::RemoveDirectory(folder);
            if (rc != os::error::Success && rc != os::error::FileNotFound) {
                sLastError = rc;
                scope.Log(0, "RemoveDirectory(%s) failed-ErrCode:%d", folder.c_str(),
                          static_cast<int>(rc));
            }
            break;
        }
        default:
            scope.Log(0, "isDirPrettyMuchEmpty() messed up");
            break;
        }
        scope.SetResult(true);
        return true;
    }
    os::Error rc = os::RemoveDirectory(folder);
    if (rc != os::error::Success && rc != os::error::FileNotFound) {
        sLastError = rc;
        if (rc == os::error::DirNotEmpty) {
            scope.Log(0, "FileOp::deleteDir(): %s was not empty", folder.c_str());
        }
        CStdStr withBackslash = folder + "\\";
        replaceOnReboot(withBackslash, nullptr);
    }
    scope.SetResult(true);
    return true;
}

bool FileOp::Remove(const CStdStr& path, int flags) {
    LogScope scope(kComponent, "FileOp::Remove", kMask);
    bool ok = true;
    if (IsFile(path)) {
        ok = deleteFile(path, flags);
    } else if (IsDirectory(path)) {
        ok = deleteDir(path);
    } else {
        scope.Log(kMask, "nothin' from nothin' leaves nothin'!");
    }
    scope.SetResult(ok);
    return ok;
}

bool FileOp::RemoveEmptyDir(const CStdStr& path, bool recursive) {
    LogScope scope(kComponent, "FileOp::RemoveEmptyDir", kMask);
    scope.Log(kMask, "directoryName - %s,recursive:%d", path.c_str(), recursive ? 1 : 0);
    CStdStr folder = WithoutTrailingBackslash(path);
    if (!IsDirectory(folder)) {
        scope.Log(0, "Parameter must be a directory!  Passed: %s", path.c_str());
        scope.SetResult(false);
        return false;
    }
    // A subfolder that stays counts as content, as a file does.
    bool fileExists = false;
    for (FileFinder finder(Child(folder, "*")); !finder.IsEnd(); finder.Next()) {
        if (finder.IsDots()) {
            continue;
        }
        if (!finder.IsDirectory() || !recursive ||
            !RemoveEmptyDir(Child(folder, finder.GetCurrent()), true)) {
            fileExists = true;
        }
    }
    if (fileExists) {
        scope.Log(kMask, "Remove not called as fileExists=true,for Directory: %s ", folder.c_str());
        scope.SetResult(false);
        return false;
    }
    Remove(folder, 0);
    bool gone = !IsDirectory(folder);
    scope.SetResult(gone);
    return gone;
}

bool FileOp::WipeOutDirectory(const CStdStr& path) {
    LogScope scope(kComponent, "FileOp::WipeOutDirectory", kMask);
    scope.Log(kMask, "directoryName - %s", path.c_str());
    CStdStr folder = WithoutTrailingBackslash(path);
    if (!IsDirectory(folder)) {
        scope.Log(0, "the parameter must be a directory!  Passed: %s", path.c_str());
        scope.SetResult(false);
        return false;
    }
    bool ok = true;
    for (FileFinder finder(Child(folder, "*")); !finder.IsEnd(); finder.Next()) {
        if (finder.IsDots()) {
            continue;
        }
        CStdStr child = Child(folder, finder.GetCurrent());
        ok = (finder.IsDirectory() ? WipeOutDirectory(child) : Remove(child, 0)) && ok;
    }
    ok = Remove(folder, 0) && ok;
    scope.SetResult(ok);
    return ok;
}

void FileOp::ResetRunState() {
    sZombieEnabled = false;
    sZombieList.Clear();
    sWinInitLines.clear();
    sLastError = 0;
}

bool FileOp::RemoveZombieFiles(bool keepEnabled) {
    LogScope scope(kComponent, "FileOp::RemoveZombieFiles", kMask);
    SortedList<PathObject> zombies = sZombieList;
    sZombieList.Clear();
    bool wasEnabled = sZombieEnabled;
    if (!keepEnabled) {
        sZombieEnabled = false;
    }
    scope.Log(kMask, "Deleting files and directories...");
    // From the end: a folder sorts before what it holds, and so goes after it.
    for (size_t i = zombies.Size(); i > 0; --i) {
        Remove(zombies[i - 1].GetFullPath(), 0);
    }
    sZombieEnabled = wasEnabled;
    scope.Log(kMask, "FileOp::RemoveZombiFiles(): done.");
    bool empty = sZombieList.IsEmpty();
    scope.SetResult(empty);
    return empty;
}

std::uint32_t FileOp::GetRunningProcessId(const CStdStr& name) {
    LogScope scope(kComponent, "FileOp::GetRunningProcessId", kMask);
    if (!os::CanLoadLibrary("PSAPI.DLL")) {
        scope.Log(0, "Could not load PSPAPI.DLL");
        scope.SetResult(0);
        return 0;
    }
    std::vector<std::uint32_t> ids;
    os::Error rc = os::EnumProcesses(ids);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "Could not Open Processes Win32Err:%d", static_cast<int>(rc));
        scope.SetResult(0);
        return 0;
    }
    CStdStr wanted = PathObject(name).GetName();
    for (std::uint32_t id : ids) {
        std::string baseName;
        if (os::GetModuleBaseName(id, baseName) == os::error::Success &&
            wanted.EqualsNoCase(baseName)) {
            scope.Log(kMask, "Return Process:%d for %s", static_cast<int>(id), name.c_str());
            scope.SetResult(static_cast<int>(id));
            return id;
        }
    }
    scope.SetResult(0);
    return 0;
}

bool FileOp::TerminateProcess(std::uint32_t processId) {
    LogScope scope(kComponent, "FileOp::TerminateProcess", kMask);
    os::Error rc = os::TerminateProcess(processId, 0);
    if (rc != os::error::Success) {
        sLastError = rc;
        scope.Log(0, "TerminateProcess failed,Win32ErrCode: %d ", static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}
