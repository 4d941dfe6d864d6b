#pragma once

#include <qorl/FInterface.h>

#include <cstdint>

namespace qorl {

/// A calendar day for scripts and other modules. Threading: one thread at a time.
class ICalendarDay : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{740468F6-2012-4A13-B39A-3E5D278FF170}");

    /// Each 0 for an invalid day. Months count from 1.
    virtual int32_t getDay() const = 0;
    virtual int32_t getMonth() const = 0;
    virtual int32_t getYear() const = 0;
    /// 1 is Monday, 7 is Sunday.
    virtual int32_t getWeekday() const = 0;
    /// The Julian day number; 0 is an invalid day.
    virtual uint32_t getJulian() const = 0;
    virtual void setJulian(uint32_t julian) = 0;
};

/// A moment for scripts and other modules. Threading: one thread at a time.
class IClockTime : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{6FD36CD9-7C8C-42C8-8523-D7B33EAFF457}");

    /// In the user's time zone.
    virtual int32_t getHour() const = 0;
    virtual int32_t getMinute() const = 0;
    virtual int32_t getSecond() const = 0;
    /// Since 1 January 1901 at 00:00 in universal time.
    virtual uint32_t getSeconds() const = 0;
    virtual void setSeconds(uint32_t seconds) = 0;
};

} // namespace qorl
