#include "foundation/text/TextWidths.h"

#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

constexpr int32_t all = ConstString::all;
constexpr int32_t none = ConstString::notFound;

TEST(ConstString, StaysWithinItsPartAndItsWidth) {
    const ConstString narrow("faders");
    const ConstString wide(u"faders");
    EXPECT_EQ(narrow.length(), 6);
    EXPECT_STREQ(narrow.text8(), "faders");
    EXPECT_EQ(std::u16string(narrow.text16()), u"");
    EXPECT_STREQ(wide.text8(), "");
    EXPECT_EQ(narrow.char8At(5), 's');
    EXPECT_EQ(narrow.char8At(6), '\0');
    EXPECT_EQ(narrow.char8At(-1), '\0');
    EXPECT_EQ(narrow.char16At(0), u'\0');
    EXPECT_EQ(wide.char16At(5), u's');
    EXPECT_EQ(wide.char8At(0), '\0');
    EXPECT_EQ(ConstString(static_cast<const char*>(nullptr)).length(), 0);
    EXPECT_EQ(ConstString(wide, 2, 3), ConstString("der"));
    EXPECT_EQ(ConstString(narrow, 4, 100), ConstString("rs"));
    EXPECT_EQ(ConstString(narrow, 100, 1).length(), 0);
    EXPECT_EQ(ConstString(narrow, 0, all).data(), narrow.data());
}

TEST(ConstString, TakesTheTextOfAVariantOnly) {
    FAttributeVariant value{};
    value.kind = FAttributeVariant::text16 | FAttributeVariant::ownedFlag;
    value.text16Value = u"pan";
    EXPECT_EQ(ConstString(value), ConstString("pan"));
    value.kind = FAttributeVariant::integer;
    value.integerValue = 7;
    EXPECT_TRUE(ConstString(value).isEmpty());
}

struct CompareCase {
    const char* a;
    const char* b;
    int32_t count;
    bool ignoreCase;
    int32_t expected;
};

TEST(ConstString, ComparesAcrossWidths) {
    const CompareCase cases[] = {
        {"", "", all, false, 0},
        {"", "a", all, false, -1},
        {"a", "", all, false, 1},
        {"abc", "abc", all, false, 0},
        {"abc", "abd", all, false, -1},
        {"abc", "abd", 2, false, 0},
        {"abc", "ab", all, false, 1},
        {"abc", "xyz", 0, false, 0},
        {"ABC", "abc", all, false, -1},
        {"ABC", "abc", all, true, 0},
        // Lower-cased, so that the underscore sorts before letters.
        {"_", "A", all, true, -1},
        {"\xC3\x84", "\xC3\xA4", all, true, 0},
        {"\xC3\x84", "\xC3\xA4", all, false, -1},
        {"z", "\xC3\xA4", all, false, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.a << " with " << c.b << ", count " << c.count);
        for (const auto& [a, b] : inAllWidths(c.a, c.b)) {
            SCOPED_TRACE(::testing::Message() << a.isWide() << b.isWide());
            EXPECT_EQ(a.compare(b, c.count, c.ignoreCase), c.expected);
            EXPECT_EQ(b.compare(a, c.count, c.ignoreCase), -c.expected);
        }
    }
    // A character 0 ends the comparison, but texts that differ behind it aren't equal.
    const ConstString zero("a\0b", 3);
    for (const bool ignoreCase : {false, true}) {
        EXPECT_EQ(zero.compare(ConstString("a\0c", 3), all, ignoreCase), 0);
        EXPECT_EQ(zero.compare("a", all, ignoreCase), 0);
        EXPECT_EQ(ConstString("a").compare(zero, all, ignoreCase), 0);
        EXPECT_EQ(zero.compare("ab", all, ignoreCase), -1);
        EXPECT_EQ(ConstString(u"ab").compare(ConstString(u"a\0c", 3), all, ignoreCase), 1);
    }
    EXPECT_FALSE(zero == ConstString("a\0c", 3));
    EXPECT_EQ(ConstString("\xFF").compare(ConstString(u"a")), -1);
    EXPECT_FALSE(ConstString("\xFF") == ConstString(u"\u00FF"));
}

template <typename Char>
void compareAtEveryPlace(Char larger) {
    for (size_t length = 1; length < 24; ++length)
        for (size_t place = 0; place < length; ++place) {
            SCOPED_TRACE(::testing::Message() << place << " of " << length);
            const std::basic_string<Char> text(length, static_cast<Char>(larger - 1));
            std::basic_string<Char> other(text);
            other[place] = larger;
            const ConstString a{std::basic_string_view<Char>(text)};
            const ConstString b{std::basic_string_view<Char>(other)};
            ASSERT_EQ(a.compare(b), -1);
            ASSERT_EQ(b.compare(a), 1);
            ASSERT_EQ(b.compare(ConstString(b, 0, static_cast<int32_t>(place))), 1);
            // Behind a zero in both nothing counts.
            std::basic_string<Char> ended(text);
            ended[place] = 0;
            std::basic_string<Char> longer(ended);
            longer += larger;
            ASSERT_EQ(ConstString{std::basic_string_view<Char>(ended)}.compare(
                          ConstString{std::basic_string_view<Char>(longer)}),
                      0);
        }
}

