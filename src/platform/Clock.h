#pragma once

#include <cstdint>

namespace qorl::platform {

/// Real milliseconds since an arbitrary start; never goes back. The user-interface thread asks
/// `DesktopServices::getTicks`, which is virtual in a headless desktop.
int64_t getMonotonicMilliseconds();

/// The same clock in nanoseconds.
int64_t getMonotonicNanoseconds();

/// Milliseconds since 1970-01-01 00:00 UTC.
int64_t getWallClockMilliseconds();

/// A date and time of day as a calendar shows it.
struct CalendarTime {
    int32_t year = 1970;
    int32_t month = 1; ///< from 1
    int32_t day = 1;   ///< from 1
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t millisecond = 0;
    int32_t weekday = 4;        ///< from Sunday, 0
    int32_t minutesFromUtc = 0; ///< positive to the east
    bool isDaylightSaving = false;
};

/// `wallClock` as `getWallClockMilliseconds` gives it, in the user's time zone or in UTC.
CalendarTime toLocalTime(int64_t wallClock);
CalendarTime toUtc(int64_t wallClock);

/// The moment that the first seven fields name in the user's time zone; the others are ignored. Fields out of
/// range carry over.
int64_t fromLocalTime(const CalendarTime& time);

/// The user's time zone as a whole, whatever the date.
struct TimeZone {
    int32_t secondsBehindUtc = 0; ///< of its standard time; negative to the east
    bool hasDaylight = false;     ///< whether it has daylight saving time in this year
};
TimeZone getTimeZone();

} // namespace qorl::platform
