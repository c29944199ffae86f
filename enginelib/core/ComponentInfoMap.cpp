#include "core/ComponentInfoMap.h"

#include "script/IniFile.h"
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
    IniFile map(mapFile.GetFullPath(), false);
    IniSection* components = map.FindSection("Components");
    if (components == nullptr || components->ValueCount() == 0) {
        scope.Log(0, "Missing 'Components' section in map file : File = %s",
                  mapFile.GetFullPath().c_str());
        scope.SetResult(false);
        return false;
    }
    mInfos.clear();
    CStdStr name;
    CStdStr cif;
    components->Reset();
    while (components->GetCurrentValue(name, cif)) {
        components->Next();
        if (cif.empty()) {
            continue;
        }
        PathObject cifPath = config;
        cifPath.SetName(cif);
        if (!cifPath.Exists()) {
            scope.Log(0, "file %s was not found for %s", cifPath.GetFullPath().c_str(),
                      name.c_str());
            continue;
        }
        ComponentInfo info(name, cifPath.GetFullPath());
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
