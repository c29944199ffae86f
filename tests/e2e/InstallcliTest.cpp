// installcli end to end, against fresh simulated machines.
#include "CliTest.h"
#include "sim/MachinePreset.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using Result = e2e::CliResult;

class InstallcliTest : public e2e::CliTest {
protected:
    InstallcliTest() : CliTest("installcli") {}

    // A package folder: Config\product.ini and a script beside it.
    std::string package(const std::string& scriptText) {
        fs::create_directories(root / "pkg" / "Config");
        std::ofstream(root / "pkg" / "Config" / "product.ini") << "[GENERAL]\nLogName=e2e.log\n";
        std::ofstream(root / "pkg" / "Config" / "install.map") << "[Components]\nTools=Tools.cif\n";
        std::ofstream(root / "pkg" / "setup.isf") << scriptText;
        return (root / "pkg" / "setup.isf").string();
    }
};

TEST_F(InstallcliTest, EveryPresetMakesAMachineThatShowsItself) {
    for (const std::string& preset : sim::MachinePreset::Names()) {
        std::string dir = machine(preset);
        Result shown = run("machine show " + dir);
        EXPECT_EQ(0, shown.code) << shown.output;
        EXPECT_NE(std::string::npos, shown.output.find("preset " + preset)) << shown.output;
    }
}

TEST_F(InstallcliTest, ValidateAnswersWithTheExitCode) {
    std::string dir = machine("xp");
    std::string good = package("[Install]\nTools=1\n");
    Result valid = run("validate --machine " + dir + " " + good);
    EXPECT_EQ(0, valid.code) << valid.output;
    EXPECT_NE(std::string::npos, valid.output.find("Machine: " + dir));
    std::ofstream(root / "pkg" / "empty.isf") << "[Install]\n";
    Result invalid = run("validate --machine " + dir + " " + (root / "pkg" / "empty.isf").string());
    EXPECT_EQ(1, invalid.code) << invalid.output;
    EXPECT_EQ(2, run("validate").code);
    EXPECT_EQ(2, run("frobnicate x").code);
    EXPECT_EQ(2, run("install --nope x").code);
}

