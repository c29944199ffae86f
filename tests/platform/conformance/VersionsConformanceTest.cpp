// The file versions group of the seam reads version resources as Windows does.
#include "os/Versions.h"
#include "support/TestMachine.h"
#include "tools/VersionedImage.h"

#include <gtest/gtest.h>

namespace {

using namespace os;

class VersionsConformance : public ::testing::Test {
protected:
    TestMachine machine;

    std::string write(const std::string& name, const std::string& bytes) {
        return machine.WriteScratch(name, bytes);
    }
};

TEST_F(VersionsConformance, ReadsTheStringsTranslationsAndFixedPartOfAnImage) {
    peimage::VersionSpec resource = peimage::WithFileVersion("5.1.2600.5512 (xpsp.080413-2111)");
    resource.fileVersion[0] = 5;
    resource.fileVersion[1] = 1;
    resource.fileVersion[2] = 2600;
    resource.fileVersion[3] = 5512;
    peimage::StringTable german;
    german.key = "040704E4";
    german.strings = {{"FileVersion", "5,1"}, {"Comments", ""}};
    resource.tables.push_back(german);
    resource.translations = {{0x0409, 0x04B0}, {0x0407, 0x04E4}};
    std::string path = write("test.dll", peimage::PeImage(resource));

    std::uint32_t size = 0;
    ASSERT_EQ(error::Success, GetFileVersionInfoSize(path, size));
    EXPECT_GT(size, 0u);
    VersionBlock block;
    ASSERT_EQ(error::Success, GetFileVersionInfo(path, block));

    std::vector<VersionTranslation> translations;
    ASSERT_EQ(error::Success, VerQueryValue(block, "\\VarFileInfo\\Translation", translations));
    ASSERT_EQ(2u, translations.size());
    EXPECT_EQ(0x0409, translations[0].language);
    EXPECT_EQ(0x04B0, translations[0].codePage);
    EXPECT_EQ(0x0407, translations[1].language);

    std::string text;
    ASSERT_EQ(error::Success,
              VerQueryValue(block, "\\StringFileInfo\\040904b0\\FileVersion", text));
    EXPECT_EQ("5.1.2600.5512 (xpsp.080413-2111)", text);
    // Names compare without regard to case.
    ASSERT_EQ(error::Success,
              VerQueryValue(block, "\\stringfileinfo\\040904B0\\companyname", text));
    EXPECT_EQ("Tovar Test", text);
    ASSERT_EQ(error::Success,
              VerQueryValue(block, "\\StringFileInfo\\040704e4\\FileVersion", text));
    EXPECT_EQ("5,1", text);
    EXPECT_NE(error::Success,
              VerQueryValue(block, "\\StringFileInfo\\040904b0\\PrivateBuild", text));
    EXPECT_NE(error::Success,
              VerQueryValue(block, "\\StringFileInfo\\041104b0\\FileVersion", text));

    FixedFileInfo fixed;
    ASSERT_EQ(error::Success, VerQueryValue(block, "\\", fixed));
    EXPECT_EQ(0x00050001u, fixed.fileVersionMS);
    EXPECT_EQ((2600u << 16) | 5512u, fixed.fileVersionLS);
    EXPECT_EQ(2u, fixed.fileType);
}

TEST_F(VersionsConformance, SixteenBitImagesCarryTheNarrowForm) {
    std::string path = write("old.drv", peimage::NeImage(peimage::WithFileVersion("4.10.1998")));
    VersionBlock block;
    ASSERT_EQ(error::Success, GetFileVersionInfo(path, block));
    std::vector<VersionTranslation> translations;
    ASSERT_EQ(error::Success, VerQueryValue(block, "\\VarFileInfo\\Translation", translations));
    ASSERT_EQ(1u, translations.size());
    EXPECT_EQ(0x0409, translations[0].language);
    std::string text;
    ASSERT_EQ(error::Success,
              VerQueryValue(block, "\\StringFileInfo\\040904B0\\FileVersion", text));
    EXPECT_EQ("4.10.1998", text);
}

TEST_F(VersionsConformance, FilesWithoutAVersionResourceFail) {
    std::uint32_t size = 7;
    EXPECT_EQ(error::FileNotFound, GetFileVersionInfoSize(machine.Path("none.dll"), size));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(error::ResourceDataNotFound,
              GetFileVersionInfoSize(write("plain.txt", "just some text, not an image"), size));
    EXPECT_EQ(0u, size);
    VersionBlock block;
    Error rc = GetFileVersionInfo(write("noversion.dll", peimage::PeImage({}, false)), block);
    if (machine.IsSimulated()) {
        EXPECT_EQ(error::ResourceTypeNotFound, rc);
    } else {
        // Windows gives 1813 for an image with resources but no version; Wine gives 1812.
        EXPECT_TRUE(rc == error::ResourceTypeNotFound || rc == error::ResourceDataNotFound) << rc;
    }
    EXPECT_TRUE(block.data.empty());
}

} // namespace
