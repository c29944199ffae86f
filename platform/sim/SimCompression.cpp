// The compressed files group of the seam over the simulated machine: the LZ format and cabinets
// are expanded here, as setupapi.dll and lz32.dll expand them.
#include "os/Compression.h"

#include "os/Files.h"
#include "sim/AtomicFile.h"
#include "sim/Cabinet.h"
#include "sim/HostFile.h"
#include "sim/LzExpand.h"
#include "sim/MachineCall.h"
#include "sim/SystemLibraries.h"

#include <cctype>
#include <fstream>

namespace os {

using sim::MachineCall;

namespace {

constexpr Error kProcNotFound = 127;

struct Source {
    std::string path; // the ANSI path that was found
    std::string bytes;
};

// Reads a file that another process does not hold against reading.
Error ReadSource(MachineCall& machine, const std::string& path, Source& source) {
    if (Error error = machine->ReadFile(path, source.bytes)) {
        return error;
    }
    source.path = path;
    return error::Success;
}

// The file, or else the first of its compressed names that exists: "x.dll", "x.dl_", "x.dl$".
Error FindSource(MachineCall& machine, const std::string& path, Source& source) {
    Error first = ReadSource(machine, path, source);
    if (first != error::FileNotFound || path.empty()) {
        return first;
    }
    for (char last : {'_', '$'}) {
        std::string candidate = path;
        candidate.back() = last;
        if (ReadSource(machine, candidate, source) == error::Success) {
            return error::Success;
        }
    }
    return first;
}

std::uint32_t TypeOf(const std::string& bytes, std::uint32_t& expandedSize) {
    sim::LzExpand::Header header;
    if (sim::LzExpand::ReadHeader(bytes, header)) {
        expandedSize = header.expandedSize;
        return compression::WinLza;
    }
    sim::Cabinet cabinet;
    if (cabinet.Read(bytes) && !cabinet.Files().empty()) {
        const sim::Cabinet::File& first = cabinet.Files().front();
        expandedSize = first.size;
        return cabinet.CompressionOf(first) == sim::Cabinet::Lzx ? compression::Lzx
                                                                 : compression::MsZip;
    }
    expandedSize = static_cast<std::uint32_t>(bytes.size());
    return compression::None;
}

// Writes new contents to a file as CreateFile with CREATE_ALWAYS would: refused for a folder,
// a read-only file or one that another process holds.
Error WriteTarget(MachineCall& machine, const std::string& path, const std::string& data) {
    sim::HostLocation location;
    sim::WindowsPath parsed;
    if (Error error = machine->Locate(path, location, false, &parsed)) {
        return error;
    }
    if (!location.parentExists) {
        return error::PathNotFound;
    }
    if (Error refused = location.Openable()) {
        return refused;
    }
    if (location.exists) {
        if (location.isDirectory ||
            (sim::HostFile::Attributes(location.hostPath, false) & attr::ReadOnly) != 0) {
            return error::AccessDenied;
        }
        sim::FileLock lock = machine->LockOf(parsed);
        if (lock == sim::FileLock::Lock) {
            return error::LockViolation;
        }
        if (lock != sim::FileLock::None) {
            return error::SharingViolation;
        }
    }
    std::ofstream out(location.hostPath, std::ios::binary | std::ios::trunc);
    out.write(data.data(), static_cast<std::streamsize>(data.size()));
    out.close();
    if (!location.exists) {
        machine->Paths().Added(location.hostPath);
    }
    return out ? error::Success : error::DiskFull;
}

Error CompressionInfo(const std::string& function, const std::string& path,
                      FileCompressionInfo& info) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasFunction(machine->Identity(), "setupapi.dll", function)) {
        return kProcNotFound;
    }
    Source source;
    if (Error error = FindSource(machine, path, source)) {
        return error;
    }
    info.actualSourceFileName = source.path;
    info.sourceFileSize = static_cast<std::uint32_t>(source.bytes.size());
    info.compressionType = TypeOf(source.bytes, info.targetFileSize);
    return error::Success;
}

} // namespace

Error SetupGetFileCompressionInfoEx(const std::string& sourceFileName, FileCompressionInfo& info) {
    return CompressionInfo("SetupGetFileCompressionInfoExA", sourceFileName, info);
}

