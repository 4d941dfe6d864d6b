#include "foundation/text/TextWidths.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace qorl {
namespace {

TEST(StringNumbers, ReadsWholeNumbers) {
    constexpr int64_t most = std::numeric_limits<int64_t>::max();
    constexpr int64_t least = std::numeric_limits<int64_t>::min();
    const struct {
        const char* text;
        int32_t start;
        bool scan, isRead;
        int64_t expected;
    } cases[] = {
        {"42", 0, false, true, 42},
        {"  -42x", 0, false, true, -42},
        {"+7", 0, false, true, 7},
        {"Track 12 of 20", 0, true, true, 12},
        {"Track 12 of 20", 0, false, false, 0},
        {"Track 12 of 20", 8, true, true, 20},
        {"Track 12 of 20", 6, false, true, 12},
        {"a-5", 0, true, true, -5},
        {"- 5", 0, false, false, 0},
        {"- 5", 0, true, true, 5},
        {"", 0, true, false, 0},
        {"abc", 0, true, false, 0},
        {"12", 2, true, false, 0},
        {"9223372036854775807", 0, false, true, most},
        {"9223372036854775808", 0, false, true, most},
        {"-9223372036854775808", 0, false, true, least},
        {"-99999999999999999999999", 0, false, true, least},
    };
    for (const auto& c : cases)
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message()
                         << '"' << c.text << "\" from " << c.start << (wide ? " wide" : ""));
            int64_t number = 99;
            EXPECT_EQ(inWidth(c.text, wide).toInt64(number, c.start, c.scan), c.isRead);
            EXPECT_EQ(number, c.isRead ? c.expected : 99);
        }
}

TEST(StringNumbers, LimitsNumbersToTheirType) {
    int32_t small = 0;
    EXPECT_TRUE(ConstString("3000000000").toInt32(small));
    EXPECT_EQ(small, std::numeric_limits<int32_t>::max());
    EXPECT_TRUE(ConstString("-3000000000").toInt32(small));
    EXPECT_EQ(small, std::numeric_limits<int32_t>::min());
    const struct {
        const char* text;
        uint32_t expected;
        uint64_t expectedLarge;
    } cases[] = {
        {"3000000000", 3000000000u, 3000000000u},
        {"4294967296", UINT32_MAX, 4294967296u},
        {"18446744073709551615", UINT32_MAX, UINT64_MAX},
        {"18446744073709551616", UINT32_MAX, UINT64_MAX},
        {"-1", UINT32_MAX, UINT64_MAX},
        {"-4294967295", 1, UINT64_MAX - 4294967294u},
        {"-18446744073709551615", UINT32_MAX, 1},
        {"-18446744073709551617", UINT32_MAX, UINT64_MAX},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        uint32_t natural = 0;
        EXPECT_TRUE(ConstString(c.text).toUInt32(natural));
        EXPECT_EQ(natural, c.expected);
        uint64_t large = 0;
        EXPECT_TRUE(ConstString(c.text).toUInt64(large));
        EXPECT_EQ(large, c.expectedLarge);
    }
}

TEST(StringNumbers, ReadsRealNumbers) {
    const struct {
        const char* text;
        bool scan, isRead;
        double expected;
    } cases[] = {
        {"1.5", false, true, 1.5},
        {"-.25dB", false, true, -0.25},
        {"+2e3", false, true, 2000},
        {"1e", false, true, 1},
        {"gain 0.5", true, true, 0.5},
        {"gain 0.5", false, false, 0},
        {"infinite", true, false, 0},
        {"nan", true, false, 0},
        {"1,5", false, true, 1},
        {"1e999", false, true, HUGE_VAL},
        {"-1e999", false, true, -HUGE_VAL},
        {"1e-999", false, true, 0},
        {"+-1", false, false, 0},
        {"+-1", true, true, -1},
        {"1e5e6", false, true, 1e5},
        {"2.e+1", false, true, 20},
        {"-.e1", true, true, 1},
        {".", true, false, 0},
        {"0.001e-322", false, true, 0},
        {"-0.00001e313", false, true, -1e308},
        {"100e-500000000000000000000", false, true, 0},
        {"0.1e500000000000000000000", false, true, HUGE_VAL},
        {"", true, false, 0},
    };
    for (const auto& c : cases)
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message() << c.text << (wide ? " wide" : ""));
            double number = 99;
            EXPECT_EQ(inWidth(c.text, wide).toDouble(number, 0, c.scan), c.isRead);
            EXPECT_EQ(number, c.isRead ? c.expected : 99);
        }
}

