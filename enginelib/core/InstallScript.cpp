#include "core/InstallScript.h"

#include "script/IniFile.h"

#include <cstdlib>

namespace {

// Keys of [Install] and [Uninstall] that steer the run rather than name a component.
const char* const kInstallKeys[] = {"Language",        "RemoteTempDir", "Default_Printer",
                                    "Delete_Printers", "Delete_Ports",  "Drivers",
                                    "Devices",         "Scanners"};
const char* const kUninstallKeys[] = {"Default_Printer", "Delete_Printers", "Delete_Ports",
                                      "Drivers",         "Devices",         "Scanners",
                                      "Printers"};

int AsNumber(const CStdStr& text) {
    return std::atoi(text.c_str());
}

} // namespace

InstallScript::InstallScript(const IniFile& script, bool uninstall)
        : mScript(script), mUninstall(uninstall) {}

const char* InstallScript::RunSectionName() const {
    return mUninstall ? "Uninstall" : "Install";
}

IniSection* InstallScript::RunSection() const {
    return mScript.FindSection(RunSectionName());
}

CStdStr InstallScript::value(const char* section, const char* key) const {
    return mScript.GetValue(section, key);
}

int InstallScript::number(const char* key) const {
    return AsNumber(value(RunSectionName(), key));
}

CStdStr InstallScript::ScriptVersion() const {
    return value("Version", "ScriptVersion");
}

CStdStr InstallScript::Language() const {
    return mUninstall ? CStdStr() : value("Install", "Language");
}

CStdStr InstallScript::RemoteTempDir() const {
    return mUninstall ? CStdStr() : value("Install", "RemoteTempDir");
}

CStdStr InstallScript::DefaultPrinter() const {
    return value(RunSectionName(), "Default_Printer");
}

bool InstallScript::WantsDeletePrinters() const {
    return number("Delete_Printers") > 0;
}

bool InstallScript::WantsDeletePorts() const {
    return number("Delete_Ports") > 0;
}

bool InstallScript::WantsDrivers() const {
    return number("Drivers") > 0;
}

bool InstallScript::WantsDevices() const {
    return number("Devices") > 0;
}

bool InstallScript::WantsScanners() const {
    return number("Scanners") > 0;
}

bool InstallScript::WantsPrinters() const {
    return mUninstall && number("Printers") > 0;
}

bool InstallScript::IsScriptKey(const CStdStr& key) const {
    if (mUninstall) {
        for (const char* name : kUninstallKeys) {
            if (key.EqualsNoCase(name)) {
                return true;
            }
        }
        return false;
    }
    for (const char* name : kInstallKeys) {
        if (key.EqualsNoCase(name)) {
            return true;
        }
    }
    return false;
}

std::vector<InstallScript::Entry> InstallScript::entries(const char* section) const {
    std::vector<Entry> found;
    if (IniSection* lines = mScript.FindSection(section)) {
        for (const auto& [name, text] : lines->Lines()) {
            found.push_back({name, AsNumber(text)});
        }
    }
    return found;
}

CStdStringList InstallScript::values(const char* section) const {
    CStdStringList found;
    if (IniSection* lines = mScript.FindSection(section)) {
        for (const auto& line : lines->Lines()) {
            found.Add(line.second);
        }
    }
    return found;
}

std::vector<InstallScript::Entry> InstallScript::Components() const {
    std::vector<Entry> components;
    for (Entry& entry : entries(RunSectionName())) {
        if (!IsScriptKey(entry.name)) {
            components.push_back(std::move(entry));
        }
    }
    return components;
}

CStdStr InstallScript::OemName() const {
    return value("OEMProduct", "Name");
}

bool InstallScript::WantsOemUninstaller() const {
    return mUninstall && value("OEMProduct", "Uninstaller") == "2";
}

bool InstallScript::IsPackage() const {
    return mScript.FindSection("Package") != nullptr;
}

std::vector<InstallScript::Entry> InstallScript::Drivers() const {
    std::vector<Entry> drivers;
    for (Entry& entry : entries("Drivers")) {
        if (mUninstall || entry.number > 0) {
            drivers.push_back(std::move(entry));
        }
    }
    return drivers;
}

std::vector<InstallScript::Entry> InstallScript::Devices() const {
    std::vector<Entry> devices;
    for (Entry& entry : entries("Devices")) {
        if (mUninstall ? entry.number == 2 : entry.number > 0) {
            devices.push_back(std::move(entry));
        }
    }
    return devices;
}

InstallScript::DriverRequest InstallScript::Driver(const CStdStr& section) const {
    auto get = [&](const char* key) { return mScript.GetValue(section, key); };
    DriverRequest request;
    request.existingDriver = get("ExistingDriver");
    request.model = get("Model");
    request.stream = get("Stream");
    request.port = get("Port");
    request.name = get("Name");
    request.alternate9x = AsNumber(get("Alt9xDrv")) > 0;
    request.alternateNT = AsNumber(get("AltNTDrv")) > 0;
    request.alternate2000 = AsNumber(get("Alt2000Drv")) > 0;
    return request;
}

InstallScript::DeviceRequest InstallScript::Device(const CStdStr& section) const {
    auto get = [&](const char* key) { return mScript.GetValue(section, key); };
    DeviceRequest request;
    request.existingDriver = get("ExistingDriver");
    request.model = get("Model");
    request.port = get("Port");
    request.share = get("Share") == "1";
    request.shareName = get("ShareName");
    request.pnpId = get("PnpId");
    request.infName = get("InfName");
    request.installDeviceDriver = get("InstallDeviceDriver") != "0";
    return request;
}

CStdStr InstallScript::ScannersInstallDeviceDriver() const {
    return value("Scanners", "InstallDeviceDriver");
}

std::vector<InstallScript::Entry> InstallScript::Printers() const {
    return mUninstall ? entries("Printers") : std::vector<Entry>();
}

CStdStringList InstallScript::PrintersToDelete() const {
    return values("DeletePrinters");
}

CStdStringList InstallScript::PortsToDelete() const {
    return values("DeletePorts");
}
