#include "foundation/text/String.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qorl {
namespace {

constexpr int32_t all = ConstString::all;
constexpr int32_t none = ConstString::notFound;

/// The texts of a test in each pair of widths.
std::vector<std::pair<String, String>> inAllWidths(const char* a, const char* b) {
    std::vector<std::pair<String, String>> pairs;
    for (int widths = 0; widths < 4; ++widths) {
        auto& [first, second] = pairs.emplace_back(String(a), String(b));
        if (widths & 1)
            first.toWide();
        if (widths & 2)
            second.toWide();
    }
    return pairs;
}

std::string shown(const String& text) {
    return text.toUtf8() + (text.isWide() ? " wide" : " narrow");
}

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

TEST(String, StartsWideAndNeverGivesNull) {
    const String text;
    EXPECT_TRUE(text.isWide());
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(std::u16string(text.text16()), u"");
    EXPECT_STREQ(text.text8(), "");
}

TEST(String, ConvertsInPlaceWhenAskedForTheOtherWidth) {
    const String text("gr\xC3\xB6\xC3\x9F"
                      "e \xF0\x9D\x84\x9E");
    EXPECT_EQ(text.size(), 12);
    EXPECT_EQ(std::u16string(text.text16()), u"gr\u00F6\u00DFe \U0001D11E");
    EXPECT_TRUE(text.isWide());
    EXPECT_EQ(text.size(), 8);
    EXPECT_EQ(text.char16At(8), u'\0');
    EXPECT_STREQ(text.text8(), "gr\xC3\xB6\xC3\x9F"
                               "e \xF0\x9D\x84\x9E");
    EXPECT_FALSE(text.isWide());
}

TEST(String, RefusesBytesThatAreNoText) {
    for (const char* bytes : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "ab\x80"}) {
        SCOPED_TRACE(bytes);
        String text(bytes);
        EXPECT_FALSE(text.toWide());
        EXPECT_FALSE(text.isWide());
        EXPECT_EQ(std::u16string(text.text16()), u"");
        EXPECT_STREQ(text.text8(), bytes);
        EXPECT_FALSE(text.toNarrow(1252));
        EXPECT_STREQ(text.text8(), bytes);
    }
    const char16_t lone[] = {u'a', 0xD800, u'b', 0xDC00};
    String broken(lone, 4);
    EXPECT_TRUE(broken.toNarrow());
    EXPECT_STREQ(broken.text8(), "a\xEF\xBF\xBD"
                                 "b\xEF\xBF\xBD");
}

struct CodePageCase {
    uint32_t codePage;
    const char* bytes;
    const char16_t* text; ///< null when the bytes are refused
};

TEST(String, ReadsAndWritesCodePages) {
    const CodePageCase cases[] = {
        {1252, "\x80uro", u"\u20ACuro"},
        {1252, "a\x81", nullptr},
        {1252, "\x8D", nullptr},
        {1252, "\x9D", nullptr},
        {1252, "\xE4", u"\u00E4"},
        {1251, "\xC4\xE0", u"\u0414\u0430"},
        {437, "\x84", u"\u00E4"},
        {932, "\x83\x65", u"\u30C6"},
        {932, "\x1A|\x1C|\x7F", u"\u001A|\u001C|\u007F"},
        {932, "a\xFF", nullptr},
        {932, "a\xA0", nullptr},
        {932, "\x83", nullptr},
        {28591, "\xE4", u"\u00E4"},
        {10000, "\x8A", u"\u00E4"},
        {65001, "\xC3\xA4", u"\u00E4"},
        {4711, "a", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "code page " << c.codePage << ", bytes " << c.bytes);
        String text(c.bytes);
        EXPECT_EQ(text.toWide(c.codePage), c.text != nullptr);
        if (!c.text) {
            EXPECT_EQ(shown(text), std::string(c.bytes) + " narrow");
            continue;
        }
        EXPECT_EQ(std::u16string(text.view16()), c.text);
        EXPECT_TRUE(text.toNarrow(c.codePage));
        EXPECT_EQ(std::string(text.view8()), c.bytes);
    }
}

TEST(String, PutsASubstituteForWhatACodePageLacks) {
    for (const uint32_t codePage : {1252u, 932u, 437u}) {
        SCOPED_TRACE(codePage);
        String text(u"a\u0F00b\u0081");
        EXPECT_TRUE(text.toNarrow(codePage));
        EXPECT_EQ(std::string(text.view8()).substr(0, 3), "a?b");
    }
    String hole(u"\u0081");
    hole.toNarrow(1252);
    EXPECT_STREQ(hole.text8(), "?");
    String unknown(u"a");
    EXPECT_FALSE(unknown.toNarrow(4711));
    EXPECT_TRUE(unknown.isWide());
}

