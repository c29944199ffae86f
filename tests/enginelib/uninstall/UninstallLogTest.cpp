#include "uninstall/UninstallLog.h"

#include "core/ProductIni.h"
#include "core/RunState.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

// A log of the product "Suite" of the maker "Valmora", run with "Install" as the current
// component, as the engine runs its top components.
class UninstallLogTest : public ::testing::Test {
protected:
    TestMachine machine;
    UninstallLog log{UninstallLog::StartEmpty};

    void SetUp() override {
        RunState::Reset();
        log.SetProduct("Suite");
        log.SetManufacturer("Valmora");
        UninstallLog::SetParentComponent("Install");
    }

    void TearDown() override { RunState::Reset(); }

    CStdStringList items(unsigned type, const CStdStr& component) {
        CStdStringList list;
        log.GetItems(type, component, list);
        return list;
    }

    CStdStringList keysOf(const CStdStr& section) {
        IniSection* found = log.FindSection(section);
        return found == nullptr ? CStdStringList()
                                : CStdStringList(found->Names().begin(), found->Names().end());
    }
};

TEST_F(UninstallLogTest, SectionsAreNamedByComponentTypeAndScope) {
    ASSERT_TRUE(log.AddComponent("Shared", "Install", true));
    EXPECT_EQ("Driver_Files,Suite", log.GetSectionName(itemtype::File, "Driver"));
    EXPECT_EQ("Driver_Reg,Suite", log.GetSectionName(itemtype::RegKey, "Driver"));
    EXPECT_EQ("Driver_Start,Suite", log.GetSectionName(itemtype::Shortcut, "Driver"));
    EXPECT_EQ("Driver_Service,Suite", log.GetSectionName(itemtype::Service, "Driver"));
    EXPECT_EQ("Driver,Suite", log.GetSectionName(itemtype::Port, "Driver"));
    EXPECT_EQ("Shared_Files,Valmora", log.GetSectionName(itemtype::File, "Shared"));
    // A reference with its own scope is taken as it is, also in an OEM run.
    log.SetOemProduct("Brand");
    EXPECT_EQ("Driver_Files,Other", log.GetSectionName(itemtype::File, "Driver,Other"));
    EXPECT_EQ("Driver_Files,Suite,Brand", log.GetSectionName(itemtype::File, "Driver"));
    EXPECT_EQ("Shared_Files,Valmora,Brand", log.GetSectionName(itemtype::File, "Shared"));
    EXPECT_EQ("Driver_Special,Suite", log.GetSectionName(itemtype::Special, "Driver"));
    EXPECT_EQ("Install_Files,Brand", log.GetSectionName(itemtype::File, "Install"));
    EXPECT_EQ("", log.GetSectionName(9, "Driver"));
    // An empty component is the current one; with none, nothing can be recorded.
    log.SetOemProduct("");
    UninstallLog::SetParentComponent("Driver");
    EXPECT_EQ("Driver_Files,Suite", log.GetSectionName(itemtype::File, ""));
    UninstallLog::SetParentComponent("");
    EXPECT_FALSE(log.AddItem(itemtype::File, "", "C:\\Drv\\b.dll"));
    EXPECT_FALSE(log.AddItem(12, "Driver", "C:\\Drv\\b.dll"));
    // Without a product or maker no comma is added.
    log.SetProduct("");
    EXPECT_EQ("Driver_Files", log.GetSectionName(itemtype::File, "Driver"));
}

