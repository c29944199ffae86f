#include "sim/SpoolerState.h"

#include "sim/IniText.h"
#include "sim/Text.h"

#include <cstdio>
#include <cstdlib>

namespace sim {

namespace {

// Splits "Kind:rest" and, for kinds keyed by environment, "Environment:name".
bool SplitName(const std::string& section, const char* kind, std::string& rest) {
    std::string prefix = std::string(kind) + ":";
    if (section.size() <= prefix.size() ||
        !EqualsNoCase(section.substr(0, prefix.size()), prefix)) {
        return false;
    }
    rest = section.substr(prefix.size());
    return true;
}

void SplitEnvironment(const std::string& rest, std::string& environment, std::string& name) {
    auto colon = rest.find(':');
    environment = colon == std::string::npos ? "" : rest.substr(0, colon);
    name = colon == std::string::npos ? rest : rest.substr(colon + 1);
}

std::string Value(const IniText::Section& section, const char* key,
                  const std::string& fallback = "") {
    for (const IniText::Entry& entry : section.entries) {
        if (EqualsNoCase(entry.key, key)) {
            return entry.value;
        }
    }
    return fallback;
}

std::uint32_t Number(const IniText::Section& section, const char* key, std::uint32_t fallback) {
    std::string text = Value(section, key);
    return text.empty() ? fallback
                        : static_cast<std::uint32_t>(std::strtoul(text.c_str(), nullptr, 0));
}

} // namespace

void SpoolerState::Read(const IniText& ini) {
    *this = SpoolerState();
    if (const IniText::Section* spooler = ini.FindSection("Spooler")) {
        running = !EqualsNoCase(Value(*spooler, "State", "Running"), "Stopped");
    }
    for (const IniText::Section& section : ini.Sections()) {
        std::string rest;
        if (SplitName(section.name, "Monitor", rest)) {
            monitors.push_back({rest, Value(section, "Driver")});
        } else if (SplitName(section.name, "Port", rest)) {
            ports.push_back({rest, Value(section, "Monitor")});
        } else if (SplitName(section.name, "Processor", rest)) {
            SpoolProcessor processor;
            SplitEnvironment(rest, processor.environment, processor.name);
            processor.driver = Value(section, "Driver");
            processors.push_back(processor);
        } else if (SplitName(section.name, "Driver", rest)) {
            SpoolDriver driver;
            SplitEnvironment(rest, driver.environment, driver.name);
            driver.version = Number(section, "Version", 3);
            driver.driverPath = Value(section, "DriverPath");
            driver.dataFile = Value(section, "DataFile");
            driver.configFile = Value(section, "ConfigFile");
            driver.monitor = Value(section, "Monitor");
            for (const IniText::Entry& entry : section.entries) {
                if (EqualsNoCase(entry.key, "DependentFile")) {
                    driver.dependentFiles.push_back(entry.value);
                }
            }
            drivers.push_back(driver);
        } else if (SplitName(section.name, "Printer", rest)) {
            SpoolPrinter printer;
            printer.name = rest;
            printer.port = Value(section, "Port");
            printer.driver = Value(section, "Driver");
            printer.processor = Value(section, "Processor", "winprint");
            printer.datatype = Value(section, "Datatype", "RAW");
            printer.shareName = Value(section, "Share");
            printer.comment = Value(section, "Comment");
            printer.location = Value(section, "Location");
            printer.attributes = Number(section, "Attributes", 0);
            printer.status = Number(section, "Status", 0);
            printers.push_back(printer);
        }
    }
}

void SpoolerState::Write(IniText& ini) const {
    ini.Set("Spooler", "State", running ? "Running" : "Stopped");
    auto add = [&](const std::string& name) -> IniText::Section& {
        return ini.GetOrAddSection(name);
    };
    for (const SpoolMonitor& monitor : monitors) {
        add("Monitor:" + monitor.name).entries.push_back({"Driver", monitor.driver});
    }
    for (const SpoolPort& port : ports) {
        add("Port:" + port.name).entries.push_back({"Monitor", port.monitor});
    }
    for (const SpoolProcessor& processor : processors) {
        add("Processor:" + processor.environment + ":" + processor.name)
                .entries.push_back({"Driver", processor.driver});
    }
    for (const SpoolDriver& driver : drivers) {
        IniText::Section& section = add("Driver:" + driver.environment + ":" + driver.name);
        section.entries.push_back({"Version", std::to_string(driver.version)});
        section.entries.push_back({"DriverPath", driver.driverPath});
        section.entries.push_back({"DataFile", driver.dataFile});
        section.entries.push_back({"ConfigFile", driver.configFile});
        if (!driver.monitor.empty()) {
            section.entries.push_back({"Monitor", driver.monitor});
        }
        for (const std::string& file : driver.dependentFiles) {
            section.entries.push_back({"DependentFile", file});
        }
    }
    for (const SpoolPrinter& printer : printers) {
        IniText::Section& section = add("Printer:" + printer.name);
        section.entries.push_back({"Port", printer.port});
        section.entries.push_back({"Driver", printer.driver});
        section.entries.push_back({"Processor", printer.processor});
        section.entries.push_back({"Datatype", printer.datatype});
        if (!printer.shareName.empty()) {
            section.entries.push_back({"Share", printer.shareName});
        }
        if (!printer.comment.empty()) {
            section.entries.push_back({"Comment", printer.comment});
        }
        if (!printer.location.empty()) {
            section.entries.push_back({"Location", printer.location});
        }
        char attributes[16];
        std::snprintf(attributes, sizeof attributes, "0x%X", printer.attributes);
        section.entries.push_back({"Attributes", attributes});
    }
}

} // namespace sim
