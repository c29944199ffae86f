#include "sim/PathMapper.h"

#include "sim/ShortNames.h"
#include "sim/Text.h"

#include <algorithm>
#include <dirent.h>
#include <filesystem>
#include <sys/stat.h>
#include <vector>

namespace sim {

namespace fs = std::filesystem;

namespace {

bool StatPath(const std::string& path, bool& isDirectory) {
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) {
        return false;
    }
    isDirectory = S_ISDIR(info.st_mode);
    return true;
}

std::string JoinHost(const std::string& dir, const std::string& name) {
    if (!dir.empty() && dir.back() == '/') {
        return dir + name;
    }
    return dir + "/" + name;
}

} // namespace

void PathMapper::SetDrive(char letter, const std::string& hostRoot) {
    mDrives[static_cast<char>(std::toupper(static_cast<unsigned char>(letter)))] = hostRoot;
}

bool PathMapper::HasDrive(char letter) const {
    return mDrives.count(static_cast<char>(std::toupper(static_cast<unsigned char>(letter)))) != 0;
}

std::string PathMapper::DriveRoot(char letter) const {
    auto found = mDrives.find(static_cast<char>(std::toupper(static_cast<unsigned char>(letter))));
    return found == mDrives.end() ? std::string() : found->second;
}

std::optional<std::string> PathMapper::FindChild(const std::string& hostDir,
                                                 const std::string& name) {
    struct stat info;
    if (::lstat(JoinHost(hostDir, name).c_str(), &info) == 0) {
        return name;
    }
    DIR* dir = ::opendir(hostDir.c_str());
    if (dir == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> match;
    std::vector<std::string> entries;
    std::string folded = FoldName(name);
    while (dirent* entry = ::readdir(dir)) {
        std::string entryName = entry->d_name;
        if (entryName == "." || entryName == "..") {
            continue;
        }
        if (FoldName(entryName) == folded) {
            match = entryName;
            break;
        }
        entries.push_back(entryName);
    }
    ::closedir(dir);
    if (!match && name.find('~') != std::string::npos) {
        std::sort(entries.begin(), entries.end());
        for (const auto& [longName, shortName] : ShortNames::Of(entries)) {
            if (FoldName(shortName) == folded) {
                return longName;
            }
        }
    }
    return match;
}

os::Error PathMapper::Locate(const WindowsPath& path, HostLocation& out) const {
    out = HostLocation();
    if (path.kind != WindowsPath::Kind::Drive || !HasDrive(path.drive)) {
        return os::error::PathNotFound;
    }
    std::string host = DriveRoot(path.drive);
    bool isDirectory = false;
    if (!StatPath(host, isDirectory) || !isDirectory) {
        // A mapped drive whose folder is gone is a drive with no medium.
        return os::error::NotReady;
    }
    bool existing = true;
    for (size_t i = 0; i < path.parts.size(); ++i) {
        bool last = i + 1 == path.parts.size();
        if (existing) {
            if (last) {
                out.parentExists = isDirectory;
            }
            std::optional<std::string> child;
            if (isDirectory) {
                child = FindChild(host, path.parts[i]);
            }
            if (child) {
                host = JoinHost(host, *child);
                existing = StatPath(host, isDirectory);
                continue;
            }
            existing = false;
        }
        host = JoinHost(host, path.parts[i]);
    }
    out.hostPath = host;
    out.exists = existing;
    out.isDirectory = existing && isDirectory;
    if (path.parts.empty()) {
        out.parentExists = true;
    }
    return os::error::Success;
}

std::string PathMapper::ToMachinePath(const std::string& hostPath) const {
    std::error_code ignored;
    fs::path absolute = fs::absolute(fs::path(hostPath), ignored).lexically_normal();
    std::string text = absolute.string();
    if (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    char bestDrive = 0;
    size_t bestLength = 0;
    for (const auto& [letter, root] : mDrives) {
        if (letter == 'Z') {
            continue;
        }
        std::string normalRoot = fs::path(root).lexically_normal().string();
        while (normalRoot.size() > 1 && normalRoot.back() == '/') {
            normalRoot.pop_back();
        }
        bool inside = text == normalRoot ||
                      (text.rfind(normalRoot + "/", 0) == 0 && normalRoot.size() > 1);
        if (inside && normalRoot.size() > bestLength) {
            bestDrive = letter;
            bestLength = normalRoot.size();
        }
    }
    std::string rest = bestDrive != 0 ? text.substr(bestLength) : text;
    std::replace(rest.begin(), rest.end(), '/', '\\');
    if (rest.empty() || rest[0] != '\\') {
        rest = "\\" + rest;
    }
    return std::string(1, bestDrive != 0 ? bestDrive : 'Z') + ":" + rest;
}

} // namespace sim
