// The worker under the File action (and the configuration action): copies one file with all
// checks (a compressed source, versions, times) and deletes one folder safely.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>
#include <string>
#include <unordered_set>

class EnhanceFile {
public:
    enum CopyResult { Failed = 0, NotCopied = 1, Copied = 2 };

    EnhanceFile(bool keepCompressed, bool doVersionCheck)
            : mKeepCompressed(keepCompressed), mDoVersionCheck(doVersionCheck) {}

    // Copies `source` to `target` (a file path, or a folder ending in a backslash that takes
    // the source's name). NotCopied when the target is newer and stays: the file still belongs
    // to the caller. GetLastTarget then names the target.
    int singleCopy(const CStdStr& source, const CStdStr& target, bool allowComma);
    // Deletes a folder with its contents, or only when empty if wiping is off. Refuses a path
    // with a doubled backslash and every folder that ProtectedFolder protects.
    bool deleteDirectory(const CStdStr& path);

    void SetWipeOutFolder(bool wipeOut) { mWipeOutFolder = wipeOut; }
    // The target folders that the caller's action already found or made (folded), shared by
    // its copies, so that a folder is asked after once per action and not once per file.
    void SetKnownFolders(std::unordered_set<std::string>* folders) { mKnownFolders = folders; }
    // The source's attributes, when the caller has them from a folder listing.
    void SetSourceAttributes(std::uint32_t attributes) { mSourceAttributes = attributes; }
    const CStdStr& GetLastTarget() const { return mLastTarget; }

private:
    // A copy of the source in a fresh folder under the temporary folder; empty on failure.
    static CStdStr copyToTemporaryFolder(const CStdStr& source);

    bool mKeepCompressed;
    bool mDoVersionCheck;
    bool mWipeOutFolder = true;
    CStdStr mLastTarget;
    std::unordered_set<std::string>* mKnownFolders = nullptr;
    std::uint32_t mSourceAttributes = 0xFFFFFFFF; // not known
};
