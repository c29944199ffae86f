#include "core/IpcTransfer.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {

TEST(IpcTransfer, StartsEmptyAndOnlyGrows) {
    IpcTransfer transfer;
    std::uint32_t units = 99;
    transfer.GetTotalUnits(&units);
    EXPECT_EQ(0u, units);
    char title[IpcTransfer::kTitleSize];
    std::memset(title, 'x', sizeof title);
    transfer.GetCurrentTitle(title);
    EXPECT_STREQ("", title);
    transfer.AddCurrentUnits(5);
    transfer.AddCurrentUnits(0);
    transfer.AddCurrentUnits(7);
    transfer.GetCurrentUnits(&units);
    EXPECT_EQ(12u, units);
    transfer.SetTotalUnits(10);
    transfer.SetTotalUnits(20);
    transfer.GetTotalUnits(&units);
    EXPECT_EQ(20u, units);
}

TEST(IpcTransfer, TitlesAreDataAndNeverOverrunTheHostsBuffer) {
    IpcTransfer transfer;
    transfer.SetCurrentTitle("100% done %s %n");
    char title[IpcTransfer::kTitleSize];
    transfer.GetCurrentTitle(title);
    EXPECT_STREQ("100% done %s %n", title);
    transfer.SetCurrentTitle(CStdStr(5000, 'a'));
    char guarded[IpcTransfer::kTitleSize + 16];
    std::memset(guarded, '#', sizeof guarded);
    transfer.GetCurrentTitle(guarded);
    EXPECT_EQ(IpcTransfer::kTitleSize - 1, std::strlen(guarded));
    EXPECT_EQ('#', guarded[IpcTransfer::kTitleSize]);
}

TEST(IpcTransfer, AHostThreadPollsWhileTheRunReports) {
    IpcTransfer transfer;
    transfer.SetTotalUnits(1000);
    std::atomic<bool> running{true};
    std::uint32_t lastSeen = 0;
    bool monotonic = true;
    std::thread host([&] {
        char title[IpcTransfer::kTitleSize];
        while (running) {
            std::uint32_t units = 0;
            transfer.GetCurrentUnits(&units);
            monotonic = monotonic && units >= lastSeen;
            lastSeen = units;
            transfer.GetCurrentTitle(title);
            monotonic = monotonic && (title[0] == '\0' || title[0] == 'S');
        }
    });
    for (int step = 0; step < 1000; ++step) {
        transfer.AddCurrentUnits(1);
        if (step % 50 == 0) {
            transfer.SetCurrentTitle(CStdStr::Formatted("Step %d", step));
        }
    }
    running = false;
    host.join();
    std::uint32_t units = 0;
    transfer.GetCurrentUnits(&units);
    EXPECT_EQ(1000u, units);
    EXPECT_TRUE(monotonic);
}

} // namespace
