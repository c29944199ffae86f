#include "system/PathObject.h"

#include "os/Files.h"
#include "system/DebugLogger.h"

#include <vector>

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

// "C:", "C:\", "\" and "\\server\share" are roots: nothing above them.
bool IsRoot(const CStdStr& directory) {
    if (directory == "\\" || (directory.size() == 2 && directory[1] == ':') ||
        (directory.size() == 3 && directory[1] == ':' && directory[2] == '\\')) {
        return true;
    }
    if (directory.rfind("\\\\", 0) == 0) {
        int server = directory.Find('\\', 2);
        return server < 0 || directory.Find('\\', server + 1) < 0;
    }
    return false;
}

} // namespace

PathObject::PathObject(const CStdStr& path) {
    CStdStr text = path;
    text.TrimLeft();
    int last = -1;
    for (int i = 0; i < text.GetLength(); ++i) {
        if (IsSeparator(text[static_cast<size_t>(i)])) {
            last = i;
        }
    }
    if (last < 0 && text.size() >= 2 && text[1] == ':') {
        // "C:name" has a drive and no folder.
        SetDirectory(text.Left(2));
        mName = text.Mid(2);
        return;
    }
    SetDirectory(text.Left(last + 1));
    mName = text.Mid(last + 1);
}

void PathObject::SetDirectory(const CStdStr& path) {
    CStdStr text = path;
    text.Replace('/', '\\');
    bool unc = text.rfind("\\\\", 0) == 0;
    while (text.size() > 1 && text.back() == '\\') {
        if (text.size() == 3 && text[1] == ':') {
            break; // "C:\" keeps its backslash
        }
        if (unc && text.size() <= 2) {
            break;
        }
        text.pop_back();
    }
    mDirectory = text;
}

void PathObject::AppendDirectory(const CStdStr& part) {
    CStdStr tail = part;
    tail.Replace('/', '\\');
    if (!tail.empty() && tail[0] == '\\') {
        tail = tail.Mid(1);
    }
    if (tail.empty()) {
        return;
    }
    if (mDirectory.empty()) {
        SetDirectory(tail);
    } else if (mDirectory.back() == '\\') {
        SetDirectory(mDirectory + tail);
    } else {
        SetDirectory(mDirectory + "\\" + tail);
    }
}

CStdStr PathObject::GetBaseName() const {
    int dot = mName.ReverseFind('.');
    return dot < 0 ? mName : mName.Left(dot);
}

CStdStr PathObject::GetExtension() const {
    int dot = mName.ReverseFind('.');
    return dot < 0 ? CStdStr() : mName.Mid(dot + 1);
}

CStdStr PathObject::GetFullPath() const {
    if (mName.empty()) {
        return mDirectory;
    }
    if (mDirectory.empty()) {
        return mName;
    }
    if (mDirectory.back() == '\\' || (mDirectory.size() == 2 && mDirectory[1] == ':')) {
        return mDirectory + mName;
    }
    return mDirectory + "\\" + mName;
}

CStdStr PathObject::GetFullPathWithShortName() const {
    CStdStr longPath = GetFullPath();
    std::string shortPath;
    os::Error rc = os::GetShortPathName(longPath, shortPath);
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "Error %d while retriving shortname of %s.", static_cast<int>(rc),
                   longPath.c_str());
        return longPath;
    }
    return shortPath;
}

void PathObject::GoUp() {
    if (IsRoot(mDirectory)) {
        return;
    }
    int cut = mDirectory.ReverseFind('\\');
    if (cut < 0) {
        mDirectory.clear();
    } else if (cut == 2 && mDirectory[1] == ':') {
        mDirectory = mDirectory.Left(3);
    } else if (cut == 0) {
        mDirectory = "\\";
    } else {
        mDirectory = mDirectory.Left(cut);
    }
}

bool PathObject::Exists() const {
    CStdStr path = GetFullPath();
    if (path.empty()) {
        return false;
    }
    if (mName.FindOneOf("*?") >= 0) {
        std::vector<os::FindData> found;
        return os::FindFiles(path, found) == os::error::Success;
    }
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success;
}

bool operator<(const PathObject& a, const PathObject& b) {
    int directory = CStdStr::CompareNoCase(a.mDirectory, b.mDirectory);
    if (directory != 0) {
        return directory < 0;
    }
    return CStdStr::CompareNoCase(a.mName, b.mName) < 0;
}

bool operator==(const PathObject& a, const PathObject& b) {
    return a.mDirectory.EqualsNoCase(b.mDirectory) && a.mName.EqualsNoCase(b.mName);
}
