// Compressed files of setup media for tests: the LZ format of compress.exe ("SZDD") and
// cabinets. They are made here, without the tools of Windows, and read back by the real
// setupapi.dll and lz32.dll in the conformance suite under Wine.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace testfiles {

// compress.exe's format: the header, then LZSS over a 4096-byte ring that starts filled with
// blanks, written at 4080. Matches are found greedily in the text already written, so that
// back references of every length and distance occur.
inline std::string LzCompress(const std::string& data, char lastChar) {
    constexpr size_t kRing = 4096;
    constexpr size_t kStart = kRing - 16;
    constexpr size_t kMaxMatch = 18;
    std::string out("SZDD\x88\xF0\x27\x33", 8);
    out += 'A';
    out += lastChar;
    for (int i = 0; i < 4; ++i) {
        out += static_cast<char>((data.size() >> (8 * i)) & 0xFF);
    }
    size_t position = 0;
    while (position < data.size()) {
        size_t controlAt = out.size();
        out += '\0';
        unsigned control = 0;
        for (int bit = 0; bit < 8 && position < data.size(); ++bit) {
            size_t bestLength = 0;
            size_t bestFrom = 0;
            size_t window = kRing - kMaxMatch;
            size_t first = position > window ? position - window : 0;
            for (size_t from = first; from < position; ++from) {
                size_t length = 0;
                while (length < kMaxMatch && position + length < data.size() &&
                       from + length < position && data[from + length] == data[position + length]) {
                    ++length;
                }
                if (length > bestLength) {
                    bestLength = length;
                    bestFrom = from;
                }
            }
            if (bestLength >= 3) {
                size_t ring = (kStart + bestFrom) % kRing;
                out += static_cast<char>(ring & 0xFF);
                out += static_cast<char>(((ring >> 4) & 0xF0) | (bestLength - 3));
                position += bestLength;
            } else {
                control |= 1u << bit;
                out += data[position++];
            }
        }
        out[controlAt] = static_cast<char>(control);
    }
    return out;
}

struct CabinetMember {
    std::string name;
    std::string data;
    std::uint16_t date = ((2009 - 1980) << 9) | (7 << 5) | 14; // 2009-07-14
    std::uint16_t time = (12 << 11) | (30 << 5);               // 12:30:00
};

namespace detail {

inline void Add16(std::string& out, std::uint32_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>((value >> 8) & 0xFF);
}
inline void Add32(std::string& out, std::uint32_t value) {
    Add16(out, value & 0xFFFF);
    Add16(out, value >> 16);
}

} // namespace detail

// A cabinet of one MSZIP folder. Its deflate streams use stored blocks only, which every
// inflater reads; the blocks are cut at 32768 bytes as MSZIP requires.
inline std::string MsZipCabinet(const std::vector<CabinetMember>& members) {
    using namespace detail;
    std::string all;
    for (const CabinetMember& member : members) {
        all += member.data;
    }
    std::vector<std::string> blocks;
    size_t at = 0;
    do {
        std::string chunk = all.substr(at, 32768);
        std::string block = "CK";
        block += '\x01'; // the last block of its stream, stored
        Add16(block, static_cast<std::uint32_t>(chunk.size()));
        Add16(block, static_cast<std::uint32_t>(~chunk.size() & 0xFFFF));
        block += chunk;
        blocks.push_back(block);
        at += 32768;
    } while (at < all.size());
    std::string files;
    std::uint32_t offset = 0;
    for (const CabinetMember& member : members) {
        Add32(files, static_cast<std::uint32_t>(member.data.size()));
        Add32(files, offset);
        Add16(files, 0); // folder
        Add16(files, member.date);
        Add16(files, member.time);
        Add16(files, 0x20); // archive
        files += member.name;
        files += '\0';
        offset += static_cast<std::uint32_t>(member.data.size());
    }
    std::uint32_t filesAt = 36 + 8;
    std::uint32_t dataAt = filesAt + static_cast<std::uint32_t>(files.size());
    std::string data;
    for (size_t i = 0; i < blocks.size(); ++i) {
        std::string chunk = all.substr(i * 32768, 32768);
        Add32(data, 0); // no checksum
        Add16(data, static_cast<std::uint32_t>(blocks[i].size()));
        Add16(data, static_cast<std::uint32_t>(chunk.size()));
        data += blocks[i];
    }
    std::string cab = "MSCF";
    Add32(cab, 0);
    Add32(cab, dataAt + static_cast<std::uint32_t>(data.size()));
    Add32(cab, 0);
    Add32(cab, filesAt);
    Add32(cab, 0);
    cab += '\x03'; // version 1.3
    cab += '\x01';
    Add16(cab, 1); // folders
    Add16(cab, static_cast<std::uint32_t>(members.size()));
    Add16(cab, 0);      // flags
    Add16(cab, 0x1234); // set id
    Add16(cab, 0);      // number in the set
    Add32(cab, dataAt); // the folder: its data, block count, MSZIP
    Add16(cab, static_cast<std::uint32_t>(blocks.size()));
    Add16(cab, 1);
    return cab + files + data;
}

} // namespace testfiles