TEST(String, KeepsItsWidthWhenTextIsJoined) {
    struct Case {
        const char* name;
        String target;
        ConstString source;
        const char* expected;
    };
    const Case cases[] = {
        {"narrow to narrow", String("pan"), ConstString("ner"), "panner narrow"},
        {"wide to narrow", String("pan"), ConstString(u"n\u00E4r"), "pann\xC3\xA4r narrow"},
        {"narrow to wide", String(u"pan"), ConstString("n\xC3\xA4r"), "pann\xC3\xA4r wide"},
        {"bad bytes to wide", String(u"pan"), ConstString("\xFF"), "pan wide"},
        {"narrow to empty", String(), ConstString("pan"), "pan narrow"},
        {"wide to empty", String("", 0), ConstString(u"pan"), "pan wide"},
        {"nothing", String("pan"), ConstString(), "pan narrow"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        String text(c.target);
        text.append(c.source);
        EXPECT_EQ(shown(text), c.expected);
    }
    String self("echo");
    self.append(self);
    EXPECT_EQ(shown(self), "echo narrow");
    self.append(ConstString(self, 1, 2));
    EXPECT_EQ(shown(self), "echoch narrow");
    self.append("12345", 2);
    EXPECT_EQ(shown(self), "echoch12 narrow");
}

TEST(String, InsertsReplacesAndRemovesAtTheEdges) {
    struct Case {
        const char* name;
        void (*change)(String&);
        const char* expected;
    };
    const Case cases[] = {
        {"insert at 0", [](String& s) { s.insert(0, "XY"); }, "XYabcde"},
        {"insert inside", [](String& s) { s.insert(2, u"XY"); }, "abXYcde"},
        {"insert past the end", [](String& s) { s.insert(99, "XY"); }, "abcdeXY"},
        {"insert a part of it", [](String& s) { s.insert(1, ConstString(s, 3, 2)); }, "adebcde"},
        {"insert a few", [](String& s) { s.insert(5, "XYZ", 1); }, "abcdeX"},
        {"replace longer", [](String& s) { s.replace(1, 1, "XYZ"); }, "aXYZcde"},
        {"replace shorter", [](String& s) { s.replace(1, 3, u"-"); }, "a-e"},
        {"replace past the end", [](String& s) { s.replace(5, 2, "X"); }, "abcdeX"},
        {"replace all", [](String& s) { s.replace(0, all, ""); }, ""},
        {"remove over the end", [](String& s) { s.remove(2, 100); }, "ab"},
        {"remove the rest", [](String& s) { s.remove(3, -1); }, "abc"},
        {"remove nothing", [](String& s) { s.remove(2, 0); }, "abcde"},
        {"remove past the end", [](String& s) { s.remove(5, 1); }, "abcde"},
        {"remove the middle", [](String& s) { s.remove(1, 3); }, "ae"},
        {"remove all", [](String& s) { s.remove(0); }, ""},
    };
    for (const auto& c : cases) {
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message() << c.name << (wide ? ", wide" : ", narrow"));
            String text("abcde");
            if (wide)
                text.toWide();
            c.change(text);
            EXPECT_EQ(text.toUtf8(), c.expected);
            EXPECT_EQ(std::u16string(text.text16()).size(), static_cast<size_t>(text.size()));
        }
    }
}

TEST(String, TakesTheWidthOfWhatIsAssigned) {
    String text("narrow");
    text.assign16(u"wide text", 4);
    EXPECT_EQ(shown(text), "wide wide");
    text.assign8("measured", 100, true);
    EXPECT_EQ(shown(text), "measured narrow");
    text.assign8("measured", 3, true);
    EXPECT_EQ(shown(text), "mea narrow");
    text.assign8(text.text8(), 1);
    EXPECT_EQ(shown(text), "mea narrow");
    text.assign(ConstString(text, 1, 2));
    EXPECT_EQ(shown(text), "ea narrow");
    text.assign8(nullptr);
    EXPECT_TRUE(text.isEmpty());
    String moved = String(u"moved");
    text = std::move(moved);
    EXPECT_EQ(shown(text), "moved wide");
    EXPECT_TRUE(moved.isEmpty()); // NOLINT(bugprone-use-after-move): left usable
    moved.append("again");
    EXPECT_EQ(shown(moved), "again narrow");
}

TEST(String, TakesOverABlock) {
    auto* block = static_cast<char16_t*>(std::malloc(4 * sizeof(char16_t)));
    std::u16string_view(u"abc\0", 4).copy(block, 4);
    String text("old");
    text.take(block, true);
    EXPECT_EQ(text.data(), block);
    EXPECT_EQ(shown(text), "abc wide");
    text.take(nullptr, false);
    EXPECT_EQ(shown(text), " narrow");
}

