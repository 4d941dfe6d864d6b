#include "foundation/time/CmTime.h"

#include "foundation/text/TranslationTable.h"
#include "foundation/time/NumberIn32Bits.h"
#include "support/EnvironmentScope.h"

#include <qorl/Ref.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

/// Puts another zone in place for a test.
class Zone {
public:
    Zone(int32_t secondsBehindUtc, bool hasDaylight)
        : offset_(CmTime::zoneOffset), hasDaylight_(CmTime::hasDaylight) {
        CmTime::zoneOffset = secondsBehindUtc;
        CmTime::hasDaylight = hasDaylight;
    }
    ~Zone() {
        CmTime::zoneOffset = offset_;
        CmTime::hasDaylight = hasDaylight_;
    }

private:
    int32_t offset_;
    bool hasDaylight_;
};

constexpr int32_t berlin = -3600;
constexpr int32_t newYork = 5 * 3600;

std::string clock(const CmTime& time) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", time.getHour(), time.getMinute(), time.getSecond());
    return text;
}

/// In a process of its own, since the zone is read at the load.
TEST(CmTime, TakesTheZoneOfTheComputer) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct Row {
        const char* zone;
        const char* seen; ///< seconds behind universal time, and whether it has daylight
    } rows[] = {{"UTC0", "0 no"},
                {"EST5EDT,M3.2.0,M11.1.0", "18000 yes"},
                {"IST-5:30", "-19800 no"},
                // Daylight was last saved here in 1945.
                {"Asia/Kolkata", "-19800 no"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.zone);
        const testing::EnvironmentScope zone("TZ", row.zone);
        EXPECT_EXIT(
            {
                // Not by `std::time`, which is some milliseconds behind where a second begins.
                const auto second = [] {
                    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
                };
                time_t start = 0;
                CmTime now;
                CmDate today;
                do { // in one second
                    start = second();
                    now = CmTime::now();
                    today = CmDate::today();
                } while (second() != start);
                const tm* local = std::localtime(&start);
                const bool isNow =
                    today == CmDate(local->tm_mday, local->tm_mon + 1, local->tm_year + 1900) &&
                    now == CmTime(local->tm_hour, local->tm_min, local->tm_sec) &&
                    now.getHour() == local->tm_hour && now.getMinute() == local->tm_min;
                std::fprintf(stderr, "%d %s", CmTime::zoneOffset, CmTime::hasDaylight ? "yes" : "no");
                std::_Exit(isNow ? 42 : 43);
            },
            ::testing::ExitedWithCode(42), std::string("^") + row.seen + "$");
    }
}

TEST(CmTime, CountsSecondsOfUniversalTimeSince1901) {
    namespace chrono = std::chrono;
    const Zone zone(0, false);
    const auto epoch = chrono::sys_days(chrono::year(1901) / chrono::January / 1).time_since_epoch();
    for (int32_t y = 1901; y < 2037; ++y) {
        const auto days = chrono::sys_days(chrono::year(y) / chrono::June / 7).time_since_epoch() - epoch;
        const CmTime time(CmDate(7, 6, y), 13, 14, 15);
        EXPECT_EQ(int64_t{time.getSeconds()},
                  (chrono::duration_cast<chrono::seconds>(days) + chrono::seconds(13 * 3600 + 14 * 60 + 15))
                      .count())
            << y;
        EXPECT_EQ(time.getDate(), CmDate(7, 6, y));
        EXPECT_EQ(clock(time), "13:14:15");
    }
    EXPECT_EQ(CmTime().getSeconds(), 0u);
    EXPECT_EQ(CmTime(1, 2, 3).getSeconds(), 3723u);
}

TEST(CmTime, GivesTheLocalTimeBackInEachZone) {
    for (const int32_t offset : {0, berlin, newYork, -12 * 3600, 12 * 3600, -19800})
        for (const bool hasDaylight : {false, true}) {
            SCOPED_TRACE(::testing::Message()
                         << offset << (hasDaylight ? " with" : " without") << " daylight");
            const Zone zone(offset, hasDaylight);
            EXPECT_EQ(clock(CmTime(0, 0, 0)), "00:00:00");
            EXPECT_EQ(clock(CmTime(23, 59, 59)), "23:59:59");
            for (const CmDate& date : {CmDate(2, 1, 1901), CmDate(15, 7, 1999), CmDate(15, 12, 1999)})
                for (const int32_t hour : {0, 5, 12, 23}) {
                    const CmTime time(date, hour, 30, 1);
                    EXPECT_EQ(time.getHour(), hour);
                    EXPECT_EQ(time.getDate(), date);
                    EXPECT_EQ(CmTime(date, CmTime(hour, 30, 1)), time) << "a clock's time put on a day";
                }
        }
}