TEST(ConstString, ComparesAtEveryPlaceOfLongTexts) {
    compareAtEveryPlace<char>('\x81');
    compareAtEveryPlace<char16_t>(u'\u0100'); // with a byte 0 that is no character 0
}

TEST(ConstString, OrdersNumbersInNamesAsPeopleDo) {
    const CompareCase cases[] = {
        {"a2", "a10", all, true, -1},
        {"a1", "a1000", all, true, -3},
        {"a7", "a2", all, true, 5},
        {"a01", "a1", all, true, 1},
        {"a0001b", "a1c", all, true, 3},
        {"a1b2", "a01b1", all, true, -1},
        {"A2", "a10", all, false, 'A' - 'a'},
        {"A2", "a10", all, true, -1},
        {"B", "a", all, false, 'B' - 'a'},
        {"B", "a", all, true, 1},
        {"Take 9", "Take 10 (edit)", all, true, -1},
        {"a99999999999999999999998", "a99999999999999999999999", all, true, -1},
        {"a0", "a00", all, true, -1},
        {"a", "a1", all, true, -1},
        {"1a", "a1", all, true, '1' - 'a'},
        {"same 7", "same 7", all, true, 0},
        {"", "", all, true, 0},
        {"", "0", all, true, -1},
        {"\u00C41", "\u00E41", all, true, 0},
        {"\xC3\xB6", "\xC3\xA4", all, false, 0xF6 - 0xE4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.a << " with " << c.b);
        for (const auto& [a, b] : inAllWidths(c.a, c.b)) {
            EXPECT_EQ(a.compareNatural(b, !c.ignoreCase), c.expected);
            EXPECT_EQ(b.compareNatural(a, !c.ignoreCase), -c.expected);
        }
    }
    const ConstString empty("");
    EXPECT_EQ(ConstString::compareNatural(nullptr, nullptr), 0);
    EXPECT_EQ(ConstString::compareNatural(nullptr, &empty), -1);
    EXPECT_EQ(ConstString::compareNatural(&empty, nullptr), 1);
    EXPECT_EQ(ConstString::compareNatural(&empty, &empty), 0);
}

TEST(ConstString, EqualsACharacterOfEitherWidth) {
    const ConstString narrow("a\xC3\xA4");
    const ConstString wide(u"a\u00E4");
    for (const ConstString& text : {narrow, wide}) {
        EXPECT_TRUE(text.charEquals(0, 'a'));
        EXPECT_TRUE(text.charEquals(0, u'a'));
        EXPECT_FALSE(text.charEquals(0, 'b'));
        EXPECT_TRUE(text.charEquals(9, '\0'));
        EXPECT_TRUE(text.charEquals(text.length(), u'\0'));
        EXPECT_FALSE(text.charEquals(9, 'a'));
    }
    EXPECT_TRUE(wide.charEquals(1, u'\u00E4'));
    EXPECT_FALSE(narrow.charEquals(1, u'\u00E4'));
    EXPECT_FALSE(wide.charEquals(1, '\xE4'));
}

TEST(ConstString, FindsForwardAndBackward) {
    const struct {
        const char* text;
        const char* wanted;
        int32_t start, count;
        bool ignoreCase;
        int32_t forward, backward;
    } cases[] = {
        {"abcabc", "bc", 0, all, false, 1, none},  {"abcabc", "bc", 2, all, false, 4, 1},
        {"abcabc", "bc", 4, all, false, 4, 4},     {"abcabc", "bc", 5, all, false, none, 4},
        {"abcabc", "bc", 6, all, false, none, 4},  {"abcabc", "BC", 2, all, false, none, none},
        {"abcabc", "BC", 2, all, true, 4, 1},      {"abcabc", "bx", 0, 1, false, 1, none},
        {"abcabc", "", 0, all, false, none, none}, {"", "a", 0, all, false, none, none},
        {"ab", "abc", 0, all, true, none, none},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.wanted << " in " << c.text << " from " << c.start);
        for (const auto& [text, wanted] : inAllWidths(c.text, c.wanted)) {
            EXPECT_EQ(text.find(wanted, c.start, c.count, c.ignoreCase), c.forward);
            EXPECT_EQ(text.findLast(wanted, c.start, c.count, c.ignoreCase), c.backward);
        }
    }
    EXPECT_EQ(ConstString("abcabc").findLast("bc"), 4);
    EXPECT_EQ(ConstString(u"x\u00C4").findChar16(u'\u00E4', 0, true), 1);
    EXPECT_EQ(ConstString("x\xC3\x84").findChar16(u'\u00C4'), 1);
    EXPECT_EQ(ConstString("a.b.c").findLastChar8('.'), 3);
    EXPECT_EQ(ConstString(u"a.b.c").findLastChar8('.', 2), 1);
    EXPECT_EQ(ConstString(u"abc").findChar8('\xFF'), none);
}

