#include "binding/NumberText.h"

#include <charconv>
#include <string>

namespace qorl::Binding {

namespace {

/// The leading characters of `text` that can belong to a number, with the comma as a point.
std::string numberCharacters(const char16_t* text) {
    std::string narrow;
    while (*text == u' ' || *text == u'\t')
        ++text;
    if (*text == u'+')
        ++text;
    for (bool hasComma = false; *text && *text < 0x80; ++text) {
        const bool turnsToPoint = *text == u',' && !hasComma;
        hasComma |= turnsToPoint;
        narrow += turnsToPoint ? '.' : static_cast<char>(*text);
    }
    return narrow;
}

double leadingNumber(const char16_t* text) {
    const std::string narrow = numberCharacters(text);
    double number = 0;
    std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
    return number;
}

} // namespace

double calculateFromText(const char16_t* text, double current) {
    if (!text || !*text)
        return 0;
    const double number = leadingNumber(text);
    switch (text[std::char_traits<char16_t>::length(text) - 1]) {
    case u'*': return current * number;
    case u'+': return current + number;
    case u'-': return current - number;
    case u'/': return number == 0 ? current : current / number;
    default: return number;
    }
}

} // namespace qorl::Binding
