// Processes that share one simulated machine: each one's changes of the state files and of the
// uninstall log survive the other's, the machine's lock excludes the others, and a process
// killed while it writes leaves whole files behind.
#include "os/Machine.h"
#include "os/ProcessStatus.h"
#include "os/RegistryApi.h"
#include "script/IniFile.h"
#include "sim/IniStateFile.h"
#include "sim/MachineLock.h"
#include "sim/RegistryStore.h"
#include "sim/SpoolerState.h"
#include "support/TestMachine.h"
#include "uninstall/UninstallLog.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string Name(const char* what, int who, int round, int call = -1) {
    return std::string(what) + std::to_string(who) + "R" + std::to_string(round) +
           (call < 0 ? "" : "C" + std::to_string(call));
}

// One export call's worth of work: a value of this process in a key that both write.
void WriteValue(const std::string& name) {
    std::string why;
    if (!os::PlatformReady(why)) {
        std::_Exit(3);
    }
    os::HKey key = 0;
    if (os::RegCreateKeyEx(os::hkey::LocalMachine, "SOFTWARE\\Shared\\Common",
                           os::regaccess::AllAccess, "", key, nullptr) != os::error::Success ||
        os::RegSetValueEx(key, name, os::regtype::String, {'x', 0}) != os::error::Success) {
        std::_Exit(4);
    }
    os::RegCloseKey(key);
    os::EndOfCall();
}

// A run's uninstall log: read, a component of the product with a file, a shared component,
// committed.
void RecordInstall(int who, int round) {
    std::string why;
    if (!os::PlatformReady(why)) {
        std::_Exit(3);
    }
    UninstallLog log(UninstallLog::StartEmpty);
    log.SetProduct("P" + std::to_string(who));
    log.SetManufacturer("Maker");
    log.ReadAllRelevant();
    log.AddComponent("Comp", "Install", false);
    log.AddItem(1, "Comp", "C:\\" + Name("F", who, round) + ".dll");
    log.AddComponent("Common", "Install", true);
    if (!log.Commit()) {
        std::_Exit(5);
    }
    os::EndOfCall();
}

pid_t Spawn(int who, int round) {
    pid_t child = ::fork();
    if (child == 0) {
        for (int call = 0; call < 3; ++call) {
            WriteValue(Name("V", who, round, call));
        }
        RecordInstall(who, round);
        std::_Exit(0);
    }
    return child;
}

// The machine of the test, named in the environment so that each export call of a child
// process finds it again.
class SharedMachine : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("ENGINE_MACHINE", machine.HostDir().c_str(), 1); }
    void TearDown() override { ::unsetenv("ENGINE_MACHINE"); }

    TestMachine machine;
};

