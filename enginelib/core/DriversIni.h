// The model table: the models a package can install, their data streams, driver names and INF
// files by system. It is read from drivers.ini, or filled from the package's INF files by the
// driver search, and lives for the process. Every query answers the same for either source.
#pragma once

#include "core/CStdStringList.h"

class IniFile;
class OSInfo;

class DriversIni {
public:
    // Reads the file into the table, once per process; later calls return the first answer.
    // With `readFile` false the table starts empty, for the driver search to fill.
    static bool Initialize(const CStdStr& path, bool readFile);
    // Empties the table and forgets that it was initialised.
    static void Reset();
    static IniFile& Table();

    // The suffix by which the table's keys name a system: "95", "NT", "2K", "X64", "V32", "V64".
    static CStdStr OsSuffix(const OSInfo& os);

    // Every model of every manufacturer section, sorted, once each, without those not offered
    // on `os`.
    static void GetModels(CStdStringList& list, const OSInfo& os);
    // The model's data streams; false when it has no section, no Streams, or is not offered.
    static bool GetStreams(const CStdStr& model, CStdStringList& list, const OSInfo& os);
    // The INF of a model's stream for `os` (`<stream>INFPath.<os>`, `<stream>Inf.<os>`,
    // `INFPath.<os>`); with no stream, the INF of the first stream that has one.
    static bool GetInfName(const CStdStr& model, const CStdStr& stream, CStdStr& name,
                           const OSInfo& os);
    // The driver's name for a stream, for `os` first.
    static bool GetDriverName(const CStdStr& model, const CStdStr& stream, CStdStr& name,
                              const OSInfo& os);
    // A key of the model: `K.<family>.<os>`, `K.<os>`, `K.<family>`, `K`, the first there is;
    // empty when none is.
    static CStdStr GetModelValue(const CStdStr& model, const CStdStr& key, const OSInfo& os);
    static bool IsOffered(const CStdStr& model, const OSInfo& os);
};
