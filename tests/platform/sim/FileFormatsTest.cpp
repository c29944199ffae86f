// The file formats that the simulated machine reads itself: LZ files, cabinets and the version
// resources of images. Damaged files must give an error, never a crash or a wrong result.
#include "sim/Cabinet.h"
#include "sim/LzExpand.h"
#include "sim/VersionResource.h"
#include "support/CompressedFiles.h"
#include "tools/VersionedImage.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace {

std::string Sample(size_t size) {
    std::string text;
    unsigned seed = 7;
    while (text.size() < size) {
        seed = seed * 1103515245u + 12345u;
        text += "word" + std::to_string((seed >> 16) % 50) + (seed % 3 == 0 ? "\n" : " ");
    }
    return text.substr(0, size);
}

// MSZIP blocks as a real compressor makes them: each block a deflate stream of its own that
// refers back into the blocks before it.
std::string DeflatedCabinet(const std::string& data) {
    std::string blocks;
    std::string history;
    size_t count = 0;
    for (size_t at = 0; at < data.size(); at += 32768, ++count) {
        std::string chunk = data.substr(at, 32768);
        z_stream stream{};
        deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
        if (!history.empty()) {
            deflateSetDictionary(&stream, reinterpret_cast<const Bytef*>(history.data()),
                                 static_cast<uInt>(history.size()));
        }
        std::string packed(deflateBound(&stream, chunk.size()) + 16, '\0');
        stream.next_in = reinterpret_cast<Bytef*>(chunk.data());
        stream.avail_in = static_cast<uInt>(chunk.size());
        stream.next_out = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_out = static_cast<uInt>(packed.size());
        deflate(&stream, Z_FINISH);
        packed.resize(stream.total_out);
        deflateEnd(&stream);
        history = chunk;
        std::string block = "CK" + packed;
        std::string header(8, '\0');
        header[4] = static_cast<char>(block.size() & 0xFF);
        header[5] = static_cast<char>(block.size() >> 8);
        header[6] = static_cast<char>(chunk.size() & 0xFF);
        header[7] = static_cast<char>(chunk.size() >> 8);
        blocks += header + block;
    }
    // The stored cabinet gives the header and directory; its data is swapped for these blocks.
    std::string cab = testfiles::MsZipCabinet({{"big.dat", data}});
    std::uint32_t dataAt =
            static_cast<unsigned char>(cab[36]) | (static_cast<unsigned char>(cab[37]) << 8);
    cab.resize(dataAt);
    cab[40] = static_cast<char>(count & 0xFF);
    cab[41] = static_cast<char>(count >> 8);
    return cab + blocks;
}

TEST(LzExpand, RoundTripsAndStopsAtTheEndOfDamagedData) {
    for (size_t size : {0u, 1u, 17u, 5000u, 20000u}) {
        std::string text = Sample(size);
        std::string packed = testfiles::LzCompress(text, 'x');
        sim::LzExpand::Header header;
        ASSERT_TRUE(sim::LzExpand::ReadHeader(packed, header));
        EXPECT_EQ('x', header.lastChar);
        EXPECT_EQ(size, header.expandedSize);
        std::string expanded;
        ASSERT_TRUE(sim::LzExpand::Expand(packed, expanded));
        EXPECT_EQ(text, expanded) << size;
    }
    // Blanks before the first byte come from the ring's initial fill.
    std::string blanks("SZDD\x88\xF0\x27\x33"
                       "A"
                       "\0\x05\0\0\0"
                       "\x00\xF0\xF2",
                       17);
    std::string expanded;
    ASSERT_TRUE(sim::LzExpand::Expand(blanks, expanded));
    EXPECT_EQ("     ", expanded);

    std::string packed = testfiles::LzCompress(Sample(4000), 'x');
    for (size_t cut = 0; cut < packed.size(); cut += 97) {
        std::string part = packed.substr(0, cut);
        std::string out;
        bool ok = sim::LzExpand::Expand(part, out);
        EXPECT_EQ(cut >= sim::LzExpand::kHeaderSize, ok) << cut;
        EXPECT_LE(out.size(), 4000u);
        EXPECT_EQ(Sample(4000).substr(0, out.size()), out);
    }

    // A header that claims far more than its data can give takes no memory for the claim.
    std::string boastful = packed;
    boastful.replace(10, 4, "\xFF\xFF\xFF\xFF");
    std::string out;
    ASSERT_TRUE(sim::LzExpand::Expand(boastful, out));
    EXPECT_EQ(Sample(4000), out.substr(0, 4000));
    EXPECT_LT(out.capacity(), 1u << 20);
}

