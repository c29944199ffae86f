// The names of one host folder, indexed by their case-folded spelling and by their 8.3 short
// names, kept in the one order in which the machine lists a folder (the folded names' byte
// order, as NTFS sorts by the upper case of its names).
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace sim {

class FolderIndex {
public:
    // The order of names everywhere the machine lists or numbers a folder's entries.
    static bool Before(const std::string& a, const std::string& b);

    // Reads the folder anew. False when it cannot be read.
    bool Read(const std::string& hostDir, const struct stat& info);
    // True while the folder whose status is `info` has not changed since it was read.
    bool Fresh(const struct stat& info) const;
    // The machine itself added or removed a name: the index follows without reading the folder
    // again, and takes the folder's new status `info`.
    void Add(const std::string& name, const struct stat& info);
    void Remove(const std::string& name, const struct stat& info);

    // The host spelling of `name` (any case), or of the entry whose short name it is.
    std::optional<std::string> Find(const std::string& name);
    // The names in the one order.
    std::vector<std::string> Names() const;
    // Long and short name of every entry, in the one order. Short names are given on first
    // need, numbered in that order, and kept in each file when `keep` (see ShortNames).
    std::vector<std::pair<std::string, std::string>> NamesWithShortNames();
    // The short name of an existing entry; empty when there is no such entry.
    std::string ShortNameOf(const std::string& name);
    size_t Size() const { return mEntries.size(); }

    void KeepShortNames(bool keep) { mKeep = keep; }

private:
    struct Entry {
        std::string name;
        std::string shortName; // folded; empty until given
    };
    // Entries by folded name, then host spelling, so that two host names of one folded
    // spelling both stay.
    static std::string Key(const std::string& name);
    void giveShortNames();
    void stamp(const struct stat& info);

    std::string mHostDir;
    std::map<std::string, Entry> mEntries;
    std::map<std::string, std::string> mByShortName; // folded short name -> key
    std::set<std::string> mTaken;                    // folded short names in use
    std::vector<std::string> mWithoutShortName;      // keys
    bool mKeep = false;
    bool mTrusted = false;
    dev_t mDevice = 0;
    ino_t mInode = 0;
    timespec mModified{};
};

} // namespace sim
