#include "os/Time.h"
#include "sim/IniText.h"
#include "sim/SimClock.h"
#include "sim/SimMachine.h"
#include "support/TestMachine.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

// Rewrites the [Clock] section of the test machine and reads the machine anew.
void SetClock(const TestMachine& machine, const std::string& mode, const std::string& localTime) {
    sim::IniText ini;
    std::string why;
    ASSERT_TRUE(ini.Load(machine.HostDir() + "/machine.ini", why)) << why;
    ini.Set("Clock", "Mode", mode);
    if (!localTime.empty()) {
        ini.Set("Clock", "LocalTime", localTime);
    }
    ASSERT_TRUE(ini.Save(machine.HostDir() + "/machine.ini", why)) << why;
    sim::SimClock::Get().Reset();
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
}

class SimClockTest : public ::testing::Test {
protected:
    void TearDown() override { sim::SimClock::Get().Reset(); }
    TestMachine machine{"xp"};
};

TEST_F(SimClockTest, ALongWaitReturnsAtOnceAndMovesTheTicksByItsLength) {
    auto hostBefore = std::chrono::steady_clock::now();
    std::uint32_t before = os::GetTickCount();
    os::Sleep(10000);
    os::Sleep(250);
    EXPECT_EQ(10250u, os::GetTickCount() - before);
    EXPECT_LT(std::chrono::steady_clock::now() - hostBefore, std::chrono::seconds(2));
    // Without a wait the machine's time stands still, whatever the host does meanwhile.
    std::uint32_t still = os::GetTickCount();
    EXPECT_EQ(still, os::GetTickCount());
}

TEST_F(SimClockTest, AFixedStartGivesTheSameLocalTimesOnEveryHost) {
    SetClock(machine, "simulated", "2024-02-28 23:59:58");
    os::SystemTime now;
    os::GetLocalTime(now);
    EXPECT_EQ(2024, now.year);
    EXPECT_EQ(28, now.day);
    EXPECT_EQ(3, now.dayOfWeek); // a Wednesday
    os::Sleep(2500);
    os::GetLocalTime(now);
    // Leap day, half a second into its first second but one.
    EXPECT_EQ(2, now.month);
    EXPECT_EQ(29, now.day);
    EXPECT_EQ(0, now.hour);
    EXPECT_EQ(0, now.second);
    EXPECT_EQ(500, now.milliseconds);
    EXPECT_EQ(sim::SimClock::kDefaultBoot + 2500u, os::GetTickCount());
}

TEST_F(SimClockTest, ReadingTheMachineAnewNeverTurnsTheClockBack) {
    os::Sleep(5000);
    std::uint32_t before = os::GetTickCount();
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    EXPECT_EQ(before, os::GetTickCount());
}

TEST_F(SimClockTest, ARealClockWaitsForItsTime) {
    SetClock(machine, "real", "");
    EXPECT_FALSE(sim::SimClock::Get().IsSimulated());
    auto hostBefore = std::chrono::steady_clock::now();
    os::Sleep(40);
    EXPECT_GE(std::chrono::steady_clock::now() - hostBefore, std::chrono::milliseconds(35));
    EXPECT_EQ(0u, sim::SimClock::Get().Elapsed());
}

TEST(SimClockParse, OnlyRealCalendarTimesAreTaken) {
    os::SystemTime time;
    EXPECT_TRUE(sim::SimClock::ParseLocalTime("2026-11-23 10:00:00", time));
    EXPECT_EQ(1, time.dayOfWeek);
    EXPECT_FALSE(sim::SimClock::ParseLocalTime("2026-04-31 10:00:00", time));
    EXPECT_FALSE(sim::SimClock::ParseLocalTime("2026-11-23 24:00:00", time));
    EXPECT_FALSE(sim::SimClock::ParseLocalTime("2026-11-23", time));
    EXPECT_FALSE(sim::SimClock::ParseLocalTime("2026-11-23 10:00:00 extra", time));
}

} // namespace
