#include "system/Uncompress.h"

#include "os/Files.h"
#include "support/CompressedFiles.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"
#include "system/FileOp.h"
#include "tools/VersionedImage.h"

#include <gtest/gtest.h>

namespace {

class UncompressTest : public ::testing::TestWithParam<const char*> {
protected:
    TestMachine machine{GetParam()};
    LogCapture log{machine.Path("debug.log")};

    std::string path(const std::string& name) const { return machine.Path(name); }
    std::string write(const std::string& name, const std::string& bytes) {
        EXPECT_TRUE(TestMachine::WriteFile(path(name), bytes));
        return path(name);
    }
    std::string image(const std::string& version) {
        return peimage::PeImage(peimage::WithFileVersion(version));
    }
    bool hasSetupApi() const { return std::string(GetParam()) != "win95"; }
};

TEST_P(UncompressTest, TellsHowAFileIsStoredAndWhatItIsCalledExpanded) {
    std::string lz = write("driver.dl_", testfiles::LzCompress("driver code", 'l'));
    std::string cab = write("pack.cab", testfiles::MsZipCabinet({{"inside.inf", "[Version]"}}));
    std::string plain = write("plain.txt", "text");
    CStdStr name;
    if (hasSetupApi()) {
        EXPECT_EQ(Uncompress::Lz, Uncompress::GetCompressionType(lz));
        EXPECT_EQ(Uncompress::MsZip, Uncompress::GetCompressionType(cab));
        EXPECT_EQ(Uncompress::None, Uncompress::GetCompressionType(plain));
        EXPECT_TRUE(Uncompress::IsFileCompressed(lz));
        EXPECT_FALSE(Uncompress::IsFileCompressed(plain));
        EXPECT_EQ(Uncompress::Unknown, Uncompress::GetCompressionType(path("none.dl_")));
        EXPECT_TRUE(log.Contains("failed with error code 2"));
        ASSERT_TRUE(Uncompress::GetUncompressedName(cab, name));
        EXPECT_EQ("inside.inf", name);
        EXPECT_TRUE(log.Contains("DEBUG FILENAME IN ZIP inside.inf"));
    } else {
        EXPECT_EQ(Uncompress::Unknown, Uncompress::GetCompressionType(lz));
        EXPECT_FALSE(Uncompress::IsFileCompressed(lz));
        EXPECT_TRUE(log.Contains("SetupAPI library was not loaded. Stop."));
    }
    ASSERT_TRUE(Uncompress::GetUncompressedName(lz, name));
    EXPECT_EQ("driver.dll", name);
    ASSERT_TRUE(Uncompress::GetUncompressedName(plain, name));
    EXPECT_EQ("plain.txt", name);
    EXPECT_FALSE(Uncompress::GetUncompressedName(path("none.dl_"), name));
    EXPECT_TRUE(log.Contains("Cannot open file " + path("none.dl_") +
                             " to retrieve file information."));
}

TEST_P(UncompressTest, ExpandsIntoAFolderOrToAName) {
    std::string text = "a driver, " + std::string(3000, 'd') + " and its end";
    std::string lz = write("driver.dl_", testfiles::LzCompress(text, 'l'));
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("out")));
    CStdStr out;
    ASSERT_TRUE(Uncompress::UncompressFile(lz, path("out"), out, false));
    EXPECT_EQ(path("out\\driver.dll"), out);
    EXPECT_EQ(text, TestMachine::ReadFile(out));

    ASSERT_TRUE(Uncompress::UncompressFile(lz, path("out\\renamed.dll"), out, false));
    EXPECT_EQ(path("out\\renamed.dll"), out);
    EXPECT_EQ(text, TestMachine::ReadFile(out));

    // A file that is not compressed is copied.
    std::string plain = write("readme.txt", "read me");
    ASSERT_TRUE(Uncompress::UncompressFile(plain, path("out\\"), out, false));
    EXPECT_EQ(path("out\\readme.txt"), out);
    EXPECT_EQ("read me", TestMachine::ReadFile(out));

    EXPECT_FALSE(Uncompress::UncompressFile(path("none.dl_"), path("out\\x.dll"), out, false));
    EXPECT_TRUE(log.Contains(hasSetupApi() ? "Failed to uncompress " + path("none.dl_")
                                           : "Failed to open " + path("none.dl_")));
}

TEST_P(UncompressTest, WithAVersionCheckOnlyAHigherVersionReplacesTheTarget) {
    std::string lz = write("lib.dl_", testfiles::LzCompress(image("2.0"), 'l'));
    std::string newer = write("newer.dll", image("3.0"));
    std::string older = write("older.dll", image("1.5"));
    CStdStr out;
    ASSERT_TRUE(Uncompress::UncompressFile(lz, newer, out, true));
    EXPECT_EQ("3.0", FileOp::GetFileVersion(newer));
    ASSERT_TRUE(Uncompress::UncompressFile(lz, older, out, true));
    EXPECT_EQ("2.0", FileOp::GetFileVersion(older));
    // The expanded copy used for the comparison does not stay.
    std::vector<os::FindData> found;
    EXPECT_EQ(os::error::FileNotFound, os::FindFiles(path("LZ*.tmp"), found));
}

INSTANTIATE_TEST_SUITE_P(Systems, UncompressTest, ::testing::Values("win7-x64", "win98", "win95"));

} // namespace
