// The file versions group of the seam over the simulated machine: the version resource is read
// from the bytes of the file itself.
#include "os/Versions.h"

#include "sim/AtomicFile.h"
#include "sim/MachineCall.h"
#include "sim/VersionResource.h"

namespace os {

using sim::MachineCall;

namespace {

Error ReadBlock(const std::string& path, std::vector<std::uint8_t>& block) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    std::string image;
    if (Error error = machine->ReadFile(path, image)) {
        return error;
    }
    return sim::VersionResource::FromImage(image, block);
}

} // namespace

Error GetFileVersionInfoSize(const std::string& path, std::uint32_t& size) {
    std::vector<std::uint8_t> block;
    if (Error error = ReadBlock(path, block)) {
        size = 0;
        return error;
    }
    // The A function asks for room to convert the wide texts of a 32-bit block, and for a mark
    // behind it: twice the block and four bytes.
    size = static_cast<std::uint32_t>(sim::VersionResource::IsWide(block) ? block.size() * 2 + 4
                                                                          : block.size());
    return error::Success;
}

Error GetFileVersionInfo(const std::string& path, VersionBlock& block) {
    block.data.clear();
    return ReadBlock(path, block.data);
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, std::string& text) {
    sim::VersionResource::Value value;
    if (!sim::VersionResource::Query(block.data, subBlock, value) || !value.text) {
        return error::ResourceNameNotFound;
    }
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    text = machine->Ansi().FromUnicode(value.utf16);
    return error::Success;
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock,
                    std::vector<VersionTranslation>& translations) {
    sim::VersionResource::Value value;
    if (!sim::VersionResource::Query(block.data, subBlock, value) || value.text) {
        return error::ResourceNameNotFound;
    }
    translations.clear();
    for (size_t i = 0; i + 3 < value.bytes.size(); i += 4) {
        VersionTranslation pair;
        pair.language = static_cast<std::uint16_t>(value.bytes[i] | (value.bytes[i + 1] << 8));
        pair.codePage = static_cast<std::uint16_t>(value.bytes[i + 2] | (value.bytes[i + 3] << 8));
        translations.push_back(pair);
    }
    return error::Success;
}

Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, FixedFileInfo& fixed) {
    sim::VersionResource::Value value;
    if (!sim::VersionResource::Query(block.data, subBlock, value) || value.text ||
        value.bytes.size() < 52) {
        return error::ResourceNameNotFound;
    }
    auto dword = [&value](size_t index) {
        size_t at = index * 4;
        return static_cast<std::uint32_t>(value.bytes[at]) |
               (static_cast<std::uint32_t>(value.bytes[at + 1]) << 8) |
               (static_cast<std::uint32_t>(value.bytes[at + 2]) << 16) |
               (static_cast<std::uint32_t>(value.bytes[at + 3]) << 24);
    };
    if (dword(0) != 0xFEEF04BD) {
        return error::ResourceNameNotFound;
    }
    fixed.fileVersionMS = dword(2);
    fixed.fileVersionLS = dword(3);
    fixed.productVersionMS = dword(4);
    fixed.productVersionLS = dword(5);
    fixed.fileFlags = dword(7);
    fixed.fileOS = dword(8);
    fixed.fileType = dword(9);
    fixed.fileSubtype = dword(10);
    return error::Success;
}

} // namespace os
