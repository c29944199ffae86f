// Makes one component from its CIF: tests whether it may exist on this machine, makes the
// component object, and one action for each line of its eight action lists.
#pragma once

#include "components/InstallFactory.h"

class ActionSet;
class GenericComponent;

class CustomFactory : public InstallFactory {
public:
    // The folder of the maker below Program Files, where installed products keep their files.
    static constexpr const char* kMakerFolder = "Valmora";

    explicit CustomFactory(IniFile* script) : InstallFactory(script) {}

    InstallComponent* Make(const CStdStr& name, CifFile& cif) override;
    Action* getAction(const CStdStr& keyword, const CStdStringList& parameters) override;

    // When set, requirement sections are not consulted.
    void SetSkipRequirements(bool skip) { mSkipRequirements = skip; }
    // When set, components are not logged by default and files carry the not-log marker.
    void SetNoLog(bool noLog) { mNoLog = noLog; }
    const CStdStr& GetPatchVersion() const { return mPatchVersion; }
    const CStdStr& GetAllUninstallCifs() const { return mAllUninstallCifs; }

    // Fills a list from a section of the CIF (a suffix of the component unless `isSuffix` is
    // false); false when a line cannot be made into an action.
    bool getActionList(ActionSet& list, const CStdStr& componentName, const CStdStr& section,
                       CifFile& cif, bool isSuffix);

private:
    GenericComponent* createObject(const CStdStr& name, const CStdStr& sectionName, CifFile& cif,
                                   const CStdStr& instanceName);
    void findOlderUninstallCifs(const CStdStr& version);
    CStdStringList readRequires(const CStdStr& value);
    // A LinePatch action; null when it names the system's uninstall files and there are none.
    Action* makeLinePatchAction(CStdStringList parameters) const;

    bool mSkipRequirements = false;
    bool mNoLog = false;
    CStdStr mPatchVersion;
    CStdStr mAllUninstallCifs;
};
