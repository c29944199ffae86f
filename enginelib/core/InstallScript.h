// The vocabulary of an install script, read from the host's ISF: what to install or remove, the
// drivers, devices and printers it names, the OEM product and package mode. A view over the
// script's IniFile; it holds nothing of its own, so it always answers from the script as it
// stands (after old-script conversion and the host's variables).
#pragma once

#include "core/CStdStringList.h"

#include <vector>

class IniFile;
class IniSection;

class InstallScript {
public:
    // A key of the script with the number it carries; the number is read like atoi does.
    struct Entry {
        CStdStr name;
        int number = 0;
    };

    // A section named by a key of [Drivers].
    struct DriverRequest {
        CStdStr existingDriver;
        CStdStr model;
        CStdStr stream;
        CStdStr port;
        CStdStr name;
        bool alternate9x = false;
        bool alternateNT = false;
        bool alternate2000 = false;
    };

    // A section named by a key of [Devices].
    struct DeviceRequest {
        CStdStr existingDriver;
        CStdStr model;
        CStdStr port;
        bool share = false;
        CStdStr shareName;
        CStdStr pnpId;
        CStdStr infName;
        // Only "0" stages the driver without installing it.
        bool installDeviceDriver = true;
    };

    InstallScript(const IniFile& script, bool uninstall);

    // [Install] on install, [Uninstall] on uninstall; null when the script lacks it.
    IniSection* RunSection() const;
    const char* RunSectionName() const;

    CStdStr ScriptVersion() const;
    CStdStr Language() const;
    CStdStr RemoteTempDir() const;
    CStdStr DefaultPrinter() const;
    bool WantsDeletePrinters() const;
    bool WantsDeletePorts() const;
    bool WantsDrivers() const;
    bool WantsDevices() const;
    bool WantsScanners() const;
    // Uninstall only: on install "Printers" is a component like any other.
    bool WantsPrinters() const;

    // The component keys of the run section in file order, with their selection numbers,
    // selected or not. Keys of the script's own vocabulary are left out.
    std::vector<Entry> Components() const;
    bool IsScriptKey(const CStdStr& key) const;

    CStdStr OemName() const;
    // "2" asks for the OEM uninstaller step.
    bool WantsOemUninstaller() const;
    // The section [Package], even empty, makes the run build a package.
    bool IsPackage() const;

    // Entries of [Drivers] and [Devices] that count for this run: on install every number above
    // 0; on uninstall drivers with any number (0 keeps the driver) and devices marked 2.
    std::vector<Entry> Drivers() const;
    std::vector<Entry> Devices() const;
    DriverRequest Driver(const CStdStr& section) const;
    DeviceRequest Device(const CStdStr& section) const;
    CStdStr ScannersInstallDeviceDriver() const;
    // Uninstall: every printer of [Printers] with its number; 0 keeps the printer.
    std::vector<Entry> Printers() const;
    // The values of [DeletePrinters] and [DeletePorts]; their keys don't matter.
    CStdStringList PrintersToDelete() const;
    CStdStringList PortsToDelete() const;

private:
    CStdStr value(const char* section, const char* key) const;
    int number(const char* key) const;
    std::vector<Entry> entries(const char* section) const;
    CStdStringList values(const char* section) const;

    const IniFile& mScript;
    bool mUninstall;
};
