#include "core/InstallMap.h"

#include "script/CifFile.h"
#include "script/IniFile.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>

InstallMap::~InstallMap() = default;

bool InstallMap::ReadComponents(const PathObject& mapFile, const PathObject& folder,
                                std::vector<std::pair<CStdStr, CStdStr>>& components) {
    IniFile map(mapFile.GetFullPath(), false);
    IniSection* section = map.FindSection("Components");
    if (section == nullptr || section->ValueCount() == 0) {
        ENGINE_LOG(0, "Missing 'Components' section in map file : File = %s",
                   mapFile.GetFullPath().c_str());
        return false;
    }
    CStdStr name;
    CStdStr value;
    section->Reset();
    for (; section->GetCurrentValue(name, value); section->Next()) {
        if (!value.empty()) {
            PathObject cif;
            cif.SetDirectory(folder.GetFullPath());
            cif.SetName(value);
            components.emplace_back(name, cif.GetFullPath());
        }
    }
    return true;
}

bool InstallMap::Read(const PathObject& mapFile, const PathObject& folder) {
    LogScope scope("InstallMap", "InstallMap::Read", logmask::EngineApi);
    std::vector<std::pair<CStdStr, CStdStr>> components;
    if (!ReadComponents(mapFile, folder, components)) {
        scope.SetResult(false);
        return false;
    }
    for (const auto& [name, path] : components) {
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
