// Small Windows images that carry a version: a PE32+ library whose only section is a resource
// section holding one VS_VERSIONINFO, or a 16-bit NE library with the same in its narrow form.
// They make the programs of the example package and the images of tests of file versions; they
// are complete enough for the real version.dll to read (the conformance suite runs them under
// Wine), and are made here so that no Windows toolchain is needed for them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace peimage {

struct StringTable {
    std::string key = "040904b0"; // language and code page, as VerQueryValue names the table
    std::vector<std::pair<std::string, std::string>> strings;
};

struct VersionSpec {
    // The fixed part: four numbers each.
    std::uint16_t fileVersion[4] = {1, 0, 0, 0};
    std::uint16_t productVersion[4] = {1, 0, 0, 0};
    std::vector<std::pair<std::uint16_t, std::uint16_t>> translations = {{0x0409, 0x04B0}};
    std::vector<StringTable> tables;
};

// A version resource with one table of the usual strings and the given FileVersion text.
inline VersionSpec WithFileVersion(const std::string& fileVersion) {
    VersionSpec resource;
    StringTable table;
    table.strings = {{"CompanyName", "Tovar Test"},
                     {"FileDescription", "Test library"},
                     {"FileVersion", fileVersion},
                     {"ProductVersion", fileVersion}};
    resource.tables.push_back(table);
    return resource;
}

namespace detail {

inline void Put16(std::string& out, size_t at, std::uint16_t value) {
    out[at] = static_cast<char>(value & 0xFF);
    out[at + 1] = static_cast<char>(value >> 8);
}
inline void Put32(std::string& out, size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        out[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
    }
}
inline void Add16(std::string& out, std::uint16_t value) {
    out.append(2, '\0');
    Put16(out, out.size() - 2, value);
}
inline void Add32(std::string& out, std::uint32_t value) {
    out.append(4, '\0');
    Put32(out, out.size() - 4, value);
}
inline void Pad4(std::string& out) {
    while (out.size() % 4 != 0) {
        out += '\0';
    }
}

// One node of the tree: header, key, value, children; its length word is filled in last.
// Nodes start on a four-byte boundary of the block, which `out` is.
inline void Node(std::string& out, bool wide, const std::string& key, const std::string& value,
                 std::uint16_t valueLength, bool text, const std::vector<std::string>& children) {
    size_t start = out.size();
    Add16(out, 0);
    Add16(out, valueLength);
    if (wide) {
        Add16(out, text ? 1 : 0);
        for (char c : key) {
            Add16(out, static_cast<unsigned char>(c));
        }
        Add16(out, 0);
    } else {
        out += key;
        out += '\0';
    }
    Pad4(out);
    out += value;
    for (const std::string& child : children) {
        Pad4(out);
        out += child;
    }
    Put16(out, start, static_cast<std::uint16_t>(out.size() - start));
}

inline std::string Text(bool wide, const std::string& text) {
    std::string out;
    for (char c : text) {
        if (wide) {
            Add16(out, static_cast<unsigned char>(c));
        } else {
            out += c;
        }
    }
    out.append(wide ? 2 : 1, '\0');
    return out;
}

inline std::string Fixed(const VersionSpec& resource) {
    std::string out;
    Add32(out, 0xFEEF04BD);
    Add32(out, 0x00010000);
    Add32(out,
          (static_cast<std::uint32_t>(resource.fileVersion[0]) << 16) | resource.fileVersion[1]);
    Add32(out,
          (static_cast<std::uint32_t>(resource.fileVersion[2]) << 16) | resource.fileVersion[3]);
    Add32(out, (static_cast<std::uint32_t>(resource.productVersion[0]) << 16) |
                       resource.productVersion[1]);
    Add32(out, (static_cast<std::uint32_t>(resource.productVersion[2]) << 16) |
                       resource.productVersion[3]);
    Add32(out, 0x3F);    // flags mask
    Add32(out, 0);       // flags
    Add32(out, 0x40004); // VOS_NT_WINDOWS32
    Add32(out, 2);       // VFT_DLL
    Add32(out, 0);       // subtype
    Add32(out, 0);       // date
    Add32(out, 0);
    return out;
}

} // namespace detail

