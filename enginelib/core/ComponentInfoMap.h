// The components of a package as install.map lists them, each with what its CIF and the
// machine's log say, plus one entry DRIVERS for the printer drivers.
#pragma once

#include "core/ComponentInfo.h"

#include <map>

class ComponentInfoMap {
public:
    static constexpr const char* kDrivers = "DRIVERS";

    // Reads install.map in the Config folder of the application folder.
    bool creatingMap();
    const ComponentInfo* Find(const CStdStr& name) const;
    size_t Size() const { return mInfos.size(); }

private:
    std::map<CStdStr, ComponentInfo, NoCaseLess> mInfos;
};
