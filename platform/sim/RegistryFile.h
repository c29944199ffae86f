// registry.reg as a state file: the registry of a simulated machine, shared by the processes
// that run on it. A record is a value of a key, or a key's existence and security: a process
// that set a value writes that value into a file another process changed meanwhile, and every
// other value stays as that process left it.
#pragma once

#include "sim/RegistryStore.h"
#include "sim/StateFile.h"

namespace sim {

class RegistryFile : public StateFile {
public:
    RegistryFile() : StateFile("registry.reg", false) {}

    // Where HKEY_CURRENT_USER lives (set before Load).
    void SetCurrentUserPath(std::string path) { mCurrentUserPath = std::move(path); }
    RegistryStore& Store() { return mStore; }
    const RegistryStore& Store() const { return mStore; }
    bool Dirty() const override { return mStore.Dirty(); }

protected:
    bool Parse(const std::string& text, std::string& why) override;
    std::string Format() const override { return mStore.Format(); }
    bool Merge(const std::string& base, const std::string& theirs, std::string& merged,
               std::string& why) const override;
    void MarkClean() override { mStore.SetDirty(false); }

private:
    std::string mCurrentUserPath;
    RegistryStore mStore;
};

} // namespace sim