// The VS_VERSIONINFO block: wide for PE images, narrow for NE images.
inline std::string VersionBlock(const VersionSpec& resource, bool wide) {
    using namespace detail;
    std::vector<std::string> tables;
    for (const StringTable& table : resource.tables) {
        std::vector<std::string> strings;
        for (const auto& [name, value] : table.strings) {
            std::string node;
            std::string text = Text(wide, value);
            auto length = static_cast<std::uint16_t>(wide ? text.size() / 2 : text.size());
            Node(node, wide, name, text, length, true, {});
            strings.push_back(node);
        }
        std::string node;
        Node(node, wide, table.key, "", 0, true, strings);
        tables.push_back(node);
    }
    std::vector<std::string> children;
    if (!tables.empty()) {
        std::string node;
        Node(node, wide, "StringFileInfo", "", 0, true, tables);
        children.push_back(node);
    }
    if (!resource.translations.empty()) {
        std::string pairs;
        for (const auto& [language, codePage] : resource.translations) {
            Add16(pairs, language);
            Add16(pairs, codePage);
        }
        std::string var;
        Node(var, wide, "Translation", pairs, static_cast<std::uint16_t>(pairs.size()), false, {});
        std::string node;
        Node(node, wide, "VarFileInfo", "", 0, true, {var});
        children.push_back(node);
    }
    std::string fixed = Fixed(resource);
    std::string root;
    Node(root, wide, "VS_VERSION_INFO", fixed, static_cast<std::uint16_t>(fixed.size()), false,
         children);
    return root;
}

