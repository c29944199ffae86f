// The LZ format of compress.exe and expand.exe: a 14-byte header ("SZDD", the method "A", the
// last character of the original name, the expanded size) and LZSS data over a ring of 4096
// bytes that starts filled with blanks.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

class LzExpand {
public:
    struct Header {
        char lastChar = 0; // 0 when compress.exe did not keep it
        std::uint32_t expandedSize = 0;
    };

    static constexpr size_t kHeaderSize = 14;

    // Whether the bytes start with the header of the format.
    static bool ReadHeader(const std::string& bytes, Header& header);
    // The expanded data. As lz32.dll does, the expansion stops at the end of the data or at the
    // size of the header, whichever comes first; false only when there is no header.
    static bool Expand(const std::string& bytes, std::string& expanded);
};

} // namespace sim
