#include "script/InfFile.h"
#include "script/SystemPath.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

std::string HostData(const std::string& name) {
    std::ifstream in(std::string(ENGINE_TEST_DATA) + "/inf/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Single-byte text as UTF-16LE with its byte-order mark.
std::string Utf16(const std::string& text) {
    std::string bytes = "\xFF\xFE";
    for (char c : text) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

// The system's printer INF as far as the tests need it: the Unidrv core that vendor INFs include.
const char* const kSystemInf = "[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\n"
                               "[UNIDRV.OEM]\r\nCopyFiles=@UNIDRV.DLL,UNIDRV_FILES\r\n"
                               "[UNIDRV_DATA]\r\nDriverFile=UNIDRV.DLL\r\nConfigFile=UNIDRVUI.DLL\r\n"
                               "[UNIDRV_FILES]\r\nUNIDRVUI.DLL\r\nUNIRES.DLL\r\n"
                               "[DestinationDirs]\r\nDefaultDestDir=66000\r\n"
                               "[SourceDisksNames]\r\n1=%Disk%,,,\r\n"
                               "[SourceDisksFiles]\r\nUNIDRV.DLL=1\r\nUNIDRVUI.DLL=1\r\nUNIRES.DLL=1\r\n"
                               "[Strings]\r\nDisk=\"Windows CD\"\r\n";

class InfFileTest : public ::testing::Test {
protected:
    explicit InfFileTest(const std::string& preset = "xp") : machine(preset) {}

    std::string put(const std::string& name, const std::string& bytes) {
        return machine.WriteScratch(name, bytes);
    }
    std::unique_ptr<InfFile> open(const std::string& name, const std::string& bytes) {
        return std::make_unique<InfFile>(put(name, bytes), false);
    }
    void installSystemInf() {
        ASSERT_TRUE(TestMachine::WriteFile(SystemPath(SystemPath::InfFolder).GetFullPath() +
                                                   "\\ntprint.inf",
                                           kSystemInf));
    }
    static std::vector<InfDriver> drivers(InfFile& inf, bool all = false) {
        std::vector<InfDriver> list;
        inf.GetDriversList(list, all);
        return list;
    }
    static const InfCopyFile* find(const std::vector<InfCopyFile>& files, const char* name) {
        for (const InfCopyFile& file : files) {
            if (file.name.EqualsNoCase(name)) {
                return &file;
            }
        }
        return nullptr;
    }

    TestMachine machine;
};

struct XpX64 : InfFileTest {
    XpX64() : InfFileTest("xp-x64") {}
};
struct Win7X64 : InfFileTest {
    Win7X64() : InfFileTest("win7-x64") {}
};
struct Vista : InfFileTest {
    Vista() : InfFileTest("vista") {}
};
struct Win98 : InfFileTest {
    Win98() : InfFileTest("win98") {}
};

TEST_F(InfFileTest, APublishedUnidrvMinidriverOnXp) {
    installSystemInf();
    auto inf = open("bitmap.inf", HostData("bitmap.inf"));
    EXPECT_EQ("Printer", inf->GetClass());
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Bitmap Driver", list[0].name); // written in quotes in the file
    EXPECT_EQ("BITMAP", list[0].installSection);
    EXPECT_EQ("Microsoft.NTx86", list[0].modelSection);
    EXPECT_EQ("Microsoft", list[0].manufacturer);

    std::vector<InfCopyFile> files;
    ASSERT_TRUE(inf->GetCopyFiles("BITMAP", files));
    CStdStr driverFolder = SystemPath(SystemPath::PrinterDriverFolder).GetFullPath();
    const InfCopyFile* gpd = find(files, "BITMAP.GPD");
    ASSERT_NE(nullptr, gpd);
    EXPECT_EQ(driverFolder, gpd->destination);
    EXPECT_EQ(machine.Path("BITMAP.GPD"), gpd->sourcePath);
    const InfCopyFile* dll = find(files, "BITMAP.DLL");
    ASSERT_NE(nullptr, dll);
    EXPECT_EQ(machine.Path("bitmap\\x86\\BITMAP.DLL"), dll->sourcePath);
    // The Unidrv core comes through Include and Needs, from the system's INF and its sources.
    const InfCopyFile* core = find(files, "UNIRES.DLL");
    ASSERT_NE(nullptr, core);
    EXPECT_EQ(SystemPath(SystemPath::InfFolder).GetFullPath() + "\\UNIRES.DLL", core->sourcePath);
    EXPECT_NE(nullptr, find(files, "UNIDRV.DLL"));
    EXPECT_EQ(CStdStringList({"UNIDRV.DLL"}), inf->GetInstallValues("BITMAP", "DriverFile"));
    EXPECT_EQ(CStdStringList({"BITMAP.GPD"}), inf->GetInstallValues("BITMAP", "DataFile"));
}

TEST_F(XpX64, APublishedMinidriverTakesItsAmd64SectionsAndSources) {
    installSystemInf();
    auto inf = open("bitmap.inf", HostData("bitmap.inf"));
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Microsoft.NTamd64", list[0].modelSection);
    std::vector<InfCopyFile> files;
    ASSERT_TRUE(inf->GetCopyFiles("BITMAP", files));
    const InfCopyFile* dll = find(files, "BITMAP.DLL");
    ASSERT_NE(nullptr, dll);
    EXPECT_EQ(machine.Path("bitmap\\amd64\\BITMAP.DLL"), dll->sourcePath);
}

TEST_F(Win98, DecoratedSectionsServeNoWindows9x) {
    LogCapture log(machine.Path("engine.log"));
    auto inf = open("bitmap.inf", HostData("bitmap.inf"));
    EXPECT_TRUE(drivers(*inf).empty());
    EXPECT_TRUE(log.Contains("Model section of <Microsoft, NTx86, NTamd64, NTia64, NTarm64> not "
                             "found"));
    // Asked for every model, the file still shows what it holds, once each.
    EXPECT_EQ(1u, drivers(*inf, true).size());
}

// The decoration with the highest version that the system reaches wins; on systems before it
// the plain platform decoration serves.
TEST_F(InfFileTest, VersionedDecorationsChooseBySystem) {
    auto inf = open("xdsmpl.inf", HostData("xdsmpl.inf"));
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("INSTALL_XDSMPL_FILTERS_PRE_VISTA", list[0].installSection);
    EXPECT_EQ("TODO-Set-Manufacturer", list[0].manufacturer);
}

TEST_F(Vista, VersionedDecorationsChooseBySystem) {
    auto inf = open("xdsmpl.inf", HostData("xdsmpl.inf"));
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Standard.NTx86.6.0", list[0].modelSection);
    EXPECT_EQ("INSTALL_XDSMPL_FILTERS_VISTA", list[0].installSection);
}

TEST_F(Win7X64, VersionedDecorationsAndPlatformSourcesFromUtf16) {
    // The same file as UTF-16 answers the same.
    auto inf = open("xdsmpl.inf", Utf16(HostData("xdsmpl.inf")));
    EXPECT_EQ(2, inf->GetEncoding());
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Standard.NTamd64.6.0", list[0].modelSection);
    EXPECT_EQ("XPSDrv Sample Driver", list[0].name);

    std::vector<InfCopyFile> files;
    // The system INFs it includes are not on this machine: their sections are missing, its own
    // files are all found.
    EXPECT_TRUE(inf->GetCopyFiles("INSTALL_XDSMPL_FILTERS_VISTA", files));
    EXPECT_EQ(17u, files.size());
    const InfCopyFile* profile = find(files, "xdwscRGB.icc");
    ASSERT_NE(nullptr, profile);
    EXPECT_EQ(SystemPath(SystemPath::SystemFolder).GetFullPath() + "\\spool\\drivers\\color",
              profile->destination);
    const InfCopyFile* filter = find(files, "xdwmark.dll");
    ASSERT_NE(nullptr, filter);
    EXPECT_EQ(machine.Path("amd64\\xdwmark.dll"), filter->sourcePath);
    // A name in a list that its source section spells otherwise still finds its source.
    const InfCopyFile* ui = find(files, "XDSmplUI.dll");
    ASSERT_NE(nullptr, ui);
    EXPECT_TRUE(ui->namedBySource);
}

TEST_F(InfFileTest, InfSyntaxCommentsQuotesAndNoContinuation) {
    auto inf = open("syntax.inf",
                    "[Version] ; the header may carry a comment\r\n"
                    "Class=Printer ; so may a value\r\n"
                    "[Manufacturer]\r\n"
                    "\"Maker = One\"=Models\r\n"
                    "[Models]\r\n"
                    "\"Office Laser; 2\" = INSTALL , \"USBPRINT\\Maker;Laser\" ; id in quotes\r\n"
                    "[Strings]\r\n"
                    "Quoted = \"a ; b\" ; cut here\r\n"
                    "Trailing = line \\\r\n"
                    "Next = stands alone\r\n");
    EXPECT_EQ("Printer", inf->GetClass());
    EXPECT_EQ("Models", inf->GetValue("Manufacturer", "Maker = One"));
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Office Laser; 2", list[0].name);
    EXPECT_EQ("INSTALL", list[0].installSection);
    EXPECT_EQ("USBPRINT\\Maker;Laser", list[0].hardwareId);
    EXPECT_EQ("a ; b", inf->GetStrings().at("quoted"));
    EXPECT_EQ("line \\", inf->GetStrings().at("trailing"));
    EXPECT_EQ("stands alone", inf->GetStrings().at("next"));
}

TEST_F(InfFileTest, StringsOfTheLanguageOverrideTheirPrimaryLanguageAndTheDefault) {
    auto inf = open("lang.inf", "[Strings]\r\nA=plain\r\nB=plain\r\nC=plain\r\n"
                                "[Strings.0007]\r\nB=German\r\nC=German\r\n"
                                "[Strings.0407]\r\nC=Germany\r\n"
                                "[Strings.0409]\r\nA=English\r\n");
    inf->LoadStrings(0x0407);
    EXPECT_EQ("plain|German|Germany",
              inf->Resolve("%a%|%B%|%c%"));
    inf->LoadStrings(0x0807); // Swiss German: the primary language only
    EXPECT_EQ("plain|German|German", inf->Resolve("%a%|%B%|%c%"));
}

TEST_F(InfFileTest, ResolvingNestsLeavesUnknownNamesAndEndsCycles) {
    auto inf = open("res.inf", "[Strings]\r\nMaker=Valmora\r\nModel=%Maker% Laser\r\n"
                               "Loop=%Loop%!\r\nEmpty=\"\"\r\n");
    EXPECT_EQ("Valmora Laser 5%", inf->Resolve("%Model% 5%"));
    EXPECT_EQ("%unknown% Valmora", inf->Resolve("%unknown% %maker%"));
    EXPECT_EQ("a%%b", inf->Resolve("a%%b"));
    EXPECT_EQ("[]", inf->Resolve("[%Empty%]"));
    CStdStr loop = inf->Resolve("%Loop%");
    EXPECT_EQ(0, loop.Find("%Loop%")); // expanded a bounded number of times, then left
}

TEST_F(InfFileTest, InstallSectionsFollowThePlatform) {
    auto inf = open("sec.inf", "[A]\r\n[A.NT]\r\n[A.NTx86]\r\n[B]\r\n[B.NT]\r\n[C]\r\n"
                               "[D.NTamd64]\r\n");
    EXPECT_EQ("A.NTx86", inf->FindInstallSection("a"));
    EXPECT_EQ("B.NT", inf->FindInstallSection("B"));
    EXPECT_EQ("C", inf->FindInstallSection("C"));
    EXPECT_EQ("", inf->FindInstallSection("D"));
}

TEST_F(InfFileTest, MalformedFilesGiveTheirLogLineAndADefinedResult) {
    LogCapture log(machine.Path("engine.log"));
    auto noMaker = open("nomaker.inf", "[Version]\r\nClass=Printer\r\n");
    EXPECT_TRUE(drivers(*noMaker).empty());
    EXPECT_TRUE(log.Contains("No Manufacturer section in inf <" + machine.Path("nomaker.inf")));

    auto inf = open("bad.inf",
                    "[Manufacturer]\r\nM=Models\r\n[Models]\r\nX=MISSING\r\nY=INST\r\n"
                    "[INST]\r\nCopyFiles=NOLIST,FILES,ODD,ESCAPE\r\nNeeds=NOWHERE\r\n"
                    "[FILES]\r\na.dll\r\nb.dll\r\n[ODD]\r\nc.dll\r\n[ESCAPE]\r\nd.dll\r\n"
                    "[DestinationDirs]\r\nFILES=66000\r\nODD=4711\r\nESCAPE=10,..\\..\\x\r\n"
                    "[SourceDisksNames]\r\n1=disk,,,sub\r\n2=disk,,,..\\..\\etc\r\n"
                    "[SourceDisksFiles]\r\na.dll=1,%unresolved%\r\nc.dll=2\r\n");
    EXPECT_EQ(2u, drivers(*inf).size());
    std::vector<InfCopyFile> files;
    EXPECT_FALSE(inf->GetCopyFiles("MISSING", files));
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(log.Contains("Install section <MISSING> not found in inf <"));

    EXPECT_FALSE(inf->GetCopyFiles("INST", files));
    EXPECT_TRUE(log.Contains("CopyFiles section <NOLIST> not found in inf <"));
    EXPECT_TRUE(log.Contains("Needed section <NOWHERE> not found for <INST>"));
    EXPECT_TRUE(log.Contains("Unknown destination dirid <4711> for <ODD>"));
    EXPECT_TRUE(log.Contains("Destination <..\\..\\x> leaves its folder"));
    ASSERT_EQ(4u, files.size());
    // An unresolved string key in a path stays as written and is refused as a folder name
    // nowhere: it is a plain (odd) folder below the INF's.
    EXPECT_EQ(machine.Path("sub\\%unresolved%\\a.dll"), files[0].sourcePath);
    EXPECT_FALSE(files[1].namedBySource);
    EXPECT_EQ(machine.Path("b.dll"), files[1].sourcePath);
    EXPECT_TRUE(log.Contains("File <b.dll> is named by no source in inf <"));
    EXPECT_EQ("", files[2].destination);
    EXPECT_FALSE(files[2].namedBySource); // its disk path would leave the INF's folder
    EXPECT_EQ(machine.Path("c.dll"), files[2].sourcePath);
    EXPECT_EQ("", files[3].destination);
}

TEST_F(InfFileTest, ATruncatedUtf16FileReadsWhatIsWhole) {
    std::string bytes = Utf16("[Manufacturer]\r\nM=Models\r\n[Models]\r\n\"Laser\"=INST\r\n");
    bytes += 'X'; // half of a character
    auto inf = open("cut.inf", bytes);
    auto list = drivers(*inf);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ("Laser", list[0].name);
}

TEST_F(InfFileTest, AnIncludeNeverLeavesItsFolders) {
    installSystemInf();
    auto inf = open("inc.inf", "[INST]\r\nInclude=..\\..\\WINDOWS\\inf\\ntprint.inf\r\n"
                               "Needs=UNIDRV.OEM\r\n");
    std::vector<std::pair<InfFile*, CStdStr>> sections;
    ASSERT_TRUE(inf->GetNeededSections("INST", sections));
    // The name alone is looked for, so the system's own INF is the one that is found.
    ASSERT_EQ(2u, sections.size());
    EXPECT_EQ(SystemPath(SystemPath::InfFolder).GetFullPath() + "\\ntprint.inf",
              sections[1].first->GetFileName());
}

} // namespace
