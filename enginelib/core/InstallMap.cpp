#include "core/InstallMap.h"

#include "script/CifFile.h"
#include "script/IniFile.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>
#include <map>

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
    // Names that give the same file share its one CifFile.
    std::map<CStdStr, CifFile*, NoCaseLess> byPath;
    for (const std::unique_ptr<CifFile>& cif : mOwned) {
        byPath.emplace(cif->GetFileName(), cif.get());
    }
    for (const auto& [name, path] : components) {
        CifFile*& shared = byPath[path];
        if (shared == nullptr) {
            auto cif = std::make_unique<CifFile>(true);
            cif->SetFileName(path);
            shared = cif.get();
            mOwned.push_back(std::move(cif));
        }
        mMap[name] = shared;
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
