// Files that a package stores compressed: in the LZ format of compress.exe ("x.dl_") or in
// cabinets. They are expanded by the system's own functions: setupapi.dll where the system has
// it, else lz32.dll.
#pragma once

#include "core/CStdStr.h"

class Uncompress {
public:
    // How a file is stored, as FILE_COMPRESSION_*; -1 when that cannot be found out.
    enum Type { Unknown = -1, None = 0, Lz = 1, MsZip = 2, Lzx = 3 };

    // Whether this system has setupapi.dll.
    static bool LoadSetupApi();
    static int GetCompressionType(const CStdStr& path);
    static bool IsFileCompressed(const CStdStr& path) { return GetCompressionType(path) > None; }
    // The file name (without folder) that the file has once expanded: the name stored in the
    // LZ header or the first name in the cabinet.
    static bool GetUncompressedName(const CStdStr& path, CStdStr& name);

    // Expands `source` to `dest`: a file path, or a folder (an existing one, or one ending in a
    // backslash) that takes the expanded name. A target named in the compressed way ("x.dl_")
    // takes the expanded name too. With `versionCheck` an existing target is replaced only by
    // a higher version. `outName` receives the full path of the target.
    static bool UncompressFile(const CStdStr& source, const CStdStr& dest, CStdStr& outName,
                               bool versionCheck);
};