// A PE32+ library. With `withVersion` false its resource section holds only a string table,
// so that it has resources but no version.
inline std::string PeImage(const VersionSpec& resource, bool withVersion = true) {
    using namespace detail;
    constexpr std::uint32_t kSectionRva = 0x1000;
    constexpr std::uint32_t kFileAlignment = 0x200;
    constexpr std::uint32_t kSectionAlignment = 0x1000;

    // The resource section: type directory, name directory, language directory, data entry,
    // then the data.
    std::uint16_t type = withVersion ? 16 : 6; // RT_VERSION, or RT_STRING
    std::string data = withVersion ? VersionBlock(resource, true) : std::string(32, '\0');
    std::string rsrc;
    auto directory = [&rsrc](std::uint16_t id, std::uint32_t target) {
        Add32(rsrc, 0); // characteristics
        Add32(rsrc, 0); // time stamp
        Add16(rsrc, 0); // major version
        Add16(rsrc, 0); // minor version
        Add16(rsrc, 0); // named entries
        Add16(rsrc, 1); // numbered entries
        Add32(rsrc, id);
        Add32(rsrc, target);
    };
    directory(type, 0x80000000u | 24);
    directory(1, 0x80000000u | 48);
    directory(0x0409, 72);
    Add32(rsrc, kSectionRva + 88); // data entry: address, size, code page, reserved
    Add32(rsrc, static_cast<std::uint32_t>(data.size()));
    Add32(rsrc, 0);
    Add32(rsrc, 0);
    rsrc += data;
    Pad4(rsrc);
    auto rawSize =
            static_cast<std::uint32_t>((rsrc.size() + kFileAlignment - 1) & ~(kFileAlignment - 1));
    auto virtualSize = static_cast<std::uint32_t>(rsrc.size());
    std::uint32_t imageSize =
            kSectionRva + ((virtualSize + kSectionAlignment - 1) & ~(kSectionAlignment - 1));

    std::string image(kFileAlignment, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    Put32(image, 0x3C, 0x80);
    size_t pe = 0x80;
    image.replace(pe, 4, std::string("PE\0\0", 4));
    size_t coff = pe + 4;
    Put16(image, coff + 0, 0x8664);  // AMD64
    Put16(image, coff + 2, 1);       // one section
    Put16(image, coff + 16, 240);    // size of the optional header
    Put16(image, coff + 18, 0x2022); // executable, large address aware, DLL
    size_t opt = coff + 20;
    Put16(image, opt + 0, 0x20B);
    image[opt + 2] = 14;                 // linker version
    Put32(image, opt + 8, rawSize);      // initialised data
    Put32(image, opt + 20, kSectionRva); // base of code
    Put32(image, opt + 24, 0x10000000);  // image base (64 bits, low half)
    Put32(image, opt + 32, kSectionAlignment);
    Put32(image, opt + 36, kFileAlignment);
    Put16(image, opt + 40, 6); // operating system version
    Put16(image, opt + 48, 6); // subsystem version
    Put32(image, opt + 56, imageSize);
    Put32(image, opt + 60, kFileAlignment); // size of headers
    Put16(image, opt + 68, 2);              // Windows GUI
    Put16(image, opt + 70, 0x0100);         // NX compatible
    Put32(image, opt + 72, 0x100000);       // stack reserve
    Put32(image, opt + 80, 0x1000);         // stack commit
    Put32(image, opt + 88, 0x100000);       // heap reserve
    Put32(image, opt + 96, 0x1000);         // heap commit
    Put32(image, opt + 108, 16);            // data directories
    Put32(image, opt + 112 + 2 * 8, kSectionRva);
    Put32(image, opt + 112 + 2 * 8 + 4, virtualSize);
    size_t section = opt + 240;
    image.replace(section, 8, std::string(".rsrc\0\0\0", 8));
    Put32(image, section + 8, virtualSize);
    Put32(image, section + 12, kSectionRva);
    Put32(image, section + 16, rawSize);
    Put32(image, section + 20, kFileAlignment);
    Put32(image, section + 36, 0x40000040); // initialised data, readable
    rsrc.resize(rawSize, '\0');
    return image + rsrc;
}

// A 16-bit NE library with the narrow version block in its resource table.
inline std::string NeImage(const VersionSpec& resource) {
    using namespace detail;
    constexpr std::uint16_t kShift = 4;
    std::string block = VersionBlock(resource, false);
    std::string image(0x40, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    Put32(image, 0x3C, 0x40);
    std::string ne(0x40, '\0');
    ne[0] = 'N';
    ne[1] = 'E';
    ne[2] = 5;                        // linker version
    Put16(ne, 0x0C, 0x8000 | 0x0001); // a library with single data
    Put16(ne, 0x24, 0x40);            // resource table
    // The resource table: shift, one type with one resource, the end mark, then the
    // resident-name table right after it.
    std::string table;
    Add16(table, kShift);
    Add16(table, 0x8000 | 16);
    Add16(table, 1);
    Add32(table, 0);
    size_t offsetField = table.size();
    Add16(table, 0); // offset, shifted
    Add16(table, static_cast<std::uint16_t>((block.size() + 15) >> kShift));
    Add16(table, 0x0030); // moveable, shareable
    Add16(table, 0x8001); // id 1
    Add32(table, 0);
    Add16(table, 0);                                                  // end of the types
    Put16(ne, 0x26, static_cast<std::uint16_t>(0x40 + table.size())); // resident names
    Put16(ne, 0x28, static_cast<std::uint16_t>(0x40 + table.size() + 1));
    Put16(ne, 0x2A, static_cast<std::uint16_t>(0x40 + table.size() + 1));
    Put16(ne, 0x2C, static_cast<std::uint16_t>(0x40 + table.size() + 1));
    ne[0x36] = 2; // target: Windows
    std::string head = image + ne + table + std::string(1, '\0');
    size_t dataStart = (head.size() + 15) & ~static_cast<size_t>(15);
    Put16(head, 0x40 + 0x40 + offsetField, static_cast<std::uint16_t>(dataStart >> kShift));
    head.resize(dataStart, '\0');
    std::string padded = block;
    padded.resize((block.size() + 15) & ~static_cast<size_t>(15), '\0');
    return head + padded;
}

} // namespace peimage
