// The print spooler of a simulated machine: spooler.ini in the machine's folder, one section per
// monitor, port, print processor, driver and printer.
//
//   [Spooler]
//   State=Running
//   [Monitor:Local Port]
//   Driver=localspl.dll
//   [Port:LPT1:]
//   Monitor=Local Port
//   [Processor:Windows x64:winprint]
//   Driver=winprint.dll
//   [Driver:Windows x64:Microsoft XPS Document Writer]
//   Version=3
//   DriverPath=C:\Windows\system32\spool\drivers\x64\3\mxdwdrv.dll
//   [Printer:Microsoft XPS Document Writer]
//   Port=XPSPort:
//   Driver=Microsoft XPS Document Writer
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sim {

class IniText;

struct SpoolMonitor {
    std::string name;
    std::string driver;
};

struct SpoolPort {
    std::string name;
    std::string monitor;
};

struct SpoolProcessor {
    std::string environment;
    std::string name;
    std::string driver;
};

struct SpoolDriver {
    std::string environment;
    std::string name;
    std::uint32_t version = 3;
    std::string driverPath;
    std::string dataFile;
    std::string configFile;
    std::vector<std::string> dependentFiles;
    std::string monitor;
};

struct SpoolPrinter {
    std::string name;
    std::string port;
    std::string driver;
    std::string processor = "winprint";
    std::string datatype = "RAW";
    std::string shareName;
    std::string comment;
    std::string location;
    std::uint32_t attributes = 0;
    std::uint32_t status = 0;
};

class SpoolerState {
public:
    static constexpr const char* kHeader =
            "The print spooler of this machine: one section per monitor, port, print\nprocessor, "
            "driver (by environment) and printer.";

    void Read(const IniText& ini);
    void Write(IniText& ini) const;

    bool running = true;
    std::vector<SpoolMonitor> monitors;
    std::vector<SpoolPort> ports;
    std::vector<SpoolProcessor> processors;
    std::vector<SpoolDriver> drivers;
    std::vector<SpoolPrinter> printers;
};

} // namespace sim
