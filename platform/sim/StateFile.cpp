#include "sim/StateFile.h"

#include "sim/AtomicFile.h"

#include <filesystem>
#include <sys/stat.h>

namespace sim {

StateFile::StateFile(std::string fileName, bool optional)
        : mFileName(std::move(fileName)), mOptional(optional) {}

std::string StateFile::Stamp(const std::string& hostPath) {
    struct stat info;
    if (::stat(hostPath.c_str(), &info) != 0) {
        return "-";
    }
    return std::to_string(info.st_ino) + ":" + std::to_string(info.st_size) + ":" +
           std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec);
}

bool StateFile::Load(const std::string& directory, std::string& why) {
    mPath = directory + "/" + mFileName;
    removeLeftovers(directory);
    mStamp = Stamp(mPath);
    mBase.clear();
    if (mStamp == "-") {
        if (!mOptional) {
            why = mFileName + " is missing";
            return false;
        }
    } else if (!ReadWholeFile(mPath, mBase)) {
        why = mFileName + " is unreadable";
        return false;
    }
    if (!Parse(mBase, why)) {
        why = mFileName + ": " + why;
        return false;
    }
    return true;
}

void StateFile::removeLeftovers(const std::string& directory) const {
    // A writer holds the machine's lock from its temporary file to the rename, and so does the
    // caller: a temporary file seen now was left by a process that died while it wrote.
    std::string prefix = mFileName + ".tmp";
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
        if (entry.path().filename().string().rfind(prefix, 0) == 0) {
            std::filesystem::remove(entry.path(), error);
        }
    }
}

bool StateFile::Commit(std::string& why) {
    if (!Dirty() || mPath.empty()) {
        return true;
    }
    std::string text;
    std::string stamp = Stamp(mPath);
    if (stamp == mStamp) {
        text = Format();
    } else {
        std::string theirs;
        if (stamp != "-" && !ReadWholeFile(mPath, theirs)) {
            why = "cannot read " + mPath + " again";
            return false;
        }
        if (!Merge(mBase, theirs, text, why) || !Parse(text, why)) {
            why = mFileName + ": " + why;
            return false;
        }
    }
    if (!WriteFileAtomically(mPath, text, why)) {
        return false;
    }
    mBase = std::move(text);
    mStamp = Stamp(mPath);
    MarkClean();
    return true;
}

} // namespace sim