TEST(StringNumbers, ReadsBehindAHundredThousandBlanks) {
    const std::string text = std::string(100000, ' ') + "x 7";
    int64_t number = 0;
    EXPECT_TRUE(ConstString(std::string_view(text)).toInt64(number));
    EXPECT_EQ(number, 7);
    const std::string zeros = "0." + std::string(400, '0') + "1e401";
    double real = 0;
    EXPECT_TRUE(ConstString(std::string_view(zeros)).toDouble(real));
    EXPECT_DOUBLE_EQ(real, 1);
}

TEST(StringNumbers, PrintsInTheStoredWidth) {
    const struct {
        double value;
        const char* expected;
    } cases[] = {{3.0, "3.0"},   {0.25, "0.25"},           {1.5, "1.5"},   {-0.000001, "-0.000001"},
                 {100, "100.0"}, {1.23456789, "1.234568"}, {-2.0, "-2.0"}, {0, "0.0"}};
    for (const auto& c : cases) {
        String text("x");
        text.printDouble(c.value);
        EXPECT_STREQ(text.text8(), c.expected);
        EXPECT_FALSE(text.isWide());
    }
    String wide(u"x");
    wide.printDouble(2.5);
    EXPECT_EQ(wide.view16(), u"2.5");
    wide.printInt64(std::numeric_limits<int64_t>::min());
    EXPECT_EQ(wide.view16(), u"-9223372036854775808");
    String large;
    large.printDouble(std::numeric_limits<double>::max());
    EXPECT_EQ(large.size(), 311);
}

TEST(StringNumbers, PrintsVariants) {
    FAttributeVariant value{};
    String text("x");
    value.kind = FAttributeVariant::integer;
    value.integerValue = -3;
    EXPECT_TRUE(text.printVariant(value));
    EXPECT_STREQ(text.text8(), "-3");
    value.kind = FAttributeVariant::real;
    value.realValue = 0.5;
    EXPECT_TRUE(text.printVariant(value));
    EXPECT_STREQ(text.text8(), "0.5");
    value.kind = FAttributeVariant::text16;
    value.text16Value = u"\u00E4";
    EXPECT_TRUE(text.printVariant(value));
    EXPECT_EQ(text.view16(), u"\u00E4");
    value.kind = FAttributeVariant::object;
    value.objectValue = nullptr;
    EXPECT_FALSE(text.printVariant(value));
    EXPECT_TRUE(text.isEmpty());
}