TEST(ConstString, CountsPlacesInStoredCharacters) {
    // Bytes: u-umlaut 1 and 2, b 3, clef 4 to 7, u-umlaut 8 and 9, B 10.
    const ConstString bytes("a\u00FCb\U0001D11E\u00FCB");
    const struct {
        const char16_t* wanted;
        int32_t start;
        bool ignoreCase;
        int32_t forward, backward;
    } cases[] = {
        {u"b", 0, false, 3, none},
        {u"b", 10, true, 10, 10},
        {u"\u00FC", 1, false, 1, 1},
        {u"\u00FC", 2, false, 8, 1},
        {u"\u00FC", 9, false, none, 8},
        {u"\u00DCB", 3, true, 8, 1},
        {u"\U0001D11E\u00FC", 3, false, 4, none},
        {u"\U0001D11E", 5, false, none, 4},
        {u"b", 11, false, none, 3},
        {u"x", 0, false, none, none},
        {u"", 0, false, none, none},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << ConstString(c.wanted).toUtf8() << " from " << c.start);
        EXPECT_EQ(bytes.find(c.wanted, c.start, all, c.ignoreCase), c.forward);
        EXPECT_EQ(bytes.findLast(c.wanted, c.start, all, c.ignoreCase), c.backward);
        const String sameWidth(c.wanted);
        sameWidth.toNarrow();
        EXPECT_EQ(bytes.find(sameWidth, c.start, all, c.ignoreCase), c.forward);
        EXPECT_EQ(bytes.findLast(sameWidth, c.start, all, c.ignoreCase), c.backward);
    }
    EXPECT_EQ(bytes.findLast(u"\u00FC"), 8);
    EXPECT_EQ(ConstString(u"\u00FC\U0001D11Eb").find("b"), 3);
    EXPECT_EQ(ConstString("b\xFF").find(u"b"), none);
    // Bytes that are no text don't count as Latin letters.
    EXPECT_EQ(ConstString("\xC3\xA4").findChar8('\xE4', 0, true), none);
    EXPECT_EQ(ConstString("\xEF\xBF\xBD").findChar16(u'\xD800'), none);

    EXPECT_EQ(bytes.firstDifference(u"a\u00FCb\U0001D11E\u00FCX"), 10);
    EXPECT_EQ(bytes.firstDifference(u"a\u00FCb\U0001D11E"), 8);
    EXPECT_EQ(bytes.firstDifference(u"A\u00DCb\U0001D11E\u00FCbc", true), 11);
    EXPECT_EQ(bytes.firstDifference(u"a\u00FCb\U0001D11E\u00FCB"), none);
    EXPECT_EQ(ConstString(u"\u00FC\u00FCx").firstDifference("\xC3\xBC\xC3\xBCy"), 2);
}

TEST(ConstString, FindsAtEveryPlaceOfLongTexts) {
    for (int32_t length = 1; length < 40; ++length)
        for (int32_t place = 0; place < length; ++place) {
            std::u16string text(static_cast<size_t>(length), u'a');
            text[static_cast<size_t>(place)] = u'\u0161'; // its low byte is that of "a"
            const ConstString whole{std::u16string_view(text)};
            ASSERT_EQ(whole.findChar16(u'\u0161'), place) << "of " << length;
            ASSERT_EQ(whole.find(u"\u0161a"), place + 1 < length ? place : none) << "of " << length;
            ASSERT_EQ(whole.find(u"a", place), place + 1 < length ? place + 1 : none) << "of " << length;
        }
}

TEST(ConstString, ComparesItsEnds) {
    for (const auto& [text, end] : inAllWidths("Level.png", ".PNG")) {
        EXPECT_TRUE(text.endsWith(end, true));
        EXPECT_FALSE(text.endsWith(end));
        EXPECT_FALSE(text.startsWith(end, true));
        EXPECT_TRUE(text.contains(end, true));
        EXPECT_FALSE(text.contains(end));
        EXPECT_FALSE(end.endsWith(text));
    }
    EXPECT_TRUE(ConstString("a").startsWith(u""));
    EXPECT_TRUE(ConstString("").endsWith(""));
    EXPECT_FALSE(ConstString("").startsWith("a"));
    EXPECT_TRUE(ConstString(u"\u00C4b").startsWith("\xC3\xA4", true));
    // The Kelvin sign is three bytes long, its lower case one.
    EXPECT_FALSE(ConstString("k").startsWith("\xE2\x84\xAA", true));
    EXPECT_FALSE(ConstString("k").endsWith("\xE2\x84\xAA", true));
    EXPECT_TRUE(ConstString("\xE2\x84\xAA!").startsWith("k", true));
    EXPECT_TRUE(ConstString("x\0y", 3).endsWith(ConstString("\0y", 2)));
    EXPECT_FALSE(ConstString("x\0y", 3).endsWith(ConstString("\0Z", 2), true));
}

