// The window messages group of the seam.
#include "os/Messages.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

TEST(MessagesConformance, ASettingChangeBroadcastReturns) {
    TestMachine machine;
    EXPECT_EQ(os::error::Success, os::SendMessageTimeout(os::HwndBroadcast, os::wm::SettingChange,
                                                         0, 0, os::smto::Normal, 500));
    EXPECT_EQ(os::error::Success,
              os::SendMessageTimeoutText(os::HwndBroadcast, os::wm::SettingChange, 0,
                                         "Environment", os::smto::AbortIfHung, 100));
}

} // namespace
