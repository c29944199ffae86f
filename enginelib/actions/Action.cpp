#include "actions/Action.h"

#include "core/RunState.h"
#include "uninstall/UninstallLog.h"

void Action::LogUninstallItem(unsigned itemType, CStdStr component, const CStdStr& item) {
    if (!mLogIt) {
        return;
    }
    UninstallLog::Global().AddItem(itemType, component, item);
}

bool Action::BuildsPackage() {
    return !RunState::GetPackageDir().empty();
}
