// A walk through the entries of a folder that match a pattern ("C:\Dir\*.dll"), as
// FindFirstFile and FindNextFile give them, in the order of the file system.
#pragma once

#include "core/CStdStr.h"
#include "os/Files.h"

#include <vector>

class FileFinder {
public:
    // Starts the search; IsEnd is true at once when nothing matches.
    explicit FileFinder(const CStdStr& pattern);

    bool IsEnd() const { return mIndex >= mEntries.size(); }
    // The name of the current entry, without its folder.
    CStdStr GetCurrent() const;
    std::uint32_t GetAttributes() const;
    bool IsDirectory() const;
    // "." or "..".
    bool IsDots() const;
    void Next();
    void Close();

    // The error of the search's start: FileNotFound when nothing matched, PathNotFound for a
    // missing folder.
    os::Error GetError() const { return mError; }

private:
    std::vector<os::FindData> mEntries;
    size_t mIndex = 0;
    os::Error mError = os::error::Success;
};