TEST_F(InstallcliTest, InstallRunsOnTheDefaultMachineAndLogs) {
    std::string script = package("[Version]\nScriptVersion=14.0.12.0\n[Install]\nTools=1\n");
    Result installed = run("install " + script);
    EXPECT_EQ(0, installed.code) << installed.output;
    EXPECT_NE(std::string::npos, installed.output.find("Made the default machine"));
    EXPECT_NE(std::string::npos, installed.output.find("Install finished."));
    fs::path log = root / "home/installcli/machine/drive_c/Users/User/AppData/Local/Temp/e2e.log";
    ASSERT_TRUE(fs::exists(log)) << installed.output;
    std::ifstream text(log);
    std::string content((std::istreambuf_iterator<char>(text)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, content.find("| Installation Engine"));
    EXPECT_NE(std::string::npos, installed.output.find("e2e.log"));
}

TEST_F(InstallcliTest, ARefusedScriptGivesExitCodeOneAndTheWordsInTheLog) {
    std::string dir = machine("win7");
    std::string script = package("[Install]\n");
    fs::path log = root / "run.log";
    Result refused = run("install --machine " + dir + " --log " + log.string() + " " + script);
    EXPECT_EQ(1, refused.code) << refused.output;
    std::ifstream text(log);
    std::string content((std::istreambuf_iterator<char>(text)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos,
              content.find("Engine::Initialize: Script file is invalid, File = Z:"));
}

TEST_F(InstallcliTest, AMissingMachineIsReportedWithoutACrash) {
    std::string script = package("[Install]\nTools=1\n");
    Result result = run("install --machine " + (root / "absent").string() + " " + script);
    EXPECT_EQ(1, result.code) << result.output;
    EXPECT_NE(std::string::npos, result.output.find("the folder does not exist")) << result.output;
}

TEST_F(InstallcliTest, TheDebugLogFollowsTheSettingsInTheMachinesRegistry) {
    std::string dir = machine("xp");
    std::string script = package("[Version]\nScriptVersion=14.0.12.0\n[Install]\nTools=1\n");
    auto runWith = [&](const std::string& settings) {
        std::ofstream(dir + "/registry.reg", std::ios::app)
                << "\n[HKEY_LOCAL_MACHINE\\Software\\Tovar]\n"
                << settings;
        fs::path log = root / "settings.log";
        fs::remove(log);
        Result installed =
                run("install --machine " + dir + " --log " + log.string() + " " + script);
        EXPECT_EQ(0, installed.code) << installed.output;
        std::ifstream text(log);
        return std::string((std::istreambuf_iterator<char>(text)),
                           std::istreambuf_iterator<char>());
    };
    std::string scoped =
            runWith("\"Log\"=dword:40200101\n\"ExcludeTidPid\"=dword:00000001\n"
                    "\"ExcludeTime\"=dword:00000001\n\"ExcludeComponent\"=dword:00000001\n");
    EXPECT_EQ(0u, scoped.find("<+Engine::Initialize+>\r\n")) << scoped;
    EXPECT_NE(std::string::npos, scoped.find("<-Engine::Install-> TickSpent: ")) << scoped;
    EXPECT_NE(std::string::npos, scoped.find("| Current Tovar Log Value: 0X40200101"));
    EXPECT_EQ(std::string::npos, scoped.find(" P#"));
    std::string quiet = runWith("\"Log\"=dword:00000000\n\"ExcludeTidPid\"=dword:00000000\n");
    EXPECT_EQ(std::string::npos, quiet.find("<+Engine::Initialize+>")) << quiet;
    EXPECT_NE(std::string::npos, quiet.find("| Finished Installation Engine")) << quiet;
}

TEST_F(InstallcliTest, RegistryKeysAreShownAsRegQueryShowsThem) {
    std::string dir = machine("win7-x64");
    Result shown =
            run("machine reg " + dir + " 'HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion'");
    EXPECT_EQ(0, shown.code) << shown.output;
    EXPECT_NE(std::string::npos,
              shown.output.find("    ProgramFilesDir    REG_SZ    C:\\Program Files\n"));
    EXPECT_NE(std::string::npos,
              shown.output.find(
                      "HKEY_LOCAL_"
                      "MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\n"));
    EXPECT_EQ(1, run("machine reg " + dir + " 'HKLM\\Nothing\\Here'").code);
}

TEST_F(InstallcliTest, NothingLandsOnTheHostUnlessItsPathNamesZ) {
    std::string dir = machine("xp");
    package("[Version]\nScriptVersion=14.0.12.0\n[Install]\nTools=1\n");
    std::ofstream(root / "pkg" / "payload.dll") << "payload";
    std::string payload = "Z:" + (root / "pkg" / "payload.dll").string();
    std::ofstream(root / "pkg" / "Config" / "Tools.cif")
            << "[Tools]\nVersion=1.0\n[Tools_Actions]\n"
            << "File,COPY," << payload << ",$NOT_DEFINED$\\undefined.dll\n"
            << "File,COPY," << payload << ",bare.dll\n";
    fs::path hostFolder = root / "where-the-user-is";
    fs::create_directories(hostFolder);
    fs::path saved = fs::current_path();
    fs::current_path(hostFolder);
    // The script named with forward slashes, as Windows accepts it.
    std::string script = "Z:" + (root / "pkg" / "setup.isf").string();
    Result installed = run("install --machine " + dir + " --log run.log " + script);
    fs::current_path(saved);
    EXPECT_EQ(0, installed.code) << installed.output;
    // The log named on the command line lands where it was named; nothing else does.
    EXPECT_TRUE(fs::exists(hostFolder / "run.log")) << installed.output;
    EXPECT_NE(std::string::npos, installed.output.find("Debug log: Z:")) << installed.output;
    for (const auto& entry : fs::recursive_directory_iterator(hostFolder)) {
        EXPECT_EQ("run.log", entry.path().filename().string()) << entry.path();
    }
    EXPECT_TRUE(fs::exists(fs::path(dir) / "drive_c" / "bare.dll")) << installed.output;
}

TEST_F(InstallcliTest, ZConfinedToAFolderNamesPathsUnderIt) {
    std::string dir = machine("win7");
    std::string script = package("[Version]\nScriptVersion=14.0.12.0\n[Install]\nTools=1\n");
    std::ofstream(dir + "/machine.ini", std::ios::app) << "\n[Drives]\nZ=" << root.string() << "\n";
    Result installed =
            run("install --machine " + dir + " --log " + (root / "in.log").string() + " " + script);
    EXPECT_EQ(0, installed.code) << installed.output;
    EXPECT_TRUE(fs::exists(root / "in.log"));
    EXPECT_NE(std::string::npos, installed.output.find("Debug log: Z:\\in.log\n"))
            << installed.output;
    fs::path outside = fs::temp_directory_path() / ("outside-" + std::to_string(::getpid()));
    Result refused = run("install --machine " + dir + " --log " + (outside / "x.log").string() +
                         " " + script);
    EXPECT_EQ(2, refused.code) << refused.output;
    EXPECT_NE(std::string::npos, refused.output.find("outside every drive")) << refused.output;
    EXPECT_FALSE(fs::exists(outside));
}

TEST_F(InstallcliTest, ALogThatWasNotWrittenIsNotNamed) {
    std::string dir = machine("xp");
    Result failed = run("install --machine " + dir + " 'Z:/nowhere/at/all/setup.isf'");
    EXPECT_EQ(1, failed.code) << failed.output;
    // The engine logs why it stopped; the log named is the one written.
    auto at = failed.output.find("Debug log: C:\\");
    ASSERT_NE(std::string::npos, at) << failed.output;
    std::string named = failed.output.substr(at + 14, failed.output.find('\n', at) - at - 14);
    std::replace(named.begin(), named.end(), '\\', '/');
    EXPECT_NE(std::string::npos,
              e2e::ReadHostFile(fs::path(dir) / "drive_c" / named).find("Engine::Initialize"))
            << named;
    // With no log at all, none is named.
    fs::remove_all(fs::path(dir) / "drive_c" / named);
    Result noLog = run("install --machine " + dir + " --log 'C:\\absent folder\\x.log' x.isf");
    EXPECT_EQ(std::string::npos, noLog.output.find("Debug log:")) << noLog.output;
    EXPECT_NE(std::string::npos, noLog.output.find("No debug log was written.")) << noLog.output;
}

TEST_F(InstallcliTest, APipeGivenAsTheScriptIsRefusedAtOnce) {
    std::string dir = machine("xp");
    fs::path pipe = root / "pipe.isf";
    ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0644));
    auto start = std::chrono::steady_clock::now();
    Result refused = run("install --machine " + dir + " " + pipe.string());
    EXPECT_EQ(1, refused.code) << refused.output;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(InstallcliTest, ServicesAreListedWithTheirStateAndDependencies) {
    Result shown = run("machine services " + machine("win7-x64"));
    EXPECT_EQ(0, shown.code) << shown.output;
    EXPECT_NE(std::string::npos, shown.output.find("Spooler\n  display name  Print Spooler\n"
                                                   "  state         running\n"))
            << shown.output;
    EXPECT_NE(std::string::npos, shown.output.find("  depends on    RPCSS, http\n"));
    Result old = run("machine services " + machine("win98"));
    EXPECT_EQ(0, old.code);
    EXPECT_NE(std::string::npos, old.output.find("has no service control manager"));
}

TEST_F(InstallcliTest, ModelsAndOneModelThroughTheExports) {
    std::string dir = machine("xp");
    std::string script = package("[Install]\nTools=1\n");
    std::ofstream(root / "pkg" / "laser.inf")
            << "[Version]\r\nQM_DRV_OS=2000\r\n[Manufacturer]\r\nValmora=Models\r\n"
               "[Models]\r\n\"Laser 5 (PS)\"=PS\r\n[PS]\r\nQM_DRV_INFO=DATA\r\n"
               "[DATA]\r\nQM_DRV_TYPE=PS\r\nQM_DRV_NETSUPPORT=1\r\n";
    Result models = run("models --machine " + dir + " " + script);
    EXPECT_EQ(0, models.code) << models.output;
    EXPECT_NE(std::string::npos, models.output.find("Laser 5\n")) << models.output;
    Result one = run("model --machine " + dir + " " + script + " 'Laser 5'");
    EXPECT_EQ(0, one.code) << one.output;
    EXPECT_NE(std::string::npos, one.output.find("Streams:       PS")) << one.output;
    EXPECT_NE(std::string::npos, one.output.find("Network level: 1")) << one.output;
    EXPECT_EQ(1, run("model --machine " + dir + " " + script + " Nothing").code);
    EXPECT_EQ(2, run("model " + script).code);
}

} // namespace
