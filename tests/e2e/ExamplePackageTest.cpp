// The example package installed with installcli on fresh simulated machines: what each version
// of Windows gets, what the uninstall log records, the version and time rules of a second
// install, files in use, and package mode.
#include "CliTest.h"
#include "sim/MachinePreset.h"
#include "tools/VersionedImage.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>

namespace {

namespace fs = std::filesystem;
using e2e::CliResult;
using e2e::ReadHostFile;
using e2e::RunInstallcli;
using e2e::WriteHostFile;

std::string Quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

std::string Image(std::uint16_t major, std::uint16_t minor) {
    peimage::VersionSpec resource =
            peimage::WithFileVersion(std::to_string(major) + "." + std::to_string(minor) + ".0.0");
    resource.fileVersion[0] = major;
    resource.fileVersion[1] = minor;
    resource.fileVersion[2] = resource.fileVersion[3] = 0;
    return peimage::PeImage(resource);
}

class ExamplePackageTest : public e2e::CliTest {
protected:
    ExamplePackageTest() : CliTest("example-package") {}

    fs::path package = root / "printer-suite";

    void SetUp() override {
        CliTest::SetUp();
        fs::copy(EXAMPLE_PACKAGE, package, fs::copy_options::recursive);
    }

    CliResult install(const fs::path& dir) {
        return RunInstallcli("install --machine " + Quoted(dir) + " " +
                             Quoted(package / "install" / "setup.isf"));
    }

