#include "sim/PathMapper.h"

#include "sim/Text.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <vector>

namespace sim {

namespace fs = std::filesystem;

namespace {

// Indexes kept at once; past it the least recent half is dropped.
constexpr size_t kMaxIndexedFolders = 512;

std::string JoinHost(const std::string& dir, const std::string& name) {
    if (!dir.empty() && dir.back() == '/') {
        return dir + name;
    }
    return dir + "/" + name;
}

std::string ParentOf(const std::string& hostPath) {
    auto slash = hostPath.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : hostPath.substr(0, slash);
}

std::string RealPath(const std::string& path) {
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) != nullptr ? std::string(resolved) : std::string();
}

bool IsInside(const std::string& path, const std::string& root) {
    if (root == "/") {
        return !path.empty() && path[0] == '/';
    }
    return path == root || path.rfind(root + "/", 0) == 0;
}

std::string Upper(char letter) {
    return std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(letter))));
}

} // namespace

void PathMapper::SetDrive(char letter, const std::string& hostRoot) {
    mDrives[Upper(letter)[0]] = hostRoot;
}

bool PathMapper::HasDrive(char letter) const {
    return mDrives.count(Upper(letter)[0]) != 0;
}

std::string PathMapper::DriveRoot(char letter) const {
    auto found = mDrives.find(Upper(letter)[0]);
    return found == mDrives.end() ? std::string() : found->second;
}

FolderIndex* PathMapper::index(const std::string& hostDir) const {
    struct stat info;
    if (::stat(hostDir.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return nullptr;
    }
    return index(hostDir, info);
}

FolderIndex* PathMapper::index(const std::string& hostDir, const struct stat& info) const {
    auto found = mFolders.find(hostDir);
    if (found != mFolders.end() && found->second.Fresh(info)) {
        return &found->second;
    }
    if (found == mFolders.end()) {
        if (mFolders.size() >= kMaxIndexedFolders) {
            mFolders.clear();
        }
        found = mFolders.emplace(hostDir, FolderIndex()).first;
        found->second.KeepShortNames(!mKeepUnder.empty() && IsInside(hostDir, mKeepUnder));
    }
    if (!found->second.Read(hostDir, info)) {
        mFolders.erase(found);
        return nullptr;
    }
    return &found->second;
}

std::optional<std::string> PathMapper::FindChild(const std::string& hostDir,
                                                 const std::string& name) const {
    FolderIndex* folder = index(hostDir);
    return folder != nullptr ? folder->Find(name) : std::nullopt;
}

std::vector<std::pair<std::string, std::string>>
PathMapper::List(const std::string& hostDir) const {
    FolderIndex* folder = index(hostDir);
    if (folder == nullptr) {
        return {};
    }
    auto names = folder->NamesWithShortNames();
    if (mUpperShortNames) {
        for (auto& [name, shortName] : names) {
            shortName = FoldName(shortName);
        }
    }
    return names;
}

std::string PathMapper::ShortNameOf(const std::string& hostDir, const std::string& name) const {
    FolderIndex* folder = index(hostDir);
    std::string shortName = folder != nullptr ? folder->ShortNameOf(name) : std::string();
    if (shortName.empty()) {
        shortName = name;
    }
    return mUpperShortNames ? FoldName(shortName) : shortName;
}

void PathMapper::Added(const std::string& hostPath) const {
    changed(hostPath, true);
}

void PathMapper::Removed(const std::string& hostPath) const {
    changed(hostPath, false);
}

void PathMapper::changed(const std::string& hostPath, bool added) const {
    std::string dir = ParentOf(hostPath);
    auto found = mFolders.find(dir);
    if (found == mFolders.end()) {
        return;
    }
    struct stat info;
    if (::stat(dir.c_str(), &info) != 0) {
        mFolders.erase(found);
        return;
    }
    std::string name = hostPath.substr(hostPath.rfind('/') + 1);
    if (added) {
        found->second.Add(name, info);
    } else {
        found->second.Remove(name, info);
    }
}

bool PathMapper::LinkStaysInside(const std::string& linkPath, const std::string& driveRoot) {
    std::string target = RealPath(linkPath);
    std::string root = RealPath(driveRoot);
    return !target.empty() && !root.empty() && IsInside(target, root);
}

os::Error PathMapper::Locate(const WindowsPath& path, HostLocation& out) const {
    out = HostLocation();
    if (path.kind != WindowsPath::Kind::Drive || !HasDrive(path.drive)) {
        return os::error::PathNotFound;
    }
    const std::string root = DriveRoot(path.drive);
    std::string host = root;
    struct stat info;
    if (::stat(host.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        // A mapped drive whose folder is gone is a drive with no medium.
        return os::error::NotReady;
    }
    bool isDirectory = true;
    bool existing = true;
    for (size_t i = 0; i < path.parts.size(); ++i) {
        bool last = i + 1 == path.parts.size();
        if (existing) {
            if (last) {
                out.parentExists = isDirectory;
            }
            std::optional<std::string> child;
            if (isDirectory) {
                FolderIndex* folder = index(host, info);
                child = folder != nullptr ? folder->Find(path.parts[i]) : std::nullopt;
            }
            if (child) {
                host = JoinHost(host, *child);
                existing = ::lstat(host.c_str(), &info) == 0;
                if (existing && S_ISLNK(info.st_mode)) {
                    bool inside = LinkStaysInside(host, root);
                    if (!inside && !last) {
                        return kLinkLeavesDrive;
                    }
                    out.isLink = last;
                    out.linkLeavesDrive = last && !inside;
                    // A link that leads nowhere is still an entry of its folder.
                    if (::stat(host.c_str(), &info) != 0) {
                        info.st_mode = S_IFLNK;
                    }
                }
                isDirectory = existing && S_ISDIR(info.st_mode);
                continue;
            }
            existing = false;
        }
        host = JoinHost(host, path.parts[i]);
    }
    out.hostPath = host;
    out.exists = existing;
    out.isDirectory = existing && isDirectory;
    out.isSpecial = existing && !path.parts.empty() && !S_ISDIR(info.st_mode) &&
                    !S_ISREG(info.st_mode) && !out.linkLeavesDrive;
    if (path.parts.empty()) {
        out.parentExists = true;
    }
    return os::error::Success;
}

std::optional<std::string> PathMapper::ToMachinePath(const std::string& hostPath) const {
    std::error_code ignored;
    fs::path absolute = fs::absolute(fs::path(hostPath), ignored).lexically_normal();
    std::string text = absolute.string();
    if (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    char bestDrive = 0;
    size_t bestLength = 0;
    for (const auto& [letter, root] : mDrives) {
        std::string normalRoot = fs::path(root).lexically_normal().string();
        while (normalRoot.size() > 1 && normalRoot.back() == '/') {
            normalRoot.pop_back();
        }
        size_t length = normalRoot == "/" ? 0 : normalRoot.size();
        bool better =
                bestDrive == 0 || length > bestLength || (length == bestLength && letter < 'Z');
        if (IsInside(text, normalRoot) && better) {
            bestDrive = letter;
            bestLength = length;
        }
    }
    if (bestDrive == 0) {
        return std::nullopt;
    }
    std::string rest = text.substr(bestLength);
    std::replace(rest.begin(), rest.end(), '/', '\\');
    if (rest.empty() || rest[0] != '\\') {
        rest = "\\" + rest;
    }
    return std::string(1, bestDrive) + ":" + rest;
}

} // namespace sim
