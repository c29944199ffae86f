#include "sim/RegistryFile.h"

namespace sim {

bool RegistryFile::Parse(const std::string& text, std::string& why) {
    RegistryStore store;
    if (!store.Parse(text, mCurrentUserPath, why)) {
        return false;
    }
    mStore = std::move(store);
    return true;
}

bool RegistryFile::Merge(const std::string& base, const std::string& theirs, std::string& merged,
                         std::string& why) const {
    RegistryStore before;
    RegistryStore now;
    if (!before.Parse(base, mCurrentUserPath, why)) {
        return false;
    }
    if (!now.Parse(theirs, mCurrentUserPath, why)) {
        // A file that another hand left unreadable is not the base of a merge; this process's
        // registry replaces it, as a plain write would.
        merged = mStore.Format();
        return true;
    }
    now.ApplyChanges(before, mStore);
    merged = now.Format();
    return true;
}

} // namespace sim