TEST_F(UninstallLogTest, ItemsStoreTheirTypeAndAreEnumeratedByIt) {
    log.AddItem(itemtype::File, "Driver", "C:\\Drv\\a.dll", "ignored");
    log.AddItem(itemtype::Directory, "Driver", "C:\\Drv");
    log.AddItem(itemtype::File, "Driver", "C:\\Drv\\b.dll");
    log.AddItem(itemtype::RegValue, "Driver", "HKLM,Software\\Drv,Path");
    log.AddItem(itemtype::RegKey, "Driver", "HKLM,Software\\Drv");
    log.AddItem(itemtype::StartFolder, "Driver", "Valmora\\Tools");
    log.AddItem(itemtype::Port, "Driver", "IP_10.0.0.1", "Standard TCP/IP Port,1");
    log.AddItem(itemtype::Special, "Driver", "BaseDir", "C:\\Drv");

    EXPECT_EQ("1", log.GetValue("Driver_Files,Suite", "C:\\Drv\\a.dll"));
    EXPECT_EQ("2", log.GetValue("Driver_Files,Suite", "C:\\Drv"));
    EXPECT_EQ((CStdStringList{"C:\\Drv\\a.dll", "C:\\Drv\\b.dll"}),
              items(itemtype::File, "Driver"));
    EXPECT_EQ(CStdStringList{"C:\\Drv"}, items(itemtype::Directory, "Driver"));
    EXPECT_EQ(CStdStringList{"HKLM,Software\\Drv,Path"}, items(itemtype::RegValue, "Driver"));
    EXPECT_EQ(CStdStringList{"HKLM,Software\\Drv"}, items(itemtype::RegKey, "Driver"));
    EXPECT_TRUE(items(itemtype::Shortcut, "Driver").empty());
    EXPECT_EQ(CStdStringList{"Valmora\\Tools"}, items(itemtype::StartFolder, "Driver"));
    EXPECT_EQ(CStdStringList{"IP_10.0.0.1"}, items(itemtype::Port, "Driver"));
    EXPECT_EQ("Standard TCP/IP Port,1", log.GetValue("Driver,Suite", "IP_10.0.0.1"));
    EXPECT_EQ("C:\\Drv", log.GetSpecial("Driver", "basedir"));
    EXPECT_TRUE(log.HasItem(itemtype::File, "Driver", "c:\\drv\\A.DLL"));
    EXPECT_FALSE(log.HasItem(itemtype::File, "Printer", "C:\\Drv\\a.dll"));
}

TEST_F(UninstallLogTest, RemovingTheLastItemRemovesItsSection) {
    log.AddItem(itemtype::File, "Driver", "C:\\a.dll");
    log.AddItem(itemtype::Directory, "Driver", "C:\\Drv");
    EXPECT_FALSE(log.RemoveItem(itemtype::File, "Driver", "C:\\missing.dll"));
    EXPECT_TRUE(log.RemoveItem(itemtype::File, "Driver", "C:\\A.DLL"));
    ASSERT_NE(nullptr, log.FindSection("Driver_Files,Suite"));
    // A directory is struck by name, through the section of files.
    EXPECT_TRUE(log.RemoveItem(itemtype::File, "Driver", "C:\\Drv"));
    EXPECT_EQ(nullptr, log.FindSection("Driver_Files,Suite"));
    EXPECT_FALSE(log.RemoveItem(itemtype::File, "Driver", "C:\\Drv"));
}

TEST_F(UninstallLogTest, RecordsThatWouldNotReadBackAreRefused) {
    EXPECT_FALSE(log.AddItem(itemtype::RegValue, "Driver", "HKLM,Software\\X,a=b"));
    EXPECT_FALSE(log.AddItem(itemtype::File, "Driver", ";C:\\x"));
    EXPECT_FALSE(log.AddItem(itemtype::File, "Driver", " C:\\x"));
    EXPECT_FALSE(log.AddItem(itemtype::File, "Driver", "C:\\x\nC:\\y"));
    EXPECT_FALSE(log.AddItem(itemtype::Port, "Driver", "[x]"));
    EXPECT_FALSE(log.SetSpecial("Driver", "BaseDir", "\"C:\\x\""));
    EXPECT_FALSE(log.SetSpecial("Driver", "BaseDir", "C:\\x "));
    EXPECT_FALSE(log.SetSpecial("Driver", "", "C:\\x"));
    EXPECT_FALSE(log.AddToList("Driver", "InstalledBy", "A,B"));
    EXPECT_FALSE(log.AddItem(itemtype::Port, "Driver", "[x", "a=b]"));
    EXPECT_EQ(0, log.SectionCount());
    // What reads back the same is taken, brackets and equals signs in values included.
    EXPECT_TRUE(log.AddItem(itemtype::Port, "Driver", "[x", "a=b"));
}