TEST(StringNumbers, FormatsInBothWidths) {
    String text;
    EXPECT_TRUE(text.printf8("%s %03d %.1f%%", "Level", 7, 2.25));
    EXPECT_STREQ(text.text8(), "Level 007 2.2%");
    const std::string longText(1000, 'x');
    EXPECT_TRUE(text.printf8("%s!", longText.c_str()));
    EXPECT_EQ(text.size(), 1001);

    EXPECT_TRUE(text.printf16(u"%s|%5s|%-4s|%.2s|%hs", u"\u00E4", u"ab", u"cd", u"xyz", "narrow"));
    EXPECT_EQ(text.view16(), u"\u00E4|   ab|cd  |xy|narrow");
    EXPECT_TRUE(text.printf16(u"%c%02X %lld %I64d %u%%", u'\u00E4', 10, -5LL, 1LL << 40, 3u));
    EXPECT_EQ(text.view16(), u"\u00E4"
                             u"0A -5 1099511627776 3%");
    EXPECT_TRUE(text.printf16(u"%*d|%.3f", 4, 7, 1.0));
    EXPECT_EQ(text.view16(), u"   7|1.000");
    const struct {
        const char16_t* format;
        int argument;
        const char16_t* expected;
    } cases[] = {
        {u"%hd", 0x18000, u"-32768"},
        {u"%hu", -1, u"65535"},
        {u"%hhd", 0x1FF, u"-1"},
        {u"%hhX", -2, u"FE"},
        {u"%u", -1, u"4294967295"},
        {u"%I32d", -1, u"-1"},
        {u"%+-5d|", 7, u"+7   |"},
        {u"%0-5d|", 7, u"7    |"},
        {u"% .3d", 7, u" 007"},
        {u"%#x", 255, u"0xff"},
        {u"%-4c|", u'\u00E4', u"\u00E4   |"},
        {u"%3hc", 'n', u"  n"},
        {u"%lc", u'\u20AC', u"\u20AC"},
        {u"%+-4C|", 'n', u"n   |"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(ConstString(c.format).toUtf8());
        EXPECT_TRUE(text.printf16(c.format, c.argument));
        EXPECT_EQ(text.view16(), c.expected);
    }
    // A text that is cut need not be terminated; nothing behind the cut is read.
    const char16_t wideEnd[] = {u'a', u'b'};
    const char narrowEnd[] = {'a', '\xC3', '\xA4'};
    EXPECT_TRUE(text.printf16(u"%.2s|%.2hs|%0-*.*s|", wideEnd, narrowEnd, 4, 1, u"xyz"));
    EXPECT_EQ(text.view16(), u"ab|a\u00E4|x   |");
    EXPECT_TRUE(text.printf16(u"%*d|%.*f|%.2Lf", -4, 7, -1, 0.5, 1.25L));
    EXPECT_EQ(text.view16(), u"7   |0.500000|1.25");
    EXPECT_TRUE(text.printf16(u"%100d", 1));
    EXPECT_EQ(text.size(), 100);
    EXPECT_TRUE(text.printf16(u"%*d|%.3f", 4, 7, 1.0));
    EXPECT_FALSE(text.printf16(u"%d %"));
    EXPECT_FALSE(text.printf16(u"%y"));
    EXPECT_EQ(text.view16(), u"   7|1.000");
}

TEST(StringNumbers, KnowsTheNumberAtItsEnd) {
    EXPECT_EQ(ConstString("Take 12").trailingNumberStart(), 5);
    EXPECT_EQ(ConstString(u"Take 12").trailingNumberStart(2), 5);
    EXPECT_EQ(ConstString("Take 12").trailingNumberStart(1), -1);
    EXPECT_EQ(ConstString("Take").trailingNumberStart(), -1);
    EXPECT_EQ(ConstString("77").trailingNumberStart(), 0);
    EXPECT_EQ(ConstString("Take 012").trailingNumber(), 12);
    EXPECT_EQ(ConstString("Take").trailingNumber(-7), -7);
}

TEST(StringNumbers, GivesNamesTheNextNumber) {
    const struct {
        const char* text;
        uint32_t digits;
        char16_t separator;
        uint32_t minimum;
        bool keep;
        const char* expected; ///< null when it is refused
    } cases[] = {
        {"Take", 1, ' ', 0, false, "Take 1"},
        {"Take 1", 1, ' ', 0, false, "Take 2"},
        {"Take1", 1, ' ', 0, false, "Take 2"},
        {"Take 1", 1, '\0', 0, false, "Take 2"},
        {"Take", 1, '\0', 0, false, "Take1"},
        {"Take 9", 1, ' ', 0, false, "Take 10"},
        {"Take 9", 3, ' ', 0, false, "Take 010"},
        {"Take 009", 1, ' ', 0, false, "Take 10"},
        {"Take 5", 1, ' ', 0, true, "Take 5"},
        {"Take 5", 2, '_', 20, true, "Take _20"},
        {"Take", 1, ' ', 8, false, "Take 8"},
        {"7", 1, ' ', 0, false, "8"},
        {"", 2, ' ', 0, false, "01"},
        {"Take", 33, ' ', 0, false, nullptr},
        {"Take", 32, ' ', 0, false, "Take 00000000000000000000000000000001"},
        {"Take 4294967295", 1, ' ', 0, false, nullptr},
        {"Take 99999999999999999999999999", 1, ' ', 0, false, nullptr},
        {"Take 4294967295", 1, ' ', 0, true, "Take 4294967295"},
        {"Take", 1, u'\u2013', 0, false, "Take\u20131"},
        {"Take\u20139", 1, u'\u2013', 0, false, "Take\u201310"},
        {"Take\u00E49", 1, u'\u2013', 0, false, "Take\u00E4\u201310"},
        {"9", 1, u'\u00E4', 0, false, "10"},
    };
    for (const auto& c : cases)
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message() << '"' << c.text << '"' << (wide ? " wide" : ""));
            String text = inWidth(c.text, wide);
            EXPECT_EQ(text.incrementTrailingNumber(c.digits, c.separator, c.minimum, c.keep),
                      c.expected != nullptr);
            EXPECT_EQ(text.toUtf8(), c.expected ? c.expected : c.text);
            EXPECT_EQ(text.isWide(), wide);
        }
}

} // namespace
} // namespace qorl