TEST(ConstString, TellsTheFirstDifference) {
    struct Case {
        const char* a;
        const char* b;
        bool ignoreCase;
        int32_t expected;
    };
    for (const auto& c : {Case{"abc", "abc", false, none}, Case{"abc", "abd", false, 2},
                          Case{"abc", "ab", false, 2}, Case{"", "a", false, 0}, Case{"", "", false, none},
                          Case{"aBc", "abc", false, 1}, Case{"aBc", "abd", true, 2}}) {
        SCOPED_TRACE(::testing::Message() << c.a << " " << c.b);
        for (const auto& [a, b] : inAllWidths(c.a, c.b))
            EXPECT_EQ(a.firstDifference(b, c.ignoreCase), c.expected);
    }
    EXPECT_EQ(ConstString("\xFF").firstDifference(u"a"), none);
}

TEST(ConstString, CopiesParts) {
    String target("untouched");
    EXPECT_FALSE(ConstString("abc").substring(target, 3));
    EXPECT_STREQ(target.text8(), "untouched");
    EXPECT_TRUE(ConstString(u"abc").substring(target, 1, 100));
    EXPECT_EQ(shown(target), "bc wide");
    EXPECT_TRUE(target.substring(target, 1));
    EXPECT_EQ(shown(target), "c wide");

    char narrow[8] = "xxxxxxx";
    EXPECT_EQ(ConstString(u"a\u00E4b").extract8(narrow, 1, 2), 2);
    EXPECT_STREQ(narrow, "\xC3\xA4");
    char16_t wide[8];
    EXPECT_EQ(ConstString("a\u00E4b").extract16(wide, 1), 2);
    EXPECT_EQ(std::u16string(wide), u"\u00E4b");
    EXPECT_EQ(ConstString("abc").extract16(wide, 5), 0);
    EXPECT_EQ(wide[0], u'\0');
    EXPECT_EQ(ConstString("abc").extract8(nullptr), 0);
}

TEST(ConstString, HashesItsStoredCharacters) {
    // ((0 << 6) + 'a') % 50 = 47, ((47 << 6) + 'b') % 50 = 6
    EXPECT_EQ(ConstString("ab").hashCode(50), 6u);
    EXPECT_EQ(ConstString(u"ab").hashCode(50), 6u);
    EXPECT_EQ(ConstString("").hashCode(50), 0u);
    // 8-bit characters are signed; -28 modulo 50, as the buckets of the class factory count.
    EXPECT_EQ(ConstString("\xE4").hashCode(50), 22u);
    EXPECT_EQ(ConstString("a\xE4").hashCode(50), (47u * 64 - 28) % 50);
    EXPECT_EQ(ConstString(u"\u00E4").hashCode(50), 228u % 50);
    EXPECT_EQ(ConstString("ab").hashCode(0), 0u);
}

/// A remainder after each character, as the hash is defined.
template <typename Char>
uint32_t foldedHash(std::basic_string_view<Char> text, uint32_t size) {
    int64_t hash = 0;
    for (const Char c : text)
        hash = (hash * 64 + (sizeof c == 1 ? static_cast<signed char>(c) : static_cast<int32_t>(c))) % size;
    return static_cast<uint32_t>(hash < 0 ? hash + size : hash);
}

TEST(ConstString, HashesLongTextsOfAnyCharacters) {
    for (const char extreme : {'\x7F', '\xFF', '\x80', 'a'})
        for (size_t length = 1; length < 40; ++length) {
            const std::string narrow(length, extreme);
            const std::u16string wide(length, static_cast<char16_t>(0xFF00 | static_cast<uint8_t>(extreme)));
            for (const uint32_t size : {1u, 2u, 10u, 50u, 65521u, 100'000u, 0x80000000u, UINT32_MAX}) {
                EXPECT_EQ(ConstString(narrow.c_str()).hashCode(size), foldedHash<char>(narrow, size))
                    << length << " in " << size;
                EXPECT_EQ(ConstString(wide.c_str()).hashCode(size), foldedHash<char16_t>(wide, size))
                    << length << " in " << size;
            }
        }
}

} // namespace
} // namespace qorl