TEST_F(UninstallLogTest, InstallIsSharedByDefinitionAndSharedReadsANumber) {
    EXPECT_TRUE(log.IsShared("Install", true));
    EXPECT_FALSE(log.IsShared("Common", true));
    log.SetValue("Common_Special,Valmora", "Shared", "01");
    EXPECT_TRUE(log.IsShared("Common", true));
    EXPECT_FALSE(log.IsShared("Common", false));
    EXPECT_FALSE(log.IsShared("Common,Suite", true));
    log.SetValue("Common_Special,Valmora", "Shared", "yes");
    EXPECT_FALSE(log.IsShared("Common", true));
}
TEST_F(UninstallLogTest, ComponentsFormATreeBelowInstall) {
    ASSERT_TRUE(log.AddComponent("Driver", "", false));
    ASSERT_TRUE(log.AddComponent("Tools", "Driver", false));
    ASSERT_TRUE(log.AddComponent("Common", "Driver", true));
    ASSERT_TRUE(log.AddComponent("Monitor", "Common", false));
    EXPECT_EQ(CStdStringList{"Driver,Suite"}, keysOf("Install"));
    EXPECT_EQ((CStdStringList{"Tools,Suite", "Common,Valmora"}), keysOf("Driver,Suite"));
    EXPECT_EQ(CStdStringList{"Monitor,Suite"}, keysOf("Common,Valmora"));
    EXPECT_EQ("1", log.GetValue("Driver,Suite", "Tools,Suite"));
    EXPECT_EQ("1", log.GetValue("Common_Special,Valmora", "Shared"));
    EXPECT_EQ("Suite", log.GetValue("Common_Special,Valmora", "InstalledBy"));

    EXPECT_FALSE(log.AddComponent("Driver", "driver", false));
    UninstallLog::SetParentComponent("");
    EXPECT_TRUE(log.AddComponent("Loose", "", false));
    EXPECT_FALSE(log.IsComponentInstalled("Loose"));

    EXPECT_TRUE(log.IsComponentInstalled("Driver"));
    EXPECT_TRUE(log.IsComponentInstalled("Monitor"));
    EXPECT_TRUE(log.IsComponentInstalled("common"));
    EXPECT_TRUE(log.IsComponentInstalled("Tools,Suite"));
    EXPECT_FALSE(log.IsComponentInstalled("Tools,Other"));
    log.SetProduct("Other");
    EXPECT_FALSE(log.IsComponentInstalled("Driver"));
    EXPECT_TRUE(log.IsComponentInstalled("Common"));
}

TEST_F(UninstallLogTest, OtherUsersAreCountedToTwoLevelsOnly) {
    log.AddComponent("A", "Install", false);
    log.AddComponent("B", "A", false);
    log.AddComponent("C", "B", false);
    log.AddComponent("D", "Install", false);
    const CStdStr file = "C:\\Common\\x.dll";
    EXPECT_EQ(0, log.CountOtherUsers(itemtype::File, file));
    log.AddItem(itemtype::File, "C", file);
    // C stands three levels down: its record does not count.
    EXPECT_EQ(0, log.CountOtherUsers(itemtype::File, file));
    log.AddItem(itemtype::File, "B", file);
    EXPECT_EQ(1, log.CountOtherUsers(itemtype::File, file));
    log.AddItem(itemtype::File, "D", file);
    EXPECT_EQ(2, log.CountOtherUsers(itemtype::File, file));
    EXPECT_EQ(0, log.CountOtherUsers(itemtype::RegValue, file));
    // Another product's component holds it too.
    log.SetValue("Install", "E,Other", "1");
    log.SetValue("E_Files,Other", file, "1");
    EXPECT_EQ(3, log.CountOtherUsers(itemtype::File, file));
}

TEST_F(UninstallLogTest, DependentsAreTheChildrenOfThisProduct) {
    log.AddComponent("A", "Install", false);
    log.AddComponent("B", "A", false);
    log.AddComponent("Common", "A", true);
    log.SetValue("A,Suite", "Foreign,Other", "1");
    log.SetValue("A,Suite", "IP_10.0.0.1", "Standard TCP/IP Port,1");
    log.SetValue("A,Suite", "Theirs,Valmora", "1");
    log.SetValue("Theirs_Special,Valmora", "Shared", "1");
    log.SetValue("Theirs_Special,Valmora", "InstalledBy", "Other");

    CStdStringList list;
    ASSERT_TRUE(log.GetDependents("A", list, false));
    EXPECT_EQ((CStdStringList{"B,Suite", "Common,Valmora"}), list);
    ASSERT_TRUE(log.GetDependents("A", list, true));
    EXPECT_EQ((CStdStringList{"B,Suite", "Common,Valmora", "Theirs,Valmora"}), list);
    EXPECT_FALSE(log.GetDependents("B", list, true));
    EXPECT_TRUE(list.empty());
}

