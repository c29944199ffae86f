#include "system/FileOp.h"

#include "os/Files.h"
#include "os/Process.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

bool FileOp::sZombieEnabled = false;
std::uint32_t FileOp::sLastError = 0;

namespace {

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

bool FileOp::MakePath(const CStdStr& path, bool flag, CStdStringList* created) {
    LogScope scope("FileOp", "FileOp::MakePath", 0x1101);
    scope.Log(0x1101, "path:%s, flag:%d", path.c_str(), flag ? 1 : 0);
    if (path.Find(',') >= 0) {
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
