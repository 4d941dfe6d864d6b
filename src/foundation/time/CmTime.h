#pragma once

#include "foundation/time/CmDate.h"

namespace qorl {

/// A moment to the second, from 1901 into the year 2037. One number: the seconds since 1 January 1901 at
/// 00:00 in universal time, so that moments of different time zones compare as they came.
///
/// Local times follow the zone of this computer, read once when the library is loaded, and fixed rules of
/// daylight saving: from the first Sunday behind 30 March, until 1986 the last Sunday before 30 April, at
/// 02:00, to the last Sunday before 31 October at 01:00 of standard time. The arithmetic wraps at 32 bits.
class CmTime : public CmObject, public IClockTime {
    QORL_CLASS(CmTime, CmObject)
    QORL_CLONE(CmTime)
    QORL_RECORD(CmTime)
    QORL_FACES(CmTime, CmObject, IClockTime)

public:
    /// How far the local zone's standard time is behind universal time, in seconds, and whether the zone has
    /// daylight saving. Fixed from the load of the library on; only tests put another zone in place.
    static int32_t zoneOffset;
    static bool hasDaylight;

    CmTime() = default;
    explicit CmTime(uint32_t seconds) : seconds_(seconds) {}
    /// A local time of the first day.
    CmTime(int32_t hours, int32_t minutes, int32_t seconds);
    /// A local time of a day.
    CmTime(const CmDate& date, int32_t hours, int32_t minutes, int32_t seconds);
    /// The local hour, minute and second of `time` on another day.
    CmTime(const CmDate& date, const CmTime& time);

    /// What the clock shows here, on the first day: the date isn't in it.
    static CmTime now();

    uint32_t getSeconds() const override { return seconds_; }
    void setSeconds(uint32_t seconds) override { seconds_ = seconds; }

    /// The moment whose universal time is this one's local time.
    CmTime toLocal() const;
    int32_t getHour() const override { return toLocal().getHourUtc(); }
    int32_t getMinute() const override { return toLocal().getMinuteUtc(); }
    int32_t getSecond() const override { return toLocal().getSecondUtc(); }
    int32_t getHourUtc() const { return static_cast<int32_t>(seconds_ / 3600 % 24); }
    int32_t getMinuteUtc() const { return static_cast<int32_t>(seconds_ / 60 % 60); }
    int32_t getSecondUtc() const { return static_cast<int32_t>(seconds_ % 60); }
    /// The local day.
    CmDate getDate() const;

    bool isDaylight() const;
    static CmTime daylightStart(int32_t year);
    static CmTime daylightEnd(int32_t year);

    /// The local time of day as the language in use writes it. False, and an empty text, when memory runs
    /// out.
    bool toText(String& out, bool withSeconds = true) const;
    /// A text with a date in it gives that moment, with a date alone its first second, with a time alone a
    /// time of the first day. False, and nothing changed, for anything else and for days out of range.
    bool fromText(const ConstString& text);
    /// The form of HTTP headers (RFC 7231, 7.1.1.1), of a day and this moment's time of day in universal
    /// time: "Sun, 06 Nov 1994 08:49:37 GMT". False, and an empty text, for an invalid date.
    bool toHttpDate(const CmDate& date, String& out) const;

    /// By the moment for any other time.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override { return seconds_ % size; }
    /// The seconds in 32 bits.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// The same under "Seconds".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    friend bool operator==(const CmTime& a, const CmTime& b) { return a.seconds_ == b.seconds_; }

private:
    uint32_t seconds_ = 0;
};

} // namespace qorl
