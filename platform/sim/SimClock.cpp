#include "sim/SimClock.h"

#include "sim/IniText.h"
#include "sim/Text.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

namespace sim {

namespace {

// Local times are counted as seconds of a calendar without zones: the fields are read and
// written as if they were UTC, so that no daylight saving shift ever applies to them.
std::int64_t ToCalendarSeconds(const std::tm& fields) {
    std::tm copy = fields;
    return static_cast<std::int64_t>(::timegm(&copy));
}

std::uint64_t HostMilliseconds() {
    auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

void FromFields(const std::tm& fields, std::uint64_t milliseconds, os::SystemTime& time) {
    time.year = static_cast<std::uint16_t>(fields.tm_year + 1900);
    time.month = static_cast<std::uint16_t>(fields.tm_mon + 1);
    time.dayOfWeek = static_cast<std::uint16_t>(fields.tm_wday);
    time.day = static_cast<std::uint16_t>(fields.tm_mday);
    time.hour = static_cast<std::uint16_t>(fields.tm_hour);
    time.minute = static_cast<std::uint16_t>(fields.tm_min);
    time.second = static_cast<std::uint16_t>(fields.tm_sec);
    time.milliseconds = static_cast<std::uint16_t>(milliseconds % 1000);
}

void HostLocalTime(os::SystemTime& time) {
    auto now = std::chrono::system_clock::now();
    std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
    std::tm local{};
    ::localtime_r(&seconds, &local);
    FromFields(local, static_cast<std::uint64_t>(millis.count()), time);
}

std::int64_t HostLocalSeconds() {
    std::time_t seconds = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return ToCalendarSeconds(local);
}

} // namespace

SimClock& SimClock::Get() {
    static SimClock clock;
    return clock;
}

bool SimClock::ParseLocalTime(const std::string& text, os::SystemTime& time) {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char tail = 0;
    int read = std::sscanf(text.c_str(), "%4u-%2u-%2u %2u:%2u:%2u%c", &year, &month, &day, &hour,
                           &minute, &second, &tail);
    if (read != 6 || year < 1980 || year > 2100 || month < 1 || month > 12 || day < 1 ||
        day > 31 || hour > 23 || minute > 59 || second > 59) {
        return false;
    }
    std::tm fields{};
    fields.tm_year = static_cast<int>(year) - 1900;
    fields.tm_mon = static_cast<int>(month) - 1;
    fields.tm_mday = static_cast<int>(day);
    std::time_t seconds = ::timegm(&fields);
    std::tm normal{};
    ::gmtime_r(&seconds, &normal);
    if (normal.tm_mday != static_cast<int>(day)) {
        return false; // 31 April and the like
    }
    time.year = static_cast<std::uint16_t>(year);
    time.month = static_cast<std::uint16_t>(month);
    time.day = static_cast<std::uint16_t>(day);
    time.dayOfWeek = static_cast<std::uint16_t>(normal.tm_wday);
    time.hour = static_cast<std::uint16_t>(hour);
    time.minute = static_cast<std::uint16_t>(minute);
    time.second = static_cast<std::uint16_t>(second);
    time.milliseconds = 0;
    return true;
}

void SimClock::Configure(const IniText& machineIni) {
    std::lock_guard<std::mutex> guard(mLock);
    mSimulated = !EqualsNoCase(machineIni.GetOr("Clock", "Mode", "simulated"), "real");
    long long boot = machineIni.GetNumber("Clock", "Boot", kDefaultBoot);
    mBoot = boot < 0 ? kDefaultBoot : static_cast<std::uint32_t>(boot);
    os::SystemTime start;
    if (ParseLocalTime(machineIni.GetOr("Clock", "LocalTime", ""), start)) {
        std::tm fields{};
        fields.tm_year = start.year - 1900;
        fields.tm_mon = start.month - 1;
        fields.tm_mday = start.day;
        fields.tm_hour = start.hour;
        fields.tm_min = start.minute;
        fields.tm_sec = start.second;
        mStartSeconds = ToCalendarSeconds(fields);
        mHasStart = true;
    }
}

void SimClock::Reset() {
    std::lock_guard<std::mutex> guard(mLock);
    mSimulated = true;
    mBoot = kDefaultBoot;
    mElapsed = 0;
    mHasStart = false;
    mStartSeconds = 0;
}

bool SimClock::IsSimulated() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mSimulated;
}

std::uint64_t SimClock::Elapsed() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mElapsed;
}

std::uint32_t SimClock::TickCount() {
    std::lock_guard<std::mutex> guard(mLock);
    if (!mSimulated) {
        return static_cast<std::uint32_t>(HostMilliseconds());
    }
    // The tick count wraps after 49.7 days, as Windows' does.
    return static_cast<std::uint32_t>(mBoot + mElapsed);
}

void SimClock::startLocalTime() {
    if (!mHasStart) {
        mStartSeconds = HostLocalSeconds();
        mHasStart = true;
    }
}

void SimClock::LocalTime(os::SystemTime& time) {
    std::lock_guard<std::mutex> guard(mLock);
    if (!mSimulated) {
        HostLocalTime(time);
        return;
    }
    startLocalTime();
    std::time_t seconds = static_cast<std::time_t>(mStartSeconds + mElapsed / 1000);
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    FromFields(fields, mElapsed, time);
}

void SimClock::Sleep(std::uint32_t milliseconds) {
    bool simulated = true;
    {
        std::lock_guard<std::mutex> guard(mLock);
        simulated = mSimulated;
        if (simulated) {
            // The local time starts before the wait moves it, so that a first reading after a
            // wait is later than the process's start.
            startLocalTime();
            mElapsed += milliseconds;
        }
    }
    if (!simulated) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        return;
    }
    // A wait loop of another thread gets its turn, as it would while this one slept.
    std::this_thread::yield();
}

} // namespace sim
