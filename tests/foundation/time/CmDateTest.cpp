#include "foundation/time/CmDate.h"

#include "foundation/text/TranslationTable.h"
#include "foundation/time/NumberIn32Bits.h"
#include "support/FailingAllocation.h"

#include <qorl/Ref.h>

#include <chrono>
#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmDate, AgreesWithTheCalendarOnEachDayOfThreeThousandYears) {
    namespace chrono = std::chrono;
    constexpr int64_t julianOf1970 = 2440588;
    const chrono::sys_days end = chrono::year(3100) / chrono::January / 1;
    CmDate date;
    for (chrono::sys_days day = chrono::year(100) / chrono::January / 1; day < end; day += chrono::days(1)) {
        const chrono::year_month_day parts(day);
        const auto julian = static_cast<uint32_t>(julianOf1970 + day.time_since_epoch().count());
        date.setJulian(julian);
        const bool same =
            date.getDay() == static_cast<int32_t>(unsigned(parts.day())) &&
            date.getMonth() == static_cast<int32_t>(unsigned(parts.month())) &&
            date.getYear() == int32_t(parts.year()) &&
            date.getWeekday() == static_cast<int32_t>(chrono::weekday(day).iso_encoding()) &&
            date.isLeapYear() == parts.year().is_leap() &&
            date.getDayOfYear() == (day - chrono::sys_days(parts.year() / chrono::January / 1)).count() + 1 &&
            CmDate::toJulian(date.getDay(), date.getMonth(), date.getYear()) == julian;
        ASSERT_TRUE(same) << "day " << julian << ", " << date.getYear() << '-' << date.getMonth() << '-'
                          << date.getDay();
    }
}

