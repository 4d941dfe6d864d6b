#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/ConstString.h"

#include <qorl/ICalendar.h>

namespace qorl {

/// A day of the Gregorian calendar, which it continues before its introduction. One number: the Julian day.
///
/// What names no day gives the invalid date, Julian day 0; nothing is reported. Years from 0 to 99 mean 1900
/// to 1999 wherever a date is made of day, month and year. A year that 32 bits can't hold as a day number
/// isn't told apart from a valid one. Source of the day numbers: R. Tantzen, Conversions between calendar
/// date and Julian day number, CACM 6, 1963, algorithm 199.
class CmDate : public CmObject, public ICalendarDay {
    QORL_CLASS(CmDate, CmObject)
    QORL_CLONE(CmDate)
    QORL_RECORD(CmDate)
    QORL_FACES(CmDate, CmObject, ICalendarDay)

public:
    enum Weekday : int32_t { monday = 1, tuesday, wednesday, thursday, friday, saturday, sunday };

    /// Styles of the text of a date, by the habits of the language.
    enum Style : int32_t { shortStyle, mediumStyle, longStyle, fullStyle, styles };

    /// Invalid.
    CmDate() = default;
    explicit CmDate(uint32_t julian) : julian_(julian) {}
    /// The day that lies `dayOfYear` days after the end of the year before. A year from 1 to 100 has 1900
    /// added; with year 0 the days count from 1 January 1901, which is day 0.
    CmDate(int32_t dayOfYear, int32_t year);
    /// Month by its English name in any case, such as "March".
    CmDate(int32_t day, const char* monthName, int32_t year);
    /// Months count from 1.
    CmDate(int32_t day, int32_t month, int32_t year);

    static CmDate today();
    /// The first day that a `CmTime` can tell: 1 January 1901.
    static const CmDate epochDate;

    bool isValid() const { return julian_ != 0; }
    uint32_t getJulian() const override { return julian_; }
    void setJulian(uint32_t julian) override { julian_ = julian; }

    /// All 0 for an invalid date and for days before 1 March 0.
    int32_t getDay() const override;
    int32_t getMonth() const override;
    int32_t getYear() const override;
    /// False, and nothing changed, when the month or the year has no such day. Only the year that is given
    /// has 1900 added when it is below 100, not that of the date.
    bool setDay(int32_t day);
    bool setMonth(int32_t month);
    bool setYear(int32_t year);

    /// 1 for 1 January.
    int32_t getDayOfYear() const;
    int32_t getWeekday() const override { return static_cast<int32_t>(julian_ % 7) + 1; }
    /// English, "Monday" to "Sunday" and "January" to "December"; empty for an invalid date.
    const char* getWeekdayName() const;
    const char* getMonthName() const;
    bool isLeapYear() const;
    /// Of this date's month, or of another month of its year; 0 when there is none.
    int32_t getDaysInMonth() const { return getDaysInMonth(getMonth()); }
    int32_t getDaysInMonth(int32_t month) const;

    /// The last such day of the week strictly before this date; invalid for anything but 1 to 7 or an English
    /// name in any case.
    CmDate previous(int32_t weekday) const;
    CmDate previous(const char* weekdayName) const;

    /// The date as the language in use writes it; unknown styles count as the short one. False, and an empty
    /// text, for an invalid date and when memory runs out.
    bool toText(String& out, int32_t style = shortStyle) const;
    /// Takes a text in any of these styles. False, and nothing changed, for anything else.
    bool fromText(const ConstString& text);

    static bool isLeapYear(int32_t year);
    static int32_t getDaysInMonth(int32_t month, int32_t year);
    /// 0 when there is no such day.
    static uint32_t toJulian(int32_t day, int32_t month, int32_t year);

    /// By the day for any other date.
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override { return julian_ % size; }
    /// The Julian day in 32 bits.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// The same under "Julian".
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    friend bool operator==(const CmDate& a, const CmDate& b) { return a.julian_ == b.julian_; }

private:
    bool moveWithinYear(int32_t day, int32_t month);

    uint32_t julian_ = 0;
};

} // namespace qorl
