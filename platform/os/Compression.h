// Compressed files group of the platform seam: the compressed files of setup media, in the LZ
// format of compress.exe and expand.exe ("SZDD") and as cabinets, through setupapi.dll and
// lz32.dll.
#pragma once

#include "os/OsTypes.h"

#include <vector>

namespace os {

// FILE_COMPRESSION_*: how a file is stored.
namespace compression {
constexpr std::uint32_t None = 0;
constexpr std::uint32_t WinLza = 1; // the LZ format of compress.exe
constexpr std::uint32_t MsZip = 2;  // a cabinet
constexpr std::uint32_t Lzx = 3;    // a cabinet of LZX blocks
} // namespace compression

struct FileCompressionInfo {
    // The file that was examined: the name asked for, or one of its compressed forms.
    std::string actualSourceFileName;
    std::uint32_t sourceFileSize = 0;
    std::uint32_t targetFileSize = 0;
    std::uint32_t compressionType = compression::None;
};

// SetupGetFileCompressionInfoEx of setupapi.dll, and the older SetupGetFileCompressionInfo,
// which answers the same. When the file is missing, its compressed forms are tried: the name
// with its last character made "_", then "$". 127 (ERROR_PROC_NOT_FOUND) on a system whose
// setupapi.dll lacks the function.
Error SetupGetFileCompressionInfoEx(const std::string& sourceFileName, FileCompressionInfo& info);
Error SetupGetFileCompressionInfo(const std::string& sourceFileName, FileCompressionInfo& info);

// SetupDecompressOrCopyFile of setupapi.dll: the source (or a compressed form of its name)
// decompressed to `target`, or copied when it is not compressed; an existing target is
// replaced. Of a cabinet the first file is taken.
Error SetupDecompressOrCopyFile(const std::string& source, const std::string& target);

// One file of a cabinet (FILE_IN_CABINET_INFO).
struct CabinetFileInfo {
    std::string nameInCabinet;
    std::uint32_t fileSize = 0;
    std::uint16_t dosDate = 0;
    std::uint16_t dosTime = 0;
    std::uint16_t dosAttributes = 0;
};

// SetupIterateCabinet of setupapi.dll, skipping every file: the files that a cabinet holds, in
// its order.
Error SetupIterateCabinet(const std::string& cabinet, std::vector<CabinetFileInfo>& files);

// GetExpandedName of lz32.dll: the name that the file had before compress.exe stored it,
// restored from its header ("a.dl_" holding "l" gives "a.dll"), in the folder of `source`. A
// file that is not compressed keeps its name.
Error GetExpandedName(const std::string& source, std::string& expanded);

// Which step of an LZ copy failed.
enum class LzStep { None, OpenSource, OpenTarget, Copy };

// LZOpenFile of the source for reading and of the target with OF_CREATE, LZCopy from one to
// the other, and LZClose of both. A source that is not compressed is copied as it is. On
// failure `failed` names the step; an open gives the error of OpenFile, a copy that cannot read
// the compressed data ERROR_INVALID_DATA.
Error LZCopy(const std::string& source, const std::string& target, LzStep& failed);

} // namespace os
