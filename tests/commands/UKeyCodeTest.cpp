#include "commands/UKeyCode.h"

#include <gtest/gtest.h>

namespace qorl {

namespace {

TEST(UKeyCode, NormalisesTwoSpellingsOfOneKeyToOne) {
    const struct {
        UKeyCode given, expected;
    } cases[] = {
        {{u'A', 0, 0}, {0, 145, 0}},
        {{u'Z', 0, UKeyCode::ctrl}, {0, 170, UKeyCode::ctrl}},
        {{u'0', 0, 0}, {0, 128, 0}},
        {{u'9', 0, UKeyCode::shift}, {0, 137, UKeyCode::shift}},
        {{u' ', 0, 0}, {0, Key::space, 0}},
        {{u'a', 0, 0}, {u'a', 0, 0}},
        {{u'\r', Key::returnKey, 0}, {0, Key::returnKey, 0}},
        {{u'!', 0, UKeyCode::shift}, {u'!', 0, 0}},
        {{u'!', 0, UKeyCode::shift | UKeyCode::alt}, {u'!', 0, UKeyCode::shift | UKeyCode::alt}},
        {{u'\u00C4', 0, UKeyCode::shift}, {u'\u00C4', 0, 0}},
        {{u'\u00E4', 0, UKeyCode::shift}, {u'\u00E4', 0, UKeyCode::shift}},
        {{0, Key::f1, UKeyCode::shift}, {0, Key::f1, UKeyCode::shift}},
        {{0, 0, UKeyCode::shift}, {0, 0, UKeyCode::shift}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given.hash());
        EXPECT_EQ(c.given.normalised(), c.expected);
        EXPECT_EQ(c.expected.normalised(), c.expected) << "normalising twice changes the key";
    }
}

TEST(UKeyCode, HashesAsTheKeyFilesDo) {
    EXPECT_EQ((UKeyCode{0, Key::returnKey, 0}.hash()), 0x40000U);
    EXPECT_EQ((UKeyCode{0x1234, 0xAB, 8}.hash()), 0x08AB1234U);
    EXPECT_EQ(UKeyCode::fromHash(0x08AB1234U), (UKeyCode{0x1234, 0xAB, 8}));
    EXPECT_EQ(UKeyCode::fromHash(0x60000).virtualKey, Key::escape);
}

TEST(UKeyCode, ReadsAndWritesText) {
    const struct {
        const char* text;
        UKeyCode key;
        const char* written; ///< null: as `text`
    } cases[] = {
        {"Z", {0, 170, 0}, nullptr},
        {"Ctrl+Meta+Alt+Shift+F12", {0, Key::f12, 15}, nullptr},
        {"Shift+Ctrl+7", {0, 135, UKeyCode::shift | UKeyCode::ctrl}, "Ctrl+Shift+7"},
        {"Option+Command+Esc", {0, Key::escape, UKeyCode::alt | UKeyCode::ctrl}, "Ctrl+Alt+Esc"},
        {"+", {u'+', 0, 0}, nullptr},
        {"Ctrl++", {u'+', 0, UKeyCode::ctrl}, nullptr},
        {"Ctrl+", {u'+', 0, UKeyCode::ctrl}, "Ctrl++"},
        {"Pad +", {0, Key::padAdd, 0}, nullptr},
        {"Ctrl+Pad +", {0, Key::padAdd, UKeyCode::ctrl}, nullptr},
        {"Print Screen", {0, Key::printScreen, 0}, nullptr},
        {"Space", {0, Key::space, 0}, nullptr},
        {"Alt+ ", {0, Key::space, UKeyCode::alt}, "Alt+Space"},
        {"Next", {0, Key::next, 0}, nullptr},
        {"Pad9", {0, Key::pad0 + 9, 0}, nullptr},
        {"F13", {0, Key::f13, 0}, nullptr},
        {"F19", {0, Key::f19, 0}, nullptr},
        {"Ctrl+z", {u'z', 0, UKeyCode::ctrl}, nullptr},
        {"\xC3\xA4", {0xE4, 0, 0}, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        UKeyCode key;
        ASSERT_TRUE(UKeyCode::fromText(c.text, key));
        EXPECT_EQ(key.hash(), c.key.hash());
        EXPECT_EQ(key.toText(), c.written ? c.written : c.text);
    }
}

TEST(UKeyCode, RefusesTextThatNamesNoKey) {
    for (const char* text : {"", "ctrl+Z", "Ctrl+Foo", "Hyper+Z", "esc", "ZZ", "Ctrl+\xF0\x9F\x98\x80"}) {
        SCOPED_TRACE(text);
        UKeyCode key{u'q', 0, 0};
        EXPECT_FALSE(UKeyCode::fromText(text, key));
        EXPECT_EQ(key, (UKeyCode{u'q', 0, 0})) << "a refused text must leave the key alone";
    }
}

TEST(UKeyCode, NamesEveryRowAndNothingBeyond) {
    EXPECT_EQ(UKeyCode::keyName(Key::none), nullptr);
    EXPECT_STREQ(UKeyCode::keyName(1), "Backspace");
    EXPECT_STREQ(UKeyCode::keyName(23), "Help");
    EXPECT_STREQ(UKeyCode::keyName(40), "F1");
    EXPECT_STREQ(UKeyCode::keyName(58), "AppKey");
    EXPECT_STREQ(UKeyCode::keyName(62), "Next");
    EXPECT_STREQ(UKeyCode::keyName(71), "F19");
    EXPECT_EQ(UKeyCode::keyName(72), nullptr);
    EXPECT_STREQ(UKeyCode::keyName('0' + 80), "0");
    EXPECT_STREQ(UKeyCode::keyName('Z' + 80), "Z");
    EXPECT_EQ(UKeyCode::keyName('Z' + 81), nullptr);
    EXPECT_EQ(UKeyCode::keyName('9' + 81), nullptr);
}

TEST(UKeyCode, ConvertsThePlatformsWordOfHeldKeys) {
    EXPECT_EQ(modifiersFromPlatform(1), UKeyCode::shift);
    EXPECT_EQ(modifiersFromPlatform(2), UKeyCode::ctrl);
    EXPECT_EQ(modifiersFromPlatform(4), UKeyCode::alt);
    EXPECT_EQ(modifiersFromPlatform(8), UKeyCode::meta);
    EXPECT_EQ(modifiersFromPlatform(0xFFFFFFF6), UKeyCode::ctrl | UKeyCode::alt);
}

} // namespace

} // namespace qorl
