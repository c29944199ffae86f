#include "sim/VersionResource.h"

#include "os/Versions.h"

#include <optional>

namespace sim {

namespace {

constexpr std::uint16_t kRtVersion = 16;

// Reads little-endian numbers from a byte string; a read past the end gives nothing.
class Bytes {
public:
    Bytes(const std::uint8_t* data, size_t size) : mData(data), mSize(size) {}
    explicit Bytes(const std::string& text)
            : mData(reinterpret_cast<const std::uint8_t*>(text.data())), mSize(text.size()) {}

    size_t Size() const { return mSize; }
    const std::uint8_t* At(size_t offset) const { return mData + offset; }
    bool Has(size_t offset, size_t count) const {
        return offset <= mSize && count <= mSize - offset;
    }
    std::optional<std::uint16_t> Word(size_t offset) const {
        if (!Has(offset, 2)) {
            return std::nullopt;
        }
        return static_cast<std::uint16_t>(mData[offset] | (mData[offset + 1] << 8));
    }
    std::optional<std::uint32_t> Dword(size_t offset) const {
        if (!Has(offset, 4)) {
            return std::nullopt;
        }
        return static_cast<std::uint32_t>(mData[offset]) |
               (static_cast<std::uint32_t>(mData[offset + 1]) << 8) |
               (static_cast<std::uint32_t>(mData[offset + 2]) << 16) |
               (static_cast<std::uint32_t>(mData[offset + 3]) << 24);
    }

private:
    const std::uint8_t* mData;
    size_t mSize;
};

size_t Align4(size_t offset) {
    return (offset + 3) & ~static_cast<size_t>(3);
}

// ---- PE images -------------------------------------------------------------------------

struct Section {
    std::uint32_t virtualAddress = 0;
    std::uint32_t virtualSize = 0;
    std::uint32_t rawSize = 0;
    std::uint32_t rawOffset = 0;
};

// The file offset of an address of the loaded image.
std::optional<size_t> FileOffset(const std::vector<Section>& sections, std::uint32_t rva,
                                 std::uint32_t size) {
    for (const Section& section : sections) {
        std::uint32_t extent = std::max(section.virtualSize, section.rawSize);
        if (rva >= section.virtualAddress && rva - section.virtualAddress < extent) {
            std::uint32_t within = rva - section.virtualAddress;
            if (within > section.rawSize || size > section.rawSize - within) {
                return std::nullopt;
            }
            return static_cast<size_t>(section.rawOffset) + within;
        }
    }
    return std::nullopt;
}

// The first entry of a resource directory at `directory` (relative to the section), preferring
// the entry of `id` when one is given. Gives the entry's offset field.
std::optional<std::uint32_t> DirectoryEntry(const Bytes& image, size_t base, size_t directory,
                                            std::optional<std::uint16_t> id) {
    auto named = image.Word(base + directory + 12);
    auto numbered = image.Word(base + directory + 14);
    if (!named || !numbered) {
        return std::nullopt;
    }
    size_t count = static_cast<size_t>(*named) + *numbered;
    for (size_t i = 0; i < count; ++i) {
        size_t entry = base + directory + 16 + 8 * i;
        auto name = image.Dword(entry);
        auto offset = image.Dword(entry + 4);
        if (!name || !offset) {
            return std::nullopt;
        }
        if (!id || ((*name & 0x80000000u) == 0 && (*name & 0xFFFF) == *id)) {
            return offset;
        }
    }
    return std::nullopt;
}

os::Error FromPe(const Bytes& image, size_t header, std::vector<std::uint8_t>& block) {
    auto sectionCount = image.Word(header + 6);
    auto optionalSize = image.Word(header + 20);
    size_t optional = header + 24;
    auto magic = image.Word(optional);
    if (!sectionCount || !optionalSize || !magic) {
        return os::error::BadExeFormat;
    }
    size_t directories = 0;
    if (*magic == 0x10b) {
        directories = optional + 96;
    } else if (*magic == 0x20b) {
        directories = optional + 112;
    } else {
        return os::error::BadExeFormat;
    }
    auto directoryCount = image.Dword(directories - 4);
    auto resourceRva = image.Dword(directories + 16);
    auto resourceSize = image.Dword(directories + 20);
    if (!directoryCount || !resourceRva || !resourceSize) {
        return os::error::BadExeFormat;
    }
    std::vector<Section> sections;
    size_t table = optional + *optionalSize;
    for (size_t i = 0; i < *sectionCount; ++i) {
        size_t entry = table + 40 * i;
        auto virtualSize = image.Dword(entry + 8);
        auto virtualAddress = image.Dword(entry + 12);
        auto rawSize = image.Dword(entry + 16);
        auto rawOffset = image.Dword(entry + 20);
        if (!virtualSize || !virtualAddress || !rawSize || !rawOffset) {
            return os::error::BadExeFormat;
        }
        sections.push_back({*virtualAddress, *virtualSize, *rawSize, *rawOffset});
    }
    if (*directoryCount < 3 || *resourceRva == 0 || *resourceSize == 0) {
        return os::error::ResourceDataNotFound;
    }
    auto base = FileOffset(sections, *resourceRva, 16);
    if (!base) {
        return os::error::ResourceDataNotFound;
    }
    // Type, then name, then language: the version resource of the first name and language.
    auto type = DirectoryEntry(image, *base, 0, kRtVersion);
    if (!type || (*type & 0x80000000u) == 0) {
        return os::error::ResourceTypeNotFound;
    }
    auto name = DirectoryEntry(image, *base, *type & 0x7FFFFFFF, std::nullopt);
    if (!name || (*name & 0x80000000u) == 0) {
        return os::error::ResourceTypeNotFound;
    }
    auto language = DirectoryEntry(image, *base, *name & 0x7FFFFFFF, std::nullopt);
    if (!language || (*language & 0x80000000u) != 0) {
        return os::error::ResourceTypeNotFound;
    }
    auto dataRva = image.Dword(*base + *language);
    auto dataSize = image.Dword(*base + *language + 4);
    if (!dataRva || !dataSize) {
        return os::error::ResourceTypeNotFound;
    }
    auto data = FileOffset(sections, *dataRva, *dataSize);
    // The section may claim more than a file cut short still holds.
    if (!data || *dataSize == 0 || !image.Has(*data, *dataSize)) {
        return os::error::ResourceTypeNotFound;
    }
    block.assign(image.At(*data), image.At(*data) + *dataSize);
    return os::error::Success;
}

// ---- NE images (16-bit Windows) --------------------------------------------------------

os::Error FromNe(const Bytes& image, size_t header, std::vector<std::uint8_t>& block) {
    auto tableOffset = image.Word(header + 0x24);
    auto residentNames = image.Word(header + 0x26);
    if (!tableOffset || !residentNames) {
        return os::error::BadExeFormat;
    }
    if (*tableOffset == *residentNames) {
        return os::error::ResourceDataNotFound; // an empty resource table
    }
    size_t table = header + *tableOffset;
    auto shift = image.Word(table);
    if (!shift || *shift > 16) {
        return os::error::ResourceDataNotFound;
    }
    size_t type = table + 2;
    while (true) {
        auto typeId = image.Word(type);
        auto count = image.Word(type + 2);
        if (!typeId || *typeId == 0 || !count) {
            return os::error::ResourceTypeNotFound;
        }
        if (*typeId == (0x8000 | kRtVersion) && *count > 0) {
            auto offset = image.Word(type + 8);
            auto length = image.Word(type + 10);
            if (!offset || !length) {
                return os::error::ResourceTypeNotFound;
            }
            size_t start = static_cast<size_t>(*offset) << *shift;
            size_t size = static_cast<size_t>(*length) << *shift;
            if (!image.Has(start, 2)) {
                return os::error::ResourceTypeNotFound;
            }
            // The table rounds the length up; the block's own length is exact.
            size_t own = *image.Word(start);
            size = std::min(size, own == 0 ? size : own);
            if (!image.Has(start, size)) {
                return os::error::ResourceTypeNotFound;
            }
            block.assign(image.At(start), image.At(start) + size);
            return os::error::Success;
        }
        type += 8 + 12 * static_cast<size_t>(*count);
    }
}

// ---- The VS_VERSIONINFO tree -----------------------------------------------------------

struct Node {
    size_t start = 0;
    size_t end = 0; // past the node and its children
    std::u16string key;
    bool text = false;
    size_t valueStart = 0;
    size_t valueSize = 0; // in bytes
    size_t childrenStart = 0;
};

// Reads the node at `offset`; `wide` selects the 32-bit form (with a type word and UTF-16
// names) over the 16-bit form (narrow names, text values counted in bytes).
std::optional<Node> ReadNode(const Bytes& block, size_t offset, size_t limit, bool wide) {
    auto length = block.Word(offset);
    auto valueLength = block.Word(offset + 2);
    if (!length || !valueLength || *length < 4 || offset + *length > limit) {
        return std::nullopt;
    }
    Node node;
    node.start = offset;
    node.end = offset + *length;
    size_t position = offset + 4;
    if (wide) {
        auto type = block.Word(position);
        if (!type) {
            return std::nullopt;
        }
        node.text = *type == 1;
        position += 2;
        while (true) {
            auto unit = block.Word(position);
            if (!unit || position + 2 > node.end) {
                return std::nullopt;
            }
            position += 2;
            if (*unit == 0) {
                break;
            }
            node.key += static_cast<char16_t>(*unit);
        }
    } else {
        while (true) {
            if (position >= node.end) {
                return std::nullopt;
            }
            std::uint8_t c = *block.At(position++);
            if (c == 0) {
                break;
            }
            node.key += static_cast<char16_t>(c);
        }
    }
    node.valueStart = std::min(Align4(position), node.end);
    size_t valueSize = *valueLength;
    if (wide && node.text) {
        valueSize *= 2;
    }
    node.valueSize = std::min(valueSize, node.end - node.valueStart);
    node.childrenStart = std::min(Align4(node.valueStart + node.valueSize), node.end);
    return node;
}

bool KeyEquals(const std::u16string& key, const std::string& name) {
    if (key.size() != name.size()) {
        return false;
    }
    for (size_t i = 0; i < key.size(); ++i) {
        char16_t a = key[i];
        char16_t b = static_cast<unsigned char>(name[i]);
        if (a < 128 && b < 128) {
            a = static_cast<char16_t>(std::tolower(static_cast<int>(a)));
            b = static_cast<char16_t>(std::tolower(static_cast<int>(b)));
        }
        if (a != b) {
            return false;
        }
    }
    return true;
}

} // namespace

os::Error VersionResource::FromImage(const std::string& image, std::vector<std::uint8_t>& block) {
    Bytes bytes(image);
    // A file that is no image at all reads as one without resources, as on Windows.
    if (bytes.Size() < 64 || image[0] != 'M' || image[1] != 'Z') {
        return os::error::ResourceDataNotFound;
    }
    auto header = bytes.Dword(0x3C);
    if (!header || !bytes.Has(*header, 4)) {
        return os::error::ResourceDataNotFound;
    }
    const std::uint8_t* signature = bytes.At(*header);
    if (signature[0] == 'P' && signature[1] == 'E' && signature[2] == 0 && signature[3] == 0) {
        return FromPe(bytes, *header, block);
    }
    if (signature[0] == 'N' && signature[1] == 'E') {
        return FromNe(bytes, *header, block);
    }
    return os::error::ResourceDataNotFound;
}

bool VersionResource::IsWide(const std::vector<std::uint8_t>& block) {
    // The wide form has a type word before its key: "VS_VERSION_INFO" starts at 6, not at 4.
    return !(block.size() >= 6 && block[4] == 'V' && block[5] == 'S');
}

bool VersionResource::Query(const std::vector<std::uint8_t>& block, const std::string& subBlock,
                            Value& value) {
    Bytes bytes(block.data(), block.size());
    if (block.size() < 6) {
        return false;
    }
    bool wide = IsWide(block);
    auto node = ReadNode(bytes, 0, block.size(), wide);
    if (!node) {
        return false;
    }
    size_t position = 0;
    std::vector<std::string> path;
    while (position < subBlock.size()) {
        while (position < subBlock.size() && subBlock[position] == '\\') {
            ++position;
        }
        if (position >= subBlock.size()) {
            break;
        }
        size_t cut = subBlock.find('\\', position);
        std::string name =
                subBlock.substr(position, cut == std::string::npos ? cut : cut - position);
        position = cut == std::string::npos ? subBlock.size() : cut;
        std::optional<Node> found;
        for (size_t child = node->childrenStart; child < node->end;) {
            auto next = ReadNode(bytes, child, node->end, wide);
            if (!next) {
                break;
            }
            if (KeyEquals(next->key, name)) {
                found = next;
                break;
            }
            child = Align4(next->end);
        }
        if (!found) {
            return false;
        }
        node = found;
        path.push_back(name);
    }
    value = Value();
    // The strings of a string table are text whatever their type word says; the 16-bit form
    // has no type word at all.
    bool inStringTable = path.size() == 3 && KeyEquals(u"StringFileInfo", path[0]);
    value.text = inStringTable || (wide && node->text);
    if (value.text) {
        if (wide) {
            for (size_t i = 0; i + 1 < node->valueSize; i += 2) {
                char16_t unit = static_cast<char16_t>(*bytes.Word(node->valueStart + i));
                if (unit == 0) {
                    break;
                }
                value.utf16 += unit;
            }
        } else {
            for (size_t i = 0; i < node->valueSize; ++i) {
                std::uint8_t c = *bytes.At(node->valueStart + i);
                if (c == 0) {
                    break;
                }
                value.utf16 += static_cast<char16_t>(c);
            }
        }
    } else {
        value.bytes.assign(bytes.At(node->valueStart),
                           bytes.At(node->valueStart) + node->valueSize);
    }
    return true;
}

} // namespace sim