TEST_F(UninstallLogTest, RemovingAComponentTakesItsKeyAndAllItsSections) {
    log.AddComponent("A", "Install", false);
    log.AddComponent("B", "A", false);
    log.AddItem(itemtype::File, "B", "C:\\b.dll");
    log.AddItem(itemtype::Special, "B", "BaseDir", "C:\\B");
    log.SetOemProduct("Brand");
    log.AddItem(itemtype::RegValue, "B", "HKLM,Software\\B,x");
    log.SetOemProduct("");
    // Sections of other products and of components with a longer name stay.
    log.SetValue("B_Files,Other", "C:\\b.dll", "1");
    log.SetValue("BB_Files,Suite", "C:\\bb.dll", "1");
    log.SetValue("B_Files", "C:\\loose.dll", "1");

    ASSERT_TRUE(log.RemoveComponent("B", false));
    EXPECT_TRUE(keysOf("A,Suite").empty());
    EXPECT_EQ(nullptr, log.FindSection("B_Files,Suite"));
    EXPECT_EQ(nullptr, log.FindSection("B_Special,Suite"));
    EXPECT_EQ(nullptr, log.FindSection("B_Reg,Suite,Brand"));
    EXPECT_NE(nullptr, log.FindSection("B_Files,Other"));
    EXPECT_NE(nullptr, log.FindSection("BB_Files,Suite"));
    EXPECT_NE(nullptr, log.FindSection("B_Files"));
    EXPECT_FALSE(log.RemoveComponent("B", false));
    EXPECT_TRUE(log.IsComponentInstalled("A"));
}

TEST_F(UninstallLogTest, ABrandsSectionStaysWhileTheBrandHoldsTheComponent) {
    log.AddComponent("Driver", "Install", false);
    log.AddItem(itemtype::File, "Driver", "C:\\drv.dll");
    for (const char* brand : {"Held", "Gone"}) {
        log.SetOemProduct(brand);
        log.AddItem(itemtype::File, "Driver", CStdStr::Formatted("C:\\%s.dll", brand));
    }
    log.SetOemProduct("");
    log.AddOEMSharedBy("Driver", "Held");

    ASSERT_TRUE(log.RemoveComponent("Driver", false));
    EXPECT_FALSE(log.IsComponentInstalled("Driver"));
    EXPECT_EQ(nullptr, log.FindSection("Driver_Files,Suite"));
    EXPECT_EQ(nullptr, log.FindSection("Driver_Files,Suite,Gone"));
    ASSERT_NE(nullptr, log.FindSection("Driver_Files,Suite,Held"));
    log.SetOemProduct("Held");
    EXPECT_EQ(CStdStringList{"C:\\Held.dll"}, items(itemtype::File, "Driver"));
}

TEST_F(UninstallLogTest, ItemsOfATypeAreOnlyThoseWithItsValue) {
    log.AddComponent("Tools", "Install", false);
    log.AddItem(itemtype::File, "Tools", "C:\\Tools\\a.exe");
    log.AddItem(itemtype::Directory, "Tools", "C:\\Tools");
    EXPECT_TRUE(log.HasItem(itemtype::File, "Tools", "c:\\tools\\A.EXE"));
    EXPECT_FALSE(log.HasItem(itemtype::Directory, "Tools", "C:\\Tools\\a.exe"));
    EXPECT_TRUE(log.HasItem(itemtype::Directory, "Tools", "C:\\Tools"));
    EXPECT_FALSE(log.HasItem(itemtype::File, "Tools", "C:\\Tools"));
    EXPECT_EQ(0, log.CountOtherUsers(itemtype::File, "C:\\Tools"));
}

TEST_F(UninstallLogTest, StartRecordsOfTheOldToolReadWithTheProductsNames) {
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("product.ini"),
                                       "[VARIABLES]\nDynamicNaming=Laser Series\n"
                                       "PRINTER_FAMILY=Laser\n"));
    ASSERT_TRUE(ProductIni::LoadProductIni(machine.Path("product.ini")));
    log.AddComponent("Tools", "Install", false);
    log.AddItem(itemtype::Shortcut, "Tools", "Programs\\$DynamicNaming$\\Help.lnk");
    log.AddItem(itemtype::StartFolder, "Tools", "Programs\\$PRINTER_FAMILY$ Tools");
    log.AddItem(itemtype::File, "Tools", "C:\\$PRINTER_FAMILY$.dll");
    EXPECT_EQ(CStdStringList{"Programs\\Laser Series\\Help.lnk"},
              items(itemtype::Shortcut, "Tools"));
    EXPECT_EQ(CStdStringList{"Programs\\Laser Tools"}, items(itemtype::StartFolder, "Tools"));
    EXPECT_EQ(CStdStringList{"C:\\$PRINTER_FAMILY$.dll"}, items(itemtype::File, "Tools"));
    ProductIni::Unload();
}

