// File versions group of the platform seam: the version resource of a program or library file.
//
// GetFileVersionInfo gives the resource as one block, as Windows does; the block is read only
// through VerQueryValue, whose three forms give the three kinds of value a block holds.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

// The version resource of a file, as GetFileVersionInfo fills it. Its bytes belong to the
// backend: read it with VerQueryValue only.
struct VersionBlock {
    std::vector<std::uint8_t> data;
};

// One language and code page pair of "\VarFileInfo\Translation".
struct VersionTranslation {
    std::uint16_t language = 0;
    std::uint16_t codePage = 0;
};

// VS_FIXEDFILEINFO, the root value "\" of a block.
struct FixedFileInfo {
    std::uint32_t fileVersionMS = 0;
    std::uint32_t fileVersionLS = 0;
    std::uint32_t productVersionMS = 0;
    std::uint32_t productVersionLS = 0;
    std::uint32_t fileFlags = 0;
    std::uint32_t fileOS = 0;
    std::uint32_t fileType = 0;
    std::uint32_t fileSubtype = 0;
};

namespace error {
constexpr Error BadExeFormat = 193;          // not a program or library file
constexpr Error ResourceDataNotFound = 1812; // the file has no resources
constexpr Error ResourceTypeNotFound = 1813; // it has no version resource
constexpr Error ResourceNameNotFound = 1814; // VerQueryValue: no such value in the block
} // namespace error

// The size of the version resource of a file; an error when it has none.
Error GetFileVersionInfoSize(const std::string& path, std::uint32_t& size);
// GetFileVersionInfoSize and GetFileVersionInfo in one: the version resource of a file.
Error GetFileVersionInfo(const std::string& path, VersionBlock& block);

// VerQueryValue of a text value, such as "\StringFileInfo\040904b0\FileVersion", in the system's
// ANSI code page. Names compare without regard to case. ResourceNameNotFound when the block
// holds no such value.
Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, std::string& text);
// VerQueryValue of "\VarFileInfo\Translation": every pair, in the order of the resource.
Error VerQueryValue(const VersionBlock& block, const std::string& subBlock,
                    std::vector<VersionTranslation>& translations);
// VerQueryValue of "\": the fixed part.
Error VerQueryValue(const VersionBlock& block, const std::string& subBlock, FixedFileInfo& fixed);

} // namespace os
