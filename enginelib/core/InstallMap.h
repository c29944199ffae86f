// install.map: which CIF file describes each component. Two names may name the same CIF, which
// they then share. On an uninstall one CIF describes all components.
#pragma once

#include "core/CStdStr.h"
#include "system/PathObject.h"

#include <map>
#include <memory>
#include <vector>

class CifFile;

class InstallMap {
public:
    InstallMap() = default;
    virtual ~InstallMap();
    InstallMap(const InstallMap&) = delete;
    InstallMap& operator=(const InstallMap&) = delete;

    // Reads the section Components of `mapFile`; CIF names are relative to `folder`. The CIFs
    // are not read yet: their text loads when a component is made or tested.
    bool Read(const PathObject& mapFile, const PathObject& folder);
    // The lines of the section Components that name a file, in file order: the component name
    // and the full path of its CIF below `folder`. False, logged, when the section is missing or
    // empty.
    static bool ReadComponents(const PathObject& mapFile, const PathObject& folder,
                               std::vector<std::pair<CStdStr, CStdStr>>& components);
    // The default CIF when one is set; otherwise the CIF of the name, or null.
    CifFile* Find(const CStdStr& name);
    // Makes `cif` the answer to every lookup (owned).
    void SetDefaultCif(CifFile* cif);
    size_t Size() const { return mMap.size(); }

private:
    std::map<CStdStr, CifFile*, NoCaseLess> mMap;
    std::vector<std::unique_ptr<CifFile>> mOwned;
    CifFile* mDefaultCif = nullptr;
};
