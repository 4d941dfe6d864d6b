#include "foundation/text/TextWidths.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

namespace qorl {
namespace {

constexpr int32_t all = ConstString::all;

/// A text whose foreign bit a test sets and looks at.
template <typename Text>
class Marked : public Text {
public:
    explicit Marked(const char16_t* text) : Text(text) { this->word_ |= Text::reservedFlag; }
    using Text::operator=;
    bool isMarked() const { return (this->word_ & Text::reservedFlag) != 0; }
};

TEST(String, LeavesTheForeignBitAsItStands) {
    const struct {
        const char* name;
        void (*change)(Marked<String>&);
    } cases[] = {
        {"assign", [](auto& s) { s = ConstString("ab"); }},
        {"move", [](auto& s) { s = String("ab"); }},
        {"narrow", [](auto& s) { s.text8(); }},
        {"append", [](auto& s) { s.append("ab"); }},
        {"remove", [](auto& s) { s.remove(1); }},
        {"resize", [](auto& s) { s.resize(9, false); }},
        {"clear", [](auto& s) { s.clear(); }},
        {"measure", [](auto& s) { s.measure(); }},
        {"print", [](auto& s) { s.printf8("%0500d", 1); }},
        {"lower", [](auto& s) { s.toLower(); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Marked<String> text(u"A text");
        c.change(text);
        EXPECT_TRUE(text.isMarked());
    }
    Marked<ConstString> view(u"old");
    view = ConstString("new");
    EXPECT_TRUE(view.isMarked());
    EXPECT_EQ(view, ConstString("new"));
}

TEST(String, StartsWideAndNeverGivesNull) {
    const String text;
    EXPECT_TRUE(text.isWide());
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(std::u16string(text.text16()), u"");
    EXPECT_STREQ(text.text8(), "");
}

TEST(String, ConvertsInPlaceWhenAskedForTheOtherWidth) {
    const String text("gr\u00F6\u00DFe \U0001D11E");
    EXPECT_EQ(text.size(), 12);
    EXPECT_EQ(std::u16string(text.text16()), u"gr\u00F6\u00DFe \U0001D11E");
    EXPECT_TRUE(text.isWide());
    EXPECT_EQ(text.size(), 8);
    EXPECT_EQ(text.char16At(8), u'\0');
    EXPECT_STREQ(text.text8(), "gr\u00F6\u00DFe \U0001D11E");
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
    String unknown("gr\xC3\xBCn");
    EXPECT_FALSE(unknown.toNarrow(4711));
    EXPECT_EQ(shown(unknown), "gr\xC3\xBCn narrow");
    EXPECT_TRUE(unknown.toNarrow(1252));
    EXPECT_EQ(std::string(unknown.view8()), "gr\xFCn");
    const char16_t lone[] = {u'a', 0xD800, u'b', 0xDC00};
    String broken(lone, 4);
    EXPECT_TRUE(broken.toNarrow());
    EXPECT_STREQ(broken.text8(), "a\uFFFDb\uFFFD");
}

TEST(String, ReadsAndWritesCodePages) {
    const struct {
        uint32_t codePage;
        const char* bytes;
        const char16_t* text; ///< null when the bytes are refused
    } cases[] = {
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

TEST(String, IsMeasuredAgainWhenItIsMadeWide) {
    for (const uint32_t codePage : {0u, 65001u, 1252u}) {
        SCOPED_TRACE(codePage);
        String text("ab\0cd", 5);
        EXPECT_TRUE(text.toWide(codePage));
        EXPECT_EQ(shown(text), "ab wide");
        String invalidBehind("ab\0\x81", 4);
        EXPECT_FALSE(invalidBehind.toWide(codePage));
        EXPECT_EQ(invalidBehind.size(), 4);
    }
    String first("\0ab", 3);
    EXPECT_EQ(std::u16string(first.text16()), u"");
    EXPECT_EQ(shown(first), " wide");
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
    const struct {
        const char* name;
        String target;
        ConstString source;
        const char* expected;
    } cases[] = {
        {"narrow to narrow", String("pan"), ConstString("ner"), "panner narrow"},
        {"wide to narrow", String("pan"), ConstString(u"n\u00E4r"), "pann\xC3\xA4r narrow"},
        {"narrow to wide", String(u"pan"), ConstString("n\xC3\xA4r"), "pann\xC3\xA4r wide"},
        {"bad bytes to wide", String(u"pan"), ConstString("\xFF"), "pan wide"},
        {"narrow to empty", String(), ConstString("pan"), "pan narrow"},
        {"wide to empty", String("", 0), ConstString(u"pan"), "pan wide"},
        {"nothing", String("pan"), ConstString(), "pan narrow"},
        {"nothing to empty", String("", 0), ConstString(u""), " wide"},
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
    self.append(ConstString(self, 0, 3));
    EXPECT_EQ(shown(self), "echoch12ech narrow");
    self.append8(self.text8());
    self.insert(99, self);
    self.replace(99, 1, self);
    EXPECT_EQ(shown(self), "echoch12ech narrow");
}

TEST(String, InsertsReplacesAndRemovesAtTheEdges) {
    const struct {
        const char* name;
        void (*change)(String&);
        const char* expected;
    } cases[] = {
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
    for (const auto& c : cases)
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(::testing::Message() << c.name << (wide ? ", wide" : ", narrow"));
            String text = inWidth("abcde", wide);
            c.change(text);
            EXPECT_EQ(text.toUtf8(), c.expected);
            EXPECT_EQ(std::u16string(text.text16()).size(), static_cast<size_t>(text.size()));
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
    text.take(block, true);
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
    EXPECT_EQ(text.size(), 6);
    EXPECT_TRUE(text.isWide());
    text.buffer16()[0] = u'X';
    text.measure();
    EXPECT_EQ(shown(text), "Xb  wide");
    EXPECT_TRUE(text.resize(0, false));
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_FALSE(text.isWide());
    String invalid("ab\xFF");
    EXPECT_FALSE(invalid.resize(9, true));
    EXPECT_EQ(shown(invalid), "ab\xFF narrow");
    String wide(u"\u00E4\u00F6");
    EXPECT_TRUE(wide.resize(6, false, true));
    wide.measure();
    EXPECT_EQ(shown(wide), "\xC3\xA4\xC3\xB6   narrow");
}

TEST(String, GivesBackTheRoomThatItNoLongerNeeds) {
    for (const bool wide : {false, true}) {
        String text(std::string(5000, 'x'));
        EXPECT_TRUE(text.resize(5000, wide));
        EXPECT_TRUE(text.resize(3, wide));
        EXPECT_LT(malloc_usable_size(const_cast<void*>(text.data())), 100u);
        text.measure();
        EXPECT_EQ(shown(text), wide ? "xxx wide" : "xxx narrow");
    }
}

TEST(String, ReplacesEachOccurrenceOnce) {
    const struct {
        const char* text;
        const char* old;
        const char* with;
        bool every, ignoreCase;
        int32_t count;
        const char* expected;
    } cases[] = {
        {"a-b-c", "-", "--", true, false, 2, "a--b--c"},
        {"a-b-c", "-", "", true, false, 2, "abc"},
        {"a-b-c", "-", "+", false, false, 1, "a+b-c"},
        {"aaa", "aa", "b", true, false, 1, "ba"},
        {"AbaB", "ab", "x", true, true, 2, "xx"},
        {"AbaB", "ab", "x", true, false, 0, "AbaB"},
        {"abc", "", "x", true, false, 0, "abc"},
        {"", "a", "x", true, false, 0, ""},
        {"abc", "abcd", "x", true, false, 0, "abc"},
        {"\u00C4b", "\xC3\xA4", "ae", true, true, 1, "aeb"},
        // The Kelvin sign is three bytes long, its lower case one.
        {"5 \xE2\x84\xAA!", "k", "Kelvin", true, true, 1, "5 Kelvin!"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.text << " : " << c.old << " -> " << c.with);
        String narrow(c.text);
        EXPECT_EQ(narrow.replaceAll8(c.old, c.with, c.every, c.ignoreCase), c.count);
        EXPECT_EQ(shown(narrow), std::string(c.expected) + " narrow");
        String wide = inWidth(c.text, true);
        EXPECT_EQ(wide.replaceAll16(String(c.old).text16(), String(c.with).text16(), c.every, c.ignoreCase),
                  c.count);
        EXPECT_EQ(wide.toUtf8(), c.expected);
    }
    String text("abc");
    EXPECT_EQ(text.replaceAll8(nullptr, "x"), 0);
    EXPECT_EQ(text.replaceAll16(u"b", u"\u00E4"), 1);
    EXPECT_EQ(shown(text), "a\u00E4c narrow");
}

TEST(String, ChangesCaseInItsWidth) {
    for (const bool wide : {false, true}) {
        String text = inWidth("\xC3\x84x \xCF\xA0 \xF0\x90\x90\x80 \xC4\xB0", wide);
        text.toLower();
        EXPECT_EQ(text.toUtf8(), "\xC3\xA4x \xCF\xA1 \xF0\x90\x90\xA8 i");
        EXPECT_EQ(text.isWide(), wide);
        text.toUpper();
        EXPECT_EQ(text.toUtf8(), "\xC3\x84X \xCF\xA0 \xF0\x90\x90\x80 I");
    }
}

TEST(String, KeepsInvalidBytesWhenItChangesCase) {
    String text("\xC3\x84\xFF"
                "B\xC3 \xE2\x84\xAA\xC4");
    text.toLower();
    EXPECT_EQ(shown(text), "\xC3\xA4\xFF"
                           "b\xC3 k\xC4 narrow");
    text.toUpper();
    EXPECT_EQ(shown(text), "\xC3\x84\xFF"
                           "B\xC3 K\xC4 narrow");
    String zero("A\0\xC3\x84", 4);
    zero.toLower();
    EXPECT_EQ(zero.view8(), std::string_view("a\0\xC3\xA4", 4));
}

TEST(String, TrimsBothEndsByMode) {
    const struct {
        const char16_t* text;
        int32_t mode;
        const char* expected;
    } cases[] = {
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

TEST(String, ConvertsTextsOfEveryLength) {
    for (size_t length = 0; length < 70; ++length)
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

} // namespace
} // namespace qorl