TEST_F(UninstallLogTest, ASharedComponentGoesOnlyWithItsLastProduct) {
    log.AddComponent("Common", "Install", true);
    log.AddItem(itemtype::File, "Common", "C:\\common.dll");
    log.SetProduct("Other");
    log.AddComponent("Common", "Install", true);
    EXPECT_EQ("Suite,Other", log.GetSpecial("Common", "InstalledBy"));
    EXPECT_TRUE(log.IsInstalledByOther("Common"));

    ASSERT_TRUE(log.RemoveComponent("Common", true));
    EXPECT_EQ("Suite", log.GetSpecial("Common", "InstalledBy"));
    EXPECT_TRUE(log.IsComponentInstalled("Common"));
    log.SetProduct("Suite");
    EXPECT_FALSE(log.IsInstalledByOther("Common"));
    ASSERT_TRUE(log.RemoveComponent("Common", false));
    EXPECT_FALSE(log.IsComponentInstalled("Common"));
    EXPECT_EQ(nullptr, log.FindSection("Common_Files,Valmora"));
    EXPECT_EQ(nullptr, log.FindSection("Common_Special,Valmora"));
    EXPECT_FALSE(log.IsShared("Common"));
}

TEST_F(UninstallLogTest, ListsKeepOrderAndNeverDoubleAName) {
    EXPECT_TRUE(log.AddRequiredBy("Common", "Driver"));
    EXPECT_TRUE(log.AddRequiredBy("Common", "Tools"));
    EXPECT_TRUE(log.AddRequiredBy("Common", "DRIVER"));
    UninstallLog::SetParentComponent("Fax");
    EXPECT_TRUE(log.AddRequiredBy("Common", ""));
    CStdStringList list;
    ASSERT_TRUE(log.GetRequiredBy("Common", list));
    EXPECT_EQ((CStdStringList{"Driver", "Tools", "Fax"}), list);
    EXPECT_EQ("Driver,Tools,Fax", log.GetSpecial("Common", "RequiredBy"));
    EXPECT_TRUE(log.IsInList("Common", "RequiredBy", "tools"));

    EXPECT_TRUE(log.RemoveFromList("Common", "RequiredBy", "TOOLS"));
    EXPECT_FALSE(log.RemoveFromList("Common", "RequiredBy", "Tools"));
    EXPECT_EQ("Driver,Fax", log.GetSpecial("Common", "RequiredBy"));
    log.RemoveFromList("Common", "RequiredBy", "Driver");
    log.RemoveFromList("Common", "RequiredBy", "Fax");
    EXPECT_EQ(nullptr, log.FindSection("Common_Special,Suite"));
    EXPECT_FALSE(log.GetRequiredBy("Common", list));
}

TEST_F(UninstallLogTest, OemBrandsAreRecordedPerProduct) {
    EXPECT_FALSE(log.IsOEMShared("Driver", "BrandA"));
    log.AddOEMSharedBy("Driver", "BrandA");
    EXPECT_EQ("BrandA", log.GetValue("Driver_Special,Suite", "OEMSharedBy,Suite"));
    EXPECT_FALSE(log.IsOEMShared("Driver", "branda"));
    EXPECT_TRUE(log.IsOEMShared("Driver", "BrandB"));
    log.SetOemProduct("BrandA");
    EXPECT_FALSE(log.IsOEMShared("Driver", ""));
    log.AddOEMSharedBy("Driver", "BrandB");
    EXPECT_TRUE(log.IsOEMShared("Driver", "BrandA"));
    // The special section never carries the brand.
    EXPECT_EQ("BrandA,BrandB", log.GetValue("Driver_Special,Suite", "OEMSharedBy,Suite"));
    log.RemoveOEMSharedBy("Driver", "BrandB");
    EXPECT_FALSE(log.IsOEMShared("Driver", "BrandA"));
    log.SetProduct("Other");
    EXPECT_FALSE(log.IsOEMShared("Driver,Suite", "BrandB"));
}

