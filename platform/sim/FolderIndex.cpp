#include "sim/FolderIndex.h"

#include "sim/ShortNames.h"
#include "sim/Text.h"

#include <algorithm>
#include <ctime>
#include <dirent.h>

namespace sim {

namespace {

// A folder changed this recently may change again within the same tick of the file system's
// clock without its time moving, so an index read then is not trusted the next time.
constexpr long long kClockTickNanoseconds = 20'000'000;

long long Nanoseconds(const timespec& time) {
    return static_cast<long long>(time.tv_sec) * 1'000'000'000LL + time.tv_nsec;
}

} // namespace

bool FolderIndex::Before(const std::string& a, const std::string& b) {
    std::string foldedA = FoldName(a);
    std::string foldedB = FoldName(b);
    return foldedA != foldedB ? foldedA < foldedB : a < b;
}

std::string FolderIndex::Key(const std::string& name) {
    return FoldName(name) + '\0' + name;
}

bool FolderIndex::Read(const std::string& hostDir, const struct stat& info) {
    mHostDir = hostDir;
    mEntries.clear();
    mByShortName.clear();
    mTaken.clear();
    mWithoutShortName.clear();
    DIR* dir = ::opendir(hostDir.c_str());
    if (dir == nullptr) {
        mTrusted = false;
        return false;
    }
    while (dirent* entry = ::readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..") {
            std::string key = Key(name);
            mEntries[key] = Entry{name, ""};
            mWithoutShortName.push_back(key);
        }
    }
    ::closedir(dir);
    stamp(info);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    mTrusted = Nanoseconds(now) - Nanoseconds(info.st_mtim) > kClockTickNanoseconds;
    return true;
}

void FolderIndex::stamp(const struct stat& info) {
    // After the machine's own change the index holds what the folder holds, so it is trusted
    // even though the folder's time has only just moved.
    mTrusted = true;
    mDevice = info.st_dev;
    mInode = info.st_ino;
    mModified = info.st_mtim;
}

bool FolderIndex::Fresh(const struct stat& info) const {
    return mTrusted && info.st_dev == mDevice && info.st_ino == mInode &&
           info.st_mtim.tv_sec == mModified.tv_sec && info.st_mtim.tv_nsec == mModified.tv_nsec;
}

void FolderIndex::Add(const std::string& name, const struct stat& info) {
    std::string key = Key(name);
    if (mEntries.emplace(key, Entry{name, ""}).second) {
        mWithoutShortName.push_back(key);
    }
    stamp(info);
}

void FolderIndex::Remove(const std::string& name, const struct stat& info) {
    auto found = mEntries.find(Key(name));
    if (found != mEntries.end()) {
        const std::string& shortName = found->second.shortName;
        if (!shortName.empty()) {
            mByShortName.erase(shortName);
            mTaken.erase(shortName);
        }
        mEntries.erase(found);
    }
    stamp(info);
}

std::optional<std::string> FolderIndex::Find(const std::string& name) {
    std::string folded = FoldName(name);
    auto found = mEntries.lower_bound(folded + '\0');
    if (found != mEntries.end() && found->first.compare(0, folded.size() + 1, folded + '\0') == 0) {
        return found->second.name;
    }
    if (name.find('~') == std::string::npos) {
        return std::nullopt;
    }
    giveShortNames();
    auto byShort = mByShortName.find(folded);
    if (byShort == mByShortName.end()) {
        return std::nullopt;
    }
    return mEntries.at(byShort->second).name;
}

std::vector<std::string> FolderIndex::Names() const {
    std::vector<std::string> names;
    names.reserve(mEntries.size());
    for (const auto& [key, entry] : mEntries) {
        names.push_back(entry.name);
    }
    return names;
}

std::vector<std::pair<std::string, std::string>> FolderIndex::NamesWithShortNames() {
    giveShortNames();
    std::vector<std::pair<std::string, std::string>> names;
    names.reserve(mEntries.size());
    for (const auto& [key, entry] : mEntries) {
        bool own = FoldName(entry.name) == entry.shortName;
        names.emplace_back(entry.name, own ? entry.name : entry.shortName);
    }
    return names;
}

std::string FolderIndex::ShortNameOf(const std::string& name) {
    giveShortNames();
    auto found = mEntries.find(Key(name));
    if (found == mEntries.end()) {
        return std::string();
    }
    const Entry& entry = found->second;
    return FoldName(entry.name) == entry.shortName ? entry.name : entry.shortName;
}

// Names that are 8.3 already are their own short names and come first; then the short names
// the files keep; then new ones, numbered in the one order, avoiding all of those.
void FolderIndex::giveShortNames() {
    if (mWithoutShortName.empty()) {
        return;
    }
    std::sort(mWithoutShortName.begin(), mWithoutShortName.end());
    auto give = [this](const std::string& key, const std::string& shortName) {
        Entry& entry = mEntries.at(key);
        entry.shortName = shortName;
        mTaken.insert(shortName);
        mByShortName[shortName] = key;
    };
    std::vector<std::string> pending;
    for (const std::string& key : mWithoutShortName) {
        auto found = mEntries.find(key);
        if (found == mEntries.end() || !found->second.shortName.empty()) {
            continue;
        }
        const std::string& name = found->second.name;
        if (ShortNames::IsShortName(name) && mTaken.count(FoldName(name)) == 0) {
            give(key, FoldName(name));
        } else {
            pending.push_back(key);
        }
    }
    std::vector<std::string> unnamed;
    for (const std::string& key : pending) {
        std::string stored = FoldName(ShortNames::Stored(mHostDir + "/" + mEntries.at(key).name));
        if (!stored.empty() && mTaken.count(stored) == 0) {
            give(key, stored);
        } else {
            unnamed.push_back(key);
        }
    }
    for (const std::string& key : unnamed) {
        std::string shortName = ShortNames::Generate(mEntries.at(key).name, mTaken);
        give(key, shortName);
        if (mKeep) {
            ShortNames::Store(mHostDir + "/" + mEntries.at(key).name, shortName);
        }
    }
    mWithoutShortName.clear();
}

} // namespace sim
