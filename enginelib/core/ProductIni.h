// product.ini, the package's description of how the product is built: read once per process
// from the Config folder and kept for the life of the process.
#pragma once

#include "core/CStdStringList.h"

#include <cstdint>
#include <map>
#include <vector>

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

    // [GENERAL]
    // The debug log's name when the host names no file; "install.log" by default.
    static CStdStr LogName();
    // The bits of LogLevel (C prefix rules); false when the key is absent.
    static bool LogLevel(std::uint32_t& bits);
    static bool UseDriversIni();
    static bool ConvertOldLog();
    static CStdStr ProductKey();
    static CStdStr OemDisplay();
    static CStdStr UninstallCif();
    static CStdStringList Platforms();
    static CStdStr DisplayName();
    // A key of GENERAL that none of the above names: a comma list of program names.
    static CStdStringList ProgramList(const CStdStr& key);

    // [VARIABLES]
    static CStdStr DefaultPrintInf();
    static CStdStr DynamicNaming();
    static CStdStr PrinterFamily();
    static CStdStringList LocalScanPaths();

    // [DEVICES]: the INF file and the PnP id of a device section; false when it has no line.
    static bool DeviceInf(const CStdStr& device, CStdStr& infName, CStdStr& pnpId);
    // [ARP_INFORMATION] in file order.
    static std::vector<std::pair<CStdStr, CStdStr>> ArpInformation();

    // [SYSTEM_REQUIREMENT] as it applies to the running system, values resolved; made at load
    // and kept for the log.
    static std::map<CStdStr, CStdStr> SystemRequirements();

    // Forgets the image, so that the next load reads the file again.
    static void Unload();
};
