#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl {

/// A key as the user pressed it or as a command is bound to it: four bytes, passed by value everywhere.
///
/// `virtualKey` numbers the rows of the key name table from 1; 0 means that the character alone tells the key.
/// Letters and digits have their character + 80 there. An event carries both the character that would be typed and
/// the virtual key; a key that a command is bound to is normalised, so that two spellings of one key compare equal.
struct UKeyCode {
    /// Held keys. The platform uses another order of bits; `modifiersFromPlatform` is the only conversion.
    enum Modifier : uint8_t { noModifier = 0, shift = 1, alt = 2, ctrl = 4, meta = 8 };

    /// Rows of the key name table that the framework itself knows.
    enum VirtualKey : uint8_t {
        noKey = 0,
        backspaceKey = 1,
        tabKey = 2,
        clearKey = 3,
        returnKey = 4,
        pauseKey = 5,
        escapeKey = 6,
        spaceKey = 7,
        nextKey = 8,
        endKey = 9,
        homeKey = 10,
        leftKey = 11,
        upKey = 12,
        rightKey = 13,
        downKey = 14,
        pageUpKey = 15,
        pageDownKey = 16,
        selectKey = 17,
        printKey = 18,
        enterKey = 19,
        printScreenKey = 20,
        insertKey = 21,
        deleteKey = 22,
        helpKey = 23,
        pad0Key = 24,
        padMultiplyKey = 34,
        padAddKey = 35,
        separatorKey = 36,
        padSubtractKey = 37,
        padDecimalKey = 38,
        padDivideKey = 39,
        f1Key = 40,
        f12Key = 51,
        numLockKey = 52,
        scrollLockKey = 53,
        shiftKey = 54,
        ctrlKey = 55,
        altKey = 56,
        equalsKey = 57,
        contextMenuKey = 58,
        f13Key = 65,
        f19Key = 71,
        lastNamedKey = 71,
        digitKeyOffset = 80,
    };

    uint16_t character = 0;
    uint8_t virtualKey = noKey;
    uint8_t modifiers = noModifier;

    /// The number that stored key lists and quick comparisons use: modifiers, virtual key and character from the top
    /// byte down. A synthetic Return is 0x40000, a synthetic Esc 0x60000.
    constexpr uint32_t hash() const {
        return static_cast<uint32_t>(modifiers * 256 + virtualKey) << 16 | character;
    }
    static constexpr UKeyCode fromHash(uint32_t hash) {
        return {static_cast<uint16_t>(hash), static_cast<uint8_t>(hash >> 16), static_cast<uint8_t>(hash >> 24)};
    }

    constexpr bool has(Modifier modifier) const { return (modifiers & modifier) != 0; }
    constexpr bool isEmpty() const { return character == 0 && virtualKey == noKey; }
    constexpr bool isEnter() const { return virtualKey == returnKey || virtualKey == enterKey; }
    constexpr bool isArrow() const { return virtualKey >= leftKey && virtualKey <= downKey; }
    /// Shift, Ctrl or Alt pressed alone. Such a key never reaches a command.
    constexpr bool isModifierAlone() const { return virtualKey >= shiftKey && virtualKey <= altKey; }

    /// The form in which keys of commands are compared: digits, upper-case letters and the space bar become virtual
    /// keys, a virtual key drops its character, and a lone Shift that its character already tells is dropped.
    UKeyCode normalised() const;

    /// "Ctrl+Shift+Z": modifiers in the order Ctrl, Meta, Alt, Shift, then the key's name or character, in UTF-8.
    /// Empty for an empty key.
    std::string toText() const;

    /// Reads what `toText` writes; also takes "Option" for Alt and "Command" for Ctrl. Names are case-sensitive.
    /// False, with `key` untouched, when a modifier or the key name is unknown. The key "+" is the trailing "+".
    static bool fromText(std::string_view text, UKeyCode& key);

    /// The name of row `virtualKey` of the key name table, or of the letter or digit; null when there is none.
    /// The text lives as long as the library.
    static const char* keyName(uint8_t virtualKey);

    friend constexpr bool operator==(UKeyCode a, UKeyCode b) { return a.hash() == b.hash(); }
};

static_assert(sizeof(UKeyCode) == 4);

/// Turns the platform's word of held keys (1 Shift, 2 Ctrl, 4 Alt, 8 Meta) into the bits of a key record.
constexpr uint8_t modifiersFromPlatform(uint32_t held) {
    return static_cast<uint8_t>((held & 1 ? UKeyCode::shift : 0) | (held & 2 ? UKeyCode::ctrl : 0) |
                                (held & 4 ? UKeyCode::alt : 0) | (held & 8 ? UKeyCode::meta : 0));
}

} // namespace qorl
