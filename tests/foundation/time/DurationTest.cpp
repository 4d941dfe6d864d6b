#include "foundation/time/Duration.h"

#include "foundation/text/String.h"
#include "foundation/text/TranslationTable.h"

#include <qorl/Ref.h>

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl {
namespace {

/// What is left of `text` when each word has gone through a table that has no translation for it.
std::string untranslated(std::string text) {
    std::erase_if(text, [](char c) { return c >= 'a' && c <= 'z'; });
    return text;
}

/// Gives nothing for any text.
Ref<TranslationTable> makeEmptyTable() {
    const Ref<TranslationTable> table = make<TranslationTable>();
    table->setupForLanguage("de");
    table->setEmptyIfMissing(true);
    return table;
}

TEST(Duration, IsWrittenLikeAClock) {
    struct Row {
        int64_t seconds;
        bool padded;
        DurationUnits units;
        const char* text;
    } rows[] = {
        {0, false, DurationUnits::none, "0"},
        {5, false, DurationUnits::none, "5"},
        {5, true, DurationUnits::none, "05"},
        {65, false, DurationUnits::none, "1:05"},
        {65, true, DurationUnits::none, "01:05"},
        {3600, false, DurationUnits::none, "1:00:00"},
        {36'061, false, DurationUnits::none, "10:01:01"},
        {3661, true, DurationUnits::none, "01:01:01"},
        {360'000, true, DurationUnits::none, "100:00:00"},
        {5, false, DurationUnits::letters, "5 s"},
        {65, false, DurationUnits::letters, "1:05 m"},
        {3661, false, DurationUnits::letters, "1:01:01 h"},
        {1, true, DurationUnits::words, "01 second"},
        {0, false, DurationUnits::words, "0 seconds"},
        {119, false, DurationUnits::words, "1:59 minute"},
        {120, false, DurationUnits::words, "2:00 minutes"},
        {3661, false, DurationUnits::words, "1:01:01 hour"},
        {7200, false, DurationUnits::words, "2:00:00 hours"},
        {7200, false, static_cast<DurationUnits>(3), "2:00:00"},
        {-65, false, DurationUnits::none, "-1:05"},
        {std::numeric_limits<int64_t>::min(), false, DurationUnits::none, "-2562047788015215:30:08"},
    };
    for (const Row& row : rows) {
        String text(u"old");
        formatClock(text, row.seconds, row.padded, row.units);
        EXPECT_EQ(text.toUtf8(), row.text) << row.seconds;
        const Ref<TranslationTable> table = makeEmptyTable();
        formatClock(text, row.seconds, row.padded, row.units);
        EXPECT_EQ(text.toUtf8(), row.units == DurationUnits::words ? untranslated(row.text) : row.text)
            << "words are translated, letters are not";
    }
}

TEST(Duration, IsWrittenInWords) {
    struct Row {
        int64_t seconds;
        const char* text;
        const char* coarse;
    } rows[] = {
        {0, "0 seconds", "0 seconds"},
        {1, "1 second", "1 second"},
        {60, "60 seconds", "60 seconds"},
        {61, "1 minute 1 second", "1 minute 1 second"},
        {120, "2 minutes", "2 minutes"},
        {3600, "1 hour", "1 hour"},
        {3601, "1 hour 1 second", "1 hour"},
        {7325, "2 hours 2 minutes 5 seconds", "2 hours 2 minutes"},
        {86'399, "23 hours 59 minutes 59 seconds", "23 hours 59 minutes"},
        {86'400, "24 hours", "24 hours"},
        {86'401, "1 day 1 second", "1 day"},
        {90'061, "1 day 1 hour 1 minute 1 second", "1 day 1 hour"},
        {172'800, "2 days", "2 days"},
    };
    for (const Row& row : rows) {
        String text(u"old");
        formatLong(text, row.seconds, false);
        EXPECT_EQ(text.toUtf8(), row.text) << row.seconds;
        formatLong(text, row.seconds, true);
        EXPECT_EQ(text.toUtf8(), row.coarse) << row.seconds << " coarse";
        const Ref<TranslationTable> table = makeEmptyTable();
        formatLong(text, row.seconds, false);
        EXPECT_EQ(text.toUtf8(), untranslated(row.text)) << "each word is translated";
    }
}

} // namespace
} // namespace qorl
