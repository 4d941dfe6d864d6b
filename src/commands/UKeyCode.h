#pragma once

#include "platform/PlatformEvents.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl {

/// Rows of the key name table: `Key::escape`, `Key::f1`…
namespace Key = platform::Key;

/// A key as the user pressed it or as a command is bound to it: four bytes, passed by value everywhere.
///
/// `virtualKey` numbers the rows of the key name table from 1; 0 means that the character alone tells the
/// key. Letters and digits have their character + 80 there. An event carries both the character that would be
/// typed and the virtual key; a key that a command is bound to is normalised, so that two spellings of one
/// key compare equal.
struct UKeyCode {
    /// Held keys. The platform uses another order of bits; `modifiersFromPlatform` is the only conversion.
    enum Modifier : uint8_t { shift = 1, alt = 2, ctrl = 4, meta = 8 };

    uint16_t character = 0;
    uint8_t virtualKey = Key::none;
    uint8_t modifiers = 0;

    /// The number that stored key lists and quick comparisons use: modifiers, virtual key and character from
    /// the top byte down. A synthetic Return is 0x40000, a synthetic Esc 0x60000.
    constexpr uint32_t hash() const {
        return static_cast<uint32_t>(modifiers * 256 + virtualKey) << 16 | character;
    }
    static constexpr UKeyCode fromHash(uint32_t hash) {
        return {static_cast<uint16_t>(hash), static_cast<uint8_t>(hash >> 16),
                static_cast<uint8_t>(hash >> 24)};
    }

    constexpr bool has(Modifier modifier) const { return (modifiers & modifier) != 0; }
    constexpr bool isEmpty() const { return character == 0 && virtualKey == Key::none; }
    constexpr bool isEnter() const { return virtualKey == Key::returnKey || virtualKey == Key::enter; }
    constexpr bool isArrow() const { return virtualKey >= Key::left && virtualKey <= Key::down; }
    /// Shift, Ctrl or Alt pressed alone. Such a key never reaches a command.
    constexpr bool isModifierAlone() const { return virtualKey >= Key::shift && virtualKey <= Key::alt; }

    /// The form in which keys of commands are compared: digits, upper-case letters and the space bar become
    /// virtual keys, a virtual key drops its character, and a lone Shift that its character already tells is
    /// dropped.
    UKeyCode normalised() const;

    /// What the key types on a keyboard whose letters stand alone: small letters without Shift, a blank for
    /// the space bar; 0 when nothing.
    char16_t typedCharacter() const;

    /// "Ctrl+Shift+Z": modifiers in the order Ctrl, Meta, Alt, Shift, then the key's name or character, in
    /// UTF-8. Empty for an empty key.
    std::string toText() const;

    /// Reads what `toText` writes; also takes "Option" for Alt and "Command" for Ctrl. Names are
    /// case-sensitive. False, with `key` untouched, when a modifier or the key name is unknown. The key "+"
    /// is the trailing "+".
    static bool fromText(std::string_view text, UKeyCode& key);

    /// The name of row `virtualKey` of the key name table, or of the letter or digit; null when there is
    /// none. The text lives as long as the library.
    static const char* keyName(uint8_t virtualKey);

    friend constexpr bool operator==(UKeyCode a, UKeyCode b) { return a.hash() == b.hash(); }
};

static_assert(sizeof(UKeyCode) == 4);

/// Turns the platform's word of held keys (1 Shift, 2 Ctrl, 4 Alt, 8 Meta) into the bits of a key record.
constexpr uint8_t modifiersFromPlatform(uint32_t held) {
    return static_cast<uint8_t>(
        (held & platform::shift ? UKeyCode::shift : 0) | (held & platform::ctrl ? UKeyCode::ctrl : 0) |
        (held & platform::alt ? UKeyCode::alt : 0) | (held & platform::meta ? UKeyCode::meta : 0));
}

/// The way back, for whoever plays a keyboard.
constexpr uint32_t modifiersToPlatform(uint8_t bits) {
    return (bits & UKeyCode::shift ? platform::shift : 0U) | (bits & UKeyCode::ctrl ? platform::ctrl : 0U) |
           (bits & UKeyCode::alt ? platform::alt : 0U) | (bits & UKeyCode::meta ? platform::meta : 0U);
}

} // namespace qorl
