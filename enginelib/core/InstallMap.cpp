#include "core/InstallMap.h"

#include "script/CifFile.h"
#include "script/IniFile.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>

InstallMap::~InstallMap() = default;

bool InstallMap::Read(const PathObject& mapFile, const PathObject& folder) {
    LogScope scope("InstallMap", "InstallMap::Read", logmask::EngineApi);
    IniFile map(mapFile.GetFullPath(), false);
    IniSection* components = map.FindSection("Components");
    if (components == nullptr || components->ValueCount() == 0) {
        scope.Log(0, "Missing 'Components' section in map file : File = %s",
                  mapFile.GetFullPath().c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr name;
    CStdStr value;
    components->Reset();
    while (components->GetCurrentValue(name, value)) {
        components->Next();
        if (value.empty()) {
            continue;
        }
        PathObject cifPath;
        cifPath.SetDirectory(folder.GetFullPath());
        cifPath.SetName(value);
        CStdStr path = cifPath.GetFullPath();
        auto shared = std::find_if(mOwned.begin(), mOwned.end(), [&](const auto& cif) {
            return cif->GetFileName().EqualsNoCase(path);
        });
        if (shared != mOwned.end()) {
            mMap[name] = shared->get();
            continue;
        }
        auto cif = std::make_unique<CifFile>(true);
        cif->SetFileName(path);
        mMap[name] = cif.get();
        mOwned.push_back(std::move(cif));
    }
    scope.SetResult(true);
    return true;
}

CifFile* InstallMap::Find(const CStdStr& name) {
    if (mDefaultCif != nullptr) {
        return mDefaultCif;
    }
    auto found = mMap.find(name);
    return found == mMap.end() ? nullptr : found->second;
}

void InstallMap::SetDefaultCif(CifFile* cif) {
    if (cif == mDefaultCif) {
        return;
    }
    bool owned = std::any_of(mOwned.begin(), mOwned.end(),
                             [cif](const auto& entry) { return entry.get() == cif; });
    if (!owned && cif != nullptr) {
        mOwned.emplace_back(cif);
    }
    mDefaultCif = cif;
}
