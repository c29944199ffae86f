// Fills the model table from the package's INF files instead of drivers.ini: each INF that
// carries the product's own QM_ keys adds its models, streams, driver names and its own path
// under the suffix of the system it serves.
#pragma once

#include "core/CStdStringList.h"

#include <utility>
#include <vector>

class InfFile;
class OSInfo;

class DriverSearch {
public:
    // Every INF of `folder`, read, with its models: the pairs of INF path and hardware id.
    static void LocateAllInfs(const CStdStr& folder,
                              std::vector<std::pair<CStdStr, CStdStr>>& list);
    // Adds the models of every INF of each folder to the table. INF paths are stored relative to
    // `driverRoot` when they lie below it.
    static void ParseFolders(const CStdStringList& folders, const CStdStr& driverRoot,
                             const OSInfo& os);
    // Adds one INF's models; false when it serves no system the table knows or cannot be read.
    static bool AddInf(InfFile& inf, const CStdStr& relativePath, const OSInfo& os);
    // The table's suffix of the system an INF serves, from QM_DRV_OS and QM_DRV_MERGED_OS;
    // empty when it names none the table knows.
    static CStdStr InfOsWord(InfFile& inf, const OSInfo& os);
};
