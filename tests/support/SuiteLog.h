// The run's uninstall log as the engine's tests start it: empty, for the product "Suite" of the
// maker "Valmora", with no OEM brand.
#pragma once

#include "uninstall/UninstallLog.h"

inline void StartSuiteLog(UninstallLog& log) {
    log.Clear();
    log.SetProduct("Suite");
    log.SetManufacturer("Valmora");
    log.SetOemProduct("");
}
