// One state file of a simulated machine (registry.reg, spooler.ini, processes.ini, ...), shared
// by every process that runs on the machine.
//
// A process reads the file into its model, changes the model as it works, and commits at the end
// of each export call, holding the machine's lock (MachineLock):
// - when the file is still the one the process read or wrote last, the model is written whole;
// - when another process wrote it in between, the file is read again and the changes this
//   process made since its last read or write (its model against the text it started from) are
//   carried onto it, record by record; the model then holds the merged state.
// Every write goes through a temporary file and a rename (WriteFileAtomically), so a process
// killed at any moment leaves the previous state whole, and the lock dies with it.
//
// A new kind of state derives from this class (or uses IniStateFile for INI-shaped files) and
// says what one record is in its Merge.
#pragma once

#include <string>

namespace sim {

class StateFile {
public:
    // `optional`: a missing file is an empty model rather than an error.
    StateFile(std::string fileName, bool optional);
    virtual ~StateFile() = default;
    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    const std::string& FileName() const { return mFileName; }
    // Reads the file of the machine in `directory`. The caller holds the machine's lock.
    bool Load(const std::string& directory, std::string& why);
    // Whether this process changed the model since it last read or wrote the file.
    virtual bool Dirty() const = 0;
    // Writes this process's changes, merged onto the file as another process may have left it.
    // The caller holds the machine's lock. Nothing to write is success.
    bool Commit(std::string& why);

    // What identifies one version of a file on disk: inode, size and time of last change
    // ("-" when missing). A commit renames a new file into place, so every write changes it.
    static std::string Stamp(const std::string& hostPath);

protected:
    // Makes the model the state the text describes, and clean.
    virtual bool Parse(const std::string& text, std::string& why) = 0;
    // The model as the file's text.
    virtual std::string Format() const = 0;
    // The text of `theirs` (the file as it is now) with this process's changes carried onto it:
    // each record in which the model differs from `base` (the text last read or written) takes
    // the model's form, or goes when the model dropped it.
    virtual bool Merge(const std::string& base, const std::string& theirs, std::string& merged,
                       std::string& why) const = 0;
    virtual void MarkClean() = 0;

private:
    void removeLeftovers(const std::string& directory) const;

    std::string mFileName;
    bool mOptional;
    std::string mPath;
    std::string mBase;
    std::string mStamp;
};

} // namespace sim