TEST(Cabinet, ExpandsMsZipBlocksThatReferToEarlierOnes) {
    std::string data = Sample(100000);
    std::string bytes = DeflatedCabinet(data);
    ASSERT_LT(bytes.size(), data.size() / 2);
    sim::Cabinet cabinet;
    ASSERT_TRUE(cabinet.Read(bytes));
    ASSERT_EQ(1u, cabinet.Files().size());
    EXPECT_EQ("big.dat", cabinet.Files()[0].name);
    std::string out;
    ASSERT_TRUE(cabinet.Extract(cabinet.Files()[0], out));
    EXPECT_EQ(data, out);
}

TEST(Cabinet, ListsAllMembersAndRefusesWhatItCannotExpand) {
    std::string bytes =
            testfiles::MsZipCabinet({{"a.txt", "alpha"}, {"b.txt", "beta"}, {"c.txt", ""}});
    sim::Cabinet cabinet;
    ASSERT_TRUE(cabinet.Read(bytes));
    ASSERT_EQ(3u, cabinet.Files().size());
    std::string out;
    ASSERT_TRUE(cabinet.Extract(cabinet.Files()[1], out));
    EXPECT_EQ("beta", out);
    ASSERT_TRUE(cabinet.Extract(cabinet.Files()[2], out));
    EXPECT_EQ("", out);

    std::string lzx = bytes;
    lzx[42] = 3; // the folder's compression: LZX
    ASSERT_TRUE(cabinet.Read(lzx));
    EXPECT_EQ(sim::Cabinet::Lzx, cabinet.CompressionOf(cabinet.Files()[0]));
    EXPECT_FALSE(cabinet.Extract(cabinet.Files()[0], out));
    lzx[42] = 8; // a method no cabinet tool knows
    ASSERT_TRUE(cabinet.Read(lzx));
    EXPECT_EQ(8, cabinet.CompressionOf(cabinet.Files()[0]));
    EXPECT_FALSE(cabinet.Extract(cabinet.Files()[0], out));

    for (size_t cut = 0; cut < bytes.size(); ++cut) {
        sim::Cabinet part;
        if (part.Read(bytes.substr(0, cut))) {
            for (const sim::Cabinet::File& file : part.Files()) {
                part.Extract(file, out); // must not fail in any other way than by its answer
            }
        }
    }
    EXPECT_FALSE(cabinet.Read("MSCF but far too short"));
}

TEST(VersionResource, DamagedImagesGiveAnErrorAndNeverAWrongValue) {
    std::string image = peimage::PeImage(peimage::WithFileVersion("1.2.3.4"));
    std::vector<std::uint8_t> block;
    ASSERT_EQ(os::error::Success, sim::VersionResource::FromImage(image, block));
    for (size_t cut = 0; cut < image.size(); cut += 7) {
        std::vector<std::uint8_t> part;
        os::Error rc = sim::VersionResource::FromImage(image.substr(0, cut), part);
        sim::VersionResource::Value value;
        if (rc == os::error::Success &&
            sim::VersionResource::Query(part, "\\StringFileInfo\\040904b0\\FileVersion", value)) {
            EXPECT_EQ(u"1.2.3.4", value.utf16) << cut;
        }
    }
    // A block cut short answers only for what it still holds whole.
    for (size_t cut = 0; cut < block.size(); ++cut) {
        std::vector<std::uint8_t> part(block.begin(), block.begin() + static_cast<long>(cut));
        sim::VersionResource::Value value;
        if (sim::VersionResource::Query(part, "\\StringFileInfo\\040904b0\\FileVersion", value)) {
            EXPECT_EQ(u"1.2.3.4", value.utf16) << cut;
        }
    }
    // A directory entry that points outside the file.
    std::string broken = image;
    broken[0x200 + 20] = '\x7F';
    broken[0x200 + 21] = '\x7F';
    EXPECT_NE(os::error::Success, sim::VersionResource::FromImage(broken, block));
}

} // namespace