TEST(CmDate, TakesOnlyDaysThatExist) {
    struct Row {
        int32_t day, month, year;
        bool isValid;
    } rows[] = {
        {29, 2, 1900, false}, {29, 2, 2000, true},  {29, 2, 2001, false}, {29, 2, 0, false},
        {29, 2, 4, true},     {31, 4, 2020, false}, {30, 4, 2020, true},  {0, 1, 2020, false},
        {1, 0, 2020, false},  {1, 13, 2020, false}, {-1, 1, 2020, false}, {1, 1, -1, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(CmDate(row.day, row.month, row.year).isValid(), row.isValid)
            << row.day << '.' << row.month << '.' << row.year;
    EXPECT_EQ(CmDate(1, 3, 99), CmDate(1, 3, 1999));
    EXPECT_EQ(CmDate(1, 3, 100).getYear(), 100);
    EXPECT_EQ(CmDate(1, 1, 100).getDayOfYear(), 1);
    EXPECT_EQ(CmDate::epochDate, CmDate(1, 1, 1901));
    EXPECT_EQ(CmDate::epochDate.getJulian(), 2415386u);

    const CmDate invalid;
    EXPECT_EQ(invalid.getDay() + invalid.getMonth() + invalid.getYear() + invalid.getDayOfYear(), 0);
    EXPECT_STREQ(invalid.getMonthName(), "");
    EXPECT_EQ(CmDate(1'000'000u).getYear(), 0) << "in front of the first day that the calendar knows";
    EXPECT_GT(CmDate(0xFFFFFFFFu).getYear(), 10'000'000);
}

TEST(CmDate, CountsDaysOfAYear) {
    struct Row {
        int32_t dayOfYear, year;
        CmDate date;
    } rows[] = {
        {1, 2000, {1, 1, 2000}},   {366, 2000, {31, 12, 2000}}, {366, 2001, {1, 1, 2002}},
        {0, 2000, {31, 12, 1999}}, {60, 99, {1, 3, 1999}},      {1, 100, {1, 1, 2000}},
        {0, 0, {1, 1, 1901}},      {31, 0, {1, 2, 1901}},       {1, 101, {1, 1, 101}},
        {1, -1, CmDate()},
    };
    for (const Row& row : rows)
        EXPECT_EQ(CmDate(row.dayOfYear, row.year).getJulian(), row.date.getJulian())
            << row.dayOfYear << " of " << row.year;
}

TEST(CmDate, KnowsEnglishNamesInAnyCase) {
    EXPECT_EQ(CmDate(5, "march", 2024), CmDate(5, 3, 2024));
    EXPECT_EQ(CmDate(31, "DECEMBER", 24), CmDate(31, 12, 1924));
    for (const char* name : {"Mar", "Marchy", "", "März"})
        EXPECT_FALSE(CmDate(5, name, 2024).isValid()) << name;
    EXPECT_FALSE(CmDate(5, static_cast<const char*>(nullptr), 2024).isValid());
    EXPECT_STREQ(CmDate(5, 3, 2024).getMonthName(), "March");
    EXPECT_STREQ(CmDate(5, 3, 2024).getWeekdayName(), "Tuesday");
}

TEST(CmDate, ChangesAPartOnlyIntoADayThatExists) {
    CmDate date(31, 3, 2024);
    EXPECT_FALSE(date.setDay(0));
    EXPECT_FALSE(date.setDay(32));
    EXPECT_FALSE(date.setMonth(2));
    EXPECT_FALSE(date.setMonth(13));
    EXPECT_EQ(date, CmDate(31, 3, 2024));
    EXPECT_TRUE(date.setDay(29));
    EXPECT_TRUE(date.setMonth(2));
    EXPECT_FALSE(date.setYear(2023));
    EXPECT_EQ(date, CmDate(29, 2, 2024));
    EXPECT_TRUE(date.setYear(96));
    EXPECT_EQ(date, CmDate(29, 2, 1996));
    EXPECT_EQ(date.getDaysInMonth(), 29);
    EXPECT_EQ(date.getDaysInMonth(4), 30);
    EXPECT_EQ(date.getDaysInMonth(0) + date.getDaysInMonth(13), 0);
    CmDate invalid;
    EXPECT_FALSE(invalid.setDay(1));
    EXPECT_FALSE(invalid.isValid());
}

TEST(CmDate, StaysInItsYearWhateverTheCenturyWhenADayOrMonthIsSet) {
    constexpr uint32_t firstOfMarch = 1721120; // of year 0, which has a leap day
    struct Row {
        uint32_t julian;
        int32_t dayOfYear;
        int32_t day, month; // 0: left
        uint32_t expected;  // 0: refused
    } rows[] = {
        {firstOfMarch, 61, 31, 0, firstOfMarch + 30},
        {firstOfMarch, 61, 0, 12, firstOfMarch + 275},
        {firstOfMarch, 61, 0, 2, 0}, // the calendar begins behind it
        {firstOfMarch, 61, 32, 0, 0},
        {firstOfMarch + 305, 366, 1, 0, firstOfMarch + 275},
        {firstOfMarch + 306, 1, 0, 12, firstOfMarch + 640},
        {firstOfMarch + 36159, 60, 30, 0, firstOfMarch + 36188}, // 1 March 99
        {0xFFFFFFFF, 348, 1, 0, 0xFFFFFFFF - 12},
        {0xFFFFFFFF, 348, 14, 0, 0}, // more than 32 bits hold
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.julian << " to " << row.day << '.' << row.month);
        CmDate date(row.julian);
        EXPECT_EQ(date.getDayOfYear(), row.dayOfYear);
        EXPECT_EQ(row.day > 0 ? date.setDay(row.day) : date.setMonth(row.month), row.expected != 0);
        EXPECT_EQ(date.getJulian(), row.expected ? row.expected : row.julian);
    }
}

TEST(CmDate, FindsThePreviousDayOfTheWeek) {
    const CmDate sunday(10, 3, 2024);
    EXPECT_EQ(sunday.previous(CmDate::sunday), CmDate(3, 3, 2024)) << "strictly before";
    EXPECT_EQ(sunday.previous(CmDate::saturday), CmDate(9, 3, 2024));
    EXPECT_EQ(sunday.previous(CmDate::monday), CmDate(4, 3, 2024));
    EXPECT_EQ(sunday.previous("friday"), CmDate(8, 3, 2024));
    EXPECT_FALSE(sunday.previous(0).isValid());
    EXPECT_FALSE(sunday.previous(8).isValid());
    EXPECT_FALSE(sunday.previous("fri").isValid());
    EXPECT_FALSE(CmDate(1u).previous(3).isValid());
}

TEST(CmDate, IsWrittenInTheLanguageOfTheProgram) {
    struct Row {
        const char* language;
        const char16_t* texts[CmDate::styles];
    } rows[] = {
        {"us", {u"3/5/24", u"Mar 5, 2024", u"March 5, 2024", u"Tuesday, March 5, 2024"}},
        {"de", {u"05.03.24", u"05.03.2024", u"5. März 2024", u"Dienstag, 5. März 2024"}},
        {"jp", {u"2024/03/05", u"2024/03/05", u"2024年3月5日", u"2024年3月5日火曜日"}},
    };
    const CmDate date(5, 3, 2024);
    for (const Row& row : rows) {
        const auto table = make<TranslationTable>();
        table->setupForLanguage(row.language);
        for (int32_t style = 0; style < CmDate::styles; ++style) {
            SCOPED_TRACE(::testing::Message() << row.language << ' ' << style);
            String text;
            EXPECT_TRUE(date.toText(text, style));
            EXPECT_EQ(text.toUtf8(), ConstString(row.texts[style]).toUtf8());
            CmDate parsed;
            EXPECT_TRUE(parsed.fromText(text));
            EXPECT_EQ(parsed, date);
        }
    }
    String text("old");
    EXPECT_FALSE(CmDate().toText(text));
    EXPECT_TRUE(text.isEmpty());
    EXPECT_TRUE(date.toText(text, 99));
    EXPECT_EQ(text, ConstString("3/5/24")) << "an unknown style, without a table of languages";
}

TEST(CmDate, HasNoTextWithoutMemory) {
    failEachAllocation([](FailingAllocation& allocation) {
        String text("old");
        const bool done =
            allocation.during([&] { return CmDate(5, 3, 2024).toText(text, CmDate::fullStyle); });
        EXPECT_EQ(done, !allocation.hasFailed());
        EXPECT_EQ(text.isEmpty(), !done);
    });
}

TEST(CmDate, ReadsDatesOnly) {
    CmDate date(1, 1, 2000);
    for (const char* text : {"  3/5/2024 ", "March 5, 2024", "mar 5, 2024", "3/5/24"}) {
        date = CmDate();
        EXPECT_TRUE(date.fromText(text)) << text;
        EXPECT_EQ(date, CmDate(5, 3, 2024)) << text;
    }
    for (const char* text : {"", "2/30/2024", "13/1/2024", "3/5/2024 x", "5. März 2024", "noon", "3"}) {
        EXPECT_FALSE(date.fromText(text)) << text;
        EXPECT_EQ(date, CmDate(5, 3, 2024)) << text;
    }
    EXPECT_FALSE(date.fromText(ConstString(std::u16string(100'000, u'1'))));
    for (const CmDate& old : {CmDate(29, 2, 1600), CmDate(4, 10, 1500), CmDate(1, 1, 101)}) {
        String text;
        EXPECT_TRUE(old.toText(text, CmDate::longStyle));
        EXPECT_TRUE(date.fromText(text)) << text.toUtf8();
        EXPECT_EQ(date.getJulian(), old.getJulian()) << text.toUtf8();
    }
}

TEST(CmDate, IsAValue) {
    testing::expectNumberIn32Bits(&CmDate::getJulian, "Julian");
    const auto shared = make<CmDate>(5, 3, 2024);
    Ref<ICalendarDay> face;
    ASSERT_EQ(shared->queryInterface(ICalendarDay::iid, face.out()), Result::ok);
    EXPECT_EQ(face->getDay() * 100 + face->getMonth(), 503);
    face->setJulian(CmDate::epochDate.getJulian());
    EXPECT_EQ(face->getYear(), 1901);
    EXPECT_EQ(face->getWeekday(), CmDate::tuesday);
}

} // namespace
} // namespace qorl
