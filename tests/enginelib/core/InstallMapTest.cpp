#include "core/InstallMap.h"

#include "enginelib/script/CifTestSupport.h"
#include "script/CifFile.h"

#include <gtest/gtest.h>

namespace {

class InstallMapTest : public ::testing::Test {
protected:
    TestMachine machine;
    PathObject folder{machine.Scratch() + "\\"};

    PathObject mapFile(const std::string& text) {
        std::string path = machine.Path("install.map");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        return PathObject(path);
    }
};

TEST_F(InstallMapTest, NamesThatShareAFileShareOneCif) {
    InstallMap map;
    ASSERT_TRUE(map.Read(mapFile("[Components]\nCore=Core.cif\nBase=core.CIF\nTools=Tools.cif\n"
                                 "Retired=\n"),
                         folder));
    EXPECT_EQ(3u, map.Size());
    CifFile* core = map.Find("core");
    ASSERT_NE(nullptr, core);
    EXPECT_EQ(core, map.Find("BASE"));
    EXPECT_EQ(machine.Path("Core.cif"), core->GetFileName());
    // The files need not exist yet: they are read when a component is made.
    EXPECT_FALSE(core->AreDefinesLoaded());
    ASSERT_NE(nullptr, map.Find("Tools"));
    EXPECT_NE(core, map.Find("Tools"));
    EXPECT_EQ(nullptr, map.Find("Retired"));
    EXPECT_EQ(nullptr, map.Find("Unknown"));
}

TEST_F(InstallMapTest, AMapWithoutComponentsIsRefused) {
    LogCapture capture(machine, 0);
    for (const char* text : {"[Other]\nCore=Core.cif\n", "[Components]\n"}) {
        InstallMap map;
        EXPECT_FALSE(map.Read(mapFile(text), folder)) << text;
    }
    EXPECT_TRUE(capture.Has("Missing 'Components' section in map file : File = " +
                            machine.Path("install.map")));
    InstallMap missing;
    EXPECT_FALSE(missing.Read(PathObject(machine.Path("absent.map")), folder));
}

TEST_F(InstallMapTest, ADefaultCifAnswersEveryName) {
    InstallMap map;
    ASSERT_TRUE(map.Read(mapFile("[Components]\nCore=Core.cif\n"), folder));
    // A CIF of the map may become the default, and be replaced by another; each is deleted
    // once with the map.
    map.SetDefaultCif(map.Find("Core"));
    EXPECT_EQ(map.Find("Core"), map.Find("Anything"));
    auto* uninstall = new CifFile(true);
    uninstall->SetFileName(machine.Path("Uninstall.cif"));
    map.SetDefaultCif(uninstall);
    map.SetDefaultCif(uninstall);
    EXPECT_EQ(uninstall, map.Find("Core"));
    EXPECT_EQ(uninstall, map.Find("Unknown"));
}

} // namespace