    static fs::path drive(const fs::path& dir) { return dir / "drive_c"; }
    static fs::path suite(const fs::path& dir) {
        return drive(dir) / "Program Files" / "Tovar Suite";
    }
};

struct PresetExpectation {
    std::string preset;
    fs::path systemFolder; // below drive C:
    fs::path tempFolder;
    bool nineX;
    bool x64;
    bool vista;
};

void PrintTo(const PresetExpectation& expected, std::ostream* out) {
    *out << expected.preset;
}

// The memory the preset gives the machine, from its machine.ini.
long MachineMemoryMB(const fs::path& dir) {
    std::string ini = ReadHostFile(dir / "machine.ini");
    size_t at = ini.find("MemoryMB=");
    return at == std::string::npos ? 0 : std::stol(ini.substr(at + 9));
}

std::vector<PresetExpectation> Presets() {
    std::vector<PresetExpectation> list;
    for (const std::string& name : sim::MachinePreset::Names()) {
        if (name == "win95") {
            continue;
        }
        PresetExpectation expected;
        expected.preset = name;
        expected.nineX = name.rfind("win9", 0) == 0 || name == "winme";
        expected.x64 = name.find("x64") != std::string::npos;
        expected.vista = name.rfind("vista", 0) == 0 || name.rfind("win7", 0) == 0 ||
                         name.rfind("win8", 0) == 0 || name.rfind("server2008", 0) == 0;
        bool winnt = name == "nt4" || name == "win2000";
        std::string windows = expected.vista ? "Windows" : winnt ? "WINNT" : "WINDOWS";
        expected.systemFolder = fs::path(windows) / (expected.nineX ? "SYSTEM" : "system32");
        list.push_back(expected);
    }
    return list;
}

class ExamplePackageOnEveryWindows : public ExamplePackageTest,
                                     public ::testing::WithParamInterface<PresetExpectation> {};

TEST_P(ExamplePackageOnEveryWindows, InstallsWhatThisWindowsSelectsAndRecordsIt) {
    const PresetExpectation& expected = GetParam();
    fs::path dir = machine(expected.preset);
    CliResult installed = install(dir);
    ASSERT_EQ(0, installed.code) << installed.output;

    fs::path shared = drive(dir) / "Program Files" / "Common Files" / "Tovar Shared";
    std::string core = ReadHostFile(shared / "qorcore.dll");
    std::string architecture = expected.x64 ? "x64" : "x86";
    EXPECT_EQ(ReadHostFile(package / "payload" / "common" / architecture / "qorcore.dll"), core);
    EXPECT_TRUE(fs::exists(suite(dir) / "bin" / "Toolbox.exe"));
    EXPECT_TRUE(fs::exists(suite(dir) / "bin" / "plugins" / "Scan.dll"));
    EXPECT_TRUE(fs::exists(suite(dir) / "Manuals" / "manual.txt"));
    EXPECT_TRUE(fs::exists(suite(dir) / "Profiles" / "office.prf"));
    EXPECT_TRUE(fs::exists(suite(dir) / "Uninstall" / "Uninstall.exe"));
    // The monitor runs on NT systems only; its manifest is for Vista and later.
    EXPECT_EQ(!expected.nineX, fs::exists(suite(dir) / "Monitor" / "StatusMonitor.exe"));
    EXPECT_EQ(expected.vista, fs::exists(suite(dir) / "Monitor" / "StatusMonitor.exe.manifest"));
    EXPECT_EQ(expected.nineX, fs::exists(drive(dir) / expected.systemFolder / "qorhelp.dll"));
    EXPECT_EQ(expected.nineX, fs::exists(drive(dir) / expected.systemFolder / "qorport.vxd"));
    EXPECT_EQ(MachineMemoryMB(dir) >= 1024, fs::exists(suite(dir) / "cache" / "prefetch.dat"))
            << "the label of the memory requirement selects the cache";

    std::string log = ReadHostFile(drive(dir) / expected.systemFolder / "QorFiles.ulf");
    EXPECT_NE(std::string::npos,
              log.find("[Install]\r\nCore,TovarSuite=1\r\nTools,TovarSuite=1\r\n"))
            << log;
    std::string monitor = expected.nineX ? "" : "Monitor,TovarSuite=1\r\n";
    EXPECT_NE(std::string::npos, log.find("[Tools,TovarSuite]\r\n" + monitor + "Help,TovarSuite=1"))
            << "the sub components stand below Tools";
    EXPECT_NE(std::string::npos, log.find("C:\\Program Files\\Tovar Suite\\bin\\Toolbox.exe=1"));
    EXPECT_NE(std::string::npos, log.find("[Office_Special,TovarSuite]"));
    EXPECT_NE(std::string::npos, log.find("TemplateMold=Profiles.Profile#Office"));
    EXPECT_NE(std::string::npos, log.find("RequiredBy=Tools"));

    // The suite's registry values, its variable and its lines in text files.
    std::string registry = ReadHostFile(dir / "registry.reg");
    EXPECT_NE(std::string::npos, registry.find("\"Build\"=dword:00000834"));
    EXPECT_NE(std::string::npos, registry.find("\"Signature\"=hex:54,56,52,31"));
    EXPECT_NE(std::string::npos, registry.find("\"Components\"=\"Core\""));
    EXPECT_NE(std::string::npos, registry.find("\\Software\\Tovar\\Suite\\Settings]"));
    EXPECT_NE(std::string::npos, registry.find("\"TOVAR_SHARED\"="));
    EXPECT_NE(std::string::npos, log.find("HKLM,Software\\Tovar\\Suite,Build=1"));
    EXPECT_NE(std::string::npos, log.find("HKCU,Software\\Tovar\\Suite\\Settings,=1"));
    EXPECT_NE(std::string::npos,
              log.find("HKLM,System\\CurrentControlSet\\Control\\Session Manager\\Environment,"
                       "TOVAR_SHARED=1"));
    fs::path windows = drive(dir) / expected.systemFolder.parent_path();
    EXPECT_NE(std::string::npos, ReadHostFile(windows / "win.ini").find("[Tovar]\r\nSuite=2.1.0"));
    EXPECT_EQ("\r\nTovarJet on USB001\r\n", ReadHostFile(shared / "devices.txt"));
}

INSTANTIATE_TEST_SUITE_P(FromWindows98ToWindows8, ExamplePackageOnEveryWindows,
                         ::testing::ValuesIn(Presets()),
                         [](const ::testing::TestParamInfo<PresetExpectation>& info) {
                             std::string name = info.param.preset;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST_F(ExamplePackageTest, EveryPhaseTitleStandsOnceInTheLog) {
    fs::path dir = machine("win7");
    ASSERT_EQ(0, install(dir).code);
    std::string log = ReadHostFile(drive(dir) / "Users" / "User" / "AppData" / "Local" / "Temp" /
                                   "suite-install.log");
    auto count = [&](const std::string& text) {
        size_t found = 0;
        for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(1u, count("[--PreInstall : "));
    EXPECT_EQ(1u, count("[--PostInstall : "));
    EXPECT_EQ(1u, count("[--Finish Install : "));
    EXPECT_EQ(1u, count("[---------------Cleanup----------------]"));
    EXPECT_EQ(1u, count("[--Installing Core : "));
    EXPECT_EQ(1u, count("[--Installing Monitor : "));
    EXPECT_EQ(0u, count("[--Device Install : ")) << "no devices, no phase";
    EXPECT_EQ(1u, count("Current Title: Installation complete"));
}

TEST_F(ExamplePackageTest, ASecondInstallFollowsTheVersionAndTimeRules) {
    fs::path dir = machine("xp");
    ASSERT_EQ(0, install(dir).code);
    // A newer program on the machine stays; an older one is replaced.
    WriteHostFile(suite(dir) / "bin" / "Toolbox.exe", Image(9, 0));
    WriteHostFile(suite(dir) / "bin" / "plugins" / "Scan.dll", Image(1, 0));
    // A text file without version: a newer one stays, an older one is replaced.
    WriteHostFile(suite(dir) / "readme.txt", "edited by the user");
    WriteHostFile(suite(dir) / "Help" / "Toolbox.hlp", "old help");
    fs::last_write_time(
            suite(dir) / "Help" / "Toolbox.hlp",
            fs::last_write_time(package / "payload" / "tools" / "help" / "Toolbox.hlp") -
                    std::chrono::hours(24 * 365));

    CliResult again = install(dir);
    ASSERT_EQ(0, again.code) << again.output;
    EXPECT_EQ(Image(9, 0), ReadHostFile(suite(dir) / "bin" / "Toolbox.exe"));
    EXPECT_EQ(ReadHostFile(package / "payload" / "tools" / "bin" / "plugins" / "Scan.dll"),
              ReadHostFile(suite(dir) / "bin" / "plugins" / "Scan.dll"));
    EXPECT_EQ("edited by the user", ReadHostFile(suite(dir) / "readme.txt"));
    EXPECT_EQ(ReadHostFile(package / "payload" / "tools" / "help" / "Toolbox.hlp"),
              ReadHostFile(suite(dir) / "Help" / "Toolbox.hlp"));
    std::string log = ReadHostFile(drive(dir) / "WINDOWS" / "system32" / "QorFiles.ulf");
    EXPECT_NE(std::string::npos, log.find("C:\\Program Files\\Tovar Suite\\bin\\Toolbox.exe=1"))
            << "a file kept by the version rule still belongs to the component";
}

TEST_F(ExamplePackageTest, AFileHeldOpenIsReplacedAtTheNextStart) {
    fs::path dir = machine("win7-x64");
    ASSERT_EQ(0, install(dir).code);
    WriteHostFile(package / "payload" / "tools" / "bin" / "Toolbox.exe", Image(1, 6));
    WriteHostFile(dir / "faults.ini",
                  "[Files]\nC:\\Program Files\\Tovar Suite\\bin\\Toolbox.exe=sharing\n");

    CliResult again = install(dir);
    ASSERT_EQ(0, again.code) << again.output;
    EXPECT_NE(std::string::npos, again.output.find("A restart of the machine is needed"));
    EXPECT_NE(Image(1, 6), ReadHostFile(suite(dir) / "bin" / "Toolbox.exe"));
    CliResult shown = RunInstallcli("machine show " + Quoted(dir));
    EXPECT_NE(std::string::npos, shown.output.find("At restart: 1 pending file operations"))
            << shown.output;

    CliResult rebooted = RunInstallcli("machine reboot " + Quoted(dir));
    ASSERT_EQ(0, rebooted.code) << rebooted.output;
    EXPECT_EQ(Image(1, 6), ReadHostFile(suite(dir) / "bin" / "Toolbox.exe"));
    shown = RunInstallcli("machine show " + Quoted(dir));
    EXPECT_NE(std::string::npos, shown.output.find("At restart: 0 pending file operations"));
}

TEST_F(ExamplePackageTest, ARunningProgramIsRenamedAndItsOldFileGoesAtTheNextStart) {
    fs::path dir = machine("win7-x64");
    ASSERT_EQ(0, install(dir).code);
    WriteHostFile(package / "payload" / "tools" / "bin" / "Toolbox.exe", Image(1, 6));
    WriteHostFile(dir / "faults.ini",
                  "[Files]\nC:\\Program Files\\Tovar Suite\\bin\\Toolbox.exe=image\n");

    ASSERT_EQ(0, install(dir).code);
    EXPECT_EQ(Image(1, 6), ReadHostFile(suite(dir) / "bin" / "Toolbox.exe"));
    auto leftovers = [&] {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(suite(dir) / "bin")) {
            count += entry.path().extension() == ".tmp" ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(1u, leftovers()) << "the renamed old program waits for the restart";
    ASSERT_EQ(0, RunInstallcli("machine reboot " + Quoted(dir)).code);
    EXPECT_EQ(0u, leftovers());
}

TEST_F(ExamplePackageTest, APackageScriptInstallsNothingAndLogsNothing) {
    fs::path dir = machine("xp");
    WriteHostFile(package / "install" / "setup.isf",
                  ReadHostFile(package / "install" / "setup.isf") + "\r\n[Package]\r\n");
    CliResult packaged = install(dir);
    ASSERT_EQ(0, packaged.code) << packaged.output;
    EXPECT_FALSE(fs::exists(suite(dir)));
    EXPECT_FALSE(fs::exists(drive(dir) / "Program Files" / "Common Files" / "Tovar Shared"));
    EXPECT_EQ("", ReadHostFile(drive(dir) / "WINDOWS" / "system32" / "QorFiles.ulf"));
    EXPECT_EQ(std::string::npos, ReadHostFile(dir / "registry.reg").find("Tovar\\Suite"))
            << "a package leaves the registry alone";
    fs::path image = drive(dir) / "Documents and Settings" / "User" / "Local Settings" / "Temp" /
                     "CustomPackage" / "C" / "Program Files" / "Tovar Suite";
    EXPECT_TRUE(fs::exists(image / "bin" / "Toolbox.exe"));
    std::string log = ReadHostFile(drive(dir) / "Documents and Settings" / "User" /
                                   "Local Settings" / "Temp" / "suite-install.log");
    EXPECT_NE(std::string::npos, log.find("Current Title: Finishing the package"));
    EXPECT_EQ(std::string::npos, log.find("[--Installing Uninstaller"));
}

} // namespace