int ExitCode(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(SharedMachine, TwoProcessesAtOnceLoseNothingOfEachOther) {
    // Fifty pairs of whole installs run in the host tests (ConcurrentInstallTest).
    constexpr int kRounds = 20;
    for (int round = 0; round < kRounds; ++round) {
        pid_t first = Spawn(0, round);
        pid_t second = Spawn(1, round);
        ASSERT_EQ(0, ExitCode(first)) << "round " << round;
        ASSERT_EQ(0, ExitCode(second)) << "round " << round;
    }

    std::string why;
    ASSERT_TRUE(os::PlatformReady(why)) << why;
    os::HKey key = 0;
    ASSERT_EQ(0u, os::RegOpenKeyEx(os::hkey::LocalMachine, "SOFTWARE\\Shared\\Common",
                                   os::regaccess::Read, key));
    IniFile log;
    ASSERT_TRUE(log.Read(UninstallLog::GetLogPath()));
    int missing = 0;
    for (int round = 0; round < kRounds; ++round) {
        for (int who = 0; who < 2; ++who) {
            for (int call = 0; call < 3; ++call) {
                std::uint32_t type = 0;
                std::vector<std::uint8_t> data;
                if (os::RegQueryValueEx(key, Name("V", who, round, call), type, data) != 0) {
                    ADD_FAILURE() << "value lost: " << Name("V", who, round, call);
                    ++missing;
                }
            }
            std::string section = "Comp_Files,P" + std::to_string(who);
            if (log.GetValue(section, "C:\\" + Name("F", who, round) + ".dll") != "1") {
                ADD_FAILURE() << "record lost: " << Name("F", who, round);
                ++missing;
            }
        }
    }
    os::RegCloseKey(key);
    EXPECT_EQ(0, missing);
    EXPECT_EQ("1", log.GetValue("Install", "Comp,P0"));
    EXPECT_EQ("1", log.GetValue("Install", "Comp,P1"));
    EXPECT_EQ("1", log.GetValue("Install", "Common,Maker"));
    // Both products hold the shared component: the list merges name by name.
    std::string holders = log.GetValue("Common_Special,Maker", "InstalledBy");
    EXPECT_TRUE(holders == "P0,P1" || holders == "P1,P0") << holders;
}

TEST_F(SharedMachine, AnIniStateFileMergesSectionBySection) {
    using Spooler = sim::IniStateFile<sim::SpoolerState>;
    Spooler mine("spooler.ini", sim::SpoolerState::kHeader);
    Spooler theirs("spooler.ini", sim::SpoolerState::kHeader);
    std::string why;
    ASSERT_TRUE(mine.Load(machine.HostDir(), why)) << why;
    ASSERT_TRUE(theirs.Load(machine.HostDir(), why)) << why;
    ASSERT_FALSE(mine.Get().ports.empty());
    std::string dropped = mine.Get().ports.front().name;

    auto printer = [](const std::string& name) {
        sim::SpoolPrinter made;
        made.name = name;
        made.port = "LPT1:";
        made.driver = "Some Driver";
        return made;
    };
    theirs.Get().printers.push_back(printer("Theirs"));
    theirs.Changed();
    ASSERT_TRUE(theirs.Commit(why)) << why;
    mine.Get().printers.push_back(printer("Mine"));
    mine.Get().ports.erase(mine.Get().ports.begin());
    mine.Changed();
    ASSERT_TRUE(mine.Commit(why)) << why;

    // The committing process now sees the other's printer too, and so does a fresh reader.
    Spooler reader("spooler.ini", sim::SpoolerState::kHeader);
    ASSERT_TRUE(reader.Load(machine.HostDir(), why)) << why;
    for (const sim::SpoolerState* state : {&mine.Get(), &reader.Get()}) {
        std::vector<std::string> printers;
        for (const sim::SpoolPrinter& printer : state->printers) {
            printers.push_back(printer.name);
        }
        EXPECT_NE(printers.end(), std::find(printers.begin(), printers.end(), "Mine"));
        EXPECT_NE(printers.end(), std::find(printers.begin(), printers.end(), "Theirs"));
        for (const sim::SpoolPort& port : state->ports) {
            EXPECT_NE(dropped, port.name);
        }
    }
    std::ifstream file(machine.HostDir() + "/spooler.ini");
    std::string first;
    std::getline(file, first);
    EXPECT_EQ("; The print spooler of this machine: one section per monitor, port, print", first);
}

TEST_F(SharedMachine, TheMachineLockExcludesOtherProcessesUntilReleased) {
    std::string lockFile = machine.HostDir() + "/" + sim::MachineLock::kFileName;
    auto tryFromAnotherProcess = [&] {
        pid_t child = ::fork();
        if (child == 0) {
            int fd = ::open(lockFile.c_str(), O_RDWR | O_CREAT, 0644);
            std::_Exit(::flock(fd, LOCK_EX | LOCK_NB) == 0 ? 0 : (errno == EWOULDBLOCK ? 1 : 2));
        }
        return ExitCode(child);
    };
    {
        sim::MachineLock lock(machine.HostDir());
        ASSERT_TRUE(lock.Held());
        {
            sim::MachineLock nested(machine.HostDir());
            EXPECT_TRUE(nested.Held());
        }
        EXPECT_EQ(1, tryFromAnotherProcess());
    }
    EXPECT_EQ(0, tryFromAnotherProcess());
}

TEST_F(SharedMachine, AProcessKilledWhileItCommitsLeavesTheRegistryWhole) {
    for (int kill = 0; kill < 10; ++kill) {
        pid_t child = ::fork();
        if (child == 0) {
            for (int call = 0;; ++call) {
                WriteValue(Name("K", kill, 0, call));
            }
        }
        ::usleep(static_cast<useconds_t>(2000 + kill * 1500));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself: " << status;
        std::ifstream in(machine.HostDir() + "/registry.reg", std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        sim::RegistryStore store;
        std::string error;
        ASSERT_TRUE(store.Parse(text.str(), "HKEY_USERS\\.DEFAULT", error))
                << "after kill " << kill << ": " << error;
        EXPECT_NE(nullptr, store.Find("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft"));
    }
    // The writes did land, and what a killed writer left half-made is cleared away when the
    // machine is read again.
    std::string why;
    ASSERT_TRUE(os::PlatformReady(why)) << why;
    os::HKey key = 0;
    EXPECT_EQ(0u, os::RegOpenKeyEx(os::hkey::LocalMachine, "SOFTWARE\\Shared\\Common",
                                   os::regaccess::Read, key));
    os::RegCloseKey(key);
    for (const auto& entry : std::filesystem::directory_iterator(machine.HostDir())) {
        EXPECT_EQ(std::string::npos, entry.path().filename().string().find(".tmp"))
                << entry.path();
    }
}

} // namespace
