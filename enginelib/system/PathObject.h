// A path value: a folder (`directory`, backslashes only, no trailing backslash beyond a root)
// and a `name`. It is a file when the name is not empty. Paths compare folding case.
#pragma once

#include "core/CStdStr.h"

class PathObject {
public:
    PathObject() = default;
    // Splits the path, trimmed on the left, into folder and name. "\\server\share" keeps its
    // two leading backslashes.
    PathObject(const CStdStr& path);
    PathObject(const char* path) : PathObject(CStdStr(path)) {}
    virtual ~PathObject() = default;

    void SetDirectory(const CStdStr& path);
    void AppendDirectory(const CStdStr& part);
    void SetName(const CStdStr& name) { mName = name; }
    const CStdStr& GetName() const { return mName; }
    const CStdStr& GetDirectory() const { return mDirectory; }
    // The name without its extension, and the extension without its dot.
    CStdStr GetBaseName() const;
    CStdStr GetExtension() const;

    CStdStr GetFullPath() const;
    // The path through GetShortPathName; the long path when that fails.
    CStdStr GetFullPathWithShortName() const;
    // The folder loses its last part; a root stays.
    void GoUp();
    bool Exists() const;

    bool IsFile() const { return !mName.empty(); }
    bool IsDirectory() const { return mName.empty(); }

    friend bool operator<(const PathObject& a, const PathObject& b);
    friend bool operator==(const PathObject& a, const PathObject& b);

protected:
    CStdStr mDirectory;
    CStdStr mName;
};
