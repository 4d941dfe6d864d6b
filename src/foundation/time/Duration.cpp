#include "foundation/time/Duration.h"

#include "foundation/text/String.h"
#include "foundation/text/TranslationTable.h"

#include <cinttypes>
#include <cstdio>
#include <iterator>

namespace qorl {

namespace {

constexpr int64_t minute = 60;
constexpr int64_t hour = 60 * minute;
constexpr int64_t day = 24 * hour;

/// A unit of time. The texts are keys of the translation.
struct Unit {
    int64_t seconds;
    const char* letter;
    const char* one;
    const char* many;
};
constexpr Unit days = {day, "d", "day", "days"};
constexpr Unit hours = {hour, "h", "hour", "hours"};
constexpr Unit minutes = {minute, "m", "minute", "minutes"};
constexpr Unit seconds = {1, "s", "second", "seconds"};

ConstString wordOf(const Unit& unit, int64_t count) {
    return translate(ConstString(count == 1 ? unit.one : unit.many));
}

void appendPart(String& out, int64_t count, const Unit& unit) {
    char number[24];
    std::snprintf(number, sizeof number, "%s%" PRId64 " ", out.isEmpty() ? "" : " ", count);
    out.append8(number);
    out.append(wordOf(unit, count));
}

} // namespace

void formatClock(String& out, int64_t duration, bool padded, DurationUnits units) {
    // In unsigned numbers the lowest duration has an opposite too.
    const uint64_t length = duration < 0 ? -static_cast<uint64_t>(duration) : static_cast<uint64_t>(duration);
    const uint64_t h = length / hour;
    const uint64_t m = length / minute % 60;
    const uint64_t s = length % 60;
    const int width = padded ? 2 : 1;
    const char* sign = duration < 0 ? "-" : "";
    char text[48];
    const Unit* unit = &seconds;
    uint64_t first = s;
    if (h > 0) {
        std::snprintf(text, sizeof text, "%s%.*" PRIu64 ":%.2" PRIu64 ":%.2" PRIu64, sign, width, h, m, s);
        unit = &hours;
        first = h;
    } else if (m > 0) {
        std::snprintf(text, sizeof text, "%s%.*" PRIu64 ":%.2" PRIu64, sign, width, m, s);
        unit = &minutes;
        first = m;
    } else {
        std::snprintf(text, sizeof text, "%s%.*" PRIu64, sign, width, s);
    }
    out.clear(false);
    out.append8(text);
    if (units != DurationUnits::letters && units != DurationUnits::words)
        return;
    out.append8(" ");
    if (units == DurationUnits::letters)
        out.append8(unit->letter);
    else
        out.append(wordOf(*unit, static_cast<int64_t>(first)));
}

void formatLong(String& out, int64_t duration, bool coarse) {
    out.clear(false);
    if (duration <= minute) {
        appendPart(out, duration, seconds);
        return;
    }
    const Unit* all[] = {&days, &hours, &minutes, &seconds};
    const Unit* last = &seconds;
    if (coarse && duration >= day)
        last = &hours;
    else if (coarse && duration >= hour)
        last = &minutes;
    const size_t start = duration == day ? 1 : 0;
    for (size_t i = start; i < std::size(all); ++i) {
        const int64_t count = duration / all[i]->seconds;
        duration %= all[i]->seconds;
        if (count > 0)
            appendPart(out, count, *all[i]);
        if (all[i] == last)
            return;
    }
}

} // namespace qorl
