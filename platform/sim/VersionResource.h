// The version resource of a Windows program or library file, read from the file's bytes as the
// system's loader finds it: the resource section of a PE image (32 or 64 bit), or the resource
// table of a 16-bit NE image. The block is the VS_VERSIONINFO tree of the resource, in its wide
// form (PE) or its narrow 16-bit form (NE).
#pragma once

#include "os/OsTypes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

class VersionResource {
public:
    // The first RT_VERSION resource of the image. ResourceDataNotFound for a file that is not an
    // image or an image without resources, ResourceTypeNotFound for an image without a version
    // resource, BadExeFormat for an image whose headers are broken.
    static os::Error FromImage(const std::string& image, std::vector<std::uint8_t>& block);
    // Whether a block is in the wide (32-bit) form.
    static bool IsWide(const std::vector<std::uint8_t>& block);

    // One node of the tree, found by a VerQueryValue path ("\", "\StringFileInfo\040904b0\X").
    struct Value {
        bool text = false; // a text value: `utf16` holds it without its terminator
        std::u16string utf16;
        std::vector<std::uint8_t> bytes; // a binary value
    };
    // False when the block holds no node of that path.
    static bool Query(const std::vector<std::uint8_t>& block, const std::string& subBlock,
                      Value& value);
};

} // namespace sim
