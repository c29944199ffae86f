// product.ini, the package's description of how the product is built: read once per process
// from the Config folder and kept for the life of the process.
#pragma once

#include "core/CStdStringList.h"

class IniFile;
class OSInfo;

class ProductIni {
public:
    // True at once when an image is loaded already. A missing or empty file is a failure.
    static bool LoadProductIni(const CStdStr& path);
    static bool IsLoaded();
    // True when the key is there.
    static bool GetProductValue(const CStdStr& section, const CStdStr& key, CStdStr& value);
    static CStdStr GetValue(const CStdStr& section, const CStdStr& key);
    static const IniFile* Image();

    // The comma list of driver folders below the application folder for a system.
    static bool GetDriverDir(CStdStr& value, const OSInfo& os);
    static bool GetDriverDir(CStdStr& value);
    // Whether the running system carries one of the tokens of Platform (with "FUTURE_OS").
    static bool IsPlatformSupported();

    // Forgets the image, so that the next load reads the file again.
    static void Unload();
};
