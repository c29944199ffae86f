// All file work of the engine. This part holds the folder test, the making of paths and the
// zombie mode; copying, versions and deletion come with the file actions.
#pragma once

#include "core/CStdStringList.h"

#include <cstdint>

class FileOp {
public:
    static bool IsDirectory(const CStdStr& path);
    static bool IsFile(const CStdStr& path);

    // Makes every missing folder of `path`, walking down from its root with
    // SetCurrentDirectory and CreateDirectory; the current folder is restored. A comma in the
    // path is refused. The folders made are added to `created` when it is given.
    static bool MakePath(const CStdStr& path, bool flag, CStdStringList* created = nullptr);

    // In zombie mode what cannot be deleted now is remembered for a later attempt.
    static bool IsZombieModeEnabled() { return sZombieEnabled; }
    static void SetZombieMode(bool enabled) { sZombieEnabled = enabled; }

    static std::uint32_t GetLastError() { return sLastError; }

private:
    static bool sZombieEnabled;
    static std::uint32_t sLastError;
};
