// The spooler group of the seam, forwarded to winspool.
#include "win32/Win32Api.h"

#include "os/Spooler.h"

namespace os {

namespace {

using DirectoryFn = BOOL(WINAPI*)(LPSTR, LPSTR, DWORD, LPBYTE, DWORD, LPDWORD);

Error Directory(DirectoryFn call, const std::string& environment, std::string& path) {
    char buffer[MAX_PATH * 2];
    DWORD needed = 0;
    LPSTR env = environment.empty() ? nullptr : const_cast<char*>(environment.c_str());
    if (!call(nullptr, env, 1, reinterpret_cast<LPBYTE>(buffer), sizeof buffer, &needed)) {
        return ::GetLastError();
    }
    path = buffer;
    return error::Success;
}

std::string Text(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

Error EnumPrinterDrivers(const std::string& environment, std::vector<DriverInfo>& drivers) {
    drivers.clear();
    LPSTR env = environment.empty() ? nullptr : const_cast<char*>(environment.c_str());
    DWORD needed = 0;
    DWORD count = 0;
    ::EnumPrinterDriversA(nullptr, env, 2, nullptr, 0, &needed, &count);
    if (needed == 0) {
        DWORD error = ::GetLastError();
        return error == ERROR_INSUFFICIENT_BUFFER || error == 0 ? error::Success : error;
    }
    std::vector<BYTE> buffer(needed);
    if (!::EnumPrinterDriversA(nullptr, env, 2, buffer.data(), needed, &needed, &count)) {
        return ::GetLastError();
    }
    auto* info = reinterpret_cast<DRIVER_INFO_2A*>(buffer.data());
    for (DWORD i = 0; i < count; ++i) {
        drivers.push_back({info[i].cVersion, Text(info[i].pName), Text(info[i].pEnvironment),
                           Text(info[i].pDriverPath), Text(info[i].pDataFile),
                           Text(info[i].pConfigFile)});
    }
    return error::Success;
}

Error EnumPrinters(std::vector<PrinterInfo>& printers) {
    printers.clear();
    DWORD needed = 0;
    DWORD count = 0;
    ::EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, 2, nullptr, 0, &needed, &count);
    if (needed == 0) {
        DWORD error = ::GetLastError();
        return error == ERROR_INSUFFICIENT_BUFFER || error == 0 ? error::Success : error;
    }
    std::vector<BYTE> buffer(needed);
    if (!::EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, 2, buffer.data(), needed, &needed, &count)) {
        return ::GetLastError();
    }
    auto* info = reinterpret_cast<PRINTER_INFO_2A*>(buffer.data());
    for (DWORD i = 0; i < count; ++i) {
        PrinterInfo printer;
        printer.name = Text(info[i].pPrinterName);
        printer.shareName = Text(info[i].pShareName);
        printer.portName = Text(info[i].pPortName);
        printer.driverName = Text(info[i].pDriverName);
        printer.comment = Text(info[i].pComment);
        printer.location = Text(info[i].pLocation);
        printer.printProcessor = Text(info[i].pPrintProcessor);
        printer.datatype = Text(info[i].pDatatype);
        printer.attributes = info[i].Attributes;
        printer.status = info[i].Status;
        printers.push_back(printer);
    }
    return error::Success;
}

Error GetPrinterDriverDirectory(const std::string& environment, std::string& path) {
    return Directory(::GetPrinterDriverDirectoryA, environment, path);
}

Error GetPrintProcessorDirectory(const std::string& environment, std::string& path) {
    return Directory(::GetPrintProcessorDirectoryA, environment, path);
}

} // namespace os
