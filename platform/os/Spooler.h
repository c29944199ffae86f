// Spooler group of the platform seam (winspool). Environments are named as Windows names them:
// "Windows NT x86", "Windows x64", "Windows 4.0"; an empty one is the system's own.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

struct DriverInfo {
    std::uint32_t version = 0;
    std::string name;
    std::string environment;
    std::string driverPath;
    std::string dataFile;
    std::string configFile;
};

struct PrinterInfo {
    std::string name;
    std::string shareName;
    std::string portName;
    std::string driverName;
    std::string comment;
    std::string location;
    std::string printProcessor;
    std::string datatype;
    std::uint32_t attributes = 0;
    std::uint32_t status = 0;
};

// EnumPrinterDrivers of the local machine, level 2, for one environment ("" the system's own).
Error EnumPrinterDrivers(const std::string& environment, std::vector<DriverInfo>& drivers);
// EnumPrinters(PRINTER_ENUM_LOCAL), level 2.
Error EnumPrinters(std::vector<PrinterInfo>& printers);

Error GetPrinterDriverDirectory(const std::string& environment, std::string& path);
Error GetPrintProcessorDirectory(const std::string& environment, std::string& path);

} // namespace os
