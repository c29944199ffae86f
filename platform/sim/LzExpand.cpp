#include "sim/LzExpand.h"

#include <algorithm>
#include <cstring>

namespace sim {

namespace {

const unsigned char kMagic[8] = {'S', 'Z', 'D', 'D', 0x88, 0xF0, 0x27, 0x33};
constexpr size_t kRingSize = 4096;
constexpr size_t kRingStart = kRingSize - 16;

} // namespace

bool LzExpand::ReadHeader(const std::string& bytes, Header& header) {
    if (bytes.size() < kHeaderSize || std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0 ||
        bytes[8] != 'A') {
        return false;
    }
    header.lastChar = bytes[9];
    header.expandedSize = 0;
    for (int i = 0; i < 4; ++i) {
        header.expandedSize |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[10 + i]))
                               << (8 * i);
    }
    return true;
}

bool LzExpand::Expand(const std::string& bytes, std::string& expanded) {
    Header header;
    if (!ReadHeader(bytes, header)) {
        return false;
    }
    expanded.clear();
    // The header's size is only a claim: 17 bytes of data expand to 144 bytes at the most.
    expanded.reserve(std::min<size_t>(header.expandedSize, bytes.size() / 17 * 144 + 144));
    unsigned char ring[kRingSize];
    std::memset(ring, ' ', sizeof ring);
    size_t position = kRingStart;
    size_t in = kHeaderSize;
    auto put = [&](unsigned char c) {
        expanded += static_cast<char>(c);
        ring[position] = c;
        position = (position + 1) & (kRingSize - 1);
    };
    while (in < bytes.size() && expanded.size() < header.expandedSize) {
        unsigned control = static_cast<unsigned char>(bytes[in++]);
        for (int bit = 0; bit < 8 && in < bytes.size() && expanded.size() < header.expandedSize;
             ++bit) {
            if ((control & (1u << bit)) != 0) {
                put(static_cast<unsigned char>(bytes[in++]));
                continue;
            }
            if (in + 1 >= bytes.size()) {
                in = bytes.size();
                break;
            }
            unsigned low = static_cast<unsigned char>(bytes[in]);
            unsigned high = static_cast<unsigned char>(bytes[in + 1]);
            in += 2;
            size_t match = low | ((high & 0xF0u) << 4);
            size_t length = (high & 0x0Fu) + 3;
            for (size_t i = 0; i < length && expanded.size() < header.expandedSize; ++i) {
                put(ring[(match + i) & (kRingSize - 1)]);
            }
        }
    }
    return true;
}

} // namespace sim
