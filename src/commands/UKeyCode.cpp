#include "commands/UKeyCode.h"

#include "foundation/text/ConstString.h"
#include "foundation/text/String.h"

#include <array>

namespace qorl {

namespace {

constexpr const char* rowNames[] = {
    nullptr,   "Backspace", "Tab",    "Clear",      "Return",       "Pause",       "Esc",        "Space",
    "Next",    "End",       "Home",   "Left Arrow", "Up Arrow",     "Right Arrow", "Down Arrow", "PgUp",
    "PgDown",  "Select",    "Print",  "Enter",      "Print Screen", "Insert",      "Del",        "Help",
    "Pad0",    "Pad1",      "Pad2",   "Pad3",       "Pad4",         "Pad5",        "Pad6",       "Pad7",
    "Pad8",    "Pad9",      "Pad *",  "Pad +",      "Separator",    "Pad -",       "Pad .",      "Pad /",
    "F1",      "F2",        "F3",     "F4",         "F5",           "F6",          "F7",         "F8",
    "F9",      "F10",       "F11",    "F12",        "NumLock",      "Scroll",      "Shift",      "Ctrl",
    "Alt",     "Equals",    "AppKey", "Play",       "Stop",         "Prev",        "Next",       "VolUp",
    "VolDown", "F13",       "F14",    "F15",        "F16",          "F17",         "F18",        "F19",
};
constexpr uint8_t rowCount = static_cast<uint8_t>(std::size(rowNames));
static_assert(rowCount == Key::f19 + 1);

struct CharacterName {
    char text[2];
};

constexpr auto characterNames = [] {
    std::array<CharacterName, 'Z' + 1> names{};
    for (size_t c = 0; c < names.size(); ++c)
        names[c] = {{static_cast<char>(c), '\0'}};
    return names;
}();

struct ModifierName {
    std::string_view name;
    UKeyCode::Modifier modifier;
};

/// The order in which a text tells them; the last two are read only.
constexpr ModifierName modifierNames[] = {
    {"Ctrl", UKeyCode::ctrl},   {"Meta", UKeyCode::meta},  {"Alt", UKeyCode::alt},
    {"Shift", UKeyCode::shift}, {"Option", UKeyCode::alt}, {"Command", UKeyCode::ctrl},
};
constexpr size_t writtenModifiers = 4;

constexpr bool isDigitOrCapital(char16_t c) {
    return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z');
}

bool isOwnUpperCase(char16_t character) {
    String text(&character, 1);
    text.toUpper();
    return text.char16At(0) == character;
}

/// Takes "Ctrl+", "Shift+"… off the front of `text`.
uint8_t readModifiers(std::string_view& text) {
    uint8_t modifiers = 0;
    while (true) {
        const size_t plus = text.find('+', 1);
        if (plus == std::string_view::npos)
            return modifiers;
        uint8_t found = 0;
        for (const ModifierName& entry : modifierNames)
            if (text.substr(0, plus) == entry.name)
                found = entry.modifier;
        if (found == 0)
            return modifiers;
        modifiers |= found;
        text.remove_prefix(plus + 1);
        if (text.empty())
            text = "+";
    }
}

uint8_t rowOf(std::string_view name) {
    for (uint8_t row = 1; row < rowCount; ++row)
        if (name == rowNames[row])
            return row;
    return Key::none;
}

} // namespace

UKeyCode UKeyCode::normalised() const {
    UKeyCode key = *this;
    if (key.virtualKey == Key::none && isDigitOrCapital(key.character))
        key.virtualKey = static_cast<uint8_t>(key.character + Key::characterKeyOffset);
    else if (key.virtualKey == Key::none && key.character == u' ')
        key.virtualKey = Key::space;
    if (key.virtualKey != Key::none)
        key.character = 0;
    else if (key.modifiers == shift && key.character != 0 && isOwnUpperCase(key.character))
        key.modifiers = 0;
    return key;
}

const char* UKeyCode::keyName(uint8_t virtualKey) {
    if (virtualKey < rowCount)
        return rowNames[virtualKey];
    if (virtualKey < Key::characterKeyOffset)
        return nullptr;
    const auto character = static_cast<uint8_t>(virtualKey - Key::characterKeyOffset);
    return isDigitOrCapital(character) ? characterNames[character].text : nullptr;
}

char16_t UKeyCode::typedCharacter() const {
    if (virtualKey == Key::space)
        return u' ';
    if (virtualKey < Key::characterKeyOffset)
        return character;
    const auto capital = static_cast<char16_t>(virtualKey - Key::characterKeyOffset);
    const bool isLetter = capital >= u'A' && capital <= u'Z';
    return isLetter && !has(shift) ? static_cast<char16_t>(capital + (u'a' - u'A')) : capital;
}

std::string UKeyCode::toText() const {
    if (isEmpty())
        return {};
    std::string text;
    for (size_t i = 0; i < writtenModifiers; ++i) {
        if (!has(modifierNames[i].modifier))
            continue;
        text += modifierNames[i].name;
        text += '+';
    }
    if (const char* name = keyName(virtualKey)) {
        text += name;
        return text;
    }
    const auto unit = static_cast<char16_t>(character);
    return text + ConstString(&unit, 1).toUtf8();
}

bool UKeyCode::fromText(std::string_view text, UKeyCode& key) {
    if (text.empty())
        return false;
    UKeyCode read;
    read.modifiers = readModifiers(text);
    read.virtualKey = rowOf(text);
    if (read.virtualKey == Key::none) {
        const std::u16string name = ConstString(text).toUtf16();
        if (name.size() != 1 || name[0] == 0)
            return false;
        read.character = name[0];
    }
    key = read.normalised();
    return true;
}

} // namespace qorl