TEST(String, MakesRoomWithoutChangingItsLength) {
    String text("ab");
    EXPECT_TRUE(text.resize(6, false, true));
    EXPECT_EQ(text.size(), 2);
    text.measure();
    EXPECT_EQ(shown(text), "ab     narrow");
    EXPECT_TRUE(text.resize(3, true));
    EXPECT_EQ(text.size(), 3);
    EXPECT_TRUE(text.isWide());
    text.buffer16()[0] = u'X';
    text.measure();
    EXPECT_EQ(shown(text), "Xb  wide");
    EXPECT_TRUE(text.resize(0, false));
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_FALSE(text.isWide());
}

TEST(String, ReplacesEachOccurrenceOnce) {
    struct Case {
        const char* text;
        const char* old;
        const char* with;
        bool every;
        bool ignoreCase;
        int32_t count;
        const char* expected;
    };
    const Case cases[] = {
        {"a-b-c", "-", "--", true, false, 2, "a--b--c"},
        {"a-b-c", "-", "", true, false, 2, "abc"},
        {"a-b-c", "-", "+", false, false, 1, "a+b-c"},
        {"aaa", "aa", "b", true, false, 1, "ba"},
        {"AbaB", "ab", "x", true, true, 2, "xx"},
        {"AbaB", "ab", "x", true, false, 0, "AbaB"},
        {"abc", "", "x", true, false, 0, "abc"},
        {"", "a", "x", true, false, 0, ""},
        {"abc", "abcd", "x", true, false, 0, "abc"},
        {"\xC3\x84"
         "b",
         "\xC3\xA4", "ae", true, true, 1, "aeb"},
        // The Kelvin sign is three bytes long, its lower case one.
        {"5 \xE2\x84\xAA!", "k", "Kelvin", true, true, 1, "5 Kelvin!"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.text << " : " << c.old << " -> " << c.with);
        String narrow(c.text);
        EXPECT_EQ(narrow.replaceAll8(c.old, c.with, c.every, c.ignoreCase), c.count);
        EXPECT_EQ(shown(narrow), std::string(c.expected) + " narrow");
        String wide(c.text);
        wide.toWide();
        const String old(c.old);
        const String with(c.with);
        EXPECT_EQ(wide.replaceAll16(old.text16(), with.text16(), c.every, c.ignoreCase), c.count);
        EXPECT_EQ(wide.toUtf8(), c.expected);
    }
    String text("abc");
    EXPECT_EQ(text.replaceAll8(nullptr, "x"), 0);
    EXPECT_EQ(text.replaceAll16(u"b", u"\u00E4"), 1);
    EXPECT_EQ(shown(text), "a\xC3\xA4"
                           "c narrow");
}

TEST(String, ChangesCaseInItsWidth) {
    for (const bool wide : {false, true}) {
        String text("\xC3\x84x \xCF\xA0 \xF0\x90\x90\x80 \xC4\xB0");
        if (wide)
            text.toWide();
        text.toLower();
        EXPECT_EQ(text.toUtf8(), "\xC3\xA4x \xCF\xA1 \xF0\x90\x90\xA8 i");
        EXPECT_EQ(text.isWide(), wide);
        text.toUpper();
        EXPECT_EQ(text.toUtf8(), "\xC3\x84X \xCF\xA0 \xF0\x90\x90\x80 I");
    }
}

TEST(String, TrimsBothEndsByMode) {
    struct Case {
        const char16_t* text;
        int32_t mode;
        const char* expected;
    };
    const Case cases[] = {
        {u"  a b  ", String::whiteSpace, "a b"},
        {u"\u00A0a\u3000", String::whiteSpace, "a"},
        {u"12ab34cd56", String::nonLetters, "ab34cd"},
        {u"12ab", 7, "12ab"},
        {u"-12ab.", String::nonLettersAndDigits, "12ab"},
        {u"   ", String::whiteSpace, ""},
        {u"", String::whiteSpace, ""},
        {u"1\u00E4\u00DF2", String::nonLetters, "\xC3\xA4\xC3\x9F"},
    };
    for (const auto& c : cases) {
        String text(c.text);
        const int32_t before = text.size();
        EXPECT_EQ(text.trim(c.mode), ConstString(c.expected).toUtf16().size() != static_cast<size_t>(before));
        EXPECT_EQ(text.toUtf8(), c.expected);
    }
    // 16-bit white space has no control characters, 8-bit white space has.
    String tabbed(u"\ta");
    EXPECT_FALSE(tabbed.trim());
    tabbed.toNarrow();
    EXPECT_TRUE(tabbed.trim());
    EXPECT_STREQ(tabbed.text8(), "a");
}

