// The folders that no script may wipe: a drive, a drive's root, a network share's root, the
// Windows and system folders, the program files folders and the users' profiles, together with
// every folder that holds one of them. A path is judged by what Windows would make of it, so
// that `C:`, `c:\.`, `C:\..\`, `\\?\C:\` and `C:\Windows. ` all count as what they name.
#pragma once

#include "core/CStdStr.h"
#include "core/CStdStringList.h"

class ProtectedFolder {
public:
    // The reason why `path` must not be wiped ("a drive's root", "the Windows folder", ...), or
    // empty when it may be.
    static CStdStr WhyProtected(const CStdStr& path);

    // The full form of `path` as Windows resolves it: separators as backslashes, a device or
    // long-path prefix taken away, `.` and `..` folded, trailing blanks and dots of each name
    // dropped, no trailing backslash except after a drive (`C:\`). A bare drive (`C:`) gives
    // its root; a relative path is resolved against the process's current folder. Empty when
    // the path can't be resolved.
    static CStdStr Normalize(const CStdStr& path);

private:
    struct Named {
        CStdStr folder;
        const char* what;
    };
    static std::vector<Named> systemFolders();
    static std::vector<Named> profileRoots();
};