Error SetupGetFileCompressionInfo(const std::string& sourceFileName, FileCompressionInfo& info) {
    return CompressionInfo("SetupGetFileCompressionInfoA", sourceFileName, info);
}

Error SetupDecompressOrCopyFile(const std::string& source, const std::string& target) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasFunction(machine->Identity(), "setupapi.dll",
                                           "SetupDecompressOrCopyFileA")) {
        return kProcNotFound;
    }
    Source found;
    if (Error error = FindSource(machine, source, found)) {
        return error;
    }
    std::uint32_t size = 0;
    switch (TypeOf(found.bytes, size)) {
    case compression::WinLza: {
        std::string expanded;
        sim::LzExpand::Expand(found.bytes, expanded);
        return WriteTarget(machine, target, expanded);
    }
    case compression::MsZip:
    case compression::Lzx: {
        sim::Cabinet cabinet;
        std::string data;
        if (!cabinet.Read(found.bytes) || !cabinet.Extract(cabinet.Files().front(), data)) {
            return error::InvalidData;
        }
        return WriteTarget(machine, target, data);
    }
    default:
        return CopyFile(found.path, target, false);
    }
}

Error SetupIterateCabinet(const std::string& cabinet, std::vector<CabinetFileInfo>& files) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    if (!sim::SystemLibraries::HasFunction(machine->Identity(), "setupapi.dll",
                                           "SetupIterateCabinetA")) {
        return kProcNotFound;
    }
    Source found;
    if (Error error = ReadSource(machine, cabinet, found)) {
        return error;
    }
    sim::Cabinet parsed;
    if (!parsed.Read(found.bytes)) {
        return error::InvalidData;
    }
    files.clear();
    for (const sim::Cabinet::File& file : parsed.Files()) {
        CabinetFileInfo info;
        info.nameInCabinet = file.name;
        info.fileSize = file.size;
        info.dosDate = file.date;
        info.dosTime = file.time;
        info.dosAttributes = file.attributes;
        files.push_back(info);
    }
    return error::Success;
}

Error GetExpandedName(const std::string& source, std::string& expanded) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    Source found;
    if (Error error = ReadSource(machine, source, found)) {
        return error;
    }
    expanded = source;
    sim::LzExpand::Header header;
    if (!sim::LzExpand::ReadHeader(found.bytes, header)) {
        return error::Success;
    }
    size_t nameStart = expanded.find_last_of("\\/:");
    nameStart = nameStart == std::string::npos ? 0 : nameStart + 1;
    size_t dot = expanded.find('.', nameStart);
    if (nameStart >= expanded.size() || dot == std::string::npos) {
        return error::Success;
    }
    if (dot + 1 == expanded.size()) {
        expanded.pop_back(); // "name." loses its dot
        return error::Success;
    }
    if (expanded.back() != '_') {
        return error::Success;
    }
    // The restored character takes the case of the name's last letter.
    unsigned char last = static_cast<unsigned char>(header.lastChar);
    for (size_t i = expanded.size(); i > nameStart; --i) {
        unsigned char c = static_cast<unsigned char>(expanded[i - 1]);
        if (std::isalpha(c) && std::isalpha(last)) {
            last = static_cast<unsigned char>(std::islower(c) ? std::tolower(last)
                                                              : std::toupper(last));
            break;
        }
    }
    if (last == 0) {
        expanded.pop_back();
    } else {
        expanded.back() = static_cast<char>(last);
    }
    return error::Success;
}

Error LZCopy(const std::string& source, const std::string& target, LzStep& failed) {
    failed = LzStep::None;
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    Source found;
    if (Error error = ReadSource(machine, source, found)) {
        failed = LzStep::OpenSource;
        return error;
    }
    std::string data = found.bytes;
    sim::LzExpand::Header header;
    bool compressed = sim::LzExpand::ReadHeader(found.bytes, header);
    // OF_CREATE makes the target empty before a byte is copied.
    if (Error error = WriteTarget(machine, target, std::string())) {
        failed = LzStep::OpenTarget;
        return error;
    }
    if (compressed) {
        sim::LzExpand::Expand(found.bytes, data);
    }
    if (Error error = WriteTarget(machine, target, data)) {
        failed = LzStep::Copy;
        return error;
    }
    return error::Success;
}

} // namespace os
