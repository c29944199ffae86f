// Cabinet files (MSCF) of setup media: the directory of the files they hold, and the data of
// one file. Stored and MSZIP folders are read; LZX and Quantum folders are listed but not
// expanded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

class Cabinet {
public:
    struct File {
        std::string name; // as stored, in the code page of the cabinet's maker
        std::uint32_t size = 0;
        std::uint32_t offsetInFolder = 0;
        std::uint16_t folder = 0;
        std::uint16_t date = 0; // MS-DOS date and time
        std::uint16_t time = 0;
        std::uint16_t attributes = 0;
    };

    // The compression of a folder: the low four bits of its type word, which may name a method
    // outside the four known ones.
    enum Compression : std::uint8_t { Stored = 0, MsZip = 1, Quantum = 2, Lzx = 3 };

    // False when the bytes are not a cabinet or its directory is cut short.
    bool Read(const std::string& bytes);
    static bool IsCabinet(const std::string& bytes);

    const std::vector<File>& Files() const { return mFiles; }
    // The compression of the folder that holds a file.
    Compression CompressionOf(const File& file) const;
    // The data of a file; false for a folder that cannot be expanded or data that is damaged.
    bool Extract(const File& file, std::string& data) const;

private:
    struct Folder {
        std::uint32_t dataOffset = 0;
        std::uint16_t blockCount = 0;
        std::uint16_t type = 0;
    };

    bool expandFolder(const Folder& folder, std::string& data) const;

    std::string mBytes;
    std::uint8_t mDataReserve = 0;
    std::vector<Folder> mFolders;
    std::vector<File> mFiles;
};

} // namespace sim