TEST(CmTime, SavesDaylightByFixedRules) {
    const Zone zone(newYork, true);
    struct Row {
        int32_t year;
        CmDate start, end;
    } rows[] = {
        {1970, {26, 4, 1970}, {25, 10, 1970}}, {1974, {6, 1, 1974}, {27, 10, 1974}},
        {1975, {23, 2, 1975}, {26, 10, 1975}}, {1978, {23, 4, 1978}, {29, 10, 1978}},
        {1986, {27, 4, 1986}, {26, 10, 1986}}, {1987, {5, 4, 1987}, {25, 10, 1987}},
        {1991, {31, 3, 1991}, {27, 10, 1991}}, {1999, {4, 4, 1999}, {24, 10, 1999}},
        {2024, {31, 3, 2024}, {27, 10, 2024}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.year);
        const CmTime start = CmTime::daylightStart(row.year);
        const CmTime end = CmTime::daylightEnd(row.year);
        EXPECT_EQ(CmTime(start.getSeconds() - 1).getDate(), row.start);
        EXPECT_EQ(clock(CmTime(start.getSeconds() - 1)), "01:59:59");
        EXPECT_EQ(clock(start), "03:00:00");
        EXPECT_EQ(CmTime(end.getSeconds() - 1).getDate(), row.end);
        EXPECT_EQ(clock(CmTime(end.getSeconds() - 1)), "01:59:59");
        EXPECT_EQ(clock(end), "01:00:00") << "an hour is lived twice";
        EXPECT_FALSE(CmTime(start.getSeconds() - 1).isDaylight());
        EXPECT_TRUE(start.isDaylight());
        EXPECT_FALSE(end.isDaylight());
    }
    const CmTime summer(CmDate(15, 7, 1999), 12, 0, 0);
    EXPECT_EQ(summer.getHourUtc(), 16);
    EXPECT_EQ(CmTime(CmDate(15, 1, 1999), 12, 0, 0).getHourUtc(), 17);
    const Zone plain(newYork, false);
    EXPECT_FALSE(summer.isDaylight());
    EXPECT_EQ(summer.getHour(), 11);
}

TEST(CmTime, WritesTheDateOfHttp) {
    const Zone zone(berlin, true);
    String text;
    // The example of the RFC, 08:49:37 in universal time.
    EXPECT_TRUE(CmTime(9, 49, 37).toHttpDate(CmDate(6, 11, 1994), text));
    EXPECT_EQ(text, ConstString("Sun, 06 Nov 1994 08:49:37 GMT"));
    EXPECT_FALSE(CmTime(9, 49, 37).toHttpDate(CmDate(), text));
    EXPECT_TRUE(text.isEmpty());
}

TEST(CmTime, IsWrittenInTheLanguageOfTheProgram) {
    const Zone zone(newYork, true);
    struct Row {
        const char* language;
        const char* withSeconds;
        const char* without;
    } rows[] = {{"us", "2:03:04 PM", "2:03 PM"}, {"de", "14:03:04", "14:03"}};
    const CmTime time(CmDate(15, 7, 1999), 14, 3, 4);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.language);
        const auto table = make<TranslationTable>();
        table->setupForLanguage(row.language);
        String text;
        EXPECT_TRUE(time.toText(text));
        EXPECT_EQ(text.toUtf8(), row.withSeconds);
        EXPECT_TRUE(time.toText(text, false));
        EXPECT_EQ(text.toUtf8(), row.without);
        CmTime parsed;
        EXPECT_TRUE(parsed.fromText(row.withSeconds));
        EXPECT_EQ(parsed, CmTime(14, 3, 4));
    }
}

TEST(CmTime, ReadsMoments) {
    const Zone zone(newYork, true);
    struct Row {
        const char* text;
        CmTime time;
    } rows[] = {
        {"2:03:04 PM", CmTime(14, 3, 4)},
        {" 2:03 PM ", CmTime(14, 3, 0)},
        {"7/15/1999", CmTime(CmDate(15, 7, 1999), 0, 0, 0)},
        {"7/15/1999, 2:03:04 PM", CmTime(CmDate(15, 7, 1999), 14, 3, 4)},
        {"July 15, 1999 at 2:03 PM", CmTime(CmDate(15, 7, 1999), 14, 3, 0)},
        {"Jan 2, 1901", CmTime(CmDate(2, 1, 1901), 0, 0, 0)},
    };
    for (const Row& row : rows) {
        CmTime time;
        EXPECT_TRUE(time.fromText(row.text)) << row.text;
        EXPECT_EQ(time.getSeconds(), row.time.getSeconds()) << row.text;
    }
    CmTime time(1, 2, 3);
    for (const char* text :
         {"", "noon", "25:00:00 PM", "2:61 PM", "Dec 31, 1900", "Jan 1, 2038", "7/32/1999", "2:03 PM x"}) {
        EXPECT_FALSE(time.fromText(text)) << text;
        EXPECT_EQ(time, CmTime(1, 2, 3)) << text;
    }
}

TEST(CmTime, IsAValue) {
    testing::expectNumberIn32Bits(&CmTime::getSeconds, "Seconds");
    const Zone zone(0, false);
    const auto shared = make<CmTime>(3723u);
    Ref<IClockTime> face;
    ASSERT_EQ(shared->queryInterface(IClockTime::iid, face.out()), Result::ok);
    EXPECT_EQ(face->getHour() * 10000 + face->getMinute() * 100 + face->getSecond(), 10203);
    face->setSeconds(7);
    EXPECT_EQ(shared->getSeconds(), face->getSeconds());
}

} // namespace
} // namespace qorl
