// The spooler group of the seam over the simulated machine's spooler.
#include "os/Spooler.h"

#include "sim/MachineCall.h"
#include "sim/Text.h"

namespace os {

using sim::MachineCall;

namespace {

constexpr Error kInvalidEnvironment = 1805;

// The folder name of a print environment below "spool\drivers" and "spool\prtprocs".
bool EnvironmentFolder(const sim::MachineIdentity& id, const std::string& environment,
                       std::string& folder) {
    if (environment.empty()) {
        folder = id.Is64Bit() ? "x64" : "W32X86";
        return true;
    }
    if (sim::EqualsNoCase(environment, "Windows NT x86")) {
        folder = "W32X86";
    } else if (sim::EqualsNoCase(environment, "Windows x64")) {
        folder = "x64";
    } else if (sim::EqualsNoCase(environment, "Windows 4.0")) {
        folder = "WIN40";
    } else if (sim::EqualsNoCase(environment, "Windows IA64")) {
        folder = "IA64";
    } else {
        return false;
    }
    return true;
}

Error SpoolFolder(const char* kind, const std::string& environment, std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    const sim::MachineIdentity& id = machine->Identity();
    if (!id.IsNT()) {
        // Windows 9x keeps printer drivers and processors in its system folder.
        path = machine->ToAnsi(id.SystemDirectory());
        return error::Success;
    }
    std::string folder;
    if (!EnvironmentFolder(id, machine->ToUtf8(environment), folder)) {
        return kInvalidEnvironment;
    }
    path = machine->ToAnsi(id.SystemDirectory() + "\\spool\\" + kind + "\\" + folder);
    return error::Success;
}

std::string NativeEnvironment(const sim::MachineIdentity& id) {
    if (!id.IsNT()) {
        return "Windows 4.0";
    }
    return id.Is64Bit() ? "Windows x64" : "Windows NT x86";
}

} // namespace

Error EnumPrinterDrivers(const std::string& environment, std::vector<DriverInfo>& drivers) {
    drivers.clear();
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!machine->Spooler().running) {
        return 1722; // RPC_S_SERVER_UNAVAILABLE
    }
    std::string wanted = environment.empty() ? NativeEnvironment(machine->Identity())
                                             : machine->ToUtf8(environment);
    for (const sim::SpoolDriver& driver : machine->Spooler().drivers) {
        if (!sim::EqualsNoCase(driver.environment, wanted)) {
            continue;
        }
        DriverInfo info;
        info.version = driver.version;
        info.name = machine->ToAnsi(driver.name);
        info.environment = machine->ToAnsi(driver.environment);
        info.driverPath = machine->ToAnsi(driver.driverPath);
        info.dataFile = machine->ToAnsi(driver.dataFile);
        info.configFile = machine->ToAnsi(driver.configFile);
        drivers.push_back(info);
    }
    return error::Success;
}

Error EnumPrinters(std::vector<PrinterInfo>& printers) {
    printers.clear();
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!machine->Spooler().running) {
        return 1722; // RPC_S_SERVER_UNAVAILABLE
    }
    for (const sim::SpoolPrinter& printer : machine->Spooler().printers) {
        PrinterInfo info;
        info.name = machine->ToAnsi(printer.name);
        info.shareName = machine->ToAnsi(printer.shareName);
        info.portName = machine->ToAnsi(printer.port);
        info.driverName = machine->ToAnsi(printer.driver);
        info.comment = machine->ToAnsi(printer.comment);
        info.location = machine->ToAnsi(printer.location);
        info.printProcessor = machine->ToAnsi(printer.processor);
        info.datatype = machine->ToAnsi(printer.datatype);
        info.attributes = printer.attributes;
        info.status = printer.status;
        printers.push_back(info);
    }
    return error::Success;
}

Error GetPrinterDriverDirectory(const std::string& environment, std::string& path) {
    return SpoolFolder("drivers", environment, path);
}

Error GetPrintProcessorDirectory(const std::string& environment, std::string& path) {
    return SpoolFolder("prtprocs", environment, path);
}

} // namespace os
