#include "platform/Clock.h"

#include <ctime>
#include <initializer_list>

namespace qorl::platform {

namespace {

/// Whole seconds rounded down, so that moments before 1970 keep a positive rest.
time_t toSeconds(int64_t wallClock) {
    return static_cast<time_t>(wallClock >= 0 ? wallClock / 1000 : (wallClock - 999) / 1000);
}

CalendarTime toCalendar(const tm& parts, int64_t wallClock) {
    CalendarTime time;
    time.year = parts.tm_year + 1900;
    time.month = parts.tm_mon + 1;
    time.day = parts.tm_mday;
    time.hour = parts.tm_hour;
    time.minute = parts.tm_min;
    time.second = parts.tm_sec;
    time.millisecond = static_cast<int32_t>(wallClock - int64_t{toSeconds(wallClock)} * 1000);
    time.weekday = parts.tm_wday;
    time.minutesFromUtc = static_cast<int32_t>(parts.tm_gmtoff / 60);
    time.isDaylightSaving = parts.tm_isdst > 0;
    return time;
}

} // namespace

int64_t getMonotonicNanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

int64_t getMonotonicMilliseconds() {
    return getMonotonicNanoseconds() / 1'000'000;
}

int64_t getWallClockMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

CalendarTime toLocalTime(int64_t wallClock) {
    const time_t seconds = toSeconds(wallClock);
    tm parts = {};
    localtime_r(&seconds, &parts);
    return toCalendar(parts, wallClock);
}

CalendarTime toUtc(int64_t wallClock) {
    const time_t seconds = toSeconds(wallClock);
    tm parts = {};
    gmtime_r(&seconds, &parts);
    return toCalendar(parts, wallClock);
}

int64_t fromLocalTime(const CalendarTime& time) {
    tm parts = {};
    parts.tm_year = time.year - 1900;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    parts.tm_isdst = -1;
    return int64_t{mktime(&parts)} * 1000 + time.millisecond;
}

TimeZone getTimeZone() {
    tzset();
    const auto behindUtc = static_cast<int32_t>(timezone);
    // The `daylight` of the system is also set for a zone that gave it up long ago.
    CalendarTime month = toLocalTime(getWallClockMilliseconds());
    month.day = 15;
    bool hasDaylight = false;
    for (const int32_t number : {1, 7}) {
        month.month = number;
        hasDaylight |= toLocalTime(fromLocalTime(month)).isDaylightSaving;
    }
    return {behindUtc, hasDaylight};
}

} // namespace qorl::platform
