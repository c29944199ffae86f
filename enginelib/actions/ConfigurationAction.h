// The action of keyword Configuration: prepares the machine for the configuration files of a
// package's print objects, or copies those files into a package being built. Its line is
//   Configuration,<operation>,<listFile>,<target>
// with the operations PREPSYSTEMFORCFGS and COPYCFGSFORPACKAGE (which alone reads <target>).
// The list file's section Drivers names, per print object, a section with CfgFile, CfgEntry,
// CfgType, RealName and Name. Nothing goes to the uninstall log: lasting configuration files are
// left behind on purpose, and the registry values belong to the driver's own removal.
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

class ConfigurationAction : public Action {
public:
    enum Operation { PrepSystem = 0, CopyForPackage = 1, None = 2 };

    explicit ConfigurationAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetOperation() const { return mOperation; }

    // False even when every entry went well: the operation reports no success of its own.
    bool PrepSystemForConfigurations(const CStdStr& listFile);
    bool CopyConfigurationFilesForPackage(const CStdStr& listFile, const CStdStr& target);
    bool PrepConfigurationForDriver(const CStdStr& cfgFile, const CStdStr& cfgEntry,
                                    const CStdStr& realName, const CStdStr& name,
                                    const CStdStr& cfgType);
    // Copies the file where its type wants it; the new path in its short form, empty on
    // failure.
    CStdStr CopyCfgFile(const CStdStr& source, const CStdStr& realName, const CStdStr& cfgType);
    // The path itself when it exists, else its name in the package's root; empty if neither.
    static CStdStr GetCfgSourceFilePath(const CStdStr& path);
    static bool EnhanceFileCopy(const CStdStr& source, const CStdStr& target);

private:
    std::int32_t mOperation = None;
    CStdStr mListFile;
    CStdStr mTarget;
};
