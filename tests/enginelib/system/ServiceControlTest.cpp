#include "os/Time.h"
#include "sim/IniText.h"
#include "sim/SimMachine.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"
#include "system/ServiceControl.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

// Sets how long a service's start takes and which wait hint it reports.
void SetTiming(const TestMachine& machine, const std::string& service, unsigned startTime,
               unsigned waitHint) {
    sim::SimMachine::Release();
    sim::IniText services;
    std::string why;
    ASSERT_TRUE(services.Load(machine.HostDir() + "/services.ini", why)) << why;
    services.Set(service, "StartTime", std::to_string(startTime));
    services.Set(service, "WaitHint", std::to_string(waitHint));
    ASSERT_TRUE(services.Save(machine.HostDir() + "/services.ini", why)) << why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
}

// Milliseconds of the machine's clock that a start of `service` waits.
std::uint32_t TimedStart(const char* service, bool& started) {
    ServiceControl control("", service, ServiceControl::kControlAccess);
    std::uint32_t before = os::GetTickCount();
    started = control.Start();
    return os::GetTickCount() - before;
}

struct PauseCase {
    unsigned waitHint;
    unsigned startTime;
    std::uint32_t waited; // whole pauses of hint / 10, kept within 1 to 10 seconds
};

class ServiceWait : public ::testing::TestWithParam<PauseCase> {};

TEST_P(ServiceWait, ThePauseFollowsTheWaitHint) {
    TestMachine machine("xp");
    SetTiming(machine, "TapiSrv", GetParam().startTime, GetParam().waitHint);
    bool started = false;
    EXPECT_EQ(GetParam().waited, TimedStart("TapiSrv", started));
    EXPECT_TRUE(started);
}

INSTANTIATE_TEST_SUITE_P(Hints, ServiceWait,
                         ::testing::Values(PauseCase{60000, 12000, 12000},
                                           PauseCase{500, 2500, 3000},
                                           PauseCase{200000, 25000, 30000}));

TEST(ServiceControlTest, ACheckPointThatNeverMovesEndsTheWait) {
    TestMachine machine("xp");
    std::ofstream(machine.HostDir() + "/faults.ini") << "[Services]\nTapiSrv=hang\n";
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    bool started = true;
    // With the clock exact, the first pause has spent no more than itself; the second has.
    EXPECT_EQ(2000u, TimedStart("TapiSrv", started));
    EXPECT_FALSE(started);
}

TEST(ServiceControlTest, StoppingWithDependentsBringsThemBackOnStart) {
    TestMachine machine("xp");
    {
        ServiceControl fax("", "Fax", ServiceControl::kControlAccess);
        ASSERT_TRUE(fax.Start());
    }
    // Listing the dependents takes a right beyond the control access.
    ServiceControl spooler("", "Spooler", os::svc::AllAccess);
    ASSERT_TRUE(spooler.Stop(true));
    ServiceControl fax("", "Fax", ServiceControl::kControlAccess);
    EXPECT_FALSE(fax.IsRunning());
    EXPECT_FALSE(spooler.IsRunning());
    ASSERT_TRUE(spooler.Start());
    EXPECT_TRUE(fax.IsRunning());
}

TEST(ServiceControlTest, WithoutDependentsAStopIsRefused) {
    TestMachine machine("xp");
    LogCapture log(machine.Path("engine.log"));
    ServiceControl fax("", "Fax", ServiceControl::kControlAccess);
    ASSERT_TRUE(fax.Start());
    ServiceControl spooler("", "Spooler", ServiceControl::kControlAccess);
    EXPECT_FALSE(spooler.Stop(false));
    EXPECT_TRUE(log.Contains("Failed to stop service Spooler. Returned error code 1051"));
    EXPECT_TRUE(spooler.IsRunning());
}

TEST(ServiceControlTest, CreateDescribeAndDeleteARunningService) {
    TestMachine machine("win7-x64");
    LogCapture log(machine.Path("engine.log"));
    ServiceControl absent("", "PrinterInstall", 0xF01FF);
    EXPECT_FALSE(absent.Exists());
    EXPECT_TRUE(log.Contains("Service PrinterInstall does not exist"));
    ASSERT_TRUE(absent.Create("Printer install", "C:\\Windows\\RemoteService.exe", 0xF01FF, 0x110,
                              2, 1, ""));
    EXPECT_TRUE(absent.SetDescription("Installs printers sent from another computer."));
    EXPECT_FALSE(absent.Create("Printer install", "C:\\x.exe", 0xF01FF, 0x10, 2, 1, ""));
    EXPECT_TRUE(log.Contains("tried to create a service that already exists!"));
    ASSERT_TRUE(absent.Start());
    EXPECT_TRUE(absent.Delete());
    EXPECT_TRUE(log.Contains("this service is running, first we will stop it."));
    ServiceControl gone("", "PrinterInstall", ServiceControl::kControlAccess);
    EXPECT_FALSE(gone.Exists());
}

TEST(ServiceControlTest, Windows9xLogsTheManagerItLacks) {
    TestMachine machine("win98");
    LogCapture log(machine.Path("engine.log"));
    ServiceControl spooler("", "Spooler", ServiceControl::kControlAccess);
    EXPECT_FALSE(spooler.Exists());
    EXPECT_FALSE(spooler.IsRunning());
    EXPECT_TRUE(log.Contains("OpenSCManager failed with code 120"));
}

// The waits of a run move the machine's clock and nothing else does, so a run writes the same
// log, scope times included, however busy the host is.
TEST(ServiceControlTest, ARunLogsTheSameTimesOnEveryHost) {
    std::string logs[2];
    for (std::string& text : logs) {
        TestMachine machine("xp");
        LogCapture log(machine.Path("engine.log"));
        ServiceControl fax("", "Fax", ServiceControl::kControlAccess);
        ASSERT_TRUE(fax.Start());
        text = log.Text();
    }
    EXPECT_EQ(logs[0], logs[1]);
    // Two pauses of a second each until the fax service runs; the start's own scope adds one.
    EXPECT_NE(std::string::npos, logs[0].find("TickSpent: 2001")) << logs[0];
}

} // namespace
