// A node of the tree of components that a product is installed as. It owns the action lists
// that every kind of component has: install, OEM install, uninstall and OEM uninstall.
#pragma once

#include "actions/ActionSet.h"
#include "core/CStdStr.h"

#include <cstdint>

class IpcTransfer;

class InstallComponent {
public:
    InstallComponent() = default;
    virtual ~InstallComponent() = default;
    InstallComponent(const InstallComponent&) = delete;
    InstallComponent& operator=(const InstallComponent&) = delete;

    virtual void SetIpcTransfer(IpcTransfer* transfer) { mIpcTransfer = transfer; }
    virtual std::uint32_t GetInstallUnits() = 0;
    virtual std::uint32_t GetUninstallUnits() = 0;
    virtual bool Install() = 0;
    virtual bool Uninstall() = 0;
    virtual bool Prepare() = 0;
    virtual bool RemoveOEMSharedByContent() = 0;
    // Adopts a child.
    virtual void Add(InstallComponent* child) = 0;
    // A child by name, without regard to case; `deep` searches the children's children too.
    virtual InstallComponent* Find(const CStdStr& name, bool deep) = 0;
    virtual void GetName(CStdStr& name) = 0;
    virtual void GetSourceLocation(CStdStr& location) { location.clear(); }
    virtual void Print() = 0;

    // A generic component passes it on to its children.
    virtual void SetPackaging(bool packaging) { mPackaging = packaging; }
    bool IsPackaging() const { return mPackaging; }

    ActionSet& GetInstallActions() { return mInstallActions; }
    ActionSet& GetOemInstallActions() { return mOemInstallActions; }
    ActionSet& GetUninstallActions() { return mUninstallActions; }
    ActionSet& GetOemUninstallActions() { return mOemUninstallActions; }

protected:
    ActionSet mInstallActions;
    ActionSet mOemInstallActions;
    ActionSet mUninstallActions;
    ActionSet mOemUninstallActions;
    IpcTransfer* mIpcTransfer = nullptr;
    bool mPackaging = false;
};
