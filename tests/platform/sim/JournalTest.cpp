#include "os/Messages.h"
#include "support/TestMachine.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

TEST(Journal, BroadcastsLeaveALine) {
    TestMachine machine;
    ASSERT_EQ(os::error::Success, os::SendMessageTimeout(os::HwndBroadcast, os::wm::SettingChange, 0, 0,
                                                         os::smto::Normal, 500));
    std::ifstream journal(machine.HostDir() + "/journal.log");
    std::string line;
    ASSERT_TRUE(std::getline(journal, line));
    EXPECT_NE(std::string::npos,
              line.find("\tbroadcast\tWM_SETTINGCHANGE to all top-level windows wParam=0 lParam=0 flags=0x0 timeout=500"))
            << line;
}

} // namespace