TEST_F(UninstallLogTest, ChangingAComponentMovesItAndItsRecords) {
    log.AddComponent("Old", "Install", false);
    log.AddComponent("Child", "Old", false);
    log.AddComponent("Home", "Install", false);
    log.AddItem(itemtype::File, "Old", "C:\\old.dll");
    log.AddItem(itemtype::File, "Child", "C:\\child.dll");

    EXPECT_FALSE(log.ChangeComponent("Missing", "Home"));
    ASSERT_TRUE(log.ChangeComponent("Old", "Home", "New"));
    EXPECT_EQ(CStdStringList{"Home,Suite"}, keysOf("Install"));
    EXPECT_EQ(CStdStringList{"New,Suite"}, keysOf("Home,Suite"));
    EXPECT_EQ(CStdStringList{"Child,Suite"}, keysOf("New,Suite"));
    EXPECT_EQ(CStdStringList{"C:\\old.dll"}, items(itemtype::File, "New"));
    EXPECT_TRUE(log.IsComponentInstalled("Child"));
    EXPECT_EQ(nullptr, log.FindSection("Old_Files,Suite"));
}

TEST_F(UninstallLogTest, AComponentThatBecomesSharedLeavesNoRecordUnderItsOldScope) {
    log.AddComponent("Viewer", "Install", false);
    log.AddComponent("Other", "Install", false);
    log.AddComponent("Viewer", "Other", false);
    log.AddComponent("Plugin", "Viewer", false);
    log.AddItem(itemtype::File, "Viewer", "C:\\viewer.exe");
    log.SetOemProduct("Brand");
    log.AddItem(itemtype::RegValue, "Viewer", "HKLM,Software\\Viewer,x");
    log.SetOemProduct("");

    ASSERT_TRUE(log.ChangeComponent("Viewer", "Install", "", true));
    EXPECT_EQ((CStdStringList{"Other,Suite", "Viewer,Valmora"}), keysOf("Install"));
    EXPECT_TRUE(keysOf("Other,Suite").empty());
    for (const char* old : {"Viewer,Suite", "Viewer_Files,Suite", "Viewer_Reg,Suite,Brand"}) {
        EXPECT_EQ(nullptr, log.FindSection(old)) << old;
    }
    EXPECT_TRUE(log.IsShared("Viewer"));
    EXPECT_EQ(CStdStringList{"C:\\viewer.exe"}, items(itemtype::File, "Viewer"));
    EXPECT_EQ(CStdStringList{"Plugin,Suite"}, keysOf("Viewer,Valmora"));
    EXPECT_NE(nullptr, log.FindSection("Viewer_Reg,Valmora,Brand"));
}

TEST_F(UninstallLogTest, AHostComponentTakesOverTheOtherProductsComponents) {
    log.SetProduct("Other");
    log.AddComponent("Host", "Install", true);
    log.AddComponent("Viewer", "Install", false);
    log.AddItem(itemtype::File, "Viewer", "C:\\viewer.exe");
    log.AddItem(itemtype::Directory, "Viewer", "C:\\Viewer");
    log.AddItem(itemtype::RegValue, "Viewer", "HKLM,Software\\Viewer,Path");
    log.AddItem(itemtype::RegKey, "Viewer", "HKLM,Software\\Viewer");
    log.AddItem(itemtype::Service, "Viewer", "ViewerSvc");
    log.SetSpecial("Viewer", "BaseDir", "C:\\Viewer");
    log.SetProduct("Suite");

    ASSERT_TRUE(log.MergeHostComponent("Host"));
    EXPECT_EQ("Other,Suite", log.GetSpecial("Host", "InstalledBy"));
    EXPECT_EQ(CStdStringList{"C:\\viewer.exe"}, items(itemtype::File, "Viewer"));
    EXPECT_TRUE(items(itemtype::Directory, "Viewer").empty());
    EXPECT_EQ(CStdStringList{"HKLM,Software\\Viewer,Path"}, items(itemtype::RegValue, "Viewer"));
    EXPECT_TRUE(items(itemtype::RegKey, "Viewer").empty());
    EXPECT_EQ(CStdStringList{"ViewerSvc"}, items(itemtype::Service, "Viewer"));
    EXPECT_EQ("C:\\Viewer", log.GetSpecial("Viewer", "BaseDir"));
    // The other product's own records stay as they were.
    EXPECT_EQ("2", log.GetValue("Viewer_Files,Other", "C:\\Viewer"));
}

TEST_F(UninstallLogTest, ALoopInTheTreeDoesNotHangTheWalks) {
    log.SetValue("Install", "A,Suite", "1");
    log.SetValue("A,Suite", "B,Suite", "1");
    log.SetValue("B,Suite", "A,Suite", "1");
    EXPECT_FALSE(log.IsComponentInstalled("C"));
    EXPECT_FALSE(log.RemoveComponent("C", false));
    EXPECT_EQ(0, log.CountOtherUsers(itemtype::File, "C:\\x"));
    EXPECT_TRUE(log.MergeHostComponent("A"));
}

} // namespace
