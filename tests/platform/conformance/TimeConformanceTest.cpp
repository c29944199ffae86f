// The time group of the seam.
#include "os/Time.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

os::SystemTime Fields(std::uint16_t year, std::uint16_t month, std::uint16_t day,
                      std::uint16_t hour = 0, std::uint16_t minute = 0, std::uint16_t second = 0) {
    os::SystemTime time;
    time.year = year;
    time.month = month;
    time.day = day;
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    return time;
}

TEST(TimeConformance, SystemTimesBecomeFileTimesAndBadFieldsAreRefused) {
    TestMachine machine;
    os::FileTime time;
    ASSERT_EQ(os::error::Success, os::SystemTimeToFileTime(Fields(1601, 1, 1), time));
    EXPECT_EQ(0u, time.ticks);
    ASSERT_EQ(os::error::Success, os::SystemTimeToFileTime(Fields(2005, 1, 2, 15, 30, 10), time));
    EXPECT_EQ(127491534100000000ULL, time.ticks);
    ASSERT_EQ(os::error::Success, os::SystemTimeToFileTime(Fields(2000, 2, 29), time));
    os::Error leap = os::SystemTimeToFileTime(Fields(2001, 2, 29), time);
    if (machine.IsSimulated()) {
        EXPECT_EQ(os::error::InvalidParameter, leap);
    } else {
        // Windows refuses the 29th of February of a common year; Wine accepts it.
        EXPECT_TRUE(leap == os::error::InvalidParameter || leap == os::error::Success) << leap;
    }
    EXPECT_EQ(os::error::InvalidParameter, os::SystemTimeToFileTime(Fields(2005, 13, 1), time));
    EXPECT_EQ(os::error::InvalidParameter, os::SystemTimeToFileTime(Fields(2005, 1, 1, 24), time));
    EXPECT_EQ(os::error::InvalidParameter, os::SystemTimeToFileTime(Fields(1600, 12, 31), time));
}

} // namespace