TEST(String, KnowsComposedText) {
    EXPECT_TRUE(ConstString(u"Gr\u00F6\u00DFe").isNormalized());
    EXPECT_FALSE(ConstString(u"Gro\u0308\u00DFe").isNormalized());
    EXPECT_FALSE(ConstString("Gro\xCC\x88").isNormalized());
    EXPECT_TRUE(ConstString(u"").isNormalized());
    EXPECT_TRUE(ConstString(u"\u007F").isAscii());
    EXPECT_FALSE(ConstString(u"1234\u0080").isAscii());
    EXPECT_FALSE(ConstString("12345678\x80").isAscii());
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
    EXPECT_EQ(ConstString("\xFF").compare(ConstString(u"a")), -1);
    EXPECT_FALSE(ConstString("\xFF") == ConstString(u"\u00FF"));
}

TEST(ConstString, OrdersNumbersInNamesAsPeopleDo) {
    const CompareCase cases[] = {
        {"a2", "a10", all, true, -1},
        {"a01", "a1", all, true, 1},
        {"a1b2", "a01b1", all, true, -1},
        {"A2", "a10", all, false, -1},
        {"B", "a", all, false, -1},
        {"B", "a", all, true, 1},
        {"Take 9", "Take 10 (edit)", all, true, -1},
        {"a99999999999999999999998", "a99999999999999999999999", all, true, -1},
        {"a0", "a00", all, true, -1},
        {"a", "a1", all, true, -1},
        {"1a", "a1", all, true, -1},
        {"same 7", "same 7", all, true, 0},
        {"", "", all, true, 0},
        {"", "0", all, true, -1},
        {"\xC3\x84"
         "1",
         "\xC3\xA4"
         "1",
         all, true, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.a << " with " << c.b);
        for (const auto& [a, b] : inAllWidths(c.a, c.b)) {
            EXPECT_EQ(a.compareNatural(b, !c.ignoreCase), c.expected);
            EXPECT_EQ(b.compareNatural(a, !c.ignoreCase), -c.expected);
        }
    }
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

struct FindCase {
    const char* text;
    const char* wanted;
    int32_t start;
    int32_t count;
    bool ignoreCase;
    int32_t forward;
    int32_t backward;
};

TEST(ConstString, FindsForwardAndBackward) {
    const FindCase cases[] = {
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

TEST(ConstString, FindsAtEveryPlaceOfLongTexts) {
    for (int32_t length = 1; length < 40; ++length) {
        for (int32_t place = 0; place < length; ++place) {
            std::u16string text(static_cast<size_t>(length), u'a');
            text[static_cast<size_t>(place)] = u'\u0161'; // its low byte is that of "a"
            const ConstString whole{std::u16string_view(text)};
            ASSERT_EQ(whole.findChar16(u'\u0161'), place) << "of " << length;
            ASSERT_EQ(whole.find(u"\u0161a"), place + 1 < length ? place : none) << "of " << length;
            ASSERT_EQ(whole.find(u"a", place), place + 1 < length ? place + 1 : none) << "of " << length;
        }
    }
}

TEST(String, ConvertsTextsOfEveryLength) {
    for (size_t length = 0; length < 70; ++length) {
        for (size_t place = 0; place <= length; ++place) {
            std::string bytes(length, 'x');
            std::u16string wide(length, u'x');
            bytes.insert(place, "\xE2\x82\xAC");
            wide.insert(place, 1, u'\u20AC');
            const String text{std::string_view(bytes)};
            ASSERT_TRUE(text == ConstString(std::u16string_view(wide)));
            ASSERT_FALSE(text == ConstString(std::u16string_view(wide + u"x")));
            ASSERT_FALSE(text.isAscii());
            ASSERT_EQ(std::u16string(text.text16()), wide);
            ASSERT_FALSE(text.isAscii());
            ASSERT_EQ(std::string(text.text8()), bytes);
        }
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
    EXPECT_EQ(ConstString("a\xC3\xA4"
                          "b")
                  .extract16(wide, 1),
              2);
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
    // 8-bit characters are signed: 2^32 - 28 modulo 50
    EXPECT_EQ(ConstString("\xE4").hashCode(50), (0u - 28u) % 50);
    EXPECT_EQ(ConstString(u"\u00E4").hashCode(50), 228u % 50);
    EXPECT_EQ(ConstString("ab").hashCode(0), 0u);
}

} // namespace
} // namespace qorl
