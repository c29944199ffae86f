// The compressed files group of the seam expands files as setupapi.dll and lz32.dll do.
#include "os/Compression.h"
#include "os/Files.h"
#include "support/CompressedFiles.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

using namespace os;

// Text with repeats near and far, so that the LZ data holds back references of all kinds.
std::string SampleText() {
    std::string text;
    for (int i = 0; i < 300; ++i) {
        text += "line " + std::to_string(i % 17) + ": the quick brown fox\r\n";
        if (i % 50 == 0) {
            text += std::string(40, 'x') + std::string(1, static_cast<char>(i)) + "\r\n";
        }
    }
    return text;
}

class CompressionConformance : public ::testing::Test {
protected:
    TestMachine machine;

    std::string write(const std::string& name, const std::string& bytes) {
        return machine.WriteScratch(name, bytes);
    }
};

TEST_F(CompressionConformance, LzFilesAreRecognisedAndExpanded) {
    std::string text = SampleText();
    std::string packed = testfiles::LzCompress(text, 'l');
    ASSERT_LT(packed.size(), text.size());
    std::string path = write("driver.dl_", packed);

    FileCompressionInfo info;
    ASSERT_EQ(error::Success, SetupGetFileCompressionInfoEx(path, info));
    EXPECT_EQ(compression::WinLza, info.compressionType);
    EXPECT_EQ(text.size(), info.targetFileSize);
    EXPECT_EQ(packed.size(), info.sourceFileSize);
    EXPECT_EQ(path, info.actualSourceFileName);

    // The uncompressed name finds the file under its compressed name. Wine's setupapi.dll does
    // not try the compressed names and answers 2.
    FileCompressionInfo byName;
    Error rc = SetupGetFileCompressionInfoEx(machine.Path("driver.dll"), byName);
    if (machine.IsSimulated() || rc != error::FileNotFound) {
        ASSERT_EQ(error::Success, rc);
        EXPECT_EQ(compression::WinLza, byName.compressionType);
        EXPECT_EQ(path, byName.actualSourceFileName);
    }

    ASSERT_EQ(error::Success, SetupDecompressOrCopyFile(path, machine.Path("setup.dll")));
    EXPECT_EQ(text, TestMachine::ReadFile(machine.Path("setup.dll")));

    LzStep failed = LzStep::Copy;
    ASSERT_EQ(error::Success, LZCopy(path, machine.Path("lz.dll"), failed));
    EXPECT_EQ(LzStep::None, failed);
    EXPECT_EQ(text, TestMachine::ReadFile(machine.Path("lz.dll")));

    std::string expanded;
    ASSERT_EQ(error::Success, GetExpandedName(path, expanded));
    EXPECT_EQ(machine.Path("driver.dll"), expanded);
    std::string upper = write("README.TX_", testfiles::LzCompress("hello", 't'));
    ASSERT_EQ(error::Success, GetExpandedName(upper, expanded));
    EXPECT_EQ(machine.Path("README.TXT"), expanded);
}

TEST_F(CompressionConformance, PlainFilesAreCopiedAsTheyAre) {
    std::string path = write("plain.txt", "not compressed at all");
    FileCompressionInfo info;
    ASSERT_EQ(error::Success, SetupGetFileCompressionInfoEx(path, info));
    EXPECT_EQ(compression::None, info.compressionType);
    EXPECT_EQ(21u, info.sourceFileSize);
    EXPECT_EQ(21u, info.targetFileSize);

    ASSERT_EQ(error::Success, SetupDecompressOrCopyFile(path, machine.Path("copy.txt")));
    EXPECT_EQ("not compressed at all", TestMachine::ReadFile(machine.Path("copy.txt")));
    LzStep failed = LzStep::None;
    ASSERT_EQ(error::Success, LZCopy(path, machine.Path("lzcopy.txt"), failed));
    EXPECT_EQ("not compressed at all", TestMachine::ReadFile(machine.Path("lzcopy.txt")));
    std::string expanded;
    ASSERT_EQ(error::Success, GetExpandedName(path, expanded));
    EXPECT_EQ(path, expanded);
}

TEST_F(CompressionConformance, CabinetsGiveTheirFirstFile) {
    std::string first = SampleText() + SampleText();
    first += std::string(40000, 'z'); // more than one block
    std::string path =
            write("driver.cab",
                  testfiles::MsZipCabinet({{"driver.dll", first}, {"driver.inf", "[Version]"}}));
    FileCompressionInfo info;
    ASSERT_EQ(error::Success, SetupGetFileCompressionInfoEx(path, info));
    EXPECT_EQ(compression::MsZip, info.compressionType);
    ASSERT_EQ(error::Success, SetupDecompressOrCopyFile(path, machine.Path("out.dll")));
    EXPECT_EQ(first, TestMachine::ReadFile(machine.Path("out.dll")));

    std::vector<CabinetFileInfo> files;
    ASSERT_EQ(error::Success, SetupIterateCabinet(path, files));
    ASSERT_EQ(2u, files.size());
    EXPECT_EQ("driver.dll", files[0].nameInCabinet);
    EXPECT_EQ(first.size(), files[0].fileSize);
    EXPECT_EQ("driver.inf", files[1].nameInCabinet);
    EXPECT_EQ(9u, files[1].fileSize);
    EXPECT_EQ(((2009 - 1980) << 9) | (7 << 5) | 14, files[1].dosDate);
    // Skipped files are not written anywhere.
    EXPECT_FALSE(TestMachine::Exists(machine.Path("driver.inf")));
    EXPECT_NE(error::Success, SetupIterateCabinet(write("not.cab", "plain text"), files));
}

TEST_F(CompressionConformance, MissingFilesAndTargetsFail) {
    FileCompressionInfo info;
    EXPECT_EQ(error::FileNotFound, SetupGetFileCompressionInfoEx(machine.Path("none.dll"), info));
    EXPECT_EQ(error::FileNotFound,
              SetupDecompressOrCopyFile(machine.Path("none.dll"), machine.Path("x.dll")));
    std::string expanded;
    EXPECT_NE(error::Success, GetExpandedName(machine.Path("none.dl_"), expanded));

    std::string path = write("a.dl_", testfiles::LzCompress("data", 'l'));
    LzStep failed = LzStep::None;
    EXPECT_NE(error::Success, LZCopy(machine.Path("none.dl_"), machine.Path("a.dll"), failed));
    EXPECT_EQ(LzStep::OpenSource, failed);
    EXPECT_NE(error::Success, LZCopy(path, machine.Path("no-folder\\a.dll"), failed));
    EXPECT_EQ(LzStep::OpenTarget, failed);
    EXPECT_NE(error::Success, SetupDecompressOrCopyFile(path, machine.Path("no-folder\\a.dll")));
}

} // namespace
