#include "sim/Cabinet.h"

#include <cstring>
#include <zlib.h>

namespace sim {

namespace {

constexpr std::uint16_t kPreviousCabinet = 0x1;
constexpr std::uint16_t kNextCabinet = 0x2;
constexpr std::uint16_t kReservePresent = 0x4;
constexpr size_t kMsZipWindow = 32768;

bool Word(const std::string& bytes, size_t offset, std::uint16_t& value) {
    if (offset + 2 > bytes.size()) {
        return false;
    }
    value = static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[offset]) |
                                       (static_cast<unsigned char>(bytes[offset + 1]) << 8));
    return true;
}

bool Dword(const std::string& bytes, size_t offset, std::uint32_t& value) {
    std::uint16_t low = 0;
    std::uint16_t high = 0;
    if (!Word(bytes, offset, low) || !Word(bytes, offset + 2, high)) {
        return false;
    }
    value = low | (static_cast<std::uint32_t>(high) << 16);
    return true;
}

bool SkipText(const std::string& bytes, size_t& offset) {
    size_t end = bytes.find('\0', offset);
    if (end == std::string::npos) {
        return false;
    }
    offset = end + 1;
    return true;
}

// One MSZIP block: "CK" and a deflate stream that may refer back into the previous block.
bool InflateBlock(const std::string& block, size_t expandedSize, const std::string& history,
                  std::string& out) {
    if (block.size() < 2 || block[0] != 'C' || block[1] != 'K') {
        return false;
    }
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        return false;
    }
    if (!history.empty()) {
        size_t keep = std::min(history.size(), kMsZipWindow);
        inflateSetDictionary(&stream,
                             reinterpret_cast<const Bytef*>(history.data() + history.size() - keep),
                             static_cast<uInt>(keep));
    }
    std::string expanded(expandedSize, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data() + 2));
    stream.avail_in = static_cast<uInt>(block.size() - 2);
    stream.next_out = reinterpret_cast<Bytef*>(expanded.data());
    stream.avail_out = static_cast<uInt>(expanded.size());
    int rc = inflate(&stream, Z_FINISH);
    bool ok = (rc == Z_STREAM_END || rc == Z_OK || rc == Z_BUF_ERROR) &&
              stream.total_out == expandedSize;
    inflateEnd(&stream);
    if (ok) {
        out += expanded;
    }
    return ok;
}

} // namespace

bool Cabinet::IsCabinet(const std::string& bytes) {
    return bytes.size() >= 36 && bytes.compare(0, 4, "MSCF") == 0;
}

bool Cabinet::Read(const std::string& bytes) {
    mBytes = bytes;
    mFolders.clear();
    mFiles.clear();
    std::uint32_t filesOffset = 0;
    std::uint16_t folderCount = 0;
    std::uint16_t fileCount = 0;
    std::uint16_t flags = 0;
    if (!IsCabinet(bytes) || !Dword(bytes, 16, filesOffset) || !Word(bytes, 26, folderCount) ||
        !Word(bytes, 28, fileCount) || !Word(bytes, 30, flags)) {
        return false;
    }
    size_t offset = 36;
    std::uint8_t folderReserve = 0;
    mDataReserve = 0;
    if ((flags & kReservePresent) != 0) {
        std::uint16_t headerReserve = 0;
        if (!Word(bytes, offset, headerReserve) || offset + 4 > bytes.size()) {
            return false;
        }
        folderReserve = static_cast<std::uint8_t>(bytes[offset + 2]);
        mDataReserve = static_cast<std::uint8_t>(bytes[offset + 3]);
        offset += 4 + headerReserve;
    }
    for (std::uint16_t mask : {kPreviousCabinet, kNextCabinet}) {
        if ((flags & mask) != 0 && !(SkipText(bytes, offset) && SkipText(bytes, offset))) {
            return false;
        }
    }
    for (std::uint16_t i = 0; i < folderCount; ++i) {
        Folder folder;
        if (!Dword(bytes, offset, folder.dataOffset) ||
            !Word(bytes, offset + 4, folder.blockCount) || !Word(bytes, offset + 6, folder.type)) {
            return false;
        }
        mFolders.push_back(folder);
        offset += 8 + folderReserve;
    }
    offset = filesOffset;
    for (std::uint16_t i = 0; i < fileCount; ++i) {
        File file;
        if (!Dword(bytes, offset, file.size) || !Dword(bytes, offset + 4, file.offsetInFolder) ||
            !Word(bytes, offset + 8, file.folder) || !Word(bytes, offset + 10, file.date) ||
            !Word(bytes, offset + 12, file.time) || !Word(bytes, offset + 14, file.attributes)) {
            return false;
        }
        size_t nameStart = offset + 16;
        size_t nameEnd = bytes.find('\0', nameStart);
        if (nameEnd == std::string::npos) {
            return false;
        }
        file.name = bytes.substr(nameStart, nameEnd - nameStart);
        offset = nameEnd + 1;
        mFiles.push_back(file);
    }
    return true;
}

Cabinet::Compression Cabinet::CompressionOf(const File& file) const {
    if (file.folder >= mFolders.size()) {
        return Stored;
    }
    return static_cast<Compression>(mFolders[file.folder].type & 0x0F);
}

bool Cabinet::expandFolder(const Folder& folder, std::string& data) const {
    const std::string& bytes = mBytes;
    Compression compression = static_cast<Compression>(folder.type & 0x0F);
    if (compression != Stored && compression != MsZip) {
        return false;
    }
    size_t offset = folder.dataOffset;
    for (std::uint16_t i = 0; i < folder.blockCount; ++i) {
        std::uint16_t packed = 0;
        std::uint16_t expanded = 0;
        if (!Word(bytes, offset + 4, packed) || !Word(bytes, offset + 6, expanded)) {
            return false;
        }
        size_t start = offset + 8 + mDataReserve;
        if (start + packed > bytes.size()) {
            return false;
        }
        std::string block = bytes.substr(start, packed);
        if (compression == Stored) {
            data += block;
        } else if (!InflateBlock(block, expanded, data, data)) {
            return false;
        }
        offset = start + packed;
    }
    return true;
}

bool Cabinet::Extract(const File& file, std::string& data) const {
    if (file.folder >= mFolders.size()) {
        return false;
    }
    std::string folderData;
    if (!expandFolder(mFolders[file.folder], folderData) ||
        static_cast<size_t>(file.offsetInFolder) + file.size > folderData.size()) {
        return false;
    }
    data = folderData.substr(file.offsetInFolder, file.size);
    return true;
}

} // namespace sim
