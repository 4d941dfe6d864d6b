#include "foundation/time/CmTime.h"

#include "foundation/Cast.h"
#include "foundation/text/String.h"
#include "foundation/time/LocaleTime.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"
#include "platform/Clock.h"

#include <limits>

namespace qorl {

QORL_REGISTER(CmTime, "CmTime", CmObject, 0)

int32_t CmTime::zoneOffset = platform::getTimeZone().secondsBehindUtc;
bool CmTime::hasDaylight = platform::getTimeZone().hasDaylight;

namespace {

constexpr uint32_t epochJulian = 2415386;
constexpr uint32_t secondsOfDay = 86400;
constexpr uint32_t secondsOfHour = 3600;

/// The universal time of a local moment of standard time.
uint32_t standardSeconds(uint32_t julian, int32_t hours, int32_t minutes, int32_t seconds) {
    const uint32_t days = julian - epochJulian;
    return ((days * 24 + static_cast<uint32_t>(hours)) * 60 + static_cast<uint32_t>(minutes)) * 60 +
           static_cast<uint32_t>(CmTime::zoneOffset) + static_cast<uint32_t>(seconds);
}

} // namespace

CmTime::CmTime(int32_t hours, int32_t minutes, int32_t seconds)
    : seconds_(standardSeconds(epochJulian, hours, minutes, seconds)) {}

CmTime::CmTime(const CmDate& date, int32_t hours, int32_t minutes, int32_t seconds)
    : seconds_(standardSeconds(date.getJulian(), hours, minutes, seconds)) {
    if (isDaylight())
        seconds_ -= secondsOfHour;
}

CmTime::CmTime(const CmDate& date, const CmTime& time)
    : CmTime(date, time.getHour(), time.getMinute(), time.getSecond()) {}

CmTime CmTime::now() {
    const platform::CalendarTime local = platform::toLocalTime(platform::getWallClockMilliseconds());
    return CmTime(local.hour, local.minute, local.second);
}

CmTime CmTime::daylightStart(int32_t year) {
    CmDate day = CmDate(31, 3, year).previous(CmDate::sunday);
    if (year == 1974)
        day = CmDate(6, 1, year);
    else if (year == 1975)
        day = CmDate(23, 2, year);
    else if (year <= 1986)
        day = CmDate(30, 4, year).previous(CmDate::sunday);
    else
        day.setJulian(day.getJulian() + 7);
    return CmTime(standardSeconds(day.getJulian(), 2, 0, 0));
}

CmTime CmTime::daylightEnd(int32_t year) {
    const CmDate day = CmDate(31, 10, year).previous(CmDate::sunday);
    return CmTime(standardSeconds(day.getJulian(), 1, 0, 0));
}

bool CmTime::isDaylight() const {
    if (!hasDaylight)
        return false;
    const uint32_t standard = seconds_ - static_cast<uint32_t>(zoneOffset);
    const int32_t year = CmDate(standard / secondsOfDay + epochJulian).getYear();
    return daylightStart(year).seconds_ <= seconds_ && seconds_ < daylightEnd(year).seconds_;
}

CmTime CmTime::toLocal() const {
    return CmTime(seconds_ - static_cast<uint32_t>(zoneOffset) + (isDaylight() ? secondsOfHour : 0));
}

CmDate CmTime::getDate() const {
    return CmDate(toLocal().seconds_ / secondsOfDay + epochJulian);
}

bool CmTime::toText(String& out, bool withSeconds) const {
    out.clear();
    return locale::printTime(toLocal().seconds_ % secondsOfDay,
                             withSeconds ? locale::Precision::seconds : locale::Precision::minutes, out);
}

bool CmTime::fromText(const ConstString& text) {
    locale::Moment moment;
    if (!locale::parseMoment(text, moment))
        return false;
    const auto hours = static_cast<int32_t>(moment.secondOfDay / 3600);
    const auto minutes = static_cast<int32_t>(moment.secondOfDay / 60 % 60);
    const auto seconds = static_cast<int32_t>(moment.secondOfDay % 60);
    if (moment.julian == 0) {
        *this = CmTime(hours, minutes, seconds);
        return true;
    }
    constexpr uint32_t lastJulian = epochJulian + std::numeric_limits<uint32_t>::max() / secondsOfDay - 1;
    if (moment.julian < epochJulian || moment.julian > lastJulian)
        return false;
    *this = CmTime(CmDate(moment.julian), hours, minutes, seconds);
    return true;
}

bool CmTime::toHttpDate(const CmDate& date, String& out) const {
    static constexpr const char* weekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    out.clear(false);
    const int32_t month = date.getMonth();
    if (month == 0)
        return false;
    return out.printf8("%s, %02d %s %d %02d:%02d:%02d GMT", weekdays[date.getWeekday() - 1], date.getDay(),
                       months[month - 1], date.getYear(), getHourUtc(), getMinuteUtc(), getSecondUtc());
}

bool CmTime::isEqual(const CmObject* other) const {
    const auto* time = cast<CmTime>(other);
    return time ? seconds_ == time->seconds_ : CmObject::isEqual(other);
}

int32_t CmTime::compare(const CmObject* other) const {
    const auto* time = cast<CmTime>(other);
    if (!time)
        return CmObject::compare(other);
    return seconds_ < time->seconds_ ? -1 : seconds_ > time->seconds_;
}

bool CmTime::readFrom(FObjectArchive* archive) {
    uint32_t seconds = 0;
    if (!archive->stream().readUInt32(seconds))
        return false;
    seconds_ = seconds;
    return true;
}

bool CmTime::writeTo(FObjectArchive* archive) {
    return archive->stream().writeUInt32(seconds_);
}

bool CmTime::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("Seconds", seconds_);
    return true;
}

bool CmTime::restoreAttributes(FAttributes* attributes) {
    seconds_ = static_cast<uint32_t>(attributes->getInteger("Seconds"));
    return true;
}

} // namespace qorl
