#include "core/ComponentInfoMap.h"

#include "core/InstallMap.h"
#include "script/SystemPath.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

bool ComponentInfoMap::creatingMap() {
    LogScope scope("ComponentInfoMap", "ComponentInfoMap::creatingMap", logmask::EngineApi);
    PathObject config;
    config.SetDirectory(SystemPath(SystemPath::ApplicationFolder).GetDirectory());
    config.AppendDirectory("Config");
    PathObject mapFile = config;
    mapFile.SetName("install.map");
    if (!mapFile.Exists()) {
        scope.Log(0, "Map file does not exist: File = %s", mapFile.GetFullPath().c_str());
        scope.SetResult(false);
        return false;
    }
    std::vector<std::pair<CStdStr, CStdStr>> components;
    if (!InstallMap::ReadComponents(mapFile, config, components)) {
        scope.SetResult(false);
        return false;
    }
    mInfos.clear();
    for (const auto& [name, cif] : components) {
        if (!PathObject(cif).Exists()) {
            scope.Log(0, "file %s was not found for %s", cif.c_str(), name.c_str());
            continue;
        }
        ComponentInfo info(name, cif);
        info.readCompStatus();
        info.readInstalledInfo();
        mInfos.emplace(name, info);
    }
    ComponentInfo drivers(kDrivers, CStdStr());
    drivers.readInstalledInfo();
    mInfos.emplace(kDrivers, drivers);
    scope.SetResult(true);
    return true;
}

const ComponentInfo* ComponentInfoMap::Find(const CStdStr& name) const {
    auto found = mInfos.find(name);
    return found == mInfos.end() ? nullptr : &found->second;
}
