#include "foundation/time/CmDate.h"

#include "foundation/Cast.h"
#include "foundation/text/String.h"
#include "foundation/time/LocaleTime.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"
#include "platform/Clock.h"

#include <iterator>
#include <limits>

namespace qorl {

QORL_REGISTER(CmDate, "CmDate", CmObject, 0)

const CmDate CmDate::epochDate{2415386u};

namespace {

constexpr const char* weekdayNames[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                        "Friday", "Saturday", "Sunday"};
constexpr const char* monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                      "July",    "August",   "September", "October", "November", "December"};
constexpr int32_t daysOfMonths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isSameName(const char* a, const char* b) {
    for (; *a && upper(*a) == upper(*b); ++a, ++b) {}
    return *a == *b;
}

/// The number of a name, from 1; 0 when there is none.
template <size_t count>
int32_t numberOf(const char* name, const char* const (&names)[count]) {
    for (size_t i = 0; name && i < count; ++i)
        if (isSameName(name, names[i]))
            return static_cast<int32_t>(i) + 1;
    return 0;
}

/// Of a day that exists. In unsigned arithmetic, as are the limits of what can be told apart.
uint32_t dayNumber(uint32_t day, uint32_t month, uint32_t year) {
    const uint32_t m = month < 3 ? month + 9 : month - 3;
    if (month < 3)
        --year;
    const uint32_t c = year / 100;
    const uint32_t y = year - 100 * c;
    return 146097 * c / 4 + 1721119 + (153 * m + 2) / 5 + day + 1461 * y / 4;
}

constexpr uint32_t firstKnownDay = 1721120; // 1 March 0

struct Parts {
    int32_t day = 0;
    int32_t month = 0;
    int32_t year = 0;
};

Parts partsOf(uint32_t julian) {
    if (julian < firstKnownDay)
        return {};
    const uint64_t a = uint64_t{4} * julian - 6884477;
    const uint64_t c = a / 146097;
    const uint64_t d = (a - 146097 * c) & ~uint64_t{3};
    const uint64_t y = (d + 3) / 1461;
    const uint64_t e = (d + 7 - 1461 * y) / 4;
    const uint64_t f = 5 * e - 3;
    const uint64_t m = f / 153;
    Parts parts;
    parts.day = static_cast<int32_t>((f - 153 * m + 5) / 5);
    parts.month = static_cast<int32_t>(m < 10 ? m + 3 : m - 9);
    parts.year = static_cast<int32_t>(100 * c + y + (m < 10 ? 0 : 1));
    return parts;
}

uint32_t plusCentury(int32_t year) {
    return static_cast<uint32_t>(year >= 0 && year <= 99 ? year + 1900 : year);
}

bool isLeap(uint32_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

/// Of a month that exists.
int32_t daysOf(int32_t month, bool isLeapYear) {
    return daysOfMonths[month - 1] + (month == 2 && isLeapYear ? 1 : 0);
}

int32_t dayOfYear(int32_t day, int32_t month, bool isLeapYear) {
    for (int32_t earlier = 1; earlier < month; ++earlier)
        day += daysOf(earlier, isLeapYear);
    return day;
}

} // namespace

CmDate::CmDate(int32_t dayOfYear, int32_t year) {
    if (year == 0) {
        julian_ = epochDate.julian_ + static_cast<uint32_t>(dayOfYear);
        return;
    }
    if (year < 0)
        return;
    const auto full = static_cast<uint32_t>(year <= 100 ? year + 1900 : year);
    julian_ = dayNumber(31, 12, full - 1) + static_cast<uint32_t>(dayOfYear);
}

CmDate::CmDate(int32_t day, const char* monthName, int32_t year)
    : julian_(toJulian(day, numberOf(monthName, monthNames), year)) {}

CmDate::CmDate(int32_t day, int32_t month, int32_t year) : julian_(toJulian(day, month, year)) {}

CmDate CmDate::today() {
    const auto dateOf = [](int64_t wallClock) {
        const platform::CalendarTime local = platform::toLocalTime(wallClock);
        return CmDate(local.day, local.month, local.year);
    };
    const CmDate date = dateOf(platform::getWallClockMilliseconds());
    return date.isValid() ? date : dateOf(1000);
}

bool CmDate::isLeapYear(int32_t year) {
    return year >= 0 && isLeap(plusCentury(year));
}

int32_t CmDate::getDaysInMonth(int32_t month, int32_t year) {
    if (month < 1 || month > 12)
        return 0;
    return daysOf(month, isLeapYear(year));
}

uint32_t CmDate::toJulian(int32_t day, int32_t month, int32_t year) {
    if (year < 0 || day < 1 || day > getDaysInMonth(month, year))
        return 0;
    return dayNumber(static_cast<uint32_t>(day), static_cast<uint32_t>(month), plusCentury(year));
}

int32_t CmDate::getDay() const {
    return partsOf(julian_).day;
}
int32_t CmDate::getMonth() const {
    return partsOf(julian_).month;
}
int32_t CmDate::getYear() const {
    return partsOf(julian_).year;
}

bool CmDate::moveWithinYear(int32_t day, int32_t month) {
    if (getDayOfYear() == 0 || day < 1 || day > getDaysInMonth(month))
        return false;
    // Not by way of the year's number: one below 100 would be taken for one of the 20th century.
    const int64_t julian = int64_t{julian_} - getDayOfYear() + dayOfYear(day, month, isLeapYear());
    if (julian < firstKnownDay || julian > std::numeric_limits<uint32_t>::max())
        return false;
    julian_ = static_cast<uint32_t>(julian);
    return true;
}

bool CmDate::setDay(int32_t day) {
    return moveWithinYear(day, getMonth());
}

bool CmDate::setMonth(int32_t month) {
    return moveWithinYear(getDay(), month);
}

bool CmDate::setYear(int32_t year) {
    const Parts parts = partsOf(julian_);
    const uint32_t julian = toJulian(parts.day, parts.month, year);
    if (julian == 0)
        return false;
    julian_ = julian;
    return true;
}

int32_t CmDate::getDayOfYear() const {
    const Parts parts = partsOf(julian_);
    return dayOfYear(parts.day, parts.month, isLeap(static_cast<uint32_t>(parts.year)));
}

const char* CmDate::getWeekdayName() const {
    return isValid() ? weekdayNames[getWeekday() - 1] : "";
}

const char* CmDate::getMonthName() const {
    const int32_t month = getMonth();
    return month > 0 ? monthNames[month - 1] : "";
}

bool CmDate::isLeapYear() const {
    const Parts parts = partsOf(julian_);
    return parts.day > 0 && isLeap(static_cast<uint32_t>(parts.year));
}

int32_t CmDate::getDaysInMonth(int32_t month) const {
    if (month < 1 || month > 12)
        return 0;
    return daysOf(month, isLeapYear());
}

CmDate CmDate::previous(int32_t weekday) const {
    if (weekday < monday || weekday > sunday)
        return {};
    const int32_t back = (getWeekday() - weekday + 6) % 7 + 1;
    return julian_ > static_cast<uint32_t>(back) ? CmDate(julian_ - static_cast<uint32_t>(back)) : CmDate();
}

CmDate CmDate::previous(const char* weekdayName) const {
    return previous(numberOf(weekdayName, weekdayNames));
}

bool CmDate::toText(String& out, int32_t style) const {
    out.clear();
    return isValid() && locale::printDate(julian_, style, out);
}

bool CmDate::fromText(const ConstString& text) {
    locale::Moment moment;
    if (!locale::parseDate(text, moment))
        return false;
    julian_ = moment.julian;
    return true;
}

bool CmDate::isEqual(const CmObject* other) const {
    const auto* date = cast<CmDate>(other);
    return date ? julian_ == date->julian_ : CmObject::isEqual(other);
}

int32_t CmDate::compare(const CmObject* other) const {
    const auto* date = cast<CmDate>(other);
    if (!date)
        return CmObject::compare(other);
    return julian_ < date->julian_ ? -1 : julian_ > date->julian_;
}

bool CmDate::readFrom(FObjectArchive* archive) {
    uint32_t julian = 0;
    if (!archive->stream().readUInt32(julian))
        return false;
    julian_ = julian;
    return true;
}

bool CmDate::writeTo(FObjectArchive* archive) {
    return archive->stream().writeUInt32(julian_);
}

bool CmDate::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("Julian", julian_);
    return true;
}

bool CmDate::restoreAttributes(FAttributes* attributes) {
    julian_ = static_cast<uint32_t>(attributes->getInteger("Julian"));
    return true;
}

} // namespace qorl
